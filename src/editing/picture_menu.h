#pragma once

#include <QMenu>

namespace varo {

/// The popup menu of the picture area, `PopPicMnu`.
class PictureMenu : public QMenu {
    Q_OBJECT

  public:
    /// What the menu is opened on: a formula's picture, the place of one, or that place while no
    /// formula is there to get one.
    enum class Mode { Picture, NoPicture, NoFormula };

    explicit PictureMenu(QWidget* parent);

    /// Opens the menu with the entries for `mode`; pasting is offered if there `isSomethingCopied`.
    void open(Mode mode, bool isSomethingCopied, QPoint globalPosition);

    QAction* mnuPopAddPic;
    QAction* mnuPopChangePic;
    QAction* mnuPopPicLine1;
    QAction* mnuPopCopyPic;
    QAction* mnuPopPastePic;
    QAction* mnuPopPicLine2;
    QAction* mnuPopDelPic;

  private:
    QAction* addEntry(const char* name, const QString& caption, const QString& icon);
    QAction* addLine(const char* name);
};

}  // namespace varo
