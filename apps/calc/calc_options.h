#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace varo::calc {

enum class Task { Calculate, ListVariables, CalculateTable, Help, Version };

/// A value given on the command line.
struct Assignment {
    std::string_view name;
    std::string_view value;
};

/// What the command line asks for; its texts are the command line's own.
struct CalcOptions {
    Task task = Task::Calculate;
    std::string_view formula;
    std::vector<Assignment> assignments;  ///< in the order given
    std::optional<int> decimals;          ///< 0 to 1000
    std::string table;                    ///< path of the table; "-" for the standard input
};

/// Reads the arguments of main(), whose order it may change. Throws UsageError.
CalcOptions parseOptions(int argc, char** argv);

/// What --help prints.
std::string_view helpText();

}  // namespace varo::calc
