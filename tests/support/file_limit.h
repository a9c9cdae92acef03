#pragma once

#include <QtGlobal>

#include <csignal>
#include <stdexcept>
#include <sys/resource.h>

namespace varo::test {

/// While it lives, nothing is written behind the first `bytes` bytes of any file: this process
/// works as on a full disk.
class FileLimit {
  public:
    explicit FileLimit(qint64 bytes) : signal_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{static_cast<rlim_t>(bytes), before_.rlim_max};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
            throw std::runtime_error("the size of files cannot be limited");
        }
    }
    ~FileLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, signal_);
    }
    Q_DISABLE_COPY_MOVE(FileLimit)

  private:
    rlimit before_{};
    void (*signal_)(int);
};

}  // namespace varo::test
