#include "driver/dialog_driver.h"
#include "platform/data/create_database.h"
#include "store/records.h"
#include "support/beam_desk.h"

#include <QComboBox>
#include <QCompleter>
#include <QDir>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QTableView>

namespace varo::test {
namespace {

/// The beam libraries with a data table 材料.mdb (steels, wires) beside the first one. The formula
/// 弯曲, M/W, is shown.
class ValueSources : public BeamDesk {
  protected:
    ValueSources() {
        data::createDatabase(first.pathOf(u"材料.mdb"_s),
                             u"Create Table [钢 材] (名称 Text, E Double, 日期 Date, 说明 Text);"
                             "Insert Into [钢 材] Values ('Q235', 206.5, '2020', Null),"
                             "('Q345', 206.5, '2021', Null), ('HT', 0.1 + 0.2, Null, "
                             "printf('%.*c', 300, 'x'));"
                             "Create Table 钢丝 (G Integer); Create View 视图 As Select 1;"_s);
        first.addFile(u"坏.mdb"_s, "not a database");
        select(u"梁"_s, u"弯曲"_s);
    }

    /// Opens the value sources of the selected formula by its menu entry.
    void edit(const std::function<void(QDialog&)>& use) {
        withDialog(
            "frmVarSource",
            [this] {
                desk->openMenu(desk->list(), desk->list().selectedIndex().data().toString());
                desk->choose("mnuPopVarSource");
            },
            use);
        settle();
    }

    /// Opens the picker by a double click on the value of M.
    void pick(const std::function<void(QDialog&)>& use) {
        ui::EditGrid& grid = desk->grid();
        const QPoint at = grid.visualItemRect(grid.item(rowOf(grid, u"M"_s) - 1, 1)).center();
        withDialog(
            "frmSelValue",
            [&] {
                QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, at);
                QTest::mouseDClick(grid.viewport(), Qt::LeftButton, {}, at);
            },
            use);
        settle();
    }

    static ui::EditGrid& gridOf(const QDialog& dialog) {
        return partOf<ui::EditGrid>(dialog, "MSFEditVarSource");
    }
    static QTableView& tableOf(const QDialog& dialog) {
        settle();
        return partOf<QTableView>(dialog, "MSFShowTable");
    }
    static QString label(const QDialog& dialog, const char* name) {
        return partOf<QLabel>(dialog, name).text();
    }
    static bool canAccept(const QDialog& dialog) {
        return partOf<QPushButton>(dialog, "cmdOK").isEnabled();
    }

    static void click(const QDialog& dialog, const char* button) {
        QTest::mouseClick(&partOf<QPushButton>(dialog, button), Qt::LeftButton);
        settle();
    }

    /// Opens the editor of a cell by the keyboard.
    template <class Editor>
    static Editor& beginEdit(const QDialog& dialog, int row, int column) {
        ui::EditGrid& grid = gridOf(dialog);
        grid.setFocus();
        grid.setCurrentCell(row - 1, column);
        QTest::keyClick(&grid, Qt::Key_F2);
        auto* editor = qobject_cast<Editor*>(grid.indexWidget(grid.currentIndex()));
        if (editor == nullptr) {
            throw DriverError(u"the cell has another editor"_s);
        }
        return *editor;
    }
    static void chooseType(const QDialog& dialog, int row, int type) {
        auto& choice = beginEdit<QComboBox>(dialog, row, 1);
        choice.setCurrentIndex(type);
        QTest::keyClick(&choice, Qt::Key_Return);
        settle();
    }
    static void typeParameter(const QDialog& dialog, int row, const QString& text) {
        auto& line = beginEdit<QLineEdit>(dialog, row, 2);
        line.setText(text);
        QTest::keyClick(&line, Qt::Key_Return);
        settle();
    }
    /// "name|type|parameter colour" of every row.
    static QString sources(const QDialog& dialog) {
        const ui::EditGrid& grid = gridOf(dialog);
        QStringList rows;
        for (int row = 1; row < grid.Rows(); ++row) {
            rows.append(u"%1|%2|%3 %4"_s
                            .arg(grid.GetCellText(row, 0), grid.GetCellText(row, 1),
                                 grid.GetCellText(row, 2))
                            .arg(grid.CellForeColor(row, 0), 6, 16, QChar(u'0')));
        }
        return rows.join(u", "_s);
    }
    /// Chooses a table in the dialog of the "…" button of a row.
    void chooseTable(const QDialog& dialog, int row, const std::function<void(QDialog&)>& use) {
        ui::EditGrid& grid = gridOf(dialog);
        grid.setFocus();
        grid.setCurrentCell(row - 1, 2);
        withDialog(
            "frmSelDB", [&] { QTest::keyClick(&grid, Qt::Key_F4); }, use);
    }
    static void selectIn(const QDialog& dialog, const char* list, const QString& text) {
        auto& items = partOf<QListWidget>(dialog, list);
        const auto found = items.findItems(text, Qt::MatchExactly);
        ASSERT_FALSE(found.isEmpty()) << text.toStdString();
        QTest::mouseClick(items.viewport(), Qt::LeftButton, {},
                          items.visualItemRect(found.first()).center());
        settle();
    }

    /// Lets M come from the table of steels.
    void feedFromTable() {
        first.addValue(u"M"_s, bending, u"7"_s);
        ASSERT_TRUE(first.funcs().EditFormulaVarPara(u"M"_s, bending, VarSourceTable,
                                                     u"材料.mdb->钢 材"_s, first.connection()));
        start();
        select(u"梁"_s, u"弯曲"_s);
    }

    QString rows() {
        return first
            .rows(
                u"Select VarName, FormulaID, Value, VarSourceType, VarMemo From RecentVar "
                "Order By rowid"_s)
            .join(u", "_s);
    }
};

TEST_F(ValueSources, AreChosenTypedStoredAndShownInTheGridAtOnce) {
    desk->properties[u"弯矩"_s] = u"12"_s;
    first.addValue(u"W"_s, 0, u"4"_s);
    edit([&](QDialog& dialog) {
        const auto& formula = partOf<QLineEdit>(dialog, "txtFormula");
        EXPECT_EQ(dialog.windowTitle(), u"变量值的来源"_s);
        EXPECT_EQ(formula.selectedText(), u"M/W"_s);
        EXPECT_EQ(formula.cursorPosition(), 0);
        EXPECT_TRUE(formula.isReadOnly());
        EXPECT_EQ(sources(dialog), u"M|无| 000000, W|无| 000000"_s) << "W has an unowned value";
        chooseType(dialog, 1, VarSourceProperty);
        typeParameter(dialog, 1, u" 弯矩 "_s);
        chooseType(dialog, 2, VarSourceTable);
        chooseTable(dialog, 2, [&](QDialog& chooser) {
            selectIn(chooser, "FileDB", u"材料.mdb"_s);
            selectIn(chooser, "lstTableName", u"钢丝"_s);
            click(chooser, "cmdOK");
        });
        EXPECT_EQ(sources(dialog), u"M|属性|弯矩 ff0000, W|数据表|材料.mdb->钢丝 0000ff"_s);
        EXPECT_EQ(rows(), u"W|0|4|0|"_s);
        click(dialog, "cmdOK");
    });
    EXPECT_EQ(rows(), u"W|0|4|0|, M|1|0|1|弯矩, W|1|0|2|材料.mdb->钢丝"_s);
    EXPECT_EQ(desk->gridTexts(), (QStringList{u"M=12"_s, u"W=0"_s}));
    EXPECT_EQ(desk->grid().CellForeColor(1, 0), 0xFF0000U);
    EXPECT_EQ(desk->grid().CellForeColor(2, 0), 0x0000FFU);
    EXPECT_NE(desk->result(), QString()) << "the result follows";

    edit([&](QDialog& dialog) {
        EXPECT_EQ(sources(dialog), u"M|属性|弯矩 ff0000, W|数据表|材料.mdb->钢丝 0000ff"_s);
        chooseType(dialog, 1, VarSourceTyped);
        EXPECT_EQ(sources(dialog), u"M|无| 000000, W|数据表|材料.mdb->钢丝 0000ff"_s);
        chooseTable(dialog, 2, [&](QDialog& chooser) {
            EXPECT_EQ(label(chooser, "lblShowTableName"), u"钢丝"_s) << "what is stored is chosen";
            QTest::keyClick(&chooser, Qt::Key_Escape);
        });
        EXPECT_EQ(sources(dialog), u"M|无| 000000, W|数据表|材料.mdb->钢丝 0000ff"_s);
        dialog.close();
    });
    EXPECT_EQ(rows(), u"W|0|4|0|, M|1|0|1|弯矩, W|1|0|2|材料.mdb->钢丝"_s);
    EXPECT_EQ(told(), QString());
}

TEST_F(ValueSources, AMissingParameterOrAFailureIsToldAndTheDialogStaysOpen) {
    edit([&](QDialog& dialog) {
        chooseType(dialog, 2, VarSourceProperty);
        click(dialog, "cmdOK");
        EXPECT_EQ(told(), u"用户没有为变量“W”设置参数！"_s);
        EXPECT_EQ(gridOf(dialog).currentRow(), 1);
        EXPECT_TRUE(dialog.isVisible());
        // What is still being typed counts.
        beginEdit<QLineEdit>(dialog, 2, 2).setText(u"p"_s);
        first.refuse("Insert", "RecentVar");
        partOf<QPushButton>(dialog, "cmdOK").click();
        EXPECT_EQ(told(), u"无法添加新的变量！"_s);
        EXPECT_TRUE(dialog.isVisible());
        first.allow();
        click(dialog, "cmdOK");
        EXPECT_FALSE(dialog.isVisible());
    });
    EXPECT_EQ(rows(), u"W|1|0|1|p"_s);
}

TEST_F(ValueSources, NamesOfPropertiesAreOfferedWhileOneIsTyped) {
    first.addValue(u"l"_s, deflection, u"1"_s);
    first.addValue(u"f"_s, deflection, u"1"_s);
    for (const auto& [name, property] : {std::pair(u"l"_s, u"杆件长度"_s), {u"f"_s, u"挠度"_s}}) {
        ASSERT_TRUE(first.funcs().EditFormulaVarPara(name, deflection, VarSourceProperty, property,
                                                     first.connection()));
    }
    edit([&](QDialog& dialog) {
        EXPECT_EQ(beginEdit<QLineEdit>(dialog, 1, 2).completer(), nullptr) << "no property feeds M";
        chooseType(dialog, 1, VarSourceProperty);
        QCompleter& offered = *beginEdit<QLineEdit>(dialog, 1, 2).completer();
        offered.setCompletionPrefix(u"长"_s);
        EXPECT_EQ(offered.completionCount(), 1);
        EXPECT_EQ(offered.currentCompletion(), u"杆件长度"_s);
    });
}

TEST_F(ValueSources, OnlyATableOfAFileInTheFolderOfTheLibraryCanBeChosen) {
    edit([&](QDialog& dialog) {
        chooseType(dialog, 1, VarSourceTable);
        chooseTable(dialog, 1, [&](QDialog& chooser) {
            const auto& tables = partOf<QListWidget>(chooser, "lstTableName");
            EXPECT_EQ(label(chooser, "lblShowDBPath"), first.folder());
            EXPECT_FALSE(partOf<QComboBox>(chooser, "DriveDB").isEnabled());
            EXPECT_FALSE(partOf<QListWidget>(chooser, "DirDB").isEnabled());
            EXPECT_EQ(label(chooser, "lblMissing"), u"请选择数据库文件"_s);
            EXPECT_FALSE(canAccept(chooser));
            selectIn(chooser, "FileDB", u"材料.mdb"_s);
            ASSERT_EQ(tables.count(), 2);
            EXPECT_EQ(tables.item(0)->text() + tables.item(1)->text(), u"钢 材钢丝"_s);
            EXPECT_EQ(label(chooser, "lblMissing"), u"请选择数据表"_s);
            EXPECT_FALSE(canAccept(chooser));
            selectIn(chooser, "lstTableName", u"钢 材"_s);
            EXPECT_TRUE(canAccept(chooser));
            EXPECT_EQ(label(chooser, "lblShowDBName") + label(chooser, "lblShowTableName"),
                      u"材料.mdb钢 材"_s);
            selectIn(chooser, "FileDB", u"坏.mdb"_s);
            EXPECT_EQ(told(), u"无法打开用户指定的数据库！"_s);
            EXPECT_EQ(tables.count(), 2) << "unchanged";
            EXPECT_EQ(label(chooser, "lblMissing"), u"这个文件无法打开，请选择别的文件"_s);
            EXPECT_FALSE(canAccept(chooser)) << "they are another file's";
            selectIn(chooser, "FileDB", u"材料.mdb"_s);
            EXPECT_FALSE(canAccept(chooser));
            selectIn(chooser, "lstTableName", u"钢丝"_s);
            QTest::keyClick(&chooser, Qt::Key_Return);
        });
        EXPECT_EQ(sources(dialog), u"M|数据表|材料.mdb->钢丝 0000ff, W|无| 000000"_s);
    });
    EXPECT_EQ(rows(), QString()) << "given up";
}

TEST_F(ValueSources, AValueIsPickedByADoubleClickAndStored) {
    feedFromTable();
    pick([&](QDialog& dialog) {
        QTableView& table = tableOf(dialog);
        EXPECT_EQ(dialog.windowTitle(), u"选择变量的值"_s);
        EXPECT_EQ(label(dialog, "lblShowDBPath"), first.pathOf(u"材料.mdb"_s));
        EXPECT_EQ(label(dialog, "lblShowTableName"), u"钢 材"_s);
        EXPECT_FALSE(canAccept(dialog)) << "no cell is current";
        const auto index = [&](int row, int column) { return table.model()->index(row, column); };
        EXPECT_EQ(index(0, 1).data(Qt::TextAlignmentRole).toInt() & Qt::AlignRight, Qt::AlignRight);
        EXPECT_EQ(index(0, 2).data(), QString()) << "a date";
        for (const int column : {2, 3}) {
            table.setCurrentIndex(index(0, column));
            EXPECT_FALSE(canAccept(dialog)) << "an empty cell";
            QTest::keyClick(&table, Qt::Key_Return);
            EXPECT_TRUE(dialog.isVisible());
        }
        table.setCurrentIndex(index(2, 3));
        click(dialog, "cmdOK");
        EXPECT_EQ(told(), u"给定变量的值超过255个字符"_s);
        // Nothing of the file is locked meanwhile.
        data::Connection other;
        other.open(first.pathOf(u"材料.mdb"_s));
        EXPECT_EQ(other.execute(u"Delete From 钢丝"_s), 0);
        table.setCurrentIndex(index(2, 1));
        const QPoint at = table.visualRect(index(2, 1)).center();
        QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(table.viewport(), Qt::LeftButton, {}, at);
        EXPECT_FALSE(dialog.isVisible());
    });
    EXPECT_EQ(rows(), u"M|1|0.30000000000000004|2|材料.mdb->钢 材"_s);
    EXPECT_EQ(desk->value(u"M"_s), u"0.30000000000000004"_s);
    EXPECT_EQ(desk->grid().findChildren<QLineEdit*>().size(), 0) << "the cell is not being edited";
    EXPECT_EQ(told(), QString());
}

TEST_F(ValueSources, ThePickedRowIsFoundAgainAndGivingUpChangesNothing) {
    feedFromTable();
    pick([&](QDialog& dialog) {
        tableOf(dialog).setCurrentIndex(tableOf(dialog).model()->index(1, 1));
        QTest::keyClick(&tableOf(dialog), Qt::Key_Return);
        EXPECT_FALSE(dialog.isVisible());
    });
    const QString stored = u"M|1|206.5|2|材料.mdb->钢 材"_s;
    EXPECT_EQ(rows(), stored);
    for (const bool again : {false, true}) {
        if (again) {
            start();
            select(u"梁"_s, u"弯曲"_s);
        }
        pick([&](QDialog& dialog) {
            const QModelIndex current = tableOf(dialog).currentIndex();
            EXPECT_EQ(current.row(), again ? 0 : 1) << "the first with the value";
            EXPECT_EQ(current.column(), 1);
            again ? static_cast<void>(dialog.close()) : QTest::keyClick(&dialog, Qt::Key_Escape);
        });
        EXPECT_EQ(rows(), stored);
        EXPECT_EQ(desk->value(u"M"_s), u"206.5"_s);
        EXPECT_EQ(desk->grid().findChildren<QLineEdit*>().size(), 0);
    }
}

TEST_F(ValueSources, ThePickerIsFilteredByTypingAndSortedByItsHeader) {
    feedFromTable();
    pick([&](QDialog& dialog) {
        QTableView& table = tableOf(dialog);
        const auto names = [&] {
            QString joined;
            for (int row = 0; row < table.model()->rowCount(); ++row) {
                joined += table.model()->index(row, 0).data().toString() + u' ';
            }
            return joined;
        };
        QHeaderView& header = *table.horizontalHeader();
        for (const char* sorted : {"HT Q235 Q345 ", "Q345 Q235 HT ", "Q235 Q345 HT "}) {
            QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                              {header.sectionViewportPosition(0) + 20, 8});
            EXPECT_EQ(names(), QLatin1StringView(sorted));
        }
        table.setCurrentIndex(table.model()->index(0, 1));
        QTest::keyClick(&table, Qt::Key_H);
        EXPECT_EQ(names(), u"HT "_s);
        EXPECT_EQ(table.currentIndex().column(), 1) << "typing finds the value of another row";
        QTest::keyClick(&partOf<QLineEdit>(dialog, "txtFilter"), Qt::Key_Z);
        EXPECT_EQ(label(dialog, "lblRows"), u"没有符合筛选的行"_s);
        EXPECT_FALSE(canAccept(dialog));
        QTest::keyClick(&partOf<QLineEdit>(dialog, "txtFilter"), Qt::Key_Backspace);
        QTest::keyClick(&partOf<QLineEdit>(dialog, "txtFilter"), Qt::Key_Down);
        QTest::keyClick(&table, Qt::Key_Return);
    });
    EXPECT_EQ(desk->value(u"M"_s), u"0.30000000000000004"_s);
}

TEST_F(ValueSources, ATableThatCannotBeReadIsToldAndNothingElseIsRead) {
    const std::pair<QString, QString> cases[] = {
        {u"材料.mdb->没有"_s, u"显示数据表结构失败！"_s},
        {u"材料.mdb"_s, u"显示数据表结构失败！"_s},
        {u"没有.mdb->钢丝"_s, u"打开数据库失败！"_s},
        {u"坏.mdb->钢丝"_s, u"打开数据库失败！"_s},
        {u"../%1/材料.mdb->钢丝"_s.arg(QDir(first.folder()).dirName()), u"打开数据库失败！"_s},
        {first.pathOf(u"材料.mdb"_s) + u"->钢丝"_s, u"打开数据库失败！"_s},
    };
    feedFromTable();
    for (const auto& [parameter, message] : cases) {
        ASSERT_TRUE(first.funcs().EditFormulaVarPara(u"M"_s, bending, VarSourceTable, parameter,
                                                     first.connection()));
        select(u"柱"_s);
        start();
        select(u"梁"_s, u"弯曲"_s);
        pick([&](QDialog& dialog) {
            EXPECT_EQ(tableOf(dialog).model()->rowCount(), 0);
            EXPECT_FALSE(canAccept(dialog));
        });
        EXPECT_EQ(told(), message) << parameter.toStdString();
    }
    EXPECT_EQ(desk->value(u"M"_s), u"7"_s);
}

TEST_F(ValueSources, AHostThatTurnsTheControlElsewhereMeanwhileLosesNothing) {
    feedFromTable();
    const auto pickFirst = [&](QDialog& dialog) {
        tableOf(dialog).setCurrentIndex(tableOf(dialog).model()->index(0, 1));
        click(dialog, "cmdOK");
    };
    pick([&](QDialog& dialog) {
        desk->control().SelFormula(u"LvFormulaKey%1"_s.arg(torsion));
        pickFirst(dialog);
    });
    EXPECT_EQ(rows(), u"M|1|206.5|2|材料.mdb->钢 材"_s);
    EXPECT_EQ(desk->gridTexts(), (QStringList{u"T=0"_s, u"W=0"_s}));

    select(u"梁"_s, u"弯曲"_s);
    pick([&](QDialog& dialog) {
        desk->control().ClickTreeNode(u"FormulaNode1->DBNode2"_s);
        pickFirst(dialog);
    });
    EXPECT_EQ(told(), u"无法编辑选定变量的值！"_s) << "its library is not open any more";
    EXPECT_EQ(desk->gridTexts(), (QStringList{u"v=0"_s, u"A=0"_s}));

    select(u"梁"_s, u"弯曲"_s);
    edit([&](QDialog& dialog) {
        chooseType(dialog, 2, VarSourceProperty);
        typeParameter(dialog, 2, u"p"_s);
        desk->control().ClickTreeNode(u"FormulaNode1->DBNode2"_s);
        click(dialog, "cmdOK");
    });
    EXPECT_EQ(rows(), u"M|1|206.5|2|材料.mdb->钢 材, W|1|0|1|p"_s);
    EXPECT_TRUE(second.rows(u"Select * From RecentVar"_s).isEmpty());
    EXPECT_EQ(desk->gridTexts(), (QStringList{u"v=0"_s, u"A=0"_s}));
}

TEST_F(ValueSources, TheDialogsGoWithAControlThatIsDestroyed) {
    feedFromTable();
    const auto destroy = [&](QDialog&) { desk.reset(); };
    edit(destroy);
    start();
    select(u"梁"_s, u"弯曲"_s);
    ui::EditGrid& grid = desk->grid();
    grid.setCurrentCell(0, 1);
    withDialog(
        "frmSelValue", [&] { QTest::keyClick(&grid, Qt::Key_F4); }, destroy);
    start();
    EXPECT_EQ(told(), QString());
}

}  // namespace
}  // namespace varo::test
