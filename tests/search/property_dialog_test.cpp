#include "driver/dialog_driver.h"
#include "support/beam_desk.h"

namespace varo::test {
namespace {
TEST(Render, Dialog) {
    BeamLibraries libs; libs.first.addProperty(0, u"用途"_s, 7, libs.shear, NodeTypeFormula);
    libs.first.addProperty(1, u"规范"_s, 0, libs.shear, NodeTypeFormula);
    libs.first.connection().execute(u"Insert Into FilterCond(ID,UserID,ParentID,Type) Values(1,7,0,1),(2,7,1,4),(3,7,1,3),(4,7,3,4)"_s);
    libs.first.connection().execute(u"Insert Into FilterExpressions(FilterID,ExpID,FieldName,CompareType,TheConst) Values(7,2,'跨度',5,'2'),(7,4,'材料',7,'木材')"_s);
    TestConfiguration configuration{&libs.first};
    Desk desk(configuration.folder()); desk.tree().expandAll(); settle();
    desk.clickNode(u"梁"_s);
    desk.properties = {{u"跨度"_s, u"6"_s}};
    withDialog("frmLocateNode", [&] { desk.openMenu(desk.list(), u"剪切"_s); desk.choose("mnuPopLocateFormula"); }, [&](QDialog& d) {
        d.grab().save(u"/tmp/fui1.png"_s);
        desk.click(*d.findChild<QWidget*>(u"cmdTry"_s)); d.grab().save(u"/tmp/fui2.png"_s);
        desk.click(*d.findChild<QWidget*>(u"cmdAddCompare"_s)); d.grab().save(u"/tmp/fui3.png"_s);
        desk.click(*d.findChild<QWidget*>(u"cmdSearch"_s)); d.grab().save(u"/tmp/fui4.png"_s);
        desk.click(*d.findChild<QWidget*>(u"cmdAddProp"_s)); d.grab().save(u"/tmp/fui5.png"_s);
    });
    for (auto& m : desk.messages()) std::printf("%s\n", qPrintable(m));
}
}
}
