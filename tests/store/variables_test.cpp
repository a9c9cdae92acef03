#include "store/db_funcs.h"
#include "support/test_library.h"

#include <gtest/gtest.h>

namespace varo {
namespace {

using namespace Qt::StringLiterals;

class Variables : public testing::Test {
  protected:
    QStringList stored() {
        return library.rows(
            u"Select VarName,FormulaID,Value,VarSourceType,VarMemo From RecentVar "
            "Order By rowid"_s);
    }

    test::TestLibrary library;
    clsDBFuncs& funcs = library.funcs();
    data::Connection& connection = library.connection();
};

TEST_F(Variables, KeepTheirValuesAsTyped) {
    for (const QString& text : {u"it's"_s, u"1; Drop Table Tree --"_s, u"\"%_\\"_s, u"Δ😀"_s,
                                u"two\nlines"_s, u""_s, QString(256, u'9')}) {
        library.addValue(text, 3, text);
        data::Recordset rs;
        ASSERT_TRUE(funcs.GetVarInfoByVarName(text, rs, connection));
        EXPECT_EQ(test::remainingTexts(rs, u"Value"_s), QStringList{text});
    }
    data::Recordset rs;
    ASSERT_TRUE(funcs.GetVarInfo(rs, connection));
    EXPECT_EQ(test::remainingTexts(rs, u"VarName"_s).size(), 7);
}

TEST_F(Variables, AreChangedForOneFormula) {
    library.addValue(u"x"_s, 1, u"1"_s);
    library.addValue(u"x"_s, 2, u"2"_s);
    library.addValue(u"y"_s, 1, u"3"_s);
    ASSERT_TRUE(funcs.EditFormulaVarValue(u"x"_s, 1, u"it's"_s, connection));
    ASSERT_TRUE(funcs.EditFormulaVarPara(u"X"_s, 2, 1, u"Weight"_s, connection));
    EXPECT_EQ(stored(), (QStringList{u"x|1|it's|0|"_s, u"x|2|2|1|Weight"_s, u"y|1|3|0|"_s}));
}

TEST_F(Variables, ThatAreMissingStayMissing) {
    library.addValue(u"x"_s, 1, u"1"_s);
    EXPECT_TRUE(funcs.EditFormulaVarPara(u"x"_s, 2, 1, u"Weight"_s, connection));
    EXPECT_TRUE(funcs.EditFormulaVarValue(u"z"_s, 1, u"5"_s, connection));
    EXPECT_TRUE(funcs.ChangeVarBelong(u"z"_s, 1, 2, connection, u"5"_s));
    EXPECT_EQ(stored(), QStringList{u"x|1|1|0|"_s});
}

TEST_F(Variables, AreHandedOverWithOrWithoutANewValue) {
    library.addValue(u"x"_s, 0, u"1"_s);
    library.addValue(u"x"_s, 5, u"2"_s);
    ASSERT_TRUE(funcs.ChangeVarBelong(u"x"_s, 0, 7, connection, u""_s));
    ASSERT_TRUE(funcs.ChangeVarBelong(u"x"_s, 5, 8, connection, u"9"_s));
    EXPECT_EQ(stored(), (QStringList{u"x|7|1|0|"_s, u"x|8|9|0|"_s}));
}

TEST_F(Variables, OfAFormulaAreItsOwnAndTheUnowned) {
    library.addValue(u"x"_s, 5, u"other"_s);
    library.addValue(u"x"_s, 7, u"own"_s);
    library.addValue(u"x"_s, 0, u"unowned"_s);
    library.addValue(u"y"_s, 7, u"another name"_s);
    data::Recordset rs;
    ASSERT_TRUE(funcs.GetVarInfoOfFormula(u"X"_s, 7, rs, connection));
    QStringList values = test::remainingTexts(rs, u"Value"_s);
    values.sort();
    EXPECT_EQ(values, (QStringList{u"own"_s, u"unowned"_s}));
}

TEST_F(Variables, OfAFormulaAreFoundThroughTheIndex) {
    data::Recordset plan = connection.query(
        u"Explain Query Plan Select * From RecentVar Where VarName = ? And FormulaID In (?,0)"_s,
        {u"x"_s, 7});
    EXPECT_TRUE(test::remainingTexts(plan, u"detail"_s)
                    .join(u' ')
                    .contains(u"RecentVarName (VarName=? AND FormulaID=?)"_s));
}

TEST_F(Variables, FailOnAClosedConnection) {
    data::Connection closed;
    data::Recordset rs;
    EXPECT_FALSE(funcs.GetVarInfo(rs, closed));
    EXPECT_FALSE(funcs.GetVarInfoByVarName(u"x"_s, rs, closed));
    EXPECT_FALSE(funcs.GetVarInfoOfFormula(u"x"_s, 1, rs, closed));
    EXPECT_FALSE(funcs.AddNewVar(u"x"_s, 1, u"1"_s, closed));
    EXPECT_FALSE(funcs.EditFormulaVarValue(u"x"_s, 1, u"1"_s, closed));
    EXPECT_FALSE(funcs.EditFormulaVarPara(u"x"_s, 1, 1, u"1"_s, closed));
    EXPECT_FALSE(funcs.ChangeVarBelong(u"x"_s, 1, 2, closed, u"1"_s));
}

}  // namespace
}  // namespace varo
