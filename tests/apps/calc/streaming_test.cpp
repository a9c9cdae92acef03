#include "calc/calc_process.h"

#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QThread>

#include <pty.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varo::test {
namespace {

/// varo-calc at work on its standard input.
class TableStream : public testing::Test {
  protected:
    TableStream() { program_.setProgram(QStringLiteral(VARO_CALC_PROGRAM)); }

    void start(const QString& formula) {
        program_.setArguments({QStringLiteral("--table"), QStringLiteral("-"), formula});
        program_.start();
    }

    void write(const QByteArray& lines) {
        program_.write(lines);
        EXPECT_TRUE(program_.waitForBytesWritten());
        QThread::msleep(20);  // so that the next lines come alone
    }

    QProcess program_;
};

TEST_F(TableStream, ResultsComeWhileRowsAreStillBeingWritten) {
    start(QStringLiteral("x*2"));
    QByteArray seen;
    for (const auto& [lines, results] : {std::pair{"\xEF", ""},
                                         {"\xBB\xBF", ""},
                                         {"x,y\n1,a\n2,", "\xEF\xBB\xBFx,y,Result\n1,a,2\n"},
                                         {"b\n", "2,b,4\n"}}) {
        write(lines);
        seen.clear();
        while (seen.size() < QByteArray(results).size() && program_.waitForReadyRead()) {
            seen += program_.readAllStandardOutput();
        }
        EXPECT_EQ(seen, results);
    }
    program_.closeWriteChannel();
    EXPECT_EQ(calcOutcomeOf(program_).status, 0);
}

TEST_F(TableStream, ATableLargerThanTheMemoryIsCalculated) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the address sanitizer needs more memory than any limit";
#endif
    constexpr rlim_t kMemory = 32 << 20;
    constexpr int kRows = 50'000;
    QTemporaryFile table;
    QTemporaryFile result;
    ASSERT_TRUE(table.open() && result.open());
    table.write("text,x\n");
    for (int i = 0; i < kRows; ++i) {
        table.write(QByteArray(1000, 't') + ',' + QByteArray::number(i) + '\n');
    }
    ASSERT_TRUE(table.flush());
    program_.setStandardInputFile(table.fileName());
    program_.setStandardOutputFile(result.fileName());
    program_.setChildProcessModifier([] {
        const rlimit limit{kMemory, kMemory};
        setrlimit(RLIMIT_AS, &limit);
    });
    start(QStringLiteral("x+0.5"));
    EXPECT_EQ(calcOutcomeOf(program_).err, "");
    const QByteArray content = result.readAll();
    EXPECT_EQ(content.count('\n'), kRows + 1);
    EXPECT_TRUE(content.endsWith(",49999,49999.5\n"));
}

TEST_F(TableStream, ShortRowsOfAWideTableNeedNoMoreMemory) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the address sanitizer needs more memory than any limit";
#endif
    QTemporaryFile table;
    ASSERT_TRUE(table.open());
    table.write("x" + QByteArray(16000, ',') + '\n' + QByteArray("1\n").repeated(20'000));
    ASSERT_TRUE(table.flush());
    program_.setStandardInputFile(table.fileName());
    program_.setStandardOutputFile(QStringLiteral("/dev/null"));
    program_.setChildProcessModifier([] {
        const rlimit limit{32 << 20, 32 << 20};
        setrlimit(RLIMIT_AS, &limit);
    });
    start(QStringLiteral("x"));
    const Outcome outcome = calcOutcomeOf(program_);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
}

TEST_F(TableStream, WaitingForThePipeIsToldOnce) {
    QTemporaryDir folder;
    const QString pipe = folder.filePath(QStringLiteral("pipe"));
    ASSERT_EQ(mkfifo(qPrintable(pipe), 0600), 0);
    program_.start(QStringLiteral(VARO_CALC_PROGRAM),
                   {QStringLiteral("--table"), pipe, QStringLiteral("x")});
    program_.setReadChannel(QProcess::StandardError);
    ASSERT_TRUE(program_.waitForReadyRead());
    const QByteArray told = program_.readAllStandardError();
    EXPECT_EQ(told, "varo-calc: 正在等待“" + pipe.toUtf8() + "”的内容……\n");
    QFile writer(pipe);
    ASSERT_TRUE(writer.open(QIODevice::WriteOnly) && writer.write("x\n1\n") == 4);
    writer.close();
    const Outcome outcome = calcOutcomeOf(program_);
    EXPECT_EQ(outcome.out, "x,Result\n1,1\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(TableStream, AReaderThatEndsEndsTheCalculation) {
    QProcess reader;
    program_.setStandardOutputProcess(&reader);
    reader.start(QStringLiteral("true"), QStringList());
    start(QStringLiteral("x"));
    ASSERT_TRUE(reader.waitForFinished());
    write("x\n1\n");
    const Outcome outcome = calcOutcomeOf(program_);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "无法写出结果：接收输出的程序已结束！\n");
}

TEST_F(TableStream, ATerminalSeesTheProgressUntilTheEnd) {
    int terminal = -1;
    int programSide = -1;
    ASSERT_EQ(openpty(&terminal, &programSide, nullptr, nullptr, nullptr), 0);
    program_.setChildProcessModifier([=] { dup2(programSide, STDERR_FILENO); });
    start(QStringLiteral("1/x"));
    for (const char* lines : {"x\n1\n", "2\n", "0\n"}) {
        write(lines);
        ASSERT_TRUE(program_.waitForReadyRead());
        if (*lines == 'x') {
            QThread::msleep(600);  // the work must have lasted some time
        }
    }
    program_.closeWriteChannel();
    EXPECT_EQ(calcOutcomeOf(program_).status, 1);
    ::close(programSide);
    std::string seen;
    char bytes[4096];
    for (ssize_t size = 0; (size = ::read(terminal, bytes, sizeof bytes)) > 0;) {
        seen.append(bytes, static_cast<std::size_t>(size));
    }
    ::close(terminal);
    EXPECT_TRUE(
        seen.starts_with("\r已计算2行，已读0 MB\r\x1B[K"
                         "varo-calc: 标准输入:4: 除数不能为零！\r\n"))
        << seen;
    EXPECT_TRUE(seen.ends_with("\n") || seen.ends_with("\x1B[K")) << seen;
}

}  // namespace
}  // namespace varo::test
