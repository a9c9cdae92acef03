#pragma once

#include <QTreeView>

namespace varo {

/// A list of libraries in report view, of which several may be selected. Paths that are too long
/// are cut in the middle; an empty list says `emptyText`. Files that are dropped are copied from,
/// whatever keys are held: the program that they come from must not take them for moved.
class LibraryListView : public QTreeView {
    Q_OBJECT

  public:
    explicit LibraryListView(QWidget* parent);

    void setEmptyText(const QString& text);

    /// Ends the editing of a text as Enter does. Returns false when the text is refused, which is
    /// then dropped.
    bool commitEdit();

  protected:
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    QString emptyText_;
};

}  // namespace varo
