#include "support/desk.h"

#include <QPlainTextEdit>
#include <QRadioButton>
#include <QTest>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

/// The control with a formula shown, of which something is being typed.
class LeavingAFormula : public testing::Test {
  protected:
    LeavingAFormula() {
        first = library.addFormula(0, u"一"_s, u"a+b"_s, u"说明一"_s);
        second = library.addFormula(0, u"二"_s, u"c"_s);
        desk = std::make_unique<Desk>(configuration.folder());
    }

    QPlainTextEdit& memo() { return desk->child<QPlainTextEdit>("txtDesc"); }
    void typeMemo(const QString& text) {
        QTest::mouseClick(&desk->child<QRadioButton>("optDesc0"), Qt::LeftButton, {}, {8, 8});
        memo().setFocus();
        settle();
        memo().insertPlainText(text);
    }
    QString stored(const char* column) {
        return library.rows(u"select %1 from Formula order by ID"_s.arg(QLatin1StringView(column)))
            .join(u'|');
    }

    TestLibrary library;
    TestConfiguration configuration{&library};
    std::unique_ptr<Desk> desk;
    qint32 first = 0;
    qint32 second = 0;
};

TEST_F(LeavingAFormula, StoresWhatIsBeingTypedBeforeTheHostShowsAnother) {
    desk->type(desk->formulaBox(), u"*2"_s);
    beginTyping(desk->grid(), u"a"_s, u"44"_s);
    desk->control().SelFormula(u"LvFormulaKey%1"_s.arg(second));
    desk->type(desk->formulaBox(), u"*3"_s);
    desk->control().ClickTreeNode(u"DBNode1"_s);
    EXPECT_EQ(stored("Formula"), u"*2a+b|*3c"_s);
    EXPECT_EQ(library.rows(u"select FormulaID, VarName, Value from RecentVar"_s),
              QStringList{u"1|a|44"_s});
}

TEST_F(LeavingAFormula, StoresWhatIsBeingTypedWhenTheControlGoes) {
    desk->type(desk->formulaBox(), u"2*"_s);
    desk.reset();
    EXPECT_EQ(stored("Formula"), u"2*a+b|c"_s);
    desk = std::make_unique<Desk>(configuration.folder());
    typeMemo(u"新"_s);
    desk.reset();
    EXPECT_EQ(stored("Memo"), u"新|"_s);
}

TEST_F(LeavingAFormula, IsRefusedWhileItsDescriptionIsTooLong) {
    typeMemo(QString(300, u'长'));
    desk->clickFormula(u"二"_s);
    desk->clickNode(u"库1"_s);
    desk->control().SetDesignProp(u"用途"_s);
    EXPECT_EQ(memo().toPlainText().size(), 300);
    EXPECT_EQ(desk->list().selectedKey(), u"LvFormulaKey%1"_s.arg(first));
    EXPECT_EQ(desk->messages().size(), 1) << "told once";
}

TEST_F(LeavingAFormula, AFailedLocateLeavesTheValuesKnown) {
    TestLibrary broken;
    desk.reset();
    const TestConfiguration both({&library, &broken});
    desk = std::make_unique<Desk>(both.folder());
    desk->typeValue(u"a"_s, u"3"_s);
    broken.connection().execute(u"drop table Property"_s);
    desk->control().SetDesignProp(u"用途"_s);
    desk->typeValue(u"a"_s, u"8"_s);
    EXPECT_EQ(library.rows(u"select Value from RecentVar where VarName = 'a'"_s),
              QStringList{u"8"_s})
        << "no second row";
}

}  // namespace
}  // namespace varo::test
