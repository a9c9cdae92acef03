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

constexpr QSize WindowSize(960, 640);

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
            throw SceneError(QStringLiteral("'%1' cannot be copied").arg(name));
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

GuideDesk::GuideDesk(const QString& configurationFolder) : control_(new Varo_CalcEx(this)) {
    copyFiles(configurationFolder, configuration_.path());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(control_);
    connect(control_, &Varo_CalcEx::GetPropValue, this,
            [this](const QString& name, bool& answered) {
                answered = hostProperties().contains(name);
                if (answered) {
                    control_->SetSelPropValue(hostProperties().value(name));
                }
            });
    // Nothing is drawn as if the pointer were on it.
    QCursor::setPos(QGuiApplication::primaryScreen()->geometry().bottomRight());
    resize(WindowSize);
    show();
    activateWindow();
    if (!QTest::qWaitForWindowActive(this)) {
        throw SceneError(QStringLiteral("the window does not become active"));
    }
    control_->setWorkFolder(work_.path());
    control_->SetDeployFolder(configuration_.path());
    control_->RunCalc();
    settle();
}

GuideDesk::~GuideDesk() {
    // It stores what is being edited, in files that go with this.
    delete control_;
}

void GuideDesk::click(QWidget& target, Qt::MouseButton button, QPoint place) {
    if (!target.isVisible() || !target.isEnabled()) {
        throw SceneError(QStringLiteral("'%1' cannot be clicked").arg(target.objectName()));
    }
    QTest::mouseClick(&target, button, {}, place);
    settle();
}

void GuideDesk::clickItem(ui::NodeView& view, const QString& text, Qt::MouseButton button) {
    const QModelIndex item = view.model()
                                 ->match(view.model()->index(0, 0), Qt::DisplayRole, text, 1,
                                         Qt::MatchExactly | Qt::MatchRecursive)
                                 .value(0);
    if (!item.isValid()) {
        throw SceneError(QStringLiteral("'%1' has no '%2'").arg(view.objectName(), text));
    }
    view.scrollTo(item);
    settle();
    const QRect place = view.visualRect(item);
    // In the name, at a place that menus leave most of it to be seen.
    constexpr int AlongTheName = 130;
    const int along = std::min(place.width() / 2, AlongTheName);
    QTest::mouseClick(view.viewport(), button, {}, {place.left() + along, place.center().y()});
    settle();
}

void GuideDesk::pressKey(Qt::Key key) {
    QTest::keyClick(QApplication::focusWidget(), key);
    settle();
}

void GuideDesk::type(const QString& text) {
    for (const QChar character : text) {
        QTest::sendKeyEvent(QTest::Click, QApplication::focusWidget(), Qt::Key_unknown,
                            QString(character), Qt::NoModifier);
    }
    settle();
}

void GuideDesk::pointAt(const QString& entry) {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    const QList<QAction*> actions = menu == nullptr ? QList<QAction*>() : menu->actions();
    const auto found = std::ranges::find(actions, entry, &QAction::text);
    if (found == actions.end()) {
        throw SceneError(QStringLiteral("no open menu has '%1'").arg(entry));
    }
    QTest::mouseMove(menu, menu->actionGeometry(*found).center());
    settle();
}

QImage GuideDesk::pictureOfQuestion(const std::function<void()>& ask) {
    QImage taken;
    QTimer whileAsked;
    connect(&whileAsked, &QTimer::timeout, this, [&] {
        QWidget* box = QApplication::activeModalWidget();
        if (box != nullptr && taken.isNull()) {
            whileAsked.stop();
            taken = grabWithPopups();
            QTest::keyClick(box, Qt::Key_Escape);
        }
    });
    whileAsked.start(0);
    ask();
    if (taken.isNull()) {
        throw SceneError(QStringLiteral("nothing was asked"));
    }
    return taken;
}

QImage GuideDesk::pictureOfPopup() {
    QWidget* popup = QApplication::activePopupWidget();
    if (popup == nullptr) {
        throw SceneError(QStringLiteral("no popup is open"));
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
    return place(part(name));
}

QRect GuideDesk::place(const QWidget& target) const {
    return {target.mapTo(this, QPoint(0, 0)), target.size()};
}

void settle() {
    // What was queued may have queued more.
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

}  // namespace varo::guide
