#include "host/chinese_application.h"

#include <QApplication>
#include <QFontDatabase>
#include <QLibraryInfo>
#include <QTranslator>

namespace varo::host {

namespace {

/// A desktop that is not set up for Chinese has a default font that may lack its characters.
void useChineseFont() {
    const QString family = QStringLiteral("Noto Sans CJK SC");
    if (QFontDatabase::families(QFontDatabase::SimplifiedChinese).contains(family)) {
        QFont font = QApplication::font();
        font.setFamilies({family});
        QApplication::setFont(font);
    }
}

}  // namespace

void makeApplicationChinese() {
    QApplication::setApplicationDisplayName(QStringLiteral("公式计算"));
    auto* chinese = new QTranslator(QCoreApplication::instance());
    if (chinese->load(QStringLiteral("qtbase_zh_CN"),
                      QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QApplication::installTranslator(chinese);
    }
    useChineseFont();
}

}  // namespace varo::host
