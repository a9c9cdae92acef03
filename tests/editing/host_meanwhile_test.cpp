#include "editing/beam_desk.h"

#include <QDir>

namespace varo::test {
namespace {

/// The host turns the control to something else while the user is told or asked something.
class HostMeanwhile : public BeamDesk {
  protected:
    /// What the host does, once.
    void atTheNextQuestion(std::function<void()> act) {
        desk.questions().meanwhile = [act = std::move(act), asked = 0]() mutable {
            if (asked++ == 0) {
                act();
            }
        };
    }
    QStringList content() {
        QStringList rows;
        for (TestLibrary* library : {&first, &second}) {
            rows += library->rows(QStringLiteral("Select ID, Name, PID From Tree"));
            rows += library->rows(QStringLiteral("Select ID, Name, PID From Formula"));
        }
        return rows;
    }
};

TEST_F(HostMeanwhile, ACommandIsGivenUpWhenItsItemIsNoLongerShown) {
    const auto otherLibrary = [this] {
        desk.control().ClickTreeNode(QStringLiteral("FormulaNode1->DBNode2"));
    };
    const auto otherFolder = [this] { desk.control().ClickTreeNode(folder(columns)); };
    const auto otherFormula = [this] {
        desk.control().SelFormula(QStringLiteral("LvFormulaKey%1").arg(torsion));
    };
    struct {
        const char* formula;  ///< to be selected; null to stay on the folder
        const char* button;
        std::function<void()> act;
    } const cases[] = {
        {nullptr, "删除", otherLibrary}, {nullptr, "删除", otherFolder},
        {"剪切", "删除", otherLibrary},  {"剪切", "删除", otherFolder},
        {"剪切", "删除", otherFormula},  {nullptr, "粘贴", otherLibrary},
        {nullptr, "粘贴", otherFolder},
    };
    const QStringList before = content();
    desk.clickNode(QStringLiteral("梁"));
    desk.clickEditButton(QStringLiteral("复制"));
    for (const auto& each : cases) {
        desk.clickNode(QStringLiteral("梁"));
        if (each.formula != nullptr) {
            desk.clickFormula(QString::fromUtf8(each.formula));
        }
        desk.questions().asked.clear();
        desk.questions().answers = {true};
        atTheNextQuestion(each.act);
        desk.clickEditButton(QString::fromUtf8(each.button));
        EXPECT_EQ(desk.questions().asked.size(), 1);
        EXPECT_EQ(content(), before) << each.button;
        EXPECT_TRUE(showsWhatIsStored(desk)) << each.button;
    }
}

/// Pictures that cannot be written are told when a folder is listed.
TEST_F(HostMeanwhile, AListingThatIsToldAboutLeavesTheOneThatTheHostWants) {
    first.addPicture(bending, pictureBytes(100));
    const QTemporaryDir work;
    QDir(work.path()).mkdir(QStringLiteral("%1TempPic.bmp").arg(bending));
    desk.clickNode(QStringLiteral("柱"));
    desk.control().setWorkFolder(work.path());
    atTheNextQuestion(
        [this] { desk.control().ClickTreeNode(QStringLiteral("FormulaNode1->DBNode2")); });
    desk.clickNode(QStringLiteral("梁"));
    EXPECT_EQ(desk.messages().size(), 1);
    EXPECT_EQ(desk.listTexts(), QStringList{QStringLiteral("流量")});
    desk.clickEditButton(QStringLiteral("新建公式"));
    EXPECT_EQ(second.rows(QStringLiteral("Select PID From Formula Where Name = '新建公式'")),
              QStringList{"1"});
    EXPECT_TRUE(showsWhatIsStored(desk));
}

TEST_F(HostMeanwhile, NothingIsHeldWhileACopyOrPasteIsToldAbout) {
    first.addPicture(bending, pictureBytes(100));
    first.addPicture(shear, pictureBytes(100));
    const QTemporaryDir work;
    desk.control().setWorkFolder(work.path());
    const QString copies = work.filePath(QStringLiteral("%1PastePic.bmp"));
    const auto write = [this] {
        first.connection().execute(QStringLiteral("Update Tree Set Name = Name"));
    };
    desk.clickNode(QStringLiteral("梁"));
    // A folder in the place of one copied picture leaves the others.
    ASSERT_TRUE(QDir().mkdir(copies.arg(bending)));
    for (const char* formula : {static_cast<const char*>(nullptr), "弯曲"}) {
        desk.questions().informed.clear();
        if (formula != nullptr) {
            desk.clickFormula(QString::fromUtf8(formula));
        }
        EXPECT_EQ(QFile::exists(copies.arg(shear)), formula != nullptr);
        atTheNextQuestion(write);
        desk.clickEditButton(QStringLiteral("复制"));
        EXPECT_EQ(desk.messages().size(), 1);
        desk.clickNode(QStringLiteral("梁"));
    }
    desk.clickEditButton(QStringLiteral("复制"));
    QFile copy(copies.arg(shear));
    ASSERT_TRUE(copy.resize(16384LL * 32768));
    desk.questions().informed.clear();
    desk.questions().answers = {false};
    desk.questions().meanwhile = write;
    desk.clickNode(QStringLiteral("柱"));
    desk.clickEditButton(QStringLiteral("粘贴"));
    EXPECT_EQ(desk.messages().size(), 1) << "a file too long for a picture";
}

TEST_F(HostMeanwhile, ALocatedFolderThatIsNotShownLeavesTheLibraryThatIs) {
    second.addProperty(1, QStringLiteral("形"), 0, 99, NodeTypeFolder);
    desk.clickNode(QStringLiteral("柱"));
    desk.control().SetDesignProp(QStringLiteral("形"));
    desk.clickEditButton(QStringLiteral("新建公式夹"));
    EXPECT_EQ(first.rows(QStringLiteral("Select PID From Tree Where Name = '新建公式夹'")),
              QStringList{QString::number(columns)});
}

}  // namespace
}  // namespace varo::test
