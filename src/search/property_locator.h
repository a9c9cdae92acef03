#pragma once

#include "browse/selection_controller.h"
#include "library/property_search.h"

#include <QObject>

namespace varo {

/// Locates, in every library, the folders and formulas that carry a property whose condition holds
/// for the host's values, and shows them one at a time.
class PropertyLocator : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this.
    PropertyLocator(SelectionController& selection, CurrentLibrary& library, PropertySearch& search,
                    Questions& questions);

    /// Finds what carries a property called `property` and suits the host, and shows the first.
    /// What fails is told to the user and leaves the list as far as it was built, with nothing
    /// shown of it. Does nothing while a search or a step is under way.
    void locate(const QString& property);

    /// Forgets what has been found, because the libraries are about to be others.
    void forget();

    /// Shows the next or previous one. One that is gone since is told and stepped past; one whose
    /// library cannot be opened is told and stays the next one to be shown. The folders of a
    /// library that the tree has not read, or that was replaced since, are read first.
    void showNext() { step(1); }
    void showPrevious() { step(-1); }

  signals:
    /// Whether there is a located item behind and before the one shown.
    void stepsChanged(bool canStepNext, bool canStepBack);

  private:
    void step(int by);
    void showItem(int position);

    SelectionController& selection_;
    CurrentLibrary& library_;
    PropertySearch& search_;
    Questions& questions_;
    colLocateProp located_;
    bool isSearching_ = false;  ///< or showing what was found
    int shown_ = 0;             ///< 1-based position in the located list
};

}  // namespace varo
