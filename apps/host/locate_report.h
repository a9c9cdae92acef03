#pragma once

#include <QString>
#include <QStringList>

namespace varo {
class Varo_CalcEx;
}

namespace varo::host {

/// Calls SetDesignProp and steps through what the control has located, to the last one that it can
/// show, and back to the first. Returns a line for each, "located: library / folder / formula", or
/// "located: nothing".
QStringList locateLines(Varo_CalcEx& control, const QString& property);

}  // namespace varo::host
