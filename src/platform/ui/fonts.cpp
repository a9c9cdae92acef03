#include "platform/ui/fonts.h"

#include <QFontDatabase>
#include <QStringList>

namespace varo::ui {

namespace {

QString songFamily() {
    static const QStringList preferred = {
        QStringLiteral("宋体"),           QStringLiteral("SimSun"),
        QStringLiteral("NSimSun"),        QStringLiteral("Noto Serif CJK SC"),
        QStringLiteral("AR PL UMing CN"), QStringLiteral("Source Han Serif SC"),
        QStringLiteral("FandolSong"),
    };
    const QStringList chinese = QFontDatabase::families(QFontDatabase::SimplifiedChinese);
    for (const QString& family : preferred) {
        if (chinese.contains(family)) {
            return family;
        }
    }
    for (const QString& family : chinese) {
        if (family.contains(u"Serif") || family.contains(u"Song") || family.contains(u"Ming")) {
            return family;
        }
    }
    return {};
}

}  // namespace

QFont songFont() {
    static const QString family = songFamily();
    QFont font;
    if (!family.isEmpty()) {
        font.setFamilies({family});
    }
    return font;
}

}  // namespace varo::ui
