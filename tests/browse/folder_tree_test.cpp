#include "browse/folder_tree_model.h"
#include "platform/ui/node_view.h"
#include "support/printers.h"

#include <QAbstractItemModelTester>

#include <gtest/gtest.h>
#include <random>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

struct Stored {
    qint32 id, parent, order;
    QString name;
};

QStringList listing(const FolderTree& tree, FolderTree::Node node, int depth = 0) {
    QStringList lines{QString(depth, u'.') + tree.text(node)};
    for (int i = 0; i < tree.childCount(node); ++i) {
        lines += listing(tree, tree.child(node, i), depth + 1);
    }
    return lines;
}

FolderRows rowsOf(const std::vector<Stored>& stored) {
    FolderRows rows;
    for (const Stored& each : stored) {
        rows.add(each.id, each.parent, each.order, each.name);
    }
    return rows;
}

TEST(FolderTree, PlacesFoldersByParentAndOrderAndLeavesOutWhatBelongsNowhere) {
    const std::pair<std::vector<Stored>, QString> cases[] = {
        {{{1, 0, 2, u"b"_s}, {2, 0, 1, u"a"_s}, {3, 1, 1, u"d"_s}, {4, 2, 1, u"c"_s}},
         u"库 .a ..c .b ..d"_s},
        {{{1, 1, 1, u"self"_s}, {2, 0, 1, u"a"_s}}, u"库 .a"_s},
        {{{1, 2, 1, u"x"_s}, {2, 1, 1, u"y"_s}, {3, 0, 1, u"a"_s}}, u"库 .a"_s},
        {{{1, 77, 1, u"orphan"_s}, {2, 0, 1, u"a"_s}}, u"库 .a"_s},
        {{{0, 0, 1, u"zero"_s}, {2, 0, 2, u"a"_s}}, u"库 .zero .a"_s},
        {{{4, 0, 1, u"first"_s}, {4, 0, 2, u"again"_s}}, u"库 .first"_s},
        {{{-3, 0, 1, u"negative"_s}, {5, -3, 2, u"below"_s}}, u"库 .negative ..below"_s},
        {{}, u"库"_s},
    };
    for (const auto& [stored, shown] : cases) {
        FolderTree tree;
        const auto root = tree.addLibrary(1, u"库"_s);
        int announced = -1;
        tree.addFolders(root, rowsOf(stored), [&](int count) {
            announced = count;
            EXPECT_EQ(tree.childCount(root), 0);
        });
        EXPECT_EQ(announced, tree.childCount(root));
        EXPECT_EQ(listing(tree, root).join(u' '), shown);
    }
}

TEST(FolderTree, EndsBelowItsDeepestLevel) {
    FolderTree tree;
    const auto root = tree.addLibrary(1, u"库"_s);
    FolderRows rows;
    for (int id = 1; id <= kMaxFolderDepth + 5; ++id) {
        rows.add(id, id - 1, 1, u"f"_s);
    }
    rows.add(0, 0, 2, u"zero"_s);
    tree.addFolders(root, std::move(rows), [](int) {});
    EXPECT_EQ(tree.levelsBelow(root), kMaxFolderDepth);
    EXPECT_EQ(tree.levelsBelow(tree.find({1, 0})), 0) << "0 means the top level";
    EXPECT_EQ(tree.find({2, 1}), FolderTree::kNone);
    EXPECT_EQ(tree.levelsBelow(tree.find({1, kMaxFolderDepth - 1})), 1);
    EXPECT_EQ(tree.levelsBelow(tree.find({1, kMaxFolderDepth})), 0);
    EXPECT_EQ(tree.find({1, kMaxFolderDepth + 1}), FolderTree::kNone);
}

/// With a second library, so that what is done to the first leaves the other alone.
TEST(FolderTreeModel, ShowsTheSameAfterManyChangesAsWhenItIsBuiltAnew) {
    std::vector<Stored> stored;
    FolderTreeModel model;
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setRenamer([](const NodeId&, const QString&) { return true; });
    model.addLibrary(1, u"库"_s);
    const QModelIndex other = model.addLibrary(2, u"库"_s);
    FolderRows others;
    for (qint32 id = 1; id <= 200; ++id) {
        others.add(id, id / 3, id, u"f"_s);
    }
    model.addFolders(other, std::move(others));
    std::mt19937 random(11);
    for (qint32 step = 1; step <= 600; ++step) {
        const std::size_t chosen = random() % (stored.size() + 1);
        const NodeId id{1,
                        chosen == stored.size() ? std::nullopt : std::optional(stored[chosen].id)};
        const QModelIndex node = model.find(id);
        ASSERT_TRUE(node.isValid());
        ASSERT_EQ(node.data(ui::NodeView::KeyRole).toString(), keyOf(id));
        const unsigned what = random() % 8;
        if (what < 4 || !id.isFolder()) {
            stored.push_back({step, id.parentId(), step, u"f%1"_s.arg(step)});
            model.appendFolder(node, step, stored.back().name);
        } else if (what == 4) {
            model.removeFolder(node);
            std::erase_if(stored, [&](const Stored& each) {
                return !model.find({1, each.id}).isValid();
            });
        } else if (what == 5) {
            stored[chosen].order = static_cast<qint32>(random() % static_cast<unsigned>(step));
            const QModelIndex parent = node.parent();
            model.removeFolders(parent);
            model.addFolders(parent, rowsOf(stored));
        } else {
            stored[chosen].name += u"名"_s;
            ASSERT_TRUE(model.setData(node, stored[chosen].name, Qt::EditRole));
        }
        FolderTree anew;
        anew.addFolders(anew.addLibrary(1, u"库"_s), rowsOf(stored), [](int) {});
        ASSERT_EQ(listing(model.tree(), model.tree().library(0)), listing(anew, anew.library(0)));
    }
    EXPECT_GT(stored.size(), 20U) << "or little has been tried";
    EXPECT_EQ(listing(model.tree(), model.tree().library(1)).size(), 201);
    model.clear();
    EXPECT_EQ(model.rowCount(), 0);
}

}  // namespace
}  // namespace varo::test
