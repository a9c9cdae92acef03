#include "library/variable_sources.h"

#include "library/open_libraries.h"
#include "support/no_waiting.h"

namespace varo::test {
namespace {

/// Sources of the variables of 弯曲: a comes from a property, the unowned b from a table.
class VariableSourcesTest : public testing::Test, protected OpenLibraries {
  protected:
    VariableSourcesTest() {
        first.addValue(u"a"_s, bending, u"3"_s);
        first.addValue(u"b"_s, 0, u"5"_s);
        first.setSource(u"a"_s, bending, VarSourceProperty, u"面积"_s);
        first.setSource(u"b"_s, 0, VarSourceTable, u"m.mdb->t"_s);
        EXPECT_TRUE(sources.connect(first.folder(), first.fileName(), {}));
    }

    QString rows() {
        return first
            .rows(
                u"Select VarName, FormulaID, Value, VarSourceType, VarMemo From RecentVar "
                "Order By rowid"_s)
            .join(u' ');
    }
    QString known(const QString& name, qint32 formula) {
        const clsVarInfo* record = library.variables().Find(name, formula);
        return record == nullptr ? u"-"_s
                                 : u"%1|%2|%3"_s.arg(record->VarValue)
                                       .arg(record->VarSourceType)
                                       .arg(record->VarMemo);
    }

    VariableSources sources{library, bending};
    const QString unchanged = u"a|1|3|1|面积 b|0|5|2|m.mdb->t"_s;
};

TEST_F(VariableSourcesTest, AreThoseOfTheFormulasOwnValues) {
    const auto told = [&](const QString& name) {
        const VariableSource source = sources.stored(name);
        return QString::number(source.type) + source.parameter +
               (source.isRead ? QString() : u"?"_s);
    };
    EXPECT_EQ(told(u"A"_s), u"1面积"_s);
    EXPECT_EQ(told(u"b"_s), u"0"_s);
    EXPECT_EQ(told(u"c"_s), u"0"_s);
    first.addValue(u"Q"_s, shear, u"1"_s);
    first.setSource(u"Q"_s, shear, VarSourceProperty, u"剪力"_s);
    EXPECT_EQ(sources.propertyNames().size(), 2) << "of all formulas";
    requireSqlite();
    first.connection().execute(u"Drop Table RecentVar"_s);
    EXPECT_EQ(told(u"d"_s), u"0?"_s);
    EXPECT_EQ(sources.propertyNames(), QStringList());
}

TEST_F(VariableSourcesTest, OnlyWhatHasBeenChangedIsStoredAndTheValuesStay) {
    EXPECT_EQ(sources.store(), QString());
    EXPECT_EQ(rows(), unchanged);
    sources.setType(u"b"_s, VarSourceProperty);
    sources.setParameter(u"b"_s, VarSourceProperty, u"长度"_s);
    sources.setParameter(u"C"_s, VarSourceTable, u"m.mdb->钢"_s);
    sources.setType(u"A"_s, VarSourceTyped);
    EXPECT_EQ(sources.fault().text, QString());
    EXPECT_EQ(rows(), unchanged);
    EXPECT_EQ(sources.store(), QString());
    EXPECT_EQ(rows(), u"a|1|3|0| b|0|5|2|m.mdb->t b|1|0|1|长度 C|1|0|2|m.mdb->钢"_s);
    EXPECT_EQ(known(u"a"_s, bending) + known(u"b"_s, bending) + known(u"c"_s, bending),
              u"3|0|0|1|长度0|2|m.mdb->钢"_s);
}

TEST_F(VariableSourcesTest, ASourceWithoutItsParameterIsAFault) {
    const QString missing = u"用户没有为变量“a”设置参数！"_s;
    const std::tuple<VarSource, QString, QString> cases[] = {
        {VarSourceTyped, u""_s, {}},
        {VarSourceProperty, u" "_s, missing},
        {VarSourceTable, u""_s, missing},
        {VarSourceProperty, QString(256, u'p'), u"变量“a”的参数超过255个字符！"_s},
        {VarSourceProperty, QString(255, u'p'), {}},
    };
    for (const auto& [type, parameter, fault] : cases) {
        sources.setType(u"a"_s, type);
        sources.setParameter(u"a"_s, type, parameter);
        EXPECT_EQ(sources.fault().text, fault);
        EXPECT_EQ(sources.fault().variable, fault.isEmpty() ? QString() : u"a"_s);
    }
    sources.setType(u"a"_s, VarSourceProperty);
    EXPECT_EQ(sources.fault().text, missing) << "another source, another parameter";
}

TEST_F(VariableSourcesTest, WhatWasStoredBeforeAFailingStepStays) {
    for (const QString& name : {u"a"_s, u"d"_s, u"c"_s}) {
        sources.setParameter(name, VarSourceProperty, u"长度"_s);
    }
    first.refuse("Insert", "RecentVar", u"New.VarName = 'd'"_s);
    EXPECT_EQ(sources.store(), u"无法添加新的变量！"_s);
    const QString stored = u"a|1|3|1|长度 b|0|5|2|m.mdb->t"_s;
    EXPECT_EQ(rows(), stored);
    EXPECT_EQ(known(u"a"_s, bending) + known(u"d"_s, bending), u"3|1|长度-"_s);
    first.allow();
    first.refuse("Update", "RecentVar", u"New.VarName = 'd'"_s);
    EXPECT_EQ(sources.store(), u"无法编辑变量的来源类型和参数！"_s);
    EXPECT_EQ(rows(), stored + u" d|1|0|0|"_s);
    first.allow();
    EXPECT_EQ(sources.store(), QString()) << "tried again";
    EXPECT_EQ(rows(), stored + u" d|1|0|1|长度 c|1|0|1|长度"_s);
}

TEST_F(VariableSourcesTest, ALibraryThatTakesNoChangesFailsAtTheFirstStep) {
    const NoWaiting noWaiting;
    const QString before = rows();
    for (const auto& [name, failure] : {std::pair(u"a"_s, u"无法编辑变量的来源类型和参数！"_s),
                                        {u"c"_s, u"无法添加新的变量！"_s}}) {
        VariableSources refused(library, bending);
        ASSERT_TRUE(refused.connect(first.folder(), first.fileName(), {}));
        refused.setParameter(name, VarSourceProperty, u"长度"_s);
        const data::Transaction other(first.connection());
        EXPECT_EQ(refused.store(), failure);
        EXPECT_EQ(known(u"a"_s, bending) + known(u"c"_s, bending), u"3|1|面积-"_s);
    }
    EXPECT_EQ(rows(), before);
}

TEST_F(VariableSourcesTest, BelongToTheirLibraryWhicheverIsTheCurrentOneMeanwhile) {
    ASSERT_TRUE(library.open(2));
    sources.setParameter(u"a"_s, VarSourceProperty, u"长度"_s);
    sources.setParameter(u"c"_s, VarSourceProperty, u"长度"_s);
    EXPECT_EQ(sources.store(), QString());
    EXPECT_EQ(rows(), u"a|1|3|1|长度 b|0|5|2|m.mdb->t c|1|0|1|长度"_s);
    EXPECT_EQ(library.variables().Count(), 0);
    EXPECT_TRUE(second.rows(u"Select * From RecentVar"_s).isEmpty());
}

}  // namespace
}  // namespace varo::test
