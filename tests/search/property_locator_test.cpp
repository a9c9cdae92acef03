#include "support/beam_desk.h"

namespace varo::test {
namespace {

class Locate : public BeamDesk {
  protected:
    /// What is selected: the node's text, then the formula's.
    QString shown() { return selected() + u'/' + desk->list().selectedIndex().data().toString(); }
    bool canStep(const QString& key) { return desk->editButton(key).isEnabled(); }
    void locate() { desk->control().SetDesignProp(u"用途"_s); }
    void mark(TestLibrary& library, qint32 node, NodeType type, int filter = 0) {
        library.addProperty(++properties, u"用途"_s, filter, node, type);
    }
    static QImage image(const ui::NodeView& view, const QString& text) {
        return Desk::find(view, text).data(Qt::DecorationRole).value<QIcon>().pixmap(32).toImage();
    }

    const QString next = u"查找下一个"_s;
    const QString previous = u"查找上一个"_s;
    int properties = 0;
};

TEST_F(Locate, StepsThroughWhatIsFoundAndStoresEditsWhereTheyBelong) {
    mark(first, shear, NodeTypeFormula);
    mark(first, beams, NodeTypeFolder);
    mark(first, 99, NodeTypeFolder);
    mark(second, flow, NodeTypeFormula);
    mark(second, 0, NodeTypeFolder);
    EXPECT_FALSE(canStep(next));
    select(u"柱"_s);
    locate();
    const QStringList wanted{u"梁/剪切"_s, u"梁/弯曲"_s, u"梁/弯曲"_s, u"管/流量"_s, u"库2/"_s};
    for (int i = 0; i < wanted.size(); ++i) {
        EXPECT_EQ(shown(), wanted[i]) << i;
        EXPECT_EQ(canStep(next), i + 1 < wanted.size()) << i;
        EXPECT_EQ(canStep(previous), i > 0) << i;
        if (canStep(next)) {
            if (i == 2) {
                desk->type(desk->formulaBox(), u"*9"_s);
            }
            press(next);
        }
        EXPECT_EQ(told(), i == 1 ? u"用户需要定位的节点不存在！"_s : QString()) << i;
    }
    EXPECT_TRUE(first.rows(u"Select Formula From Formula"_s).first().contains(u"*9"_s));
    EXPECT_EQ(second.rows(u"Select Formula From Formula"_s), QStringList{u"v*A"_s});
    press(previous);
    EXPECT_EQ(shown(), wanted[3]);
    press(u"新建公式夹"_s);
    EXPECT_EQ(outline(second), u"管(流量)[新建公式夹()]"_s);
}

TEST_F(Locate, AFolderThatIsNotShownLeavesTheLibraryThatIs) {
    mark(second, 99, NodeTypeFolder);
    select(u"柱"_s);
    locate();
    press(u"新建公式夹"_s);
    EXPECT_EQ(outline(first, columns), u"新建公式夹()"_s);
}

TEST_F(Locate, WhatIsGoneSinceIsToldAndSteppedPastButNotAClosedLibrary) {
    mark(first, shear, NodeTypeFormula);
    mark(second, flow, NodeTypeFormula);
    mark(second, pipes, NodeTypeFolder);
    locate();
    const QString away = second.path() + u".away"_s;
    for (int attempt = 0; attempt < 2; ++attempt) {
        ASSERT_TRUE(QFile::rename(second.path(), away));
        press(next);
        EXPECT_EQ(told(), u"无法打开用户选择的数据库！"_s);
        EXPECT_FALSE(canStep(previous));
        ASSERT_TRUE(QFile::rename(away, second.path()));
    }
    second.connection().execute(u"Delete From Formula"_s);
    press(next);
    EXPECT_EQ(told(), u"用户需要定位的公式不存在！"_s);
    EXPECT_TRUE(canStep(next) && canStep(previous));
    press(next);
    EXPECT_EQ(shown(), u"管/"_s);
    press(previous);
    EXPECT_EQ(told(), u"用户需要定位的公式不存在！"_s);
    press(previous);
    EXPECT_EQ(shown(), u"梁/剪切"_s);
    desk->control().RunCalc();
}

TEST_F(Locate, ALibraryThatWasReplacedSinceIsReadAnew) {
    mark(first, shear, NodeTypeFormula);
    mark(first, plates, NodeTypeFolder);
    locate();
    const QString away = first.path() + u".away"_s;
    ASSERT_TRUE(QFile::rename(first.path(), away));
    ASSERT_TRUE(QFile::copy(second.path(), first.path()));
    press(next);
    EXPECT_EQ(told(), u"用户需要定位的节点不存在！"_s);
    EXPECT_TRUE(desk->listTexts().isEmpty()) << "those of the former file";
    press(previous);
    EXPECT_EQ(told(), u"用户需要定位的公式不存在！"_s);
    EXPECT_EQ(desk->listTexts(), QStringList{u"流量"_s});
    ASSERT_TRUE(QFile::remove(first.path()));
    ASSERT_TRUE(QFile::rename(away, first.path()));
    press(next);
    EXPECT_EQ(shown(), u"板/"_s);
    desk->control().RunCalc();
}

TEST_F(Locate, TheHostsValuesDecide) {
    second.connection().execute(
        u"Insert Into FilterCond(ID,UserID,ParentID,Type) Values(1,7,0,4)"_s);
    second.connection().execute(
        u"Insert Into FilterExpressions(FilterID,ExpID,FieldName,CompareType,TheConst) "
        "Values(7,1,'d',0,'12')"_s);
    mark(second, flow, NodeTypeFormula, 7);
    // A locate while one is under way is ignored.
    QObject::connect(&desk->control(), &Varo_CalcEx::GetPropValue, [this] { locate(); });
    for (const QString& value : {u"1"_s, u"12"_s}) {
        select(u"柱"_s);
        desk->properties = {{u"d"_s, value}};
        locate();
        EXPECT_EQ(shown(), value == u"12"_s ? u"管/流量"_s : u"柱/稳定"_s);
    }
    desk->control().RunCalc();
}

TEST_F(Locate, TheLocatedItemIsHighlightedUntilAnotherIsShown) {
    mark(first, shear, NodeTypeFormula);
    mark(first, 99, NodeTypeFolder);
    mark(second, 0, NodeTypeFolder);
    start();
    const QImage plainRoot = image(desk->tree(), u"库2"_s);
    select(u"梁"_s);
    const QImage plain = image(desk->list(), u"剪切"_s);
    for (const auto& end : {std::function<void()>([&] { desk->control().RunCalc(); }),
                            std::function<void()>([&] { desk->clickFormula(u"弯曲"_s); })}) {
        locate();
        EXPECT_NE(image(desk->list(), u"剪切"_s), plain);
        end();
        EXPECT_EQ(image(desk->list(), u"剪切"_s), plain);
    }
    locate();
    press(next);
    EXPECT_EQ(image(desk->list(), u"剪切"_s), plain) << "a folder that is not there";
    press(next);
    EXPECT_NE(image(desk->tree(), u"库2"_s), plainRoot);
    desk->control().RunCalc();
    EXPECT_EQ(image(desk->tree(), u"库2"_s), plainRoot);
}

TEST_F(Locate, AFailureIsToldAndLeavesTheShownFormulasLibrary) {
    select(u"梁"_s);
    desk->typeValue(u"M"_s, u"3"_s);
    {
        const MissingColumn missing(second, "Property", "PropName");
        locate();
    }
    EXPECT_EQ(told(), u"无法读取用户指定属性“用途”的信息！"_s);
    desk->typeValue(u"M"_s, u"8"_s);
    EXPECT_EQ(first.rows(u"Select VarName, Value From RecentVar"_s), QStringList{u"M|8"_s})
        << "no second row";
    EXPECT_TRUE(second.rows(u"Select * From RecentVar"_s).isEmpty());
}

}  // namespace
}  // namespace varo::test
