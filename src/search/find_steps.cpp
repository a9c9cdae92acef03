#include "search/find_steps.h"

namespace varo {

FindSteps::FindSteps(QWidget& area, FindResults& results, FindLocator& locator,
                     QAction& locatedNext, QAction& locatedPrevious)
    : keys_(area),
      results_(results),
      locator_(locator),
      locatedNext_(locatedNext),
      locatedPrevious_(locatedPrevious) {
    for (const auto& [action, like, by] :
         {std::tuple{&next_, &locatedNext, 1}, {&previous_, &locatedPrevious, -1}}) {
        action->setShortcut(like->shortcut());
        action->setShortcutContext(Qt::WidgetShortcut);
        keys_.add(*action);
        connect(action, &QAction::triggered, this, [this, step = by] { this->step(step); });
        connect(like, &QAction::enabledChanged, this, &FindSteps::offer);
    }
    connect(&results, &FindResults::changed, this, &FindSteps::offer);
    offer();
}

void FindSteps::offer() {
    const bool isLocating = locatedNext_.isEnabled() || locatedPrevious_.isEnabled();
    next_.setEnabled(!isLocating && results_.located() + 1 < results_.count());
    previous_.setEnabled(!isLocating && results_.located() > 0);
}

void FindSteps::step(int by) {
    locator_.locate(results_, results_.located() + by);
}

}  // namespace varo
