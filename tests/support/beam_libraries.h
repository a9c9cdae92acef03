#pragma once

#include "support/test_library.h"

namespace varo::test {

using namespace Qt::StringLiterals;

/// Two libraries. The first: 梁 (弯曲, 剪切, 扭转) with 简支 (挠度) and 悬臂 below it, 柱 (稳定),
/// 板; the second: 管 (流量). Their folders, and their formulas, count from 1.
struct BeamLibraries {
    TestLibrary first;
    TestLibrary second;
    const qint32 beams = first.addFolder(0, u"梁"_s);
    const qint32 columns = first.addFolder(0, u"柱"_s);
    const qint32 plates = first.addFolder(0, u"板"_s);
    const qint32 simple = first.addFolder(beams, u"简支"_s);
    const qint32 cantilever = first.addFolder(beams, u"悬臂"_s);
    const qint32 bending = first.addFormula(beams, u"弯曲"_s, u"M/W"_s);
    const qint32 shear = first.addFormula(beams, u"剪切"_s, u"3*Q/(2*b*h)"_s);
    const qint32 torsion = first.addFormula(beams, u"扭转"_s, u"T/W"_s);
    const qint32 deflection = first.addFormula(simple, u"挠度"_s, u"f*l"_s);
    const qint32 stability = first.addFormula(columns, u"稳定"_s, u"P/A"_s);
    const qint32 pipes = second.addFolder(0, u"管"_s);
    const qint32 flow = second.addFormula(pipes, u"流量"_s, u"v*A"_s);
};

/// What is below a folder, in order: each folder as "name(formulas)", with the folders in it in
/// brackets, joined by blanks.
inline QString outline(TestLibrary& library, qint32 folder = 0) {
    const auto listed = [&](const char* columns, const char* table, qint32 parent) {
        return library.rows(u"Select %1 From %2 Where PID = %3 Order By OrderID, ID"_s.arg(
            QLatin1StringView(columns), QLatin1StringView(table), QString::number(parent)));
    };
    QStringList nodes;
    for (const QString& row : listed("ID, Name", "Tree", folder)) {
        const qint32 id = row.section(u'|', 0, 0).toInt();
        const QString below = outline(library, id);
        nodes.append(row.section(u'|', 1) + u'(' + listed("Name", "Formula", id).join(u',') + u')' +
                     (below.isEmpty() ? QString() : u'[' + below + u']'));
    }
    return nodes.join(u' ');
}

}  // namespace varo::test
