#include "library/bounded_call.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace varo {

namespace {

/// Writes the result of `work` and ends the process, without what is done at an exit: all that
/// belongs to the process that this one was copied from.
[[noreturn]] void runAsChild(int seconds, const std::function<QByteArray()>& work, int output) {
    const auto limit = static_cast<rlim_t>(seconds);
    const rlimit processorTime{limit, limit};
    if (setrlimit(RLIMIT_CPU, &processorTime) != 0) {
        _exit(EXIT_FAILURE);
    }
    const QByteArray result = work();
    for (qsizetype written = 0; written < result.size();) {
        const auto rest = static_cast<std::size_t>(result.size() - written);
        const ssize_t count = write(output, result.constData() + written, rest);
        if (count < 0 && errno != EINTR) {
            _exit(EXIT_FAILURE);
        }
        written += std::max<ssize_t>(count, 0);
    }
    _exit(EXIT_SUCCESS);
}

QByteArray readToEnd(int input) {
    QByteArray bytes;
    std::array<char, 65536> piece;
    ssize_t count = 0;
    while ((count = read(input, piece.data(), piece.size())) != 0) {
        if (count > 0) {
            bytes.append(piece.data(), count);
        } else if (errno != EINTR) {
            break;
        }
    }
    return bytes;
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
        result = readToEnd(pipeEnds[0]);
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

}  // namespace varo
