#include "support/beam_desk.h"

#include <QPlainTextEdit>

namespace varo::test {
namespace {

/// 弯曲 is shown, and something of it is being typed.
class LeavingAFormula : public BeamDesk {
  protected:
    LeavingAFormula() { select(u"梁"_s); }

    QPlainTextEdit& memo() { return desk->child<QPlainTextEdit>("txtDesc"); }
    void typeMemo(const QString& text) {
        desk->click(desk->child("optDesc0"), Qt::LeftButton, {8, 8});
        memo().setFocus();
        settle();
        memo().insertPlainText(text);
    }
    QStringList stored(const char* column) {
        return first.rows(u"select %1 from Formula where ID <= %2 order by ID"_s.arg(
            QLatin1StringView(column), QString::number(shear)));
    }
};

TEST_F(LeavingAFormula, StoresWhatIsBeingTypedBeforeTheHostShowsAnother) {
    desk->type(desk->formulaBox(), u"2*"_s);
    beginTyping(desk->grid(), u"M"_s, u"44"_s);
    desk->control().SelFormula(u"LvFormulaKey%1"_s.arg(shear));
    desk->type(desk->formulaBox(), u"4*"_s);
    desk->control().ClickTreeNode(u"DBNode1"_s);
    EXPECT_EQ(stored("Formula"), (QStringList{u"2*M/W"_s, u"4*3*Q/(2*b*h)"_s}));
    EXPECT_EQ(first.rows(u"select FormulaID, VarName, Value from RecentVar"_s),
              QStringList{u"1|M|44"_s});
}

TEST_F(LeavingAFormula, StoresWhatIsBeingTypedWhenTheControlGoes) {
    desk->type(desk->formulaBox(), u"2*"_s);
    start();
    EXPECT_EQ(stored("Formula").first(), u"2*M/W"_s);
    select(u"梁"_s);
    typeMemo(u"新"_s);
    start();
    EXPECT_EQ(stored("Memo").first(), u"新"_s);
}

TEST_F(LeavingAFormula, IsRefusedWhileItsDescriptionIsTooLong) {
    typeMemo(QString(300, u'长'));
    desk->clickFormula(u"剪切"_s);
    desk->clickNode(u"库1"_s);
    desk->control().SetDesignProp(u"用途"_s);
    EXPECT_EQ(memo().toPlainText().size(), 300);
    EXPECT_EQ(desk->list().selectedKey(), u"LvFormulaKey%1"_s.arg(bending));
    EXPECT_EQ(desk->messages().size(), 1) << "told once";
}

TEST_F(LeavingAFormula, AFailedLocateLeavesTheValuesKnown) {
    desk->typeValue(u"M"_s, u"3"_s);
    second.connection().execute(u"alter table Property rename to Gone"_s);
    desk->control().SetDesignProp(u"用途"_s);
    second.connection().execute(u"alter table Gone rename to Property"_s);
    desk->typeValue(u"M"_s, u"8"_s);
    EXPECT_EQ(first.rows(u"select Value from RecentVar where VarName = 'M'"_s), QStringList{u"8"_s})
        << "no second row";
}

}  // namespace
}  // namespace varo::test
