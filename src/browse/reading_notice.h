#pragma once

#include "browse/library_tree.h"

class QLabel;

namespace varo {

/// Says in a line below the tree that libraries are being read while the program goes on, and how
/// the user ends that.
class ReadingNotice : public QObject {
    Q_OBJECT

  public:
    /// Everything handed in must outlive this. `line` is hidden at first; the tree gets the room
    /// that it takes while it is hidden.
    ReadingNotice(LibraryTree& tree, QLabel& line);

  private:
    void show(int waiting);
    void hideInPlace();

    LibraryTree& tree_;
    QLabel& line_;
};

}  // namespace varo
