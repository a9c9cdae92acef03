#include "manager/manager_desk.h"

#include <QMenu>

namespace varo::test {
namespace {

class ManagerDialog : public ManagerDesk {
  protected:
    /// The keys of the tool bar and the names of the menu that are enabled.
    static QString offered(const OpenManager& manager) {
        QStringList enabled;
        for (const QAction* button : manager.child<QToolBar>(u"tbEdit"_s).actions()) {
            if (button->isEnabled() && !button->isSeparator()) {
                enabled.append(button->text());
            }
        }
        const auto& menu = manager.child<QMenu>(u"mnuEdit"_s);
        for (const QAction* entry : menu.actions()) {
            if (menu.isEnabled() && entry->isEnabled() && !entry->isSeparator()) {
                enabled.append(entry->objectName().mid(3));
            }
        }
        return enabled.join(u' ');
    }
    void choose(const QString& path) { desk->questions().file = ChosenFile{path, 0}; }
};

const QString kAlways = u"新建数据库 添加数据库 "_s;
const QString kEveryEntry = u" NewDB AddDB MoveUp MoveDown Rename DelDB"_s;

TEST_F(ManagerDialog, ShowsTheLibrariesAndOffersWhatTheSelectionAllows) {
    desk.reset();
    configuration.addLibrary(third, u"库3"_s);
    start();
    manage([&](const OpenManager& manager) {
        EXPECT_EQ(manager.texts(), u"库1 库2 库3"_s);
        EXPECT_EQ(manager.item(u"库2"_s).siblingAtColumn(1).data().toString(), second.path());
        EXPECT_TRUE(manager.toolTip(u"库2"_s).contains(second.path()));
        EXPECT_FALSE(manager.dialog().Cancelled());
        const auto& tabs = manager.child<QTabBar>(u"tbsDB"_s);
        EXPECT_EQ(tabs.tabData(0).toString() + tabs.tabText(0), u"AccessDBAccess"_s);
        const QString none = kAlways + u"NewDB AddDB"_s;
        EXPECT_EQ(offered(manager), none);
        const struct {
            QString library;
            QString ways;
        } cases[] = {{u"库1"_s, u"下移"_s}, {u"库2"_s, u"上移 下移"_s}, {u"库3"_s, u"上移"_s}};
        for (const auto& each : cases) {
            manager.click(each.library);
            EXPECT_EQ(offered(manager),
                      kAlways + each.ways + u" 重命名 清除数据库"_s + kEveryEntry);
        }
        manager.clickEmptySpace();
        EXPECT_EQ(offered(manager), none);
        EXPECT_EQ(manager.texts(), u"库1 库2 库3"_s);
    });
}

TEST_F(ManagerDialog, WithoutAConfigurationFileOnlyCancels) {
    configuration.removeFile();
    manage([&](const OpenManager& manager) {
        EXPECT_EQ(offered(manager) + manager.texts(), QString());
        for (const QString& name : {u"lvDB"_s, u"tbsDB"_s, u"cmdOK"_s}) {
            EXPECT_FALSE(manager.child<QWidget>(name).isEnabled());
        }
        manager.dialog().accept();
        EXPECT_TRUE(manager.dialog().isVisible());
        manager.press(u"cmdCancel"_s);
        EXPECT_FALSE(manager.dialog().isVisible());
    });
    EXPECT_FALSE(QFile::exists(iniPath()));
    configuration.write("[Access]\nNodeCount=0\n");
    desk->run({});
    start();
}

TEST_F(ManagerDialog, MovesRemovesAndCancelsWithoutTouchingAnything) {
    const QByteArray before = ini();
    manage([&](const OpenManager& manager) {
        manager.click(u"库2"_s);
        manager.press(u"上移"_s);
        EXPECT_EQ(manager.texts(), u"[库2] 库1"_s);
        EXPECT_FALSE(manager.dialog().MoveLibrary(1)) << "the first one stays";
        QTest::keyClick(&manager.list(), Qt::Key_Down, Qt::ControlModifier);
        settle();
        EXPECT_EQ(manager.texts(), u"库1 [库2]"_s) << "by its shortcut";
        EXPECT_FALSE(manager.dialog().MoveLibrary(2)) << "the last one stays";
        manager.click(u"库1"_s, Qt::ControlModifier);
        QTest::keyClick(&manager.list(), Qt::Key_Delete);
        settle();
        EXPECT_EQ(manager.texts(), QString());
        EXPECT_EQ(offered(manager), kAlways + u"NewDB AddDB"_s);
        QTest::keyClick(&manager.list(), Qt::Key_Escape);
        EXPECT_TRUE(manager.dialog().Cancelled());
        EXPECT_FALSE(manager.dialog().isVisible());
    });
    EXPECT_EQ(ini(), before);
    EXPECT_EQ(libraries(), u"库1 库2"_s);
    EXPECT_TRUE(QFile::exists(first.path()) && QFile::exists(second.path()));
}

TEST_F(ManagerDialog, RenamesInPlaceAndRefusesWhatIsNoName) {
    const struct {
        QString typed;
        Qt::Key end;
        QString shown;
        QString told;
    } cases[] = {
        {QString(40, u'长'), Qt::Key_Return, QString(40, u'长'), {}},
        {QString(41, u'长'), Qt::Key_Return, QString(40, u'长'), u"公式库名称超过40个字符！"_s},
        {u"  "_s, Qt::Key_Return, QString(40, u'长'), u"公式库名称不能为空！"_s},
        {u"不要"_s, Qt::Key_Escape, QString(40, u'长'), {}},
        {u" 力学"_s, Qt::Key_Return, u" 力学"_s, {}},
    };
    manage([&](const OpenManager& manager) {
        manager.click(u"库1"_s);
        for (const auto& each : cases) {
            QTest::keyClick(&manager.list(), Qt::Key_F2);
            manager.type(each.typed, each.end);
            EXPECT_EQ(told(), each.told);
            EXPECT_EQ(manager.texts(), u"[%1] 库2"_s.arg(each.shown));
            EXPECT_TRUE(manager.dialog().isVisible());
            EXPECT_TRUE(manager.list().hasFocus());
        }
        // A refused text keeps OK from closing; what is typed is stored before a command and by OK.
        manager.press(u"重命名"_s);
        manager.type(u" "_s, Qt::Key(0));
        manager.press(u"cmdOK"_s);
        EXPECT_EQ(told(), u"公式库名称不能为空！"_s);
        ASSERT_TRUE(manager.dialog().isVisible());
        manager.press(u"重命名"_s);
        manager.type(u"甲"_s, Qt::Key(0));
        manager.press(u"下移"_s);
        EXPECT_EQ(manager.texts(), u"库2 [甲]"_s);
        manager.press(u"重命名"_s);
        manager.type(u"乙"_s, Qt::Key(0));
        manager.press(u"cmdOK"_s);
    });
    EXPECT_EQ(libraries(), u"库2 乙"_s);
}

TEST_F(ManagerDialog, AddsALibraryAndAsksForItsName) {
    manage([&](const OpenManager& manager) {
        choose(third.path().chopped(4));
        manager.press(u"添加数据库"_s);
        const FileQuestion& question = desk->questions().fileQuestion;
        EXPECT_EQ(question.title + question.initialName + question.filters.join(u'|'),
                  u"添加公式库*.mdbAccess数据库文件 (*.mdb)"_s);
        EXPECT_EQ(manager.texts(), u"库1 库2 [新添加的公式库]"_s);
        manager.type(u"三"_s);
        choose(third.path());
        manager.press(u"添加数据库"_s);
        EXPECT_EQ(told(), u"用户选择的公式库已经被加入！"_s);
        choose(third.pathOf(u"*.MDB"_s));
        manager.press(u"添加数据库"_s);
        EXPECT_EQ(told(), u"用户没有选择数据库，不能创建连接"_s);
        manager.press(u"添加数据库"_s);
        EXPECT_EQ(told(), QString()) << "the user cancels";
        EXPECT_EQ(manager.texts(), u"库1 库2 [三]"_s);
        manager.press(u"cmdOK"_s);
    });
    EXPECT_EQ(libraries(), u"库1 库2 三"_s);
    EXPECT_TRUE(ini().contains("RootNodeName3=third.mdb"));
}

TEST_F(ManagerDialog, CreatesALibraryAndOffersToAddIt) {
    const QString path = third.pathOf(u"new.mdb"_s);
    manage([&](const OpenManager& manager) {
        choose(first.path());
        desk->questions().file->path.replace(u".vdb"_s, u".mdb"_s);
        ASSERT_TRUE(QFile::link(first.path(), desk->questions().file->path));
        manager.press(u"新建数据库"_s);
        EXPECT_TRUE(told().startsWith(u"创建公式数据库失败！"_s)) << "it is open";
        for (const bool adds : {false, true}) {
            QFile::remove(path);
            choose(path);
            desk->questions().answers = {adds};
            manager.press(u"新建数据库"_s);
            EXPECT_TRUE(asked().contains(path));
            EXPECT_EQ(manager.texts(), adds ? u"库1 库2 [新添加的公式库]"_s : u"库1 库2"_s);
        }
        manager.type(u"新"_s);
        manager.press(u"cmdOK"_s);
    });
    desk->clickNode(u"新"_s);
    press(u"新建公式夹"_s);
    EXPECT_TRUE(desk->treeTexts().last().contains(u"新建公式夹"_s));
}

TEST_F(ManagerDialog, ALibraryThatDoesNotOpenSaysWhy) {
    desk.reset();
    configuration.addLibrary(u"坏"_s, third.folder(), u"gone.mdb"_s);
    start();
    EXPECT_EQ(told(), u"无法打开用户选择的数据库！"_s);
    const QString reason = third.pathOf(u"gone.mdb"_s) + u"\n文件不存在"_s;
    EXPECT_TRUE(
        Desk::find(desk->tree(), u"坏"_s).data(Qt::ToolTipRole).toString().contains(reason));
    manage([&](const OpenManager& manager) {
        EXPECT_TRUE(manager.toolTip(u"坏"_s).contains(reason));
        manager.click(u"坏"_s);
        manager.press(u"清除数据库"_s);
        manager.press(u"cmdOK"_s);
    });
    EXPECT_EQ(told(), QString());
    EXPECT_EQ(libraries(), u"库1 库2"_s);
}

}  // namespace
}  // namespace varo::test
