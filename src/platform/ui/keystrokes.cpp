#include "platform/ui/keystrokes.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QWidget>

namespace varo::ui {

namespace {

void postKey(QWidget& target, int key, const QString& text = {}) {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QCoreApplication::postEvent(&target, new QKeyEvent(type, key, Qt::NoModifier, text));
    }
}

void postCharacter(QWidget& target, QChar character) {
    postKey(target, character.toUpper().unicode(), QString(character));
}

}  // namespace

void typeKeys(QWidget& target, QStringView keys) {
    while (!keys.isEmpty()) {
        if (keys.front() != u'{') {
            postCharacter(target, keys.front());
            keys = keys.sliced(1);
            continue;
        }
        // The search begins behind the name's first character, which may itself be the closing
        // brace.
        const qsizetype end = keys.indexOf(u'}', 2);
        if (end < 0) {
            return;
        }
        const QStringView name = keys.sliced(1, end - 1);
        keys = keys.sliced(end + 1);
        if (name.size() == 1) {
            postCharacter(target, name.front());
        } else if (name == u"left") {
            postKey(target, Qt::Key_Left);
        }
    }
}

}  // namespace varo::ui
