#include "guide_desk.h"

#include <QApplication>
#include <QDir>
#include <QHash>
#include <QMenu>
#include <QPainter>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace varo::guide {

namespace {

constexpr QSize kWindowSize(960, 640);

/// What the host of the pictures answers.
const QHash<QString, QString>& hostProperties() {
    static const QHash<QString, QString> values{
        {QStringLiteral("弹性模量"), QStringLiteral("206")},
        {QStringLiteral("截面面积"), QStringLiteral("314")},
    };
    return values;
}

void copyFiles(const QString& from, const QString& to) {
    const QStringList names = QDir(from).entryList(QDir::Files);
    for (const QString& name : names) {
        if (!QFile::copy(QDir(from).filePath(name), QDir(to).filePath(name))) {
            throw DriverError(QStringLiteral("'%1' cannot be copied").arg(name));
        }
    }
}

void drawWindow(QPainter& painter, QWidget& shown, QPoint position) {
    const QPixmap pixels = shown.grab();
    painter.drawPixmap(position, pixels);
    // Frames are drawn by the desktop, which there is none of here.
    painter.setPen(QColor(0x80, 0x80, 0x80));
    painter.drawRect(QRect(position, pixels.size()).adjusted(0, 0, -1, -1));
}

}  // namespace

GuideDesk::GuideDesk(const QString& configurationFolder) {
    setControl(*new Varo_CalcEx(this));
    copyFiles(configurationFolder, configuration_.path());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(&control());
    connect(&control(), &Varo_CalcEx::GetPropValue, this,
            [this](const QString& name, bool& answered) {
                answered = hostProperties().contains(name);
                if (answered) {
                    control().SetSelPropValue(hostProperties().value(name));
                }
            });
    // Nothing is drawn as if the pointer were on it.
    QCursor::setPos(QGuiApplication::primaryScreen()->geometry().bottomRight());
    resize(kWindowSize);
    show();
    activateWindow();
    if (!QTest::qWaitForWindowActive(this)) {
        throw DriverError(QStringLiteral("the window does not become active"));
    }
    control().setWorkFolder(work_.path());
    control().SetDeployFolder(configuration_.path());
    control().RunCalc();
    settle();
}

GuideDesk::~GuideDesk() {
    // It stores what is being edited, in files that go with this.
    delete &control();
}

void GuideDesk::clickItem(ui::NodeView& view, const QString& text, Qt::MouseButton button) {
    constexpr int kAlongTheName = 130;
    ControlDriver::clickItem(view, find(view, text), button, kAlongTheName);
}

void GuideDesk::pointAt(const QString& entry) {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    const QList<QAction*> actions = menu == nullptr ? QList<QAction*>() : menu->actions();
    const auto found = std::ranges::find(actions, entry, &QAction::text);
    if (found == actions.end()) {
        throw DriverError(QStringLiteral("no open menu has '%1'").arg(entry));
    }
    QTest::mouseMove(menu, menu->actionGeometry(*found).center());
    settle();
}

QImage GuideDesk::pictureOfQuestion(const std::function<void()>& ask) {
    return pictureOfDialog(ask, [](QWidget&) {});
}

QImage GuideDesk::pictureOfDialog(const std::function<void()>& open,
                                  const std::function<void(QWidget& dialog)>& use) {
    QImage taken;
    QTimer whileOpen;
    connect(&whileOpen, &QTimer::timeout, this, [&] {
        QWidget* box = QApplication::activeModalWidget();
        if (box != nullptr && taken.isNull()) {
            whileOpen.stop();
            use(*box);
            taken = grabWithPopups();
            QTest::keyClick(box, Qt::Key_Escape);
        }
    });
    whileOpen.start(0);
    open();
    if (taken.isNull()) {
        throw DriverError(QStringLiteral("nothing was asked"));
    }
    return taken;
}

QImage GuideDesk::pictureOfPopup() {
    QWidget* popup = QApplication::activePopupWidget();
    if (popup == nullptr) {
        throw DriverError(QStringLiteral("no popup is open"));
    }
    const QImage taken = grabWithPopups();
    popup->close();
    settle();
    return taken;
}

QImage GuideDesk::grabWithPopups() {
    QList<QWidget*> above = QApplication::topLevelWidgets();
    above.removeIf([this](const QWidget* each) { return each == this || !each->isVisible(); });
    QImage canvas(size(), QImage::Format_RGB32);
    QPainter painter(&canvas);
    painter.drawPixmap(QPoint(0, 0), grab());
    for (QWidget* each : above) {
        drawWindow(painter, *each, each->pos() - mapToGlobal(QPoint(0, 0)));
    }
    return canvas;
}

QRect GuideDesk::place(const QString& name) {
    return place(child(name));
}

QRect GuideDesk::place(const QWidget& target) const {
    return {target.mapTo(this, QPoint(0, 0)), target.size()};
}

}  // namespace varo::guide
