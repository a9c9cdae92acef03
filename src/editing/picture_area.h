#pragma once

#include "editing/picture_commands.h"
#include "editing/picture_menu.h"
#include "form/form.h"

#include <QObject>

namespace varo {

/// Gives the picture commands in the description area, with the mouse or the keyboard: a popup menu
/// on the picture and on the label in its place, and a double click or Enter on the picture.
class PictureArea : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    PictureArea(DescriptionForm& form, DescriptionPane& description, SelectionController& selection,
                PictureCommands& commands);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void offerMenu(bool onPicture, QPoint globalPosition);

    DescriptionForm& form_;
    SelectionController& selection_;
    PictureCommands& commands_;
    PictureMenu* menu_;  ///< owned by the form's widgets
};

}  // namespace varo
