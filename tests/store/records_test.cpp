#include "library_test.h"

#include <functional>

namespace varo {
namespace {

/// Texts that a statement made of pieces, a pattern or a fixed-width field would get wrong.
const QStringList kOddTexts =
    u"it's,\"q\",100%,a_b,\\,x'; Drop Table Tree --,two\nlines,[a-z]*?#,😀公式"_s.split(u',') +
    QStringList{QString(255, u'n'), QString(256, u'长')};

class Records : public LibraryTest {
  protected:
    /// Folders / formulas / variables / properties, without their place.
    QString everything() {
        return rows(u"Select ID,Name From Tree"_s) + u" / "_s +
               rows(u"Select ID,Name,Formula,Memo From Formula"_s) + u" / "_s +
               rows(
                   u"Select VarName,FormulaID,Value,IfNull(VarSourceType,0),VarMemo From RecentVar"_s) +
               u" / "_s + rows(u"Select PropID,PropName,FilterID,NodeID,NodeType From Property"_s);
    }

    QString subfolders(qint32 parent) {
        return listed(funcs.GetChildFormulaNode(parent, rs, connection));
    }

    QString foundFolders(const QString& text, int mode) {
        return sorted(listed(funcs.FindFolder(text, rs, connection, mode)));
    }

    static QString sorted(const QString& texts) {
        QStringList list = texts.split(u' ');
        list.sort();
        return list.join(u' ');
    }
};

TEST_F(Records, ComeBehindTheirLastSibling) {
    const std::tuple<const char*, const char*> cases[] = {
        {"NULL", "3"},       {"5", "6"},          {"2147483646", "2147483647"},
        {"2147483647", "3"}, {"9000000000", "3"}, {"2.5", "3"},
        {"'x'", "3"},
    };
    for (const auto& [number, expected] : cases) {
        SCOPED_TRACE(number);
        if (qstrcmp(number, "9000000000") == 0) {
            test::requireSqlite();  // from here on, which alone has such numbers
        }
        connection.execute(u"Delete From Tree"_s);
        const qint32 parent = library.addFolder(0, u"parent"_s);
        library.addFolder(parent, u"first"_s);
        library.addFolder(parent, u"second"_s);
        connection.execute(
            u"Update Tree Set OrderID = %1 Where Name = 'first'"_s.arg(QLatin1StringView(number)));
        library.addFolder(parent, u"next"_s);
        EXPECT_EQ(subfolders(parent).section(u' ', -1), u"next"_s);
        EXPECT_EQ(rows(u"Select OrderID From Tree Where Name = 'next'"_s),
                  QLatin1StringView(expected));
        EXPECT_EQ(rows(u"Select OrderID From Tree Where Name = 'parent'"_s), u"1"_s);
    }
}

TEST_F(Records, AreAddedWithAllTheirFields) {
    qint32 id = 0;
    ASSERT_TRUE(funcs.AddNewFormula(7, u"beam"_s, u"q*l^2/8"_s, u"moment"_s, 2, id, connection));
    EXPECT_EQ(rows(u"Select ID,Name,Formula,Memo,PicType,PID,OrderID From Formula"_s),
              u"%1|beam|q*l^2/8|moment|2|7|1"_s.arg(id));
    EXPECT_EQ(listed(funcs.GetFormulaByID(id, rs, connection)), u"beam"_s);
    ASSERT_TRUE(funcs.GetFormulaByID(99, rs, connection));
    EXPECT_TRUE(rs.isOpen() && rs.atEnd());
}

TEST_F(Records, KeepTextsAndAreFoundByThemAsTheyWereTyped) {
    library.addFolder(0, u"other"_s);
    for (const QString& text : kOddTexts) {
        if (text.size() > 255) {
            test::requireSqlite();
        }
        const qint32 folder = library.addFolder(0, text);
        const qint32 formula = library.addFormula(folder, text, text, text);
        for (const int mode : {FindContains, FindEquals}) {
            EXPECT_EQ(foundFolders(text, mode), sorted(text));
            EXPECT_EQ(listed(funcs.FindFormula(text, rs, connection, mode), u"Formula"_s), text);
            EXPECT_EQ(listed(funcs.FindFormulaByMemo(text, rs, connection, mode), u"ID"_s),
                      QString::number(formula));
        }
        library.addValue(text, 3, text);
        EXPECT_EQ(listed(funcs.GetVarInfoByVarName(text, rs, connection), u"Value"_s), text);
    }
    const Statement elsewhere{u"Select * From Tree Where Name = ?"_s, {u"it's"_s}};
    EXPECT_EQ(listed(funcs.FindShowFolder(elsewhere, rs, connection)), u"it's"_s);
}

TEST_F(Records, AreFoundByPartOfTheNameOrAllOfIt) {
    connection.execute(u"Insert Into Tree(Name) Values('xaby'),('ab'),('AB'),('a%b'),('acb')"_s);
    EXPECT_EQ(foundFolders(u"ab"_s, FindContains), u"AB ab xaby"_s);
    EXPECT_EQ(foundFolders(u"ab"_s, FindEquals), u"AB ab"_s);
    EXPECT_EQ(foundFolders(u"a_b"_s, FindContains), u""_s);
    EXPECT_EQ(foundFolders(u""_s, FindContains), u"AB a%b ab acb xaby"_s);
    EXPECT_EQ(foundFolders(u""_s, FindEquals), u""_s);
}

TEST_F(Records, AreEditedAndDeletedAloneAndWithoutEffectWhenMissing) {
    for (const QString& name : {u"a"_s, u"b"_s}) {
        const qint32 folder = library.addFolder(0, name);
        const qint32 formula = library.addFormula(folder, name, u"x"_s, u"m"_s);
        library.addValue(u"x"_s, formula, u"1"_s);
        library.addValue(u"y"_s, formula, u"2"_s);
        library.addProperty(1, u"p"_s, 3, folder, NodeTypeFolder);
        library.addProperty(1, u"p"_s, 3, formula, NodeTypeFormula);
    }
    for (const qint32 id : {1, 99}) {
        EXPECT_TRUE(funcs.RenameFolder(id, u"it's"_s, connection));
        EXPECT_TRUE(funcs.RenameFormula(id, u"A"_s, connection));
        EXPECT_TRUE(funcs.EditFormulaExpression(id, u"x^2"_s, connection));
        EXPECT_TRUE(funcs.EditFormulaMemo(id, u";--"_s, connection));
        EXPECT_TRUE(funcs.EditFormulaVarValue(u"X"_s, id, u"5"_s, connection));
        EXPECT_TRUE(funcs.EditFormulaVarPara(u"X"_s, id, 1, u"Weight"_s, connection));
        EXPECT_TRUE(funcs.RenProperty(1, u"q"_s, id, NodeTypeFolder, connection));
        EXPECT_TRUE(funcs.EditRelation(1, 8, id, NodeTypeFormula, connection));
    }
    EXPECT_EQ(everything(),
              u"1|it's 2|b / 1|A|x^2|;-- 2|b|x|m / x|1|5|1|Weight y|1|2|0| x|2|1|0| y|2|2|0| / "
              "1|q|3|1|1 1|p|8|1|2 1|p|3|2|1 1|p|3|2|2"_s);
    for (const qint32 id : {1, 99}) {
        EXPECT_TRUE(funcs.EditAllFormulaInfo(id, u"B"_s, u"1"_s, u"n"_s, 2, connection));
        EXPECT_TRUE(funcs.DelFolder(id, connection));
        EXPECT_TRUE(funcs.ChangeVarBelong(u"x"_s, id, 2 * id + 5, connection, u""_s));
        EXPECT_TRUE(funcs.ChangeVarBelong(u"y"_s, id, 8, connection, u"9"_s));
        EXPECT_TRUE(funcs.DelProperty(1, id, NodeTypeFolder, connection));
    }
    EXPECT_EQ(everything(),
              u"2|b / 1|B|1|n 2|b|x|m / x|7|5|1|Weight y|8|9|0| x|2|1|0| y|2|2|0| / "
              "1|p|8|1|2 1|p|3|2|1 1|p|3|2|2"_s);
    library.addFormula(1, u"c"_s);
    library.addFormula(2, u"d"_s);
    EXPECT_TRUE(funcs.DelFormula(3, connection));
    for (const qint32 id : {2, 99}) {
        EXPECT_TRUE(funcs.DelFormulaByPID(id, connection));
        EXPECT_TRUE(funcs.DelPropertyByNodeID(id, NodeTypeFormula, connection));
    }
    EXPECT_EQ(rows(u"Select Name From Formula"_s), u"B"_s);
    EXPECT_EQ(rows(u"Select NodeID,NodeType From Property"_s), u"1|2 2|1"_s);
    EXPECT_TRUE(funcs.DelFolder(2, connection));
    EXPECT_EQ(library.addFolder(0, u"new"_s), 3) << "an identifier is never used again";
}

TEST_F(Records, ExchangeTheirPlacesAloneWhateverNumbersTheyHave) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"1 2 3 4", "a d c b", "1 4 3 2"},
        {"7 -3 9 5", "d b a c", "7 5 9 -3"},
        {"NULL NULL NULL NULL", "a d c b", "1 4 3 2"},
        {"1 5 5 5", "a d c b", "1 4 3 2"},
        {"5 5 7 9", "a d c b", "1 4 3 2"},
        {"1 2 3 2147483648", "a d c b", "1 4 3 2"},
        {"9000000000 3000000000 4000000000 5000000000", "d c b a", "4 3 2 1"},
        {"2 2.5 2.7 3", "a d c b", "1 4 3 2"},
        {"1 'x' 3 4", "a c b d", "1 3 2 4"},
    };
    for (const QString& name : {u"a"_s, u"b"_s, u"c"_s, u"d"_s}) {
        library.addFolder(0, name);
    }
    for (const auto& [numbers, names, numbersAfter] : cases) {
        SCOPED_TRACE(numbers);
        if (qstrcmp(numbers, "1 2 3 2147483648") == 0) {
            test::requireSqlite();  // as above
        }
        const QStringList list = QString(QLatin1StringView(numbers)).split(u' ');
        for (qsizetype i = 0; i < list.size(); ++i) {
            connection.execute(
                u"Update Tree Set OrderID = %1 Where ID = %2"_s.arg(list[i]).arg(i + 1));
        }
        ASSERT_TRUE(funcs.ExchangeOrderID(2, 4, u"tree"_s, connection));
        EXPECT_EQ(subfolders(0), QLatin1StringView(names));
        EXPECT_EQ(rows(u"Select OrderID From Tree Order By ID"_s), QLatin1StringView(numbersAfter));
    }
    EXPECT_FALSE(funcs.ExchangeOrderID(1, 99, u"Tree"_s, connection));
    EXPECT_FALSE(funcs.ExchangeOrderID(99, 1, u"Tree"_s, connection));
    EXPECT_FALSE(funcs.ExchangeOrderID(1, 2, u"Tree Set Name = '' --"_s, connection));
    EXPECT_EQ(subfolders(0), u"a c b d"_s);
    for (const qint32 folder : {7, 8, 7}) {
        library.addFormula(folder, u"f"_s);
    }
    ASSERT_TRUE(funcs.ExchangeOrderID(2, 3, u"Formula"_s, connection));
    EXPECT_EQ(rows(u"Select OrderID From Formula Order By ID"_s), u"1 2 1"_s)
        << "of different folders";

    test::requireSqlite();
    connection.execute(u"Drop Index TreeOrder"_s);
    connection.execute(u"Create Index TreeOrder On Tree (PID, OrderID) Where 0"_s);
    connection.close();
    library.addFile(library.fileName(),
                    test::fileContent(library.path()).replace("Where 0", "       "));
    connection.open(library.path());
    EXPECT_FALSE(funcs.ExchangeOrderID(2, 4, u"Tree"_s, connection)) << "by an index without rows";
}

TEST_F(Records, ThatShareALongTextAreSortedWithoutItWhereNoIndexServesTheOrder) {
    test::requireSqlite();
    connection.execute(u"Drop Index FormulaOrder"_s);
    const qint32 folder = library.addFolder(0, u"folder"_s);
    library.addFormula(folder, u"b"_s, {}, QString(1'100'000, u'b'));
    for (int i = 0; i < 200; ++i) {
        library.addFormula(folder, u"a"_s, {}, QString(20'000, u'a'));
    }
    connection.execute(u"Update Formula Set OrderID = ID = 1"_s);
    connection.close();
    test::shareLongText(library.path(), 12);
    connection.open(library.path());
    ASSERT_TRUE(funcs.GetFormulaByPID(folder, rs, connection));
    EXPECT_EQ(rs.integer(u"ID"), 2) << "the one with the text of its own comes last";
}

TEST_F(Records, WithAPictureAreListedInOrderOfAClause) {
    for (const QString& name : {u"b"_s, u"a"_s, u"removed"_s}) {
        library.addPicture(library.addFormula(1, name), "bytes");
    }
    library.addFormula(1, u"none"_s);
    ASSERT_TRUE(funcs.DelPicture(3, connection));
    for (const auto& [order, names] : {std::pair(u"Name"_s, u"a b"_s), {u"ID"_s, u"b a"_s}}) {
        EXPECT_EQ(listed(funcs.GetFormulaByOrder(order, rs, connection)), names);
    }
}

TEST_F(Records, OfVariablesAreSeenByTheirFormulaAndUnownedOnesByAllInAnyLetterCase) {
    library.addValue(u"σ"_s, 5, u"another's"_s);
    library.addValue(u"σ"_s, 7, u"own"_s);
    library.addValue(u"Σ"_s, 0, u"unowned"_s);
    library.addValue(u"Δx"_s, 7, u"step"_s);
    EXPECT_EQ(sorted(listed(funcs.GetVarInfoOfFormula(u"Σ"_s, 7, rs, connection), u"Value"_s)),
              u"own unowned"_s);
    EXPECT_EQ(listed(funcs.GetVarInfoOfFormula(u"δX"_s, 7, rs, connection), u"Value"_s), u"step"_s);
}

TEST_F(Records, OfPropertiesAreListedByNodeAndByKindAndFoundInAnyLetterCase) {
    library.addProperty(2, u"b"_s, 0, 5, NodeTypeFolder);
    library.addProperty(1, u"A"_s, 0, 5, NodeTypeFolder);
    library.addProperty(3, u"c"_s, 0, 6, NodeTypeFolder);
    library.addProperty(1, u"a"_s, 0, 5, NodeTypeFormula);
    EXPECT_EQ(listed(funcs.GetProperty(5, NodeTypeFolder, rs, connection), u"PropName"_s),
              u"A b"_s);
    EXPECT_EQ(listed(funcs.GetAllPropertyByType(NodeTypeFolder, rs, connection), u"PropName"_s),
              u"A b c"_s);
    ASSERT_TRUE(funcs.GetLocateInfoByPropName(u"a"_s, NodeTypeFolder, rs, connection));
    EXPECT_EQ(test::remainingRows(rs), QStringList{u"0|5|1"_s});
}

TEST_F(Records, OutOfReachFailEveryOperationWithoutATrace) {
    const QString a = u"a"_s;
    data::Connection to;
    qint32 id = -1;
    const std::function<bool()> operations[] = {
        [&] { return funcs.GetNodeInfo(rs, to); },
        [&] { return funcs.GetFormulaByOrder(u"Nothing"_s, rs, connection); },
        [&] { return funcs.FindFolder(a, rs, connection, 2); },
        [&] { return funcs.GetLocateInfoByPropName(a, 3, rs, connection); },
        [&] { return funcs.AddNewFormula(0, a, a, a, 0, id, to); },
        [&] { return funcs.ExchangeOrderID(1, 2, u"Tree"_s, to); },
        [&] { return funcs.AddNewPicture(1, library.path(), to); },
        [&] { return funcs.ExtractPicture(1, library.pathOf(a), to); },
    };
    ASSERT_TRUE(funcs.GetNodeInfo(rs, connection));
    for (const auto& operation : operations) {
        EXPECT_FALSE(operation()) << "operation " << &operation - operations;
        EXPECT_FALSE(rs.isOpen());
    }
    EXPECT_THROW(funcs.EditAllFormulaInfo(1, {}, {}, {}, 0, to), data::Error);
    EXPECT_EQ(id, -1);
    EXPECT_EQ(library.questions().informed, QStringList());
}

}  // namespace
}  // namespace varo
