// The reference of the formula language is tested as it stands. Its examples are written
//     `formula` → `result`    or, with values,    `formula`（`a=1`，`s="x"`） → `result`
// where the result is a number, a text between single quotes, or the message of an error.

#include "engine/formula.h"
#include "engine/language/vocabulary.h"
#include "engine/numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <string_view>
#include <vector>

using namespace varo::engine;

namespace {

/// A piece of code on a line, and what stands before it; the last one is the rest of the line.
struct Span {
    std::string before;
    std::string code;
};

struct Example {
    std::string formula;
    std::vector<std::string> given;
    std::string result;
};

/// A line of the page; of a table row with code as its first cell, that is what the row describes.
struct Line {
    std::string chapter;
    std::string described;
    std::vector<Example> examples;
};

std::vector<Span> spansOf(std::string_view line) {
    std::vector<Span> spans;
    std::size_t at = 0;
    for (std::size_t open = line.find('`'); open != std::string_view::npos;
         open = line.find('`', at)) {
        const std::size_t close = std::min(line.find('`', open + 1), line.size());
        spans.push_back({std::string(line.substr(at, open - at)),
                         std::string(line.substr(open + 1, close - open - 1))});
        at = std::min(close + 1, line.size());
    }
    spans.push_back({std::string(line.substr(at)), {}});
    return spans;
}

/// The example whose result is spans[result]. The first of its given values is preceded by "（",
/// the others by "，".
Example exampleAt(const std::vector<Span>& spans, std::size_t result) {
    Example example{{}, {}, spans[result].code};
    std::size_t formula = result - 1;
    if (spans[result].before.starts_with("）")) {
        while (formula > 0 && spans[formula].before == "，") {
            --formula;
        }
        EXPECT_EQ(spans[formula].before, "（") << "before the result " << example.result;
        for (std::size_t i = formula; i < result; ++i) {
            example.given.push_back(spans[i].code);
        }
        --formula;
    }
    example.formula = spans[formula].code;
    return example;
}

Line lineOf(const std::string& text, const std::string& chapter) {
    const std::vector<Span> spans = spansOf(text);
    Line line{chapter, {}, {}};
    if (spans.size() > 1 && spans[0].before == "| " && spans[1].before.starts_with(" |")) {
        line.described = spans[0].code;
    }
    for (std::size_t i = 0; i < spans.size(); ++i) {
        const bool isResult = spans[i].before == " → " || spans[i].before == "） → ";
        if (isResult && i > 0 && i + 1 < spans.size()) {
            line.examples.push_back(exampleAt(spans, i));
        } else if (spans[i].before.find("→") != std::string::npos) {
            ADD_FAILURE() << "an arrow that is no example: " << text;
        }
    }
    return line;
}

std::vector<Line> readPage() {
    std::vector<Line> lines;
    std::ifstream file(VARO_REFERENCE);
    std::string chapter;
    for (std::string text; std::getline(file, text);) {
        if (text.starts_with("## ")) {
            chapter = text.substr(3);
        }
        lines.push_back(lineOf(text, chapter));
    }
    return lines;
}

const std::vector<Line>& page() {
    static const std::vector<Line> lines = readPage();
    return lines;
}

/// `formula` with 1001 of the character before "…".
std::string writtenOut(std::string formula) {
    constexpr std::string_view dots = "…";
    const std::size_t place = formula.find(dots);
    return place == std::string::npos
               ? formula
               : formula.replace(place, dots.size(), 1000, formula[place - 1]);
}

bool give(Values& values, const std::string& given) {
    const std::size_t equals = given.find('=');
    const std::string name = given.substr(0, equals);
    const std::string value = given.substr(equals + 1);
    if (const std::optional<double> number = parseNumber(value)) {
        return values.set(name, *number);
    }
    return value.size() >= 2 && value.front() == '"' && value.back() == '"' &&
           values.set(name, std::string_view(value).substr(1, value.size() - 2));
}

/// `number` with as many digits as the page gives.
std::string shown(double number) {
    std::array<char, 32> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number,
                                            std::chars_format::general, 15);
    return {text.data(), end};
}

struct Outcome {
    std::string text;
    ErrorCode code;
};

Outcome outcomeOf(const Example& example) {
    const Formula formula = Formula::parse(writtenOut(example.formula));
    Values values(formula);
    for (const std::string& given : example.given) {
        EXPECT_TRUE(give(values, given) || !formula.isValid()) << example.formula << ": " << given;
    }
    Value result;
    Error error;
    if (!formula.evaluate(values, result, error)) {
        return {error.text(), error.code};
    }
    if (const double* const number = std::get_if<double>(&result)) {
        return {shown(*number), ErrorCode::None};
    }
    return {'\'' + std::get<std::string>(result) + '\'', ErrorCode::None};
}

/// What the rows of `chapter` describe. Each has an example in whose formula `use` of it occurs.
template <class Use>
std::multiset<std::string> describedIn(std::string_view chapter, Use use) {
    std::multiset<std::string> described;
    for (const Line& line : page()) {
        if (line.chapter == chapter && !line.described.empty()) {
            described.insert(line.described);
            const std::string part = use(line.described);
            EXPECT_TRUE(std::any_of(line.examples.begin(), line.examples.end(),
                                    [&part](const Example& example) {
                                        return example.formula.find(part) != std::string::npos;
                                    }))
                << "no example of " << line.described;
        }
    }
    return described;
}

std::string asItIs(const std::string& described) {
    return described;
}

/// "mod(" of "mod(x, y)".
std::string nameAndParenthesis(const std::string& described) {
    return described.substr(0, described.find('(') + 1);
}

/// A function as the page has it, with the letters of its parameters left out: "mod(,)".
std::string shapeOf(const FunctionInfo& info) {
    const std::size_t more = info.repeatsLast ? 1 : 0;
    return std::string(info.name) + '(' + std::string(info.parameters.size() - 1 + more, ',') + ')';
}

std::string shapeOf(const std::string& described) {
    std::string shape = nameAndParenthesis(described);
    shape.append(static_cast<std::size_t>(std::count(described.begin(), described.end(), ',')),
                 ',');
    return shape + ')';
}

}  // namespace

TEST(Reference, EveryExampleComesToWhatThePageSays) {
    std::size_t count = 0;
    for (const Line& line : page()) {
        for (const Example& example : line.examples) {
            const std::optional<double> number = parseNumber(example.result);
            EXPECT_EQ(outcomeOf(example).text, number ? shown(*number) : example.result)
                << example.formula;
            ++count;
        }
    }
    EXPECT_GT(count, 180U);
}

TEST(Reference, DescribesEveryOperatorWithAnExample) {
    std::multiset<std::string> operators;
    for (const OperatorInfo& info : kOperators) {
        operators.emplace(info.spelling);
    }
    EXPECT_EQ(describedIn("运算符", asItIs), operators);
}

TEST(Reference, DescribesEveryFunctionWithItsParametersAndAnExample) {
    std::multiset<std::string> functions;
    for (const FunctionInfo& info : std::span(kFunctions).subspan(1)) {
        functions.insert(shapeOf(info));
    }
    std::multiset<std::string> described;
    for (const std::string& function : describedIn("函数", nameAndParenthesis)) {
        described.insert(shapeOf(function));
    }
    EXPECT_EQ(described, functions);
}

TEST(Reference, DescribesTheConstantsWithAnExample) {
    const std::multiset<std::string> constants = describedIn("常数", asItIs);
    EXPECT_EQ(constants, (std::multiset<std::string>{"exp", "pi", "π"}));
    for (const std::string& constant : constants) {
        EXPECT_EQ(wordNamed(constant).kind, Word::Kind::Constant) << constant;
    }
}

TEST(Reference, GivesAnExampleOfEveryError) {
    std::set<ErrorCode> shownErrors;
    for (const Line& line : page()) {
        for (const Example& example : line.examples) {
            if (line.chapter == "错误提示") {
                shownErrors.insert(outcomeOf(example).code);
            }
        }
    }
    int code = 1;
    for (Error error{ErrorCode::NumberWanted, 0, 0, {}}; !error.text().empty();
         error.code = static_cast<ErrorCode>(++code)) {
        EXPECT_TRUE(shownErrors.contains(error.code)) << error.text();
    }
    EXPECT_GT(code, static_cast<int>(ErrorCode::NotANumber));
}
