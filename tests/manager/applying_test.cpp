#include "manager/manager_desk.h"
#include "support/read_only_folder.h"

namespace varo::test {
namespace {

class Applying : public ManagerDesk {
  protected:
    /// Opens the manager, exchanges the two libraries, and confirms.
    void exchange(const std::function<void()>& meanwhile = [] {}) {
        manage([&](const OpenManager& manager) {
            manager.click(u"库1"_s);
            manager.press(u"下移"_s);
            meanwhile();
            manager.press(u"cmdOK"_s);
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
    start();
    EXPECT_EQ(libraries(), u"库2 库1"_s);
    exchange();
    EXPECT_EQ(libraries(), u"库2 库1"_s) << "a move by the name of the last one does nothing";
}

TEST_F(Applying, AnEmptyListThenARestartThenAddingOneWorks) {
    manage([&](const OpenManager& manager) {
        manager.list().selectAll();
        manager.press(u"清除数据库"_s);
        manager.press(u"cmdOK"_s);
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
        [&](const OpenManager& manager) {
            desk->questions().file = ChosenFile{third.path(), 0};
            manager.press(u"添加数据库"_s);
            manager.press(u"cmdOK"_s);
        });
    EXPECT_EQ(libraries(), u"新添加的公式库"_s);
    start();
    EXPECT_EQ(libraries() + told(), u"新添加的公式库"_s);
}

TEST_F(Applying, AFileThatWasPutAsideWhenTheProgramWasKilledIsTakenBack) {
    const QByteArray before = ini();
    ASSERT_TRUE(QFile::rename(iniPath(), backupPath()));
    start();
    EXPECT_EQ(libraries() + told(), u"库1 库2"_s);
    EXPECT_EQ(ini(), before);
    EXPECT_FALSE(QFile::exists(backupPath()));
}

TEST_F(Applying, AConfigurationFileThatLacksAKeyLosesNoOtherLibrary) {
    configuration.write(ini().replace("RootNodeText1", "Away").replace("NodeCount", "Count"));
    start();
    EXPECT_EQ(libraries(), QString());
    EXPECT_TRUE(told().contains(u"NodeCount"_s));
    manage([&](const OpenManager& manager) { EXPECT_EQ(manager.texts(), u"库2"_s); });
    desk->control().SetDesignProp(u"用途"_s);
    EXPECT_EQ(told(), QString()) << "nothing is configured";
    manage([&](const OpenManager& manager) {
        desk->control().RunCalc();
        EXPECT_EQ(told(), QString()) << "nothing is read while the manager is open";
        manager.press(u"cmdOK"_s);
    });
    EXPECT_EQ(libraries(), u"库2"_s);
}

TEST_F(Applying, AConfigurationFolderThatTakesNothingKeepsTheOldList) {
    const QByteArray before = ini();
    auto readOnly = std::optional<ReadOnlyFolder>();
    exchange([&] { readOnly.emplace(configuration.folder(), iniPath()); });
    if (!readOnly->readOnly()) {
        GTEST_SKIP() << "no folder can be made read-only here";
    }
    EXPECT_EQ(told(), u"重写配置文件失败，修改无效！"_s);
    EXPECT_EQ(ini(), before);
    EXPECT_EQ(libraries(), u"库1 库2"_s);
    readOnly.reset();
    desk->clickNode(u"梁"_s);
    EXPECT_EQ(desk->listTexts().size(), 3);
}

TEST_F(Applying, AConfigurationFileThatIsNoTextAnyMoreKeepsTheOldList) {
    const QByteArray noText("\0\1\2\3", 4);
    exchange([&] { configuration.write(noText); });
    EXPECT_EQ(told(), u"重写配置文件失败，修改无效！"_s);
    EXPECT_EQ(ini(), noText);
    EXPECT_FALSE(QFile::exists(backupPath()));
    EXPECT_EQ(libraries(), u"库1 库2"_s);
    configuration.write("[Access]\nNodeCount=0\n");
    start();
}

TEST_F(Applying, AConfigurationFolderThatHasGoneLeavesNothingUntilRunCalc) {
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
    manage([&](const OpenManager& manager) {
        desk->questions().file = ChosenFile{third.path(), 0};
        manager.press(u"添加数据库"_s);
        manager.type(u"三"_s);
        manager.press(u"上移"_s);
        ASSERT_TRUE(QFile::rename(third.path(), away));
        manager.press(u"cmdOK"_s);
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

TEST_F(Applying, TheHostMayGoOnWhileTheManagerIsOpen) {
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
}

TEST_F(Applying, DestroyingTheControlTakesTheOpenManagerAlong) {
    RecordingQuestions questions;
    const QTemporaryDir folder;
    auto* control = new Varo_CalcEx(nullptr, &questions);
    control->setWorkFolder(folder.path());
    control->SetDeployFolder(configuration.folder());
    control->RunCalc();
    QTimer::singleShot(0, control, [&] {
        ASSERT_NE(qobject_cast<LibraryManagerDialog*>(QApplication::activeModalWidget()), nullptr);
        delete control;
    });
    control->findChild<QToolButton*>(u"公式库管理"_s)->click();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_EQ(questions.informed, QStringList());
}

}  // namespace
}  // namespace varo::test
