#include "platform/ui/picture_grid.h"
#include "search/find_desk.h"

#include <QBuffer>

namespace varo::test {
namespace {

QByteArray redPicture() {
    QImage image(90, 60, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "png");
    return bytes;
}

/// 稳定, 弯曲 and 流量 have pictures, the first of which is none.
class FindPictures : public FindDesk {
  protected:
    FindPictures() {
        first.addPicture(stability, "no picture");
        first.addPicture(bending, redPicture());
        second.addPicture(flow, redPicture());
    }
    ui::PictureGrid& pictures() { return part<ui::PictureGrid>("ImageGridFind"); }
    QModelIndex picture(int row) { return pictures().model()->index(row, 0); }
    /// Shows a tab until all pictures have been listed.
    void showTab(int tab) {
        auto& tabs = part<QTabBar>("TabFind");
        QTest::mouseClick(&tabs, Qt::LeftButton, {}, tabs.tabRect(tab).center());
        auto* list = qobject_cast<PictureList*>(pictures().model());
        EXPECT_TRUE(QTest::qWaitFor([&] { return list == nullptr || !list->isLoading(); }));
        settle();
    }
    QString listed() {
        QStringList names;
        for (int row = 0; row < pictures().model()->rowCount(); ++row) {
            names.append(picture(row).data().toString());
        }
        return names.join(u' ') + u'/' + part<QLabel>("lblImageCount").text();
    }
    void clickPicture(int row) {
        QTest::mouseClick(pictures().viewport(), Qt::LeftButton, {},
                          pictures().visualRect(picture(row)).center());
        settle();
    }
};

TEST_F(FindPictures, ShowsThemInOrderAndLocatesTheirFormulas) {
    withDialog([&] {
        EXPECT_EQ(pictures().model(), nullptr) << "read when they are to be seen";
        showTab(1);
        EXPECT_TRUE(part("PicImage").isVisible());
        EXPECT_FALSE(part("PicFind").isVisible() || part("CmdFind").isVisible());
        EXPECT_EQ(listed(), u"弯曲 稳定 流量/3 幅图片"_s);
        EXPECT_TRUE(picture(1).data(Qt::ToolTipRole).toString().contains(u"稳定\n库1 › 柱"_s));
        const auto becomes = [&](int row, ui::PictureGrid::State state) {
            return QTest::qWaitFor([&] { return pictures().stateOf(row) == state; });
        };
        EXPECT_TRUE(becomes(2, ui::PictureGrid::State::Shown));
        EXPECT_TRUE(becomes(1, ui::PictureGrid::State::Unreadable));
        clickPicture(2);
        EXPECT_EQ(shown(), u"管/流量"_s);
        clickPicture(1);
        EXPECT_EQ(shown(), u"柱/稳定"_s);
        QTest::keyClick(&pictures(), Qt::Key_Left);
        QTest::keyClick(&pictures(), Qt::Key_Return);
        EXPECT_EQ(shown(), u"梁/弯曲"_s);
        showTab(0);
        EXPECT_TRUE(part("PicFind").isVisible() && !part("PicImage").isVisible());
    });
    EXPECT_EQ(told(), QString());
}

TEST_F(FindPictures, TellsWhatCannotBeLocated) {
    const QString aside = first.path() + u".aside"_s;
    withDialog([&] {
        showTab(1);
        first.funcs().DelFormula(stability, first.connection());
        clickPicture(1);
        EXPECT_EQ(told(), u"用户需要定位的公式不存在！"_s);
        first.connection().execute(u"Update Formula Set PID = 99 Where ID = 1"_s);
        clickPicture(0);
        EXPECT_EQ(told(), u"用户需要定位的公式夹不存在！"_s);
        {
            const MissingColumn missing(first, "Formula", "Memo");
            clickPicture(0);
            EXPECT_EQ(told(), u"读取数据库失败，无法定位！"_s);
        }
        first.connection().execute(u"Update Formula Set PID = 1 Where ID = 1"_s);
        ASSERT_TRUE(QFile::rename(first.path(), aside));
        clickPicture(0);
        EXPECT_EQ(told(), u"打开指定的数据库失败，无法定位！"_s);
        ASSERT_TRUE(QFile::rename(aside, first.path()));
    });
    ASSERT_TRUE(QFile::rename(first.path(), aside));
    withDialog([&] {
        showTab(1);
        EXPECT_EQ(listed(), u"流量/1 幅图片；无法读取公式库：库1"_s);
    });
    EXPECT_EQ(told(), u"无法打开指定的数据库，不能进行查找操作！"_s);
    ASSERT_TRUE(QFile::rename(aside, first.path()));
    start();
}

}  // namespace
}  // namespace varo::test
