#include "platform/ui/message_boxes.h"
#include "platform/ui/registered_message.h"

#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

#include <functional>
#include <gtest/gtest.h>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace varo::ui {
namespace {

TEST(RegisteredMessages, ReadTheTextOfATextBoxAndNothingOfAWidgetThatHasGone) {
    QLabel label(u"label"_s);
    QPlainTextEdit plain(u"plain"_s);
    QWidget other;
    auto gone = std::make_unique<QTextEdit>(u"rich"_s);
    const quintptr stale = windowHandleOf(gone.get());
    EXPECT_EQ(windowText(stale), u"rich");
    EXPECT_EQ(windowText(windowHandleOf(&label)), u"label");
    EXPECT_EQ(windowText(windowHandleOf(&plain)), u"plain");
    gone.reset();
    for (const quintptr handle :
         {windowHandleOf(&other), stale, quintptr{0}, quintptr{1}, ~quintptr{0}}) {
        EXPECT_EQ(windowText(handle), u"");
    }
}

/// Does something to the dialog that comes up next.
template <class Dialog>
void onNext(const std::function<void(Dialog&)>& act) {
    QTimer::singleShot(0, qApp, [act] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        ASSERT_TRUE(dialog);
        act(*dialog);
    });
}

void clickButton(QMessageBox& box, QMessageBox::StandardButton button, const QString& caption) {
    EXPECT_EQ(box.button(button)->text(), caption);
    QTest::mouseClick(box.button(button), Qt::LeftButton);
}

TEST(MessageBoxes, InformShowsTheTextAsItIs) {
    QWidget owner;
    onNext<QMessageBox>([&](QMessageBox& box) {
        EXPECT_EQ(box.text(), u"<b>文件</b>不存在！");
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        EXPECT_EQ(box.icon(), QMessageBox::Information);
        EXPECT_EQ(box.parentWidget(), &owner);
        clickButton(box, QMessageBox::Ok, u"确定"_s);
    });
    MessageBoxes(&owner).inform(u"<b>文件</b>不存在！"_s);
}

TEST(MessageBoxes, ConfirmReturnsTheAnswerEvenWithoutItsOwnerAndEscapeMeansNo) {
    auto owner = std::make_unique<QWidget>();
    MessageBoxes boxes(owner.get());
    owner.reset();
    using Box = QMessageBox;
    const std::tuple<Choice, Box::StandardButton, QString, bool> answers[] = {
        {Choice::YesNo, Box::Yes, u"是(&Y)"_s, true},
        {Choice::YesNo, Box::No, u"否(&N)"_s, false},
        {Choice::OkCancel, Box::Ok, u"确定"_s, true},
        {Choice::OkCancel, Box::Cancel, u"取消"_s, false}};
    for (const auto& [choice, button, caption, answer] : answers) {
        onNext<Box>(
            [button = button, caption = caption](Box& box) { clickButton(box, button, caption); });
        EXPECT_EQ(boxes.confirm(u"确实要删除吗？"_s, choice), answer) << caption.toStdString();
        onNext<QMessageBox>([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
        EXPECT_FALSE(boxes.confirm(u"?"_s, choice));
    }
}

TEST(MessageBoxes, ChooseFileAnswersThePathAndTheFilterOrNothing) {
    const QStringList filters{u"(*.bmp)"_s, u"(*.jpg)"_s};
    const QTemporaryDir folder;
    const QString missing = folder.filePath(u"none"_s);
    QWidget owner;
    MessageBoxes boxes(&owner);
    using Purpose = FileQuestion::Purpose;
    for (const auto purpose : {Purpose::Open, Purpose::New}) {
        const FileQuestion question{u"选择图片"_s, filters, purpose, u"*.jpg"_s};
        onNext<QFileDialog>([&](QFileDialog& dialog) {
            EXPECT_EQ(dialog.windowTitle(), u"选择图片"_s);
            EXPECT_EQ(dialog.nameFilters(), filters);
            EXPECT_EQ(dialog.acceptMode() == QFileDialog::AcceptSave, purpose == Purpose::New);
            EXPECT_EQ(dialog.findChild<QLineEdit*>()->text(), u"*.jpg"_s);
            dialog.setDirectory(folder.path());
            dialog.selectNameFilter(filters[1]);
            dialog.selectFile(missing);
            QMetaObject::invokeMethod(&dialog, "accept");
        });
        const auto chosen = boxes.chooseFile(question);
        ASSERT_TRUE(chosen);
        EXPECT_EQ(chosen->path, missing);
        EXPECT_EQ(chosen->filter, 1);
        onNext<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
        EXPECT_FALSE(boxes.chooseFile(question));
    }
}

}  // namespace
}  // namespace varo::ui
