#pragma once

#include <QDialog>
#include <QPushButton>

namespace varo::ui {

/// Makes a widget with this name below `parent`.
template <class Widget>
Widget* makeNamed(const char* name, QWidget* parent) {
    auto* widget = new Widget(parent);
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

/// The same with a text.
template <class Widget>
Widget* makeNamed(const char* name, QWidget* parent, const QString& text) {
    auto* widget = makeNamed<Widget>(name, parent);
    widget->setText(text);
    return widget;
}

/// The buttons that accept and reject a dialog. Enter accepts.
struct DialogButtons {
    QPushButton* cmdOK;
    QPushButton* cmdCancel;
};

/// Makes both; the caller connects cmdOK.
inline DialogButtons makeButtons(QDialog& dialog) {
    DialogButtons buttons{makeNamed<QPushButton>("cmdOK", &dialog, QStringLiteral("确定(&Y)")),
                          makeNamed<QPushButton>("cmdCancel", &dialog, QStringLiteral("取消(&C)"))};
    buttons.cmdOK->setDefault(true);
    buttons.cmdCancel->setAutoDefault(false);
    QObject::connect(buttons.cmdCancel, &QPushButton::clicked, &dialog, &QDialog::reject);
    return buttons;
}

}  // namespace varo::ui
