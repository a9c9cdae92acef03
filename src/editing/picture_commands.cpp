#include "editing/picture_commands.h"

#include "editing/picture_window.h"
#include "platform/ui/node_view.h"
#include "platform/ui/picture.h"

#include <QFileInfo>

#include <array>

namespace varo {

PictureCommands::PictureCommands(SelectionController& selection, FormulaList& list,
                                 DescriptionPane& description, PictureStore& store,
                                 Questions& questions)
    : selection_(selection),
      list_(list),
      description_(description),
      store_(store),
      questions_(questions) {}

const clsFormulaInfo* PictureCommands::selected() const {
    const auto id = selection_.formula();
    return id ? list_.model().find(*id) : nullptr;
}

void PictureCommands::choosePicture() {
    static const std::array kExtensions{QStringLiteral(".bmp"), QStringLiteral(".wmf"),
                                        QStringLiteral(".jpg")};
    QStringList filters;
    for (const QString& extension : kExtensions) {
        filters.append(QStringLiteral("(*%1)").arg(extension));
    }
    const auto id = selection_.formula();
    const NodeId folder = selection_.listedNode();
    if (!id) {
        return;
    }
    const auto chosen = questions_.chooseFile({QStringLiteral("选择图片"), filters});
    // The host may turn to another formula while the dialog is open.
    if (!chosen || selection_.formula() != id || selection_.listedNode() != folder) {
        return;
    }
    const QString file =
        withExtension(chosen->path, kExtensions.at(static_cast<std::size_t>(chosen->filter)));
    if (!QFileInfo(file).isFile()) {
        questions_.inform(
            QStringLiteral("文件%1不存在，\n不能添加到当前公式！").arg(QFileInfo(file).fileName()));
        return;
    }
    storePicture(file);
}

void PictureCommands::storePicture(const QString& file) {
    const clsFormulaInfo* formula = selected();
    if (formula != nullptr && !replacePicture(formula->FormulaID, file)) {
        questions_.inform(QStringLiteral("处理图形文件失败！"));
    }
}

/// Nothing is stored but what has been read as a picture, and it is that copy which is stored: the
/// file may change meanwhile.
bool PictureCommands::replacePicture(qint32 id, const QString& file) {
    const QString own = store_.fileOf(id);
    if (isSameFile(file, own)) {
        return true;
    }
    PictureCopy copy(own);
    if (!copy.take(file)) {
        return false;
    }
    const ui::Picture picture = ui::Picture::read(copy.path());
    HeldMessages messages;
    const bool stored = !picture.isNull() && store_.store(id, copy, messages);
    if (stored) {
        list_.model().update(id, [&](clsFormulaInfo& formula) {
            formula.FormulaPicPath = own;
            formula.FormulaPicType = PictureStored;
        });
        description_.showPicture(picture);
    }
    messages.show(questions_);
    return stored;
}

void PictureCommands::copyPicture() {
    const clsFormulaInfo* formula = selected();
    if (formula != nullptr && !store_.copyOut(*formula)) {
        questions_.inform(QStringLiteral("处理图形文件失败！"));
    }
}

void PictureCommands::pastePicture() {
    storePicture(store_.copiedFile());
}

void PictureCommands::deletePicture() {
    const clsFormulaInfo* formula = selected();
    if (formula == nullptr) {
        return;
    }
    if (!store_.remove(*formula)) {
        questions_.inform(QStringLiteral("删除图形文件失败！"));
        return;
    }
    list_.model().update(formula->FormulaID, [](clsFormulaInfo& record) {
        record.FormulaPicPath.clear();
        record.FormulaPicType = PictureNone;
    });
    description_.removePicture();
}

void PictureCommands::showLarge() {
    const clsFormulaInfo* formula = selected();
    if (formula == nullptr || !description_.showsPicture() ||
        !QFileInfo(formula->FormulaPicPath).isFile()) {
        return;
    }
    QWidget* control = list_.view().parentWidget()->parentWidget();
    auto* window = new PictureWindow(control);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->SetPicture(formula->FormulaPicPath);
    window->ResizeForm(control->width(), control->height());
    window->setWindowModality(Qt::ApplicationModal);
    window->show();
}

}  // namespace varo
