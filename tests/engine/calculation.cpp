#include "engine/calculation.h"

#include "engine/numbers.h"
#include "engine/text/unicode.h"

#include <gtest/gtest.h>

using namespace varo::engine;

Outcome outcomeOf(std::string_view text, const Given& given) {
    const Formula formula = Formula::parse(text);
    Values values(formula);
    for (const auto& [name, value] : given) {
        if (const double* const number = std::get_if<double>(&value)) {
            values.set(name, *number);
        } else {
            values.set(name, std::string_view(std::get<std::string>(value)));
        }
    }
    Outcome outcome;
    const bool worked = formula.evaluate(values, outcome.value, outcome.error);
    EXPECT_EQ(worked, !outcome.error) << text;
    return outcome;
}

std::string answer(std::string_view formula, const Given& given) {
    const auto [value, error] = outcomeOf(formula, given);
    if (error) {
        return error.text();
    }
    const double* const number = std::get_if<double>(&value);
    return number != nullptr ? shortest(*number) : '\'' + std::get<std::string>(value) + '\'';
}

std::vector<std::pair<std::string, std::string>> rowsOf(std::string_view table) {
    constexpr std::string_view kArrow = " → ";
    constexpr std::string_view kBetweenRows = " | ";
    std::vector<std::pair<std::string, std::string>> rows;
    for (std::size_t at = 0; at < table.size();) {
        const std::size_t end = std::min(table.find(kBetweenRows, at), table.size());
        const std::string_view row = table.substr(at, end - at);
        const std::size_t arrow = row.find(kArrow);
        EXPECT_TRUE(arrow != row.npos && arrow == row.rfind(kArrow)) << "not one arrow: " << row;
        rows.emplace_back(row.substr(0, arrow), row.substr(arrow + kArrow.size()));
        at = end + kBetweenRows.size();
    }
    return rows;
}

void expectAnswers(std::string_view table, const Given& given) {
    for (const auto& [formula, expected] : rowsOf(table)) {
        EXPECT_EQ(answer(formula, given), expected) << formula;
    }
}

void expectVariables(std::string_view table) {
    for (const auto& [text, expected] : rowsOf(table)) {
        const Formula formula = Formula::parse(text);
        std::string variables;
        for (std::size_t i = 0; i < formula.variableCount(); ++i) {
            const auto [name, type] = formula.variable(i);
            variables += i == 0 ? "" : " ";
            variables += name;
            variables += type == Type::Text ? ":text" : "";
        }
        EXPECT_EQ(variables, expected) << text;
    }
}

void expectErrors(std::string_view message, std::string_view table) {
    constexpr std::string_view kMark = "▸";
    for (auto [text, subject] : rowsOf(table)) {
        const std::size_t place = text.find(kMark);
        ASSERT_NE(place, std::string::npos) << text;
        const std::size_t position = characterCount(text.substr(0, place)) + 1;
        std::string expected;
        for (const char c : message) {
            expected += c == '%'   ? subject
                        : c == '#' ? std::to_string(position)
                                   : std::string(1, c);
        }
        const Error error = Formula::parse(text.erase(place, kMark.size())).error();
        EXPECT_EQ(error.text(), expected) << text;
        EXPECT_EQ(error.position, position) << text;
        EXPECT_EQ(answer(text), expected) << text;
    }
}

std::string repeated(std::string_view text, std::size_t times) {
    std::string result;
    for (std::size_t i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}
