#pragma once

#include "control/form.h"

#include <QObject>

#include <functional>

class QAction;

namespace varo {

/// The edit tool bar: its eleven buttons, each known by its key, and which of them are offered in
/// which command state. A button whose command nobody runs stays disabled.
class EditBar : public QObject {
    Q_OBJECT

  public:
    /// What is selected, and so which commands are offered. Any other number offers none.
    enum CommandState {
        LibrarySelected = 2,
        FolderSelected = 3,
        FormulaSelected = 4,
        NoFormula = 5
    };

    /// Fills `form.tbEdit`; the form must outlive this.
    explicit EditBar(Form& form);

    /// `run` is called when the button with this key is clicked.
    void connectCommand(const QString& key, std::function<void()> run);

    void setCommandState(int state);

    /// Enables or disables one button whatever the command state, until that changes.
    void setEnabled(const QString& key, bool enabled);

  private:
    QAction* action(const QString& key) const;

    Form& form_;
};

}  // namespace varo
