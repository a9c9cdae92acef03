#pragma once

#include "control/form.h"
#include "control/state.h"
#include "editing/picture_files.h"
#include "editing/picture_menu.h"
#include "formula/description_pane.h"

#include <QObject>

namespace varo {

/// The commands on the picture of the selected formula: its popup menu, and the window that shows
/// it large, with the mouse or the keyboard. A picture that is stored replaces what is there, in
/// the library and as a file, or neither.
class Pictures : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    Pictures(Form& form, ControlState& state, Questions& questions, DescriptionPane& description);

    /// Lets the user choose a picture file and stores it as the selected formula's picture.
    void choosePicture();

    /// Puts a copy of the selected formula's picture aside.
    void copyPicture();

    /// Stores the picture put aside as the selected formula's picture.
    void pastePicture();

    /// Deletes the selected formula's picture.
    void deletePicture();

    /// Shows the selected formula's picture in a window as large as the control; nothing when it
    /// has none that can be shown, or its file has gone.
    void showLarge();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    clsFormulaInfo* selected();
    void offerMenu(bool onPicture, QPoint globalPosition);
    void storePicture(const QString& file);
    bool replacePicture(clsFormulaInfo& formula, const QString& file);
    bool moveIn(const clsFormulaInfo& formula, PictureCopy& copy);
    bool copyOut(const clsFormulaInfo& formula);

    Form& form_;
    ControlState& state_;
    Questions& questions_;
    DescriptionPane& description_;
    PictureMenu* menu_;  ///< owned by the form's widgets
};

}  // namespace varo
