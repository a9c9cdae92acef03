#include "editing/picture_area.h"

#include "platform/ui/picture_box.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QRadioButton>

namespace varo {

PictureArea::PictureArea(DescriptionForm& form, DescriptionPane& description,
                         SelectionController& selection, PictureCommands& commands)
    : form_(form),
      selection_(selection),
      commands_(commands),
      menu_(new PictureMenu(form.PicDesc)) {
    form.imgDesc->installEventFilter(this);
    form.lblDesc->installEventFilter(this);
    // The menu is for the formula that it was opened on.
    connect(&description, &DescriptionPane::cleared, menu_, &QMenu::close);
    connect(menu_->mnuPopAddPic, &QAction::triggered, &commands, &PictureCommands::choosePicture);
    connect(menu_->mnuPopChangePic, &QAction::triggered, &commands,
            &PictureCommands::choosePicture);
    connect(menu_->mnuPopCopyPic, &QAction::triggered, &commands, &PictureCommands::copyPicture);
    connect(menu_->mnuPopPastePic, &QAction::triggered, &commands, &PictureCommands::pastePicture);
    connect(menu_->mnuPopDelPic, &QAction::triggered, &commands, &PictureCommands::deletePicture);
}

bool PictureArea::eventFilter(QObject* watched, QEvent* event) {
    const bool onPicture = watched == form_.imgDesc;
    switch (event->type()) {
        case QEvent::MouseButtonDblClick:
            if (onPicture && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
                commands_.showLarge();
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
                commands_.showLarge();
                return true;
            }
            break;
        }
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

void PictureArea::offerMenu(bool onPicture, QPoint globalPosition) {
    using Mode = PictureMenu::Mode;
    const bool offered = onPicture ? form_.optDesc[DescOptionText]->isEnabled() &&
                                         form_.optDesc[DescOptionPicture]->isEnabled()
                                   : selection_.listsFormulas();
    if (offered) {
        const Mode mode = onPicture ? Mode::Picture : Mode::NoPicture;
        menu_->open(selection_.formula() ? mode : Mode::NoFormula, commands_.canPaste(),
                    globalPosition);
    }
}

}  // namespace varo
