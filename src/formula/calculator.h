#pragma once

#include "form/form.h"
#include "formula/parsed_formula.h"

#include <QObject>
#include <QStringList>

namespace varo {

/// The calculate command, the result box with its decimal places, the memory of saved results, and
/// the commands that copy a result and pass it on to the host. A result is marked as soon as it
/// does not belong to the formula and the values any more; it can be saved, copied and passed on
/// only while it does.
class Calculator : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this. Row i of `grid` holds the value of variable i of
    /// `formula`; `grid` also offers the saved results as drop-down items.
    Calculator(ResultForm& form, ui::EditGrid& grid, ParsedFormula& formula);

    /// Evaluates the formula with the values of the grid and shows the result, or what is wrong. A
    /// result that comes from a value with a note is marked, and the note is its reason.
    void calculate();

    /// To be called when the formula or a value has changed: marks the result as belonging to
    /// earlier input. A sum of saved results stays as it is.
    void markStale();

    /// Empties the result box; the saved results stay.
    void clear();

    /// Enables the widgets of the result area, those that need a result only while there is one.
    void setEnabled(bool enabled);

  signals:
    /// The user passes the result in the result box on to the host.
    void resultSent();

  private:
    void saveResult();
    void recallResults();
    void clearResults();
    void copyResult();
    void showEvaluation(const Evaluation& evaluation);
    void setHasResult(bool hasResult);
    QStringList values() const;
    QString doubts() const;
    QString formatted(double value) const;

    ResultForm& form_;
    ui::EditGrid& grid_;
    ParsedFormula& formula_;
    QStringList savedResults_;
    bool isEnabled_ = false;
    bool hasResult_ = false;  ///< the last calculation succeeded, and its input has not changed
    bool showsSum_ = false;   ///< the box holds the sum of the saved results
};

}  // namespace varo
