#include "support/desk.h"

#include <QTest>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

const auto Property = QStringLiteral("用途");

/// A stored condition node; leaves carry their comparison.
struct Row {
    int id, parent, type;
    const char* field = "";
    int comparison = 0;
    const char* constant = "";
};

void addCondition(TestLibrary& library, int filter, std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        library.connection().execute(
            QStringLiteral("insert into FilterCond(ID,UserID,ParentID,Type) values(?,?,?,?)"),
            {row.id, filter, row.parent, row.type});
        if (row.type == 4) {
            library.connection().execute(
                QStringLiteral("insert into FilterExpressions(FilterID,ExpID,FieldName,CompareType,"
                               "TheConst) values(?,?,?,?,?)"),
                {filter, row.id, QString::fromUtf8(row.field), row.comparison,
                 QString::fromUtf8(row.constant)});
        }
    }
}

class Locate : public testing::Test {
  protected:
    /// What is selected: the node's text, then the formula's.
    QString shown(Desk& desk) {
        return desk.tree().currentIndex().data().toString() + u'/' +
               desk.list().currentIndex().data().toString();
    }
    bool canStep(Desk& desk, const QString& key) { return desk.editButton(key).isEnabled(); }
    void step(Desk& desk, const QString& key) { desk.editButton(key).click(); }

    const QString next = QStringLiteral("查找下一个");
    const QString previous = QStringLiteral("查找上一个");
    TestLibrary first;
    TestLibrary second;
    TestConfiguration configuration{&first, &second};
};

TEST_F(Locate, StepsThroughFormulasThenFoldersLibraryByLibrary) {
    const qint32 beams = first.addFolder(0, QStringLiteral("梁"));
    first.addFormula(beams, QStringLiteral("弯曲"), QStringLiteral("1"));
    const qint32 shear = first.addFormula(beams, QStringLiteral("剪切"), QStringLiteral("2"));
    const qint32 pipe = second.addFormula(0, QStringLiteral("管"), QStringLiteral("3"));
    first.addProperty(1, Property, 0, beams, NodeTypeFolder);
    first.addProperty(1, Property, 0, shear, NodeTypeFormula);
    first.addProperty(2, Property, 0, shear, NodeTypeFormula);
    first.addProperty(1, Property, 0, 999, NodeTypeFormula);
    first.addProperty(3, QStringLiteral("别的"), 0, beams, NodeTypeFolder);
    second.addProperty(1, Property, 0, pipe, NodeTypeFormula);
    second.addProperty(1, Property, 0, 0, NodeTypeFolder);
    Desk desk(configuration.folder());
    EXPECT_FALSE(canStep(desk, next));
    desk.control().SetDesignProp(Property);

    const QStringList expected{QStringLiteral("梁/剪切"), QStringLiteral("梁/弯曲"),
                               QStringLiteral("库2/管"), QStringLiteral("库2/管")};
    for (int i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(shown(desk), expected[i]) << i;
        EXPECT_EQ(canStep(desk, next), i + 1 < expected.size()) << i;
        EXPECT_EQ(canStep(desk, previous), i > 0) << i;
        step(desk, next);
    }
    EXPECT_EQ(desk.result(), QStringLiteral("3.00"));
    step(desk, previous);
    step(desk, previous);
    EXPECT_EQ(shown(desk), expected[1]);
}

TEST_F(Locate, TheLocatedItemIsHighlightedUntilAnotherIsShown) {
    const qint32 formula = first.addFormula(0, QStringLiteral("弯曲"), QStringLiteral("1"));
    first.addFormula(0, QStringLiteral("剪切"), QStringLiteral("1"));
    first.addProperty(1, Property, 0, formula, NodeTypeFormula);
    Desk desk(configuration.folder());
    const auto picture = [&] {
        const QModelIndex item = Desk::find(desk.list(), QStringLiteral("弯曲"));
        return item.data(Qt::DecorationRole).value<QIcon>().pixmap(32).toImage();
    };
    const QImage plain = picture();
    desk.control().SetDesignProp(Property);
    EXPECT_NE(picture(), plain);
    EXPECT_FALSE(canStep(desk, next)) << "only one item";
    desk.control().RunCalc();
    EXPECT_EQ(picture(), plain);
    desk.control().SetDesignProp(Property);
    desk.clickFormula(QStringLiteral("剪切"));
    EXPECT_EQ(picture(), plain);
}

TEST_F(Locate, ConditionsDecideWithTheHostsValues) {
    struct {
        const char* what;
        std::initializer_list<Row> rows;
        bool located;
    } const cases[] = {
        {"equal numbers", {{1, 0, 4, "d", 0, "12.0"}}, true},
        {"letters behind the number", {{1, 0, 4, "mixed", 0, "12"}}, true},
        {"no number counts as 0", {{1, 0, 4, "text", 0, "0"}}, true},
        {"not equal", {{1, 0, 4, "d", 1, "12"}}, false},
        {"less", {{1, 0, 4, "d", 2, "12"}}, false},
        {"less or equal", {{1, 0, 4, "d", 3, "12"}}, true},
        {"greater", {{1, 0, 4, "d", 4, "11.9"}}, true},
        {"greater or equal", {{1, 0, 4, "d", 5, "12.1"}}, false},
        {"contains", {{1, 0, 4, "text", 6, "字钢"}}, true},
        {"contains, case counts", {{1, 0, 4, "mixed", 6, "MM"}}, false},
        {"same text, blanks around removed", {{1, 0, 4, "padded", 7, "x"}}, true},
        {"unknown property", {{1, 0, 4, "none", 7, "x"}}, false},
        {"and", {{1, 0, 1}, {2, 1, 4, "d", 0, "12"}, {3, 1, 4, "d", 0, "1"}}, false},
        {"and of one", {{1, 0, 1}, {2, 1, 4, "d", 0, "12"}}, true},
        {"or", {{1, 0, 2}, {2, 1, 4, "d", 0, "12"}, {3, 1, 4, "d", 0, "1"}}, true},
        {"not", {{1, 0, 3}, {2, 1, 4, "d", 0, "12"}}, false},
        {"nested", {{1, 0, 3}, {2, 1, 1}, {3, 2, 4, "d", 0, "12"}, {4, 2, 4, "d", 0, "1"}}, true},
        {"the last root decides", {{1, 0, 4, "d", 0, "12"}, {2, 0, 4, "d", 0, "1"}}, false},
        {"no rows", {}, false},
        {"unknown comparison", {{1, 0, 4, "d", 9, "12"}}, false},
    };
    for (const auto& each : cases) {
        TestLibrary library;
        const qint32 formula = library.addFormula(0, QStringLiteral("式"), QStringLiteral("1"));
        library.addFormula(0, QStringLiteral("他"), QStringLiteral("2"));
        library.addProperty(1, Property, 7, formula, NodeTypeFormula);
        addCondition(library, 7, each.rows);
        const TestConfiguration own({&library});
        Desk desk(own.folder());
        desk.properties = {{QStringLiteral("d"), QStringLiteral("12")},
                           {QStringLiteral("mixed"), QStringLiteral(" 12mm")},
                           {QStringLiteral("text"), QStringLiteral("工字钢")},
                           {QStringLiteral("padded"), QStringLiteral("  x ")}};
        desk.clickFormula(QStringLiteral("他"));
        desk.control().SetDesignProp(Property);
        EXPECT_EQ(shown(desk), each.located ? QStringLiteral("库1/式") : QStringLiteral("库1/他"))
            << each.what;
        EXPECT_TRUE(desk.messages().isEmpty()) << each.what;
    }
}

TEST_F(Locate, ACyclicConditionIsToldInsteadOfHanging) {
    const qint32 formula = first.addFormula(0, QStringLiteral("式"), QStringLiteral("1"));
    first.addProperty(1, Property, 7, formula, NodeTypeFormula);
    addCondition(first, 7, {{1, 0, 1}, {2, 1, 2}, {2, 2, 2}});
    Desk desk(configuration.folder());
    desk.control().SetDesignProp(Property);
    EXPECT_EQ(desk.messages(), QStringList{QStringLiteral("无法形成合成后的查找条件！")});
}

TEST_F(Locate, AFailureLeavesTheConnectionWithTheShownFormulasLibrary) {
    first.addFormula(0, QStringLiteral("式"), QStringLiteral("a"));
    TestLibrary broken;
    broken.addFormula(0, QStringLiteral("他"), QStringLiteral("a"));
    const TestConfiguration two({&first, &broken});
    Desk user(two.folder());
    broken.connection().execute(QStringLiteral("drop table Property"));
    user.control().SetDesignProp(Property);
    EXPECT_EQ(user.messages(), QStringList{QStringLiteral("无法读取用户指定属性“用途”的信息！")});
    user.typeValue(QStringLiteral("a"), QStringLiteral("8"));
    auto own = first.connection().query(QStringLiteral("select Value from RecentVar"));
    EXPECT_EQ(remainingRows(own), QStringList{QStringLiteral("8")});
    auto strange = broken.connection().query(QStringLiteral("select Value from RecentVar"));
    EXPECT_TRUE(remainingRows(strange).isEmpty());
}

TEST_F(Locate, SteppingToAnotherLibraryStoresAnEditWhereItBelongs) {
    const qint32 here = first.addFormula(0, QStringLiteral("式"), QStringLiteral("1+a"));
    const qint32 there = second.addFormula(0, QStringLiteral("他"), QStringLiteral("2"));
    first.addProperty(1, Property, 0, here, NodeTypeFormula);
    second.addProperty(1, Property, 0, there, NodeTypeFormula);
    Desk desk(configuration.folder());
    desk.control().SetDesignProp(Property);
    desk.formulaBox().setFocus();
    QTest::keyClicks(&desk.formulaBox(), QStringLiteral("*9"));
    step(desk, next);
    const auto expression = [](TestLibrary& library) {
        auto rs = library.connection().query(QStringLiteral("select Formula from Formula"));
        return rs.text(0);
    };
    EXPECT_EQ(expression(first), QStringLiteral("1+a*9"));
    EXPECT_EQ(expression(second), QStringLiteral("2"));
}

TEST_F(Locate, ALocatedLibraryLooksAsBeforeAfterwards) {
    first.addProperty(1, Property, 0, 0, NodeTypeFolder);
    Desk desk(configuration.folder());
    const auto picture = [&] {
        const QModelIndex item = Desk::find(desk.tree(), QStringLiteral("库1"));
        return item.data(Qt::DecorationRole).value<QIcon>().pixmap(32).toImage();
    };
    const QImage before = picture();
    desk.control().SetDesignProp(Property);
    EXPECT_NE(picture(), before);
    desk.control().RunCalc();
    EXPECT_EQ(picture(), before);
}

}  // namespace
}  // namespace varo::test
