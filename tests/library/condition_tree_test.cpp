// A condition as a value: its edits, its check, its words and its line of text.

#include "library/condition_tree.h"

#include "library/condition.h"
#include "library/condition_check.h"
#include "library/condition_text.h"
#include "library/condition_words.h"
#include "library/limits.h"
#include "support/printers.h"

#include <functional>
#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;
using Kind = ConditionFaultKind;
using Type = ConditionType;

ConditionNode is(const QString& name, qint32 type = CompareEqual,
                 const QString& constant = u"1"_s) {
    return comparisonNode(name, type, constant);
}

ConditionNode all(std::vector<ConditionNode> children) {
    return groupNode(Type::And, std::move(children));
}

ConditionNode any(std::vector<ConditionNode> children) {
    return groupNode(Type::Or, std::move(children));
}

ConditionNode no(std::vector<ConditionNode> children) {
    return groupNode(Type::Not, std::move(children));
}

/// `and(a or(b c))`: every node, with the name of a comparison.
QString shape(const std::vector<ConditionNode>& nodes) {
    QStringList parts;
    for (const ConditionNode& node : nodes) {
        const QString group = node.type == Type::And  ? u"and"_s
                              : node.type == Type::Or ? u"or"_s
                                                      : u"not"_s;
        parts.append(node.isGroup() ? group + u'(' + shape(node.children) + u')' : node.term.name);
    }
    return parts.join(u' ');
}

TEST(ConditionTree, IsEditedInPlaces) {
    const ConditionTree start{{all({is(u"a"_s), any({is(u"b"_s), is(u"c"_s)}), is(u"d"_s)})}};
    const ConditionTree several{{is(u"a"_s), is(u"b"_s)}};
    const ConditionTree none;
    const auto inserts = [](ConditionPath parent, int position) {
        return [=](ConditionTree& tree) { return tree.insert(parent, position, is(u"x"_s)); };
    };
    const auto moves = [](ConditionPath from, ConditionPath parent, int position) {
        return [=](ConditionTree& tree) { return tree.move(from, parent, position); };
    };
    /// One that leads to no place counts as one that leads to the whole.
    const auto edits = [](auto edit, auto... arguments) {
        return [=](ConditionTree& tree) {
            return (tree.*edit)(arguments...) ? std::optional(ConditionPath{}) : std::nullopt;
        };
    };
    using Path = ConditionPath;
    using Tree = ConditionTree;
    const struct {
        ConditionTree before;
        std::function<std::optional<ConditionPath>(ConditionTree&)> edit;
        QString after;  ///< "" when the edit is refused
        ConditionPath place;
    } cases[] = {
        {none, inserts({}, 0), u"x"_s, {0}},
        {{{is(u"a"_s)}}, inserts({}, 0), u"and(x a)"_s, {0, 0}},
        {{{is(u"a"_s)}}, inserts({}, 1), u"and(a x)"_s, {0, 1}},
        {several, inserts({}, 1), u"a x b"_s, {1}},
        {start, inserts({0}, 3), u"and(a or(b c) d x)"_s, {0, 3}},
        {start, inserts({0, 1}, 0), u"and(a or(x b c) d)"_s, {0, 1, 0}},
        {start, inserts({0, 0}, 0), {}, {}},
        {start, inserts({0}, 4), {}, {}},
        {start, inserts({0}, -1), {}, {}},
        {start, inserts({3}, 0), {}, {}},
        {start, moves({0, 0}, {0, 1}, 1), u"and(or(b a c) d)"_s, {0, 0, 1}},
        {start, moves({0, 2}, {0, 1}, 0), u"and(a or(d b c))"_s, {0, 1, 0}},
        {start, moves({0, 0}, {0}, 3), u"and(or(b c) d a)"_s, {0, 2}},
        {start, moves({0, 2}, {0}, 0), u"and(d a or(b c))"_s, {0, 0}},
        {start, moves({0, 1}, {0}, 1), u"and(a or(b c) d)"_s, {0, 1}},
        {start, moves({0, 1, 1}, {0}, 0), u"and(c a or(b) d)"_s, {0, 0}},
        {start, moves({0, 1}, {}, 1), u"and(and(a d) or(b c))"_s, {0, 1}},
        {start, moves({0}, {0, 1}, 0), {}, {}},
        {start, moves({0, 1}, {0, 1}, 0), {}, {}},
        {start, moves({0, 0}, {0, 2}, 0), {}, {}},
        {start, moves({0, 5}, {0}, 0), {}, {}},
        {start, edits(&Tree::remove, Path{0, 1}), u"and(a d)"_s, {}},
        {start, edits(&Tree::remove, Path()), {}, {}},
        {start, edits(&Tree::wrap, Path{0, 1}, Type::Not), u"and(a not(or(b c)) d)"_s, {}},
        {start, edits(&Tree::wrap, Path{0}, Type::Comparison), {}, {}},
        {start, edits(&Tree::unwrap, Path{0, 1}), u"and(a b c d)"_s, {}},
        {start, edits(&Tree::unwrap, Path{0}), {}, {}},
        {start, edits(&Tree::unwrap, Path{0, 0}), {}, {}},
        {{{no({is(u"a"_s)})}}, edits(&Tree::unwrap, Path{0}), u"a"_s, {}},
        {start, edits(&Tree::setGroupType, Path{0, 1}, Type::Not), u"and(a not(b c) d)"_s, {}},
        {start, edits(&Tree::setGroupType, Path{0, 0}, Type::Not), {}, {}},
        {start, edits(&Tree::setTerm, Path{0, 2}, is(u"x"_s).term), u"and(a or(b c) x)"_s, {}},
        {start, edits(&Tree::setTerm, Path{0, 1}, is(u"x"_s).term), {}, {}},
    };
    int number = 0;
    for (const auto& each : cases) {
        SCOPED_TRACE(++number);
        ConditionTree tree = each.before;
        const auto place = each.edit(tree);
        EXPECT_EQ(place.has_value(), !each.after.isEmpty());
        EXPECT_EQ(place.value_or(ConditionPath{}), each.place);
        EXPECT_EQ(shape(tree.roots), each.after.isEmpty() ? shape(each.before.roots) : each.after);
    }
}

TEST(ConditionHistory, GoesBackAndForthUntilSomethingElseIsDone) {
    const ConditionTree a{{is(u"a"_s)}};
    const ConditionTree b{{is(u"b"_s)}};
    ConditionHistory history;
    history.undo();
    history.reset(a);
    history.push(a);
    EXPECT_FALSE(history.canUndo());
    history.push(b);
    history.push({});
    history.undo();
    history.undo();
    EXPECT_EQ(history.current(), a);
    history.redo();
    EXPECT_EQ(history.current(), b);
    history.push(a);
    history.redo();
    EXPECT_EQ(history.current(), a);
    EXPECT_FALSE(history.canRedo());
}

ConditionTree nested(int levels) {
    ConditionTree tree{{is(u"a"_s)}};
    for (int level = 0; level < levels; ++level) {
        tree.wrap({0}, Type::And);
    }
    return tree;
}

TEST(ConditionCheck, NamesEachFaultAndItsPlace) {
    const auto one = [](const QString& name, qint32 type, const QString& constant) {
        return ConditionTree{{comparisonNode(name, type, constant)}};
    };
    ConditionNode unknown;
    unknown.type = Type{9};
    ConditionNode withoutTerm;
    withoutTerm.hasTerm = false;
    const ConditionPath whole;
    const ConditionPath root{0};
    const QString blank = u"  "_s;
    const struct {
        ConditionTree tree;
        std::vector<std::pair<ConditionPath, Kind>> faults;
    } cases[] = {
        {{{is(u"a"_s)}}, {}},
        {one(u"a"_s, CompareLess, u" -.5e3 "_s), {}},
        {one(u"a"_s, CompareSameText, {}), {}},
        {nested(Condition::kMaxDepth), {}},
        {{}, {{whole, Kind::Empty}}},
        {{{is(u"a"_s), is(u"b"_s)}}, {{whole, Kind::SeveralRoots}}},
        {{{all({})}}, {{root, Kind::EmptyGroup}}},
        {{{no({})}}, {{root, Kind::EmptyGroup}}},
        {{{any({is(u"a"_s), no({is(u"b"_s), is({})})})}},
         {{{0, 1}, Kind::NotWithoutOne}, {{0, 1, 1}, Kind::NoName}}},
        {{{all({unknown, withoutTerm})}}, {{{0, 0}, Kind::UnknownType}, {{0, 1}, Kind::NoTerm}}},
        {one(blank, CompareGreater, u"mm"_s), {{root, Kind::NoName}, {root, Kind::NoNumber}}},
        {one(u"a"_s, CompareNotEqual, {}), {{root, Kind::NoNumber}}},
        {one(u"a"_s, CompareEqual, u"1e999"_s), {{root, Kind::NoNumber}}},
        {one(u"a"_s, CompareEqual, u"1,5"_s), {{root, Kind::MoreThanNumber}}},
        {one(u"a"_s, CompareGreaterOrEqual, u"2 000"_s), {{root, Kind::MoreThanNumber}}},
        {one(u"a"_s, CompareSameText, u"1,5"_s), {}},
        {one(u"a"_s, 8, {}), {{root, Kind::UnknownComparison}}},
        {one(u"a"_s, CompareContains, u"x "_s), {{root, Kind::NeverHolds}}},
        {one(u"a"_s, CompareSameText, QString(kTextLimit + 1, u'x')), {{root, Kind::TooLong}}},
        {one(QString(QChar(0xD800)), CompareEqual, u"1"_s), {{root, Kind::NotStorable}}},
        {nested(Condition::kMaxDepth + 1),
         {{ConditionPath(Condition::kMaxDepth + 1, 0), Kind::TooDeep}}},
        {{{all(std::vector(kMaxConditionNodes, is(u"a"_s)))}}, {{whole, Kind::TooLarge}}},
    };
    int number = 0;
    for (const auto& each : cases) {
        std::vector<std::pair<ConditionPath, Kind>> found;
        for (const ConditionFault& fault : conditionFaults(each.tree)) {
            found.emplace_back(fault.place, fault.kind);
            EXPECT_TRUE(fault.text.endsWith(u"。"_s));
        }
        EXPECT_EQ(found, each.faults) << "case " << ++number;
    }
}

TEST(ConditionCheck, SaysWhatIsReadInThePlaceOfANumber) {
    const std::pair<QString, QString> cases[] = {
        {u"1,5"_s, u"“1,5”不是数值，按 1 计算。"_s},
        {u"2 000"_s, u"“2 000”不是数值，按 2 计算。"_s},
        {u"-.5mm"_s, u"“-.5mm”不是数值，按 -0.5 计算。"_s},
        {u"宽"_s, u"“宽”不是数值，按 0 计算。"_s},
        {u" "_s, u"没有填写数值。"_s},
    };
    for (const auto& [constant, text] : cases) {
        const auto faults = conditionFaults({{is(u"a"_s, CompareLess, constant)}});
        ASSERT_EQ(faults.size(), 1U);
        EXPECT_EQ(faults.front().text, u"“小于”要与数值比较，但"_s + text);
    }
}

TEST(ConditionWords, SayWhatIsEvaluated) {
    ConditionNode unknown;
    unknown.type = Type{9};
    const ConditionNode a = is(u"a"_s, CompareGreaterOrEqual, u"2"_s);
    const ConditionNode b = is(u"b"_s, CompareSameText, u"木材"_s);
    const struct {
        std::vector<ConditionNode> roots;
        QString words;
    } cases[] = {
        {{}, {}},
        {{a}, u"a 大于等于 2"_s},
        {{all({a, no({b})})}, u"a 大于等于 2 并且 并非 b 文本等于“木材”"_s},
        {{no({any({a, all({a, b})})})},
         u"并非 （a 大于等于 2 或者 （a 大于等于 2 并且 b 文本等于“木材”））"_s},
        {{is(u"a"_s, CompareContains, u"x  y"_s)}, u"a 包含“x  y”"_s},
        {{all({all({b})})}, u"b 文本等于“木材”"_s},
        {{is({}, CompareLess, {})}, u"［未填名称］ 小于 ［未填数值］"_s},
        {{is(u"a"_s, CompareEqual, u"1,5"_s)}, u"a 等于 1,5（按 1 计算）"_s},
        {{a, b}, u"a 大于等于 2（不起作用）；b 文本等于“木材”"_s},
        {{a, unknown}, u"a 大于等于 2；［未知类型 9，沿用前面的结果］"_s},
        {{a, all({no({unknown}), b})},
         u"a 大于等于 2；（并非 ［未知类型 9，沿用前面的结果］ 并且 b 文本等于“木材”）"_s},
        {{no({a, b})}, u"并非组（a 大于等于 2（不起作用）；b 文本等于“木材”）"_s},
        {{any({})}, u"［空的“或者”组，沿用前面的结果］"_s},
        {{is(u"a"_s, 9)}, u"a ［未知比较 9，沿用前面的结果］"_s},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(conditionWords({each.roots}), each.words);
    }
}

TEST(ConditionText, IsReadAndWrittenAsOneLine) {
    const ConditionNode a = is(u"a"_s);
    const ConditionNode b = is(u"b"_s);
    const ConditionNode c = is(u"c"_s);
    const struct {
        QString text;
        ConditionNode root;
        QString written;  ///< "": as `text`
    } cases[] = {
        {u"跨度 >= 2 and not 材料 equal \"木材\""_s,
         all({is(u"跨度"_s, CompareGreaterOrEqual, u"2"_s),
              no({is(u"材料"_s, CompareSameText, u"木材"_s)})}),
         {}},
        {u"a = 1 and b = 1 or c = 1"_s, any({all({a, b}), c}), {}},
        {u"a = 1 and (b = 1 or c = 1)"_s, all({a, any({b, c})}), {}},
        {u"(a = 1 and b = 1) and c = 1"_s, all({all({a, b}), c}), {}},
        {u"a = 1 or (b = 1 or c = 1)"_s, any({a, any({b, c})}), {}},
        {u"not (a = 1 and b = 1)"_s, no({all({a, b})}), {}},
        {u"not not a = 1"_s, no({no({a})}), {}},
        {u"and (a = 1)"_s, all({a}), {}},
        {u"b = 1 and or (not and (a = 1))"_s, all({b, any({no({all({a})})})}), {}},
        {u" A1_<>-1.5E+3\nAND\t((b=1)) "_s, all({is(u"A1_"_s, CompareNotEqual, u"-1.5E+3"_s), b}),
         u"A1_ <> -1.5E+3 and b = 1"_s},
        {u"a <= .5 or a < 1. or a > +1"_s,
         any({is(u"a"_s, CompareLessOrEqual, u".5"_s), is(u"a"_s, CompareLess, u"1."_s),
              is(u"a"_s, CompareGreater, u"+1"_s)}),
         {}},
        {u"\"长 度\" = \"12 mm\""_s, is(u"长 度"_s, CompareEqual, u"12 mm"_s), {}},
        {u"\"And\" CONTAINS \"\\\"\\\\\\n\\r\\tn\""_s,
         is(u"And"_s, CompareContains, u"\"\\\n\r\tn"_s),
         u"\"And\" contains \"\\\"\\\\\\n\\r\\tn\""_s},
        {u"x contains 3"_s, is(u"x"_s, CompareContains, u"3"_s), u"x contains \"3\""_s},
        {u"\"2a\" = 1"_s, is(u"2a"_s), {}},
    };
    for (const auto& each : cases) {
        const ParsedCondition parsed = parseCondition(each.text);
        EXPECT_FALSE(parsed.error) << qPrintable(each.text);
        EXPECT_EQ(parsed.warnings.empty(), !each.text.contains(u"12 mm"_s));
        EXPECT_EQ(parsed.tree, ConditionTree{{each.root}}) << qPrintable(each.text);
        EXPECT_EQ(conditionText({{each.root}}), each.written.isEmpty() ? each.text : each.written);
    }
    const auto warnings = parseCondition(u"a = 1 and\nb < \"2 m\" and c = \"3,5\""_s).warnings;
    ASSERT_EQ(warnings.size(), 2U);
    EXPECT_EQ(std::tuple(warnings[1].line, warnings[1].column), std::tuple(2, 15));
    const ParsedCondition deep = parseCondition(*conditionText(nested(Condition::kMaxDepth)));
    EXPECT_EQ(deep.tree, nested(Condition::kMaxDepth));
    ConditionNode typed = a;
    typed.term.fieldType = 5;
    EXPECT_EQ(conditionText({{typed}}), std::nullopt);
    EXPECT_EQ(conditionText({{a, b}}), std::nullopt);
    EXPECT_EQ(conditionText({}), std::nullopt);
}

TEST(ConditionText, ErrorsNameTheirPlace) {
    const struct {
        QString text;
        int line, column;
        const char* error;
    } cases[] = {
        {{}, 1, 1, "name of a property"},
        {u"a = 1 and"_s, 1, 10, "name of a property"},
        {u"a = 1 b = 2"_s, 1, 7, "\"and\", \"or\" or the end"},
        {u"a = 1\nand 2 = 1"_s, 2, 5, "name of a property"},
        {u"a == 1"_s, 1, 4, "expected a number"},
        {u"a equals \"x\""_s, 1, 3, "one of"},
        {u"a = x"_s, 1, 5, "expected a number"},
        {u"a = 12mm"_s, 1, 5, "expected a number"},
        {u"a = 1.2.3"_s, 1, 5, "expected a number"},
        {u"a = \"x"_s, 1, 5, "no closing quote"},
        {u"a equal \"x\ny\""_s, 1, 9, "no closing quote"},
        {uR"(a equal "x\y")"_s, 1, 11, "must be followed by"},
        {u"(a = 1"_s, 1, 7, "expected \")\""},
        {u"and a = 1"_s, 1, 5, "expected \"(\""},
        {u"()"_s, 1, 2, "name of a property"},
        {u"b = 1 or\n  not a < \"x\""_s, 2, 7, "needs a number"},
        {u"\"\" = 1"_s, 1, 1, "empty"},
        {u"a equal \" x\""_s, 1, 1, "blanks"},
        {u"not "_s.repeated(Condition::kMaxDepth + 1) + u"a = 1"_s, 1, 401, "too deep"},
        {u"("_s.repeated(100000), 1, 501, "too deep"},
    };
    for (const auto& each : cases) {
        const ParsedCondition parsed = parseCondition(each.text);
        ASSERT_TRUE(parsed.error) << qPrintable(each.text.left(40));
        EXPECT_TRUE(parsed.error->text.contains(QLatin1StringView(each.error)))
            << qPrintable(each.text.left(40) + u": "_s + parsed.error->text);
        EXPECT_TRUE(parsed.tree.isEmpty());
        EXPECT_EQ(std::pair(parsed.error->line, parsed.error->column),
                  std::pair(each.line, each.column))
            << qPrintable(each.text.left(40));
    }
}

}  // namespace
}  // namespace varo::test
