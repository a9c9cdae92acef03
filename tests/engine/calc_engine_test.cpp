#include "engine/calc_engine.h"

#include "engine/calculation.h"
#include "engine/numbers.h"

#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <vector>

using namespace varo::engine;

namespace {

using Cells = std::map<std::string, std::string>;

std::string messageOf(std::int32_t kind, const std::string& function, std::int32_t argument) {
    switch (kind) {
        case 1:
            return "函数“" + function + "”的第" + std::to_string(argument) +
                   "参量只能被赋予数值型参数。";
        case 2:
            return "函数“" + function + "”的第" + std::to_string(argument) +
                   "参量只能被赋予文本型参数。";
        case 3:
            return "函数“" + function + "”的参数不足。";
        default:
            return "";
    }
}

/// Drives the engine as a calculator does: `cells` are the texts that the user gave to the
/// variables. Answers what the result box shows at two decimal places.
std::string resultBox(CalcEngine& engine, std::string_view formula, const Cells& cells = {}) {
    std::int32_t parsed = 0;
    std::int32_t count = 0;
    std::int32_t reserved = 0;
    engine.ResetEngine();
    engine.ParseFormula(formula, parsed);
    engine.SetNumVar(CalcEngine::kOutput, "Result", 0.0, formula);
    engine.GetVarCount(count);
    for (std::int32_t i = 1; i <= count; ++i) {
        std::string name;
        std::int32_t type = -1;
        engine.GetVarName(i, name);
        engine.GetVarType(i, type);
        const auto cell = cells.find(name);
        const std::string text = cell == cells.end() ? "" : cell->second;
        if (type == 2) {
            engine.SetTextVar(CalcEngine::kInput, name, text, formula);
        } else if (const std::optional<double> number = parseNumber(text)) {
            engine.SetNumVar(CalcEngine::kInput, name, *number, formula);
        } else {
            return "用户为变量“" + name + "”所赋的值与变量类型不符！";
        }
    }
    double result = 0;
    std::int32_t resultType = -1;
    std::int32_t success = -1;
    std::int32_t state = -1;
    std::string text;
    engine.BindNumVar("Result", result);
    engine.GetResultType(resultType);
    engine.Calculate(formula, success, reserved);
    if (success == 0) {
        std::int32_t kind = 0;
        std::int32_t position = 0;
        std::int32_t argument = 0;
        engine.GetErrorInfo(reserved, kind, position, argument, text);
        return messageOf(kind, text, argument);
    }
    engine.GetCalcState(state);
    if (state == 0) {
        engine.GetErrorText(text);
    } else if (resultType == 2) {
        engine.GetTextVar("Result", text);
    } else {
        text = formatFixed(result, 2);
    }
    return text;
}

}  // namespace

TEST(CalcEngine, FillsTheResultBox) {
    struct Case {
        Cells cells;
        std::vector<std::string_view> rows;
    };
    const std::initializer_list<Case> cases = {
        {{},
         {"1/3 → 0.33", "-0.001 → 0.00", "1/0 → 除数不能为零！", "mod(7) → 函数“mod”的参数不足。",
          "sin('a') → 函数“sin”的第1参量只能被赋予数值型参数。",
          "STRFIND('a',2,1) → 函数“StrFind”的第2参量只能被赋予文本型参数。"}},
        {{{"q", "10"}, {"L", "6"}}, {"q*L^2/8 → 45.00", "q+Q → 20.00", "q+L* → 公式不完整！"}},
        {{{"s", "弯矩"}}, {"StrCat(s,'!') → 弯矩!", "If(s='弯矩',1,2) → 1.00"}},
        {{{"a", ""}}, {"a+1 → 用户为变量“a”所赋的值与变量类型不符！", "StrCat(a,'!') → !"}},
        {{{"a", "12mm"}}, {"a+1 → 用户为变量“a”所赋的值与变量类型不符！"}}};
    CalcEngine engine;
    for (const Case& c : cases) {
        for (const std::string_view row : c.rows) {
            const auto [formula, expected] = sidesOf(row);
            EXPECT_EQ(resultBox(engine, formula, c.cells), expected) << row;
        }
    }
    EXPECT_EQ(resultBox(engine, repeated("(", 1 << 20)), "公式嵌套过深！");
}

TEST(CalcEngine, TellsTheVariablesOfAnUnfinishedFormula) {
    CalcEngine engine;
    std::int32_t parsed = -1;
    std::int32_t count = -1;
    std::int32_t type = -1;
    std::string name;
    EXPECT_EQ(engine.ParseFormula("弯矩/StrLen(s", parsed), Status::Ok);
    EXPECT_EQ(parsed, 0);
    EXPECT_EQ(engine.GetVarCount(count), Status::Ok);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(engine.GetVarName(1, name), Status::Ok);
    EXPECT_EQ(name, "弯矩");
    EXPECT_EQ(engine.GetVarType(1, type), Status::Ok);
    EXPECT_EQ(type, CalcEngine::kNumber);
    EXPECT_EQ(engine.GetVarType(2, type), Status::Ok);
    EXPECT_EQ(type, CalcEngine::kText);
    EXPECT_EQ(engine.ParseFormula("弯矩/StrLen(s)", parsed), Status::Ok);
    EXPECT_EQ(parsed, 1);
}

TEST(CalcEngine, RefusesIndicesAndNamesThatDoNotExist) {
    CalcEngine engine;
    std::int32_t parsed = 0;
    std::int32_t type = 7;
    std::string text = "kept";
    EXPECT_EQ(engine.GetVarName(1, text), Status::IndexOutOfRange);
    engine.ParseFormula("a+StrLen(s)", parsed);
    for (const std::int32_t index : {0, -1, 3, std::numeric_limits<std::int32_t>::min(),
                                     std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_EQ(engine.GetVarName(index, text), Status::IndexOutOfRange);
        EXPECT_EQ(engine.GetVarType(index, type), Status::IndexOutOfRange);
    }
    EXPECT_EQ(engine.GetTextVar("s", text), Status::UnknownName);
    EXPECT_EQ(engine.GetTextVar("Result", text), Status::UnknownName);
    EXPECT_EQ(engine.SetNumVar(3, "a", 1, ""), Status::InvalidArgument);
    EXPECT_EQ(engine.SetNumVar(CalcEngine::kInput, "", 1, ""), Status::InvalidArgument);
    EXPECT_EQ(
        engine.SetNumVar(CalcEngine::kInput, "a", std::numeric_limits<double>::quiet_NaN(), ""),
        Status::InvalidArgument);
    EXPECT_EQ(engine.SetTextVar(0, "s", "x", ""), Status::InvalidArgument);
    EXPECT_EQ(text, "kept");
    EXPECT_EQ(type, 7);
}

TEST(CalcEngine, ReportsAVariableThatWasGivenNoValue) {
    CalcEngine engine;
    std::int32_t success = 0;
    std::int32_t state = 7;
    std::int32_t reserved = 0;
    std::string text;
    engine.SetNumVar(CalcEngine::kInput, "A", 1, "a+b");
    EXPECT_EQ(engine.Calculate("a+b", success, reserved), Status::Ok);
    EXPECT_NE(success, 0);
    engine.GetCalcState(state);
    EXPECT_EQ(state, 0);
    engine.GetErrorText(text);
    EXPECT_EQ(text, "变量“b”没有值！");
}

TEST(CalcEngine, WritesBoundNumbersOnSuccessOnly) {
    CalcEngine engine;
    std::int32_t success = 0;
    std::int32_t reserved = 0;
    double result = -1;
    double input = -1;
    engine.BindNumVar("result", result);
    engine.BindNumVar("X", input);
    engine.SetNumVar(CalcEngine::kInput, "x", 0, "");
    engine.Calculate("1/x", success, reserved);
    EXPECT_EQ(result, -1);
    engine.SetNumVar(CalcEngine::kInput, "x", 4, "");
    engine.Calculate("1/x", success, reserved);
    EXPECT_EQ(result, 0.25);
    EXPECT_EQ(input, 4);
    engine.Calculate("R2S(x,1)", success, reserved);
    EXPECT_EQ(result, 0.25);
    std::string text;
    EXPECT_EQ(engine.GetTextVar("RESULT", text), Status::Ok);
    EXPECT_EQ(text, "4.0");
}

TEST(CalcEngine, ResetForgetsTheCalculation) {
    CalcEngine engine;
    ASSERT_EQ(resultBox(engine, "StrLen(s)", {{"s", "abc"}}), "3.00");
    EXPECT_EQ(engine.ResetEngine(), Status::Ok);
    std::int32_t value = 7;
    engine.GetVarCount(value);
    EXPECT_EQ(value, 0);
    engine.GetCalcState(value);
    EXPECT_EQ(value, 0);
    engine.GetResultType(value);
    EXPECT_EQ(value, 0);
    std::string text = "x";
    EXPECT_EQ(engine.GetTextVar("s", text), Status::UnknownName);
    EXPECT_EQ(engine.GetErrorText(text), Status::Ok);
    EXPECT_EQ(text, "");
}

TEST(CalcEngine, DescribesAWrongArgumentAndNothingElse) {
    CalcEngine engine;
    std::int32_t success = -1;
    std::int32_t reserved = 0;
    std::int32_t kind = -1;
    std::int32_t position = -1;
    std::int32_t argument = -1;
    std::string function = "x";
    engine.Calculate("弯矩*STRSUB(\"a\",1)", success, reserved);
    EXPECT_EQ(success, 0);
    engine.GetErrorInfo(reserved, kind, position, argument, function);
    EXPECT_EQ(kind, 3);
    EXPECT_EQ(position, 4);
    EXPECT_EQ(argument, 3);
    EXPECT_EQ(function, "StrSub");
    engine.Calculate("1/0", success, reserved);
    EXPECT_EQ(success, 1);
    engine.GetErrorInfo(reserved, kind, position, argument, function);
    EXPECT_EQ(kind, 0);
    EXPECT_EQ(argument, 0);
    EXPECT_EQ(function, "");
}
