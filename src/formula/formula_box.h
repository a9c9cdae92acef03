#pragma once

#include "control/form.h"
#include "control/state.h"
#include "formula/refusal_notice.h"

#include <QObject>

namespace varo {

/// The formula box: shows the text of the selected formula, stores what the user made of it when
/// the box loses the focus, and lets the symbol tool bars be used while it has it.
class FormulaBox : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    FormulaBox(Form& form, ControlState& state, Questions& questions);

    /// Shows `text` as the stored text of the current formula, whatever its length.
    void setText(const QString& text);

    /// Stores the text as the current formula's if the user has changed it.
    void store();

  signals:
    void textChanged(const QString& text);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    Form& form_;
    ControlState& state_;
    RefusalNotice refusal_;
};

}  // namespace varo
