#pragma once

#include "browse/selection_controller.h"
#include "formula/description_pane.h"
#include "library/picture_store.h"

#include <QObject>

namespace varo {

/// The commands on the picture of the selected formula. A picture that is stored replaces what is
/// there, in the library and as a file, or neither.
class PictureCommands : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    PictureCommands(SelectionController& selection, FormulaList& list, DescriptionPane& description,
                    PictureStore& store, Questions& questions);

    /// Lets the user choose a picture file and stores it as the selected formula's picture.
    void choosePicture();

    /// Puts a copy of the selected formula's picture aside.
    void copyPicture();

    /// Stores the picture put aside as the selected formula's picture.
    void pastePicture();
    bool canPaste() const { return store_.holdsCopy(); }

    /// Deletes the selected formula's picture.
    void deletePicture();

    /// Shows the selected formula's picture in a window as large as the control; nothing when it
    /// has none that can be shown, or its file has gone.
    void showLarge();

  private:
    const clsFormulaInfo* selected() const;
    void storePicture(const QString& file);
    bool replacePicture(qint32 id, const QString& file);

    SelectionController& selection_;
    FormulaList& list_;
    DescriptionPane& description_;
    PictureStore& store_;
    Questions& questions_;
};

}  // namespace varo
