#include "manager/manager_desk.h"

#include <QApplication>
#include <QDir>

namespace varo::test {
namespace {

class Applying : public ManagerDesk {
  protected:
    /// Opens the manager, exchanges the two libraries, and confirms.
    void exchange(const std::function<void()>& meanwhile = [] {}) {
        manage([&] {
            click(u"库1"_s);
            give("下移");
            meanwhile();
            give("cmdOK");
        });
    }
};

TEST_F(Applying, StoresWhatIsTypedWhereItBelongsAndStartsAnew) {
    first.addProperty(1, u"用途"_s, 0, bending, NodeTypeFormula);
    first.addProperty(2, u"用途"_s, 0, shear, NodeTypeFormula);
    select(u"梁"_s, u"弯曲"_s);
    press(u"复制"_s);
    desk->control().SetDesignProp(u"用途"_s);
    desk->type(desk->formulaBox(), u"9*"_s);
    exchange();
    EXPECT_EQ(told(), QString());
    EXPECT_EQ(first.rows(u"Select Formula From Formula Where ID = 1"_s), QStringList{u"9*M/W"_s});
    EXPECT_EQ(libraries(), u"库2 库1"_s);
    EXPECT_EQ(desk->tree().selectedKey(), u"DBNode3"_s) << "keys go on counting";
    EXPECT_FALSE(desk->editButton(u"查找下一个"_s).isEnabled());
    EXPECT_FALSE(QFile::exists(backupPath()));
    desk->clickNode(u"管"_s);
    desk->clickFormula(u"流量"_s);
    press(u"粘贴"_s);
    EXPECT_EQ(second.rows(u"Select Name From Formula"_s).last(), u"弯曲"_s);
    exchange();
    EXPECT_EQ(libraries(), u"库2 库1"_s) << "a move by the name of the last one does nothing";
}

TEST_F(Applying, AnEmptyListThenARestartThenAddingOneWorks) {
    manage([&] {
        list().selectAll();
        give("清除数据库");
        give("cmdOK");
    });
    EXPECT_EQ(libraries() + told(), QString());
    EXPECT_TRUE(desk->listTexts().isEmpty());
    EXPECT_FALSE(ini().contains("NodeCount"));
    start();
    EXPECT_TRUE(told().contains(u"NodeCount"_s));
    manage(
        [&] {
            desk->clickEmptySpace(desk->tree(), Qt::RightButton);
            desk->choose("mnuPopFormulaDB");
        },
        [&] {
            give("添加数据库", third.path());
            give("cmdOK");
        });
    EXPECT_EQ(libraries(), u"新添加的公式库"_s);
}

TEST_F(Applying, AConfigurationFileThatLacksAKeyLosesNoOtherLibrary) {
    ASSERT_TRUE(QFile::rename(iniPath(), backupPath()));
    start();
    EXPECT_EQ(libraries() + told(), u"库1 库2"_s) << "the file was put aside by a killed program";
    configuration.write(ini().replace("RootNodeText1", "Away").replace("NodeCount", "Count"));
    start();
    EXPECT_EQ(libraries(), QString());
    EXPECT_TRUE(told().contains(u"NodeCount"_s));
    manage([&] { EXPECT_EQ(listed(), u"库2"_s); });
    desk->control().SetDesignProp(u"用途"_s);
    EXPECT_EQ(told(), QString()) << "nothing is configured";
    manage([&] {
        desk->control().RunCalc();
        EXPECT_EQ(told(), QString()) << "nothing is read while the manager is open";
        give("cmdOK");
    });
    EXPECT_EQ(libraries(), u"库2"_s);
}

TEST_F(Applying, AFileThatCannotBeWrittenKeepsTheListAndAFolderThatHasGoneLeavesNone) {
    const QByteArray before = ini();
    const QByteArray noText("\0\1\2\3", 4);
    exchange([&] { configuration.write(noText); });
    EXPECT_EQ(told(), u"重写配置文件失败，修改无效！"_s);
    EXPECT_EQ(ini(), noText);
    EXPECT_EQ(libraries(), u"库1 库2"_s);
    desk->clickNode(u"梁"_s);
    EXPECT_EQ(desk->listTexts().size(), 3);
    configuration.write(before);
    const QString away = configuration.folder() + u".away"_s;
    exchange([&] { ASSERT_TRUE(QDir().rename(configuration.folder(), away)); });
    EXPECT_EQ(told(), u"用户指定的配置文件路径不存在！"_s);
    EXPECT_EQ(libraries(), QString());
    ASSERT_TRUE(QDir().rename(away, configuration.folder()));
    desk->control().RunCalc();
    EXPECT_EQ(libraries(), u"库1 库2"_s);
}

TEST_F(Applying, ALibraryThatHasGoneIsMarkedAndTheOthersStand) {
    third.addFolder(0, u"拱"_s);
    third.connection().close();
    const QString away = third.pathOf(u"away"_s);
    manage([&] {
        give("添加数据库", third.path());
        desk->typeLabel(u"三"_s);
        give("上移");
        ASSERT_TRUE(QFile::rename(third.path(), away));
        give("cmdOK");
    });
    EXPECT_EQ(told(), QString());
    EXPECT_EQ(libraries(), u"库1 三 库2"_s);
    EXPECT_TRUE(Desk::find(desk->tree(), u"三"_s)
                    .data(Qt::ToolTipRole)
                    .toString()
                    .contains(third.path() + u"\n文件不存在"_s));
    desk->clickNode(u"管"_s);
    EXPECT_EQ(desk->listTexts(), QStringList{u"流量"_s});
    desk->clickNode(u"三"_s);
    EXPECT_EQ(told(), u"无法打开用户指定的数据库！"_s);
    ASSERT_TRUE(QFile::rename(away, third.path()));
    desk->clickNode(u"三"_s);
    EXPECT_TRUE(desk->treeTexts().contains(u"  拱"_s)) << "read once it can be";
}

TEST_F(Applying, AControlThatIsStartedAgainForgetsTheLibrariesThatWaitToBeRead) {
    requireSqlite();
    third.addFolder(0, u"拱"_s);
    configuration.addLibrary(third, u"库3"_s);
    const auto isReading = [&] { return desk->isShown("lblReading"); };
    const auto lock = [&] {
        second.lock();
        third.lock();
    };
    const auto unlock = [&] {
        second.unlock();
        third.unlock();
    };
    lock();
    start();
    EXPECT_EQ(told(), u"无法打开用户选择的数据库！"_s);
    unlock();
    manage([&] {
        lock();
        give("cmdOK");
    });
    ASSERT_TRUE(isReading()) << "the lock on the second has taken all the time";
    select(u"梁"_s, u"弯曲"_s);
    desk->type(desk->formulaBox(), u"9*"_s);
    first.refuse("Update", "Formula");
    unlock();
    desk->questions().meanwhile = [&] {
        EXPECT_TRUE(QTest::qWaitFor([&] { return !isReading(); }, 60'000));
        EXPECT_FALSE(desk->treeTexts().contains(u"  拱"_s));
    };
    desk->control().RunCalc();
    EXPECT_NE(told(), QString());
    EXPECT_TRUE(desk->treeTexts().contains(u"  拱"_s));
    first.allow();
}

TEST_F(Applying, TheHostMayGoOnOrDestroyTheControlWhileTheManagerIsOpen) {
    const TestConfiguration other{&third};
    exchange([&] {
        desk->control().SetDeployFolder(other.folder());
        desk->control().RunCalc();
        desk->control().ClickTreeNode(u"FormulaNode1->DBNode2"_s);
        desk->clickEditButton(u"公式库管理"_s);
    });
    EXPECT_EQ(libraries(), u"库2 库1"_s);
    EXPECT_TRUE(ini().contains("RootNodeText1=库2"));
    EXPECT_FALSE(fileContent(other.folder() + u"/Varo-Pelm.ini"_s).contains("库2"));
    manage([&] { desk->editButton(u"公式库管理"_s).click(); }, [&] { desk.reset(); });
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    start();
}

}  // namespace
}  // namespace varo::test
