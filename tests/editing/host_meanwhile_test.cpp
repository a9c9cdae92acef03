#include "support/beam_desk.h"

#include <QDir>

namespace varo::test {
namespace {

/// The host turns the control to something else while the user is told or asked something.
class HostMeanwhile : public BeamDesk {
  protected:
    /// What the host does, once.
    void atTheNextQuestion(std::function<void()> act) {
        desk->questions().meanwhile = [act = std::move(act), count = 0]() mutable {
            if (count++ == 0) {
                act();
            }
        };
    }
    void toOtherLibrary() { desk->control().ClickTreeNode(u"FormulaNode1->DBNode2"_s); }
};

TEST_F(HostMeanwhile, ACommandEndsWhenItsItemIsNoLongerShown) {
    const auto otherLibrary = [this] { toOtherLibrary(); };
    const auto otherFolder = [this] { desk->control().ClickTreeNode(folder(columns)); };
    const auto otherFormula = [this] { desk->control().SelFormula(u"LvFormulaKey3"_s); };
    const struct {
        QString formula;  ///< to be selected; "" to stay on the folder
        QString button;
        std::function<void()> act;
    } cases[] = {
        {{}, u"删除"_s, otherLibrary},        {{}, u"删除"_s, otherFolder},
        {u"剪切"_s, u"删除"_s, otherLibrary}, {u"剪切"_s, u"删除"_s, otherFolder},
        {u"剪切"_s, u"删除"_s, otherFormula}, {{}, u"粘贴"_s, otherLibrary},
        {{}, u"粘贴"_s, otherFolder},
    };
    const QStringList before = first.content() + second.content();
    select(u"梁"_s);
    press(u"复制"_s);
    for (const auto& each : cases) {
        select(u"梁"_s, each.formula);
        atTheNextQuestion(each.act);
        press(each.button);
        EXPECT_FALSE(asked().isEmpty());
        EXPECT_EQ(first.content() + second.content(), before);
        EXPECT_TRUE(showsWhatIsStored(*desk)) << each.button.toStdString();
    }
}

/// Pictures that cannot be written are told when a folder is listed.
TEST_F(HostMeanwhile, AListingThatIsToldAboutLeavesTheOneThatTheHostWants) {
    first.addPicture(bending, pictureBytes(100));
    QDir(work.path()).mkdir(u"%1TempPic.bmp"_s.arg(bending));
    atTheNextQuestion([this] { toOtherLibrary(); });
    select(u"梁"_s);
    EXPECT_FALSE(told().isEmpty());
    EXPECT_EQ(desk->listTexts(), QStringList{u"流量"_s});
    press(u"新建公式"_s);
    EXPECT_EQ(outline(second), u"管(流量,新建公式)"_s);
}

TEST_F(HostMeanwhile, NothingIsHeldWhileACopyOrPasteIsToldAbout) {
    first.addPicture(bending, pictureBytes(100));
    first.addPicture(shear, pictureBytes(100));
    first.addPicture(torsion, pictureBytes(100));
    const auto write = [this] { first.connection().execute(u"Update Tree Set Name = Name"_s); };
    const QString copies = work.filePath(u"%1PastePic.bmp"_s);
    ASSERT_TRUE(QDir().mkdir(copies.arg(bending)));
    ASSERT_TRUE(QDir().mkdir(copies.arg(torsion)));
    desk->questions().meanwhile = write;
    for (const QString& formula : {u"弯曲"_s, QString()}) {
        select(u"梁"_s, formula);
        press(u"复制"_s);
        EXPECT_EQ(desk->messages().size(), 1) << "once for both";
        told();
    }
    ASSERT_TRUE(QFile(copies.arg(shear)).resize(16384LL * 32768)) << "too long for a picture";
    select(u"柱"_s);
    press(u"粘贴"_s, false);
    EXPECT_EQ(desk->messages().size(), 1);
    EXPECT_EQ(first.rows(u"Select PicType, length(Pic) From Formula Where ID > 5"_s).join(u' '),
              u"2| 2| 2|"_s);
}

}  // namespace
}  // namespace varo::test
