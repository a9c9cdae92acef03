#pragma once

#include "platform/questions/questions.h"
#include "support/printers.h"

#include <QList>
#include <QStringList>

#include <functional>
#include <utility>

namespace varo::test {

/// Remembers what the user was told and asked. Answers as scripted, and declines when the script
/// has ended.
class RecordingQuestions : public Questions {
  public:
    void inform(const QString& text) override {
        informed.append(text);
        meanwhile();
    }
    bool confirm(const QString& text, Choice) override {
        asked.append(text);
        meanwhile();
        return !answers.isEmpty() && answers.takeFirst();
    }

    std::optional<ChosenFile> chooseFile(const FileQuestion& question) override {
        fileQuestion = question;
        meanwhile();
        return std::exchange(file, std::nullopt);
    }

    /// What happens while the user is told or asked something: the host goes on.
    std::function<void()> meanwhile = [] {};

    QStringList informed;  ///< texts of inform()

    std::optional<ChosenFile> file;  ///< what is answered to the next chooseFile(); nothing cancels
    FileQuestion fileQuestion;       ///< argument of the last chooseFile()
    QStringList asked;               ///< texts of confirm()
    QList<bool> answers;             ///< what confirm() will answer, in order
};

}  // namespace varo::test
