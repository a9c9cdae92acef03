#pragma once

#include "platform/questions/questions.h"

#include <QString>

#include <functional>

namespace varo {

/// Makes a new library file, a copy of the template byte for byte, where the user wants it, and
/// tells the user what fails. The file appears whole or not at all. A file that `isInUse` is not
/// replaced, nor is the template. Returns the path of the new library; "" when there is none.
QString CreateLibraryFromTemplate(Questions& questions,
                                  const std::function<bool(const QString& path)>& isInUse);

}  // namespace varo
