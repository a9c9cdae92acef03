#pragma once

#include "platform/questions.h"
#include "support/printers.h"

#include <QStringList>

namespace varo::test {

/// Remembers what the user was told, and declines whatever is to be confirmed.
class RecordingQuestions : public Questions {
  public:
    void inform(const QString& text) override { informed.append(text); }
    bool confirm(const QString&, Choice) override { return false; }

    QStringList informed;  ///< texts of inform()
};

}  // namespace varo::test
