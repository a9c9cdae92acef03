// The reference of the formula language is tested as it stands. Its examples are written
//     `formula` → `result`    or, with values,    `formula`（`a=1`，`s="x"`） → `result`
// where the result is a number, a text between single quotes, or the message of an error.

#include "engine/calculation.h"
#include "engine/language/vocabulary.h"
#include "engine/numbers.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iomanip>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

using namespace varo::engine;

namespace {

struct Example {
    std::string formula;
    Given given;
    std::string result;
};

/// A line of the page; of a table row with code as its first cell, that is what the row describes,
/// with the letters of parameters left out: "mod(,)".
struct Line {
    std::string chapter;
    std::string described;
    std::vector<Example> examples;
};

/// `text` as the values of variables: `a=1`，`s="x"`. What is no number must be between quotes.
Given givenIn(const std::string& text) {
    static const std::regex value("`([^=`]*)=(\"?)([^`]*?)\\2`");
    Given given;
    for (std::sregex_iterator at(text.begin(), text.end(), value), end; at != end; ++at) {
        const std::optional<double> number = parseNumber((*at)[3].str());
        EXPECT_NE((*at)[2].length() != 0, number.has_value()) << text;
        given.emplace_back((*at)[1], number ? Value(*number) : Value((*at)[3].str()));
    }
    return given;
}

/// `formula` with 1001 of the character before "…".
std::string writtenOut(const std::string& formula) {
    const std::size_t dots = formula.find("…");
    return dots == std::string::npos
               ? formula
               : formula.substr(0, dots) + std::string(1000, formula[dots - 1]) +
                     formula.substr(dots + std::string_view("…").size());
}

Line lineOf(const std::string& text, const std::string& chapter) {
    static const std::regex description("^\\| `([^`]*)` \\|.*");
    static const std::regex example("`([^`]*)`(?:（((?:`[^`]*`(?:，)?)+)）)? → `([^`]*)`");
    Line line{chapter, {}, {}};
    if (std::smatch match; std::regex_match(text, match, description)) {
        static const std::regex letters("[^(,)]+(?=[,)])");
        line.described = std::regex_replace(match[1].str(), letters, "");
    }
    for (std::sregex_iterator at(text.begin(), text.end(), example), end; at != end; ++at) {
        line.examples.push_back({writtenOut((*at)[1]), givenIn((*at)[2]), (*at)[3]});
    }
    static const std::regex arrow("→");
    EXPECT_EQ(std::distance(std::sregex_iterator(text.begin(), text.end(), arrow), {}),
              std::ssize(line.examples))
        << "an arrow that is no example: " << text;
    return line;
}

const std::vector<Line>& page() {
    static const std::vector<Line> lines = [] {
        std::vector<Line> read;
        std::ifstream file(VARO_REFERENCE);
        std::string chapter;
        for (std::string text; std::getline(file, text);) {
            chapter = text.starts_with("## ") ? text.substr(3) : chapter;
            read.push_back(lineOf(text, chapter));
        }
        return read;
    }();
    return lines;
}

/// A number with as many digits as the page gives; any other text as it is.
std::string shown(const std::string& text) {
    const std::optional<double> number = parseNumber(text);
    std::ostringstream digits;
    digits << std::setprecision(15) << number.value_or(0);
    return number ? digits.str() : text;
}

/// What the rows of `chapter` describe. Each has an example in whose formula the text before its
/// parameters occurs.
std::multiset<std::string> describedIn(std::string_view chapter) {
    std::multiset<std::string> described;
    for (const Line& line : page()) {
        if (line.chapter == chapter && !line.described.empty()) {
            described.insert(line.described);
            const std::string part = line.described.substr(0, line.described.find('(') + 1);
            const std::string used = part.empty() ? line.described : part;
            EXPECT_TRUE(std::any_of(line.examples.begin(), line.examples.end(),
                                    [&used](const Example& example) {
                                        return example.formula.find(used) != std::string::npos;
                                    }))
                << "no example of " << line.described;
        }
    }
    return described;
}

}  // namespace

TEST(Reference, EveryExampleComesToWhatThePageSays) {
    std::size_t count = 0;
    for (const Line& line : page()) {
        for (const Example& example : line.examples) {
            EXPECT_EQ(shown(answer(example.formula, example.given)), shown(example.result))
                << example.formula;
            ++count;
        }
    }
    EXPECT_GT(count, 180U);
}

TEST(Reference, DescribesEveryOperatorFunctionAndConstantWithAnExample) {
    std::multiset<std::string> operators;
    for (const OperatorInfo& info : kOperators) {
        operators.emplace(info.spelling);
    }
    EXPECT_EQ(describedIn("运算符"), operators);
    const std::multiset<std::string> constants = describedIn("常数");
    EXPECT_EQ(constants, (std::multiset<std::string>{"exp", "pi", "π"}));
    for (const std::string& constant : constants) {
        EXPECT_EQ(wordNamed(constant).kind, Word::Kind::Constant) << constant;
    }
    std::multiset<std::string> functions;
    for (const FunctionInfo& info : std::span(kFunctions).subspan(1)) {
        const std::size_t commas = info.parameters.size() - (info.repeatsLast ? 0 : 1);
        functions.insert(std::string(info.name) + '(' + std::string(commas, ',') + ')');
    }
    EXPECT_EQ(describedIn("函数"), functions);
}
