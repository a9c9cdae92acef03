#pragma once

#include <QDialog>
#include <QPushButton>

namespace varo {

/// Makes a widget with this name below `parent`.
template <class Widget>
Widget* makeNamed(const char* name, QWidget* parent) {
    auto* widget = new Widget(parent);
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

/// The buttons that accept and reject a dialog. Enter accepts.
struct DialogButtons {
    QPushButton* cmdOK;
    QPushButton* cmdCancel;
};

inline DialogButtons makeButtons(QDialog& dialog) {
    DialogButtons buttons{makeNamed<QPushButton>("cmdOK", &dialog),
                          makeNamed<QPushButton>("cmdCancel", &dialog)};
    buttons.cmdOK->setText(QStringLiteral("确定(&Y)"));
    buttons.cmdOK->setDefault(true);
    buttons.cmdCancel->setText(QStringLiteral("取消(&C)"));
    buttons.cmdCancel->setAutoDefault(false);
    QObject::connect(buttons.cmdCancel, &QPushButton::clicked, &dialog, &QDialog::reject);
    return buttons;
}

}  // namespace varo
