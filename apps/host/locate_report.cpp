#include "host/locate_report.h"

#include "driver/control_driver.h"
#include "host/control_report.h"

namespace varo::host {

namespace {

bool isLocated(const QModelIndex& item) {
    return !item.data(Qt::AccessibleDescriptionRole).toString().isEmpty();
}

/// The texts of the located item and of what it is in; empty when none is shown.
QStringList locatedPath(const ControlDriver& driver) {
    const QModelIndex formula = driver.list().selectedIndex();
    const QModelIndex node = driver.tree().selectedIndex();
    QStringList path;
    if (isLocated(formula)) {
        path.append(formula.data().toString());
    }
    if (isLocated(formula) || isLocated(node)) {
        for (QModelIndex each = node; each.isValid(); each = each.parent()) {
            path.prepend(each.data().toString());
        }
    }
    return path;
}

}  // namespace

QStringList locateLines(Varo_CalcEx& control, const QString& property,
                        const std::function<bool()>& isPassed) {
    const ControlDriver driver(control);
    QToolButton& next = driver.editButton(QStringLiteral("查找下一个"));
    QToolButton& previous = driver.editButton(QStringLiteral("查找上一个"));
    QStringList lines;
    int steps = 0;
    QStringList before;
    bool couldGoBack = false;
    control.SetDesignProp(property);
    for (;; ++steps) {
        const QStringList path = locatedPath(driver);
        const bool isChanged = steps == 0 || path != before || previous.isEnabled() != couldGoBack;
        if (!path.isEmpty()) {
            lines.append(oneLine(QStringLiteral("located: ") + path.join(QStringLiteral(" / "))));
        }
        if (!next.isEnabled() || (path.isEmpty() && !(isPassed ? isPassed() : isChanged))) {
            break;
        }
        before = path;
        couldGoBack = previous.isEnabled();
        next.click();
    }
    for (; steps > 0 && previous.isEnabled(); --steps) {
        previous.click();
    }
    return lines.isEmpty() ? QStringList{QStringLiteral("located: nothing")} : lines;
}

}  // namespace varo::host
