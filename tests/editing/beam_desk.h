#pragma once

#include "support/stored_view.h"

#include <gtest/gtest.h>

namespace varo::test {

/// Two libraries on a desk. The first: 梁 (弯曲, 剪切, 扭转) with 简支 (挠度) and 悬臂 below it, 柱
/// (稳定), 板; the second: 管 (流量).
class BeamDesk : public testing::Test {
  protected:
    BeamDesk() {
        beams = first.addFolder(0, QStringLiteral("梁"));
        columns = first.addFolder(0, QStringLiteral("柱"));
        plates = first.addFolder(0, QStringLiteral("板"));
        simple = first.addFolder(beams, QStringLiteral("简支"));
        cantilever = first.addFolder(beams, QStringLiteral("悬臂"));
        bending = first.addFormula(beams, QStringLiteral("弯曲"), QStringLiteral("M/W"));
        shear = first.addFormula(beams, QStringLiteral("剪切"), QStringLiteral("3*Q/(2*b*h)"));
        torsion = first.addFormula(beams, QStringLiteral("扭转"), QStringLiteral("T/W"));
        deflection = first.addFormula(simple, QStringLiteral("挠度"), QStringLiteral("f*l"));
        first.addFormula(columns, QStringLiteral("稳定"), QStringLiteral("P/A"));
        const qint32 pipes = second.addFolder(0, QStringLiteral("管"));
        second.addFormula(pipes, QStringLiteral("流量"), QStringLiteral("v*A"));
        desk.run(configuration.folder());
        desk.tree().expandAll();
        settle();
    }

    ~BeamDesk() override { EXPECT_TRUE(showsWhatIsStored(desk)); }

    static QString folder(qint32 id) { return QStringLiteral("FormulaNode%1->DBNode1").arg(id); }

    TestLibrary first;
    TestLibrary second;
    TestConfiguration configuration{&first, &second};
    qint32 beams = 0;
    qint32 columns = 0;
    qint32 plates = 0;
    qint32 simple = 0;
    qint32 cantilever = 0;
    qint32 bending = 0;
    qint32 shear = 0;
    qint32 torsion = 0;
    qint32 deflection = 0;
    Desk desk;
};

}  // namespace varo::test
