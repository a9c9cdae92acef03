#include "support/beam_desk.h"

#include <random>

namespace varo::test {
namespace {

/// Gives commands at random, through buttons, menu, keys and labels.
class RandomUser {
  public:
    RandomUser(Desk& desk, unsigned seed) : desk_(desk), random_(seed) {}

    /// Does one thing and returns what it was.
    std::string act() {
        switch (below(9)) {
            case 0:
            case 1:
                return select(desk_.tree());
            case 2:
                return select(desk_.list());
            case 3:
                return menu(desk_.tree());
            case 4:
                return menu(desk_.list());
            case 5:
                return key();
            default:
                return button();
        }
    }

  private:
    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

    QModelIndex anyItem(const ui::NodeView& view) {
        std::vector<QModelIndex> items;
        for (QModelIndex index = view.model()->index(0, 0); index.isValid();
             index = view.indexBelow(index)) {
            items.push_back(index);
        }
        return items.empty()
                   ? QModelIndex()
                   : items[static_cast<std::size_t>(below(static_cast<int>(items.size())))];
    }

    void click(ui::NodeView& view, Qt::MouseButton with) {
        const QModelIndex index = anyItem(view);
        if (!index.isValid() || below(8) == 0) {
            desk_.clickEmptySpace(view, with);
            return;
        }
        view.scrollTo(index);
        const QRect rect = view.visualRect(index);
        QTest::mouseClick(view.viewport(), with, {}, {rect.left() + 8, rect.center().y()});
        settle();
    }

    std::string select(ui::NodeView& view) {
        click(view, Qt::LeftButton);
        return "select";
    }

    std::string menu(ui::NodeView& view) {
        click(view, Qt::RightButton);
        std::vector<QAction*> enabled;
        for (QAction* action : desk_.menu().actions()) {
            // The library manager waits for its user.
            if (action->isEnabled() && !action->isSeparator() && action->text() != u"公式库管理") {
                enabled.push_back(action);
            }
        }
        if (enabled.empty()) {
            desk_.menu().close();
            return "menu";
        }
        const QAction* chosen =
            enabled[static_cast<std::size_t>(below(static_cast<int>(enabled.size())))];
        const QByteArray name = chosen->objectName().toLatin1();
        return give([&] { desk_.choose(name.constData()); }, name.toStdString());
    }

    std::string button() {
        static const QString keys[] = {u"新建公式夹"_s, u"新建公式"_s, u"删除"_s, u"上移"_s,
                                       u"下移"_s,       u"复制"_s,     u"粘贴"_s};
        const QString& key = keys[below(7)];
        return desk_.editButton(key).isEnabled()
                   ? give([&] { desk_.clickEditButton(key); }, key.toStdString())
                   : "nothing";
    }

    std::string key() {
        ui::NodeView& view = below(2) == 0 ? desk_.tree() : desk_.list();
        static const QKeyCombination keys[] = {Qt::Key_F2, Qt::Key_Delete, Qt::CTRL | Qt::Key_C,
                                               Qt::CTRL | Qt::Key_V};
        const QKeyCombination pressed = keys[below(4)];
        view.setFocus();
        return give(
            [&] {
                QTest::keyClick(&view, pressed.key(), pressed.keyboardModifiers());
                settle();
            },
            "key");
    }

    /// Runs a command; answers its question, and types into the label that it opens.
    template <class Command>
    std::string give(Command command, const std::string& name) {
        desk_.questions().answers = {below(3) == 0};
        command();
        if (desk_.labelEditor() != nullptr && below(4) != 0) {
            static const QString names[] = {u"甲"_s, u"乙'丙"_s, u" "_s, QString(30, u'丁')};
            desk_.typeLabel(names[below(4)], below(4) == 0 ? Qt::Key_Escape : Qt::Key_Return);
        }
        return name;
    }

    Desk& desk_;
    std::mt19937 random_;
};

class RandomCommands : public BeamDesk, public testing::WithParamInterface<unsigned> {};

TEST_P(RandomCommands, LeaveTreeAndListAsTheLibrariesAreStored) {
    RandomUser user(*desk, GetParam());
    std::string done;
    for (int step = 0; step < 80; ++step) {
        done += user.act() + " ";
        ASSERT_TRUE(showsWhatIsStored(*desk)) << done;
    }
    for (const QString& message : desk->messages()) {
        EXPECT_TRUE(message.contains(u"名称"_s)) << message.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomCommands, testing::Values(1U, 2U, 3U, 4U));

}  // namespace
}  // namespace varo::test
