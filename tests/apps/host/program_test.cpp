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

Outcome runHost(const QStringList& arguments, const QString& platform = u"offscreen"_s) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_SCALE_FACTOR"}) {
        environment.remove(QLatin1StringView(name));
    }
    if (!platform.isEmpty()) {
        environment.insert(u"QT_QPA_PLATFORM"_s, platform);
    }
    QProcess program;
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
    const QString selectFormula_ = u"--select FormulaNode1->DBNode1 --select LvFormulaKey1 "_s;
};

TEST_F(HostProgram, PrintsWhatTheControlShows) {
    const Outcome outcome = run(selectFormula_ + u"--prop 截面面积=8 --quit"_s);
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
    const Outcome outcome = run(selectFormula_ + u"--set A=4 --set F=2.5e1 --quit"_s);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_TRUE(outcome.lines.contains(u"variable: F = 2.5e1 (typed)"_s));
    EXPECT_TRUE(outcome.lines.contains(u"variable: A = 4 (property)"_s));
    EXPECT_EQ(outcome.lines.last(), u"result: 6.25"_s);
    EXPECT_EQ(library_.rows(u"SELECT Value FROM RecentVar WHERE VarName='F'"_s),
              QStringList{u"2.5e1"_s});
}

TEST_F(HostProgram, WhatIsNotThereOrNotUnderstoodEndsWithTwo) {
    for (const QString& wrong :
         u"--select=DBNode2 --select=nonsense --set=B=1 --bogus"_s.split(u' ')) {
        const Outcome outcome = run(wrong + u" --quit"_s);
        EXPECT_EQ(outcome.code, 2);
        EXPECT_TRUE(outcome.complaint.contains(u'\'' + wrong.section(u'=', 1, 1)))
            << outcome.complaint.toStdString();
    }
}

TEST_F(HostProgram, AMissingConfigurationEndsWithTwoAndABadOneWithItsMessage) {
    configuration_.write(test::pictureBytes(5000));
    Outcome outcome = run(u"--quit"_s);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_TRUE(outcome.lines.first().startsWith(u"message: "));
    configuration_.removeFile();
    outcome = run(u"--quit"_s);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.lines.first(), u"message: 没有在用户指定的配置文件路径下发现配置文件！"_s);
    EXPECT_TRUE(outcome.complaint.contains(configuration_.folder()));
}

TEST_F(HostProgram, ALibraryOfRandomBytesKeepsTheOnesBeforeIt) {
    library_.addFile(u"random.mdb"_s, test::pictureBytes(5000));
    configuration_.addLibrary(u"坏库"_s, library_.folder(), u"random.mdb"_s);
    const Outcome outcome = run(selectFormula_ + u"--quit"_s);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.lines.first(), u"message: 无法打开用户选择的数据库！"_s);
    EXPECT_TRUE(outcome.lines.contains(u"library: 库1"_s));
}

TEST_F(HostProgram, ThePictureOfTheWindowIsTheSameEachTime) {
    QList<QImage> pictures;
    for (const QString& name : {u"first.png"_s, u"second.png"_s}) {
        EXPECT_EQ(run(selectFormula_ + u"--screenshot "_s + library_.pathOf(name)).code, 0);
        pictures.append(QImage(library_.pathOf(name)).convertToFormat(QImage::Format_RGB32));
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
    EXPECT_EQ(runHost({}, {}).code, 1);
    EXPECT_EQ(runHost({u"--deploy"_s, configuration_.folder(), u"--quit"_s}, {}).code, 0);
    EXPECT_EQ(runHost({u"--help"_s}, {}).code, 0);
}

}  // namespace
}  // namespace varo::host
