#pragma once

#include "control/library_tree.h"
#include "control/state.h"

#include <QObject>

namespace varo {

/// Locates, in every library, the folders and formulas that carry a property whose condition holds
/// for the host's values, and shows them one at a time.
class PropertyLocator : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    PropertyLocator(ControlState& state, Questions& questions, PropertySource& properties,
                    LibraryTree& tree, FormulaList& list);

    /// Collects what carries a property called `property` and suits the host, formulas before
    /// folders in each library, and shows the first. What fails is told to the user and leaves the
    /// list as far as it was built; the library that was current is current again in every case.
    void locate(const QString& property);

    void showNext() { step(1); }
    void showPrevious() { step(-1); }

  signals:
    /// Whether there is a located item behind and before the one shown.
    void stepsChanged(bool canStepNext, bool canStepBack);

  private:
    bool collectAll();
    bool collect(const QString& libraryKey, qint32 nodeType);
    bool filter(const QString& libraryKey);
    bool tellCannotOpen();
    void step(int by);
    void showItem(int position);

    ControlState& state_;
    Questions& questions_;
    PropertySource& properties_;
    LibraryTree& tree_;
    FormulaList& list_;
    int shown_ = 0;  ///< 1-based position in the located list
};

}  // namespace varo
