#include "browse/library_tree.h"

#include "platform/ui/node_view.h"
#include "support/desk.h"

#include <QTest>

#include <functional>
#include <gtest/gtest.h>

namespace varo::test {
namespace {

using namespace Qt::StringLiterals;

TEST(LibraryTree, ReadsWhatTakesLongMeanwhileUntilEscapeOrTheWindowIsClosed) {
    TestLibrary stored;
    stored.addFolder(0, u"梁"_s);
    colFormulaDB libraries;
    for (const QString& path : {stored.path(), stored.path(), u"/none"_s, stored.path()}) {
        addTo(libraries, {}, path);
    }
    RecordingQuestions questions;
    CurrentLibrary library(libraries, questions);
    ui::NodeView view;
    LibraryTree tree(view, library, questions);
    tree.setReadingTime(0);
    const auto read = [&] {
        QString counts;
        for (int row = 0; row < tree.model().rowCount(); ++row) {
            counts += QString::number(tree.model().rowCount(tree.model().index(row, 0)));
        }
        return counts;
    };
    const auto note = [&] { return tree.model().index(2, 0).data(Qt::ToolTipRole).toString(); };
    const std::pair<std::function<void()>, const char*> ends[] = {
        {[&] { QTest::keyClick(&view, Qt::Key_Escape); }, "1000"},
        {[&] { view.close(); }, "1000"},
        {[&] { tree.clear(); }, ""},
        {[&] { EXPECT_TRUE(QTest::qWaitFor([&] { return !tree.isReading(); }, 60'000)); }, "1101"},
    };
    for (const auto& [end, left] : ends) {
        view.show();
        EXPECT_TRUE(tree.BuildFormulaTree(libraries, OnUnreadable::Stop));
        EXPECT_EQ(read(), u"1000"_s);
        EXPECT_TRUE(note().contains(u"单击后读取"_s)) << note().toStdString();
        EXPECT_TRUE(tree.isReading());
        end();
        EXPECT_FALSE(tree.isReading());
        settle();
        EXPECT_EQ(read(), QLatin1StringView(left));
    }
    EXPECT_TRUE(note().contains(u"文件不存在"_s)) << note().toStdString();
    EXPECT_EQ(questions.informed, QStringList());
}

}  // namespace
}  // namespace varo::test
