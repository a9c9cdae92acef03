#pragma once

#include "platform/questions/questions.h"

#include <QFocusEvent>

#include <utility>

namespace varo {

/// Tells the user why what was typed into a box is not stored. Leaving the box and the command that
/// follows both try to store it; the message is shown once for each text.
class RefusalNotice {
  public:
    /// `questions` must outlive this.
    explicit RefusalNotice(Questions& questions) : questions_(questions) {}

    /// Shows `message`, unless the last message was about the same text.
    void tell(const QString& text, const QString& message) {
        if (std::exchange(text_, text) != text) {
            questions_.inform(message);
        }
    }

    /// The next message is shown even for the same text.
    void forget() { text_.clear(); }

    /// To be called when the box gains the focus: as forget(), unless only its window has become
    /// active again.
    void focusGained(const QFocusEvent& event) {
        if (event.reason() != Qt::ActiveWindowFocusReason) {
            forget();
        }
    }

  private:
    Questions& questions_;
    QString text_;
};

}  // namespace varo
