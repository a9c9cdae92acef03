#include "control/folder_tree_model.h"
#include "platform/ui/node_view.h"

#include <QAbstractItemModelTester>

#include <gtest/gtest.h>
#include <random>

namespace varo {
namespace {

struct Stored {
    qint32 id, parent, order;
    const char* name;
};

QStringList listing(const FolderTree& tree, FolderTree::Node node, int depth = 0) {
    QStringList lines{QString(depth, u'.') + tree.text(node)};
    for (int i = 0; i < tree.childCount(node); ++i) {
        lines += listing(tree, tree.child(node, i), depth + 1);
    }
    return lines;
}

FolderRows rowsOf(std::initializer_list<Stored> stored) {
    FolderRows rows;
    for (const Stored& each : stored) {
        rows.add(each.id, each.parent, each.order, QString::fromUtf8(each.name));
    }
    return rows;
}

QString built(std::initializer_list<Stored> stored) {
    FolderTree tree;
    const auto root = tree.addLibrary(QStringLiteral("DBNode1"), QStringLiteral("库"));
    int announced = -1;
    tree.addFolders(root, rowsOf(stored), [&](int count) {
        announced = count;
        EXPECT_EQ(tree.childCount(root), 0);
    });
    EXPECT_EQ(announced, tree.childCount(root));
    return listing(tree, root).join(u' ');
}

TEST(FolderTree, PlacesFoldersByParentAndOrder) {
    EXPECT_EQ(
        built({{1, 0, 2, "b"}, {2, 0, 1, "a"}, {3, 1, 1, "d"}, {4, 2, 1, "c"}, {5, 3, 1, "e"}}),
        QStringLiteral("库 .a ..c .b ..d ...e"));
}

TEST(FolderTree, LeavesOutWhatHangsNowhereAndEndsOnCycles) {
    EXPECT_EQ(built({{1, 1, 1, "self"}, {2, 0, 1, "a"}}), QStringLiteral("库 .a"));
    EXPECT_EQ(built({{1, 2, 1, "x"}, {2, 1, 1, "y"}, {3, 0, 1, "a"}}), QStringLiteral("库 .a"));
    EXPECT_EQ(built({{1, 77, 1, "orphan"}, {2, 0, 1, "a"}}), QStringLiteral("库 .a"));
    EXPECT_EQ(built({{0, 0, 1, "zero"}, {2, 0, 2, "a"}}), QStringLiteral("库 .zero .a"));
    EXPECT_EQ(built({{4, 0, 1, "first"}, {4, 0, 2, "again"}}), QStringLiteral("库 .first"));
    EXPECT_EQ(built({{-3, 0, 1, "negative"}, {5, -3, 2, "below"}}),
              QStringLiteral("库 .negative ..below"));
    EXPECT_EQ(built({}), QStringLiteral("库"));
}

TEST(FolderTree, EndsBelowItsDeepestLevel) {
    FolderTree tree;
    const auto root = tree.addLibrary(QStringLiteral("DBNode1"), QStringLiteral("库"));
    FolderRows rows;
    for (int id = 1; id <= FolderTree::MaxDepth + 5; ++id) {
        rows.add(id, id - 1, 1, QStringLiteral("f"));
    }
    tree.addFolders(root, std::move(rows), [](int) {});
    EXPECT_NE(tree.findFolder(root, FolderTree::MaxDepth), FolderTree::None);
    EXPECT_EQ(tree.findFolder(root, FolderTree::MaxDepth + 1), FolderTree::None);
}

TEST(FolderTree, FindsNodesByKeyAndTellsThemApartByLibrary) {
    FolderTree tree;
    const auto first = tree.addLibrary(QStringLiteral("DBNode1"), QStringLiteral("一"));
    const auto second = tree.addLibrary(QStringLiteral("DBNode12"), QStringLiteral("二"));
    tree.addFolders(first, rowsOf({{1, 0, 1, "a"}, {2, 1, 1, "b"}}), [](int) {});
    tree.addFolders(second, rowsOf({{1, 0, 1, "c"}}), [](int) {});

    const auto b = tree.find(u"FormulaNode2->DBNode1");
    ASSERT_NE(b, FolderTree::None);
    EXPECT_EQ(tree.text(b), QStringLiteral("b"));
    EXPECT_EQ(tree.key(b), QStringLiteral("FormulaNode2->DBNode1"));
    EXPECT_EQ(tree.rootKey(b), QStringLiteral("DBNode1"));
    EXPECT_EQ(tree.tag(b), u"FormulaNode");
    EXPECT_EQ(tree.tag(first), u"RootNode");
    EXPECT_EQ(tree.text(tree.find(u"FormulaNode1->DBNode12")), QStringLiteral("c"));
    EXPECT_EQ(tree.find(u"DBNode12"), second);
    for (const QStringView unknown :
         {u"", u"DBNode2", u"FormulaNode2->DBNode12", u"FormulaNode01->DBNode1", u"FormulaNode1",
          u"FormulaNodex->DBNode1", u"FormulaNode1->", u"LvFormulaKey1"}) {
        EXPECT_EQ(tree.find(unknown), FolderTree::None) << unknown.toString().toStdString();
    }
}

TEST(FolderTreeModel, KeepsTheRulesOfModelsWhileLibrariesArrive) {
    FolderTreeModel model;
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::Fatal);
    std::mt19937 random(7);
    for (int library = 1; library <= 3; ++library) {
        const auto root =
            model.addLibrary(QStringLiteral("DBNode%1").arg(library), QStringLiteral("库"));
        FolderRows rows;
        for (int id = 1; id <= 200; ++id) {
            rows.add(id, static_cast<int>(random() % static_cast<unsigned>(id)), id,
                     QStringLiteral("f%1").arg(id));
        }
        model.addFolders(root, std::move(rows));
    }
    EXPECT_EQ(model.rowCount(), 3);
    for (int id = 1; id <= 200; ++id) {
        const QString key = QStringLiteral("FormulaNode%1->DBNode2").arg(id);
        const QModelIndex index = model.find(key);
        ASSERT_TRUE(index.isValid());
        EXPECT_EQ(index.data(ui::NodeView::KeyRole).toString(), key);
        EXPECT_EQ(model.index(index.row(), 0, index.parent()), index);
    }
    model.clear();
    EXPECT_EQ(model.rowCount(), 0);
}

TEST(FolderTreeModel, ShowsTheSameAfterManyChangesAsWhenItIsBuiltAnew) {
    struct Folder {
        qint32 id, parent, order;
        QString name;
    };
    std::vector<Folder> stored;
    const auto rows = [&] {
        FolderRows all;
        for (const Folder& each : stored) {
            all.add(each.id, each.parent, each.order, each.name);
        }
        return all;
    };
    const auto keyOf = [](qint32 id) {
        return id == 0 ? QStringLiteral("DBNode1")
                       : QStringLiteral("FormulaNode%1->DBNode1").arg(id);
    };
    FolderTreeModel model;
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setRenamer([](const QString&, const QString&) { return true; });
    model.addLibrary(keyOf(0), QStringLiteral("库"));
    std::mt19937 random(11);
    for (qint32 step = 1; step <= 600; ++step) {
        const std::size_t chosen = random() % (stored.size() + 1);
        const qint32 id = chosen == stored.size() ? 0 : stored[chosen].id;
        const QModelIndex node = model.find(keyOf(id));
        ASSERT_TRUE(node.isValid());
        const unsigned what = random() % 8;
        if (what < 4 || id == 0) {
            stored.push_back({step, id, step, QStringLiteral("f%1").arg(step)});
            model.appendFolder(node, step, stored.back().name);
        } else if (what == 4) {
            model.removeFolder(node);
            std::erase_if(
                stored, [&](const Folder& each) { return !model.find(keyOf(each.id)).isValid(); });
        } else if (what == 5) {
            stored[chosen].order = static_cast<qint32>(random() % static_cast<unsigned>(step));
            const QModelIndex parent = node.parent();
            model.removeFolders(parent);
            model.addFolders(parent, rows());
        } else {
            stored[chosen].name += QStringLiteral("名");
            ASSERT_TRUE(model.setData(node, stored[chosen].name, Qt::EditRole));
        }
        FolderTree anew;
        anew.addLibrary(keyOf(0), QStringLiteral("库"));
        anew.addFolders(anew.library(0), rows(), [](int) {});
        ASSERT_EQ(listing(model.tree(), model.tree().library(0)), listing(anew, anew.library(0)));
    }
    EXPECT_GT(stored.size(), 20U) << "or little has been tried";
}

}  // namespace
}  // namespace varo
