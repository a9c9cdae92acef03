#include "host/beam_library.h"
#include "support/desk.h"

#include <QImage>
#include <QProcess>

#include <gtest/gtest.h>

namespace varo::host {
namespace {

struct Outcome {
    int code;
    QStringList lines;
    QString complaint;
};

Outcome runHost(const QStringList& arguments, bool choosePlatform = true) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "QT_SCALE_FACTOR"}) {
        environment.remove(QString::fromLatin1(name));
    }
    if (choosePlatform) {
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    }
    QProcess program;
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(VARO_HOST_PROGRAM), arguments);
    if (!program.waitForFinished(60'000) || program.exitStatus() != QProcess::NormalExit) {
        ADD_FAILURE() << "varo-host did not end";
        program.kill();
        program.waitForFinished();
        return {-1, {}, {}};
    }
    QStringList lines = QString::fromUtf8(program.readAllStandardOutput()).split(u'\n');
    EXPECT_EQ(lines.takeLast(), QString()) << "the last line must end";
    return {program.exitCode(), lines, QString::fromUtf8(program.readAllStandardError())};
}

/// The beam library as "库1" in a configuration folder.
class HostProgram : public testing::Test {
  protected:
    Outcome run(QStringList arguments) {
        return runHost(QStringList{QStringLiteral("--deploy"), configuration_.folder()} +
                       arguments);
    }

    test::BeamLibrary library_;
    test::TestConfiguration configuration_{&library_};
    const QStringList selectFormula_{QStringLiteral("--select"),
                                     QStringLiteral("FormulaNode1->DBNode1"),
                                     QStringLiteral("--select"), QStringLiteral("LvFormulaKey1")};
    const QStringList quit_{QStringLiteral("--quit")};
};

TEST_F(HostProgram, PrintsWhatTheControlShows) {
    const Outcome outcome =
        run(selectFormula_ + QStringList{QStringLiteral("--prop"), QStringLiteral("截面面积=8")} +
            quit_);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.lines, (QStringList{
                                 QStringLiteral("library: 库1"),
                                 QStringLiteral("folder: 拉杆"),
                                 QStringLiteral("formula: 应力"),
                                 QStringLiteral("expression: F/A"),
                                 QStringLiteral("description: F 轴力\\nA 面积"),
                                 QStringLiteral("picture: 40x30"),
                                 QStringLiteral("variable: F = 24 (typed)"),
                                 QStringLiteral("variable: A = 8 (property)"),
                                 QStringLiteral("result: 3.00"),
                             }));
}

TEST_F(HostProgram, TheTopLevelOfALibraryHasNoFolder) {
    EXPECT_EQ(run(quit_).lines,
              (QStringList{QStringLiteral("library: 库1"), QStringLiteral("folder: "),
                           QStringLiteral("formula: "), QStringLiteral("expression: "),
                           QStringLiteral("description: "), QStringLiteral("picture: none"),
                           QStringLiteral("result: ")}));
}

TEST_F(HostProgram, ATypedValueIsCalculatedWithAndStored) {
    const Outcome outcome = run(selectFormula_ +
                                QStringList{QStringLiteral("--set"), QStringLiteral("A=4"),
                                            QStringLiteral("--set"), QStringLiteral("F=2.5e1")} +
                                quit_);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_TRUE(outcome.lines.contains(QStringLiteral("variable: F = 2.5e1 (typed)")));
    EXPECT_TRUE(outcome.lines.contains(QStringLiteral("variable: A = 4 (property)")));
    EXPECT_EQ(outcome.lines.last(), QStringLiteral("result: 6.25"));
    EXPECT_EQ(library_.rows(QStringLiteral("SELECT Value FROM RecentVar WHERE VarName='F'")),
              QStringList{QStringLiteral("2.5e1")});
}

TEST_F(HostProgram, AKeyOrAVariableThatIsNotThereIsNamed) {
    const QList<QStringList> cases{
        {QStringLiteral("--select"), QStringLiteral("DBNode2")},
        {QStringLiteral("--select"), QStringLiteral("LvFormulaKey1")},
        {QStringLiteral("--select"), QStringLiteral("nonsense")},
        selectFormula_ + QStringList{QStringLiteral("--set"), QStringLiteral("B=1")},
    };
    for (const QStringList& arguments : cases) {
        const Outcome outcome = run(arguments + quit_);
        const QString named = arguments.last().section(u'=', 0, 0);
        EXPECT_EQ(outcome.code, 2) << named.toStdString();
        EXPECT_TRUE(outcome.complaint.contains(u'\'' + named + u'\''))
            << outcome.complaint.toStdString();
    }
}

TEST_F(HostProgram, AMissingFolderIsToldByTheControl) {
    const Outcome outcome =
        runHost({QStringLiteral("--deploy"), library_.pathOf(QStringLiteral("nowhere")),
                 QStringLiteral("--quit")});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.lines.first(), QStringLiteral("message: 用户指定的配置文件路径不存在！"));
    EXPECT_EQ(outcome.lines.last(), QStringLiteral("result: "));
}

TEST_F(HostProgram, NoFolderIsToldByTheControl) {
    EXPECT_EQ(runHost(quit_).lines.first(), QStringLiteral("message: 用户没有指定配置文件路径！"));
}

TEST_F(HostProgram, AMissingConfigurationFileIsToldByTheControl) {
    configuration_.removeFile();
    EXPECT_EQ(run(quit_).lines.first(),
              QStringLiteral("message: 没有在用户指定的配置文件路径下发现配置文件！"));
}

TEST_F(HostProgram, AConfigurationFileOfRandomBytesIsRefusedWithAReason) {
    configuration_.write(test::pictureBytes(5000));
    const Outcome outcome = run(quit_);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_TRUE(outcome.lines.first().startsWith(QStringLiteral("message: ")));
    EXPECT_GT(outcome.lines.first().size(), 12);
}

TEST_F(HostProgram, ALibraryOfRandomBytesKeepsTheOnesBeforeIt) {
    library_.addFile(QStringLiteral("random.mdb"), test::pictureBytes(5000));
    configuration_.addLibrary(QStringLiteral("坏库"), library_.folder(),
                              QStringLiteral("random.mdb"));
    const Outcome outcome = run(selectFormula_ + quit_);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.lines.first(), QStringLiteral("message: 无法打开用户选择的数据库！"));
    EXPECT_TRUE(outcome.lines.contains(QStringLiteral("library: 库1")));
}

TEST_F(HostProgram, ThePictureOfTheWindowIsTheSameEachTime) {
    QList<QImage> pictures;
    for (const char* name : {"first.png", "second.png"}) {
        const QString file = library_.pathOf(QString::fromLatin1(name));
        const Outcome outcome =
            run(selectFormula_ + QStringList{QStringLiteral("--screenshot"), file});
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.lines.first(), QStringLiteral("library: 库1"));
        pictures.append(QImage(file));
    }
    EXPECT_EQ(pictures[0].size(), QSize(1240, 800));
    EXPECT_EQ(pictures[0], pictures[1]);
    // The formula's picture, all red, is in it.
    int red = 0;
    for (int y = 0; y < pictures[0].height(); ++y) {
        for (int x = 0; x < pictures[0].width(); ++x) {
            red += pictures[0].pixelColor(x, y) == QColor(Qt::red) ? 1 : 0;
        }
    }
    EXPECT_GT(red, 40 * 30);
}

TEST_F(HostProgram, APictureThatCannotBeWrittenIsAFailure) {
    const Outcome outcome = run({QStringLiteral("--screenshot"), QStringLiteral("/proc/a.png")});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_TRUE(outcome.complaint.contains(QStringLiteral("/proc/a.png")));
}

TEST_F(HostProgram, WrongArgumentsEndWithTwo) {
    const Outcome outcome = runHost({QStringLiteral("--bogus")});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.lines, QStringList());
    EXPECT_TRUE(outcome.complaint.contains(QStringLiteral("'--bogus'")));
}

TEST_F(HostProgram, WithoutAScreenItOnlyReports) {
    EXPECT_EQ(runHost(quit_, false).code, 0);
    EXPECT_EQ(runHost({}, false).code, 1);
    EXPECT_EQ(runHost({QStringLiteral("--help")}, false).code, 0);
}

}  // namespace
}  // namespace varo::host
