#include "editing/picture_desk.h"
#include "library/folder_rows.h"
#include "support/no_waiting.h"

namespace varo::test {
namespace {

/// Nothing is copied before.
const auto kNone = u"none"_s;

class Refusal : private NoWaiting, public PictureDesk {
  protected:
    void rename(ui::NodeView& view) {
        QTest::keyClick(&view, Qt::Key_F2);
        desk->typeLabel(u"新名"_s);
    }
};

TEST_F(Refusal, ALockedLibraryIsToldByEachCommandAndLeavesEverythingAsItWas) {
    const struct {
        QString formula;  ///< to be selected in 梁; "" to stay on the folder
        std::function<void()> give;
        QString message;
        QString copied = kNone;  ///< put into the clipboard before: a formula of 梁, "" for 梁
    } commands[] = {
        {{}, [&] { press(u"新建公式夹"_s); }, u"无法创建新的公式夹！"_s},
        {{}, [&] { press(u"新建公式"_s); }, u"无法创建新的公式！"_s},
        {{}, [&] { rename(desk->tree()); }, u"无法修改公式夹名称！"_s},
        {u"剪切"_s, [&] { rename(desk->list()); }, u"无法修改公式名称！"_s},
        {{}, [&] { press(u"删除"_s); }, u"删除公式夹失败！"_s},
        {u"剪切"_s, [&] { press(u"删除"_s); }, u"无法删除指定的公式！"_s},
        {{}, [&] { press(u"下移"_s); }, u"移动公式夹失败！"_s},
        {u"剪切"_s, [&] { press(u"上移"_s); }, u"移动公式失败！"_s},
        {{}, [&] { press(u"复制"_s); }, u"无法读取节点信息，不能进行复制操作！"_s},
        {{}, [&] { press(u"粘贴"_s); }, u"粘贴公式夹失败！"_s, {}},
        {u"剪切"_s, [&] { press(u"粘贴"_s); }, u"粘贴公式失败！"_s, u"弯曲"_s},
        {u"剪切"_s, [&] { chooseFile(label(), u"添加"_s, newPicture, 0); }, kNotStored},
        {u"弯曲"_s, [&] { chooseFile(picture(), u"替换"_s, newPicture, 0); }, kNotStored},
        {u"剪切"_s, [&] { choose(label(), u"粘贴"_s); }, kNotStored},
        {u"弯曲"_s, [&] { choose(picture(), u"删除"_s); }, u"删除图形文件失败！"_s},
    };
    choose(picture(), u"复制"_s);
    const QStringList before = first.content();
    for (const auto& each : commands) {
        if (each.copied != kNone) {
            select(u"梁"_s, each.copied);
            press(u"复制"_s);
        }
        select(u"梁"_s, each.formula);
        first.lock();
        each.give();
        first.unlock();
        EXPECT_EQ(told(), each.message);
        EXPECT_EQ(desk->labelEditor(), nullptr);
        EXPECT_TRUE(showsWhatIsStored(*desk)) << each.message.toStdString();
    }
    EXPECT_EQ(first.content(), before);
    EXPECT_EQ(shownColor(), QColor(Qt::red));
}

TEST_F(Refusal, ACommandThatIsDoneInPartShowsWhatIsStored) {
    for (const qint32 id : {plates, bending, shear}) {
        first.addProperty(1, u"形"_s, 0, id, NodeTypeFolder);
        first.addProperty(1, u"形"_s, 0, id, NodeTypeFormula);
    }
    start();
    const struct {
        QString node, formula, copied;  ///< to be selected; to be copied before
        QString button;
        const char *step, *table;
        QString when, message, selectedThen;
    } cases[] = {
        {u"板"_s, u""_s, u""_s, u"粘贴"_s, "Insert", "Tree", u"new.Name = '悬臂'"_s,
         u"粘贴公式夹失败！"_s, u"板"_s},
        {u"柱"_s, u"稳定"_s, u"弯曲"_s, u"粘贴"_s, "Update", "Formula", u"1"_s,
         u"粘贴公式的图形文件失败！"_s, u"柱"_s},
        {u"梁"_s, u"剪切"_s, kNone, u"删除"_s, "Delete", "Property", u"1"_s,
         u"无法关联删除相关的属性！"_s, u"梁"_s},
        {u"梁"_s, u""_s, kNone, u"删除"_s, "Delete", "Tree", u"old.ID = 1"_s, u"删除公式夹失败！"_s,
         u"梁"_s},
        {u"板"_s, u""_s, kNone, u"删除"_s, "Delete", "Property", u"1"_s, u"删除公式夹失败！"_s,
         u"库1"_s},
    };
    for (const auto& each : cases) {
        if (each.copied != kNone) {
            select(u"梁"_s, each.copied);
            press(u"复制"_s);
        }
        select(each.node, each.formula);
        first.refuse(each.step, each.table, each.when);
        press(each.button);
        first.allow();
        EXPECT_EQ(told(), each.message);
        EXPECT_EQ(selected(), each.selectedThen);
        EXPECT_TRUE(showsWhatIsStored(*desk)) << each.message.toStdString();
    }
}

TEST_F(Refusal, WhatCannotBeReadAgainAfterAMoveIsTold) {
    first.addProperty(1, u"形"_s, 0, simple, NodeTypeFolder);
    start();
    select(u"梁"_s);
    {
        const MissingColumn missing(first, "Property", "NodeID");
        press(u"下移"_s);
    }
    EXPECT_TRUE(told().contains(u"无法读取“属性”信息！"_s));
    select(u"梁"_s);
    EXPECT_TRUE(showsWhatIsStored(*desk)) << "moved, with the marks that were there";
    first.connection().execute(u"Delete From Property"_s);
    press(u"上移"_s);
    EXPECT_TRUE(showsWhatIsStored(*desk)) << "the marks are read as soon as that is possible";
    desk->clickFormula(u"剪切"_s);
    {
        const MissingColumn missing(first, "Formula", "Memo");
        press(u"上移"_s);
    }
    EXPECT_EQ(told(), u"无法显示节点“梁”下所有的公式！"_s);
    EXPECT_TRUE(desk->listTexts().isEmpty());
    EXPECT_FALSE(desk->isEnabled("txtFormula"));
    select(u"梁"_s);
    EXPECT_EQ(desk->listTexts().first(), u"剪切"_s);
}

TEST_F(Refusal, NoFolderIsMadeOrPastedBelowTheDeepestLevelThatIsShown) {
    qint32 deepest = beams;
    data::Transaction transaction(first.connection());
    for (int level = 2; level <= kMaxFolderDepth; ++level) {
        deepest = first.addFolder(deepest, u"层"_s);
    }
    transaction.commit();
    start();
    select(u"柱"_s);
    press(u"复制"_s);
    desk->control().ClickTreeNode(folder(deepest));
    press(u"新建公式夹"_s);
    EXPECT_EQ(told(), u"无法创建新的公式夹！"_s);
    press(u"粘贴"_s);
    EXPECT_EQ(told(), u"粘贴公式夹失败！"_s);
    EXPECT_EQ(outline(first, deepest), QString());
    first.connection().execute(u"Delete From Tree Where Name = '层'"_s);
    start();
}

}  // namespace
}  // namespace varo::test
