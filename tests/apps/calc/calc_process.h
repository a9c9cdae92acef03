#pragma once

#include "program.h"

namespace varo::test {

/// Waits for the end of varo-calc. Its complaints come without the "varo-calc: " that each line
/// must begin with.
inline Outcome calcOutcomeOf(QProcess& program) {
    auto [status, out, err] = outcomeOf(program);
    std::string complaints;
    for (const QByteArray& line : QByteArray::fromStdString(err).split('\n')) {
        EXPECT_TRUE(line.isEmpty() || line.startsWith("varo-calc: ")) << err;
        complaints += line.isEmpty() ? "" : line.mid(11).toStdString() + '\n';
    }
    return {status, out, complaints};
}

/// Runs varo-calc with these arguments, separated by blanks, and this standard input; double quotes
/// keep blanks together. What it prints can go into a file.
inline Outcome runCalc(const char* arguments, const std::string& input = {},
                       const QString& output = {}) {
    QProcess program;
    program.setStandardOutputFile(output);
    program.start(QStringLiteral(VARO_CALC_PROGRAM),
                  QProcess::splitCommand(QString::fromUtf8(arguments)));
    program.write(QByteArray::fromStdString(input));
    program.closeWriteChannel();
    return calcOutcomeOf(program);
}

}  // namespace varo::test
