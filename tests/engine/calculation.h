#pragma once

#include "engine/formula.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Variables by their names, with their values.
using Given = std::vector<std::pair<std::string, varo::engine::Value>>;

/// What evaluating a formula gives: its value, unless there is an error.
struct Outcome {
    varo::engine::Value value;
    varo::engine::Error error;
};
Outcome outcomeOf(std::string_view formula, const Given& given = {});

/// An outcome as text: a number in its shortest form, a text between single quotes, or the message
/// of the error.
std::string answer(std::string_view formula, const Given& given = {});

/// A table in one text, "1+1 → 2 | 1/0 → 除数不能为零！": the two sides of each arrow.
std::vector<std::pair<std::string, std::string>> rowsOf(std::string_view table);

/// Expects the right side of each row to be the answer to the formula on the left.
void expectAnswers(std::string_view table, const Given& given = {});

/// Expects the right side of each row to be the variables of its formula: "a b:text"; one without a
/// type is a number.
void expectVariables(std::string_view table);

/// Expects each formula to be invalid, with the position that "▸" marks in it and `message`, in
/// which `%` stands for the right side and `#` for the position.
void expectErrors(std::string_view message, std::string_view table);

/// `text` so many times in a row.
std::string repeated(std::string_view text, std::size_t times);
