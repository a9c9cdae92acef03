#pragma once

#include "engine/formula.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

/// A variable's name and its value.
using Given = std::pair<std::string_view, varo::engine::Value>;

/// What evaluating `formula` comes to: a number in its shortest form, a text between quotes, or the
/// message of the error.
std::string answer(std::string_view formula, std::initializer_list<Given> given = {});

/// The number that `formula` comes to; NaN when it fails or gives a text.
double number(std::string_view formula, std::initializer_list<Given> given = {});

/// The variables of `formula`: "a:number b:text".
std::string variables(std::string_view formula);

/// `text` so many times in a row.
std::string repeated(std::string_view text, std::size_t times);
