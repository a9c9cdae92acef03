#include "library/folder_rows.h"

#include "library/name_rules.h"
#include "library/node_id.h"
#include "support/printers.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

TEST(FolderRows, ASubtreeIsInOrderAndHasEachFolderOnce) {
    struct Stored {
        qint32 id, parent, order;
    };
    const struct {
        std::initializer_list<Stored> stored;
        qint32 folder;
        std::vector<qint32> subtree;
    } cases[] = {
        {{{1, 0, 2}, {2, 0, 1}, {3, 1, 2}, {4, 1, 1}, {5, 4, 1}, {6, 2, 1}}, 1, {1, 4, 5, 3}},
        {{{1, 0, 1}, {2, 1, 7}, {3, 1, 7}, {4, 1, -1}}, 1, {1, 4, 2, 3}},
        {{{1, 0, 1}, {2, 0, 2}}, 3, {}},
        {{}, 0, {}},
        {{{1, 1, 1}}, 1, {1}},
        {{{1, 2, 1}, {2, 3, 1}, {3, 1, 1}}, 2, {2, 1, 3}},
        {{{1, 0, 1}, {2, 1, 1}, {2, 1, 2}, {3, 2, 1}}, 1, {1, 2, 3}},
        {{{1, 0, 1}, {1, 1, 1}, {2, 1, 2}}, 1, {1, 2}},
        {{{0, 0, 1}, {1, 0, 2}}, 0, {0}},
        {{{0, 7, 1}, {7, 0, 1}, {8, 0, 2}}, 7, {7, 0}},
        {{{-3, 0, 1}, {5, -3, 2}}, -3, {-3, 5}},
    };
    for (const auto& each : cases) {
        FolderRows rows;
        for (const Stored& row : each.stored) {
            rows.add(row.id, row.parent, row.order, QString::number(row.order));
        }
        rows.sort();
        std::vector<qint32> ids;
        for (const FolderRows::Row& row : rows.subtreeOf(each.folder)) {
            ids.push_back(row.id);
            EXPECT_EQ(rows.name(row), QString::number(row.order));
        }
        EXPECT_EQ(ids, each.subtree);
    }
    FolderRows deep;
    for (int id = 1; id <= 100'000; ++id) {
        deep.add(id, id - 1, 1, QString(id == 1 ? 70'000 : 1, u'x'));
    }
    deep.sort();
    EXPECT_EQ(deep.subtreeOf(1).size(), 100'000U);
    EXPECT_EQ(deep.name(deep.rows().front()).size(), 65'535);
}

TEST(NodeId, HasOneKeyAndNoOtherTextIsOne) {
    const std::pair<QString, NodeId> nodes[] = {
        {u"DBNode1"_s, {1, std::nullopt}},      {u"DBNode2147483647"_s, {2147483647, std::nullopt}},
        {u"FormulaNode7->DBNode12"_s, {12, 7}}, {u"FormulaNode-3->DBNode1"_s, {1, -3}},
        {u"FormulaNode0->DBNode1"_s, {1, 0}},
    };
    for (const auto& [key, node] : nodes) {
        EXPECT_EQ(keyOf(node), key);
        EXPECT_EQ(nodeWithKey(key), node) << key.toStdString();
        EXPECT_EQ(node.parentId(), node.folder.value_or(0));
    }
    for (const QString& other :
         u",DBNode,DBNode0,DBNode-1,DBNode01,DBNode+1, DBNode1,DBNode1 ,dbnode1,DBNode4294967297,"
         "FormulaNode7,FormulaNode7->,FormulaNode7->DBNode,FormulaNode7->DBNode0,"
         "FormulaNode07->DBNode1,FormulaNodex->DBNode1,FormulaNode->DBNode1,"
         "FormulaNode7->DBNode1->DBNode1,FormulaNode4294967297->DBNode1,DBNode1->FormulaNode7,"
         "LvFormulaKey1,'; drop table Tree; --"_s.split(u',')) {
        EXPECT_FALSE(nodeWithKey(other).isValid()) << other.toStdString();
    }
    EXPECT_EQ(keyOf({}), QString());
}

TEST(NameRules, CountCharactersAndRefuseBlanks) {
    const QString emptyFolder = u"公式夹名称不能为空！"_s;
    const QString longFolder = u"公式夹名称超过40个字符！"_s;
    const std::tuple<const NameRules&, QString, QString> cases[] = {
        {folderNameRules(), u" 'O''Neil'; \"%_ "_s, {}},
        {folderNameRules(), QString(40, u'夹'), {}},
        {folderNameRules(), QString(41, u'夹'), longFolder},
        {folderNameRules(), QString(39, u'a') + u"  "_s, longFolder},
        {folderNameRules(), {}, emptyFolder},
        {folderNameRules(), QString(41, u' '), emptyFolder},
        {formulaNameRules(), QString(20, u'式'), {}},
        {formulaNameRules(), QString(21, u'式'), u"公式名称超过20个字符！"_s},
        {formulaNameRules(), u" "_s, u"公式名称不能为空！"_s},
    };
    for (const auto& [rules, name, expected] : cases) {
        EXPECT_EQ(refusal(rules, name), expected);
    }
}

}  // namespace
}  // namespace varo::test
