#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace varo::calc {

/// A line on the terminal that tells how far a long calculation is. It appears when the work has
/// lasted for half a second, and never if the standard error is no terminal or the results go to
/// one.
class Progress {
  public:
    /// `size` is the number of bytes to read, if it is known.
    explicit Progress(std::optional<std::uint64_t> size);

    /// Takes the line away.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Tells how much has been done; call it as often as you like.
    void update(std::uint64_t rows, std::uint64_t bytes);

    /// Takes the line away until the next update, so that something else can be written.
    void clear();

  private:
    using Clock = std::chrono::steady_clock;

    std::optional<std::uint64_t> size_;
    bool enabled_;
    bool shown_ = false;
    Clock::time_point nextTime_;
};

}  // namespace varo::calc
