#include "editing/pictures.h"

#include "control/work_files.h"
#include "editing/picture_window.h"
#include "platform/held_messages.h"
#include "platform/ui/node_view.h"
#include "platform/ui/picture.h"
#include "platform/ui/picture_box.h"
#include "store/attempt.h"
#include "store/keys.h"

#include <QContextMenuEvent>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QRadioButton>

#include <array>

namespace varo {

Pictures::Pictures(Form& form, ControlState& state, Questions& questions,
                   DescriptionPane& description)
    : form_(form),
      state_(state),
      questions_(questions),
      description_(description),
      menu_(new PictureMenu(form.PicDesc)) {
    form.imgDesc->installEventFilter(this);
    form.lblDesc->installEventFilter(this);
    // The menu speaks of the formula that it was opened on.
    connect(&description, &DescriptionPane::cleared, menu_, &QMenu::close);
    connect(menu_->mnuPopAddPic, &QAction::triggered, this, &Pictures::choosePicture);
    connect(menu_->mnuPopChangePic, &QAction::triggered, this, &Pictures::choosePicture);
    connect(menu_->mnuPopCopyPic, &QAction::triggered, this, &Pictures::copyPicture);
    connect(menu_->mnuPopPastePic, &QAction::triggered, this, &Pictures::pastePicture);
    connect(menu_->mnuPopDelPic, &QAction::triggered, this, &Pictures::deletePicture);
}

bool Pictures::eventFilter(QObject* watched, QEvent* event) {
    const bool onPicture = watched == form_.imgDesc;
    switch (event->type()) {
        case QEvent::MouseButtonDblClick:
            if (onPicture && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
                showLarge();
            }
            break;
        case QEvent::MouseButtonRelease: {
            const auto& mouse = static_cast<const QMouseEvent&>(*event);
            if (mouse.button() == Qt::RightButton) {
                offerMenu(onPicture, mouse.globalPosition().toPoint());
            }
            break;
        }
        case QEvent::ContextMenu:
            // With the mouse, the release of the button opens the menu.
            if (static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard) {
                const auto& place = static_cast<const QWidget&>(*watched);
                offerMenu(onPicture, place.mapToGlobal(place.rect().center()));
                return true;
            }
            break;
        case QEvent::KeyPress: {
            const int key = static_cast<QKeyEvent*>(event)->key();
            if (onPicture && (key == Qt::Key_Return || key == Qt::Key_Enter)) {
                showLarge();
                return true;
            }
            break;
        }
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

void Pictures::offerMenu(bool onPicture, QPoint globalPosition) {
    using Mode = PictureMenu::Mode;
    const bool offered = onPicture ? form_.optDesc[DescOptionText]->isEnabled() &&
                                         form_.optDesc[DescOptionPicture]->isEnabled()
                                   : state_.listedFormulas.Count() > 0;
    if (!offered) {
        return;
    }
    const Mode mode = onPicture ? Mode::Picture : Mode::NoPicture;
    menu_->open(selected() == nullptr ? Mode::NoFormula : mode,
                QFileInfo(pictureClipboardFile(state_)).isFile(), globalPosition);
}

clsFormulaInfo* Pictures::selected() {
    const QString key = form_.lvFormula->selectedKey();
    return state_.listsCurrentLibrary() && state_.listedFormulas.contains(key)
               ? &state_.listedFormulas.Item(key)
               : nullptr;
}

void Pictures::choosePicture() {
    static const std::array Extensions{QStringLiteral(".bmp"), QStringLiteral(".wmf"),
                                       QStringLiteral(".jpg")};
    QStringList filters;
    for (const QString& extension : Extensions) {
        filters.append(QStringLiteral("(*%1)").arg(extension));
    }
    if (selected() == nullptr) {
        return;
    }
    const QString key = form_.lvFormula->selectedKey();
    const QString library = state_.listedLibrary;
    const auto chosen = questions_.chooseFile(QStringLiteral("选择图片"), filters);
    // The host may turn to another formula while the dialog is open.
    if (!chosen || form_.lvFormula->selectedKey() != key || state_.listedLibrary != library) {
        return;
    }
    const QString file =
        withExtension(chosen->path, Extensions.at(static_cast<std::size_t>(chosen->filter)));
    if (!QFileInfo(file).isFile()) {
        questions_.inform(
            QStringLiteral("文件%1不存在，\n不能添加到当前公式！").arg(QFileInfo(file).fileName()));
        return;
    }
    storePicture(file);
}

void Pictures::storePicture(const QString& file) {
    clsFormulaInfo* formula = selected();
    if (formula == nullptr) {
        return;
    }
    if (!replacePicture(*formula, file)) {
        questions_.inform(QStringLiteral("处理图形文件失败！"));
    }
}

/// Nothing is stored but what has been read as a picture, and it is that copy which is stored: the
/// file may change meanwhile.
bool Pictures::replacePicture(clsFormulaInfo& formula, const QString& file) {
    const QString own = listedPictureFile(state_, formula.FormulaID);
    if (isSameFile(file, own)) {
        return true;
    }
    PictureCopy copy(own);
    if (!copy.take(file)) {
        return false;
    }
    const ui::Picture picture = ui::Picture::read(copy.path());
    if (picture.isNull() || !moveIn(formula, copy)) {
        return false;
    }
    formula.FormulaPicPath = own;
    formula.FormulaPicType = PictureStored;
    description_.showPicture(picture);
    return true;
}

/// Puts the copy into the library and in the place of the formula's file, both or neither.
bool Pictures::moveIn(const clsFormulaInfo& formula, PictureCopy& copy) {
    HeldMessages messages;
    clsDBFuncs dbFuncs(messages);
    bool moved = false;
    const bool committed = attempt([&] {
        FileAside old(copy.target());
        data::Transaction transaction(state_.connection);
        moved = old.isClear() &&
                dbFuncs.AddNewPicture(formula.FormulaID, copy.path(), state_.connection) &&
                copy.replaceTarget();
        if (moved) {
            transaction.commit();
            old.giveUp();
        }
    });
    messages.show(questions_);
    return moved && committed;
}

void Pictures::copyPicture() {
    const clsFormulaInfo* formula = selected();
    if (formula != nullptr && !copyOut(*formula)) {
        questions_.inform(QStringLiteral("处理图形文件失败！"));
    }
}

/// From the library when the formula's file has gone.
bool Pictures::copyOut(const clsFormulaInfo& formula) {
    PictureCopy copy(pictureClipboardFile(state_));
    const bool taken =
        QFileInfo(formula.FormulaPicPath).isFile()
            ? copy.take(formula.FormulaPicPath)
            : state_.dbFuncs.ExtractPicture(formula.FormulaID, copy.path(), state_.connection);
    return taken && copy.replaceTarget();
}

void Pictures::pastePicture() {
    storePicture(pictureClipboardFile(state_));
}

void Pictures::deletePicture() {
    clsFormulaInfo* formula = selected();
    if (formula == nullptr) {
        return;
    }
    if (!state_.dbFuncs.DelPicture(formula->FormulaID, state_.connection)) {
        questions_.inform(QStringLiteral("删除图形文件失败！"));
        return;
    }
    QFile::remove(formula->FormulaPicPath);
    formula->FormulaPicPath.clear();
    formula->FormulaPicType = PictureNone;
    description_.removePicture();
}

void Pictures::showLarge() {
    const clsFormulaInfo* formula = selected();
    if (formula == nullptr || form_.imgDesc->picture().isNull() ||
        !QFileInfo(formula->FormulaPicPath).isFile()) {
        return;
    }
    QWidget* control = form_.PicControl->parentWidget();
    auto* window = new PictureWindow(control);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->SetPicture(formula->FormulaPicPath);
    window->ResizeForm(control->width(), control->height());
    window->setWindowModality(Qt::ApplicationModal);
    window->show();
}

}  // namespace varo
