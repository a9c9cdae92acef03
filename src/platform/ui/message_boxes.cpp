#include "platform/ui/message_boxes.h"

#include "platform/ui/dialogs.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>

namespace varo::ui {

namespace {

struct Answer {
    QMessageBox::StandardButton button;
    QString caption;
};

/// Shows a box with the given answers, the first of them the default, and returns the chosen one.
QMessageBox::StandardButton ask(QWidget* owner, QMessageBox::Icon icon, const QString& text,
                                std::initializer_list<Answer> answers) {
    // Over the dialog that is open, if one is: else it could lie behind that dialog.
    QWidget* dialog = QApplication::activeModalWidget();
    QMessageBox box(dialog != nullptr ? dialog : owner);
    box.setWindowTitle(QApplication::applicationDisplayName());
    box.setIcon(icon);
    box.setTextFormat(Qt::PlainText);
    box.setText(text);
    for (const Answer& answer : answers) {
        box.addButton(answer.button)->setText(answer.caption);
    }
    box.setDefaultButton(answers.begin()->button);
    runDialog(box);
    return box.standardButton(box.clickedButton());
}

}  // namespace

void MessageBoxes::inform(const QString& text) {
    ask(owner_, QMessageBox::Information, text, {{QMessageBox::Ok, QStringLiteral("确定")}});
}

bool MessageBoxes::confirm(const QString& text, Choice choice) {
    if (choice == Choice::YesNo) {
        return ask(owner_, QMessageBox::Information, text,
                   {{QMessageBox::Yes, QStringLiteral("是(&Y)")},
                    {QMessageBox::No, QStringLiteral("否(&N)")}}) == QMessageBox::Yes;
    }
    return ask(owner_, QMessageBox::NoIcon, text,
               {{QMessageBox::Ok, QStringLiteral("确定")},
                {QMessageBox::Cancel, QStringLiteral("取消")}}) == QMessageBox::Ok;
}

std::optional<ChosenFile> MessageBoxes::chooseFile(const FileQuestion& question) {
    QFileDialog dialog(owner_, question.title);
    // A name that does not exist is accepted: the caller may append an extension first, and for
    // that reason asks itself whether a file may be replaced.
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    if (question.purpose == FileQuestion::Purpose::New) {
        dialog.setAcceptMode(QFileDialog::AcceptSave);
    }
    dialog.setNameFilters(question.filters);
    dialog.selectFile(question.initialName);
    const bool chosen = runDialog(dialog);
    const QStringList files = dialog.selectedFiles();
    if (!chosen || files.isEmpty()) {
        return std::nullopt;
    }
    const auto filter = static_cast<int>(question.filters.indexOf(dialog.selectedNameFilter()));
    return ChosenFile{files.first(), std::max(filter, 0)};
}

}  // namespace varo::ui
