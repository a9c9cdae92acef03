#include "driver/dialog_driver.h"
#include "platform/data/create_database.h"
#include "store/records.h"
#include "support/beam_desk.h"

#include <QComboBox>
#include <QCompleter>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QMetaProperty>
#include <QTableView>

namespace varo::test {
namespace {

/// The beam libraries with a data table 材料.mdb (steels, wires) beside the first one. The formula
/// 弯曲, M/W, is shown; its M is 7.
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
        first.addValue(u"M"_s, bending, u"7"_s);
        select(u"梁"_s, u"弯曲"_s);
    }

    /// Lets M come from a table, and shows the formula anew.
    void feedFromTable(const QString& table = u"材料.mdb->钢 材"_s) {
        first.setSource(u"M"_s, bending, VarSourceTable, table);
        start();
        select(u"梁"_s, u"弯曲"_s);
    }

    /// Opens the value sources of the selected formula by its menu entry.
    void edit(const std::function<void(QDialog&)>& use) {
        const auto open = [this] {
            desk->openMenu(desk->list(), desk->list().selectedIndex().data().toString());
            desk->choose("mnuPopVarSource");
        };
        withDialog("frmVarSource", open, use);
        settle();
    }
    /// Opens the picker by a double click on the value of M.
    void pick(const std::function<void(QDialog&)>& use) {
        const auto open = [this] {
            doubleClickOn(desk->grid(),
                          desk->grid().model()->index(rowOf(desk->grid(), u"M"_s) - 1, 1));
        };
        withDialog("frmSelValue", open, use);
        settle();
    }
    /// Opens the choice of a table by the button in a row of the value sources.
    static void chooseTable(const QDialog& dialog, int row,
                            const std::function<void(QDialog&)>& use) {
        ui::EditGrid& grid = gridOf(dialog);
        grid.setFocus();
        grid.setCurrentCell(row - 1, 2);
        withDialog(
            "frmSelDB", [&] { QTest::keyClick(&grid, Qt::Key_F4); }, use);
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
    static void selectIn(const QDialog& dialog, const char* list, const QString& text) {
        auto& items = partOf<QListWidget>(dialog, list);
        clickOn(items,
                items.model()->match(items.model()->index(0, 0), Qt::DisplayRole, text).value(0));
    }

    /// Opens the editor of a cell of the value sources by the keyboard, and enters a text into it.
    static QWidget& beginEdit(const QDialog& dialog, int row, int column, const QString& text) {
        ui::EditGrid& grid = gridOf(dialog);
        grid.setFocus();
        grid.setCurrentCell(row - 1, column);
        QTest::keyClick(&grid, Qt::Key_F2);
        QWidget* editor = grid.indexWidget(grid.currentIndex());
        if (editor == nullptr) {
            throw DriverError(u"the cell cannot be edited"_s);
        }
        editor->setProperty(editor->metaObject()->userProperty().name(), text);
        return *editor;
    }
    static void enter(const QDialog& dialog, int row, int column, const QString& text) {
        QTest::keyClick(&beginEdit(dialog, row, column, text), Qt::Key_Return);
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
    QString rows() {
        return first
            .rows(
                u"Select VarName, FormulaID, Value, IfNull(VarSourceType, 0), VarMemo From "
                u"RecentVar "
                "Order By rowid"_s)
            .join(u", "_s);
    }
};

TEST_F(ValueSources, AreChosenTypedStoredAndShownInTheGridAtOnce) {
    desk->properties[u"弯矩"_s] = u"12"_s;
    first.addValue(u"W"_s, 0, u"4"_s);
    const QString chosen = u"M|属性|弯矩 ff0000, W|数据表|材料.mdb->钢丝 0000ff"_s;
    const QString stored = u"M|1|7|1|弯矩, W|0|4|0|, W|1|0|2|材料.mdb->钢丝"_s;
    edit([&](QDialog& dialog) {
        const auto& formula = partOf<QLineEdit>(dialog, "txtFormula");
        EXPECT_EQ(formula.selectedText(), u"M/W"_s);
        EXPECT_EQ(formula.cursorPosition(), 0);
        EXPECT_EQ(sources(dialog), u"M|无| 000000, W|无| 000000"_s) << "W has an unowned value";
        enter(dialog, 1, 1, u"属性"_s);
        enter(dialog, 1, 2, u" 弯矩 "_s);
        enter(dialog, 2, 1, u"数据表"_s);
        chooseTable(dialog, 2, [&](QDialog& chooser) {
            selectIn(chooser, "FileDB", u"材料.mdb"_s);
            selectIn(chooser, "lstTableName", u"钢丝"_s);
            clickIn(chooser, "cmdOK");
        });
        EXPECT_EQ(sources(dialog), chosen);
        EXPECT_EQ(rows(), u"M|1|7|0|, W|0|4|0|"_s);
        clickIn(dialog, "cmdOK");
    });
    EXPECT_EQ(rows(), stored);
    EXPECT_EQ(desk->gridTexts(), (QStringList{u"M=12"_s, u"W=0"_s}));
    EXPECT_EQ(desk->grid().CellForeColor(1, 0), 0xFF0000U);
    EXPECT_EQ(desk->grid().CellForeColor(2, 0), 0x0000FFU);
    EXPECT_EQ(desk->result(), u"除数不能为零！"_s) << "the result follows";

    edit([&](QDialog& dialog) {
        EXPECT_EQ(sources(dialog), chosen);
        auto& property = static_cast<QLineEdit&>(beginEdit(dialog, 1, 2, {}));
        property.completer()->setCompletionPrefix(u"矩"_s);
        EXPECT_EQ(property.completer()->currentCompletion(), u"弯矩"_s);
        enter(dialog, 1, 1, u"无"_s);
        auto& typed = static_cast<QLineEdit&>(beginEdit(dialog, 1, 2, {}));
        EXPECT_EQ(typed.completer(), nullptr) << "no property feeds M";
        const QString cleared = u"M|无| 000000, W|数据表|材料.mdb->钢丝 0000ff"_s;
        EXPECT_EQ(sources(dialog), cleared);
        chooseTable(dialog, 2, [&](QDialog& chooser) {
            EXPECT_EQ(label(chooser, "lblShowTableName"), u"钢丝"_s) << "what is stored is chosen";
            QTest::keyClick(&chooser, Qt::Key_Escape);
        });
        EXPECT_EQ(sources(dialog), cleared);
        dialog.close();
    });
    EXPECT_EQ(rows(), stored);
    EXPECT_EQ(told(), QString());
}

TEST_F(ValueSources, AMissingParameterOrAFailureIsToldAndTheDialogStaysOpen) {
    edit([&](QDialog& dialog) {
        enter(dialog, 2, 1, u"属性"_s);
        clickIn(dialog, "cmdOK");
        EXPECT_EQ(told(), u"用户没有为变量“W”设置参数！"_s);
        EXPECT_EQ(gridOf(dialog).currentRow(), 1);
        EXPECT_TRUE(dialog.isVisible());
        beginEdit(dialog, 2, 2, u"p"_s);  // what is still being typed counts
        first.refuse("Insert", "RecentVar");
        partOf<QPushButton>(dialog, "cmdOK").click();
        EXPECT_EQ(told(), u"无法添加新的变量！"_s);
        EXPECT_TRUE(dialog.isVisible());
        first.allow();
        clickIn(dialog, "cmdOK");
        EXPECT_FALSE(dialog.isVisible());
    });
    EXPECT_EQ(rows(), u"M|1|7|0|, W|1|0|1|p"_s);
}

TEST_F(ValueSources, OnlyATableOfAFileInTheFolderOfTheLibraryCanBeChosen) {
    edit([&](QDialog& dialog) {
        enter(dialog, 1, 1, u"数据表"_s);
        chooseTable(dialog, 1, [&](QDialog& chooser) {
            const auto& tables = partOf<QListWidget>(chooser, "lstTableName");
            const auto missing = [&] {
                EXPECT_EQ(canAccept(chooser), label(chooser, "lblMissing").isEmpty());
                return label(chooser, "lblMissing");
            };
            EXPECT_EQ(label(chooser, "lblShowDBPath"), first.folder());
            EXPECT_FALSE(partOf<QComboBox>(chooser, "DriveDB").isEnabled());
            EXPECT_FALSE(partOf<QListWidget>(chooser, "DirDB").isEnabled());
            EXPECT_EQ(missing(), u"请选择数据库文件"_s);
            selectIn(chooser, "FileDB", u"材料.mdb"_s);
            ASSERT_EQ(tables.count(), 2);
            EXPECT_EQ(tables.item(0)->text() + tables.item(1)->text(), u"钢 材钢丝"_s);
            EXPECT_EQ(missing(), u"请选择数据表"_s);
            selectIn(chooser, "lstTableName", u"钢 材"_s);
            EXPECT_EQ(missing(), QString());
            EXPECT_EQ(label(chooser, "lblShowDBName") + label(chooser, "lblShowTableName"),
                      u"材料.mdb钢 材"_s);
            selectIn(chooser, "FileDB", u"坏.mdb"_s);
            EXPECT_EQ(told(), u"无法打开用户指定的数据库！"_s);
            EXPECT_EQ(tables.count(), 2) << "those of the file before";
            EXPECT_EQ(missing(), u"这个文件无法打开，请选择别的文件"_s);
            selectIn(chooser, "FileDB", u"材料.mdb"_s);
            EXPECT_EQ(missing(), u"请选择数据表"_s);
            selectIn(chooser, "lstTableName", u"钢丝"_s);
            QTest::keyClick(&chooser, Qt::Key_Return);
        });
        EXPECT_EQ(sources(dialog), u"M|数据表|材料.mdb->钢丝 0000ff, W|无| 000000"_s);
    });
    EXPECT_EQ(rows(), u"M|1|7|0|"_s) << "given up";
}

TEST_F(ValueSources, AValueIsPickedByADoubleClickStoredAndFoundAgain) {
    feedFromTable();
    pick([&](QDialog& dialog) {
        QTableView& table = tableOf(dialog);
        EXPECT_EQ(label(dialog, "lblShowDBPath") + label(dialog, "lblShowTableName"),
                  first.pathOf(u"材料.mdb"_s) + u"钢 材"_s);
        EXPECT_FALSE(canAccept(dialog)) << "no cell is current";
        const auto index = [&](int row, int column) { return table.model()->index(row, column); };
        EXPECT_EQ(index(0, 1).data(Qt::TextAlignmentRole).toInt() & Qt::AlignRight, Qt::AlignRight);
        for (const int column : {2, 3}) {
            table.setCurrentIndex(index(0, column));
            EXPECT_FALSE(canAccept(dialog)) << "an empty cell, or a date";
            QTest::keyClick(&table, Qt::Key_Return);
            EXPECT_TRUE(dialog.isVisible());
        }
        table.setCurrentIndex(index(2, 3));
        clickIn(dialog, "cmdOK");
        EXPECT_EQ(told(), u"给定变量的值超过255个字符"_s);
        doubleClickOn(table, index(1, 1));
        EXPECT_FALSE(dialog.isVisible());
    });
    for (const bool again : {false, true}) {
        EXPECT_EQ(rows(), u"M|1|206.5|2|材料.mdb->钢 材"_s);
        EXPECT_EQ(desk->value(u"M"_s), u"206.5"_s);
        EXPECT_EQ(desk->grid().findChildren<QLineEdit*>().size(), 0) << "the cell is not edited";
        if (again) {
            feedFromTable();
        }
        pick([&](QDialog& dialog) {
            const QModelIndex current = tableOf(dialog).currentIndex();
            EXPECT_EQ(current.row(), again ? 0 : 1) << "the first with the value";
            EXPECT_EQ(current.column(), 1);
            again ? static_cast<void>(dialog.close()) : QTest::keyClick(&dialog, Qt::Key_Escape);
        });
    }
    EXPECT_EQ(rows(), u"M|1|206.5|2|材料.mdb->钢 材"_s) << "given up";
    EXPECT_EQ(told(), QString());
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
    EXPECT_EQ(rows(), u"M|1|0.30000000000000004|2|材料.mdb->钢 材"_s);
}

TEST_F(ValueSources, ATableThatCannotBeReadIsToldAndNothingElseIsRead) {
    const std::pair<QString, QString> cases[] = {
        {u"材料.mdb->没有"_s, u"显示数据表结构失败！"_s},
        {u"坏.mdb->钢丝"_s, u"打开数据库失败！"_s},
        {first.pathOf(u"材料.mdb"_s) + u"->钢丝"_s, u"打开数据库失败！"_s},
    };
    for (const auto& [table, message] : cases) {
        feedFromTable(table);
        pick([&](QDialog& dialog) {
            EXPECT_EQ(tableOf(dialog).model()->rowCount(), 0);
            EXPECT_FALSE(canAccept(dialog));
        });
        EXPECT_EQ(told(), message) << table.toStdString();
    }
    EXPECT_EQ(desk->value(u"M"_s), u"7"_s);
}

TEST_F(ValueSources, AHostThatTurnsTheControlElsewhereMeanwhileLosesNothing) {
    feedFromTable();
    const auto pickFirst = [&](QDialog& dialog) {
        tableOf(dialog).setCurrentIndex(tableOf(dialog).model()->index(0, 1));
        clickIn(dialog, "cmdOK");
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
        enter(dialog, 2, 1, u"属性"_s);
        enter(dialog, 2, 2, u"p"_s);
        desk->control().ClickTreeNode(u"FormulaNode1->DBNode2"_s);
        clickIn(dialog, "cmdOK");
    });
    EXPECT_EQ(rows(), u"M|1|206.5|2|材料.mdb->钢 材, W|1|0|1|p"_s);
    EXPECT_TRUE(second.rows(u"Select * From RecentVar"_s).isEmpty());
    EXPECT_EQ(desk->gridTexts(), (QStringList{u"v=0"_s, u"A=0"_s}));
}

TEST_F(ValueSources, TheDialogsGoWithAControlThatIsDestroyed) {
    feedFromTable();
    const auto destroy = [&](QDialog&) { desk.reset(); };
    edit(destroy);
    feedFromTable();
    ui::EditGrid& grid = desk->grid();
    grid.setCurrentCell(0, 1);
    withDialog(
        "frmSelValue", [&] { QTest::keyClick(&grid, Qt::Key_F4); }, destroy);
    start();
    EXPECT_EQ(told(), QString());
}

}  // namespace
}  // namespace varo::test
