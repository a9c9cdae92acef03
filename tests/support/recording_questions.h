#pragma once

#include "platform/questions.h"
#include "support/printers.h"

#include <QStringList>
#include <queue>

#include <initializer_list>

namespace varo::test {

/// Answers modal questions from a script and remembers what was shown.
class RecordingQuestions : public Questions {
  public:
    RecordingQuestions() = default;
    /// The answers that confirm() gives, in order; false when they have run out.
    RecordingQuestions(std::initializer_list<bool> answers) : answers_(answers) {}

    void answer(bool next) { answers_.push(next); }

    void inform(const QString& text) override { informed.append(text); }

    bool confirm(const QString& text, Choice choice) override {
        asked.append(text);
        choices.append(choice);
        if (answers_.empty()) {
            return false;
        }
        const bool given = answers_.front();
        answers_.pop();
        return given;
    }

    QStringList informed;   ///< texts of inform()
    QStringList asked;      ///< texts of confirm()
    QList<Choice> choices;  ///< what each of them offered

  private:
    std::queue<bool> answers_;
};

}  // namespace varo::test
