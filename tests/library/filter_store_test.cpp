// Conditions in the tables: stored, read, tried and evaluated alike.

#include "library/filter_store.h"

#include "library/condition.h"
#include "library/condition_check.h"
#include "library/condition_text.h"
#include "library/condition_trial.h"
#include "library/condition_words.h"
#include "library/limits.h"
#include "support/test_library.h"

#include <gtest/gtest.h>
#include <random>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;
using Type = ConditionType;

struct Host : PropertySource {
    QString propertyValue(const QString& name) override {
        asked.append(name);
        return values.value(name);
    }
    QHash<QString, QString> values{{u"a"_s, u" 12mm "_s}, {u"b"_s, u"工字钢"_s}, {u"c"_s, {}}};
    QStringList asked;
};

/// What a sound condition means, computed the plain way.
bool plainly(const ConditionNode& node, const Host& host) {
    const auto holds = [&](const ConditionNode& child) { return plainly(child, host); };
    switch (node.type) {
        case Type::And:
            return std::all_of(node.children.begin(), node.children.end(), holds);
        case Type::Or:
            return std::any_of(node.children.begin(), node.children.end(), holds);
        case Type::Not:
            return !holds(node.children.front());
        case Type::Comparison:
            break;
    }
    const QString value = host.values.value(node.term.name).trimmed();
    const QString& constant = node.term.constant;
    const double number = node.term.name == u"a" ? 12 : 0;
    const double other = constant.toDouble();
    const bool answers[] = {number == other,
                            number != other,
                            number<other, number <= other, number>
                                other,
                            number >= other,
                            value.indexOf(constant) >= 0,
                            value == constant};
    return answers[node.term.type];
}

class Random {
  public:
    explicit Random(unsigned seed) : engine_(seed) {}
    int below(int limit) { return std::uniform_int_distribution(0, limit - 1)(engine_); }

    ConditionNode node() {
        const QString constant = QStringList{u"12"_s, u"0"_s, u"-3.5"_s, u"字"_s, {}}.at(below(5));
        return below(3) == 0 ? groupNode(Type{below(3) + 1})
                             : comparisonNode(u"abc"_s.mid(below(3), 1), below(8), constant);
    }

    /// A place in `tree`; now and then one that is not there.
    ConditionPath place(const ConditionTree& tree) {
        ConditionPath path;
        while (below(4) != 0) {
            path.push_back(below(tree.childCount(path) + 1));
        }
        return path;
    }

    void edit(ConditionTree& tree) {
        const ConditionPath path = place(tree);
        switch (below(7)) {
            case 0:
                tree.remove(path);
                break;
            case 1:
                tree.wrap(path, Type{below(3) + 1});
                break;
            case 2:
                tree.unwrap(path);
                break;
            case 3:
                tree.move(path, place(tree), below(3));
                break;
            default:
                tree.insert(path, below(tree.childCount(path) + 1), node());
        }
    }

  private:
    std::mt19937 engine_;
};

bool evaluated(TestLibrary& library, qint32 filter, Host& host) {
    bool holds = false;
    EXPECT_TRUE(Condition(library.connection(), host, {filter}).evaluate(filter, holds));
    return holds;
}

TEST(FilterStore, WhatCanBeClickedTogetherIsStoredWrittenTriedAndEvaluatedAlike) {
    TestLibrary library;
    library.connection().execute(u"Pragma synchronous = off"_s);
    FilterStore store(library.connection());
    Random random(7);
    Host host;
    int sound = 0;
    int holding = 0;
    ConditionTree tree;
    for (int step = 0; step < 20000 && sound < 100; ++step) {
        const ConditionTree before = tree;
        random.edit(tree);
        ASSERT_LE(tree.roots.size(), 1U);
        if (tree == before || !conditionFaults(tree).empty()) {
            tree = tree.size() > 30 ? ConditionTree() : tree;
            continue;
        }
        ++sound;
        const auto filter = store.saveNew(tree);
        ASSERT_TRUE(filter);
        const auto stored = store.read(*filter);
        ASSERT_TRUE(stored && stored->isWhole && stored->remarks.isEmpty());
        EXPECT_EQ(stored->tree, tree);
        const auto text = conditionText(tree);
        ASSERT_TRUE(text);
        EXPECT_EQ(parseCondition(*text).tree, tree);
        const bool expected = plainly(tree.roots.front(), host);
        holding += expected ? 1 : 0;
        EXPECT_EQ(evaluated(library, *filter, host), expected) << qPrintable(*text);
        EXPECT_EQ(tryCondition(tree, host)->holds, expected) << qPrintable(*text);
    }
    EXPECT_EQ(sound, 100);
    EXPECT_TRUE(holding > 10 && holding < 90) << holding;
}

void addRows(TestLibrary& library, qint32 filter, const FilterRows& rows) {
    for (const auto& [id, parent, type] : rows.nodes) {
        library.connection().execute(
            u"insert into FilterCond(ID,UserID,ParentID,Type) values(?,?,?,?)"_s,
            {id, filter, parent, type});
    }
    for (const auto& [id, term] : rows.terms) {
        library.connection().execute(
            u"insert into "
            u"FilterExpressions(FilterID,ExpID,TableName,FieldName,CompareType,TheConst) "
            "values(?,?,?,?,?,?)"_s,
            {filter, id, term.table, term.name, term.type, term.constant});
    }
}

TEST(FilterStore, RowsOfAnyShapeAreTriedAsTheyAreEvaluated) {
    TestLibrary library;
    library.connection().execute(u"Pragma synchronous = off"_s);
    FilterStore store(library.connection());
    Random random(11);
    Host host;
    int odd = 0;
    for (qint32 filter = 1; filter <= 400; ++filter) {
        FilterRows rows;
        for (int count = random.below(10); count > 0; --count) {
            rows.nodes.push_back({random.below(9), random.below(6), random.below(6)});
            rows.terms.push_back({random.below(9),
                                  {.name = u"a"_s,
                                   .type = random.below(9),
                                   .constant = QString::number(random.below(20)),
                                   .table = {}}});
        }
        data::Transaction transaction(library.connection());
        addRows(library, filter, rows);
        transaction.commit();
        const auto stored = store.read(filter);
        ASSERT_TRUE(stored);
        bool holds = false;
        const bool done = Condition(library.connection(), host, {filter}).evaluate(filter, holds);
        EXPECT_EQ(done, stored->isWhole) << "filter " << filter;
        if (done) {
            EXPECT_EQ(tryCondition(stored->tree, host)->holds, holds) << "filter " << filter;
        }
        odd += stored->tree.roots.size() > 1 ? 1 : 0;
    }
    EXPECT_GT(odd, 50);
}

TEST(FilterStore, RowsThatDoNothingAreTold) {
    const auto term = [](qint32 id) {
        return FilterTermRow{id, {.name = u"a"_s, .constant = u"12"_s, .table = {}}};
    };
    std::vector<FilterNodeRow> chain;
    for (int id = 1; id <= Condition::kMaxDepth + 2; ++id) {
        chain.push_back({id, id - 1, 1});
    }
    const struct {
        FilterRows rows;
        QStringList remarks;  ///< a part of each
        int size;
        bool isWhole = true;
    } cases[] = {
        {{{{1, 0, 4}}, {term(1)}}, {}, 1},
        {{{{1, 0, 4}, {2, 7, 4}, {3, 2, 1}, {4, 1, 4}, {5, 6, 1}, {6, 5, 1}}, {term(1)}},
         {u"5 项不在任何根之下"_s},
         1},
        {{{{1, 0, 1}, {2, 1, 4}, {2, 1, 4}}, {term(2)}}, {u"1 项的编号"_s}, 3},
        {{{{1, 0, 4}}, {term(1), term(1), term(2)}},
         {u"1 个比较内容不属于"_s, u"1 个比较内容重复"_s},
         1},
        {{{{1, 0, 1}, {2, 1, 2}, {2, 2, 2}}, {}}, {u"包含它自身"_s, u"1 项的编号"_s}, 3, false},
        {{{{0, 0, 1}}, {}}, {u"包含它自身"_s}, 1, false},
        {{chain, {}}, {u"超过 100 层"_s, u"1 项不在"_s}, Condition::kMaxDepth + 1, false},
        {{std::vector(kMaxConditionNodes + 1, FilterNodeRow{1, 0, 1}), {}},
         {u"只显示前 5000 项"_s},
         kMaxConditionNodes,
         false},
    };
    for (const auto& each : cases) {
        const StoredCondition stored = conditionFromRows(each.rows);
        ASSERT_EQ(stored.remarks.size(), each.remarks.size())
            << qPrintable(stored.remarks.join(u' '));
        for (qsizetype i = 0; i < each.remarks.size(); ++i) {
            EXPECT_TRUE(stored.remarks[i].contains(each.remarks[i]))
                << qPrintable(stored.remarks[i]);
        }
        EXPECT_EQ(stored.isWhole, each.isWhole);
        EXPECT_EQ(stored.tree.size(), each.size);
    }
}

TEST(ConditionTrial, AsksOnceForEachNameAndMarksEveryNode) {
    const ConditionTree tree =
        parseCondition(u"a > 2 and (b contains \"字\" or a < 3) and not c = 0"_s).tree;
    Host host;
    const ConditionTrial trial = *tryCondition(tree, host);
    EXPECT_EQ(host.asked, (QStringList{u"a"_s, u"b"_s, u"c"_s}));
    EXPECT_FALSE(trial.holds);
    QStringList marks;
    for (const auto& [path, mark] : trial.marks) {
        QString place;
        for (const int position : path) {
            place += QString::number(position);
        }
        marks.append(place + (mark.holds ? u'+' : u'-') + mark.value);
    }
    EXPECT_EQ(marks, (QStringList{u"0-"_s, u"00+12mm"_s, u"01+"_s, u"010+工字钢"_s, u"011-12mm"_s,
                                  u"02-"_s, u"020+"_s}));
}

TEST(ConditionTrial, SaysNothingOfWhatIsNotEvaluatedOrNotReadWhole) {
    TestLibrary library;
    FilterStore store(library.connection());
    Host host;
    requireSqlite();
    const QString text(3000, u'x');
    const ComparisonTerm terms[] = {{.name = text, .constant = u"1"_s, .table = {}},
                                    {.name = u"a"_s, .constant = text, .table = {}},
                                    {.name = u"a"_s, .constant = u"1"_s, .table = text}};
    for (qint32 filter = 1; filter <= 3; ++filter) {
        ComparisonTerm term = terms[filter - 1];
        term.type = CompareSameText;
        addRows(library, filter, {{{filter, 0, 4}}, {{filter, term}}});
        const QStringList before = library.content();
        const ConditionTree tree = store.read(filter)->tree;
        const ComparisonTerm& read = tree.roots.front().term;
        EXPECT_EQ((read.name + read.constant + read.table).size(),
                  kTextLimit + (filter < 3 ? 2 : 3));
        EXPECT_FALSE(store.saveOver(filter, tree)) << "what has been cut replaces the whole";
        EXPECT_EQ(library.content(), before);
        EXPECT_FALSE(tryCondition(tree, host));
    }
    ConditionTree deep = parseCondition(u"a = 1"_s).tree;
    for (int level = 0; level < Condition::kMaxDepth; ++level) {
        deep.wrap({0}, Type::And);
    }
    EXPECT_TRUE(tryCondition(deep, host));
    host.asked.clear();
    deep.wrap({0}, Type::And);
    EXPECT_FALSE(tryCondition(deep, host));
    EXPECT_EQ(host.asked, QStringList());
}

TEST(FilterStore, WritesNumbersBeyondAllAndOnlyWhatItIsTold) {
    TestLibrary library;
    FilterStore store(library.connection());
    library.addProperty(1, u"p"_s, 40, 1, NodeTypeFolder);
    addRows(library, 7,
            {{{20, 0, 1}, {21, 20, 4}}, {{30, {.name = u"x"_s, .constant = {}, .table = {}}}}});
    const ConditionTree tree = parseCondition(u"a = 1 and b equal \"x\""_s).tree;
    const QString rows =
        u"Select UserID||':'||ID||','||ParentID||','||Type From FilterCond Order By ID"_s;
    const QStringList before = library.content();
    EXPECT_EQ(store.saveNew({}), std::nullopt);
    EXPECT_FALSE(store.saveOver(7, {{groupNode(Type::Not)}}));
    EXPECT_FALSE(store.saveOver(0, tree));
    EXPECT_EQ(library.content(), before);
    EXPECT_EQ(store.saveNew(tree), 41);
    EXPECT_EQ(store.saveNew(tree, 90), 91);
    EXPECT_TRUE(store.saveOver(7, tree));
    EXPECT_EQ(library.rows(rows), (QStringList{u"41:31,0,1"_s, u"41:32,31,4"_s, u"41:33,31,4"_s,
                                               u"91:34,0,1"_s, u"91:35,34,4"_s, u"91:36,34,4"_s,
                                               u"7:37,0,1"_s, u"7:38,37,4"_s, u"7:39,37,4"_s}));
    EXPECT_EQ(library.rows(u"Select * From FilterExpressions Where FilterID = 7"_s),
              (QStringList{u"7|38||a|0|0|1"_s, u"7|39||b|0|7|x"_s}));
    EXPECT_TRUE(store.remove(41) && store.remove(91) && store.remove(7));
    EXPECT_EQ(library.rows(rows), QStringList());
    EXPECT_EQ(library.rows(u"Select * From FilterExpressions"_s), QStringList());
}

TEST(FilterStore, WhatFailsHalfwayLeavesTheTablesAsTheyWere) {
    requireSqlite();
    const ConditionTree tree = parseCondition(u"a = 1 and b equal \"1.0\""_s).tree;
    const char* const obstacles[] = {
        "Create Temp Trigger Refuse Before Insert On FilterExpressions When New.FieldName = 'b' "
        "Begin Select Raise(Abort, 'no'); End",
        "Create Temp Trigger Refuse After Insert On FilterExpressions "
        "Begin Update FilterExpressions Set TheConst = '2'; End",
        "Create Temp Trigger Refuse Before Delete On FilterCond Begin Select Raise(Abort, 'no'); "
        "End",
        "Alter Table FilterCond Rename Column Type To Away",
        "Insert Into FilterCond(ID) Values(2147483647)",
    };
    for (const char* obstacle : obstacles) {
        TestLibrary library;
        FilterStore store(library.connection());
        addRows(library, 7, {{{20, 0, 4}}, {{20, {.name = u"x"_s, .constant = {}, .table = {}}}}});
        library.connection().execute(QLatin1StringView(obstacle));
        const QStringList before = library.content();
        EXPECT_FALSE(store.saveOver(7, tree)) << obstacle;
        EXPECT_EQ(library.content(), before) << obstacle;
    }
}

}  // namespace
}  // namespace varo::test
