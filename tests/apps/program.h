#pragma once

#include <QProcess>

#include <gtest/gtest.h>
#include <string>

namespace varo::test {

/// How a run of a program went.
struct Outcome {
    int status;       ///< its exit status; -1 when it crashed
    std::string out;  ///< what it wrote to the standard output
    std::string err;  ///< and to the standard error
};

/// Waits for the end of a program.
inline Outcome outcomeOf(QProcess& program) {
    EXPECT_TRUE(program.waitForFinished(60'000)) << "the program did not end";
    const bool ended = program.exitStatus() == QProcess::NormalExit;
    return {ended ? program.exitCode() : -1, program.readAllStandardOutput().toStdString(),
            program.readAllStandardError().toStdString()};
}

}  // namespace varo::test
