#include "search/property_desk.h"

#include <QMenu>
#include <QMimeData>
#include <QRandomGenerator>
#include <QToolButton>

#include <memory>

namespace varo::test {
namespace {

using Values = QHash<QString, QString>;

class FilterEditor : public PropertyDesk {
  protected:
    /// Makes these the rows of the only filter, 7: "id parent type", and the terms of those of type
    /// 4.
    void store(const QStringList& rows) {
        for (const char* table : {"FilterCond", "FilterExpressions", "Property"}) {
            first.connection().execute(u"Delete From "_s + QLatin1StringView(table));
        }
        for (const QString& row : rows) {
            const QStringList parts = row.split(u' ');
            first.connection().execute(
                u"Insert Into FilterCond(ID,ParentID,Type,UserID) Values(%1,%2,%3,7)"_s.arg(
                    parts[0], parts[1], parts[2]));
            if (parts[2] == u"4"_s) {
                first.connection().execute(
                    u"Insert Into FilterExpressions(FilterID,ExpID,FieldName,CompareType,TheConst) "
                    "Values(7,%1,'a',0,'%1')"_s.arg(parts[0]));
            }
        }
        first.addProperty(0, u"用途"_s, 7, shear, NodeTypeFormula);
        start();
    }
    void editShear(const std::function<void()>& use) { edit(u"梁"_s, u"剪切"_s, use); }

    QString depths() {
        QString text;
        for (QModelIndex node : nodes()) {
            int depth = 0;
            for (; node.parent().isValid(); node = node.parent()) {
                ++depth;
            }
            text += QString::number(depth);
        }
        return text;
    }
    /// Everything that is shown of the condition.
    QString shown() { return depths() + column(0) + column(1) + column(2); }

    /// What the condition that is shown means, by its words alone.
    static bool holds(const QModelIndex& node, const Values& values) {
        const auto text = [&](int column) {
            return node.siblingAtColumn(column).data().toString();
        };
        const int count = node.model()->rowCount(node);
        if (text(0).startsWith(u"并且（"_s) || text(0).startsWith(u"或者（"_s)) {
            int held = 0;
            for (int row = 0; row < count; ++row) {
                held += holds(node.model()->index(row, 0, node), values) ? 1 : 0;
            }
            return text(0).startsWith(u"并且"_s) ? held == count : held > 0;
        }
        if (text(0).startsWith(u"并非（"_s)) {
            return !holds(node.model()->index(0, 0, node), values);
        }
        const QString value = values.value(text(0));
        if (text(1) == u"包含"_s) {
            return value.contains(text(2));
        }
        if (text(1) == u"文本等于"_s) {
            return value == text(2);
        }
        const int order = value.toInt() - text(2).toInt();
        const QHash<QString, bool> byOrder{{u"等于"_s, order == 0}, {u"不等于"_s, order != 0},
                                           {u"小于"_s, order < 0},  {u"小于等于"_s, order <= 0},
                                           {u"大于"_s, order > 0},  {u"大于等于"_s, order >= 0}};
        return byOrder.value(text(1));
    }

    QString random(std::initializer_list<QString> choices) {
        return choices.begin()[chance.bounded(static_cast<int>(choices.size()))];
    }
    void addRandomTerm() {
        addTerm(random({u"a"_s, u"b"_s, u"c"_s}),
                random({u"等于"_s, u"不等于"_s, u"小于"_s, u"小于等于"_s, u"大于"_s, u"大于等于"_s,
                        u"包含"_s, u"文本等于"_s}),
                random({u"0"_s, u"1"_s, u"2"_s}));
    }
    /// Something that a user can do with the condition, or nothing where it cannot be done.
    void actAtRandom() {
        const auto all = nodes();
        if (!all.isEmpty()) {
            clickNode(chance.bounded(static_cast<int>(all.size())));
        }
        const int act = chance.bounded(18);
        const char* const buttons[] = {"cmdAddAnd", "cmdAddOr",  "cmdAddNot",   "cmdUnwrap",
                                       "cmdRemove", "cmdMoveUp", "cmdMoveDown", "cmdMoveOut",
                                       "cmdMoveIn", "cmdUndo",   "cmdRedo"};
        if (act < 11) {
            if (can(buttons[act])) {
                click(buttons[act]);
            }
        } else if (act == 11 && !all.isEmpty()) {
            wrap(random({u"actWrapAnd"_s, u"actWrapOr"_s, u"actWrapNot"_s}));
        } else if (act == 12 && all.size() > 1) {
            drop(chance.bounded(static_cast<int>(all.size())),
                 all.at(chance.bounded(static_cast<int>(all.size()))).parent(), -1);
        } else if (act == 13 && all.contains(tree().currentIndex().siblingAtColumn(0))) {
            chooseGroup(chance.bounded(3));
        } else {
            addRandomTerm();
        }
    }
    /// Makes the selected group another one.
    void chooseGroup(int number) {
        key(Qt::Key_F2);
        if (auto* kinds = qobject_cast<QComboBox*>(QApplication::focusWidget());
            kinds != nullptr && !kinds->isEditable()) {
            kinds->setCurrentIndex(number);
            emit kinds->activated(number);
        } else {
            key(Qt::Key_Escape);
        }
    }
    void wrap(const QString& entry) {
        dialog->findChild<QAction*>(entry)->trigger();
        settle();
    }
    /// Drags a node: what the view gives its model when it is let go.
    bool drop(int number, const QModelIndex& into, int row) {
        QAbstractItemModel& model = *tree().model();
        const std::unique_ptr<QMimeData> dragged(model.mimeData({nodes().at(number)}));
        const bool can = model.canDropMimeData(dragged.get(), Qt::MoveAction, row, 0, into);
        model.dropMimeData(dragged.get(), Qt::MoveAction, row, 0, into);
        settle();
        return can;
    }
    /// Deletes what is marked as wrong until nothing is.
    void repair() {
        click("cmdSearch");
        for (int left = 100; !can("cmdSaveFilter") && left > 0; --left) {
            if (nodes().isEmpty()) {
                addRandomTerm();
            } else {
                key(Qt::Key_Delete);
            }
            click("cmdSearch");
        }
    }

    QRandomGenerator chance{11};
};

TEST_F(FilterEditor, EveryConditionThatIsClickedTogetherIsStoredAndEvaluatedAsItIsShown) {
    first.addProperty(0, u"用途"_s, 0, shear, NodeTypeFormula);
    start();
    bool seen[2] = {};
    for (int round = 0; round < 10; ++round) {
        QString saved;
        bool holding = false;
        desk->properties = {};
        for (const QString& name : {u"a"_s, u"b"_s, u"c"_s}) {
            desk->properties[name] = QString::number(chance.bounded(3));
        }
        editShear([&] {
            if (can("cmdClear")) {
                click("cmdClear");
            }
            for (int act = 0; act < 18; ++act) {
                actAtRandom();
            }
            repair();
            saved = shown();
            // All edits are undone, and made again.
            while (can("cmdUndo")) {
                click("cmdUndo");
            }
            while (can("cmdRedo")) {
                click("cmdRedo");
            }
            EXPECT_EQ(shown(), saved);
            holding = holds(nodes().first(), desk->properties);
            click("cmdTry");
            EXPECT_EQ(remarks(), holding ? u"试算：整个条件成立。"_s : u"试算：整个条件不成立。"_s);
            click("cmdSearch");
            click("cmdSaveFilter");
            click("cmdOK");
        });
        seen[holding ? 1 : 0] = true;
        EXPECT_EQ(located(), holding ? u"剪切"_s : u"稳定"_s) << "round " << round;
        editShear([&] { EXPECT_EQ(shown(), saved); });
    }
    EXPECT_TRUE(seen[0] && seen[1]);
    desk->control().RunCalc();  // ends the highlight
    EXPECT_EQ(told(), QString());
}

TEST_F(FilterEditor, TheHostMayDestroyTheControlWhenATrialAsksIt) {
    store({u"1 0 1"_s, u"2 1 4"_s, u"3 1 4"_s});
    first.connection().execute(u"Update FilterExpressions Set FieldName = 'b' Where ExpID = 3"_s);
    int asked = 0;
    editShear([&] {
        QObject::connect(&desk->control(), &Varo_CalcEx::GetPropValue, desk.get(), [&] {
            ++asked;
            desk.reset();
        });
        part<QToolButton>("cmdTry").click();
    });
    EXPECT_EQ(asked, 1) << "nobody is left to be asked for the second name";
    start();
}

TEST_F(FilterEditor, FaultsAndTrialsAreMarkedAtTheirPlaceUntilTheConditionChanges) {
    store({u"1 0 1"_s, u"2 1 4"_s, u"3 1 3"_s, u"4 3 4"_s});
    desk->properties = {{u"a"_s, u" 2 "_s}};
    editShear([&] {
        EXPECT_EQ(words(), u"a 等于 2 并且 并非 a 等于 4"_s);
        desk->askedProperties.clear();
        click("cmdTry");
        EXPECT_EQ(desk->askedProperties, QStringList{u"a"_s});
        EXPECT_EQ(column(3), u"✔ 成立|✔ 成立（值为 2）|✔ 成立|✘ 不成立（值为 2）"_s);
        clickNode(3);
        click("cmdRemove");
        EXPECT_EQ(column(3), u"||"_s);
        click("cmdAddCompare");
        key(Qt::Key_Escape);
        EXPECT_TRUE(dialog->isVisible());
        const auto marked = [&] {
            QString rows;
            for (const QModelIndex& node : nodes()) {
                rows += node.data(Qt::DecorationRole).isNull() ? u'-' : u'!';
            }
            return rows;
        };
        click("cmdSearch");
        EXPECT_EQ(marked(), u"---!"_s);
        EXPECT_TRUE(nodes().at(3).data(Qt::ToolTipRole).toString().contains(u"没有填写属性名称"_s));
        EXPECT_EQ(tree().currentIndex().siblingAtColumn(0), nodes().at(3));
        key(Qt::Key_Return);
        typeTerm(u" b"_s, u"包含"_s, u"x"_s);
        EXPECT_EQ(marked(), u"----"_s);
        EXPECT_EQ(column(0), u"并且（全部成立）|a|并非（其下不成立）|b"_s);
        // What is being typed when a button is pressed by its key counts.
        clickNode(1, 2);
        key(Qt::Key_F2);
        open<QLineEdit>("txtConst").setText(u"7"_s);
        part<QPushButton>("cmdSearch").click();
        EXPECT_EQ(column(2), u"|7||x"_s);
        EXPECT_TRUE(can("cmdSaveFilter"));
    });
}

TEST_F(FilterEditor, ButtonsKeysAndDragsMoveANode) {
    store({u"1 0 1"_s, u"2 1 4"_s, u"3 1 2"_s, u"4 3 4"_s, u"5 1 3"_s, u"6 5 4"_s});
    const auto at = [&](int number) { return nodes().at(number); };
    const auto keyOn = [&](int node, Qt::Key pressed, Qt::KeyboardModifiers with = {}) {
        return [=, this] {
            clickNode(node);
            key(pressed, with);
        };
    };
    const auto ctrl = [&](int node, Qt::Key pressed) {
        return keyOn(node, pressed, Qt::ControlModifier);
    };
    const auto buttonOn = [&](int node, const char* button) {
        return [=, this] {
            clickNode(node);
            click(button);
        };
    };
    // Depth and constant of each node after the step on the stored condition.
    const std::tuple<const char*, std::function<void()>, QString, QString> cases[] = {
        {"nothing", [] {}, u"011212"_s, u"|2||4||6"_s},
        {"down", ctrl(1, Qt::Key_Down), u"012112"_s, u"||4|2||6"_s},
        {"up", ctrl(4, Qt::Key_Up), u"011212"_s, u"|2||6||4"_s},
        {"up at the top", ctrl(1, Qt::Key_Up), u"011212"_s, u"|2||4||6"_s},
        {"in", ctrl(1, Qt::Key_Right), u"012212"_s, u"||2|4||6"_s},
        {"out", ctrl(3, Qt::Key_Left), u"011112"_s, u"|2||4||6"_s},
        {"out of the root", ctrl(1, Qt::Key_Left), u"011212"_s, u"|2||4||6"_s},
        {"delete", keyOn(2, Qt::Key_Delete), u"0112"_s, u"|2||6"_s},
        {"add behind a NOT that is full", buttonOn(5, "cmdAddAnd"), u"0112121"_s, u"|2||4||6|"_s},
        {"wrap",
         [&] {
             clickNode(1);
             wrap(u"actWrapOr"_s);
         },
         u"0121212"_s, u"||2||4||6"_s},
        {"unwrap", buttonOn(2, "cmdUnwrap"), u"01112"_s, u"|2|4||6"_s},
        {"clear", [&] { click("cmdClear"); }, {}, {}},
        {"drop between", [&] { EXPECT_TRUE(drop(1, at(2), 0)); }, u"012212"_s, u"||2|4||6"_s},
        {"drop on empty space", [&] { EXPECT_TRUE(drop(1, {}, -1)); }, u"012121"_s, u"||4||6|2"_s},
        {"drop into itself", [&] { EXPECT_FALSE(drop(2, at(2), 0)); }, u"011212"_s, u"|2||4||6"_s},
        {"drop into a full NOT", [&] { EXPECT_FALSE(drop(1, at(4), 0)); }, u"011212"_s,
         u"|2||4||6"_s},
    };
    for (const auto& [name, step, depth, constants] : cases) {
        editShear([&] {
            step();
            EXPECT_EQ(depths(), depth) << name;
            EXPECT_EQ(column(2), constants) << name;
        });
    }
    editShear([&] {
        clickNode(2);
        chooseGroup(0);
        EXPECT_EQ(words(), u"a 等于 2 并且 a 等于 4 并且 并非 a 等于 6"_s);
    });
}

/// What is stored otherwise than the editor does it is shown, and stays until it is changed.
TEST_F(FilterEditor, AStoredConditionOfAnotherShapeIsKeptUntilItIsChanged) {
    const struct {
        QStringList rows;
        QString column;
        bool isSound;  ///< but for a row in no root, which is remarked
    } cases[] = {
        {{u"1 0 4"_s, u"2 0 4"_s}, u"a|a"_s, false},
        {{u"1 0 9"_s, u"2 0 4"_s}, u"未知类型 9|a"_s, false},
        {{u"1 0 4"_s, u"2 8 4"_s}, u"a"_s, true},
    };
    for (const auto& each : cases) {
        store(each.rows);
        const QString before = stored();
        editShear([&] {
            EXPECT_EQ(column(0), each.column);
            const QString remark = remarks();
            EXPECT_EQ(!remark.isEmpty(), each.isSound);
            EXPECT_TRUE(can("cmdAddCompare") && can("cmdTry"));
            click("cmdSearch");
            EXPECT_EQ(can("cmdSaveFilter"), each.isSound);
            if (each.isSound) {
                click("cmdSaveFilter");
                EXPECT_EQ(remarks(), remark + u"\n条件已保存。"_s);
            }
            addProperty(u"另一个"_s);
            click("cmdOK");
        });
        EXPECT_TRUE(stored().contains(before.section(u' ', 1)));
    }
    store({u"0 0 1"_s, u"2 0 4"_s});
    editShear([&] {
        EXPECT_FALSE(can("cmdAddCompare") || can("cmdTry")) << "a node inside itself";
        click("cmdSearch");
        EXPECT_FALSE(can("cmdSaveFilter"));
        click("cmdClear");
        addTerm(u"b"_s, u"等于"_s, u"1"_s);
        click("cmdSearch");
        click("cmdSaveFilter");
        click("cmdOK");
    });
    EXPECT_EQ(first.rows(u"Select FieldName,TheConst From FilterExpressions"_s),
              QStringList{u"b|1"_s});
}

TEST_F(FilterEditor, AStoredTextOverTheLimitIsShownCutAndStaysWhole) {
    store({u"1 0 4"_s});
    const QString constant = u"x\n"_s.repeated(2000);
    first.connection().execute(u"Update FilterExpressions Set CompareType = 7, TheConst = ?"_s,
                               {constant});
    editShear([&] {
        EXPECT_LT(column(2).size() + words().size(), 1000);
        EXPECT_FALSE(column(2).contains(u'\n'));
        click("cmdTry");
        EXPECT_TRUE(remarks().contains(u"无法计算"_s));
        click("cmdSearch");
        EXPECT_FALSE(can("cmdSaveFilter"));
        addProperty(u"另一个"_s);
        click("cmdOK");
    });
    EXPECT_EQ(first.rows(u"Select TheConst From FilterExpressions"_s), QStringList{constant});
}

TEST_F(FilterEditor, AStoredConstantThatIsNoNumberIsToldAndNotSavedAnew) {
    store({u"1 0 1"_s, u"2 1 4"_s, u"3 1 4"_s});
    first.connection().execute(
        u"Update FilterExpressions Set TheConst = '2 000' Where ExpID = 3"_s);
    editShear([&] {
        EXPECT_EQ(words(), u"a 等于 2 并且 a 等于 2 000（按 2 计算）"_s);
        EXPECT_TRUE(remarks().contains(u"“2 000”不是数值，按 2 计算。"_s));
        clickNode(1);
        click("cmdRemove");
        click("cmdSearch");
        EXPECT_FALSE(can("cmdSaveFilter"));
        EXPECT_TRUE(remarks().contains(u"“2 000”不是数值"_s));
        clickNode(1, 2);
        key(Qt::Key_F2);
        open<QLineEdit>("txtConst").setText(u" 2000 "_s);
        part<QPushButton>("cmdSearch").click();
        EXPECT_TRUE(can("cmdSaveFilter"));
    });
}

TEST_F(FilterEditor, NamesInUseOfAllLibrariesAreOffered) {
    store({u"1 0 4"_s});
    second.connection().execute(
        u"Insert Into FilterExpressions(FilterID,ExpID,FieldName,CompareType,TheConst) "
        "Values(1,1,'流速',0,'1')"_s);
    editShear([&] {
        click("cmdAddCompare");
        auto& box = open<QComboBox>("cmbName");
        EXPECT_EQ(box.itemText(0) + box.itemText(1), u"a流速"_s);
        EXPECT_EQ(box.count(), 2);
        typeTerm(u"新"_s, u"等于"_s, u"1"_s);
        const auto offersNew = [&] {
            click("cmdAddCompare");
            return open<QComboBox>("cmbName").findText(u"新"_s) >= 0;
        };
        EXPECT_TRUE(offersNew());
        key(Qt::Key_Escape);
        click("cmdUndo");
        click("cmdSearch");
        click("cmdSaveFilter");
        addProperty(u"另一个"_s);
        EXPECT_TRUE(offersNew());
    });
}

}  // namespace
}  // namespace varo::test
