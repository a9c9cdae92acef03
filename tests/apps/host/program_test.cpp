#include "program.h"

#include "host/beam_library.h"
#include "library/condition_text.h"
#include "library/filter_store.h"
#include "support/desk.h"

#include <QImage>

namespace varo::host {
namespace {

using namespace Qt::StringLiterals;

using test::Outcome;

Outcome runHost(const QStringList& arguments, const QString& platform = u"offscreen"_s) {
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_SCALE_FACTOR"}) {
        environment.remove(QLatin1StringView(name));
    }
    if (!platform.isEmpty()) {
        environment.insert(u"QT_QPA_PLATFORM"_s, platform);
    }
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(VARO_HOST_PROGRAM), arguments);
    return test::outcomeOf(program);
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
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out,
              "library: 库1\nfolder: 拉杆\nformula: 应力\nexpression: F/A\n"
              "description: F 轴力\\nA 面积\npicture: 40x30\nvariable: F = 24 (typed)\n"
              "variable: A = 8 (property)\nresult: 3.00\n");
    EXPECT_EQ(run(u"--quit"_s).out,
              "library: 库1\nfolder: \nformula: \nexpression: \ndescription: \npicture: none\n"
              "result: \n");
}

TEST_F(HostProgram, ATypedValueIsCalculatedWithAndStored) {
    const Outcome outcome = run(selectFormula_ + u"--set A=4 --set F=a=b --set=F=2.5e1 --quit"_s);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(outcome.out.ends_with(
        "0\nvariable: F = 2.5e1 (typed)\nvariable: A = 4 (property)\nresult: 6.25\n"))
        << outcome.out;
    const QString stored = u"SELECT Value FROM RecentVar WHERE VarName='F'"_s;
    EXPECT_EQ(library_.rows(stored), QStringList{u"2.5e1"_s});
    run(selectFormula_ + u"--set F=a=b --quit"_s);
    EXPECT_EQ(library_.rows(stored), QStringList{u"a=b"_s});
}

TEST_F(HostProgram, PrintsWhatIsLocatedAndShowsTheFirstOfIt) {
    const auto filter =
        FilterStore(library_.connection())
            .saveNew(parseCondition(u"跨度 >= 2 and not 材料 equal \"木材\""_s).tree);
    ASSERT_TRUE(filter);
    library_.addProperty(0, u"用途"_s, 0, 1, NodeTypeFormula);
    library_.addProperty(0, u"用途"_s, *filter, 1, NodeTypeFolder);
    library_.addProperty(1, u"用途"_s, 0, 9, NodeTypeFolder);
    library_.addProperty(0, u"用途"_s, 0, 0, NodeTypeFolder);
    const QString gone = u"message: 用户需要定位的节点不存在！\n"_s;
    const QString formula = u"located: 库1 / 拉杆 / 应力\n"_s;
    const QString library = u"located: 库1\n"_s;
    const QString wooden = u"--prop 跨度=3 --prop 材料=木材 --locate 用途 --locate=无 --quit"_s;
    // The folder that is gone is told on the way there and on the way back.
    EXPECT_TRUE(QString::fromStdString(run(u"--prop 跨度=3m --locate 用途 --quit"_s).out)
                    .startsWith(gone + gone + formula + u"located: 库1 / 拉杆\n"_s + library +
                                u"library: 库1\nfolder: 拉杆\nformula: 应力\n"_s));
    EXPECT_TRUE(QString::fromStdString(run(wooden).out)
                    .startsWith(gone + gone + formula + library + u"located: nothing\n"_s));
}

TEST_F(HostProgram, WhatIsNotThereOrNotUnderstoodIsNamedAndEndsWithTwo) {
    // Separated by ";", each with what is named.
    for (const QString& wrong :
         u"--select=DBNode2>'DBNode2;--select=nonsense>'nonsense;--set=B=1>'B;--bogus>--bogus;"
         "stray>stray;--select>--select;--quit=1>--quit;--set F>'F';--prop =3>'=3';"
         "--screenshot /nowhere/a>/nowhere/a;--screenshot=/>'/'"_s.split(u';')) {
        const Outcome outcome = run(wrong.section(u'>', 0, 0) + u" --quit"_s);
        EXPECT_EQ(outcome.status, 2) << wrong.toStdString();
        EXPECT_NE(outcome.err.find(wrong.section(u'>', 1).toStdString()), std::string::npos)
            << outcome.err;
    }
    EXPECT_EQ(runHost({u"--quit"_s, u"--deploy"_s}).status, 2);
}

TEST_F(HostProgram, AMissingConfigurationEndsWithTwoAndABadOneWithOne) {
    configuration_.write(test::pictureBytes(5000));
    Outcome outcome = run(u"--quit"_s);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.out.starts_with("message: "));
    configuration_.removeFile();
    outcome = run(u"--quit"_s);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(outcome.out.starts_with("message: 没有在用户指定的配置文件路径下发现配置文件！\n"));
    EXPECT_NE(outcome.err.find(configuration_.folder().toStdString()), std::string::npos);
}

TEST_F(HostProgram, ThePictureOfTheWindowIsTheSameEachTime) {
    QImage pictures[2];
    for (QImage& picture : pictures) {
        const QString file = library_.pathOf(u"window.png"_s);
        EXPECT_EQ(run(selectFormula_ + u"--screenshot "_s + file).status, 0);
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
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("/proc/a.png"), std::string::npos);
    EXPECT_EQ(runHost({}, {}).status, 1);
    EXPECT_EQ(runHost({u"--deploy"_s, configuration_.folder(), u"--quit"_s}, {}).status, 0);
    EXPECT_EQ(runHost({u"--help"_s}, {}).status, 0);
}

}  // namespace
}  // namespace varo::host
