#include "calc/calc_process.h"

#include <gtest/gtest.h>

namespace varo::test {

CalcOutcome outcomeOf(QProcess& program) {
    EXPECT_TRUE(program.waitForFinished(60'000)) << "varo-calc did not end";
    const bool ended = program.exitStatus() == QProcess::NormalExit;
    std::string err;
    for (const QByteArray& line : program.readAllStandardError().split('\n')) {
        if (!line.isEmpty()) {
            EXPECT_TRUE(line.startsWith("varo-calc: ")) << line.toStdString();
            err += line.mid(11).toStdString() + '\n';
        }
    }
    return {ended ? program.exitCode() : -1, program.readAllStandardOutput().toStdString(), err};
}

CalcOutcome runCalc(QProcess& program, const char* arguments, const std::string& input) {
    program.start(QStringLiteral(VARO_CALC_PROGRAM),
                  QProcess::splitCommand(QString::fromUtf8(arguments)));
    program.write(QByteArray::fromStdString(input));
    program.closeWriteChannel();
    return outcomeOf(program);
}

CalcOutcome runCalc(const char* arguments, const std::string& input) {
    QProcess program;
    return runCalc(program, arguments, input);
}

}  // namespace varo::test
