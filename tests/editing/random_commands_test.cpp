#include "support/beam_desk.h"

#include <QProcess>
#include <QStandardPaths>
#include <QToolBar>

#include <random>

namespace varo::test {
namespace {

/// The rows of a table of an Access library as mdb-export prints them; what the library itself says
/// where that is not installed, and of other libraries.
QStringList otherReadersRows(TestLibrary& library, const QString& table) {
    const QString program = QStandardPaths::findExecutable(u"mdb-export"_s);
    if (!isAccessTested() || program.isEmpty()) {
        return library.rows(u"Select ID,Name,PID,OrderID From "_s + table);
    }
    QProcess process;
    process.start(program, {u"-H"_s, u"-Q"_s, u"-d"_s, u"|"_s, library.path(), table});
    process.waitForFinished(-1);
    return QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

/// Clicks at random, and gives the commands that are offered then. There are properties and
/// a picture.
class RandomCommands : public BeamDesk, public testing::WithParamInterface<unsigned> {
  protected:
    RandomCommands() {
        for (const qint32 id : {simple, columns, shear}) {
            first.addProperty(id, u"形"_s, 0, id, NodeTypeFolder);
            first.addProperty(id, u"形"_s, 0, id, NodeTypeFormula);
        }
        first.addPicture(shear, pictureBytes(100));
        start();
    }

    int below(qsizetype limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

    /// Clicks on an item, or on empty space; the right button opens a menu.
    void click(ui::NodeView& view) {
        QList<QModelIndex> items;
        for (QModelIndex index = view.model()->index(0, 0); index.isValid();
             index = view.indexBelow(index)) {
            items.append(index);
        }
        const auto button = below(3) == 0 ? Qt::RightButton : Qt::LeftButton;
        if (items.isEmpty() || below(8) == 0) {
            desk->clickEmptySpace(view, button);
        } else {
            desk->clickItem(view, items[below(items.size())], button);
        }
        desk->menu().close();
    }

    /// Gives one of the commands that are offered; answers its question, and types into the label
    /// that it opens.
    std::string command() {
        QList<QAction*> offered;
        for (QAction* action : desk->child<QToolBar>("tbEdit").actions().first(9)) {
            if (action->isEnabled() && !action->isSeparator()) {
                offered.append(action);
            }
        }
        const QString caption = offered[below(offered.size())]->text();
        press(caption, below(3) == 0);
        if (desk->labelEditor() == nullptr && below(4) == 0) {
            QTest::keyClick(below(2) == 0 ? &desk->tree() : &desk->list(), Qt::Key_F2);
        }
        if (desk->labelEditor() != nullptr && below(4) != 0) {
            const QString names[] = {u"甲"_s, u"乙'丙"_s, u" "_s, QString(30, u'丁')};
            desk->typeLabel(names[below(4)], below(4) == 0 ? Qt::Key_Escape : Qt::Key_Return);
        }
        return caption.toStdString();
    }

    std::mt19937 random{GetParam()};
};

TEST_P(RandomCommands, LeaveTreeAndListAsTheLibrariesAreStored) {
    std::string done;
    for (int step = 0; step < 80; ++step) {
        if (below(2) == 0) {
            click(below(3) == 0 ? desk->list() : desk->tree());
        } else {
            done += command() + " ";
        }
        ASSERT_TRUE(showsWhatIsStored(*desk)) << done;
    }
    for (const QString& message : desk->messages()) {
        EXPECT_TRUE(message.contains(u"名称"_s)) << message.toStdString();
    }
    for (TestLibrary* library : {&first, &second}) {
        EXPECT_EQ(library->connection().damages(), QStringList());
        EXPECT_EQ(otherReadersRows(*library, u"Tree"_s),
                  library->rows(u"Select ID,Name,PID,OrderID From Tree"_s));
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomCommands, testing::Values(1U, 2U, 3U, 4U));

}  // namespace
}  // namespace varo::test
