#include "platform/ui/icons.h"

#include <QDir>
#include <QStandardPaths>

// The macro declares a function of the global namespace.
static void initIconResources() {
    Q_INIT_RESOURCE(varo_icons);
}

namespace varo::ui {

namespace {

QIcon ownIcon(const QString& name) {
    static const bool ready = (initIconResources(), true);
    QIcon icon;
    if (ready && !name.isEmpty()) {
        const QString file = QStringLiteral(":/varo/icons/%1.svg").arg(name);
        icon.addFile(file);
        // Styles would tint the picture of a selected item until it cannot be told apart.
        icon.addFile(file, {}, QIcon::Selected);
    }
    return icon;
}

QString fileOf(NodeImage image) {
    switch (image) {
        case NodeImage::Library:
            return QStringLiteral("library");
        case NodeImage::Folder:
            return QStringLiteral("folder");
        case NodeImage::FolderOpen:
            return QStringLiteral("folder-open");
        case NodeImage::LibraryWithProperty:
            return QStringLiteral("library-property");
        case NodeImage::FolderWithProperty:
            return QStringLiteral("folder-property");
        case NodeImage::FolderWithPropertyOpen:
            return QStringLiteral("folder-open-property");
        case NodeImage::FolderLocated:
            return QStringLiteral("folder-located");
    }
    return {};
}

QString fileOf(FormulaImage image) {
    switch (image) {
        case FormulaImage::Formula:
            return QStringLiteral("formula");
        case FormulaImage::FormulaWithProperty:
            return QStringLiteral("formula-property");
        case FormulaImage::FormulaLocated:
            return QStringLiteral("formula-located");
    }
    return {};
}

/// Lets icon names be found where the platform knows no theme of its own, as the offscreen one
/// does.
bool prepareThemes() {
    QStringList paths = QIcon::themeSearchPaths();
    const QStringList installed =
        QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, QStringLiteral("icons"),
                                  QStandardPaths::LocateDirectory);
    for (const QString& path : installed) {
        if (!paths.contains(path)) {
            paths.append(path);
        }
    }
    QIcon::setThemeSearchPaths(paths);

    const QString breeze = QStringLiteral("breeze");
    const QString fallback = QIcon::fallbackThemeName();
    // hicolor only holds the icons of applications; a bare X desktop names nothing else.
    if (fallback.isEmpty() || fallback == QLatin1StringView("hicolor")) {
        QIcon::setFallbackThemeName(breeze);
    }
    if (QIcon::themeName().isEmpty()) {
        QIcon::setThemeName(breeze);
    }
    return true;
}

}  // namespace

QIcon nodeIcon(NodeImage image) {
    return ownIcon(fileOf(image));
}

QIcon formulaIcon(FormulaImage image) {
    return ownIcon(fileOf(image));
}

QIcon themeIcon(const QString& name) {
    [[maybe_unused]] static const bool ready = prepareThemes();
    return QIcon::fromTheme(name);
}

}  // namespace varo::ui
