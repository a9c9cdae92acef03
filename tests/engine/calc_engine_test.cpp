#include "engine/calc_engine.h"

#include "engine/calculation.h"

#include <gtest/gtest.h>
#include <limits>

using namespace varo::engine;

namespace {

/// A host of the engine, with what it passes to be filled in.
struct Host {
    CalcEngine engine;
    std::int32_t success = -1;
    std::int32_t reserved = 0;
    std::string text;

    std::int32_t get(Status (CalcEngine::*getter)(std::int32_t&) noexcept) {
        std::int32_t value = -1;
        EXPECT_EQ((engine.*getter)(value), Status::Ok);
        return value;
    }
    std::int32_t parse(std::string_view formula) {
        std::int32_t status = -1;
        EXPECT_EQ(engine.ParseFormula(formula, status), Status::Ok);
        return status;
    }
    void calculate(std::string_view formula) {
        EXPECT_EQ(engine.Calculate(formula, success, reserved), Status::Ok);
    }

    /// After calculate(): the text result, the message, or what describes a wrong argument.
    std::string outcome() {
        std::int32_t kind = -1;
        std::int32_t position = -1;
        std::int32_t argument = -1;
        engine.GetErrorInfo(reserved, kind, position, argument, text);
        if (success == 0) {
            EXPECT_EQ(get(&CalcEngine::GetCalcState), 0);
            return text + ' ' + std::to_string(kind) + ' ' + std::to_string(position) + ' ' +
                   std::to_string(argument);
        }
        EXPECT_TRUE(kind == 0 && position == 0 && argument == 0 && text.empty());
        const bool isValid = get(&CalcEngine::GetCalcState) == 1;
        EXPECT_EQ(isValid ? engine.GetTextVar("RESULT", text) : engine.GetErrorText(text),
                  Status::Ok);
        return text;
    }
};

}  // namespace

TEST(CalcEngine, TellsTheOutcomeOfACalculation) {
    Host host;
    host.engine.SetNumVar(CalcEngine::kOutput, "Result", 0.0, "");
    host.engine.SetNumVar(CalcEngine::kInput, "Q", 10, "");
    host.engine.SetTextVar(CalcEngine::kInput, "s", "弯矩", "");
    for (const auto& [formula, expected] :
         rowsOf("1/0 → 除数不能为零！ | mod(7) → mod 3 1 2 | 1+sin('a') → sin 1 3 1 | "
                "STRFIND('a',2,1) → StrFind 2 1 2 | 弯矩*STRSUB('a',1) → StrSub 3 4 3 | "
                "R2S(q+Q,2) → 20.00 | q+L* → 公式不完整！ | StrCat(s,'!') → 弯矩! | "
                "a+q → 变量“a”没有值！ | sqrt(1,2) → 函数“sqrt”的参数过多！")) {
        host.calculate(formula);
        EXPECT_EQ(host.outcome(), expected) << formula;
    }
    host.calculate(repeated("(", 1 << 20));
    EXPECT_EQ(host.outcome(), "公式嵌套过深！");
}

TEST(CalcEngine, TellsTheVariablesOfAnUnfinishedFormulaAndRefusesWhatDoesNotExist) {
    Host host;
    CalcEngine& engine = host.engine;
    std::int32_t type = -1;
    EXPECT_EQ(engine.GetVarName(1, host.text), Status::IndexOutOfRange);
    EXPECT_EQ(host.parse("StrCat(s,'')"), 1);
    EXPECT_EQ(host.get(&CalcEngine::GetResultType), CalcEngine::kText);
    EXPECT_EQ(host.parse("弯矩/StrLen(s"), 0);
    EXPECT_EQ(host.get(&CalcEngine::GetVarCount), 2);
    EXPECT_EQ(engine.GetVarName(1, host.text), Status::Ok);
    EXPECT_EQ(host.text, "弯矩");
    EXPECT_EQ(engine.GetVarType(1, type), Status::Ok);
    EXPECT_EQ(type, CalcEngine::kNumber);
    EXPECT_EQ(engine.GetVarType(2, type), Status::Ok);
    EXPECT_EQ(type, CalcEngine::kText);
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::int32_t index : {0, -1, 3, Limits::min(), Limits::max()}) {
        EXPECT_EQ(engine.GetVarName(index, host.text), Status::IndexOutOfRange);
        EXPECT_EQ(engine.GetVarType(index, type), Status::IndexOutOfRange);
    }
    constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(engine.GetTextVar("s", host.text), Status::UnknownName);
    EXPECT_EQ(engine.GetTextVar("Result", host.text), Status::UnknownName);
    EXPECT_EQ(engine.SetNumVar(3, "a", 1, ""), Status::InvalidArgument);
    EXPECT_EQ(engine.SetNumVar(CalcEngine::kInput, "", 1, ""), Status::InvalidArgument);
    EXPECT_EQ(engine.SetNumVar(CalcEngine::kInput, "a", kNotANumber, ""), Status::InvalidArgument);
    EXPECT_EQ(engine.SetTextVar(0, "s", "x", ""), Status::InvalidArgument);
    EXPECT_EQ(host.text, "弯矩");
    EXPECT_EQ(type, CalcEngine::kText);
}

TEST(CalcEngine, WritesBoundNumbersOnSuccessOnlyAndForgetsAllWhenReset) {
    Host host;
    double result = -1;
    double input = -1;
    host.engine.BindNumVar("result", result);
    host.engine.BindNumVar("X", input);
    for (const auto& [x, formula, expected] :
         {std::tuple{0.0, "1/x", -1.0}, {4.0, "1/x", 0.25}, {4.0, "R2S(x,1)", 0.25}}) {
        host.engine.SetNumVar(CalcEngine::kInput, "x", x, "");
        host.calculate(formula);
        EXPECT_EQ(result, expected) << formula;
    }
    EXPECT_EQ(input, 4);
    host.engine.SetTextVar(CalcEngine::kInput, "s", "x", "");
    EXPECT_EQ(host.engine.GetTextVar("s", host.text), Status::Ok);
    host.calculate("1/0");
    EXPECT_EQ(host.engine.ResetEngine(), Status::Ok);
    for (const auto getter :
         {&CalcEngine::GetVarCount, &CalcEngine::GetCalcState, &CalcEngine::GetResultType}) {
        EXPECT_EQ(host.get(getter), 0);
    }
    EXPECT_EQ(host.engine.GetTextVar("s", host.text), Status::UnknownName);
    EXPECT_EQ(host.engine.GetErrorText(host.text), Status::Ok);
    EXPECT_EQ(host.text, "");
}
