#include "control/work_folder.h"
#include "support/desk.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

const auto NoFolder = QStringLiteral("用户没有指定配置文件路径！");
const auto FolderMissing = QStringLiteral("用户指定的配置文件路径不存在！");
const auto FileMissing = QStringLiteral("没有在用户指定的配置文件路径下发现配置文件！");
const auto CannotOpen = QStringLiteral("无法打开用户选择的数据库！");

/// A library with one folder that holds one formula.
struct SmallLibrary : TestLibrary {
    SmallLibrary() {
        folderId = addFolder(0, QStringLiteral("梁"));
        formulaId = addFormula(folderId, QStringLiteral("面积"), QStringLiteral("a*b"));
    }
    qint32 folderId = 0;
    qint32 formulaId = 0;
};

TEST(Startup, BeforeRunCalcEverythingIsEmptyAndDisabled) {
    Desk desk;
    EXPECT_TRUE(desk.treeTexts().isEmpty());
    for (const char* name :
         {"tvFolder", "lvFormula", "txtFormula", "MSFEditVarList", "txtResult", "cmdCalCulate",
          "cmdSaveResult", "CmdAddResult", "cmdClearResult", "cmdCopy", "cmdSend",
          "UpDownPrecision", "TabStripSymbol", "tbSymbol0", "tbSymbol9", "optDesc0", "optDesc1"}) {
        EXPECT_FALSE(desk.isEnabled(name)) << name;
    }
    EXPECT_TRUE(desk.messages().isEmpty());
}

TEST(Startup, SaysWhatIsWrongWithTheConfigurationFolderAndRunsOnceItIsMended) {
    const SmallLibrary library;
    TestConfiguration configuration({&library});
    QTemporaryDir empty;
    Desk desk;
    desk.run(QString());
    EXPECT_EQ(desk.messages(), QStringList{NoFolder});
    EXPECT_TRUE(desk.isEnabled("tvFolder"));
    EXPECT_FALSE(desk.isEnabled("lvFormula"));
    desk.run(empty.filePath(QStringLiteral("missing")));
    EXPECT_EQ(desk.messages().last(), FolderMissing);
    desk.run(empty.path());
    EXPECT_EQ(desk.messages().last(), FileMissing);
    EXPECT_TRUE(desk.treeTexts().isEmpty());
    desk.run(configuration.folder());
    EXPECT_EQ(desk.messages().size(), 3);
    EXPECT_EQ(desk.treeTexts(), (QStringList{QStringLiteral("库1"), QStringLiteral("  梁")}));
}

TEST(Startup, TakesTheFolderWithAnySeparatorAtItsEnd) {
    const SmallLibrary library;
    const TestConfiguration configuration({&library});
    for (const QString& end : {QString(), QStringLiteral("/"), QStringLiteral("\\")}) {
        Desk desk(configuration.folder() + end);
        EXPECT_TRUE(desk.messages().isEmpty());
        EXPECT_EQ(desk.treeTexts().size(), 2) << end.toStdString();
    }
}

TEST(Startup, RefusesAConfigurationFileThatLacksWhatItPromises) {
    const SmallLibrary library;
    const QByteArray folder = library.folder().toUtf8();
    const QByteArray two = "RootNodeText1=一\nRootNodeName1=library.vdb\nRootNodePath1=" + folder +
                           "\nRootNodeText2=二\nRootNodePath2=" + folder + "\n";
    struct {
        const char* what;
        QByteArray file;
        const char* named;  ///< what the message must name
    } const cases[] = {
        {"no section", "", "NodeCount"},
        {"no count", "[Access]\n" + two, "NodeCount"},
        {"a missing key", "[Access]\nNodeCount=2\n" + two, "RootNodeName2"},
        {"a count beyond all libraries", "[Access]\nNodeCount=2000000000\n" + two, "RootNodeName2"},
        {"no text", QByteArray("\x00\x01\xff\xfe\x00\x80\x81\xfd\x00", 9) + "\x93\x00\xff",
         nullptr},
    };
    for (const auto& each : cases) {
        const TestConfiguration configuration;
        configuration.write(each.file);
        Desk desk(configuration.folder());
        ASSERT_EQ(desk.messages().size(), 1) << each.what;
        EXPECT_TRUE(each.named == nullptr ||
                    desk.messages().first().contains(QString::fromLatin1(each.named)))
            << each.what << ": " << desk.messages().first().toStdString();
        EXPECT_TRUE(desk.treeTexts().isEmpty());
        EXPECT_FALSE(desk.isEnabled("lvFormula"));
    }
}

TEST(Startup, ACountOfZeroStartsWithAnEmptyTree) {
    for (const char* count : {"0", "none", ""}) {
        const TestConfiguration configuration;
        configuration.write(QByteArray("[Access]\nNodeCount=") + count + "\n");
        Desk desk(configuration.folder());
        EXPECT_TRUE(desk.messages().isEmpty()) << count;
        EXPECT_TRUE(desk.treeTexts().isEmpty());
        EXPECT_TRUE(desk.isEnabled("tvFolder"));
    }
}

TEST(Startup, ReadsRelativeLibraryFoldersAndBackslashes) {
    const SmallLibrary library;
    TestConfiguration configuration;
    QDir(configuration.folder()).mkdir(QStringLiteral("libs"));
    ASSERT_TRUE(
        QFile::copy(library.path(), configuration.folder() + QStringLiteral("/libs/a.vdb")));
    configuration.addLibrary(QStringLiteral("近"), QStringLiteral("libs\\"),
                             QStringLiteral("a.vdb"));
    Desk desk(configuration.folder());
    EXPECT_TRUE(desk.messages().isEmpty());
    EXPECT_EQ(desk.treeTexts().size(), 2);
}

/// Ways to spoil a library file; the libraries before it must stay.
TEST(Startup, StopsAtALibraryThatCannotBeReadAndKeepsThoseBefore) {
    const SmallLibrary good;
    const QByteArray whole = fileContent(good.path());
    struct {
        const char* what;
        std::function<void(const QString& path)> make;
    } const cases[] = {
        {"missing", [](const QString&) {}},
        {"empty", [&](const QString& path) { QFile(path).open(QIODevice::WriteOnly); }},
        {"random bytes",
         [&](const QString& path) {
             QFile file(path);
             ASSERT_TRUE(file.open(QIODevice::WriteOnly));
             QByteArray bytes(5000, '\0');
             for (qsizetype i = 0; i < bytes.size(); ++i) {
                 bytes[i] = static_cast<char>(i * i * 31 + i / 7);
             }
             file.write(bytes);
         }},
        {"a folder", [](const QString& path) { QDir().mkdir(path); }},
    };
    for (const auto& each : cases) {
        QTemporaryDir folder;
        each.make(folder.filePath(QStringLiteral("bad.mdb")));
        TestConfiguration configuration({&good});
        configuration.addLibrary(QStringLiteral("坏"), folder.path(), QStringLiteral("bad.mdb"));
        configuration.addLibrary(good, QStringLiteral("后"));
        Desk desk(configuration.folder());
        EXPECT_EQ(desk.messages(), QStringList{CannotOpen}) << each.what;
        EXPECT_EQ(desk.treeTexts(), (QStringList{QStringLiteral("库1"), QStringLiteral("  梁"),
                                                 QStringLiteral("坏")}))
            << each.what;
        EXPECT_TRUE(desk.isEnabled("tvFolder"));
        EXPECT_FALSE(desk.isEnabled("lvFormula"));
        desk.clickNode(QStringLiteral("梁"));
        EXPECT_EQ(desk.listTexts(), QStringList{QStringLiteral("面积")}) << each.what;
        desk.clickNode(QStringLiteral("坏"));
        EXPECT_EQ(desk.messages().last(), QStringLiteral("无法打开用户指定的数据库！"))
            << each.what;
    }
}

TEST(Startup, ATruncatedLibraryNeverCrashesAndIsNeverChanged) {
    const SmallLibrary good;
    const QByteArray whole = fileContent(good.path());
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("cut.mdb"));
    TestConfiguration configuration;
    configuration.addLibrary(QStringLiteral("断"), folder.path(), QStringLiteral("cut.mdb"));
    for (qsizetype length = 0; length < whole.size(); length += 1531) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(whole.first(length));
        file.close();
        {
            Desk desk(configuration.folder());
            EXPECT_GE(desk.treeTexts().size(), 1);
        }
        EXPECT_EQ(fileContent(path), whole.first(length)) << length;
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 1) << length;
    }
}

TEST(Startup, ALockedLibraryIsWaitedForAndThenTold) {
    SmallLibrary library;
    const TestConfiguration configuration({&library});
    library.connection().execute(QStringLiteral("begin exclusive"));
    Desk desk(configuration.folder());
    EXPECT_EQ(desk.messages().size(), 1);
    library.connection().execute(QStringLiteral("rollback"));
    desk.control().RunCalc();
    EXPECT_EQ(desk.messages().size(), 1);
    EXPECT_EQ(desk.treeTexts().size(), 2) << "RunCalc works once the lock is gone";
}

TEST(Startup, ASecondRunCalcChangesNothing) {
    const SmallLibrary library;
    const TestConfiguration configuration({&library});
    Desk desk(configuration.folder());
    desk.clickNode(QStringLiteral("梁"));
    configuration.removeFile();
    desk.run(QString());
    EXPECT_TRUE(desk.messages().isEmpty());
    EXPECT_EQ(desk.tree().selectedKey(),
              QStringLiteral("FormulaNode%1->DBNode1").arg(library.folderId));
    EXPECT_EQ(desk.listTexts().size(), 1);
}

TEST(Startup, SelectsTheFirstLibraryAndOpensItsTopLevel) {
    const SmallLibrary library;
    const TestConfiguration configuration({&library});
    Desk desk(configuration.folder());
    EXPECT_EQ(desk.tree().selectedKey(), QStringLiteral("DBNode1"));
    EXPECT_TRUE(desk.tree().isExpanded(Desk::find(desk.tree(), QStringLiteral("库1"))));
    EXPECT_TRUE(desk.isEnabled("lvFormula"));
    EXPECT_FALSE(desk.isEnabled("txtFormula")) << "the top level holds no formula";
}

TEST(Startup, WorkingPicturesAreRemovedWithTheControl) {
    TestLibrary library;
    const qint32 formula = library.addFormula(0, QStringLiteral("图"));
    library.addPicture(formula, pictureBytes(20000));
    const TestConfiguration configuration({&library});
    QTemporaryDir work;
    const QString picture = work.filePath(QString::number(formula) + QStringLiteral("TempPic.bmp"));
    {
        Desk desk;
        desk.control().setWorkFolder(work.path());
        desk.run(configuration.folder());
        EXPECT_EQ(fileContent(picture), pictureBytes(20000));
    }
    EXPECT_FALSE(QFileInfo::exists(picture));
}

TEST(WorkFolders, NoTwoControlsShareOne) {
    const QTemporaryDir directory;
    const QString folder = directory.path() + QLatin1Char('/');
    const QString next = folder + QStringLiteral("made/");
    const QString notAFolder = QStringLiteral("/dev/null/");
    {
        const WorkFolder first({notAFolder, folder, next});
        const WorkFolder second({folder, next});
        const WorkFolder third({folder, next});
        EXPECT_EQ(first.path(), folder);
        EXPECT_EQ(second.path(), next);
        EXPECT_FALSE(third.path().startsWith(folder));
        EXPECT_TRUE(QFileInfo(third.path()).isDir());
        EXPECT_TRUE(third.path().endsWith(u'/'));
    }
    EXPECT_EQ(WorkFolder({folder}).path(), folder);
}

/// Both with the default folder; formulas and pictures of both libraries have the same identifiers.
TEST(WorkFolders, PicturesOfTwoControlsStayApart) {
    TestLibrary libraries[2];
    RecordingQuestions questions;
    std::vector<std::unique_ptr<Varo_CalcEx>> controls;
    const auto picture = [](int number) { return pictureBytes(1000 + number); };
    for (int i = 0; i < 2; ++i) {
        libraries[i].addPicture(libraries[i].addFormula(0, QStringLiteral("式")), picture(i));
    }
    const TestConfiguration configurations[2] = {TestConfiguration{&libraries[0]},
                                                 TestConfiguration{&libraries[1]}};
    for (int i = 0; i < 2; ++i) {
        controls.push_back(std::make_unique<Varo_CalcEx>(nullptr, &questions));
        controls.back()->SetDeployFolder(configurations[i].folder());
        controls.back()->RunCalc();
        controls.back()->SelFormula(QStringLiteral("LvFormulaKey1"));
        controls.back()->findChild<QToolButton*>(QStringLiteral("复制"))->click();
    }
    // What is copied is still there when the host has named another folder.
    const QTemporaryDir named;
    controls[0]->setWorkFolder(named.path());
    controls[1].reset();
    controls[0]->findChild<QToolButton*>(QStringLiteral("粘贴"))->click();
    EXPECT_EQ(libraries[0].rows(QStringLiteral("Select Count(*), Min(length(Pic)), "
                                               "Max(length(Pic)) From Formula")),
              QStringList{QStringLiteral("2|1000|1000")});
    EXPECT_EQ(questions.informed, QStringList());
}

}  // namespace
}  // namespace varo::test
