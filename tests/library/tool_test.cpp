#include "library/library_tool.h"
#include "library_files.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QThread>

namespace varo {
namespace {

class Tool : public LibraryFiles {
  protected:
    int run(const QStringList& arguments) {
        QBuffer out(&out_);
        QBuffer err(&err_);
        out.open(QIODevice::WriteOnly);
        err.open(QIODevice::WriteOnly);
        return runLibraryTool(arguments, out, err);
    }

    QByteArray out_;
    QByteArray err_;
};

TEST_F(Tool, BuildsDumpsAndChecks) {
    const QString text = write(QStringLiteral("a.toml"), "[[folder]]\nname = \"电\"\n");
    const QString library = path(QStringLiteral("a.mdb"));
    EXPECT_EQ(run({QStringLiteral("build"), text, library}), 0);
    EXPECT_EQ(out_ + err_, "");
    EXPECT_EQ(run({QStringLiteral("check"), library}), 0);
    EXPECT_EQ(out_, "1 folders, 0 formulas, 0 pictures\n");
    EXPECT_EQ(run({QStringLiteral("dump"), library}), 0);
    EXPECT_TRUE(out_.contains("name = \"电\"\n"));
    EXPECT_EQ(err_, "");
}

TEST_F(Tool, FaultsGoToTheOutputAndGiveOne) {
    const QString library =
        build(QStringLiteral("a.mdb"), "[[folder]]\nname = \"a\"\nparent = 5\n");
    EXPECT_EQ(run({QStringLiteral("check"), library}), 1);
    EXPECT_EQ(out_, "folder 1 \"a\": its parent 5 does not exist\n");
    EXPECT_EQ(err_, "");
}

TEST_F(Tool, FailuresGoToTheErrorOutputAndGiveOne) {
    const QString text = write(QStringLiteral("a.toml"), "[[folder]]\n");
    EXPECT_EQ(run({QStringLiteral("build"), text, path(QStringLiteral("a.mdb"))}), 1);
    EXPECT_EQ(err_, text.toUtf8() + ":1:1: [[folder]] needs \"name\"\n");
    EXPECT_EQ(run({QStringLiteral("dump"), text}), 1);
    EXPECT_NE(err_, "");
    EXPECT_EQ(out_, "");
}

TEST_F(Tool, WrongArgumentsGiveTwoAndTheUsage) {
    const QStringList wrong[] = {
        {},
        {QStringLiteral("build")},
        {QStringLiteral("build"), QStringLiteral("a")},
        {QStringLiteral("dump"), QStringLiteral("a"), QStringLiteral("b")},
        {QStringLiteral("check")},
        {QStringLiteral("destroy"), QStringLiteral("a")},
        {QStringLiteral("--help"), QStringLiteral("a")},
    };
    for (const QStringList& arguments : wrong) {
        EXPECT_EQ(run(arguments), 2) << arguments.join(u' ').toStdString();
        EXPECT_TRUE(err_.startsWith("Usage:"));
        EXPECT_EQ(out_, "");
    }
}

TEST_F(Tool, HelpGoesToTheOutput) {
    EXPECT_EQ(run({QStringLiteral("--help")}), 0);
    EXPECT_TRUE(out_.startsWith("Usage:"));
    EXPECT_EQ(err_, "");
}

TEST_F(Tool, ADumpThatCannotBeWrittenFails) {
    const QString library = build(QStringLiteral("a.mdb"), "[[folder]]\nname = \"a\"\n");
    QFile full(QStringLiteral("/dev/full"));
    if (!full.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        GTEST_SKIP() << "no /dev/full here";
    }
    QBuffer err(&err_);
    err.open(QIODevice::WriteOnly);
    EXPECT_EQ(runLibraryTool({QStringLiteral("dump"), library}, full, err), 1);
    EXPECT_NE(err_, "");
}

TEST_F(Tool, AKilledBuildLeavesTheOldFile) {
    const QString library = build(QStringLiteral("a.mdb"), "[[folder]]\nname = \"old\"\n");
    const QByteArray before = read(QStringLiteral("a.mdb"));
    write(QStringLiteral("slow.svg"),
          R"(<svg xmlns="http://www.w3.org/2000/svg" width="4000" height="4000">
             <circle cx="2000" cy="2000" r="1900"/></svg>)");
    const QString text = write(
        QStringLiteral("slow.toml"),
        QByteArray(
            "[[formula]]\nname = \"f\"\npicture = { file = \"slow.svg\", format = \"jpg\" }\n")
            .repeated(200));

    QProcess program;
    program.start(QStringLiteral(VARO_LIBRARY_PROGRAM), {QStringLiteral("build"), text, library});
    const auto atWork = [&] {
        return !filesInFolder().filter(QStringLiteral(".varo-library-")).isEmpty();
    };
    QElapsedTimer waited;
    for (waited.start(); !atWork() && waited.elapsed() < 60'000;) {
        QThread::msleep(2);
    }
    ASSERT_TRUE(atWork());
    QThread::msleep(100);
    program.kill();
    ASSERT_TRUE(program.waitForFinished());
    ASSERT_EQ(program.exitStatus(), QProcess::CrashExit);
    EXPECT_EQ(read(QStringLiteral("a.mdb")), before);
    EXPECT_EQ(checkLibrary(library).faults, QStringList());
}

}  // namespace
}  // namespace varo
