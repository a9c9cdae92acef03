#pragma once

#include "platform/questions/questions.h"

#include <QFocusEvent>

#include <utility>

namespace varo {

/// Tells why what was typed into a box is not stored. Leaving the box and the command that follows
/// both try; the user is told once.
class RefusalNotice {
  public:
    /// `questions` must outlive this.
    explicit RefusalNotice(Questions& questions) : questions_(questions) {}

    /// Shows `message`, unless it was the same text that was told of last.
    void tell(const QString& text, const QString& message) {
        if (std::exchange(text_, text) != text) {
            questions_.inform(message);
        }
    }

    /// What is typed from now on is told of again.
    void forget() { text_.clear(); }

    /// The user has come back to the box; a window that comes back goes on where it was left.
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
