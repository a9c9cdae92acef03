#include "calc/progress.h"

#include <algorithm>
#include <iostream>
#include <string>
#include <unistd.h>

namespace varo::calc {
namespace {

using namespace std::chrono_literals;

constexpr auto kDelay = 500ms;
constexpr auto kInterval = 200ms;
constexpr std::uint64_t kMegabyte = 1'000'000;

}  // namespace

Progress::Progress(std::optional<std::uint64_t> size)
    : size_(size),
      enabled_(isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0),
      nextTime_(Clock::now() + kDelay) {}

Progress::~Progress() {
    clear();
}

void Progress::update(std::uint64_t rows, std::uint64_t bytes) {
    if (!enabled_ || Clock::now() < nextTime_) {
        return;
    }
    nextTime_ = Clock::now() + kInterval;
    std::string line = "\r已计算" + std::to_string(rows) + "行，";
    if (size_ && *size_ > 0) {
        line += std::to_string(std::min<std::uint64_t>(100, bytes * 100 / *size_)) + "%";
    } else {
        line += "已读" + std::to_string(bytes / kMegabyte) + " MB";
    }
    std::cerr << line << std::flush;
    shown_ = true;
}

void Progress::clear() {
    if (shown_) {
        std::cerr << "\r\x1B[K" << std::flush;
        shown_ = false;
    }
}

}  // namespace varo::calc
