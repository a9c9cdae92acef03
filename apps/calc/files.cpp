#include "calc/files.h"

#include "calc/complaint.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace varo::calc {
namespace {

constexpr int kPatience = 1000;  // milliseconds

/// Does not wait until somebody opens the other end of a named pipe.
int openInput(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor >= 0) {
        fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    }
    return descriptor;
}

}  // namespace

InputFile::InputFile(const std::string& path)
    : name_(path == "-" ? "标准输入" : path),
      descriptor_(path == "-" ? STDIN_FILENO : openInput(path)) {
    if (descriptor_ < 0) {
        throw CalcError("无法打开“" + name_ + "”：" + reasonOf(errno) + "！");
    }
}

InputFile::~InputFile() {
    if (descriptor_ != STDIN_FILENO) {
        close(descriptor_);
    }
}

std::optional<std::uint64_t> InputFile::size() const {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(status.st_size);
}

/// A named pipe that nobody has opened for writing reads as ended, but is not ready.
void InputFile::awaitFirstBytes() {
    pollfd input{descriptor_, POLLIN, 0};
    if (poll(&input, 1, kPatience) == 0) {
        complain("正在等待“" + name_ + "”的内容……");
        while (poll(&input, 1, -1) < 0 && errno == EINTR) {
        }
    }
}

std::size_t InputFile::read(std::span<char> buffer) {
    if (!std::exchange(hasBegun_, true) && !size()) {
        awaitFirstBytes();
    }
    for (;;) {
        const ssize_t count = ::read(descriptor_, buffer.data(), buffer.size());
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) {
            throw CalcError("无法读取“" + name_ + "”：" + reasonOf(errno) + "！");
        }
    }
}

void writeOutput(std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(STDOUT_FILENO, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            throw CalcError("无法写出结果：" + reasonOf(errno) + "！");
        }
    }
}

}  // namespace varo::calc
