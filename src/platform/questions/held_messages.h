#pragma once

#include "platform/questions/questions.h"

#include <utility>

namespace varo {

/// Keeps the messages of work that must not be interrupted, such as a transaction, until it is
/// over. What is asked meanwhile is declined.
class HeldMessages : public Questions {
  public:
    void inform(const QString& text) override {
        if (!texts_.contains(text)) {
            texts_.append(text);
        }
    }
    bool confirm(const QString&, Choice) override { return false; }
    std::optional<ChosenFile> chooseFile(const FileQuestion&) override { return std::nullopt; }

    bool isEmpty() const { return texts_.isEmpty(); }

    /// Shows each message once, in order, and forgets them.
    void show(Questions& questions) {
        for (const QString& text : std::exchange(texts_, {})) {
            questions.inform(text);
        }
    }

  private:
    QStringList texts_;
};

}  // namespace varo
