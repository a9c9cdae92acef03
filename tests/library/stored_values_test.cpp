#include "library/stored_values.h"

#include "library/open_libraries.h"

namespace varo::test {
namespace {

/// a is 3 for 弯曲, the unowned b is 5.
class StoredValuesTest : public testing::Test, protected OpenLibraries {
  protected:
    StoredValuesTest() { addValues(); }

    void addValues() {
        first.addValue(u"a"_s, bending, u"3"_s);
        first.addValue(u"b"_s, 0, u"5"_s);
    }

    /// The values of a and b that a formula sees, joined by blanks.
    QString seen(qint32 formula) {
        QStringList texts;
        for (const StoredValue& each : values.valuesOf({u"a"_s, u"b"_s}, formula)) {
            texts.append(each.isRead ? each.value : u"?"_s + each.value);
        }
        return texts.join(u' ');
    }

    /// "formula|value" for each row of a variable, in the order of the formulas.
    QString rows(const QString& name) {
        const QString query =
            u"select FormulaID, Value from RecentVar where VarName = '%1' order by FormulaID"_s;
        return first.rows(query.arg(name)).join(u' ');
    }

    StoredValues values{library};
    const QString notAdded = u"无法添加新的变量！"_s;
};

TEST_F(StoredValuesTest, AFormulaSeesItsOwnThenTheUnownedThenZero) {
    const QStringList many = QStringList(100, u"c"_s) + QStringList{u"A"_s, u"b"_s};
    const std::vector<StoredValue> ofMany = values.valuesOf(many, bending);
    EXPECT_EQ(ofMany[99].value + ofMany[100].value + ofMany[101].value, u"035"_s);
    library.variables().Clear();
    EXPECT_EQ(seen(bending), u"3 5"_s);
    EXPECT_EQ(seen(shear), u"0 5"_s);
    EXPECT_EQ(values.valuesOf({u"B"_s}, bending).front().value, u"5"_s);
    values.store(u"b"_s, bending, u"9"_s);
    EXPECT_EQ(seen(shear), u"0 0"_s) << "taken over";
    values.store(u"b"_s, shear, u"2"_s);
    EXPECT_EQ(seen(bending), u"3 9"_s);
}

TEST_F(StoredValuesTest, ATypedValueBecomesTheFormulasOwn) {
    const QString longest(255, u'7');
    const struct {
        const char* what;
        QString name, typed, rows;
        QString shown = typed;
        QString failure = {};
    } cases[] = {
        {"a new value", u"a"_s, u"4.5"_s, u"1|4.5"_s},
        {"the same value", u"a"_s, u"3"_s, u"1|3"_s},
        {"blanks around it", u"a"_s, u"  12 "_s, u"1|12"_s},
        {"nothing, for its own", u"a"_s, u""_s, u"1|0"_s, u"0"_s},
        {"zero, for its own", u"a"_s, u"0"_s, u"1|0"_s},
        {"a statement", u"a"_s, u"'; drop table Tree; --"_s, u"1|'; drop table Tree; --"_s},
        {"255 characters", u"a"_s, longest, u"1|"_s + longest},
        {"256 characters", u"a"_s, longest + u'7', u"1|3"_s, u"0"_s,
         u"给定变量的值超过255个字符"_s},
        {"the unowned row is taken over", u"b"_s, u"7"_s, u"1|7"_s},
        {"zero takes nothing over", u"b"_s, u"0"_s, u"0|5"_s},
        {"zero in another spelling", u"b"_s, u"-0.0e5"_s, u"0|5"_s},
        {"nothing takes over", u"b"_s, u""_s, u"1|0"_s, u"0"_s},
        {"no value was stored", u"c"_s, u"text"_s, u"1|text"_s},
        {"no value was stored, zero", u"c"_s, u"0"_s, u""_s},
        {"in capitals", u"A"_s, u"8"_s, u"1|8"_s},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        first.connection().execute(u"delete from RecentVar"_s);
        addValues();
        library.close();
        ASSERT_TRUE(library.open(1));
        const StoredEdit edit = values.store(each.name, bending, each.typed);
        EXPECT_EQ(edit.shown, each.shown);
        EXPECT_EQ(edit.failure, each.failure);
        EXPECT_EQ(rows(each.name.toLower()), each.rows);
    }
}

TEST_F(StoredValuesTest, WhatCannotBeStoredIsToldAndTheStoredValueStaysKnown) {
    EXPECT_EQ(seen(bending), u"3 5"_s);
    first.refuse("Update", "RecentVar");
    EXPECT_EQ(values.store(u"a"_s, bending, u"4"_s).failure, u"无法编辑选定变量的值！"_s);
    EXPECT_EQ(values.storePicked(u"a"_s, bending, u"4"_s).failure, u"无法编辑选定变量的值！"_s);
    EXPECT_EQ(values.store(u"b"_s, bending, u"4"_s).failure, notAdded);
    first.allow();
    first.refuse("Insert", "RecentVar");
    const StoredEdit edit = values.store(u"c"_s, bending, u" 4"_s);
    EXPECT_EQ(edit.failure, notAdded);
    EXPECT_EQ(edit.shown, u" 4"_s) << "as it was typed";
    EXPECT_EQ(seen(bending), u"3 5"_s);
}

TEST_F(StoredValuesTest, AreNotStoredInAFileThatIsNoLongerTheLibrary) {
    const QByteArray other = fileContent(second.path());
    int told = 0;
    library.setReplacedNotice([&] { ++told; });
    library.close();
    ASSERT_TRUE(library.open(1));
    EXPECT_EQ(seen(bending), u"3 5"_s);
    ASSERT_TRUE(QFile::remove(first.path()) && QFile::copy(second.path(), first.path()));
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(values.store(u"a"_s, bending, u"4"_s).failure, u"无法编辑选定变量的值！"_s);
    }
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(library.open(1)) << "what is there is opened";
    EXPECT_EQ(library.variables().Count(), 0);
    EXPECT_EQ(values.store(u"a"_s, bending, u"4"_s).failure, QString());
    EXPECT_NE(fileContent(first.path()), other);
}

TEST_F(StoredValuesTest, WhatCannotBeReadIsSaidToBeSoAndCountsAsZero) {
    EXPECT_EQ(values.valuesOf({u"a"_s}, bending).front().value, u"3"_s);
    requireSqlite();
    first.connection().execute(u"alter table RecentVar rename to Gone"_s);
    EXPECT_EQ(seen(bending), u"3 ?0"_s) << "what is known stays known";
    EXPECT_EQ(values.store(u"b"_s, bending, u"4"_s).failure, notAdded);
    first.connection().execute(u"alter table Gone rename to RecentVar"_s);
    EXPECT_EQ(seen(bending), u"3 5"_s);
}

TEST_F(StoredValuesTest, TheSourceAndItsParameterStayWithAValueThatIsTypedOrPicked) {
    const QString table = u"材料.mdb->钢"_s;
    first.setSource(u"a"_s, bending, VarSourceTable, table);
    first.setSource(u"b"_s, 0, VarSourceTable, table);
    EXPECT_EQ(values.tableOf(u"A"_s, bending), table);
    EXPECT_EQ(values.tableOf(u"a"_s, shear), std::nullopt);
    EXPECT_EQ(values.tableOf(u"b"_s, bending), std::nullopt) << "unowned";
    for (const QString& value : {u"3"_s, u"4"_s, u" 206000"_s}) {
        EXPECT_EQ(value[0] == u' ' ? values.storePicked(u"a"_s, bending, value).failure
                                   : values.store(u"a"_s, bending, value).failure,
                  QString());
        const StoredValue stored = values.valuesOf({u"a"_s}, bending).front();
        EXPECT_EQ(stored.source, VarSourceTable);
        EXPECT_EQ(stored.parameter, table);
        EXPECT_EQ(stored.value, value);
    }
    values.storePicked(u"a"_s, shear, u"1"_s);
    EXPECT_EQ(rows(u"a"_s), u"1| 206000"_s) << "only where a formula has a value of its own";
}

TEST_F(StoredValuesTest, AreThoseOfTheLibraryThatIsOpen) {
    second.addValue(u"a"_s, flow, u"2"_s);
    for (const int number : {1, 2, 1}) {
        ASSERT_TRUE(library.open(number));
        EXPECT_EQ(library.number(), number);
        EXPECT_EQ(library.folder(), (number == 1 ? first : second).folder());
        EXPECT_EQ(seen(1), number == 1 ? u"3 5"_s : u"2 0"_s);
    }
}

TEST_F(StoredValuesTest, StayWhenTheSameFileIsOpenedUnderAnotherNumber) {
    configure(first);
    EXPECT_EQ(seen(bending), u"3 5"_s);
    const data::Transaction open(library.connection());
    ASSERT_TRUE(library.open(3));
    EXPECT_EQ(library.number(), 3);
    EXPECT_EQ(library.variables().Count(), 2);
    library.connection().execute(u"Delete From Tree"_s);
    EXPECT_EQ(outline(first).section(u'(', 0, 0), u"梁"_s) << "the transaction goes on";
}

TEST_F(StoredValuesTest, AreForgottenWithALibraryThatCannotBeOpened) {
    TestLibrary missing;
    configure(missing);
    ASSERT_TRUE(QFile::remove(missing.path()));
    for (const int number : {0, 3, 4, -1}) {
        ASSERT_TRUE(library.open(1));
        EXPECT_EQ(seen(bending), u"3 5"_s);
        EXPECT_FALSE(library.open(number));
        EXPECT_FALSE(library.isOpen());
        EXPECT_EQ(library.number(), 0);
        EXPECT_EQ(library.variables().Count(), 0);
    }
    EXPECT_TRUE(questions.informed.isEmpty());
}

}  // namespace
}  // namespace varo::test
