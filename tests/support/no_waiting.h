#pragma once

#include "platform/data/access/file_layer.h"

#include <sqlite3.h>

namespace varo::test {

/// Connections that are opened while it lives, and must not outlive it, ask for a locked file as
/// often as ever, but do not let time pass in between.
class NoWaiting {
  public:
    NoWaiting() {
        waits = 0;
        files_.zName = "no waiting";
        files_.xSleep = [](sqlite3_vfs*, int microseconds) {
            ++waits;
            return microseconds;
        };
        sqlite3_vfs_register(&files_, 1);
        access::FileLayer::setCurrent(&accessFiles_);
    }
    ~NoWaiting() {
        access::FileLayer::setCurrent(nullptr);
        sqlite3_vfs_unregister(&files_);
    }
    Q_DISABLE_COPY_MOVE(NoWaiting)

    /// How often a connection would have waited since the last one was made.
    static inline int waits = 0;

  private:
    struct AccessFiles : access::FileLayer {
        void sleep(int) override { ++waits; }
    };

    AccessFiles accessFiles_;
    sqlite3_vfs files_ = *sqlite3_vfs_find(nullptr);
};

}  // namespace varo::test
