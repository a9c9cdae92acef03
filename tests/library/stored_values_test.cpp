#include "library/stored_values.h"

#include "support/test_library.h"

#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

/// A library with two formulas: a is 3 for the first, the unowned b is 5.
class StoredValuesTest : public testing::Test {
  protected:
    StoredValuesTest() {
        first_ = library_.addFormula(0, u"和"_s, u"a+b"_s);
        second_ = library_.addFormula(0, u"差"_s, u"a-b"_s);
        library_.addValue(u"a"_s, first_, u"3"_s);
        library_.addValue(u"b"_s, 0, u"5"_s);
        QString key;
        bool added = false;
        libraries_.Add(library_.fileName(), library_.folder(), u"库"_s, key, {}, added);
        EXPECT_TRUE(current_.open(1));
    }

    /// The values of a and b that a formula sees, joined by blanks.
    QString seen(qint32 formula) {
        QStringList texts;
        for (const StoredValue& each : values_.valuesOf({u"a"_s, u"b"_s}, formula)) {
            texts.append(each.isRead ? each.value : u"?"_s + each.value);
        }
        return texts.join(u' ');
    }

    /// "formula|value" for each row of a variable, in the order of the formulas.
    QString rows(const QString& name) {
        return library_
            .rows(
                u"select FormulaID, Value from RecentVar where VarName = '%1' order by "
                "FormulaID"_s.arg(name))
            .join(u' ');
    }

    TestLibrary library_;
    colFormulaDB libraries_;
    CurrentLibrary current_{libraries_, library_.questions()};
    StoredValues values_{current_};
    qint32 first_ = 0;
    qint32 second_ = 0;
};

TEST_F(StoredValuesTest, AFormulaSeesItsOwnThenTheUnownedThenZero) {
    EXPECT_EQ(seen(first_), u"3 5"_s);
    EXPECT_EQ(seen(second_), u"0 5"_s);
    EXPECT_EQ(values_.valuesOf({u"B"_s}, first_).front().value, u"5"_s);
}

TEST_F(StoredValuesTest, ATypedValueBecomesTheFormulasOwn) {
    const QString refused = u"给定变量的值超过255个字符"_s;
    struct {
        const char* what;
        QString name, typed, shown, rows, failure;
    } const cases[] = {
        {"a new value", u"a"_s, u"4.5"_s, u"4.5"_s, u"1|4.5"_s, {}},
        {"the same value", u"a"_s, u"3"_s, u"3"_s, u"1|3"_s, {}},
        {"blanks around it", u"a"_s, u"  12 "_s, u"  12 "_s, u"1|12"_s, {}},
        {"nothing, for its own", u"a"_s, u""_s, u"0"_s, u"1|0"_s, {}},
        {"zero, for its own", u"a"_s, u"0"_s, u"0"_s, u"1|0"_s, {}},
        {"a statement",
         u"a"_s,
         u"'; drop table Tree; --"_s,
         u"'; drop table Tree; --"_s,
         u"1|'; drop table Tree; --"_s,
         {}},
        {"wildcards", u"a"_s, u"100%_\""_s, u"100%_\""_s, u"1|100%_\""_s, {}},
        {"outside the basic plane", u"a"_s, u"𝛔😀"_s, u"𝛔😀"_s, u"1|𝛔😀"_s, {}},
        {"255 characters",
         u"a"_s,
         QString(255, u'7'),
         QString(255, u'7'),
         u"1|"_s + QString(255, u'7'),
         {}},
        {"256 characters", u"a"_s, QString(256, u'8'), u"0"_s, u"1|3"_s, refused},
        {"the unowned row is taken over", u"b"_s, u"7"_s, u"7"_s, u"1|7"_s, {}},
        {"zero takes nothing over", u"b"_s, u"0"_s, u"0"_s, u"0|5"_s, {}},
        {"zero in another spelling", u"b"_s, u"-0.0e5"_s, u"-0.0e5"_s, u"0|5"_s, {}},
        {"nothing takes over", u"b"_s, u""_s, u"0"_s, u"1|0"_s, {}},
        {"nobody had a value", u"c"_s, u"text"_s, u"text"_s, u"1|text"_s, {}},
        {"nobody had a value, zero", u"c"_s, u"0"_s, u"0"_s, u""_s, {}},
        {"in capitals", u"A"_s, u"8"_s, u"8"_s, u"1|8"_s, {}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        library_.connection().execute(u"delete from RecentVar"_s);
        library_.addValue(u"a"_s, first_, u"3"_s);
        library_.addValue(u"b"_s, 0, u"5"_s);
        current_.close();
        ASSERT_TRUE(current_.open(1));
        const StoredEdit edit = values_.store(each.name, first_, each.typed);
        EXPECT_EQ(edit.shown, each.shown);
        EXPECT_EQ(edit.failure, each.failure);
        EXPECT_EQ(rows(each.name.toLower()), each.rows);
    }
}

TEST_F(StoredValuesTest, AValueThatWasTakenOverIsNoLongerSeenByOtherFormulas) {
    values_.store(u"b"_s, first_, u"9"_s);
    EXPECT_EQ(seen(second_), u"0 0"_s);
    values_.store(u"b"_s, second_, u"2"_s);
    EXPECT_EQ(seen(first_), u"3 9"_s);
    EXPECT_EQ(rows(u"b"_s), u"1|9 2|2"_s);
}

TEST_F(StoredValuesTest, WhatCannotBeStoredIsToldAndTheStoredValueStaysKnown) {
    EXPECT_EQ(seen(first_), u"3 5"_s);
    library_.connection().execute(
        u"create trigger u before update on RecentVar begin select raise(abort, 'no'); end"_s);
    library_.connection().execute(
        u"create trigger i before insert on RecentVar begin select raise(abort, 'no'); end"_s);
    const QString notAdded = u"无法添加新的变量！"_s;
    EXPECT_EQ(values_.store(u"a"_s, first_, u"4"_s).failure, u"无法编辑选定变量的值！"_s);
    EXPECT_EQ(values_.storePicked(u"a"_s, first_, u"4"_s).failure, u"无法编辑选定变量的值！"_s);
    EXPECT_EQ(values_.store(u"b"_s, first_, u"4"_s).failure, notAdded);
    const StoredEdit edit = values_.store(u"c"_s, first_, u" 4"_s);
    EXPECT_EQ(edit.failure, notAdded);
    EXPECT_EQ(edit.shown, u" 4"_s) << "as it was typed";
    EXPECT_EQ(seen(first_), u"3 5"_s);
}

TEST_F(StoredValuesTest, WhatCannotBeReadIsSaidToBeSoAndCountsAsZero) {
    EXPECT_EQ(values_.valuesOf({u"a"_s}, first_).front().value, u"3"_s);
    library_.connection().execute(u"alter table RecentVar rename to Gone"_s);
    EXPECT_EQ(seen(first_), u"3 ?0"_s) << "what is known stays known";
    EXPECT_EQ(values_.store(u"b"_s, first_, u"4"_s).failure, u"无法添加新的变量！"_s);
    library_.connection().execute(u"alter table Gone rename to RecentVar"_s);
    EXPECT_EQ(seen(first_), u"3 5"_s);
}

TEST_F(StoredValuesTest, TheSourceAndItsParameterStayWithAValueThatIsTypedOrPicked) {
    ASSERT_TRUE(library_.funcs().EditFormulaVarPara(u"a"_s, first_, VarSourceTable,
                                                    u"材料.mdb->钢"_s, library_.connection()));
    const auto expectTable = [this](const QString& value) {
        const StoredValue stored = values_.valuesOf({u"a"_s}, first_).front();
        EXPECT_EQ(stored.source, VarSourceTable);
        EXPECT_EQ(stored.parameter, u"材料.mdb->钢"_s);
        EXPECT_EQ(stored.value, value);
    };
    expectTable(u"3"_s);
    values_.store(u"a"_s, first_, u"4"_s);
    expectTable(u"4"_s);
    EXPECT_EQ(values_.storePicked(u"a"_s, first_, u" 206000"_s).failure, QString());
    expectTable(u" 206000"_s);
    EXPECT_EQ(rows(u"a"_s), u"1| 206000"_s);
    values_.storePicked(u"a"_s, second_, u"1"_s);
    EXPECT_EQ(rows(u"a"_s), u"1| 206000"_s) << "only where a formula has a value of its own";
}

}  // namespace
}  // namespace varo::test
