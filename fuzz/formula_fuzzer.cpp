// Takes the bytes that libFuzzer generates as a formula and aborts when the engine breaks one of
// its promises. Values for the variables follow from the bytes, too, so that every finding can be
// repeated.

#include "chance.h"
#include "engine/calc_engine.h"
#include "engine/formula.h"
#include "engine/numbers.h"
#include "promise.h"

#include <array>
#include <bit>
#include <cmath>
#include <string>
#include <vector>

using namespace varo::engine;
using varo::fuzz::require;

namespace {

/// A value for a variable of that type; texts as from Chance::text().
Value chosenValue(Chance& chance, Type type, std::string_view source) {
    return type == Type::Text ? Value(chance.text(source)) : chance.number();
}

bool same(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

bool same(const Error& a, const Error& b) {
    return a.code == b.code && a.position == b.position && a.argument == b.argument &&
           a.subject == b.subject;
}

bool same(const Value& a, const Value& b) {
    const double* const left = std::get_if<double>(&a);
    const double* const right = std::get_if<double>(&b);
    return left != nullptr && right != nullptr ? same(*left, *right) : a == b;
}

bool sameVariables(const Formula& a, const Formula& b, bool withTypes) {
    bool alike = a.variableCount() == b.variableCount();
    for (std::size_t i = 0; alike && i < a.variableCount(); ++i) {
        alike = a.variable(i).name == b.variable(i).name &&
                (!withTypes || a.variable(i).type == b.variable(i).type);
    }
    return alike;
}

bool sameMeaning(const Formula& a, const Formula& b) {
    return same(a.error(), b.error()) && a.resultType() == b.resultType() &&
           sameVariables(a, b, true);
}

/// What evaluating a formula comes to.
struct Outcome {
    bool worked = false;
    Value value;
    Error error;
};

bool same(const Outcome& a, const Outcome& b) {
    return a.worked == b.worked && (a.worked ? same(a.value, b.value) : same(a.error, b.error));
}

bool give(Values& values, std::string_view name, const Value& value) {
    const double* const number = std::get_if<double>(&value);
    return number != nullptr ? values.set(name, *number)
                             : values.set(name, std::string_view(std::get<std::string>(value)));
}

Outcome evaluate(const Formula& formula, const Values& values) {
    const Value before = 4711.0;
    Outcome outcome{false, before, {}};
    outcome.worked = formula.evaluate(values, outcome.value, outcome.error);
    require(outcome.worked || same(outcome.value, before), "a failure leaves the result alone");
    require(outcome.worked || outcome.error, "a failure has a reason");
    return outcome;
}

/// The answer of a formula with the text variable s and the number variable p.
Value ask(const Formula& question, std::string_view text, double position) {
    Values values(question);
    values.set("s", text);
    values.set("p", position);
    const Outcome outcome = evaluate(question, values);
    require(outcome.worked, "a text has a length and parts");
    return outcome.value;
}

double lengthOf(std::string_view text) {
    static const Formula question = Formula::parse("StrLen(s)");
    return std::get<double>(ask(question, text, 0));
}

std::string characterAt(std::string_view text, std::uint32_t position) {
    static const Formula question = Formula::parse("StrSub(s,p,1,0)");
    return std::get<std::string>(ask(question, text, position));
}

/// `text` with U+FFFD for what is no UTF-8.
std::string wellFormed(std::string_view text) {
    static const Formula question = Formula::parse("StrLen(s)");
    Values values(question);
    values.set("s", text);
    return values.texts()[0];
}

void checkError(const Formula& formula, std::string_view text) {
    const Error error = formula.error();
    require(formula.isValid() == (error.code == ErrorCode::None), "a valid formula has no error");
    require(formula.isValid() == error.text().empty(), "an error has a message");
    if (formula.isValid()) {
        return;
    }
    require(error.code < ErrorCode::NoValue, "parsing finds only what is wrong with the formula");
    require(error.position >= 1 && error.position <= lengthOf(text) + 1,
            "the position of an error lies in the formula");
    require(
        error.code != ErrorCode::BadCharacter || error.subject == characterAt(text, error.position),
        "a bad character stands at its position");
    require(!isWrongArgument(error.code) || (error.argument >= 1 && !error.subject.empty()),
            "a wrong argument has a number and a function");
}

void checkVariables(const Formula& formula, Chance& chance) {
    Values values(formula);
    for (std::size_t i = 0; i < formula.variableCount(); ++i) {
        const auto [name, type] = formula.variable(i);
        require(formula.indexOf(name) == i, "a variable is found by its name");
        require(type == Type::Text ? !values.set(i, 1.0) : !values.set(i, "x"),
                "a variable takes no value of the other type");
        require(give(values, name, chosenValue(chance, type, name)), "a variable takes a value");
    }
    require(!values.firstMissing(), "no value is missing when all were given");
}

/// What must not change when something is put before or behind the formula.
void checkSurroundings(const Formula& formula, std::string_view text) {
    const std::string inside(text);
    const Error error = formula.error();
    const Formula indented = Formula::parse("\u3000" + inside);
    Error moved = indented.error();
    moved.position -= moved ? 1 : 0;
    require(same(moved, error) && indented.resultType() == formula.resultType() &&
                sameVariables(formula, indented, true),
            "a blank at the start only moves the error");
    const Formula prefixed = Formula::parse("@ " + inside);
    require(sameVariables(formula, prefixed, false),
            "an error leaves the list of variables complete");
    require(prefixed.error().code == ErrorCode::BadCharacter && prefixed.error().position == 1,
            "the first syntax error is the one reported");
    const Formula longer = Formula::parse(inside + " )");
    require(sameVariables(formula, longer, formula.isValid()),
            "the variables do not depend on what follows the formula");
    if (error.code == ErrorCode::BadCharacter || error.code == ErrorCode::UnclosedText ||
        error.code == ErrorCode::NestedTooDeeply) {
        require(same(error, longer.error()), "a syntax error does not depend on what follows it");
    } else if (formula.isValid()) {
        require(longer.error().code == ErrorCode::Parentheses &&
                    longer.error().position == lengthOf(text) + 2,
                "a parenthesis that closes nothing is an error");
    }
}

/// Puts the formula into a frame that does not change its value.
void checkFrame(const Formula& formula, std::string_view text, const std::vector<Value>& given,
                const Outcome& outcome, Chance& chance) {
    constexpr std::string_view kExtra = "frame_of_the_fuzzer_";
    const std::string inside(text);
    const std::string extra(kExtra);
    const std::string failing = formula.resultType() == Type::Text ? "R2S(1/0,1)" : "1/0";
    const std::array framed{"(" + inside + ")", "If(1," + inside + "," + failing + ")",
                            "If(0," + failing + "," + inside + ")",
                            "If(-.5 And pi," + inside + "," + failing + ")",
                            "If(" + extra + "," + inside + "," + inside + ")",
                            "If(" + extra + "=2," + failing + "," + inside + ")",
                            // Evaluated with a look at every step, as everything with a text is.
                            "If(StrLen(\"\")=0," + inside + "," + failing + ")"};
    const Formula other = Formula::parse(framed[chance.below(framed.size())]);
    if (formula.indexOf(kExtra) || other.error().code == ErrorCode::NestedTooDeeply) {
        return;
    }
    require(other.isValid() && other.resultType() == formula.resultType(),
            "a frame does not make a formula wrong");
    Values values(other);
    values.set(kExtra, static_cast<double>(chance.below(2)));
    for (std::size_t i = 0; i < given.size(); ++i) {
        require(give(values, formula.variable(i).name, given[i]),
                "a frame does not change the type of a variable");
    }
    require(same(outcome, evaluate(other, values)), "a frame does not change the value");
}

void checkFailingRows(const Formula& formula, std::span<const Column> columns, std::size_t rows) {
    std::vector<double> results(rows);
    std::vector<ErrorCode> status(rows);
    require(formula.evaluateRows(columns, results, status) == rows, "every row fails");
    for (std::size_t i = 0; i < rows; ++i) {
        require(std::isnan(results[i]) && status[i] != ErrorCode::None, "a failed row is NaN");
        require(formula.isValid() || status[i] == formula.error().code,
                "the error of the formula is the reason of the row");
    }
}

/// For a formula of numbers: a table gives what its rows give one by one.
void checkRows(const Formula& formula, Chance& chance) {
    constexpr std::array<std::size_t, 8> kRows{0, 1, 2, 5, 17, 64, 257, 1030};
    const std::size_t rows = kRows[chance.below(chance.below(8) + 1)];
    std::vector<std::vector<double>> table(formula.variableCount(), std::vector<double>(rows));
    std::vector<Column> columns;
    for (std::vector<double>& numbers : table) {
        if (chance.below(3) == 0) {
            numbers.assign(rows, chance.number());
            columns.emplace_back(numbers.empty() ? 0 : numbers[0]);
            continue;
        }
        for (double& number : numbers) {
            number = chance.number();
        }
        columns.emplace_back(std::span<const double>(numbers));
    }
    std::vector<double> results(rows);
    std::vector<double> again(rows, 4711);
    std::vector<ErrorCode> status(rows);
    const std::size_t failures = formula.evaluateRows(columns, results, status);
    require(formula.evaluateRows(columns, again, {}) == failures, "the reasons may be left out");
    std::size_t expectedFailures = 0;
    std::vector<double> row(table.size());
    for (std::size_t i = 0; i < rows; ++i) {
        for (std::size_t k = 0; k < table.size(); ++k) {
            row[k] = table[k][i];
        }
        double expected = 0;
        Error error;
        const bool worked = formula.evaluate(row, expected, error);
        expectedFailures += worked ? 0 : 1;
        require(status[i] == (worked ? ErrorCode::None : error.code), "a row has its own reason");
        require(worked ? same(results[i], expected) : std::isnan(results[i]),
                "a row gives what it gives alone");
        require(worked ? same(again[i], expected) : std::isnan(again[i]),
                "results do not depend on the reasons being wanted");
    }
    require(failures == expectedFailures, "failures are counted");
    if (rows > 0 && !columns.empty()) {
        columns.back() = Column(std::span<const double>(table.back()).first(rows - 1));
        checkFailingRows(formula, columns, rows);
        columns.pop_back();
        checkFailingRows(formula, columns, rows);
    }
}

/// The evaluation from an array of numbers, and by rows, next to the one from Values.
void checkNumbers(const Formula& formula, const Values& values, const Outcome& outcome,
                  Chance& chance) {
    bool anyText = false;
    for (std::size_t i = 0; i < formula.variableCount(); ++i) {
        anyText = anyText || formula.variable(i).type == Type::Text;
    }
    if (!formula.isValid() || anyText) {
        checkFailingRows(formula, std::vector(formula.variableCount(), Column(1.0)), 3);
        return;
    }
    Outcome other{false, 0.0, {}};
    double& number = std::get<double>(other.value);
    other.worked = formula.evaluate(values.numbers(), number, other.error);
    require(same(outcome, other), "an array of numbers gives what the values give");
    checkRows(formula, chance);
}

void checkResult(const Formula& formula, const Outcome& outcome, Chance& chance) {
    if (!outcome.worked) {
        require(!formula.isValid() || outcome.error.code > ErrorCode::NoValue,
                "a valid formula fails only at what evaluating shows");
        require(formula.isValid() || same(outcome.error, formula.error()),
                "a wrong formula fails with its error");
        return;
    }
    require(formula.isValid(), "a wrong formula has no result");
    if (formula.resultType() == Type::Text) {
        const std::string& text = std::get<std::string>(outcome.value);
        require(wellFormed(text) == text, "a text result is UTF-8");
        return;
    }
    const double number = std::get<double>(outcome.value);
    require(std::isfinite(number), "a result is finite");
    require(parseNumber(shortest(number)) == number, "a result reads back from its text");
    const int decimals = static_cast<int>(chance.below(25));
    const auto rounded = parseNumber(formatFixed(number, decimals));
    require(!rounded || *rounded == roundDecimals(number, decimals),
            "a text of so many decimals is the number rounded to them");
}

void checkLiteral(const Formula& formula, std::string_view text, const Outcome& outcome) {
    const double leading = leadingNumber(text);
    require(std::isfinite(leading), "a leading number is finite");
    if (const std::optional<double> number = parseNumber(text)) {
        require(formula.isValid() && outcome.worked && std::get<double>(outcome.value) == *number,
                "the text of a number is a formula for it");
        require(leading == *number, "the text of a number leads with it");
    }
}

void checkCalcEngine(const Formula& formula, std::string_view text, const std::vector<Value>& given,
                     const Outcome& outcome) {
    CalcEngine engine;
    std::int32_t answer = -1;
    std::string name;
    require(
        engine.ParseFormula(text, answer) == Status::Ok && answer == (formula.isValid() ? 1 : 0),
        "the calculation engine parses");
    engine.GetVarCount(answer);
    require(static_cast<std::size_t>(answer) == given.size(), "it has the variables");
    engine.GetResultType(answer);
    require(answer == static_cast<int>(formula.resultType()), "it has the type of the result");
    for (std::size_t i = 0; i < given.size(); ++i) {
        const auto index = static_cast<std::int32_t>(i + 1);
        require(engine.GetVarName(index, name) == Status::Ok && name == formula.variable(i).name,
                "it has the names");
        require(engine.GetVarType(index, answer) == Status::Ok &&
                    answer == static_cast<int>(formula.variable(i).type),
                "it has the types");
        const double* const number = std::get_if<double>(&given[i]);
        require((number != nullptr
                     ? engine.SetNumVar(CalcEngine::kInput, name, *number, text)
                     : engine.SetTextVar(CalcEngine::kInput, name, std::get<std::string>(given[i]),
                                         text)) == Status::Ok,
                "it takes values");
    }
    double bound = 4711;
    std::int32_t success = -1;
    std::int32_t reserved = 0;
    engine.BindNumVar("Result", bound);
    require(engine.Calculate(text, success, reserved) == Status::Ok, "it calculates");
    engine.GetCalcState(answer);
    require(answer == (outcome.worked ? 1 : 0), "its state is that of the evaluation");
    engine.GetErrorText(name);
    require(name == (outcome.worked ? "" : outcome.error.text()), "so is its message");
    const ErrorCode code = outcome.worked ? ErrorCode::None : outcome.error.code;
    require(success == (isWrongArgument(code) ? 0 : 1), "only wrong arguments are failures");
    std::int32_t position = -1;
    engine.GetErrorInfo(reserved, answer, position, success, name);
    require((answer != 0) == isWrongArgument(code), "only wrong arguments are described");
    require(answer == 0 || (name == outcome.error.subject && success == outcome.error.argument &&
                            static_cast<std::uint32_t>(position) == outcome.error.position),
            "wrong arguments are described as the formula does");
    const bool isText = std::holds_alternative<std::string>(outcome.value);
    require((engine.GetTextVar("Result", name) == Status::Ok) == (outcome.worked && isText) &&
                (!outcome.worked || !isText || name == std::get<std::string>(outcome.value)),
            "a text result can be fetched");
    require(same(bound, outcome.worked && !isText ? std::get<double>(outcome.value) : 4711.0),
            "a number is written on success only");
    engine.ResetEngine();
    engine.GetVarCount(answer);
    engine.GetErrorText(name);
    require(answer == 0 && name.empty() && engine.GetTextVar("Result", name) != Status::Ok,
            "it forgets what it calculated");
}

void check(std::string_view text) {
    Chance chance(text);
    const Formula formula = Formula::parse(text);
    require(sameMeaning(formula, Formula::parse(text)), "parsing twice gives the same");
    require(sameMeaning(formula, Formula::parse(wellFormed(text))),
            "a byte that is no UTF-8 reads as U+FFFD");
    checkError(formula, text);
    checkVariables(formula, chance);
    checkSurroundings(formula, text);

    Values values(formula);
    if (formula.isValid() && formula.variableCount() > 0) {
        const Error error = evaluate(formula, values).error;
        require(error.code == ErrorCode::NoValue && error.subject == formula.variable(0).name,
                "the first variable without a value is named");
    }
    std::vector<Value> given;
    for (std::size_t i = 0; i < formula.variableCount(); ++i) {
        const auto [name, type] = formula.variable(i);
        given.push_back(chosenValue(chance, type, text));
        give(values, name, given.back());
    }
    const Outcome outcome = evaluate(formula, values);
    require(same(outcome, evaluate(formula, values)), "evaluating twice gives the same");
    checkResult(formula, outcome, chance);
    checkLiteral(formula, text, outcome);
    if (formula.isValid()) {
        checkFrame(formula, text, given, outcome, chance);
    }
    if (formula.resultType() == Type::Number) {
        checkNumbers(formula, values, outcome, chance);
    }
    checkCalcEngine(formula, text, given, outcome);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    check(varo::fuzz::asText(bytes, size));
    return 0;
}
