#include "library/work_folder.h"
#include "search/property_desk.h"
#include "support/no_waiting.h"
#include "support/process.h"

#include <QDirIterator>
#include <QScopeGuard>
#include <QStandardPaths>

namespace varo::test {
namespace {

class PropertyConditions : public PropertyDesk {
  protected:
    /// Gives 梁 a property, which the control shows.
    void carry(qint32 id, const QString& name, qint32 filter = 0) {
        first.addProperty(id, name, filter, beams, NodeTypeFolder);
        start();
    }
};

TEST_F(PropertyConditions, APropertyWithItsConditionIsStoredLocatesAndGoesAgain) {
    edit(u"梁"_s, u"剪切"_s, [&] {
        EXPECT_EQ(part<QLabel>("lblTitle").text(), u"公式定位条件"_s);
        EXPECT_TRUE(hasBackup());
        addProperty(u"  用途 "_s);
        addTerm(u"跨度"_s, u"大于等于"_s, u"2"_s);
        addTerm(u"材料"_s, u"文本等于"_s, u"木材"_s);
        EXPECT_EQ(words(), u"跨度 大于等于 2 并且 材料 文本等于“木材”"_s);
        EXPECT_FALSE(can("cmdSaveFilter"));
        click("cmdSearch");
        click("cmdSaveFilter");
        click("cmdOK");
    });
    const QString id = QString::number(shear);
    EXPECT_EQ(stored(),
              u"0|用途|1|%1|2 1|1|0|1 2|1|1|4 3|1|1|4 1|2|跨度|5|2 1|3|材料|7|木材"_s.arg(id));
    EXPECT_FALSE(hasBackup());
    for (const QString& span : {u"2.5"_s, u"1"_s}) {
        desk->properties = {{u"跨度"_s, span}, {u"材料"_s, u"木材"_s}};
        EXPECT_EQ(located(), span == u"1"_s ? u"稳定"_s : u"剪切"_s);
    }
    edit(u"梁"_s, u"剪切"_s, [&] {
        EXPECT_EQ(column(0), u"并且（全部成立）|跨度|材料"_s);
        click("cmdDelProp");
        click("cmdOK");
    });
    EXPECT_EQ(stored(), QString());
    // The node that is located shows that it carries no property any more.
    for (const QString& node : {u"梁"_s, u"库1"_s}) {
        edit(node, {}, [&] {
            EXPECT_EQ(part<QLabel>("lblTitle").text(), u"节点定位条件"_s);
            addProperty(u"用途"_s);
            click("cmdOK");
        });
        desk->control().SetDesignProp(u"用途"_s);
        EXPECT_EQ(selected(), node);
        EXPECT_NE(stored(), QString());
        edit(node, {}, [&] {
            click("cmdDelProp");
            click("cmdOK");
        });
        EXPECT_EQ(stored(), QString());
        desk->control().RunCalc();  // ends the highlight
    }
    EXPECT_EQ(told(), QString());
}

/// Which buttons are enabled after each step.
TEST_F(PropertyConditions, WhatIsSelectedAndCheckedDecidesWhatIsOffered) {
    carry(3, u"甲"_s);
    const auto offered = [&] {
        QString names;
        for (const auto* name :
             {"cmdDelProp", "cmdSearch", "cmdSaveFilter", "cmdDelFilter", "cmdAddCompare"}) {
            names += can(name) ? u'+' : u'-';
        }
        return names;
    };
    edit(u"梁"_s, {}, [&] {
        const std::tuple<const char*, std::function<void()>, QString> steps[] = {
            {"at first", [] {}, u"++--+"_s},
            {"deleted", [&] { click("cmdDelProp"); }, u"-----"_s},
            {"added", [&] { addProperty(u"乙"_s); }, u"++--+"_s},
            {"faults",
             [&] {
                 click("cmdSearch");
                 EXPECT_TRUE(remarks().contains(u"没有过滤条件的属性总是符合"_s));
             },
             u"++--+"_s},
            {"checked",
             [&] {
                 addTerm(u"a"_s, u"等于"_s, u"1"_s);
                 click("cmdSearch");
             },
             u"++++"_s + u"+"_s},
            {"saved", [&] { click("cmdSaveFilter"); }, u"++--+"_s},
            {"cleared",
             [&] {
                 click("cmdClear");
                 click("cmdSearch");
                 EXPECT_TRUE(remarks().contains(u"按下面的“删除”去掉"_s));
             },
             u"++-++"_s},
            {"undone", [&] { click("cmdUndo"); }, u"++-++"_s},
            {"another", [&] { addProperty(u"丙"_s); }, u"++--+"_s},
            {"back", [&] { selectProperty(u"乙"_s); }, u"++-++"_s},
            {"made wrong",
             [&] {
                 click("cmdSearch");
                 click("cmdAddOr");
                 click("cmdSearch");
             },
             u"++-++"_s},
            {"deleted filter", [&] { click("cmdDelFilter"); }, u"++--+"_s},
        };
        for (const auto& [name, step, wanted] : steps) {
            step();
            EXPECT_EQ(offered(), wanted) << name;
        }
    });
    EXPECT_EQ(stored(), u"3|甲|0|%1|1"_s.arg(beams));
}

TEST_F(PropertyConditions, EveryWayOfCancellingRestoresTheLibrary) {
    carry(0, u"甲"_s);
    const QString before = stored();
    const std::function<void()> ways[] = {[&] { click("cmdCancel"); }, [&] { dialog->close(); },
                                          [&] { key(Qt::Key_Escape); }};
    for (const auto& way : ways) {
        edit(u"梁"_s, {}, [&] {
            addSaved(u"乙"_s);
            EXPECT_NE(stored(), before);
            selectProperty(u"甲"_s);
            click("cmdDelProp");
            way();
        });
        EXPECT_EQ(stored(), before);
        EXPECT_FALSE(hasBackup());
    }
    press(u"新建公式夹"_s);
    EXPECT_EQ(told() + asked(), QString());
}

TEST_F(PropertyConditions, ANameThatIsRefusedLeavesTheLabel) {
    const std::tuple<QString, Qt::Key, QString, QString> cases[] = {
        {u"  "_s, Qt::Key_Return, u"新属性"_s, {}},
        {u"甲"_s, Qt::Key_Escape, u"新属性"_s, {}},
        {QString(51, u'x'), Qt::Key_Return, u"新属性"_s,
         u"用户输入的属性名称的长度超过50个字符！"_s},
        {QString(50, u'x') + u' ', Qt::Key_Return, QString(50, u'x'), {}},
    };
    for (const auto& [typed, end, label, message] : cases) {
        edit(u"梁"_s, {}, [&] {
            click("cmdAddProp");
            typeName(typed, end);
            EXPECT_TRUE(dialog->isVisible());
            EXPECT_EQ(names(), label);
            EXPECT_EQ(told(), message);
        });
    }
    edit(u"梁"_s, {}, [&] {
        addProperty(u"甲"_s);
        // What is being typed when OK is pressed counts, and a refusal keeps the dialog open.
        key(Qt::Key_F2);
        open<QLineEdit>("labelEditor").setText(QString(51, u'x'));
        part<QPushButton>("cmdOK").click();
        settle();
        EXPECT_TRUE(dialog->isVisible());
        EXPECT_EQ(told(), u"用户输入的属性名称的长度超过50个字符！"_s);
        key(Qt::Key_F2);
        open<QLineEdit>("labelEditor").setText(u"乙"_s);
        part<QPushButton>("cmdOK").click();
    });
    EXPECT_EQ(stored(), u"0|乙|0|%1|1"_s.arg(beams));
}

TEST_F(PropertyConditions, AConditionThatIsNotSavedIsKeptWhileOthersAreSelectedAndAskedAbout) {
    const auto type = [&](bool save) {
        desk->questions().answers = {save, false};
        edit(u"梁"_s, {}, [&] {
            addProperty(u"甲"_s);
            addTerm(u"a"_s, u"等于"_s, u"1"_s);
            addProperty(u"乙"_s);
            click("cmdAddOr");
            EXPECT_EQ(names(), u"甲 *,乙 *"_s);
            selectProperty(u"甲 *"_s);
            EXPECT_EQ(words(), u"a 等于 1"_s);
            key(Qt::Key_Z, Qt::ControlModifier);
            tree().setFocus();
            for (int undone = 0; undone < 3; ++undone) {
                key(Qt::Key_Z, Qt::ControlModifier);
            }
            key(Qt::Key_Y, Qt::ControlModifier);
            key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
            click("cmdRedo");
            EXPECT_EQ(words(), u"a 等于 1"_s);
            click("cmdOK");
        });
        EXPECT_EQ(asked(),
                  u"属性“甲”的过滤条件修改后还没有保存，现在保存吗？|"
                  "属性“乙”的过滤条件修改后还没有保存，现在保存吗？"_s);
    };
    type(true);
    EXPECT_EQ(stored(), u"0|甲|1|%1|1 1|乙|0|%1|1 1|1|0|4 1|1|a|0|1"_s.arg(beams));
    desk->questions().answers = {true};
    edit(u"梁"_s, {}, [&] {
        click("cmdAddOr");
        click("cmdOK");
        EXPECT_TRUE(dialog->isVisible()) << "a condition with faults cannot be saved";
        EXPECT_FALSE(remarks().isEmpty());
        click("cmdUndo");
        click("cmdOK");
    });
}

TEST_F(PropertyConditions, AFilterThatIsDeletedComesBackByUndo) {
    edit(u"梁"_s, u"剪切"_s, [&] {
        addProperty(u"甲"_s);
        addTerm(u"a"_s, u"等于"_s, u"1"_s);
        addTerm(u"b"_s, u"小于"_s, u"2"_s);
        const QString whole = words();
        click("cmdSearch");
        click("cmdSaveFilter");
        selectProperty(u"甲"_s);
        click("cmdSearch");
        click("cmdDelFilter");
        EXPECT_EQ(words() + names(), u"甲"_s);
        EXPECT_FALSE(stored().contains(u"|a|"_s));
        click("cmdUndo");
        EXPECT_EQ(words() + names(), whole + u"甲 *"_s) << "a change that is not saved";
        click("cmdUndo");
        EXPECT_NE(words(), whole) << "what was edited before can be undone too";
        click("cmdRedo");
        click("cmdSearch");
        click("cmdSaveFilter");
        click("cmdOK");
    });
    EXPECT_TRUE(stored().contains(u"|b|2|2"_s));
    EXPECT_EQ(asked(), QString());
}

TEST_F(PropertyConditions, WhatTheHostSetsMeanwhileIsTakenOverWhenTheDialogCloses) {
    first.addValue(u"Q"_s, shear, u"1"_s);
    first.setSource(u"Q"_s, shear, VarSourceProperty, u"剪力"_s);
    for (const char* way : {"cmdOK", "cmdCancel"}) {
        desk->properties[u"剪力"_s] = u"5"_s;
        select(u"梁"_s, u"剪切"_s);
        EXPECT_EQ(desk->value(u"Q"_s), u"5"_s);
        edit(u"梁"_s, u"剪切"_s, [&] {
            addProperty(u"甲"_s);
            desk->properties[u"剪力"_s] = u"7"_s;
            desk->control().SetCellInfo(1, 2, 3, 4, 5, 6);
            click(way);
        });
        EXPECT_EQ(desk->value(u"Q"_s), u"7"_s);
        EXPECT_EQ(desk->list().selectedIndex().data().toString(), u"剪切"_s);
        select(u"柱"_s);
    }
    EXPECT_EQ(told(), QString());
}

TEST_F(PropertyConditions, AFailedCommitIsToldAndCancelTakesItBack) {
    carry(0, u"甲"_s);
    const QString before = stored();
    edit(u"梁"_s, {}, [&] {
        click("cmdDelProp");
        addSaved(u"乙"_s);
        first.lock(LibraryLock::Kind::Writing);
        click("cmdOK");
        EXPECT_EQ(told(), u"编辑数据库出错，无法删除用户指定的属性！"_s);
        first.unlock();
        EXPECT_NE(stored(), before);
        click("cmdCancel");
    });
    EXPECT_EQ(told(), QString());
    EXPECT_EQ(stored(), before);
}

TEST_F(PropertyConditions, ALibraryThatCannotBeOpenedIsTold) {
    const NoWaiting noWaiting;
    select(u"梁"_s);
    first.connection().close();
    {
        LibraryProcess other({u"lock"_s, first.path()});
        other.readLine();
        for (int attempt = 0; attempt < 2; ++attempt) {
            desk->openMenu(desk->tree(), u"梁"_s);
            desk->choose("mnuPopLocateNode");
            settle();
            EXPECT_EQ(told(),
                      u"无法打开数据库文件：\n%1\n其他程序正在使用这个数据库文件！|"
                      "重新打开数据库失败！"_s.arg(first.path()));
        }
        other.kill();
        other.wait();
    }
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    // Without a library that is open, the dialog opens it.
    edit(u"梁"_s, {}, [&] { click("cmdCancel"); });
    EXPECT_EQ(told(), QString());
    first.connection().open(first.path());
    press(u"新建公式夹"_s);
}

TEST_F(PropertyConditions, WhatCannotBeRestoredIsOfferedTheNextTime) {
    const NoWaiting noWaiting;
    std::unique_ptr<LibraryProcess> other;
    edit(u"梁"_s, {}, [&] {
        addSaved(u"甲"_s);
        first.connection().close();
        other = std::make_unique<LibraryProcess>(QStringList{u"lock"_s, first.path()});
        other->readLine();
        click("cmdCancel");
    });
    other.reset();
    first.connection().open(first.path());
    EXPECT_EQ(told(),
              u"回滚数据库失败，无法恢复原有的数据！\n请关闭数据库文件再试！|"
              "重新打开数据库失败！"_s);
    EXPECT_TRUE(hasBackup());
    EXPECT_NE(stored(), QString());
    desk->questions().answers = {true};
    edit(u"柱"_s, {}, [&] {
        EXPECT_NE(asked(), QString());
        EXPECT_EQ(stored(), QString());
    });
    EXPECT_FALSE(hasBackup());
}

TEST_F(PropertyConditions, ABackupOutlastsATemporaryWorkingFolder) {
    const QTemporaryDir home;
    const QByteArray before = qgetenv("XDG_DATA_HOME");
    const auto restore = qScopeGuard(
        [&] { before.isNull() ? qunsetenv("XDG_DATA_HOME") : qputenv("XDG_DATA_HOME", before); });
    qputenv("XDG_DATA_HOME", QFile::encodeName(home.path()));
    const auto lasting = [&] {
        QDirIterator files(home.path(), {u"BackupDB.def"_s}, QDir::Files,
                           QDirIterator::Subdirectories);
        return files.hasNext() ? files.next() : QString();
    };
    // The places that are preferred to a temporary folder are taken.
    const QString own =
        QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) + u'/';
    std::unique_ptr<WorkFolder> program;
    ASSERT_TRUE(QTest::qWaitFor([&] {
        program = std::make_unique<WorkFolder>(
            QStringList(QCoreApplication::applicationDirPath() + u'/'));
        return !program->isTemporary();
    })) << "tests that run at the same time use it";
    const WorkFolder user({own});
    QLockFile others(own + u"BackupDB/BackupDB.lock"_s);
    for (const QString& folder : {u"BackupDB/"_s, u"BackupDB/2/"_s}) {
        desk->control().setWorkFolder({});
        edit(u"梁"_s, u"剪切"_s, [&] {
            addSaved(u"甲"_s);
            EXPECT_EQ(lasting(), own + folder + u"BackupDB.def"_s);
            desk->control().setWorkFolder({});
            click("cmdCancel");
        });
        EXPECT_EQ(told(), QString());
        EXPECT_EQ(stored(), QString());
        EXPECT_EQ(lasting(), QString());
        others.tryLock(0);
    }
    desk->control().setWorkFolder(work.path());
}

TEST_F(PropertyConditions, TheHostMayTurnTheControlToAnotherLibraryOrDestroyIt) {
    for (const QString& node : {u"FormulaNode1->DBNode2"_s, folder(columns)}) {
        edit(u"梁"_s, u"剪切"_s, [&] {
            addSaved(u"甲"_s);
            desk->control().ClickTreeNode(node);
            click("cmdCancel");
        });
        EXPECT_EQ(desk->tree().selectedKey(), node);
        EXPECT_EQ(stored(), QString());
        press(u"新建公式夹"_s);
    }
    EXPECT_EQ(outline(second), u"管(流量)[新建公式夹()]"_s);
    EXPECT_EQ(outline(first, columns), u"新建公式夹()"_s);
    edit(u"梁"_s, {}, [&] {
        addSaved(u"甲"_s);
        click("cmdAddProp");
        desk.reset();
    });
    EXPECT_EQ(stored(), QString());
    EXPECT_FALSE(hasBackup());
    start();
}

}  // namespace
}  // namespace varo::test
