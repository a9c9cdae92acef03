#include "platform/ui/icons.h"

#include "platform/ui/colors.h"

#include <QDir>
#include <QGuiApplication>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QStandardPaths>
#include <QStyle>
#include <QWidget>

#include <algorithm>

// The macro declares a function of the global namespace.
static void initIconResources() {
    Q_INIT_RESOURCE(varo_icons);
}

namespace varo::ui {

namespace {

/// Draws a disabled icon half transparent. The platform's way, mixing with grey, does not change
/// light lines on a dark background.
class FadingIcon : public QIconEngine {
  public:
    explicit FadingIcon(const QIcon& icon) : icon_(icon) {}

    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state,
                         qreal scale) override {
        const bool fades = mode == QIcon::Disabled;
        QPixmap shown = icon_.pixmap((QSizeF(size) / scale).toSize(), scale,
                                     fades ? QIcon::Normal : mode, state);
        if (fades && !shown.isNull()) {
            QPainter fading(&shown);
            fading.setCompositionMode(QPainter::CompositionMode_DestinationIn);
            fading.fillRect(shown.rect(), QColor(0, 0, 0, 100));
        }
        return shown;
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return scaledPixmap(size, mode, state, 1);
    }
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        const qreal scale = painter->device()->devicePixelRatioF();
        const QSize size = (QSizeF(rect.size()) * scale).toSize();
        painter->drawPixmap(rect, scaledPixmap(size, mode, state, scale));
    }
    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return icon_.actualSize(size, mode, state);
    }
    QString iconName() override { return icon_.name(); }
    QIconEngine* clone() const override { return new FadingIcon(*this); }

  private:
    QIcon icon_;
};

/// Adds the folders of installed icon themes to the search path, which some platforms leave empty.
bool addInstalledThemes() {
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
    return true;
}

/// Names Breeze, in the variant that can be seen on the application's background, where the
/// platform knows no theme of its own.
void chooseBreeze() {
    static const QString fallback = QIcon::fallbackThemeName();
    // hicolor only holds the icons of applications; a bare X desktop names nothing else.
    static const bool wantsFallback =
        fallback.isEmpty() || fallback == QLatin1StringView("hicolor");
    static const bool wantsTheme = QIcon::themeName().isEmpty();
    const QString breeze = isDark(QGuiApplication::palette()) ? QStringLiteral("breeze-dark")
                                                              : QStringLiteral("breeze");
    if (wantsFallback) {
        QIcon::setFallbackThemeName(breeze);
    }
    if (wantsTheme) {
        QIcon::setThemeName(breeze);
    }
}

}  // namespace

QIcon ownIcon(const QString& name) {
    [[maybe_unused]] static const bool isReady = (initIconResources(), true);
    // Views ask for the icon of each row that they draw. Never destroyed: icons must not outlive
    // the application.
    static auto& made = *new QHash<QString, QIcon>;
    QIcon& icon = made[name];
    if (icon.isNull() && !name.isEmpty()) {
        const QString file = QStringLiteral(":/varo/icons/%1.svg").arg(name);
        icon.addFile(file);
        // Styles tint the icon of a selected item so strongly that icons look alike.
        icon.addFile(file, {}, QIcon::Selected);
    }
    return icon;
}

QSize iconSizeFor(const QWidget& widget) {
    const int least = widget.style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, &widget);
    const int side = std::max(least, widget.fontInfo().pixelSize() / 3 * 4);
    return {side, side};
}

QIcon themeIcon(const QString& name) {
    [[maybe_unused]] static const bool ready = addInstalledThemes();
    chooseBreeze();
    const QIcon icon = QIcon::fromTheme(name);
    return icon.isNull() ? icon : QIcon(new FadingIcon(icon));
}

}  // namespace varo::ui
