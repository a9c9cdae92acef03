#include "host/beam_library.h"
#include "support/desk.h"

#include <QImage>
#include <QProcess>

#include <gtest/gtest.h>

namespace varo::host {
namespace {

using namespace Qt::StringLiterals;

struct Outcome {
    int code;
    QStringList lines;
    QString complaint;
};

Outcome runHost(const QStringList& arguments, const char* platform = "offscreen") {
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_SCALE_FACTOR"}) {
        environment.remove(QLatin1StringView(name));
    }
    if (platform != nullptr) {
        environment.insert(u"QT_QPA_PLATFORM"_s, QLatin1StringView(platform));
    }
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(VARO_HOST_PROGRAM), arguments);
    EXPECT_TRUE(program.waitForFinished(60'000)) << "varo-host did not end";
    QStringList lines = QString::fromUtf8(program.readAllStandardOutput()).split(u'\n');
    EXPECT_EQ(lines.takeLast(), QString()) << "the last line must end";
    const bool ended = program.exitStatus() == QProcess::NormalExit;
    return {ended ? program.exitCode() : -1, lines,
            QString::fromUtf8(program.readAllStandardError())};
}

/// The beam library as "库1" in a configuration folder.
class HostProgram : public testing::Test {
  protected:
    /// Runs with the folder and with arguments that are separated by blanks.
    Outcome run(const QString& arguments) {
        return runHost(QStringList{u"--deploy"_s, configuration_.folder()} + arguments.split(u' '));
    }

    test::BeamLibrary library_;
    test::TestConfiguration configuration_{&library_};
    const QString selectFormula_ = u"--select FormulaNode1->DBNode1 --select=LvFormulaKey1 "_s;
};

TEST_F(HostProgram, PrintsWhatTheControlShows) {
    const Outcome outcome = run(selectFormula_ + u"--prop 截面面积=1 --prop=截面面积=8 --quit"_s);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.lines.join(u'\n').toStdString(),
              "library: 库1\nfolder: 拉杆\nformula: 应力\nexpression: F/A\n"
              "description: F 轴力\\nA 面积\npicture: 40x30\nvariable: F = 24 (typed)\n"
              "variable: A = 8 (property)\nresult: 3.00");
    EXPECT_EQ(run(u"--quit"_s).lines.join(u'\n').toStdString(),
              "library: 库1\nfolder: \nformula: \nexpression: \ndescription: \npicture: none\n"
              "result: ");
}

TEST_F(HostProgram, ATypedValueIsCalculatedWithAndStored) {
    const Outcome outcome = run(selectFormula_ + u"--set A=4 --set F=a=b --set=F=2.5e1 --quit"_s);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.lines.mid(6).join(u'\n'),
              u"variable: F = 2.5e1 (typed)\nvariable: A = 4 (property)\nresult: 6.25"_s);
    const QString stored = u"SELECT Value FROM RecentVar WHERE VarName='F'"_s;
    EXPECT_EQ(library_.rows(stored), QStringList{u"2.5e1"_s});
    run(selectFormula_ + u"--set F=a=b --quit"_s);
    EXPECT_EQ(library_.rows(stored), QStringList{u"a=b"_s});
}

TEST_F(HostProgram, WhatIsNotThereOrNotUnderstoodIsNamedAndEndsWithTwo) {
    // Separated by ";", each with what is named.
    for (const QString& wrong :
         u"--select=DBNode2>'DBNode2;--select=nonsense>'nonsense;--set=B=1>'B;--bogus>--bogus;"
         "stray>stray;--select>--select;--quit=1>--quit;--set F>'F';--prop =3>'=3';"
         "--screenshot /nowhere/a>/nowhere/a;--screenshot=/>'/'"_s.split(u';')) {
        const Outcome outcome = run(wrong.section(u'>', 0, 0) + u" --quit"_s);
        EXPECT_EQ(outcome.code, 2) << wrong.toStdString();
        EXPECT_TRUE(outcome.complaint.contains(wrong.section(u'>', 1)))
            << outcome.complaint.toStdString();
    }
    EXPECT_EQ(runHost({u"--quit"_s, u"--deploy"_s}).code, 2);
}

TEST_F(HostProgram, AMissingConfigurationEndsWithTwoAndABadOneWithOne) {
    configuration_.write(test::pictureBytes(5000));
    Outcome outcome = run(u"--quit"_s);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_TRUE(outcome.lines.first().startsWith(u"message: "));
    configuration_.removeFile();
    outcome = run(u"--quit"_s);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.lines.first(), u"message: 没有在用户指定的配置文件路径下发现配置文件！"_s);
    EXPECT_TRUE(outcome.complaint.contains(configuration_.folder()));
}

TEST_F(HostProgram, ThePictureOfTheWindowIsTheSameEachTime) {
    QImage pictures[2];
    for (QImage& picture : pictures) {
        const QString file = library_.pathOf(u"window.png"_s);
        EXPECT_EQ(run(selectFormula_ + u"--screenshot "_s + file).code, 0);
        picture = QImage(file).convertToFormat(QImage::Format_RGB32);
        ASSERT_TRUE(QFile::remove(file));
    }
    ASSERT_EQ(pictures[0].size(), QSize(1240, 800));
    EXPECT_EQ(pictures[0], pictures[1]);
    const auto* pixels = reinterpret_cast<const QRgb*>(pictures[0].constBits());
    EXPECT_GT(std::count(pixels, pixels + 1240 * 800, qRgb(255, 0, 0)), 40 * 30)
        << "the formula's picture, all red, is in it";
}

TEST_F(HostProgram, FailsWhenItCannotWriteAPictureOrHasNoScreen) {
    const Outcome outcome = run(u"--screenshot /proc/a.png"_s);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_TRUE(outcome.complaint.contains(u"/proc/a.png"_s));
    EXPECT_EQ(runHost({}, nullptr).code, 1);
    EXPECT_EQ(runHost({u"--deploy"_s, configuration_.folder(), u"--quit"_s}, nullptr).code, 0);
    EXPECT_EQ(runHost({u"--help"_s}, nullptr).code, 0);
}

}  // namespace
}  // namespace varo::host
