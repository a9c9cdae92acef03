#include "editing/beam_desk.h"
#include "support/process.h"

#include <QTest>

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

TEST_F(Refusal, EachCommandShowsItsMessageAndChangesNothing) {
    struct {
        const char* step;
        const char* table;
        const char* formula;  ///< to be selected; null to stay on the folder
        const char* button;
        const char* message;
    } const cases[] = {
        {"Insert", "Tree", nullptr, "新建公式夹", "无法创建新的公式夹！"},
        {"Insert", "Formula", nullptr, "新建公式", "无法创建新的公式！"},
        {"Update", "Tree", nullptr, "下移", "移动公式夹失败！"},
        {"Update", "Formula", "剪切", "上移", "移动公式失败！"},
        {"Delete", "Formula", nullptr, "删除", "删除公式夹失败！"},
        {"Delete", "Formula", "剪切", "删除", "无法删除指定的公式！"},
    };
    const QStringList folders = first.rows(QStringLiteral("Select * From Tree"));
    const QStringList formulas = first.rows(QStringLiteral("Select * From Formula"));
    for (const auto& each : cases) {
        desk.clickNode(QStringLiteral("梁"));
        if (each.formula != nullptr) {
            desk.clickFormula(QString::fromUtf8(each.formula));
        }
        refuse(QString::fromLatin1(each.step), QString::fromLatin1(each.table));
        desk.questions().answers = {true};
        desk.clickEditButton(QString::fromUtf8(each.button));
        allow();
        EXPECT_EQ(told(), QString::fromUtf8(each.message));
        EXPECT_EQ(first.rows(QStringLiteral("Select * From Tree")), folders) << each.message;
        EXPECT_EQ(first.rows(QStringLiteral("Select * From Formula")), formulas) << each.message;
        EXPECT_TRUE(showsWhatIsStored(desk)) << each.message;
    }
}

TEST_F(Refusal, ALabelThatIsNotStoredStaysAsItWas) {
    desk.clickNode(QStringLiteral("梁"));
    refuse(QStringLiteral("Update"), QStringLiteral("Tree"));
    QTest::keyClick(&desk.tree(), Qt::Key_F2);
    desk.typeLabel(QStringLiteral("x"));
    EXPECT_EQ(told(), QStringLiteral("无法修改公式夹名称！"));
    allow();
    refuse(QStringLiteral("Update"), QStringLiteral("Formula"));
    desk.clickFormula(QStringLiteral("剪切"));
    QTest::keyClick(&desk.list(), Qt::Key_F2);
    desk.typeLabel(QStringLiteral("x"));
    EXPECT_EQ(told(), QStringLiteral("无法修改公式名称！"));
    allow();
}

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
}

TEST_F(Refusal, ALockedLibraryIsToldAndLeftAlone) {
    desk.clickNode(QStringLiteral("梁"));
    desk.questions().answers = {true};
    {
        LibraryProcess other({QStringLiteral("lock"), first.path()});
        ASSERT_EQ(other.readLine(), QStringLiteral("locked"));
        desk.clickEditButton(QStringLiteral("删除"));
        EXPECT_EQ(told(), QStringLiteral("删除公式夹失败！"));
    }
    EXPECT_EQ(desk.treeTexts().size(), 8);
}

TEST_F(Refusal, ATreeThatCannotBeReadAgainIsNotReordered) {
    desk.clickNode(QStringLiteral("梁"));
    first.connection().execute(QStringLiteral("Alter Table Tree Rename Column Name To Label"));
    desk.clickEditButton(QStringLiteral("下移"));
    first.connection().execute(QStringLiteral("Alter Table Tree Rename Column Label To Name"));
    EXPECT_EQ(told(), QStringLiteral("刷新公式夹树节点失败！"));
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

TEST_F(Refusal, PropertiesThatCannotBeReadAreToldAfterAMove) {
    desk.clickNode(QStringLiteral("梁"));
    first.connection().execute(QStringLiteral("Alter Table Property Rename To Away"));
    desk.clickEditButton(QStringLiteral("下移"));
    first.connection().execute(QStringLiteral("Alter Table Away Rename To Property"));
    EXPECT_TRUE(told().startsWith(QStringLiteral("无法读取“属性”信息！")));
    EXPECT_EQ(desk.treeTexts().at(1), QStringLiteral("  柱"));
    desk.clickNode(QStringLiteral("梁"));
}

}  // namespace
}  // namespace varo::test
