#include "library/library_tool.h"
#include "library_files.h"

#include <QProcess>
#include <QTest>

namespace varo {
namespace {

class Tool : public LibraryFiles {
  protected:
    int run(const QStringList& arguments) {
        QBuffer out(&out_);
        QBuffer err(&err_);
        out.open(QIODevice::WriteOnly | QIODevice::Truncate);
        err.open(QIODevice::WriteOnly | QIODevice::Truncate);
        return runLibraryTool(arguments, out, err);
    }

    QByteArray out_;
    QByteArray err_;
};

TEST_F(Tool, BuildsDumpsAndChecks) {
    const QString text = write(u"a.toml"_s, "[[folder]]\nname = \"电\"\n");
    const QString library = path(u"a.mdb"_s);
    EXPECT_EQ(run({u"build"_s, text, library}), 0);
    EXPECT_EQ(out_, "");
    EXPECT_EQ(run({u"check"_s, library}), 0);
    EXPECT_EQ(out_, "1 folders, 0 formulas, 0 pictures\n");
    EXPECT_EQ(run({u"dump"_s, library}), 0);
    EXPECT_TRUE(out_.contains("name = \"电\"\n"));
    EXPECT_EQ(run({u"--help"_s}), 0);
    EXPECT_TRUE(out_.startsWith("Usage:"));
    EXPECT_EQ(err_, "");
}

TEST_F(Tool, FaultsGoToTheOutputAndFailuresToTheErrorOutput) {
    EXPECT_EQ(run({u"check"_s, build(u"a.mdb"_s, "[[folder]]\nname = 'a'\nparent = 5\n")}), 1);
    EXPECT_EQ(out_, "folder 1 \"a\": its parent 5 does not exist\n");
    EXPECT_EQ(err_, "");
    const QString text = write(u"a.toml"_s, "[[folder]]\n");
    EXPECT_EQ(run({u"build"_s, text, path(u"a.mdb"_s)}), 1);
    EXPECT_EQ(err_, text.toUtf8() + ":1:1: [[folder]] needs \"name\"\n");
    EXPECT_EQ(run({u"dump"_s, text}), 1);
    EXPECT_NE(err_, "");
    EXPECT_EQ(out_, "");
}

TEST_F(Tool, WrongArgumentsGiveTwoAndTheUsage) {
    for (const QString& line : u",build,build a,dump a b,check,destroy a,--help a"_s.split(u',')) {
        EXPECT_EQ(run(line.split(u' ', Qt::SkipEmptyParts)), 2) << line.toStdString();
        EXPECT_TRUE(err_.startsWith("Usage:") && out_.isEmpty());
    }
}

TEST_F(Tool, ADumpThatCannotBeWrittenFails) {
    QFile full(u"/dev/full"_s);
    if (!full.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        GTEST_SKIP() << "no /dev/full here";
    }
    QBuffer err(&err_);
    err.open(QIODevice::WriteOnly);
    EXPECT_EQ(runLibraryTool({u"dump"_s, build(u"a.mdb"_s, "")}, full, err), 1);
    EXPECT_NE(err_, "");
}

TEST_F(Tool, AKilledBuildLeavesTheOldFile) {
    const QString library = build(u"a.mdb"_s, "[[folder]]\nname = 'old'\n");
    const QByteArray before = read(u"a.mdb"_s);
    write(u"slow.svg"_s, R"(<svg xmlns="http://www.w3.org/2000/svg" width="4000" height="4000">
                            <circle cx="2000" cy="2000" r="1900"/></svg>)");
    const QByteArray formula =
        "[[formula]]\nname = 'f'\npicture = { file = 'slow.svg', format = 'jpg' }\n";
    const QString text = write(u"slow.toml"_s, formula.repeated(200));
    QProcess program;
    program.start(QStringLiteral(VARO_LIBRARY_PROGRAM), {u"build"_s, text, library});
    ASSERT_TRUE(QTest::qWaitFor([&] { return files().contains(u".varo-library-"_s); }, 60'000));
    QTest::qWait(100);
    program.kill();
    ASSERT_TRUE(program.waitForFinished());
    ASSERT_EQ(program.exitStatus(), QProcess::CrashExit);
    EXPECT_EQ(read(u"a.mdb"_s), before);
}

}  // namespace
}  // namespace varo
