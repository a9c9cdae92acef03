#include "engine/calculation.h"

#include "engine/numbers.h"
#include "engine/text/unicode.h"

#include <gtest/gtest.h>
#include <limits>

using namespace varo::engine;

namespace {

bool evaluate(std::string_view text, std::initializer_list<Given> given, Value& result,
              Error& error) {
    const Formula formula = Formula::parse(text);
    Values values(formula);
    for (const auto& [name, value] : given) {
        if (const double* const number = std::get_if<double>(&value)) {
            values.set(name, *number);
        } else {
            values.set(name, std::string_view(std::get<std::string>(value)));
        }
    }
    return formula.evaluate(values, result, error);
}

}  // namespace

std::string answer(std::string_view formula, std::initializer_list<Given> given) {
    Value result;
    Error error;
    if (!evaluate(formula, given, result, error)) {
        return error.text();
    }
    if (const double* const value = std::get_if<double>(&result)) {
        return shortest(*value);
    }
    return '\'' + std::get<std::string>(result) + '\'';
}

double number(std::string_view formula, std::initializer_list<Given> given) {
    Value result;
    Error error;
    const bool isNumber =
        evaluate(formula, given, result, error) && std::holds_alternative<double>(result);
    return isNumber ? std::get<double>(result) : std::numeric_limits<double>::quiet_NaN();
}

std::string variables(std::string_view text) {
    const Formula formula = Formula::parse(text);
    std::string list;
    for (std::size_t i = 0; i < formula.variableCount(); ++i) {
        const Variable variable = formula.variable(i);
        list += list.empty() ? "" : " ";
        list += variable.name;
        list += variable.type == Type::Text ? ":text" : "";
    }
    return list;
}

std::pair<std::string_view, std::string_view> sidesOf(std::string_view row) {
    constexpr std::string_view arrow = " → ";
    const std::size_t place = row.find(arrow);
    if (place == std::string_view::npos || row.find(arrow, place + 1) != std::string_view::npos) {
        ADD_FAILURE() << "not one arrow: " << row;
        return {};
    }
    return {row.substr(0, place), row.substr(place + arrow.size())};
}

void expectAnswers(Rows rows, std::initializer_list<Given> given) {
    for (const std::string_view row : rows) {
        const auto [formula, expected] = sidesOf(row);
        EXPECT_EQ(answer(formula, given), expected) << formula;
    }
}

void expectVariables(Rows rows) {
    for (const std::string_view row : rows) {
        const auto [formula, expected] = sidesOf(row);
        EXPECT_EQ(variables(formula), expected) << formula;
    }
}

void expectErrors(Rows rows) {
    constexpr std::string_view mark = "▸";
    for (const std::string_view row : rows) {
        const auto [marked, message] = sidesOf(row);
        const std::size_t place = marked.find(mark);
        ASSERT_NE(place, std::string_view::npos) << row;
        const std::string text = std::string(marked).erase(place, mark.size());
        const Formula formula = Formula::parse(text);
        EXPECT_FALSE(formula.isValid()) << row;
        EXPECT_EQ(formula.error().text(), message) << row;
        EXPECT_EQ(formula.error().position, characterCount(marked.substr(0, place)) + 1) << row;
        EXPECT_EQ(answer(text), message) << row;
    }
}

std::string repeated(std::string_view text, std::size_t times) {
    std::string result;
    result.reserve(text.size() * times);
    for (std::size_t i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}
