#include "formula/calculator.h"

#include "engine/numbers.h"
#include "platform/ui/edit_grid.h"
#include "platform/ui/result_box.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPushButton>
#include <QSpinBox>

namespace varo {

using State = ui::ResultBox::State;

Calculator::Calculator(ResultForm& form, ui::EditGrid& grid, ParsedFormula& formula)
    : form_(form), grid_(grid), formula_(formula) {
    connect(form.cmdCalCulate, &QPushButton::clicked, this, [this] {
        // A value that is being typed is stored when its editor loses the focus.
        form_.cmdCalCulate->setFocus();
        calculate();
    });
    connect(form.cmdSaveResult, &QPushButton::clicked, this, &Calculator::saveResult);
    connect(form.CmdAddResult, &QPushButton::clicked, this, &Calculator::recallResults);
    connect(form.cmdClearResult, &QPushButton::clicked, this, &Calculator::clearResults);
    connect(form.cmdCopy, &QPushButton::clicked, this, &Calculator::copyResult);
    connect(form.cmdSend, &QPushButton::clicked, this, [this] {
        if (!form_.txtResult->text().isEmpty()) {
            emit resultSent();
        }
    });
}

void Calculator::setEnabled(bool enabled) {
    isEnabled_ = enabled;
    const std::initializer_list<QWidget*> widgets{form_.UpDownPrecision, form_.CmdAddResult,
                                                  form_.cmdClearResult, form_.txtResult,
                                                  form_.cmdCalCulate};
    for (QWidget* widget : widgets) {
        widget->setEnabled(enabled);
    }
    setHasResult(hasResult_);
}

void Calculator::setHasResult(bool hasResult) {
    hasResult_ = hasResult;
    for (QPushButton* button : {form_.cmdSaveResult, form_.cmdCopy, form_.cmdSend}) {
        button->setEnabled(isEnabled_ && hasResult);
    }
}

void Calculator::clear() {
    showsSum_ = false;
    form_.txtResult->setResult(QString());
    setHasResult(false);
}

void Calculator::markStale() {
    if (form_.txtResult->state() == State::Stale) {
        return;  // nothing changes with the next keystroke
    }
    setHasResult(false);
    if (!showsSum_ && !form_.txtResult->text().isEmpty()) {
        form_.txtResult->setState(State::Stale, QStringLiteral("公式或变量值已改变，请重新计算"));
    }
}

void Calculator::calculate() {
    clear();
    if (!formula_.text().isEmpty()) {
        showEvaluation(formula_.evaluate(values()));
    }
}

void Calculator::showEvaluation(const Evaluation& evaluation) {
    const QString reason = doubts();
    if (evaluation.kind == Evaluation::Kind::Error) {
        const State state = evaluation.text.isEmpty() ? State::Normal : State::Error;
        form_.txtResult->setResult(evaluation.text, state, reason);
        return;
    }
    const bool isNumber = evaluation.kind == Evaluation::Kind::Number;
    form_.txtResult->setResult(isNumber ? formatted(evaluation.number) : evaluation.text,
                               reason.isEmpty() ? State::Normal : State::Doubtful, reason);
    setHasResult(true);
}

QStringList Calculator::values() const {
    QStringList values;
    for (int row = 1; row < grid_.Rows(); ++row) {
        values.append(grid_.GetCellText(row, kValueColumn));
    }
    return values;
}

/// The notes of the values, a line for each; "" when there is none.
QString Calculator::doubts() const {
    QStringList notes;
    for (int row = 1; row < grid_.Rows(); ++row) {
        const QString note = grid_.CellNote(row, kValueColumn);
        if (!note.isEmpty()) {
            notes.append(
                QStringLiteral("变量“%1”：%2").arg(grid_.GetCellText(row, kNameColumn), note));
        }
    }
    return notes.join(u'\n');
}

QString Calculator::formatted(double value) const {
    const double places = engine::leadingNumber(form_.txtPrecision->text().toStdString());
    return QString::fromStdString(engine::formatFixed(value, static_cast<int>(places)));
}

/// "M+": appends a numeric result to the saved ones.
void Calculator::saveResult() {
    const QString text = form_.txtResult->text();
    if (engine::parseNumber(text.toStdString())) {
        savedResults_.append(text);
        grid_.AddListItem(text);
    }
}

/// "MR": shows the sum of the saved results.
void Calculator::recallResults() {
    double sum = 0;
    for (const QString& text : savedResults_) {
        sum += engine::leadingNumber(text.toStdString());
    }
    form_.txtResult->setResult(formatted(sum));
    showsSum_ = true;
}

/// "MC": discards the saved results.
void Calculator::clearResults() {
    for (int count = grid_.GetListCount(); count > 0; --count) {
        grid_.RemoveListItem(0);
    }
    savedResults_.clear();
}

void Calculator::copyResult() {
    if (!form_.txtResult->text().isEmpty()) {
        QGuiApplication::clipboard()->setText(form_.txtResult->text());
    }
}

}  // namespace varo
