#pragma once

#include "platform/questions/questions.h"

#include <QPointer>
#include <QWidget>

namespace varo::ui {

/// Questions answered by the user in modal message boxes and dialogs over a window.
class MessageBoxes : public Questions {
  public:
    /// Boxes appear over `owner`; it is not owned.
    explicit MessageBoxes(QWidget* owner) : owner_(owner) {}

    void inform(const QString& text) override;
    bool confirm(const QString& text, Choice choice) override;
    std::optional<ChosenFile> chooseFile(const FileQuestion& question) override;

  private:
    QPointer<QWidget> owner_;
};

}  // namespace varo::ui
