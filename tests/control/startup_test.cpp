#include "support/desk.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

/// A library with one folder that holds one formula.
struct SmallLibrary : TestLibrary {
    SmallLibrary() { addFormula(addFolder(0, u"梁"_s), u"面积"_s, u"a*b"_s); }
};

TEST(Startup, SaysWhatIsWrongWithTheConfigurationFolderAndRunsOnceItIsMended) {
    const SmallLibrary library;
    TestConfiguration configuration({&library});
    QTemporaryDir empty;
    Desk desk;
    for (const char* name : {"tvFolder", "lvFormula", "txtFormula", "tbSymbol0", "optDesc0"}) {
        EXPECT_FALSE(desk.isEnabled(name)) << name;
    }
    desk.run(QString());
    EXPECT_EQ(desk.messages(), QStringList{u"用户没有指定配置文件路径！"_s});
    EXPECT_TRUE(desk.isEnabled("tvFolder"));
    EXPECT_FALSE(desk.isEnabled("lvFormula"));
    desk.run(empty.filePath(u"missing"_s));
    EXPECT_EQ(desk.messages().last(), u"用户指定的配置文件路径不存在！"_s);
    desk.run(empty.path());
    EXPECT_EQ(desk.messages().last(), u"没有在用户指定的配置文件路径下发现配置文件！"_s);
    EXPECT_TRUE(desk.treeTexts().isEmpty());
    desk.run(configuration.folder());
    EXPECT_EQ(desk.messages().size(), 3);
    EXPECT_EQ(desk.treeTexts(), (QStringList{u"库1"_s, u"  梁"_s}));
}

TEST(Startup, ReadsTheLibrariesBehindTheThousandthWhenTheyAreShownOrLocated) {
    const SmallLibrary library;
    SmallLibrary gone;
    SmallLibrary located;
    located.addProperty(1, u"用途"_s, 0, 1, NodeTypeFormula);
    const TestConfiguration configuration;
    QByteArray file = "[Access]\nNodeCount=1004\n";
    for (int i = 1; i <= 1004; ++i) {
        const QByteArray number = QByteArray::number(i);
        file += "RootNodeText" + number + '=' + number + "\nRootNodeName" + number +
                "=library.vdb\nRootNodePath" + number + '=' +
                (i < 1003 ? library : (i == 1003 ? located : gone)).folder().toUtf8() + '\n';
    }
    configuration.write(file);
    Desk desk(configuration.folder());
    EXPECT_EQ(desk.messages(), QStringList());
    EXPECT_TRUE(QTest::qWaitFor([&] { return desk.treeTexts().size() == 2004; }, 60'000));
    EXPECT_EQ(desk.treeTexts().mid(1998),
              (QStringList{u"1000"_s, u"  梁"_s, u"1001"_s, u"1002"_s, u"1003"_s, u"1004"_s}));
    desk.clickNode(u"1002"_s);
    EXPECT_EQ(desk.treeTexts().mid(2000),
              (QStringList{u"1001"_s, u"1002"_s, u"  梁"_s, u"1003"_s, u"1004"_s}));
    desk.control().ClickTreeNode(u"FormulaNode1->DBNode1001"_s);
    EXPECT_EQ(desk.tree().selectedKey(), u"FormulaNode1->DBNode1001"_s);
    desk.control().SetDesignProp(u"用途"_s);
    EXPECT_EQ(desk.messages(), QStringList());
    EXPECT_EQ(desk.tree().selectedKey(), u"FormulaNode1->DBNode1003"_s);
    EXPECT_EQ(desk.list().selectedKey(), u"LvFormulaKey1"_s);
    ASSERT_TRUE(QFile::remove(gone.path()));
    desk.control().ClickTreeNode(u"FormulaNode1->DBNode1004"_s);
    EXPECT_EQ(desk.messages(), QStringList{u"无法打开用户指定的数据库！"_s});
    const auto note = Desk::find(desk.tree(), u"1004"_s).data(Qt::ToolTipRole).toString();
    EXPECT_TRUE(note.contains(u"文件不存在"_s)) << note.toStdString();
}

TEST(Startup, RefusesAConfigurationFileThatLacksWhatItPromises) {
    const SmallLibrary library;
    const QByteArray folder = library.folder().toUtf8();
    const QByteArray two = "RootNodeText1=一\nRootNodeName1=library.vdb\nRootNodePath1=" + folder +
                           "\nRootNodeText2=二\nRootNodePath2=" + folder + "\n";
    const std::pair<QByteArray, const char*> cases[] = {
        {{}, "NodeCount"},
        {"[Access]\n" + two, "NodeCount"},
        {"[Access]\nNodeCount=2\n" + two, "RootNodeName2"},
        {"[Access]\nNodeCount=2000000000\n" + two, "RootNodeName2"},
        {QByteArray("\x00\x01\xff\xfe\x00\x80\x81\xfd\x00\xff", 10), ""},
    };
    for (const auto& [file, named] : cases) {
        const TestConfiguration configuration;
        configuration.write(file);
        Desk desk(configuration.folder());
        EXPECT_EQ(desk.messages().size(), 1);
        EXPECT_TRUE(desk.messages().value(0).contains(QString::fromLatin1(named))) << named;
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

TEST(Startup, ReadsRelativeLibraryFoldersAndAnySeparators) {
    const SmallLibrary library;
    TestConfiguration configuration;
    QDir(configuration.folder()).mkdir(u"libs"_s);
    ASSERT_TRUE(QFile::copy(library.path(), configuration.folder() + u"/libs/a.vdb"_s));
    configuration.addLibrary(u"近"_s, u"libs\\"_s, u"a.vdb"_s);
    for (const QString& end : {QString(), u"/"_s, u"\\"_s}) {
        const Desk desk(configuration.folder() + end);
        EXPECT_TRUE(desk.messages().isEmpty());
        EXPECT_EQ(desk.treeTexts().size(), 2) << end.toStdString();
    }
}

TEST(Startup, StopsAtALibraryThatCannotBeReadKeepsThoseBeforeAndSaysWhyAtItsNode) {
    const auto toolTip = [](const Desk& desk, const QString& node) {
        return Desk::find(desk.tree(), node).data(Qt::ToolTipRole).toString();
    };
    SmallLibrary good;
    const QTemporaryDir folder;
    TestConfiguration configuration({&good});
    configuration.addLibrary(u"坏"_s, folder.path(), u"bad.mdb"_s);
    configuration.addLibrary(good, u"后"_s);
    for (const bool isThere : {false, true}) {
        QFile file(folder.filePath(u"bad.mdb"_s));
        EXPECT_TRUE(!isThere || (file.open(QIODevice::WriteOnly) && file.write("no library") > 0));
        file.close();
        Desk desk(configuration.folder());
        EXPECT_EQ(desk.messages(), QStringList{u"无法打开用户选择的数据库！"_s});
        EXPECT_EQ(desk.treeTexts(), (QStringList{u"库1"_s, u"  梁"_s, u"坏"_s}));
        EXPECT_TRUE(desk.isEnabled("tvFolder"));
        EXPECT_FALSE(desk.isEnabled("lvFormula"));
        desk.clickNode(u"梁"_s);
        EXPECT_EQ(desk.listTexts(), QStringList{u"面积"_s});
        desk.clickNode(u"坏"_s);
        EXPECT_EQ(desk.messages().last(), u"无法打开用户指定的数据库！"_s);
        EXPECT_EQ(toolTip(desk, u"坏"_s).contains(u"数据库的说明"_s), isThere);
        const QString journal =
            good.addFile(QFileInfo(journalOf(good.path())).fileName(), "my journal");
        desk.clickNode(u"梁"_s);
        EXPECT_TRUE(toolTip(desk, u"库1"_s).contains(journal));
        ASSERT_TRUE(QFile::remove(journal));
        desk.clickNode(u"梁"_s);
        EXPECT_FALSE(toolTip(desk, u"库1"_s).contains(journal)) << "it opens again";
    }
}

TEST(Startup, ALockedLibraryIsWaitedForAndThenTold) {
    SmallLibrary library;
    const TestConfiguration configuration({&library});
    library.lock();
    Desk desk(configuration.folder());
    EXPECT_EQ(desk.messages().size(), 1);
    library.unlock();
    desk.control().RunCalc();
    EXPECT_EQ(desk.messages().size(), 1);
    EXPECT_EQ(desk.treeTexts().size(), 2) << "RunCalc works once the lock is gone";
}

TEST(Startup, SelectsTheFirstLibraryAndASecondRunCalcChangesNothing) {
    const SmallLibrary library;
    const TestConfiguration configuration({&library});
    Desk desk(configuration.folder());
    EXPECT_EQ(desk.tree().selectedKey(), u"DBNode1"_s);
    EXPECT_TRUE(desk.tree().isExpanded(Desk::find(desk.tree(), u"库1"_s)));
    EXPECT_TRUE(desk.isEnabled("lvFormula"));
    EXPECT_FALSE(desk.isEnabled("txtFormula")) << "the top level holds no formula";
    desk.clickNode(u"梁"_s);
    configuration.removeFile();
    desk.run(QString());
    EXPECT_TRUE(desk.messages().isEmpty());
    EXPECT_EQ(desk.tree().selectedKey(), u"FormulaNode1->DBNode1"_s);
    EXPECT_EQ(desk.listTexts().size(), 1);
}

TEST(WorkFolders, PicturesOfTwoControlsStayApart) {
    TestLibrary libraries[2];
    RecordingQuestions questions;
    std::unique_ptr<Varo_CalcEx> controls[2];
    for (int i = 0; i < 2; ++i) {
        libraries[i].addPicture(libraries[i].addFormula(0, u"式"_s), pictureBytes(1000 + i));
        const TestConfiguration configuration{&libraries[i]};
        controls[i] = std::make_unique<Varo_CalcEx>(nullptr, &questions);
        controls[i]->SetDeployFolder(configuration.folder());
        controls[i]->RunCalc();
        controls[i]->SelFormula(u"LvFormulaKey1"_s);
        controls[i]->findChild<QToolButton*>(u"复制"_s)->click();
    }
    // What is copied is still there when the host has named another folder.
    const QTemporaryDir named;
    controls[0]->setWorkFolder(named.path());
    const QString working = named.filePath(u"1TempPic.bmp"_s);
    controls[0]->ClickTreeNode(u"DBNode1"_s);
    controls[0]->SelFormula(u"LvFormulaKey1"_s);
    EXPECT_EQ(fileContent(working), pictureBytes(1000));
    controls[1].reset();
    controls[0]->findChild<QToolButton*>(u"粘贴"_s)->click();
    EXPECT_EQ(libraries[0].rows(u"Select length(Pic) From Formula"_s),
              (QStringList{u"1000"_s, u"1000"_s}));
    EXPECT_EQ(questions.informed, QStringList());
    controls[0].reset();
    EXPECT_FALSE(QFile::exists(working));
}

}  // namespace
}  // namespace varo::test
