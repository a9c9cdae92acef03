#include "editing/picture_menu.h"

#include "platform/ui/icons.h"

namespace varo {

PictureMenu::PictureMenu(QWidget* parent)
    : QMenu(parent),
      mnuPopAddPic(addEntry("mnuPopAddPic", QStringLiteral("添加"), QStringLiteral("list-add"))),
      mnuPopChangePic(
          addEntry("mnuPopChangePic", QStringLiteral("替换"), QStringLiteral("document-open"))),
      mnuPopPicLine1(addLine("mnuPopPicLine1")),
      mnuPopCopyPic(addEntry("mnuPopCopyPic", QStringLiteral("复制"), QStringLiteral("edit-copy"))),
      mnuPopPastePic(
          addEntry("mnuPopPastePic", QStringLiteral("粘贴"), QStringLiteral("edit-paste"))),
      mnuPopPicLine2(addLine("mnuPopPicLine2")),
      mnuPopDelPic(
          addEntry("mnuPopDelPic", QStringLiteral("删除"), QStringLiteral("edit-delete"))) {
    setObjectName(QStringLiteral("PopPicMnu"));
}

QAction* PictureMenu::addEntry(const char* name, const QString& caption, const QString& icon) {
    QAction* entry = addAction(ui::themeIcon(icon), caption);
    entry->setObjectName(QString::fromLatin1(name));
    return entry;
}

QAction* PictureMenu::addLine(const char* name) {
    QAction* line = addSeparator();
    line->setObjectName(QString::fromLatin1(name));
    return line;
}

void PictureMenu::open(Mode mode, bool isSomethingCopied, QPoint globalPosition) {
    const bool picture = mode == Mode::Picture;
    const bool pastes = isSomethingCopied && mode != Mode::NoFormula;
    mnuPopAddPic->setVisible(!picture);
    mnuPopAddPic->setEnabled(mode != Mode::NoFormula);
    mnuPopChangePic->setVisible(picture);
    mnuPopPicLine1->setEnabled(picture || pastes);
    mnuPopCopyPic->setEnabled(picture);
    mnuPopPastePic->setEnabled(pastes);
    mnuPopPicLine2->setEnabled(picture);
    mnuPopDelPic->setEnabled(picture);
    popup(globalPosition);
}

}  // namespace varo
