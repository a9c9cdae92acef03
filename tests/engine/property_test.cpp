// What holds for every formula, tried on random ones: expression trees that are written out in
// several ways and evaluated in several ways.

#include "engine/calculation.h"
#include "engine/language/functions.h"
#include "engine/numbers.h"
#include "engine/text/unicode.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <random>

using namespace varo::engine;

namespace {

/// What a formula may be made of; each kind includes the ones before it. Texts are without
/// variables of their own.
enum class Kind { Arithmetic, Numbers, Texts, TextVariables };

/// An operator or a function. Levels count as in the language's table of operators, the tightest is
/// 1; 0 is that of what never needs parentheses. Parameters: n number, t text.
struct Word {
    std::string_view spelling;
    int level;
    std::string_view parameters = "nn";
};

constexpr int kSign = 3;
const std::vector<Word> kArithmetic{
    {"+", 5}, {"-", 5},  {"*", 4},          {"/", 4},          {"=", 6},         {"<>", 6},
    {"<", 6}, {"<=", 6}, {">", 6},          {">=", 6},         {" And ", 8},     {" Or ", 9},
    {"+", 5}, {"*", 4},  {"-", kSign, "n"}, {"+", kSign, "n"}, {"Not ", 7, "n"}, {"If", 0, "nnn"}};

/// `words` and the functions that give that type, of texts or not.
std::vector<Word> withFunctions(std::vector<Word> words, ParameterType result, bool ofTexts) {
    for (const FunctionInfo& info : kFunctions) {
        if (info.result == result && info.isOfNumbers() != ofTexts) {
            words.push_back({info.name, 0, info.parameters});
        }
    }
    return words;
}

const std::vector<Word> kOfNumbers =
    withFunctions({{"^", 2}, {"^", 2}, {"^", 2}, {"!", 1, "n"}}, ParameterType::Number, false);
const std::vector<Word> kOfTexts =
    withFunctions({{"=", 6, "tt"}, {"<", 6, "tt"}, {" Like ", 6, "tt"}, {" Equal ", 6, "tt"}},
                  ParameterType::Number, true);
const std::vector<Word> kToTexts =
    withFunctions({{"If", 0, "ntt"}, {"StrCat", 0, "tttt"}}, ParameterType::Text, true);

constexpr std::array<std::string_view, 8> kLiterals{"0", "1", "2", ".5", "3", "12", "1e154", "171"};
constexpr std::array kNumbers{0.0, 1.0, -1.0, 2.0, -0.0, 0.5, 3.0, -2.5, 7.0, 100.0, 1e-9, 1e200};
constexpr std::array<std::string_view, 6> kTexts{"", "a", "aAbA", "弯矩-b", "-12.5", "2"};

constexpr std::size_t kNumberVariables = 4;
using Names = std::array<std::string_view, kNumberVariables + 2>;  // the last two of texts
constexpr Names kPlainNames{"a", "b", "c", "d", "s", "t"};

/// A word applied to its operands, or a leaf: a variable or what is literally there.
struct Expression {
    Word word{"", 0, ""};
    std::vector<Expression> operands;
    std::optional<std::size_t> variable;
    std::string literal;
};

/// Random expressions and values.
class Generator {
  public:
    explicit Generator(unsigned seed) : random_(seed) {}

    std::size_t below(std::size_t bound) { return random_() % bound; }

    template <class Range>
    const auto& oneOf(const Range& range) {
        return range[below(std::size(range))];
    }

    Expression expression(Kind kind, char type = 'n', int depth = 5) {
        if (depth == 0 || below(6) == 0) {
            return type == 't' ? textLeaf(kind) : numberLeaf();
        }
        Expression made{type == 't' ? oneOf(kToTexts) : wordForNumber(kind), {}, {}, {}};
        for (const char parameter : made.word.parameters) {
            made.operands.push_back(expression(kind, parameter, depth - 1));
        }
        return made;
    }

    /// `text` with ASCII characters in any letter case and in full-width forms.
    std::string respelled(std::string_view text) {
        std::string result;
        for (const char c : text) {
            const std::size_t way = c > ' ' && c <= '~' ? below(3) : 0;
            if (way == 1) {
                appendCharacter(result, static_cast<char32_t>(c - 0x21 + 0xFF01));
            } else {
                result += way == 2 && std::isalpha(c) != 0 ? static_cast<char>(c ^ 0x20) : c;
            }
        }
        return result;
    }

  private:
    const Word& wordForNumber(Kind kind) {
        const std::size_t choice = below(10);
        if (choice < 3 && kind >= Kind::Numbers) {
            return oneOf(kOfNumbers);
        }
        return choice < 5 && kind >= Kind::Texts ? oneOf(kOfTexts) : oneOf(kArithmetic);
    }

    Expression numberLeaf() {
        if (below(3) > 0) {
            return {{}, {}, below(kNumberVariables), {}};
        }
        return {{}, {}, {}, std::string(oneOf(kLiterals))};
    }

    Expression textLeaf(Kind kind) {
        if (kind == Kind::TextVariables && below(2) == 0) {  // a function tells that it is a text
            return {{"StrTrimS", 0, "t"}, {{{}, {}, kNumberVariables + below(2), {}}}, {}, {}};
        }
        return {{}, {}, {}, '"' + std::string(oneOf(kTexts)) + '"'};
    }

    std::mt19937_64 random_;
};

/// How to write an expression out.
struct Style {
    Names names = kPlainNames;
    bool allParentheses = false;
    Generator* respelling = nullptr;  ///< of everything but texts
};

std::string written(const Expression& expression, const Style& style, int loosest = 9) {
    const auto& [word, operands, variable, literal] = expression;
    const auto say = [&style](std::string_view text) {
        return style.respelling != nullptr ? style.respelling->respelled(text) : std::string(text);
    };
    std::string text;
    if (variable) {
        text = say(style.names[*variable]);
    } else if (operands.empty()) {
        text = literal.front() == '"' ? literal : say(literal);
    } else if (word.level == 0) {
        text = say(word.spelling);
        for (std::size_t i = 0; i < operands.size(); ++i) {
            text += say(i == 0 ? "(" : ",") + written(operands[i], style);
        }
        text += say(")");
    } else if (operands.size() == 1) {
        const std::string operand = written(operands[0], style, word.level);
        text = word.spelling == "!" ? operand + say("!") : say(word.spelling) + operand;
    } else {
        const bool power = word.spelling == "^";
        text = written(operands[0], style, power ? word.level - 1 : word.level);
        text += say(word.spelling) + written(operands[1], style, power ? kSign : word.level - 1);
    }
    return style.allParentheses || word.level > loosest ? say("(") + text + say(")") : text;
}

/// A value as a formula spells it.
std::string spelled(const Value& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) {
        return '"' + *text + '"';
    }
    const double number = std::get<double>(value);
    return number == 0 && std::signbit(number) ? "(-0)" : '(' + shortest(number) + ')';
}

/// Writes random expressions in the plain style, in `style`, and with constants for the variables,
/// and expects the same of all.
void expectSameMeaning(Generator& generator, const Style& style, int count) {
    int errors = 0;
    for (int i = 0; i < count; ++i) {
        const Kind kind = generator.oneOf(std::array{Kind::Numbers, Kind::TextVariables});
        const Expression expression =
            generator.expression(kind, generator.oneOf(std::string_view("nnt")));
        std::array<Value, kNumberVariables + 2> given;
        std::generate(given.begin(), given.end(), [&] { return generator.oneOf(kNumbers); });
        given[kNumberVariables] = std::string(generator.oneOf(kTexts));
        given[kNumberVariables + 1] = std::string(generator.oneOf(kTexts));
        const auto meaning = [&given](const std::string& text, const Names& names) {
            Given values;
            for (std::size_t k = 0; k < given.size(); ++k) {
                values.emplace_back(names[k], given[k]);
            }
            return answer(text, values);
        };
        const std::string plain = written(expression, {});
        const std::string expected = meaning(plain, kPlainNames);
        ASSERT_EQ(meaning(written(expression, style), style.names), expected) << plain;
        std::array<std::string, given.size()> constants;
        std::transform(given.begin(), given.end(), constants.begin(), spelled);
        Names names;
        std::copy(constants.begin(), constants.end(), names.begin());
        ASSERT_EQ(answer(written(expression, {.names = names})), expected) << plain;
        errors += expected.ends_with("！") ? 1 : 0;
    }
    EXPECT_GT(errors, count / 20) << "hardly any formula fails";
    EXPECT_LT(errors, count * 3 / 4) << "hardly any formula has a value";
}

template <class Operation>
double ofDoubles(double x, double y) {
    return Operation()(x, y);
}

/// What doubles give; throws the ErrorCode when that is nothing.
double applied(std::string_view op, double a, double b) {
    static const std::map<std::string_view, double (*)(double, double)> kOperations{
        {"+", ofDoubles<std::plus<>>},       {"-", ofDoubles<std::minus<>>},
        {"*", ofDoubles<std::multiplies<>>}, {"/", ofDoubles<std::divides<>>},
        {"=", ofDoubles<std::equal_to<>>},   {"<>", ofDoubles<std::not_equal_to<>>},
        {"<", ofDoubles<std::less<>>},       {"<=", ofDoubles<std::less_equal<>>},
        {">", ofDoubles<std::greater<>>},    {">=", ofDoubles<std::greater_equal<>>}};
    const double value = kOperations.at(op)(a, b);
    if (!std::isfinite(value)) {
        throw op == "/" && b == 0 ? ErrorCode::DivisionByZero : ErrorCode::OutOfRange;
    }
    return value;
}

/// The same for an expression of Kind::Arithmetic, operation by operation.
double referenceOf(const Expression& expression, const std::array<double, 4>& numbers) {
    const auto& [word, operands, variable, literal] = expression;
    if (operands.empty()) {
        return variable ? numbers[*variable] : std::stod(literal);
    }
    const double first = referenceOf(operands[0], numbers);
    const auto second = [&] { return referenceOf(operands[1], numbers); };
    const bool truth = first != 0;
    if (word.spelling == "If") {
        return truth ? second() : referenceOf(operands[2], numbers);
    }
    if (word.spelling == "Not ") {
        return truth ? 0 : 1;
    }
    if (word.spelling == " And ") {
        return truth && second() != 0 ? 1 : 0;
    }
    if (word.spelling == " Or ") {
        return truth || second() != 0 ? 1 : 0;
    }
    if (operands.size() == 1) {
        return word.spelling == "-" ? -first : first;
    }
    return applied(word.spelling, first, second());
}

bool sameBits(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

void expectRowsAsAlone(Generator& generator, const Formula& formula, std::size_t rows) {
    std::vector<std::vector<double>> table(formula.variableCount(), std::vector<double>(rows));
    std::vector<Column> columns;
    for (std::vector<double>& numbers : table) {
        const bool varies = generator.below(3) > 0;
        const double fixed = generator.oneOf(kNumbers);
        std::generate(numbers.begin(), numbers.end(),
                      [&] { return varies ? generator.oneOf(kNumbers) : fixed; });
        columns.push_back(varies ? Column(std::span<const double>(numbers)) : Column(fixed));
    }
    std::vector<double> results(rows, 7);
    std::vector<ErrorCode> status(rows);
    std::size_t failures = formula.evaluateRows(columns, results, status);
    std::vector<double> row(table.size());
    for (std::size_t i = 0; i < rows; ++i) {
        std::transform(table.begin(), table.end(), row.begin(),
                       [i](const std::vector<double>& numbers) { return numbers[i]; });
        double alone = 0;
        Error error;
        const bool worked = formula.evaluate(row, alone, error);
        failures -= worked ? 0 : 1;
        ASSERT_EQ(status[i], error.code) << "row " << i;
        ASSERT_TRUE(worked ? sameBits(results[i], alone) : std::isnan(results[i])) << "row " << i;
    }
    EXPECT_EQ(failures, 0U) << "another number of rows failed than was told";
}

}  // namespace

TEST(Properties, NeitherNeedlessParenthesesNorConstantsForVariablesChangeAResult) {
    Generator generator(1);
    expectSameMeaning(generator, {.allParentheses = true}, 4000);
}

TEST(Properties, SpellingChangesNoResult) {
    const std::string longName(300, 'x');
    const std::string longer = longName + '1';
    const std::string longest = longName + "弯矩";
    Generator generator(2);
    for (const Names& names : {Names{"弯矩", "σ", "截面面积", "d₁", "钢号", "_文本"},
                               Names{"sin", "If", "Log", "StrLen", "int", "Left"},
                               Names{"oR_", "Note", "Andy", "pi2", "e5", "Results"},
                               Names{longName, longer, longest, "xx", "x_", "xX1"}}) {
        expectSameMeaning(generator, {.names = names}, 500);
        expectSameMeaning(generator, {.names = names, .respelling = &generator}, 500);
    }
}

TEST(Properties, ArithmeticIsThatOfDoubles) {
    Generator generator(3);
    int values = 0;
    for (int i = 0; i < 4000; ++i) {
        const Expression expression = generator.expression(Kind::Arithmetic);
        const std::string text = written(expression, {});
        const Formula formula = Formula::parse(text);
        Values given(formula);
        std::array<double, kNumberVariables> numbers{};
        for (std::size_t k = 0; k < numbers.size(); ++k) {
            numbers[k] = generator.oneOf(kNumbers);
            given.set(kPlainNames[k], numbers[k]);
        }
        double result = 0;
        Error error;
        formula.evaluate(given.numbers(), result, error);
        try {
            const double expected = referenceOf(expression, numbers);
            ASSERT_FALSE(error) << text;
            ASSERT_TRUE(sameBits(result, expected))
                << text << " is " << result << ", not " << expected;
            ++values;
        } catch (ErrorCode code) {
            ASSERT_EQ(error.code, code) << text;
        }
    }
    EXPECT_GT(values, 2000) << "too few formulas have a value";
}

TEST(Properties, ATextInAFormulaChangesNoNumber) {
    // Formulas with texts are evaluated with a look at every step, the others without.
    Generator generator(5);
    for (int i = 0; i < 3000; ++i) {
        const std::string inside = written(generator.expression(Kind::Numbers), {});
        using Frame = std::pair<std::string, std::string>;
        const auto [before, after] = generator.oneOf(std::array<Frame, 5>{
            {{"", ""}, {"exp^(", ")"}, {"arctan(", ")"}, {"1/(", ")^2"}, {"(", ")^4<.5"}}});
        const std::string text = before + inside + after;
        Given given;
        for (std::size_t k = 0; k < kNumberVariables; ++k) {
            given.emplace_back(kPlainNames[k], generator.oneOf(kNumbers));
        }
        ASSERT_EQ(answer(text, given), answer("If(StrLen('')=0," + text + ",0)", given)) << text;
    }
}

TEST(Properties, RowsOfATableGiveWhatTheyGiveAlone) {
    Generator generator(4);
    for (const std::size_t rows : {0, 1, 2, 255, 256, 257, 1000}) {
        for (int i = 0; i < 100; ++i) {
            const Kind kind =
                generator.oneOf(std::array{Kind::Arithmetic, Kind::Numbers, Kind::Texts});
            const std::string text = written(generator.expression(kind), {});
            SCOPED_TRACE(text + " with " + std::to_string(rows) + " rows");
            expectRowsAsAlone(generator, Formula::parse(text), rows);
        }
    }
}
