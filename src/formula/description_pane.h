#pragma once

#include "form/form.h"
#include "formula/refusal_notice.h"
#include "formula/shown_formula.h"
#include "library/current_library.h"
#include "platform/questions/held_messages.h"
#include "platform/ui/picture.h"

#include <QObject>

namespace varo {

/// The description area: the shown formula's description or its picture, chosen by two options, or
/// a label where there is no picture. The description is stored when its box loses the focus and
/// its text is not the stored one.
class DescriptionPane : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    DescriptionPane(DescriptionForm& form, CurrentLibrary& library, const ShownFormula& shown,
                    Questions& questions);

    /// Empties box and picture, chooses the picture option and shows the label that there is no
    /// picture.
    void clear();

    /// Shows the description and the picture of the shown formula, after clear(). The picture's
    /// file is written from the library; why that fails is added to `messages`, once until it
    /// succeeds again.
    void show(const clsFormulaInfo& formula, HeldMessages& messages);

    /// Shows a picture as the shown formula's; for a null one, a text that it cannot be shown.
    void showPicture(const ui::Picture& picture);

    /// Whether the formula has a picture that can be shown.
    bool showsPicture() const;

    /// Shows that the formula has no picture.
    void removePicture();

    /// Stores the description if it is not the stored one. Returns false when it is too long to be
    /// stored. Why it cannot be stored is told once for each text.
    bool store();

    /// Enables the two options.
    void setEnabled(bool enabled);

  signals:
    /// The area has been emptied.
    void cleared();
    void stored(qint32 formulaID, const QString& memo);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void showPictureOf(const clsFormulaInfo& formula, HeldMessages& messages);
    void showOption(int option);
    void showOnly(QWidget* content);

    DescriptionForm& form_;
    CurrentLibrary& library_;
    const ShownFormula& shown_;
    RefusalNotice refusal_;
    QString storedText_;  ///< as the box gives it, whose line ends may differ from the library's
    bool hasPicture_ = false;
    bool failureTold_ = false;  ///< that the last picture could not be written to its file
};

}  // namespace varo
