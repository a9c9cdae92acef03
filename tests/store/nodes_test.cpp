#include "store/db_funcs.h"
#include "support/test_library.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

namespace varo {
namespace {

using namespace Qt::StringLiterals;

/// Texts that a statement made of pieces, a pattern or a fixed-width field would get wrong.
const QString OddTexts[] = {
    u"it's"_s,  u"\"q\""_s,         u"100%"_s,           u"a_b"_s,
    u"\\"_s,    u"x'; -- gone"_s,   u"two\nlines"_s,     u"[a-z]*?#"_s,
    u"😀公式"_s, QString(255, u'n'), QString(256, u'长'),
};

class Nodes : public testing::Test {
  protected:
    QStringList subfolders(qint32 parent) {
        data::Recordset rs;
        EXPECT_TRUE(funcs.GetChildFormulaNode(parent, rs, connection));
        return test::remainingTexts(rs, u"Name"_s);
    }

    QStringList formulasIn(qint32 folder) {
        data::Recordset rs;
        EXPECT_TRUE(funcs.GetFormulaByPID(folder, rs, connection));
        return test::remainingTexts(rs, u"Name"_s);
    }

    QStringList foundFolders(const QString& text, int mode) {
        data::Recordset rs;
        EXPECT_TRUE(funcs.FindFolder(text, rs, connection, mode));
        QStringList names = test::remainingTexts(rs, u"Name"_s);
        names.sort();
        return names;
    }

    test::TestLibrary library;
    clsDBFuncs& funcs = library.funcs();
    data::Connection& connection = library.connection();
};

TEST_F(Nodes, ComeBehindTheirLastSibling) {
    const qint32 parent = library.addFolder(0, u"parent"_s);
    const qint32 first = library.addFolder(parent, u"first"_s);
    library.addFolder(parent, u"second"_s);
    const qint32 last = library.addFolder(parent, u"last"_s);
    EXPECT_EQ(library.rows(u"Select OrderID From Tree Where PID = %1"_s.arg(parent)),
              (QStringList{u"1"_s, u"2"_s, u"3"_s}));
    connection.execute(u"Update Tree Set OrderID = 5 Where ID = ?"_s, {last});
    const qint32 next = library.addFolder(parent, u"next"_s);
    EXPECT_EQ(library.rows(u"Select OrderID From Tree Where ID = %1"_s.arg(next)),
              QStringList{u"6"_s});
    EXPECT_EQ(subfolders(parent), (QStringList{u"first"_s, u"second"_s, u"last"_s, u"next"_s}));
    EXPECT_TRUE(subfolders(first).isEmpty());
    EXPECT_EQ(subfolders(0), QStringList{u"parent"_s});
}

TEST_F(Nodes, AreAddedWithAllTheirFields) {
    const qint32 folder = library.addFolder(0, u"folder"_s);
    qint32 id = 0;
    ASSERT_TRUE(
        funcs.AddNewFormula(folder, u"beam"_s, u"q*l^2/8"_s, u"moment"_s, 2, id, connection));
    data::Recordset rs;
    ASSERT_TRUE(funcs.GetFormulaByID(id, rs, connection));
    EXPECT_EQ(rs.integer(u"ID"), id);
    EXPECT_EQ(rs.text(u"Name"), u"beam"_s);
    EXPECT_EQ(rs.text(u"Formula"), u"q*l^2/8"_s);
    EXPECT_EQ(rs.text(u"Memo"), u"moment"_s);
    EXPECT_EQ(rs.integer(u"PicType"), 2);
    EXPECT_EQ(rs.integer(u"PID"), folder);
    EXPECT_EQ(rs.integer(u"OrderID"), 1);
    EXPECT_EQ(connection.field(u"Formula"_s, u"pic"_s, id).size(), 0);
}

TEST_F(Nodes, KeepAndFindTextsAsTheyWereTyped) {
    for (const QString& text : OddTexts) {
        const qint32 folder = library.addFolder(0, text);
        const qint32 formula = library.addFormula(folder, text, text, text);
        library.addFolder(0, u"other"_s);
        for (const int mode : {FindContains, FindEquals}) {
            data::Recordset rs;
            ASSERT_TRUE(funcs.FindFolder(text, rs, connection, mode));
            EXPECT_EQ(test::remainingTexts(rs, u"Name"_s), QStringList{text});
            ASSERT_TRUE(funcs.FindFormula(text, rs, connection, mode));
            EXPECT_EQ(test::remainingTexts(rs, u"Formula"_s), QStringList{text});
            ASSERT_TRUE(funcs.FindFormulaByMemo(text, rs, connection, mode));
            EXPECT_EQ(test::remainingTexts(rs, u"ID"_s), QStringList{QString::number(formula)});
        }
        ASSERT_TRUE(funcs.DelFolder(folder, connection));
        ASSERT_TRUE(funcs.DelFormula(formula, connection));
    }
}

TEST_F(Nodes, AreFoundByPartOfTheNameOrAllOfIt) {
    for (const QString& name : {u"xaby"_s, u"ab"_s, u"AB"_s, u"a%b"_s, u"acb"_s}) {
        library.addFolder(0, name);
    }
    EXPECT_EQ(foundFolders(u"ab"_s, FindContains), (QStringList{u"AB"_s, u"ab"_s, u"xaby"_s}));
    EXPECT_EQ(foundFolders(u"ab"_s, FindEquals), (QStringList{u"AB"_s, u"ab"_s}));
    EXPECT_EQ(foundFolders(u"a%b"_s, FindContains), QStringList{u"a%b"_s});
    EXPECT_EQ(foundFolders(u"a_b"_s, FindContains), QStringList{});
    EXPECT_EQ(foundFolders(u""_s, FindContains).size(), 5);
    EXPECT_EQ(foundFolders(u""_s, FindEquals), QStringList{});
}

TEST_F(Nodes, AreNotFoundInAnUnknownMode) {
    data::Recordset rs;
    ASSERT_TRUE(funcs.GetNodeInfo(rs, connection));
    EXPECT_FALSE(funcs.FindFolder(u"a"_s, rs, connection, 2));
    EXPECT_FALSE(rs.isOpen());
    EXPECT_FALSE(funcs.FindFormula(u"a"_s, rs, connection, -1));
    EXPECT_FALSE(funcs.FindFormulaByMemo(u"a"_s, rs, connection, 2));
}

TEST_F(Nodes, AreShownByAStatementMadeElsewhere) {
    library.addFolder(0, u"it's"_s);
    library.addFormula(0, u"f"_s);
    data::Recordset rs;
    ASSERT_TRUE(funcs.FindShowFolder({u"Select * From Tree Where Name = ?"_s, {u"it's"_s}}, rs,
                                     connection));
    EXPECT_EQ(test::remainingTexts(rs, u"Name"_s), QStringList{u"it's"_s});
    ASSERT_TRUE(funcs.FindShowFormula({u"Select * From Formula"_s, {}}, rs, connection));
    EXPECT_EQ(test::remainingTexts(rs, u"Name"_s), QStringList{u"f"_s});
    EXPECT_FALSE(funcs.FindShowFolder({u"Select * From Tree Where"_s, {}}, rs, connection));
    EXPECT_FALSE(rs.isOpen());
}

TEST_F(Nodes, GiveAnEmptyListingWhenThereAreNone) {
    data::Recordset rs;
    EXPECT_TRUE(funcs.GetFormulaByID(99, rs, connection));
    EXPECT_TRUE(rs.isOpen() && rs.atEnd());
    EXPECT_TRUE(funcs.GetFormulaByPID(99, rs, connection));
    EXPECT_TRUE(rs.isOpen() && rs.atEnd());
    EXPECT_TRUE(funcs.GetNodeInfo(rs, connection));
    EXPECT_TRUE(rs.isOpen() && rs.atEnd());
}

TEST_F(Nodes, AreDeletedOneByOne) {
    const qint32 folder = library.addFolder(0, u"folder"_s);
    const qint32 other = library.addFolder(0, u"other"_s);
    library.addFormula(folder, u"a"_s);
    const qint32 formula = library.addFormula(folder, u"b"_s);
    library.addFormula(other, u"c"_s);
    ASSERT_TRUE(funcs.DelFolder(folder, connection));
    EXPECT_EQ(subfolders(0), QStringList{u"other"_s});
    EXPECT_EQ(formulasIn(folder), (QStringList{u"a"_s, u"b"_s}));
    ASSERT_TRUE(funcs.DelFormula(formula, connection));
    EXPECT_EQ(formulasIn(folder), QStringList{u"a"_s});
    ASSERT_TRUE(funcs.DelFormulaByPID(other, connection));
    EXPECT_TRUE(formulasIn(other).isEmpty());
    EXPECT_EQ(subfolders(0), QStringList{u"other"_s});
    EXPECT_GT(library.addFolder(0, u"new"_s), other);
}

TEST_F(Nodes, AreEditedAlone) {
    const qint32 id = library.addFormula(1, u"a"_s, u"x"_s, u"m"_s);
    library.addFormula(1, u"b"_s, u"y"_s, u"n"_s);
    ASSERT_TRUE(funcs.EditFormulaMemo(id, u"it's; --"_s, connection));
    ASSERT_TRUE(funcs.EditFormulaExpression(id, u"x^2"_s, connection));
    ASSERT_TRUE(funcs.RenameFormula(id, u"A"_s, connection));
    const QString all = u"Select Name,Formula,Memo,PicType From Formula Order By ID"_s;
    EXPECT_EQ(library.rows(all), (QStringList{u"A|x^2|it's; --|0"_s, u"b|y|n|0"_s}));
    ASSERT_TRUE(funcs.EditAllFormulaInfo(id, u"B"_s, u"1"_s, u""_s, 2, connection));
    EXPECT_EQ(library.rows(all), (QStringList{u"B|1||2"_s, u"b|y|n|0"_s}));

    const qint32 folder = library.addFolder(0, u"old"_s);
    ASSERT_TRUE(funcs.RenameFolder(folder, u"new"_s, connection));
    EXPECT_EQ(subfolders(0), QStringList{u"new"_s});
}

TEST_F(Nodes, ThatAreMissingAreEditedWithoutEffect) {
    library.addFormula(1, u"a"_s);
    library.addFolder(0, u"f"_s);
    const auto everything = [&] {
        return library.rows(u"Select * From Formula"_s) + library.rows(u"Select * From Tree"_s);
    };
    const QStringList before = everything();
    EXPECT_TRUE(funcs.RenameFolder(99, u"x"_s, connection));
    EXPECT_TRUE(funcs.RenameFormula(99, u"x"_s, connection));
    EXPECT_TRUE(funcs.DelFolder(99, connection));
    EXPECT_TRUE(funcs.DelFormula(99, connection));
    EXPECT_TRUE(funcs.DelFormulaByPID(99, connection));
    EXPECT_TRUE(funcs.EditFormulaMemo(99, u"x"_s, connection));
    EXPECT_TRUE(funcs.EditFormulaExpression(99, u"x"_s, connection));
    EXPECT_TRUE(funcs.EditAllFormulaInfo(99, u"x"_s, u"x"_s, u"x"_s, 0, connection));
    EXPECT_EQ(everything(), before);
}

TEST_F(Nodes, SwapTheirPlaces) {
    const qint32 a = library.addFolder(0, u"a"_s);
    library.addFolder(0, u"b"_s);
    const qint32 c = library.addFolder(0, u"c"_s);
    const qint32 f = library.addFormula(a, u"f"_s);
    const qint32 g = library.addFormula(a, u"g"_s);
    ASSERT_TRUE(funcs.ExchangeOrderID(a, c, u"Tree"_s, connection));
    EXPECT_EQ(subfolders(0), (QStringList{u"c"_s, u"b"_s, u"a"_s}));
    EXPECT_EQ(formulasIn(a), (QStringList{u"f"_s, u"g"_s}));
    ASSERT_TRUE(funcs.ExchangeOrderID(f, g, u"Formula"_s, connection));
    EXPECT_EQ(formulasIn(a), (QStringList{u"g"_s, u"f"_s}));
    EXPECT_EQ(subfolders(0), (QStringList{u"c"_s, u"b"_s, u"a"_s}));
}

TEST_F(Nodes, StayWhereTheyAreWhenTheOtherIsMissing) {
    const qint32 a = library.addFolder(0, u"a"_s);
    const qint32 b = library.addFolder(0, u"b"_s);
    const QStringList before = library.rows(u"Select * From Tree"_s);
    EXPECT_FALSE(funcs.ExchangeOrderID(a, 99, u"Tree"_s, connection));
    EXPECT_FALSE(funcs.ExchangeOrderID(99, a, u"Tree"_s, connection));
    EXPECT_FALSE(funcs.ExchangeOrderID(a, b, u"Property"_s, connection));
    EXPECT_FALSE(funcs.ExchangeOrderID(a, b, u"Tree Set Name = '' --"_s, connection));
    EXPECT_EQ(library.rows(u"Select * From Tree"_s), before);
}

TEST_F(Nodes, FailWithoutATraceOnAClosedConnection) {
    data::Connection closed;
    data::Recordset rs;
    ASSERT_TRUE(funcs.GetNodeInfo(rs, connection));
    qint32 id = -1;
    const std::function<bool()> operations[] = {
        [&] { return funcs.GetChildFormulaNode(0, rs, closed); },
        [&] { return funcs.GetFormulaByPID(0, rs, closed); },
        [&] { return funcs.GetFormulaByID(0, rs, closed); },
        [&] { return funcs.GetNodeInfo(rs, closed); },
        [&] { return funcs.GetFormulaByOrder(u"ID"_s, rs, closed); },
        [&] { return funcs.FindFolder(u"a"_s, rs, closed, FindEquals); },
        [&] { return funcs.FindFormula(u"a"_s, rs, closed, FindEquals); },
        [&] { return funcs.FindFormulaByMemo(u"a"_s, rs, closed, FindEquals); },
        [&] { return funcs.RenameFolder(1, u"a"_s, closed); },
        [&] { return funcs.RenameFormula(1, u"a"_s, closed); },
        [&] { return funcs.DelFolder(1, closed); },
        [&] { return funcs.DelFormula(1, closed); },
        [&] { return funcs.DelFormulaByPID(1, closed); },
        [&] { return funcs.AddNewFolder(0, u"a"_s, id, closed); },
        [&] { return funcs.AddNewFormula(0, u"a"_s, u"b"_s, u"c"_s, 0, id, closed); },
        [&] { return funcs.EditFormulaMemo(1, u"a"_s, closed); },
        [&] { return funcs.EditFormulaExpression(1, u"a"_s, closed); },
        [&] { return funcs.ExchangeOrderID(1, 2, u"Tree"_s, closed); },
    };
    for (const auto& operation : operations) {
        EXPECT_FALSE(operation());
        EXPECT_FALSE(rs.isOpen());
    }
    EXPECT_EQ(id, -1);
    EXPECT_THROW(funcs.EditAllFormulaInfo(1, {}, {}, {}, 0, closed), data::Error);
    EXPECT_TRUE(library.questions().informed.isEmpty());
}

TEST_F(Nodes, AreListedInOrderOfAClauseWhenTheyHaveAPicture) {
    const qint32 b = library.addFormula(1, u"b"_s);
    const qint32 a = library.addFormula(1, u"a"_s);
    library.addFormula(1, u"none"_s);
    const qint32 removed = library.addFormula(1, u"removed"_s);
    for (const qint32 id : {a, b, removed}) {
        library.addPicture(id, "bytes");
    }
    ASSERT_TRUE(funcs.DelPicture(removed, connection));
    data::Recordset rs;
    ASSERT_TRUE(funcs.GetFormulaByOrder(u"Name"_s, rs, connection));
    EXPECT_EQ(test::remainingTexts(rs, u"Name"_s), (QStringList{u"a"_s, u"b"_s}));
    ASSERT_TRUE(funcs.GetFormulaByOrder(u"ID"_s, rs, connection));
    EXPECT_EQ(test::remainingTexts(rs, u"Name"_s), (QStringList{u"b"_s, u"a"_s}));
    EXPECT_FALSE(funcs.GetFormulaByOrder(u"Nothing"_s, rs, connection));
}

}  // namespace
}  // namespace varo
