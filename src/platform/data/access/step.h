#pragma once

#include "platform/data/access/page_file.h"

namespace varo::access {

/// A part of the transaction of a file that is undone unless it is kept.
class Step {
  public:
    explicit Step(PageFile& file) : file_(file), savepoint_(file.setSavepoint()) {}
    ~Step() {
        if (!isKept_) {
            file_.undoTo(savepoint_);
        }
        file_.releaseSavepoint(savepoint_);
    }
    Q_DISABLE_COPY_MOVE(Step)

    void keep() { isKept_ = true; }

  private:
    PageFile& file_;
    int savepoint_;
    bool isKept_ = false;
};

}  // namespace varo::access
