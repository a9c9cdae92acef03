#include "library/property_search.h"

#include "library/condition.h"
#include "library/open_libraries.h"
#include "library/property_names.h"
#include "support/no_waiting.h"

namespace varo::test {
namespace {

/// A stored condition node; leaves carry their comparison.
struct Row {
    int id, parent, type;
    QString field = {};
    int comparison = 0;
    QString constant = {};
};

enum Type { And = 1, Or, Not, Leaf };

void addCondition(TestLibrary& library, int filter, const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        library.connection().execute(
            u"insert into FilterCond(ID,UserID,ParentID,Type) values(?,?,?,?)"_s,
            {row.id, filter, row.parent, row.type});
        if (row.type == Leaf) {
            library.connection().execute(
                u"insert into FilterExpressions(FilterID,ExpID,FieldName,CompareType,TheConst) "
                "values(?,?,?,?,?)"_s,
                {filter, row.id, row.field, row.comparison, row.constant});
        }
    }
}

struct Host : PropertySource {
    QString propertyValue(const QString& name) override {
        asked.append(name);
        return values.value(name);
    }
    const QHash<QString, QString> values{{u"d"_s, u"12"_s},
                                         {u"mixed"_s, u" 12mm"_s},
                                         {u"text"_s, u"工字钢"_s},
                                         {u"padded"_s, u"  x "_s}};
    QStringList asked;
};

TEST(Condition, ComparesTheHostsValueAndCombines) {
    const auto leaf = [](int id, int parent, bool holds) {
        return Row{id, parent, Leaf, u"d"_s, 0, holds ? u"12"_s : u"1"_s};
    };
    const auto one = [](const QString& field, int comparison, const QString& constant) {
        return std::vector{Row{1, 0, Leaf, field, comparison, constant}};
    };
    const auto pair = [&](int type, bool left, bool right) {
        return std::vector{Row{1, 0, type}, leaf(2, 1, left), leaf(3, 1, right)};
    };
    const struct {
        const char* what;
        std::vector<Row> rows;
        bool holds;
        bool before = false;  ///< what the result was
    } cases[] = {
        {"equal numbers", one(u"d"_s, 0, u"12.0"_s), true},
        {"letters behind the number", one(u"mixed"_s, 0, u"12"_s), true},
        {"no number counts as 0", one(u"text"_s, 0, u"0"_s), true},
        {"not equal", one(u"d"_s, 1, u"12"_s), false},
        {"not equal", one(u"d"_s, 1, u"12.5"_s), true},
        {"less", one(u"d"_s, 2, u"12"_s), false},
        {"less", one(u"d"_s, 2, u"12.1"_s), true},
        {"less or equal", one(u"d"_s, 3, u"12"_s), true},
        {"less or equal", one(u"d"_s, 3, u"11.9"_s), false},
        {"greater", one(u"d"_s, 4, u"11.9"_s), true},
        {"greater", one(u"d"_s, 4, u"12"_s), false},
        {"greater or equal", one(u"d"_s, 5, u"12"_s), true},
        {"greater or equal", one(u"d"_s, 5, u"12.1"_s), false},
        {"contains", one(u"text"_s, 6, u"字钢"_s), true},
        {"contains, case counts", one(u"mixed"_s, 6, u"MM"_s), false},
        {"same text, blanks around removed", one(u"padded"_s, 7, u"x"_s), true},
        {"same text, not same number", one(u"d"_s, 7, u"12.0"_s), false},
        {"unknown property", one(u"none"_s, 7, u"x"_s), false},
        {"unknown comparison", one(u"d"_s, 9, u"12"_s), false},
        {"unknown comparison", one(u"d"_s, 9, u"12"_s), true, true},
        {"and", pair(And, true, true), true},
        {"and", pair(And, true, false), false},
        {"and", pair(And, false, true), false},
        {"and of one", {{1, 0, And}, leaf(2, 1, true)}, true},
        {"or", pair(Or, true, false), true},
        {"or", pair(Or, false, true), true},
        {"or", pair(Or, false, false), false, true},
        {"not", {{1, 0, Not}, leaf(2, 1, true)}, false, true},
        {"not", {{1, 0, Not}, leaf(2, 1, false)}, true},
        {"not takes the last of several as it is", pair(Not, false, true), true},
        {"not takes the last of several as it is", pair(Not, true, false), false},
        {"nested", {{1, 0, Not}, {2, 1, And}, leaf(3, 2, true), leaf(4, 2, false)}, true},
        {"by identifier, not as stored", {{1, 0, Not}, leaf(3, 1, true), leaf(2, 1, false)}, true},
        {"the last root decides", {leaf(1, 0, true), leaf(2, 0, false)}, false},
        {"the last root decides", {leaf(1, 0, false), leaf(2, 0, true)}, true},
        {"no rows", {}, false},
        {"no rows", {}, true, true},
        {"unknown kind", {{1, 0, 9}, leaf(2, 1, true)}, false},
    };
    for (const auto& each : cases) {
        TestLibrary library;
        addCondition(library, 7, each.rows);
        addCondition(library, 8, {leaf(1, 0, !each.holds)});
        Host host;
        bool holds = each.before;
        EXPECT_TRUE(Condition(library.connection(), host, {7}).evaluate(7, holds));
        EXPECT_EQ(holds, each.holds) << each.what;
    }
}

TEST(Condition, IsNestedAHundredLevelsAtMost) {
    for (const int levels : {Condition::kMaxDepth, Condition::kMaxDepth + 1}) {
        TestLibrary library;
        std::vector<Row> rows;
        for (int id = 1; id <= levels; ++id) {
            rows.push_back({id, id - 1, And});
        }
        rows.push_back({levels + 1, levels, Leaf, u"d"_s, 0, u"12"_s});
        addCondition(library, 7, rows);
        addCondition(library, 8, {{1, 0, And}, {2, 1, Or}, {2, 2, Or}});
        Host host;
        Condition condition(library.connection(), host, {7, 8});
        bool holds = false;
        EXPECT_EQ(condition.evaluate(7, holds), levels == Condition::kMaxDepth);
        EXPECT_EQ(holds, levels == Condition::kMaxDepth);
        EXPECT_FALSE(condition.evaluate(8, holds)) << "it contains itself";
    }
}

/// Groups each in the one before, each row `copies` times, from the number `first` on; the first is
/// in `parent`.
std::vector<Row> chain(int first, int parent, int levels, int copies) {
    std::vector<Row> rows;
    for (int id = first; id < first + levels; ++id) {
        rows.insert(rows.end(), static_cast<std::size_t>(copies),
                    {id, id == first ? parent : id - 1, And});
    }
    return rows;
}

TEST(Condition, ARowIsEvaluatedOnceAlsoWhereIdentifiersAreUsedTwice) {
    TestLibrary library;
    std::vector<Row> rows = chain(1, 0, 90, 2);
    rows.push_back({91, 90, Leaf, u"d"_s, 0, u"12"_s});
    addCondition(library, 7, rows);
    // Group 50 is 60 levels high; it is in the root, and once more 60 levels below that.
    rows = chain(1, 0, 1, 1);
    for (const auto& [first, parent] : {std::pair{50, 1}, {200, 1}, {50, 259}}) {
        const std::vector<Row> more = chain(first, parent, first == 50 && parent != 1 ? 1 : 60, 1);
        rows.insert(rows.end(), more.begin(), more.end());
    }
    addCondition(library, 8, rows);
    Host host;
    Condition condition(library.connection(), host, {7, 8});
    bool holds = false;
    EXPECT_TRUE(condition.evaluate(7, holds) && holds);
    EXPECT_EQ(host.asked, QStringList{u"d"_s});
    EXPECT_FALSE(condition.evaluate(8, holds)) << "what is known of a group hides its depth";
}

TEST(Condition, ItsRowsAreGivenAsStored) {
    TestLibrary library;
    addCondition(library, 7, {{1, 0, And}, {3, 1, Leaf, u"d"_s, 0, u"12"_s}, {2, 1, Or}});
    data::Recordset rs;
    ASSERT_TRUE(library.funcs().GetResFilterCondByParentID(7, 1, rs, library.connection()));
    EXPECT_EQ(remainingRows(rs), (QStringList{u"2|7|1|2"_s, u"3|7|1|4"_s}));
    ASSERT_TRUE(library.funcs().GetResExpressions(7, 3, rs, library.connection()));
    EXPECT_EQ(rs.text(u"FieldName"), u"d"_s);
}

class Search : public testing::Test, protected OpenLibraries {
  protected:
    /// Finds what has the property 用途; keys of the items, with the folders of formulas.
    QStringList found() {
        colLocateProp located;
        failure = PropertySearch(libraries, host).run(u"用途"_s, located);
        QStringList items;
        for (const clsLocateProp& item : located) {
            items.append(item.Key + u" in "_s + QString::number(item.PID));
        }
        return items;
    }
    void mark(TestLibrary& in, int filter, qint32 node, NodeType type) {
        in.addProperty(++properties, u"用途"_s, filter, node, type);
    }

    Host host;
    QString failure;
    int properties = 0;
};

TEST_F(Search, FindsFormulasThenFoldersLibraryByLibrary) {
    mark(first, 0, beams, NodeTypeFolder);
    mark(first, 0, shear, NodeTypeFormula);
    mark(first, 0, shear, NodeTypeFormula);
    mark(first, 0, 999, NodeTypeFormula);
    mark(first, 0, 999, NodeTypeFolder);
    first.addProperty(9, u"别的"_s, 0, columns, NodeTypeFolder);
    mark(second, 0, 0, NodeTypeFolder);
    mark(second, 0, flow, NodeTypeFormula);
    const QStringList wanted{u"0->2->2->DBNode1 in 1"_s, u"0->1->1->DBNode1 in 0"_s,
                             u"0->999->1->DBNode1 in 0"_s, u"0->1->2->DBNode2 in 1"_s,
                             u"0->0->1->DBNode2 in 0"_s};
    EXPECT_EQ(found(), wanted);
    EXPECT_EQ(found(), wanted) << "each time anew";
    EXPECT_EQ(failure, QString());
    EXPECT_TRUE(host.asked.isEmpty());
}

TEST_F(Search, KeepsWhatHasNoConditionOrOneThatHolds) {
    const auto is = [](const QString& constant) {
        return std::vector{Row{1, 0, Leaf, u"d"_s, 0, constant}};
    };
    addCondition(first, 0, is(u"1"_s));
    addCondition(first, 7, is(u"12"_s));
    addCondition(first, 8, is(u"1"_s));
    addCondition(second, 7, is(u"1"_s));
    for (const int filter : {0, 7, 8}) {
        mark(first, filter, shear, NodeTypeFormula);
        mark(first, filter, beams, NodeTypeFolder);
    }
    mark(second, 7, flow, NodeTypeFormula);
    EXPECT_EQ(found(), (QStringList{u"0->2->2->DBNode1 in 1"_s, u"7->2->2->DBNode1 in 1"_s,
                                    u"0->1->1->DBNode1 in 0"_s, u"7->1->1->DBNode1 in 0"_s}));
}

TEST_F(Search, AFailureEndsItWithWhatWasFoundBefore) {
    mark(first, 0, shear, NodeTypeFormula);
    mark(second, 7, flow, NodeTypeFormula);
    addCondition(second, 7, {{1, 0, And}, {2, 1, Leaf, u"d"_s, 0, u"12"_s}});
    const QString item = u"0->2->2->DBNode1 in 1"_s;
    for (const auto& [table, column, told] :
         {std::tuple{"Property", "PropName", u"无法读取用户指定属性“用途”的信息！"_s},
          {"FilterCond", "Type", u"无法形成合成后的查找条件！"_s},
          {"FilterExpressions", "TheConst", u"无法形成合成后的查找条件！"_s}}) {
        const MissingColumn missing(second, table, column);
        EXPECT_EQ(found().value(0), item);
        EXPECT_EQ(failure, told);
    }
    EXPECT_EQ(found(), (QStringList{item, u"7->1->2->DBNode2 in 1"_s}));
    ASSERT_TRUE(QFile::remove(second.path()));
    EXPECT_EQ(found(), QStringList{item});
    EXPECT_EQ(failure, u"无法打开用户选择的数据库！"_s);
}

TEST(AskedNames, AreThoseOfAllLibrariesSortedWithoutUnreadableOnes) {
    OpenLibraries on;
    const auto ask = [](TestLibrary& library, const QStringList& names) {
        for (int id = 1; id <= names.size(); ++id) {
            addCondition(library, 1, {{id, 0, Leaf, names[id - 1], 0, u"1"_s}});
        }
    };
    ask(on.first, {u"跨度"_s, u"A"_s, u"b"_s, u" "_s});
    ask(on.second, {u"a"_s, u"跨度"_s});
    on.second.addValue(u"v"_s, on.flow, u"1"_s);
    on.second.setSource(u"v"_s, on.flow, VarSourceProperty, u"流速"_s);
    TestLibrary third;
    ask(third, {u"三"_s});
    const auto names = [&](TestLibrary& open) {
        return askedNames(on.libraries, open.connection()).join(u' ');
    };
    const QString ofTwo = u"A a b 流速 跨度"_s;
    const QString ofThree = u"A a b 三 流速 跨度"_s;
    EXPECT_EQ(names(on.first), ofTwo);
    EXPECT_EQ(names(third), ofThree) << "open, and none of the configured ones";
    addTo(on.libraries, third.folder(), u"none.vdb"_s);
    on.configure(third);
    EXPECT_EQ(names(on.first), ofThree);
    // The open library is read though everybody else is locked out of it.
    if (!isAccessTested()) {
        on.first.connection().execute(u"Begin Exclusive"_s);
        EXPECT_EQ(names(on.first), ofThree);
        on.first.connection().execute(u"Commit"_s);
    }
    // Nobody waits for another one that is locked.
    const NoWaiting noWaiting;
    third.lock();
    EXPECT_EQ(names(on.first), ofTwo);
    EXPECT_EQ(NoWaiting::waits, 0);
    third.unlock();
    const MissingColumn missing(third, "FilterExpressions", "FieldName");
    EXPECT_EQ(names(on.first), ofTwo);
}

}  // namespace
}  // namespace varo::test
