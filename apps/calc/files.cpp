#include "calc/files.h"

#include "calc/complaint.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varo::calc {

InputFile::InputFile(const std::string& path)
    : name_(path == "-" ? "标准输入" : path),
      descriptor_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
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

std::size_t InputFile::read(std::span<char> buffer) {
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
