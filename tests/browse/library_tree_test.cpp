#include "browse/library_tree.h"

#include "browse/reading_notice.h"
#include "platform/ui/node_view.h"
#include "support/desk.h"
#include "support/no_waiting.h"

#include <QLabel>
#include <QScrollBar>
#include <QShortcut>
#include <QTest>
#include <QVBoxLayout>

#include <functional>
#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

/// A host window, which refuses to be closed, with a tree of five libraries of one folder each, the
/// third of which is missing. All but the first are read while the program goes on.
class ReadingTree : public testing::Test, protected NoWaiting, protected QWidget {
  protected:
    ReadingTree() {
        stored.addFolder(0, u"梁"_s);
        other.addFolder(0, u"柱"_s);
        for (const QString& path :
             {stored.path(), other.path(), u"/none"_s, stored.path(), stored.path()}) {
            addTo(libraries, {}, path, u"库"_s);
        }
        auto* rows = new QVBoxLayout(this);
        rows->addWidget(&view, 1);
        rows->addWidget(&line);
        view.setHeaderHidden(true);
        tree.setReadingTime(0);
        tree.model().setRenamer([](const NodeId&, const QString&) { return true; });
    }

    /// Shows the window and begins to read.
    void build() {
        show();
        activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(this));
        EXPECT_TRUE(tree.BuildFormulaTree(libraries, OnUnreadable::Stop));
        EXPECT_TRUE(read().endsWith(u"0000"_s));
        EXPECT_TRUE(tree.isReading());
        EXPECT_TRUE(line.text().contains(u"还有 4 个，按Esc停止"_s) && !line.isHidden());
    }
    void finish() {
        EXPECT_TRUE(QTest::qWaitFor([&] { return !tree.isReading(); }, 60'000));
    }
    /// How many folders are shown of each library.
    QString read() {
        QString counts;
        for (int row = 0; row < tree.model().rowCount(); ++row) {
            counts += QString::number(tree.model().rowCount(root(row)));
        }
        return counts;
    }
    QModelIndex root(int row) { return tree.model().index(row, 0); }
    QString note(int row) { return root(row).data(Qt::ToolTipRole).toString(); }
    void closeEvent(QCloseEvent* event) override { event->ignore(); }

    TestLibrary stored;
    TestLibrary other;
    colFormulaDB libraries;
    RecordingQuestions questions;
    CurrentLibrary library{libraries, questions};
    ui::NodeView view{this};
    QLabel line{this};
    LibraryTree tree{view, library, questions};
    ReadingNotice notice{tree, line};
};

TEST_F(ReadingTree, ReadsMeanwhileUntilAnEscapeThatNobodyElseUsesOrTheWindowIsHidden) {
    QLineEdit elsewhere;
    QShortcut hosts(Qt::Key_Escape, this);
    int hostGot = 0;
    connect(&hosts, &QShortcut::activated, this, [&] { ++hostGot; });
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { QTest::keyClick(&view, Qt::Key_Escape); }, "10000"},
        {[&] { hide(); }, "10000"},
        {[&] { tree.clear(); }, ""},
        {[&] { close(); }, "11011"},
        {[&] { QTest::keyClick(&view, Qt::Key_Escape, Qt::ShiftModifier); }, "11011"},
        {[&] {
             elsewhere.show();
             elsewhere.activateWindow();
             EXPECT_TRUE(QTest::qWaitForWindowActive(&elsewhere));
             QTest::keyClick(&elsewhere, Qt::Key_Escape);
         },
         "11011"},
        {[&] {
             tree.editLabel({1, 1});
             auto* editor = view.findChild<QLineEdit*>();
             ASSERT_NE(editor, nullptr);
             QTest::keyClick(editor, Qt::Key_Escape);
         },
         "11011"},
    };
    for (const auto& [act, left] : cases) {
        SCOPED_TRACE(&act - &cases[0].first);
        other.lock();  // so that reading does not end
        build();
        tree.setReadingTime(60'000);
        EXPECT_TRUE(note(2).contains(u"单击后读取"_s)) << note(2).toStdString();
        act();
        EXPECT_EQ(tree.isReading(), left == std::string_view("11011"));
        other.unlock();
        tree.setReadingTime(0);
        finish();
        settle();
        EXPECT_EQ(read(), QLatin1StringView(left));
        EXPECT_TRUE(line.isHidden());
    }
    EXPECT_EQ(hostGot, 0);
    EXPECT_TRUE(note(2).contains(u"文件不存在"_s)) << note(2).toStdString();
    EXPECT_EQ(questions.informed, QStringList());
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_EQ(hostGot, 1);
}

TEST_F(ReadingTree, MovesNothingThatTheUserSees) {
    for (int i = 0; i < 30; ++i) {
        stored.addFolder(0, u"板"_s);
    }
    build();
    settle();
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
    ASSERT_GT(view.verticalScrollBar()->value(), 0);
    const QRect before = view.visualRect(root(4));
    finish();
    settle();
    EXPECT_EQ(view.visualRect(root(4)), before);
    EXPECT_FALSE(line.text().contains(u"Esc"_s));
    view.verticalScrollBar()->setValue(0);
    EXPECT_TRUE(line.isHidden());
    EXPECT_TRUE(view.isExpanded(root(0)) && !view.isExpanded(root(1)));
}

TEST_F(ReadingTree, WaitsForNoLockedLibraryAndTriesItAgainBehindTheOthers) {
    for (const bool isFreed : {true, false}) {
        other.lock();
        QString whenTriedAgain;
        const auto waiting = connect(&tree, &LibraryTree::readingChanged, this, [&](int count) {
            if (count == 1) {
                whenTriedAgain = read();
                if (isFreed) {
                    other.unlock();
                }
            }
        });
        build();
        finish();
        disconnect(waiting);
        EXPECT_EQ(whenTriedAgain, u"10011"_s);
        EXPECT_EQ(read(), isFreed ? u"11011"_s : u"10011"_s);
        EXPECT_EQ(note(1).contains(u"文件正被其他程序占用"_s), !isFreed);
    }
    EXPECT_EQ(NoWaiting::waits, 0);
    other.unlock();
}

TEST_F(ReadingTree, LeavesOutALibraryThatHasLeftTheListAndEndsWithTheTree) {
    build();
    libraries.Remove(2);
    finish();
    EXPECT_EQ(read(), u"10011"_s);
    ui::NodeView gone;
    {
        LibraryTree brief(gone, library, questions);
        brief.setReadingTime(0);
        brief.BuildFormulaTree(libraries, OnUnreadable::GoOn);
        EXPECT_TRUE(brief.isReading());
    }
    settle();
}

}  // namespace
}  // namespace varo::test
