#include "editing/beam_desk.h"

namespace varo::test {
namespace {

/// Commands on a library that refuses one of their steps; the fixture checks afterwards that what
/// is shown is what is stored.
class Refusal : public BeamDesk {
  protected:
    /// Lets a step on a table fail, optionally only for one row, until allow().
    void refuse(const QString& step, const QString& table, const QString& when = {}) {
        first.connection().execute(
            QStringLiteral("Create Trigger Refuse Before %1 On %2 %3 Begin "
                           "Select Raise(Abort, 'refused'); End")
                .arg(step, table, when.isEmpty() ? QString() : QStringLiteral("When ") + when));
    }
    void allow() { first.connection().execute(QStringLiteral("Drop Trigger Refuse")); }

    QString told() { return std::exchange(desk.questions().informed, {}).join(u'|'); }
};

TEST_F(Refusal, WhatWasDeletedBeforeTheStepThatFailsStaysDeleted) {
    struct {
        qint32 kept;  ///< folder that cannot be deleted
        QStringList names;
        int formulas;
    } const cases[] = {
        {cantilever, {QStringLiteral("梁"), QStringLiteral("悬臂")}, 3},
        {beams, {QStringLiteral("梁")}, 0},
    };
    for (const auto& each : cases) {
        desk.clickNode(QStringLiteral("梁"));
        refuse(QStringLiteral("Delete"), QStringLiteral("Tree"),
               QStringLiteral("old.ID = %1").arg(each.kept));
        desk.questions().answers = {true};
        desk.clickEditButton(QStringLiteral("删除"));
        allow();
        EXPECT_EQ(told(), QStringLiteral("删除公式夹失败！"));
        EXPECT_EQ(first.rows(QStringLiteral("Select Name From Tree Where ID In (1,4,5)")),
                  each.names);
        EXPECT_EQ(desk.listTexts().size(), each.formulas);
        EXPECT_EQ(desk.tree().selectedKey(), folder(beams));
        EXPECT_TRUE(showsWhatIsStored(desk));
    }
}

TEST_F(Refusal, AFolderWhosePropertiesStayIsGoneFromTheTree) {
    struct {
        const char* folder;
        qint32 withProperty;
        QString selected;
    } const cases[] = {{"梁", cantilever, folder(beams)},
                       {"板", plates, QStringLiteral("DBNode1")}};
    for (const auto& each : cases) {
        first.addProperty(1, QStringLiteral("形"), 0, each.withProperty, NodeTypeFolder);
        desk.clickNode(QString::fromUtf8(each.folder));
        refuse(QStringLiteral("Delete"), QStringLiteral("Property"));
        desk.questions().answers = {true};
        desk.clickEditButton(QStringLiteral("删除"));
        allow();
        EXPECT_EQ(told(), QStringLiteral("删除公式夹失败！"));
        EXPECT_EQ(desk.tree().selectedKey(), each.selected);
        EXPECT_TRUE(showsWhatIsStored(desk)) << each.folder;
    }
}

TEST_F(Refusal, AFormulaWhosePropertiesStayIsGoneFromTheList) {
    first.addProperty(1, QStringLiteral("形"), 0, shear, NodeTypeFormula);
    desk.clickNode(QStringLiteral("梁"));
    desk.clickFormula(QStringLiteral("剪切"));
    refuse(QStringLiteral("Delete"), QStringLiteral("Property"));
    desk.questions().answers = {true};
    desk.clickEditButton(QStringLiteral("删除"));
    EXPECT_EQ(told(), QStringLiteral("无法关联删除相关的属性！"));
    EXPECT_EQ(desk.listTexts().size(), 2);
    allow();  // a file with a trigger is not opened again
}

TEST_F(Refusal, ATreeThatCannotBeReadAgainIsNotReordered) {
    desk.clickNode(QStringLiteral("梁"));
    first.connection().execute(QStringLiteral("Alter Table Tree Rename Column Name To Label"));
    desk.clickEditButton(QStringLiteral("下移"));
    first.connection().execute(QStringLiteral("Alter Table Tree Rename Column Label To Name"));
    EXPECT_EQ(told(), QStringLiteral("刷新公式夹树节点失败！"));
}

TEST_F(Refusal, AMoveKeepsTheMarksOfPropertiesThatCannotBeRead) {
    first.addProperty(1, QStringLiteral("形"), 0, simple, NodeTypeFolder);
    Desk marked(configuration.folder());
    marked.clickNode(QStringLiteral("梁"));
    first.connection().execute(QStringLiteral("Alter Table Property Rename To Away"));
    marked.clickEditButton(QStringLiteral("下移"));
    first.connection().execute(QStringLiteral("Alter Table Away Rename To Property"));
    EXPECT_TRUE(marked.messages().contains(QStringLiteral("无法读取“属性”信息！")));
    EXPECT_EQ(marked.treeTexts().at(1), QStringLiteral("  柱"));
    marked.clickNode(QStringLiteral("梁"));
    EXPECT_TRUE(showsWhatIsStored(marked));
    // Marks that were there come from what is stored, as soon as that can be read.
    first.connection().execute(QStringLiteral("Delete From Property"));
    marked.clickEditButton(QStringLiteral("上移"));
    EXPECT_TRUE(showsWhatIsStored(marked));
}

/// As in a library that does not remember the identifiers of what was deleted.
TEST_F(Refusal, AFolderMayGetTheIdentifierOfOneThatAnotherProgramHasDeleted) {
    first.connection().execute(QStringLiteral("Delete From Tree Where ID = ?"), {cantilever});
    first.connection().execute(QStringLiteral("Delete From sqlite_sequence"));
    desk.clickNode(QStringLiteral("柱"));
    desk.clickEditButton(QStringLiteral("新建公式夹"));
    desk.typeLabel(QStringLiteral("新"));
    EXPECT_EQ(desk.tree().selectedKey(), folder(cantilever));
    EXPECT_TRUE(showsWhatIsStored(desk));
    desk.clickEditButton(QStringLiteral("复制"));
    desk.clickEditButton(QStringLiteral("粘贴"));
    EXPECT_EQ(told(), QString());
    // Two at once, a folder with one in it.
    desk.clickNode(QStringLiteral("梁"));
    desk.clickEditButton(QStringLiteral("复制"));
    first.connection().execute(QStringLiteral("Delete From Tree Where ID >= ?"), {cantilever});
    first.connection().execute(QStringLiteral("Delete From sqlite_sequence"));
    desk.questions().answers = {true};
    desk.clickNode(QStringLiteral("板"));
    desk.clickEditButton(QStringLiteral("粘贴"));
    EXPECT_EQ(told(), QString());
}

TEST_F(Refusal, AListThatCannotBeReadAgainIsEmptied) {
    desk.clickNode(QStringLiteral("梁"));
    desk.clickFormula(QStringLiteral("剪切"));
    first.connection().execute(QStringLiteral("Alter Table Formula Rename Column Memo To Text"));
    desk.clickEditButton(QStringLiteral("上移"));
    first.connection().execute(QStringLiteral("Alter Table Formula Rename Column Text To Memo"));
    EXPECT_EQ(told(), QStringLiteral("无法显示节点“梁”下所有的公式！"));
    EXPECT_TRUE(desk.listTexts().isEmpty());
    EXPECT_FALSE(desk.isEnabled("txtFormula"));
    desk.clickNode(QStringLiteral("梁"));
    EXPECT_EQ(desk.listTexts().first(), QStringLiteral("剪切"));
}

}  // namespace
}  // namespace varo::test
