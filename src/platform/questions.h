#pragma once

#include <QString>

namespace varo {

/// What a modal question offers.
enum class Choice { YesNo, OkCancel };

/// Every modal question and message goes through this interface, so that a test, or a host without
/// a screen, can answer.
class Questions {
  public:
    virtual ~Questions() = default;

    /// Shows `text` with the information icon and an OK button, and waits until it is dismissed.
    virtual void inform(const QString& text) = 0;

    /// Asks `text` and returns true for Yes or OK.
    virtual bool confirm(const QString& text, Choice choice) = 0;
};

}  // namespace varo
