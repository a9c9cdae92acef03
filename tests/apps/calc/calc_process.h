#pragma once

#include <QProcess>

#include <string>

namespace varo::test {

/// How a run of varo-calc went.
struct CalcOutcome {
    int status;       ///< its exit status; -1 when it crashed
    std::string out;  ///< what it wrote to the standard output
    std::string err;  ///< and to the standard error, without "varo-calc: " before each line
};

/// Waits for the end of a program.
CalcOutcome outcomeOf(QProcess& program);

/// Runs varo-calc with these arguments, separated by blanks, and this standard input; double quotes
/// keep blanks together.
CalcOutcome runCalc(const char* arguments, const std::string& input = {});

/// The same with a process that was prepared.
CalcOutcome runCalc(QProcess& program, const char* arguments, const std::string& input);

}  // namespace varo::test
