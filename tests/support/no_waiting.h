#pragma once

#include <QtGlobal>

#include <sqlite3.h>

namespace varo::test {

/// Connections that are opened while it lives, and must not outlive it, ask for a locked file as
/// often as ever, but do not let time pass in between.
class NoWaiting {
  public:
    NoWaiting() {
        files_.zName = "no waiting";
        sleeps = 0;
        files_.xSleep = [](sqlite3_vfs*, int microseconds) {
            ++sleeps;
            return microseconds;
        };
        sqlite3_vfs_register(&files_, 1);
    }
    ~NoWaiting() { sqlite3_vfs_unregister(&files_); }
    Q_DISABLE_COPY_MOVE(NoWaiting)

    static inline int sleeps = 0;  ///< that time should have passed

  private:
    sqlite3_vfs files_ = *sqlite3_vfs_find(nullptr);
};

}  // namespace varo::test
