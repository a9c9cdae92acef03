#pragma once

#include "store/records.h"
#include "support/test_library.h"

namespace varo::test {

using namespace Qt::StringLiterals;

/// A library with the folder "拉杆" (1), whose formula "应力" (1) has a description of two lines, a
/// picture of 40x30, the typed value F = 24 and the variable A that the property "截面面积" feeds.
class BeamLibrary : public TestLibrary {
  public:
    BeamLibrary() {
        const qint32 folder = addFolder(0, u"拉杆"_s);
        const qint32 formula = addFormula(folder, u"应力"_s, u"F/A"_s, u"F 轴力\nA 面积"_s);
        addValue(u"F"_s, formula, u"24"_s);
        addValue(u"A"_s, formula, u"1"_s);
        addPicture(formula, imageBytes({40, 30}, Qt::red, "bmp"));
        setSource(u"A"_s, formula, VarSourceProperty, u"截面面积"_s);
    }
};

}  // namespace varo::test
