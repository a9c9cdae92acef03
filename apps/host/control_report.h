#pragma once

#include <QString>
#include <QStringList>

namespace varo {
class Varo_CalcEx;
}

namespace varo::host {

/// What the control shows, a line each: library, folder, formula, expression, description, picture,
/// variables, result.
QStringList shownLines(Varo_CalcEx& control);

/// `text` on one line: each line break becomes the two characters `\n`.
QString oneLine(const QString& text);

}  // namespace varo::host
