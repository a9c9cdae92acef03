#include "library/bounded_call.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace varo {

namespace {

using Clock = std::chrono::steady_clock;

/// The time that a call may take for each second of processor time: the processor is shared.
constexpr int kWallSeconds = 3;
/// Address space of the process, with its libraries and fonts.
constexpr rlim_t kMostMemory = rlim_t{4} << 30;

bool setLimit(int resource, rlim_t most) {
    const rlimit limit{most, most};
    return setrlimit(static_cast<__rlimit_resource_t>(resource), &limit) == 0;
}

bool writeAll(int output, const QByteArray& bytes) {
    for (qsizetype written = 0; written < bytes.size();) {
        const auto rest = static_cast<std::size_t>(bytes.size() - written);
        const ssize_t count = write(output, bytes.constData() + written, rest);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        written += std::max<ssize_t>(count, 0);
    }
    return true;
}

/// Writes the result of `work` and ends the process, without what is done at an exit: all that
/// belongs to the process that this one was copied from, as do the handlers of an exception.
[[noreturn]] void runAsChild(int seconds, const std::function<QByteArray()>& work, int output) {
    const bool isBounded = setLimit(RLIMIT_CPU, static_cast<rlim_t>(seconds)) &&
                           setLimit(RLIMIT_CORE, 0) &&
                           (!kMemoryIsBounded || setLimit(RLIMIT_AS, kMostMemory));
    try {
        _exit(isBounded && writeAll(output, work()) ? EXIT_SUCCESS : EXIT_FAILURE);
    } catch (...) {
        _exit(EXIT_FAILURE);
    }
}

/// What comes before the end; nothing when that is not reached until `deadline`.
std::optional<QByteArray> readToEnd(int input, Clock::time_point deadline) {
    QByteArray bytes;
    std::array<char, 65536> piece;
    for (;;) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd ready{input, POLLIN, 0};
        const int events = left <= 0 ? 0 : poll(&ready, 1, static_cast<int>(left));
        if (events == 0) {
            return std::nullopt;
        }
        const ssize_t count = events < 0 ? -1 : read(input, piece.data(), piece.size());
        if (count == 0) {
            return bytes;
        }
        if (count > 0) {
            bytes.append(piece.data(), count);
        } else if (errno != EINTR) {
            return std::nullopt;
        }
    }
}

}  // namespace

std::optional<QByteArray> boundedCall(int seconds, const std::function<QByteArray()>& work) {
    std::array<int, 2> pipeEnds;
    if (pipe(pipeEnds.data()) != 0) {
        return std::nullopt;
    }
    const pid_t child = fork();
    if (child == 0) {
        close(pipeEnds[0]);
        runAsChild(seconds, work, pipeEnds[1]);
    }
    close(pipeEnds[1]);
    std::optional<QByteArray> result;
    if (child > 0) {
        result =
            readToEnd(pipeEnds[0], Clock::now() + std::chrono::seconds(kWallSeconds * seconds));
        if (!result) {
            kill(child, SIGKILL);
        }
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        if (!WIFEXITED(status) || WEXITSTATUS(status) != EXIT_SUCCESS) {
            result.reset();
        }
    }
    close(pipeEnds[0]);
    return result;
}

void openNoMoreFiles() {
    if (!setLimit(RLIMIT_NOFILE, 0)) {
        _exit(EXIT_FAILURE);
    }
}

}  // namespace varo
