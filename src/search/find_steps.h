#pragma once

#include "platform/ui/action_keys.h"
#include "search/find_locator.h"
#include "search/find_results.h"

#include <QAction>

namespace varo {

/// Decides what F3 and Shift+F3 step through: the items of a locate by property as long as there is
/// one to go to, else the hits of the last search.
class FindSteps : public QObject {
    Q_OBJECT

  public:
    /// `area` takes the keys. `locatedNext` and `locatedPrevious` step through the items of a
    /// locate by property. Everything handed in must outlive this.
    FindSteps(QWidget& area, FindResults& results, FindLocator& locator, QAction& locatedNext,
              QAction& locatedPrevious);

  private:
    void offer();
    void step(int by);

    ui::ActionKeys keys_;
    FindResults& results_;
    FindLocator& locator_;
    QAction& locatedNext_;
    QAction& locatedPrevious_;
    QAction next_;
    QAction previous_;
};

}  // namespace varo
