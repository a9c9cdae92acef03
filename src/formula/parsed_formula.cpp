#include "formula/parsed_formula.h"

#include "engine/numbers.h"

namespace varo {

namespace {

using engine::CalcEngine;

constexpr auto kOutputName = "Result";

bool isNumberType(std::int32_t type) {
    return type == 0 || type == CalcEngine::kNumber;
}

QString toQt(const std::string& text) {
    return QString::fromStdString(text);
}

Evaluation error(const QString& message) {
    return {Evaluation::Kind::Error, 0, message};
}

}  // namespace

void ParsedFormula::setText(const QString& text) {
    text_ = text;
    utf8_ = text.toStdString();
    variables_.clear();
    engine_.ResetEngine();
    std::int32_t parsed = 0;
    engine_.ParseFormula(utf8_, parsed);
    engine_.SetNumVar(CalcEngine::kOutput, kOutputName, 0.0, utf8_);
    engine_.BindNumVar(kOutputName, number_);

    std::int32_t count = 0;
    engine_.GetVarCount(count);
    std::string name;
    for (std::int32_t i = 1; i <= count; ++i) {
        engine_.GetVarName(i, name);
        variables_.append(toQt(name));
    }
}

Evaluation ParsedFormula::evaluate(const QStringList& values) {
    const QString mismatch = giveValues(values);
    if (!mismatch.isEmpty()) {
        return error(mismatch);
    }
    std::int32_t success = 0;
    std::int32_t reserved = 0;
    engine_.Calculate(utf8_, success, reserved);
    if (success == 0) {
        return error(wrongArgument());
    }
    std::string text;
    std::int32_t state = 0;
    engine_.GetCalcState(state);
    if (state == 0) {
        engine_.GetErrorText(text);
        return error(toQt(text));
    }
    std::int32_t type = 0;
    engine_.GetResultType(type);
    if (isNumberType(type)) {
        return {Evaluation::Kind::Number, number_, {}};
    }
    engine_.GetTextVar(kOutputName, text);
    return {Evaluation::Kind::Text, 0, toQt(text)};
}

/// Sets every variable. Returns what is wrong with the first value that does not fit its type; ""
/// when all fit.
QString ParsedFormula::giveValues(const QStringList& values) {
    for (qsizetype i = 0; i < variables_.size(); ++i) {
        const std::string name = variables_[i].toStdString();
        const std::string value = values.value(i).toStdString();
        std::int32_t type = 0;
        engine_.GetVarType(static_cast<std::int32_t>(i + 1), type);
        if (type == CalcEngine::kText) {
            engine_.SetTextVar(CalcEngine::kInput, name, value, utf8_);
        } else if (const auto number = engine::parseNumber(value)) {
            engine_.SetNumVar(CalcEngine::kInput, name, *number, utf8_);
        } else {
            return QStringLiteral("用户为变量“%1”所赋的值与变量类型不符！").arg(variables_[i]);
        }
    }
    return {};
}

QString ParsedFormula::wrongArgument() {
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

}  // namespace varo
