#include "library/folders.h"

#include "library/formulas.h"
#include "library/open_libraries.h"

namespace varo::test {
namespace {

class Folders : public testing::Test, protected OpenLibraries {
  protected:
    /// The identifiers of the nodes that have a property.
    QString withProperty() {
        return first.rows(u"Select NodeID From Property Order By NodeID"_s).join(u' ');
    }
};

TEST_F(Folders, DeletingAFolderRemovesItsSubtreeDeepestFirstWithTheProperties) {
    for (const qint32 folder : {beams, simple, 4711}) {
        first.addProperty(1, u"形"_s, 0, folder, NodeTypeFolder);
    }
    for (const qint32 formula : {shear, deflection, stability}) {
        first.addProperty(1, u"形"_s, 0, formula, NodeTypeFormula);
    }
    const SubtreeDeletion deletion = deleteSubtree(library, beams);
    EXPECT_TRUE(deletion.complete);
    EXPECT_TRUE(deletion.committed);
    EXPECT_EQ(deletion.gone, (std::vector{cantilever, simple, beams}));
    EXPECT_EQ(outline(first), u"柱(稳定) 板()"_s);
    EXPECT_EQ(first.rows(u"Select Name From Formula"_s), QStringList{u"稳定"_s});
    EXPECT_EQ(withProperty(), u"5 4711"_s);
}

TEST_F(Folders, DeletingEndsOnWhatAnotherProgramHasDeletedOrDamaged) {
    first.connection().execute(u"Delete From Tree Where ID = ?"_s, {columns});
    EXPECT_EQ(deleteSubtree(library, columns).gone, std::vector{columns});
    EXPECT_EQ(first.rows(u"Select Count(*) From Formula Where PID = 2"_s), QStringList{u"0"_s});
    first.connection().execute(u"Update Tree Set PID = ? Where ID = ?"_s, {cantilever, beams});
    EXPECT_EQ(deleteSubtree(library, beams).gone.size(), 3U) << "it descends from itself";
    EXPECT_EQ(outline(first), u"板()"_s);
}

TEST(DeletingAFolder, LeavesDeletedWhatWasBeforeTheStepThatFails) {
    const struct {
        const char* table;
        QString when;  ///< of the row that stays
        std::vector<qint32> gone;
        QString left;
    } cases[] = {
        {"Property", u"old.NodeType = 1"_s, {5}, u"梁(弯曲,剪切,扭转)[简支(挠度)]"_s},
        {"Property", u"old.NodeType = 2"_s, {5}, u"梁(弯曲,剪切,扭转)[简支(挠度)]"_s},
        {"Tree", u"old.ID = 4"_s, {5}, u"梁(弯曲,剪切,扭转)[简支()]"_s},
        {"Tree", u"old.ID = 1"_s, {5, 4}, u"梁()"_s},
        {"Formula", u"old.Name = '剪切'"_s, {5, 4}, u"梁(弯曲,剪切,扭转)"_s},
    };
    for (const auto& each : cases) {
        OpenLibraries on;
        on.first.addProperty(1, u"形"_s, 0, on.cantilever, NodeTypeFolder);
        on.first.addProperty(1, u"形"_s, 0, on.deflection, NodeTypeFormula);
        on.first.refuse("Delete", each.table, each.when);
        const SubtreeDeletion deletion = deleteSubtree(on.library, on.beams);
        EXPECT_FALSE(deletion.complete);
        EXPECT_TRUE(deletion.committed);
        EXPECT_EQ(deletion.gone, each.gone) << each.when.toStdString();
        EXPECT_EQ(outline(on.first), each.left + u" 柱(稳定) 板()"_s) << each.when.toStdString();
    }
}

TEST_F(Folders, NothingIsDeletedWhenWhatBelongsTogetherCannotBeRead) {
    const QStringList before = first.content();
    for (const auto& [table, column] : {std::pair{"Tree", "Name"}, {"Formula", "Memo"}}) {
        const MissingColumn missing(first, table, column);
        const SubtreeDeletion deletion = deleteSubtree(library, beams);
        EXPECT_FALSE(deletion.complete);
        EXPECT_TRUE(deletion.gone.empty());
    }
    EXPECT_EQ(first.content(), before);
}

TEST_F(Folders, ExchangingPutsEachInTheOthersPlace) {
    first.addProperty(1, u"形"_s, 0, columns, NodeTypeFolder);
    FolderOrder order;
    EXPECT_EQ(exchangeFolders(library, columns, beams, order), QString());
    EXPECT_EQ(outline(first), u"柱(稳定) 梁(弯曲,剪切,扭转)[简支(挠度) 悬臂()] 板()"_s);
    EXPECT_TRUE(order.propertiesRead);
    EXPECT_EQ(order.withProperty, std::vector{columns});
    order.rows.sort();
    EXPECT_EQ(order.rows.childrenOf(0)[1].id, beams);
    const MissingColumn missing(first, "Property", "NodeID");
    FolderOrder unmarked;
    EXPECT_EQ(exchangeFolders(library, beams, columns, unmarked), QString());
    EXPECT_FALSE(unmarked.propertiesRead);
}

TEST_F(Folders, AnExchangeThatFailsChangesNothing) {
    const QString notMoved = u"移动公式夹失败！"_s;
    const QStringList before = first.content();
    FolderOrder order;
    EXPECT_EQ(exchangeFolders(library, beams, 4711, order), notMoved);
    for (const qint32 refused : {beams, columns}) {
        first.refuse("Update", "Tree", u"old.ID = %1"_s.arg(refused));
        EXPECT_EQ(exchangeFolders(library, beams, columns, order), notMoved);
        first.allow();
    }
    {
        const MissingColumn missing(first, "Tree", "Name");
        EXPECT_EQ(exchangeFolders(library, beams, columns, order), u"刷新公式夹树节点失败！"_s);
    }
    EXPECT_EQ(first.content(), before);
}

TEST_F(Folders, AFormulaIsDeletedWithItsPropertiesOnly) {
    for (const qint32 formula : {bending, shear, torsion}) {
        first.addProperty(1, u"形"_s, 0, formula, NodeTypeFormula);
        first.addProperty(1, u"形"_s, 0, formula, NodeTypeFolder);
    }
    first.refuse("Delete", "Formula");
    EXPECT_EQ(deleteFormula(library, shear), DeletedFormula::None);
    first.allow();
    EXPECT_EQ(withProperty(), u"1 1 2 2 3 3"_s);
    EXPECT_EQ(deleteFormula(library, shear), DeletedFormula::Whole);
    EXPECT_EQ(withProperty(), u"1 1 2 3 3"_s);
    first.refuse("Delete", "Property");
    EXPECT_EQ(deleteFormula(library, bending), DeletedFormula::WithoutProperties);
    first.allow();
    EXPECT_EQ(outline(first, 0).section(u'[', 0, 0), u"梁(扭转)"_s);
}

}  // namespace
}  // namespace varo::test
