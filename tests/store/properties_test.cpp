#include "store/db_funcs.h"
#include "support/test_library.h"

#include <gtest/gtest.h>

namespace varo {
namespace {

using namespace Qt::StringLiterals;

class Properties : public testing::Test {
  protected:
    QStringList stored() {
        return library.rows(
            u"Select PropID,PropName,FilterID,NodeID,NodeType From Property Order By rowid"_s);
    }

    test::TestLibrary library;
    clsDBFuncs& funcs = library.funcs();
    data::Connection& connection = library.connection();
};

TEST_F(Properties, AreListedByNodeAndByKindInOrderOfTheirNumber) {
    library.addProperty(2, u"b"_s, 0, 5, NodeTypeFolder);
    library.addProperty(1, u"a"_s, 0, 5, NodeTypeFolder);
    library.addProperty(3, u"c"_s, 0, 6, NodeTypeFolder);
    library.addProperty(1, u"of the formula"_s, 0, 5, NodeTypeFormula);
    data::Recordset rs;
    ASSERT_TRUE(funcs.GetProperty(5, NodeTypeFolder, rs, connection));
    EXPECT_EQ(test::remainingTexts(rs, u"PropName"_s), (QStringList{u"a"_s, u"b"_s}));
    ASSERT_TRUE(funcs.GetAllPropertyByType(NodeTypeFolder, rs, connection));
    EXPECT_EQ(test::remainingTexts(rs, u"PropName"_s), (QStringList{u"a"_s, u"b"_s, u"c"_s}));
    ASSERT_TRUE(funcs.GetPropertyByType(NodeTypeFormula, rs, connection));
    EXPECT_EQ(test::remainingTexts(rs, u"PropName"_s), QStringList{u"of the formula"_s});
}

TEST_F(Properties, AreChangedAndRemovedOneByOne) {
    library.addProperty(1, u"a"_s, 3, 5, NodeTypeFolder);
    library.addProperty(1, u"a"_s, 3, 5, NodeTypeFormula);
    library.addProperty(2, u"b"_s, 3, 5, NodeTypeFolder);
    ASSERT_TRUE(funcs.RenProperty(1, u"it's; --"_s, 5, NodeTypeFolder, connection));
    ASSERT_TRUE(funcs.EditRelation(1, 8, 5, NodeTypeFormula, connection));
    EXPECT_EQ(stored(), (QStringList{u"1|it's; --|3|5|1"_s, u"1|a|8|5|2"_s, u"2|b|3|5|1"_s}));
    ASSERT_TRUE(funcs.DelProperty(1, 5, NodeTypeFolder, connection));
    EXPECT_EQ(stored(), (QStringList{u"1|a|8|5|2"_s, u"2|b|3|5|1"_s}));
}

TEST_F(Properties, GoWithTheirNodeAlone) {
    library.addProperty(1, u"a"_s, 0, 5, NodeTypeFolder);
    library.addProperty(2, u"b"_s, 0, 5, NodeTypeFolder);
    library.addProperty(1, u"c"_s, 0, 5, NodeTypeFormula);
    ASSERT_TRUE(funcs.DelPropertyByNodeID(5, NodeTypeFolder, connection));
    EXPECT_EQ(stored(), QStringList{u"1|c|0|5|2"_s});
}

TEST_F(Properties, LocateTheNodesThatCarryThem) {
    const qint32 kept = library.addFormula(4, u"kept"_s);
    const qint32 deleted = library.addFormula(4, u"deleted"_s);
    library.addProperty(1, u"it's"_s, 11, kept, NodeTypeFormula);
    library.addProperty(1, u"it's"_s, 12, deleted, NodeTypeFormula);
    library.addProperty(1, u"IT'S"_s, 13, 4, NodeTypeFolder);
    ASSERT_TRUE(funcs.DelFormula(deleted, connection));

    data::Recordset rs;
    ASSERT_TRUE(funcs.GetLocateInfoByPropName(u"it's"_s, NodeTypeFormula, rs, connection));
    EXPECT_EQ(rs.integer(u"PID"), 4);
    EXPECT_EQ(rs.integer(u"NodeType"), 2);
    EXPECT_EQ(test::remainingRows(rs), QStringList{u"11|%1|2|4"_s.arg(kept)});
    ASSERT_TRUE(funcs.GetLocateInfoByPropName(u"it's"_s, NodeTypeFolder, rs, connection));
    EXPECT_EQ(rs.integer(u"FilterID"), 13);
    EXPECT_EQ(test::remainingRows(rs), QStringList{u"13|4|1"_s});
    EXPECT_FALSE(funcs.GetLocateInfoByPropName(u"it's"_s, 3, rs, connection));
    EXPECT_FALSE(rs.isOpen());
}

TEST_F(Properties, BringTheConditionsOfTheirFilter) {
    for (const char* row : {"3,9,0,1", "2,9,0,4", "4,9,3,4", "5,8,0,4"}) {
        connection.execute(u"Insert Into FilterCond(ID,UserID,ParentID,Type) Values(%1)"_s.arg(
            QLatin1StringView(row)));
    }
    connection.execute(
        u"Insert Into FilterExpressions(FilterID,ExpID,FieldName,TheConst) "
        "Values(9,2,'Span','it''s')"_s);
    data::Recordset rs;
    ASSERT_TRUE(funcs.GetResFilterCondByParentID(9, 0, rs, connection));
    EXPECT_EQ(test::remainingTexts(rs, u"ID"_s), (QStringList{u"2"_s, u"3"_s}));
    ASSERT_TRUE(funcs.GetResExpressions(9, 2, rs, connection));
    EXPECT_EQ(test::remainingTexts(rs, u"TheConst"_s), QStringList{u"it's"_s});
    ASSERT_TRUE(funcs.GetResExpressions(9, 3, rs, connection));
    EXPECT_TRUE(rs.atEnd());
}

TEST_F(Properties, FailWhenTheLibraryHasNoSuchTable) {
    connection.execute(u"Drop Table Property"_s);
    data::Recordset rs;
    EXPECT_FALSE(funcs.GetProperty(1, 1, rs, connection));
    EXPECT_FALSE(funcs.GetAllPropertyByType(1, rs, connection));
    EXPECT_FALSE(funcs.GetPropertyByType(1, rs, connection));
    EXPECT_FALSE(funcs.AddProperty(1, u"a"_s, 1, 1, 1, connection));
    EXPECT_FALSE(funcs.RenProperty(1, u"a"_s, 1, 1, connection));
    EXPECT_FALSE(funcs.EditRelation(1, 1, 1, 1, connection));
    EXPECT_FALSE(funcs.DelProperty(1, 1, 1, connection));
    EXPECT_FALSE(funcs.DelPropertyByNodeID(1, 1, connection));
    EXPECT_FALSE(funcs.GetLocateInfoByPropName(u"a"_s, 1, rs, connection));
}

}  // namespace
}  // namespace varo
