#include "formula/variable_grid.h"

#include "support/desk.h"

#include <QApplication>
#include <QTest>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

/// A library with two formulas, and the way to what is stored for their variables.
struct ValueLibrary {
    ValueLibrary() {
        formula = library.addFormula(0, QStringLiteral("和"), QStringLiteral("a+b"));
        other = library.addFormula(0, QStringLiteral("差"), QStringLiteral("a-b"));
        library.addValue(QStringLiteral("a"), formula, QStringLiteral("3"));
        library.addValue(QStringLiteral("b"), 0, QStringLiteral("5"));
    }

    /// "formula:value" for each row of a variable, in the order of the formulas.
    QString stored(const QString& name) {
        auto rs = library.connection().query(
            QStringLiteral(
                "select FormulaID, Value from RecentVar where VarName = ? order by FormulaID"),
            {name});
        return remainingRows(rs).join(u' ');
    }

    TestLibrary library;
    TestConfiguration configuration{&library};
    qint32 formula = 0;
    qint32 other = 0;
};

class StoredValues : public testing::Test, protected ValueLibrary {};

TEST_F(StoredValues, AFormulaSeesItsOwnThenTheUnownedThenZero) {
    Desk desk(configuration.folder());
    EXPECT_EQ(desk.gridTexts(), (QStringList{QStringLiteral("a=3"), QStringLiteral("b=5")}));
    EXPECT_EQ(desk.result(), QStringLiteral("8.00"));
    desk.clickFormula(QStringLiteral("差"));
    EXPECT_EQ(desk.gridTexts(), (QStringList{QStringLiteral("a=0"), QStringLiteral("b=5")}));
}

TEST_F(StoredValues, TypedValuesAreStoredAtOnce) {
    struct {
        const char* what;
        const char* variable;
        const char* typed;
        const char* shown;
        const char* stored;
    } const cases[] = {
        {"a new value", "a", "4.5", "4.5", "1|4.5"},
        {"blanks around it", "a", "  12 ", "  12 ", "1|12"},
        {"nothing, for a value of its own", "a", "", "0", "1|0"},
        {"quotes and statements", "a", "'; drop table Tree; --", "'; drop table Tree; --",
         "1|'; drop table Tree; --"},
        {"wildcards", "a", "100%_\"", "100%_\"", "1|100%_\""},
        {"characters outside the basic plane", "a", "𝛔😀", "𝛔😀", "1|𝛔😀"},
        {"the unowned row is taken over", "b", "7", "7", "1|7"},
        {"zero takes nothing over", "b", "0", "0", "0|5"},
        {"zero in another spelling", "b", "-0.0e5", "-0.0e5", "0|5"},
        {"clearing takes the unowned row over", "b", "", "0", "1|0"},
    };
    for (const auto& each : cases) {
        ValueLibrary fresh;
        Desk desk(fresh.configuration.folder());
        desk.typeValue(QString::fromUtf8(each.variable), QString::fromUtf8(each.typed));
        EXPECT_EQ(desk.value(QString::fromUtf8(each.variable)), QString::fromUtf8(each.shown))
            << each.what;
        EXPECT_EQ(fresh.stored(QString::fromUtf8(each.variable)), QString::fromUtf8(each.stored))
            << each.what;
        EXPECT_TRUE(desk.messages().isEmpty()) << each.what;
    }
}

TEST_F(StoredValues, AValueOf255CharactersIsStoredAndOneOf256IsRefused) {
    Desk desk(configuration.folder());
    const QString longest(255, u'7');
    desk.typeValue(QStringLiteral("a"), longest);
    EXPECT_EQ(stored(QStringLiteral("a")), QStringLiteral("1|") + longest);
    desk.typeValue(QStringLiteral("a"), QString(256, u'8'));
    EXPECT_EQ(desk.messages(), QStringList{QStringLiteral("给定变量的值超过255个字符")});
    EXPECT_EQ(desk.value(QStringLiteral("a")), QStringLiteral("0"));
    EXPECT_EQ(stored(QStringLiteral("a")), QStringLiteral("1|") + longest);
}

TEST_F(StoredValues, ATakenOverRowIsNoLongerSeenByOtherFormulas) {
    Desk desk(configuration.folder());
    desk.typeValue(QStringLiteral("b"), QStringLiteral("9"));
    desk.clickFormula(QStringLiteral("差"));
    EXPECT_EQ(desk.value(QStringLiteral("b")), QStringLiteral("0"));
    desk.typeValue(QStringLiteral("b"), QStringLiteral("2"));
    desk.clickFormula(QStringLiteral("和"));
    EXPECT_EQ(desk.value(QStringLiteral("b")), QStringLiteral("9"));
    EXPECT_EQ(stored(QStringLiteral("b")), QStringLiteral("1|9 2|2"));
}

TEST_F(StoredValues, NamesThatDifferInLetterCaseShareAValue) {
    const qint32 upper = library.addFormula(0, QStringLiteral("积"), QStringLiteral("A*X+x"));
    library.addValue(QStringLiteral("a"), upper, QStringLiteral("6"));
    Desk desk(configuration.folder());
    desk.clickFormula(QStringLiteral("积"));
    EXPECT_EQ(desk.gridTexts(), (QStringList{QStringLiteral("A=6"), QStringLiteral("X=0")}));
    desk.typeValue(QStringLiteral("A"), QStringLiteral("8"));
    EXPECT_EQ(stored(QStringLiteral("A")), QStringLiteral("1|3 3|8"));
}

TEST_F(StoredValues, TheGridFollowsTheFormulaBoxKeyByKey) {
    Desk desk(configuration.folder());
    QLineEdit& box = desk.formulaBox();
    box.setFocus();
    box.selectAll();
    QTest::keyClick(&box, Qt::Key_Delete);
    EXPECT_EQ(desk.grid().Rows(), 1);
    QStringList steps;
    for (const QChar key : QStringLiteral("b*(c+")) {
        QTest::keyClick(&box, key.toLatin1());
        steps.append(desk.gridTexts().join(u','));
    }
    EXPECT_EQ(steps,
              (QStringList{QStringLiteral("b=5"), QStringLiteral("b=5"), QStringLiteral("b=5"),
                           QStringLiteral("b=5,c=0"), QStringLiteral("b=5,c=0")}));
    EXPECT_EQ(desk.grid().GetCellText(0, 0), QStringLiteral("变量名称"));
    EXPECT_EQ(desk.grid().GetCellText(0, 1), QStringLiteral("变量值"));
}

TEST_F(StoredValues, ALibraryThatCannotBeWrittenIsToldAndKeepsWhatItHolds) {
    Desk desk(configuration.folder());
    library.connection().execute(QStringLiteral("drop table RecentVar"));
    desk.typeValue(QStringLiteral("a"), QStringLiteral("4"));
    EXPECT_EQ(desk.messages(), QStringList{QStringLiteral("无法编辑选定变量的值！")});
    EXPECT_EQ(desk.value(QStringLiteral("a")), QStringLiteral("4"))
        << "the grid keeps what was typed";
    desk.typeValue(QStringLiteral("b"), QStringLiteral("4"));
    EXPECT_EQ(desk.messages().last(), QStringLiteral("无法添加新的变量！"));
}

TEST_F(StoredValues, AValueStillBeingTypedIsStoredBeforeAnotherFormulaIsShown) {
    Desk desk(configuration.folder());
    const QModelIndex cell = desk.grid().model()->index(0, 1);
    desk.grid().setFocus();
    desk.grid().setCurrentIndex(cell);
    QTest::keyClick(&desk.grid(), Qt::Key_F2);
    auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    ASSERT_NE(editor, nullptr);
    editor->setText(QStringLiteral("44"));
    editor->setModified(true);
    desk.control().SelFormula(QStringLiteral("LvFormulaKey%1").arg(other));
    EXPECT_EQ(stored(QStringLiteral("a")), QStringLiteral("1|44"));
    EXPECT_EQ(desk.gridTexts().first(), QStringLiteral("a=0"));
}

TEST_F(StoredValues, AFailedLocateLeavesTheValuesKnown) {
    TestLibrary broken;
    const TestConfiguration both({&library, &broken});
    Desk desk(both.folder());
    broken.connection().execute(QStringLiteral("drop table Property"));
    desk.control().SetDesignProp(QStringLiteral("用途"));
    desk.typeValue(QStringLiteral("a"), QStringLiteral("8"));
    EXPECT_EQ(stored(QStringLiteral("a")), QStringLiteral("1|8")) << "no second row";
}

TEST_F(StoredValues, AValueIsPickedFromItsDataTable) {
    class Picker : public ValuePicker {
      public:
        std::optional<QString> pick(const QString& path, const QString& database,
                                    const QString& table) override {
            asked.append(path + u'|' + database + u'|' + table);
            meanwhile();
            return answer;
        }
        QStringList asked;
        std::optional<QString> answer;
        std::function<void()> meanwhile = [] {};
    } picker;
    ASSERT_TRUE(library.funcs().EditFormulaVarPara(QStringLiteral("a"), formula, VarSourceTable,
                                                   QStringLiteral("材料.mdb->钢->材"),
                                                   library.connection()));
    Desk desk(configuration.folder());
    desk.control().setValuePicker(&picker);
    EXPECT_EQ(desk.grid().CellForeColor(1, 0), 0x0000FFU) << "red";
    emit desk.grid().CellActivate(1, 1);
    EXPECT_EQ(desk.value(QStringLiteral("a")), QStringLiteral("3"));
    // The host may turn to something else while the picker is open.
    picker.meanwhile = [&] {
        desk.control().SelFormula(QStringLiteral("LvFormulaKey%1").arg(other));
    };
    picker.answer = QStringLiteral("206000");
    emit desk.grid().CellActivate(1, 1);
    EXPECT_EQ(stored(QStringLiteral("a")), QStringLiteral("1|3"));
    picker.meanwhile = [] {};
    picker.asked.removeLast();
    desk.clickFormula(QStringLiteral("和"));
    emit desk.grid().CellActivate(1, 1);
    emit desk.grid().CellActivate(2, 1);
    EXPECT_EQ(picker.asked, (QStringList{library.folder() + QStringLiteral("|材料.mdb|钢->材"),
                                         library.folder() + QStringLiteral("|材料.mdb|钢->材")}));
    EXPECT_EQ(desk.value(QStringLiteral("a")), QStringLiteral("206000"));
    EXPECT_EQ(stored(QStringLiteral("a")), QStringLiteral("1|206000"));
}

}  // namespace
}  // namespace varo::test
