#include "platform/ui/message_boxes.h"
#include "platform/ui/registered_message.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace varo::ui {
namespace {

class Receiver : public QWidget {
  public:
    std::vector<std::pair<QEvent::Type, QString>> texts;

  protected:
    bool event(QEvent* event) override {
        if (event->type() == registerWindowMessage(u"WM_CALCMSG"_s)) {
            const auto* message = static_cast<RegisteredMessage*>(event);
            EXPECT_EQ(message->wParam, 0u);
            texts.emplace_back(event->type(), windowText(message->lParam));
            return true;
        }
        return QWidget::event(event);
    }
};

TEST(RegisteredMessages, OneNumberForEachName) {
    const QEvent::Type first = registerWindowMessage(u"WM_CALCMSG"_s);
    EXPECT_EQ(registerWindowMessage(u"WM_CALCMSG"_s), first);
    EXPECT_NE(registerWindowMessage(u"WM_OTHER"_s), first);
    EXPECT_GE(first, QEvent::User);
}

TEST(RegisteredMessages, ArePostedNotSent) {
    Receiver receiver;
    QLineEdit result(u"3.14"_s);
    const auto message = registerWindowMessage(u"WM_CALCMSG"_s);
    postWindowMessage(&receiver, message, 0, windowHandleOf(&result));
    EXPECT_TRUE(receiver.texts.empty());
    QCoreApplication::processEvents();
    ASSERT_EQ(receiver.texts.size(), 1u);
    EXPECT_EQ(receiver.texts.front(), std::pair(message, u"3.14"_s));
    postWindowMessage(nullptr, message, 0, 0);
}

TEST(RegisteredMessages, AHandleThatNamesNoWidgetHasNoText) {
    auto gone = std::make_unique<QLineEdit>(u"x"_s);
    const quintptr stale = windowHandleOf(gone.get());
    EXPECT_EQ(windowText(stale), u"x");
    gone.reset();
    for (const quintptr handle : {stale, quintptr{0}, quintptr{1}, ~quintptr{0}}) {
        EXPECT_EQ(windowText(handle), u"");
    }
}

TEST(RegisteredMessages, ReadTheTextOfEveryKindOfTextBox) {
    QLabel label(u"label"_s);
    QTextEdit rich(u"rich"_s);
    QPlainTextEdit plain(u"plain"_s);
    QWidget other;
    EXPECT_EQ(windowText(windowHandleOf(&label)), u"label");
    EXPECT_EQ(windowText(windowHandleOf(&rich)), u"rich");
    EXPECT_EQ(windowText(windowHandleOf(&plain)), u"plain");
    EXPECT_EQ(windowText(windowHandleOf(&other)), u"");
}

/// Does something to the message box that comes up next.
void onNextBox(const std::function<void(QMessageBox&)>& act) {
    QTimer::singleShot(0, qApp, [act] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_TRUE(box);
        act(*box);
    });
}

void clickButton(QMessageBox& box, const QString& caption) {
    for (QAbstractButton* button : box.buttons()) {
        if (button->text() == caption) {
            QTest::mouseClick(button, Qt::LeftButton);
            return;
        }
    }
    ADD_FAILURE() << "no button " << caption.toStdString();
    box.reject();
}

TEST(MessageBoxes, InformShowsTheTextAsItIs) {
    QWidget owner;
    MessageBoxes boxes(&owner);
    QApplication::setApplicationDisplayName(u"公式计算"_s);
    bool shown = false;
    onNextBox([&](QMessageBox& box) {
        shown = true;
        EXPECT_EQ(box.text(), u"<b>文件</b>不存在！");
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        EXPECT_EQ(box.icon(), QMessageBox::Information);
        EXPECT_EQ(box.windowTitle(), u"公式计算");
        EXPECT_EQ(box.parentWidget(), &owner);
        EXPECT_EQ(box.buttons().size(), 1);
        clickButton(box, u"确定"_s);
    });
    boxes.inform(u"<b>文件</b>不存在！"_s);
    EXPECT_TRUE(shown);
}

TEST(MessageBoxes, ConfirmReturnsTheAnswer) {
    const std::tuple<Choice, QMessageBox::Icon, QString, bool> table[] = {
        {Choice::YesNo, QMessageBox::Information, u"是(&Y)"_s, true},
        {Choice::YesNo, QMessageBox::Information, u"否(&N)"_s, false},
        {Choice::OkCancel, QMessageBox::NoIcon, u"确定"_s, true},
        {Choice::OkCancel, QMessageBox::NoIcon, u"取消"_s, false},
    };
    for (const auto& [choice, icon, caption, answer] : table) {
        auto owner = std::make_unique<QWidget>();
        MessageBoxes boxes(owner.get());
        owner.reset();
        onNextBox([&, expected = icon, button = caption](QMessageBox& box) {
            EXPECT_EQ(box.icon(), expected);
            clickButton(box, button);
        });
        EXPECT_EQ(boxes.confirm(u"确实要删除吗？"_s, choice), answer) << caption.toStdString();
    }
}

TEST(MessageBoxes, EscapeMeansNo) {
    MessageBoxes boxes(nullptr);
    for (const Choice choice : {Choice::YesNo, Choice::OkCancel}) {
        onNextBox([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
        EXPECT_FALSE(boxes.confirm(u"?"_s, choice));
    }
}

}  // namespace
}  // namespace varo::ui
