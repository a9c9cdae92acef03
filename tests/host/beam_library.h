#pragma once

#include "store/records.h"
#include "support/test_library.h"

#include <QBuffer>
#include <QImage>

namespace varo::test {

/// A library with the folder "拉杆" (1), whose formula "应力" (1) has a description of two lines, a
/// picture of 40x30, the typed value F = 24 and the variable A that the property "截面面积" feeds.
class BeamLibrary : public TestLibrary {
  public:
    BeamLibrary() {
        const qint32 folder = addFolder(0, QStringLiteral("拉杆"));
        const qint32 formula = addFormula(folder, QStringLiteral("应力"), QStringLiteral("F/A"),
                                          QStringLiteral("F 轴力\nA 面积"));
        addValue(QStringLiteral("F"), formula, QStringLiteral("24"));
        addValue(QStringLiteral("A"), formula, QStringLiteral("1"));
        if (!funcs().EditFormulaVarPara(QStringLiteral("A"), formula, VarSourceProperty,
                                        QStringLiteral("截面面积"), connection())) {
            throw data::Error(QStringLiteral("the variable takes no property"));
        }
        addPicture(formula, picture());
    }

  private:
    static QByteArray picture() {
        QImage image(40, 30, QImage::Format_RGB32);
        image.fill(Qt::red);
        QBuffer bytes;
        image.save(&bytes, "BMP");
        return bytes.data();
    }
};

}  // namespace varo::test
