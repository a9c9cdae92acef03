#pragma once

#include "engine/formula.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

/// A variable's name and its value.
using Given = std::pair<std::string_view, varo::engine::Value>;

/// What evaluating `formula` comes to: a number in its shortest form, a text between single quotes,
/// or the message of the error.
std::string answer(std::string_view formula, std::initializer_list<Given> given = {});

/// The number that `formula` comes to; NaN when it fails or gives a text.
double number(std::string_view formula, std::initializer_list<Given> given = {});

/// The variables of `formula`: "a b:text"; one without a type is a number.
std::string variables(std::string_view formula);

/// Rows of a table, each a formula and what is expected of it: "1+1 → 2".
using Rows = std::initializer_list<std::string_view>;

/// The two sides of a row's arrow. A row without one fails the test.
std::pair<std::string_view, std::string_view> sidesOf(std::string_view row);

/// Expects the right side of each row to be the answer to its formula.
void expectAnswers(Rows rows, std::initializer_list<Given> given = {});

/// Expects the right side of each row to be the list of its formula's variables.
void expectVariables(Rows rows);

/// Expects each formula to be invalid, with the message on the right side and the position that
/// "▸" marks in it: "1▸) → 公式中的括号不匹配！".
void expectErrors(Rows rows);

/// `text` so many times in a row.
std::string repeated(std::string_view text, std::size_t times);
