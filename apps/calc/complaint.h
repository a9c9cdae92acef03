#pragma once

#include "engine/error.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace varo::calc {

/// The program was started with arguments that it cannot do anything with.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A formula, a value or a file with which there is no result. Several reasons stand on a line
/// each.
class CalcError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Writes each line of `message` to the standard error, with the program's name before it.
void complain(std::string_view message);

/// The engine's message, with the place in the formula where there is one.
std::string messageOf(engine::Error error);

/// `text` as a message may quote it: at most 40 characters, none of which controls a terminal.
std::string excerpt(std::string_view text);

/// What an error number of the system (errno) means.
std::string reasonOf(int systemError);

}  // namespace varo::calc
