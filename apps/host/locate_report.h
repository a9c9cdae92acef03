#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace varo {
class Varo_CalcEx;
}

namespace varo::host {

/// Calls SetDesignProp and steps through what the control has located, and back to the first.
/// Returns a line for each that is shown, "located: library / folder / formula", or "located:
/// nothing". `isPassed` tells, when nothing is shown, whether the control has gone past something
/// that is not there any more. The stepping ends where it has not, or is at the last; without
/// `isPassed`, where a step changes nothing that is seen.
QStringList locateLines(Varo_CalcEx& control, const QString& property,
                        const std::function<bool()>& isPassed = {});

}  // namespace varo::host
