#pragma once

#include "control/form.h"
#include "engine/calc_engine.h"

#include <QEvent>
#include <QObject>
#include <QStringList>

namespace varo {

/// The calculate command, the result box with its decimal places, the memory of saved results, and
/// the ways of a result to the clipboard and to the host.
class Calculator : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    Calculator(Form& form, engine::CalcEngine& engine);

    /// Evaluates the formula box with the values of the variable grid and puts the result, or the
    /// error, into the result box.
    void calculate();

    /// "M+": appends a numeric result to the saved ones.
    void saveResult();
    /// "MR": shows the sum of the saved results.
    void recallResults();
    /// "MC": forgets the saved results.
    void clearResults();
    void copyResult();

  signals:
    /// The user passes the result in the result box on to the host.
    void resultSent();

  private:
    void showResult(const QString& text);
    void setResultButtonsEnabled(bool enabled);
    bool giveValues(const std::string& formula);
    QString wrongArgument();
    QString formatted(double value) const;

    Form& form_;
    engine::CalcEngine& engine_;
    QStringList savedResults_;
};

}  // namespace varo
