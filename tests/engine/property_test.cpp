// What holds for every formula, tried on random ones: expression trees that are written out in
// several ways and evaluated in several ways.

#include "engine/calculation.h"
#include "engine/language/functions.h"
#include "engine/numbers.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
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

std::string written(const Expression& expression, const Names& names, bool allParentheses = false,
                    int loosest = 9) {
    const auto& [word, operands, variable, literal] = expression;
    const auto operand = [&](std::size_t index, int level) {
        return written(operands[index], names, allParentheses, level);
    };
    std::string text(word.spelling);
    if (operands.empty()) {
        text = variable ? names[*variable] : literal;
    } else if (word.level == 0) {
        for (std::size_t i = 0; i < operands.size(); ++i) {
            text += (i == 0 ? "(" : ",") + operand(i, 9);
        }
        text += ")";
    } else if (operands.size() == 1) {
        text = text == "!" ? operand(0, word.level) + text : text + operand(0, word.level);
    } else {
        const bool power = text == "^";
        text = operand(0, power ? word.level - 1 : word.level) + text +
               operand(1, power ? kSign : word.level - 1);
    }
    return allParentheses || word.level > loosest ? "(" + text + ")" : text;
}

/// A value as a formula spells it.
std::string spelled(const Value& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) {
        return '"' + *text + '"';
    }
    const double number = std::get<double>(value);
    return number == 0 && std::signbit(number) ? "(-0)" : '(' + shortest(number) + ')';
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
    // A formula of constants is computed while it is parsed, operation by operation.
    using Frame = std::pair<std::string, std::string>;
    const std::vector<Frame> frames{{"", ""},         {"", ""},       {"exp^(", ")"},
                                    {"arctan(", ")"}, {"1/(", ")^2"}, {"(", ")^4<.5"}};
    constexpr int kCount = 12'000;
    Generator generator(1);
    int errors = 0;
    for (int i = 0; i < kCount; ++i) {
        const Kind kind =
            generator.oneOf(std::array{Kind::Arithmetic, Kind::Numbers, Kind::TextVariables});
        const char type = generator.oneOf(std::string_view("nnt"));
        const Expression expression = generator.expression(kind, type);
        const Frame frame = type == 'n' ? generator.oneOf(frames) : Frame();
        Given given;
        std::array<std::string, std::tuple_size_v<Names>> constants;
        for (std::size_t k = 0; k < constants.size(); ++k) {
            const bool isText = k >= kNumberVariables;
            const Value value = isText ? Value(std::string(generator.oneOf(kTexts)))
                                       : Value(generator.oneOf(kNumbers));
            given.emplace_back(kPlainNames[k], value);
            constants[k] = spelled(value);
        }
        Names names;
        std::copy(constants.begin(), constants.end(), names.begin());
        const std::string plain = frame.first + written(expression, kPlainNames) + frame.second;
        const std::string expected = answer(plain, given);
        for (const std::string& text :
             {written(expression, kPlainNames, true), written(expression, names)}) {
            ASSERT_EQ(answer(frame.first + text + frame.second, given), expected) << plain;
        }
        errors += expected.ends_with("！") ? 1 : 0;
    }
    EXPECT_GT(errors, kCount / 20) << "hardly any formula fails";
    EXPECT_LT(errors, kCount * 3 / 4) << "hardly any formula has a value";
}

TEST(Properties, RowsOfATableGiveWhatTheyGiveAlone) {
    Generator generator(4);
    for (const std::size_t rows : {0, 1, 2, 255, 256, 257, 1000}) {
        for (int i = 0; i < 100; ++i) {
            const Kind kind =
                generator.oneOf(std::array{Kind::Arithmetic, Kind::Numbers, Kind::Texts});
            const std::string text = written(generator.expression(kind), kPlainNames);
            SCOPED_TRACE(text + " with " + std::to_string(rows) + " rows");
            expectRowsAsAlone(generator, Formula::parse(text), rows);
        }
    }
}
