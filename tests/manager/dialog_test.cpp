#include "manager/manager_desk.h"

#include <QMenu>
#include <QToolBar>

namespace varo::test {
namespace {

class ManagerDialog : public ManagerDesk {
  protected:
    /// The keys of the tool bar and the names of the menu that are enabled.
    QString offered() const {
        QStringList enabled;
        for (const QAction* button : partOf<QToolBar>(*manager, "tbEdit").actions()) {
            if (button->isEnabled() && !button->isSeparator()) {
                enabled.append(button->text());
            }
        }
        const auto& menu = partOf<QMenu>(*manager, "mnuEdit");
        for (const QAction* entry : menu.actions()) {
            if (menu.isEnabled() && entry->isEnabled() && !entry->isSeparator()) {
                enabled.append(entry->objectName().mid(3));
            }
        }
        return enabled.join(u' ');
    }
};

const QString kOfferedOnNone = u"新建数据库 添加数据库 NewDB AddDB"_s;

TEST_F(ManagerDialog, OffersWhatTheSelectionAllowsAndWithoutAConfigurationFileNothing) {
    desk.reset();
    configuration.addLibrary(third, u"库3"_s);
    start();
    manage([&] {
        EXPECT_EQ(item(u"库2"_s).siblingAtColumn(1).data(), second.path());
        EXPECT_EQ(offered(), kOfferedOnNone);
        const std::pair<QString, QString> cases[] = {
            {u"库1"_s, u"下移"_s}, {u"库2"_s, u"上移 下移"_s}, {u"库3"_s, u"上移"_s}};
        for (const auto& [library, ways] : cases) {
            click(library);
            EXPECT_EQ(offered(),
                      u"新建数据库 添加数据库 %1 重命名 清除数据库 "
                      "NewDB AddDB MoveUp MoveDown Rename DelDB"_s.arg(ways));
        }
        desk->clickEmptySpace(list());
        EXPECT_EQ(offered(), kOfferedOnNone);
        EXPECT_EQ(listed(), u"库1 库2 库3"_s);
    });
    configuration.removeFile();
    manage([&] {
        EXPECT_EQ(offered() + listed(), QString());
        EXPECT_FALSE(list().isEnabled());
        EXPECT_FALSE(partOf<QWidget>(*manager, "cmdOK").isEnabled());
        manager->accept();
        EXPECT_TRUE(manager->isVisible());
        give("cmdCancel");
        EXPECT_FALSE(manager->isVisible());
    });
    EXPECT_FALSE(QFile::exists(iniPath()));
    configuration.addLibrary(fourth, u"库4"_s);
    start();
}

TEST_F(ManagerDialog, MovesRemovesAndCancelsWithoutTouchingAnything) {
    const QByteArray before = ini();
    manage([&] {
        click(u"库2"_s);
        give("上移");
        EXPECT_EQ(listed(), u"[库2] 库1"_s);
        EXPECT_FALSE(manager->MoveLibrary(1)) << "the first one stays";
        pressKey(Qt::Key_Down, Qt::ControlModifier);
        EXPECT_EQ(listed(), u"库1 [库2]"_s) << "by its shortcut";
        EXPECT_FALSE(manager->MoveLibrary(2)) << "the last one stays";
        click(u"库1"_s, Qt::ControlModifier);
        pressKey(Qt::Key_Delete);
        EXPECT_EQ(listed(), QString());
        EXPECT_EQ(offered(), kOfferedOnNone);
        pressKey(Qt::Key_Escape);
        EXPECT_TRUE(manager->Cancelled());
        EXPECT_FALSE(manager->isVisible());
    });
    EXPECT_EQ(ini(), before);
    EXPECT_EQ(libraries(), u"库1 库2"_s);
    EXPECT_TRUE(QFile::exists(first.path()) && QFile::exists(second.path()));
}

TEST_F(ManagerDialog, RenamesInPlaceAndRefusesWhatIsNoName) {
    const QString longest = u' ' + QString(39, u'长');
    const struct {
        QString typed;
        Qt::Key end;
        QString shown;
        QString told;
    } cases[] = {
        {longest, Qt::Key_Return, longest, {}},
        {longest + u'长', Qt::Key_Return, longest, u"公式库名称超过40个字符！"_s},
        {u"  "_s, Qt::Key_Return, longest, u"公式库名称不能为空！"_s},
        {u"不要"_s, Qt::Key_Escape, longest, {}},
    };
    // What is typed, and not ended by a key, is stored before a command and by OK.
    const auto beginTyping = [this](const QString& text) {
        give("重命名");
        desk->labelEditor()->setText(text);
    };
    manage([&] {
        click(u"库1"_s);
        for (const auto& each : cases) {
            pressKey(Qt::Key_F2);
            desk->typeLabel(each.typed, each.end);
            EXPECT_EQ(told(), each.told);
            EXPECT_EQ(listed(), u"[%1] 库2"_s.arg(each.shown));
            EXPECT_TRUE(manager->isVisible());
            EXPECT_TRUE(list().hasFocus());
        }
        beginTyping(u" "_s);
        give("cmdOK");
        EXPECT_EQ(told(), u"公式库名称不能为空！"_s);
        ASSERT_TRUE(manager->isVisible());
        beginTyping(u"甲"_s);
        give("下移");
        EXPECT_EQ(listed(), u"库2 [甲]"_s);
        beginTyping(u"乙"_s);
        give("cmdOK");
    });
    EXPECT_EQ(libraries(), u"库2 乙"_s);
}

TEST_F(ManagerDialog, AddsALibraryOrCreatesOneAndAsksForItsName) {
    const QString made = third.pathOf(u"new.mdb"_s);
    const QString link = third.pathOf(u"link.mdb"_s);
    ASSERT_TRUE(QFile::link(first.path(), link));
    manage([&] {
        give("添加数据库", third.path());
        EXPECT_EQ(desk->questions().fileQuestion.title, u"添加公式库"_s);
        EXPECT_EQ(listed(), u"库1 库2 [新添加的公式库]"_s);
        desk->typeLabel(u"三"_s);
        give("添加数据库", third.path());
        EXPECT_EQ(told(), u"用户选择的公式库已经被加入！"_s);
        click(u"库1"_s);
        give("清除数据库");
        for (const QString& used : {link, third.path()}) {
            give("新建数据库", used);
            EXPECT_TRUE(told().contains(u"是正在使用的公式库"_s)) << "by the control or the list";
        }
        for (const bool adds : {false, true}) {
            QFile::remove(made);
            desk->questions().answers = {adds};
            give("新建数据库", made);
            EXPECT_TRUE(asked().contains(made));
            EXPECT_EQ(listed(), adds ? u"库2 三 [新添加的公式库]"_s : u"库2 三"_s);
        }
        desk->typeLabel(u"新"_s);
        give("cmdOK");
    });
    EXPECT_EQ(libraries(), u"库2 三 新"_s);
    EXPECT_TRUE(ini().contains("RootNodeName2=third.mdb"));
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
    const auto toolTip = [](const QModelIndex& index) {
        return index.data(Qt::ToolTipRole).toString();
    };
    EXPECT_TRUE(toolTip(Desk::find(desk->tree(), u"坏"_s)).contains(reason));
    manage([&] {
        EXPECT_TRUE(toolTip(item(u"库2"_s)).contains(second.path()));
        EXPECT_TRUE(toolTip(item(u"坏"_s)).contains(reason));
        click(u"坏"_s);
        give("清除数据库");
        give("cmdOK");
    });
    EXPECT_EQ(told(), QString());
    EXPECT_EQ(libraries(), u"库1 库2"_s);
}

}  // namespace
}  // namespace varo::test
