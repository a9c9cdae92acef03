#include "support/killed_process.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

namespace varo::test {

#ifdef __x86_64__

namespace {

constexpr std::array<unsigned long long, 11> kChanges{
    SYS_write,  SYS_pwrite64, SYS_ftruncate, SYS_rename, SYS_renameat, SYS_renameat2,
    SYS_unlink, SYS_unlinkat, SYS_link,      SYS_linkat, SYS_fsync};

[[noreturn]] void beWatched(const std::function<void()>& work) {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
        _exit(EXIT_FAILURE);
    }
    raise(SIGSTOP);
    work();
    _exit(EXIT_SUCCESS);
}

}  // namespace

std::optional<bool> killedBeforeChange(int n, const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        beWatched(work);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) {
        return std::nullopt;
    }
    ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    constexpr int kAtCall = SIGTRAP | 0x80;
    bool isEntry = true;
    bool isKilled = false;
    while (!isKilled && ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) == 0 &&
           waitpid(child, &status, 0) == child && WIFSTOPPED(status)) {
        user_regs_struct registers{};
        if (WSTOPSIG(status) != kAtCall ||
            ptrace(PTRACE_GETREGS, child, nullptr, &registers) != 0) {
            continue;
        }
        if (isEntry && std::ranges::find(kChanges, registers.orig_rax) != kChanges.end() &&
            --n == 0) {
            isKilled = true;
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
        }
        isEntry = !isEntry;
    }
    return isKilled;
}

#else

std::optional<bool> killedBeforeChange(int, const std::function<void()>&) {
    return std::nullopt;
}

#endif

}  // namespace varo::test
