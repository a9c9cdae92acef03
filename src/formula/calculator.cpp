#include "formula/calculator.h"

#include "engine/numbers.h"
#include "platform/ui/edit_grid.h"
#include "platform/ui/tool_tip.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>

namespace varo {

namespace {

constexpr int ValueColumn = 1;

using engine::CalcEngine;

bool isNumberType(std::int32_t type) {
    return type == 0 || type == CalcEngine::kNumber;
}

QString toQt(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace

Calculator::Calculator(Form& form, CalcEngine& engine) : form_(form), engine_(engine) {
    connect(form.cmdCalCulate, &QPushButton::clicked, this, [this] {
        // A value still being typed is stored when its editor loses the focus.
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
    // A message in place of a result can be longer than the box.
    connect(form.txtResult, &QLineEdit::textChanged, form.txtResult,
            [this](const QString& text) { form_.txtResult->setToolTip(ui::plainToolTip(text)); });
    connect(form.txtFormula, &QLineEdit::returnPressed, this, &Calculator::calculate);
}

void Calculator::calculate() {
    setResultButtonsEnabled(false);
    showResult(QString());
    if (form_.txtFormula->text().isEmpty()) {
        return;
    }
    const std::string formula = form_.txtFormula->text().toStdString();
    std::int32_t parsed = 0;
    engine_.ResetEngine();
    engine_.ParseFormula(formula, parsed);
    engine_.SetNumVar(CalcEngine::kOutput, "Result", 0.0, formula);
    if (!giveValues(formula)) {
        return;
    }
    double result = 0;
    std::int32_t type = 0;
    std::int32_t success = 0;
    std::int32_t state = 0;
    std::int32_t reserved = 0;
    engine_.BindNumVar("Result", result);
    engine_.GetResultType(type);
    engine_.Calculate(formula, success, reserved);
    if (success == 0) {
        showResult(wrongArgument());
        return;
    }
    std::string text;
    engine_.GetCalcState(state);
    if (state == 0) {
        engine_.GetErrorText(text);
        showResult(toQt(text));
        return;
    }
    if (isNumberType(type)) {
        showResult(formatted(result));
    } else if (type == CalcEngine::kText) {
        engine_.GetTextVar("Result", text);
        showResult(toQt(text));
    }
    setResultButtonsEnabled(true);
}

bool Calculator::giveValues(const std::string& formula) {
    std::int32_t count = 0;
    engine_.GetVarCount(count);
    std::string name;
    for (std::int32_t i = 1; i <= count; ++i) {
        std::int32_t type = 0;
        engine_.GetVarName(i, name);
        engine_.GetVarType(i, type);
        const std::string value = form_.MSFEditVarList->GetCellText(i, ValueColumn).toStdString();
        if (isNumberType(type)) {
            const auto number = engine::parseNumber(value);
            if (!number) {
                showResult(
                    QStringLiteral("用户为变量“%1”所赋的值与变量类型不符！").arg(toQt(name)));
                return false;
            }
            engine_.SetNumVar(CalcEngine::kInput, name, *number, formula);
        } else if (type == CalcEngine::kText) {
            engine_.SetTextVar(CalcEngine::kInput, name, value, formula);
        }
    }
    return true;
}

QString Calculator::wrongArgument() {
    enum Kind { NumberWanted = 1, TextWanted = 2, TooFew = 3 };
    std::int32_t reserved = 0;
    std::int32_t kind = 0;
    std::int32_t position = 0;
    std::int32_t argument = 0;
    std::string function;
    engine_.GetErrorInfo(reserved, kind, position, argument, function);
    switch (kind) {
        case NumberWanted:
            return QStringLiteral("函数“%1”的第%2参量只能被赋予数值型参数。")
                .arg(toQt(function))
                .arg(argument);
        case TextWanted:
            return QStringLiteral("函数“%1”的第%2参量只能被赋予文本型参数。")
                .arg(toQt(function))
                .arg(argument);
        case TooFew:
            return QStringLiteral("函数“%1”的参数不足。").arg(toQt(function));
        default:
            return {};
    }
}

QString Calculator::formatted(double value) const {
    const double places = engine::leadingNumber(form_.txtPrecision->text().toStdString());
    return toQt(engine::formatFixed(value, static_cast<int>(places)));
}

void Calculator::saveResult() {
    const QString text = form_.txtResult->text();
    if (engine::parseNumber(text.toStdString())) {
        savedResults_.append(text);
        form_.MSFEditVarList->AddListItem(text);
    }
}

void Calculator::recallResults() {
    double sum = 0;
    for (const QString& text : savedResults_) {
        sum += engine::leadingNumber(text.toStdString());
    }
    showResult(formatted(sum));
}

void Calculator::clearResults() {
    for (int count = form_.MSFEditVarList->GetListCount(); count > 0; --count) {
        form_.MSFEditVarList->RemoveListItem(0);
    }
    savedResults_.clear();
}

void Calculator::copyResult() {
    if (!form_.txtResult->text().isEmpty()) {
        QGuiApplication::clipboard()->setText(form_.txtResult->text());
    }
}

void Calculator::showResult(const QString& text) {
    form_.txtResult->setText(text);
    form_.txtResult->setCursorPosition(0);
}

void Calculator::setResultButtonsEnabled(bool enabled) {
    for (QPushButton* button : {form_.cmdSaveResult, form_.cmdCopy, form_.cmdSend}) {
        button->setEnabled(enabled);
    }
}

}  // namespace varo
