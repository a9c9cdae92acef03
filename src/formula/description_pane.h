#pragma once

#include "control/form.h"
#include "control/state.h"
#include "formula/refusal_notice.h"
#include "platform/ui/picture.h"

#include <QObject>

namespace varo {

/// The description area: the selected formula's description or its picture, switched by two
/// options, and a label where there is no picture. A description that the user changed is stored
/// when its box loses the focus.
class DescriptionPane : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    DescriptionPane(Form& form, ControlState& state, Questions& questions);

    /// Empties box and picture and chooses the picture option.
    void clear();

    /// Shows a formula's description and picture, after clear().
    void show(const clsFormulaInfo& formula);

    /// Shows a formula's picture; a null one is said to be none that can be shown.
    void showPicture(const ui::Picture& picture);

    /// Shows the label that there is no picture.
    void showNoPicture();

    /// Empties the picture and shows that there is none.
    void removePicture();

    /// Stores the description as the current formula's if the user has changed it. Returns false
    /// when it is too long to be stored, which is told once for each text.
    bool store();

  signals:
    /// What was shown of a formula is shown no more.
    void cleared();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void showOption(int option);
    void showOnly(QWidget* content);

    Form& form_;
    ControlState& state_;
    RefusalNotice refusal_;
};

}  // namespace varo
