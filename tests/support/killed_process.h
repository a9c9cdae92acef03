#pragma once

#include <functional>
#include <optional>

namespace varo::test {

/// Runs `work` in a copy of this process, and kills that in front of its call number `n`, from 1,
/// which changes a file or a folder. Returns whether it was killed, not having come to its end
/// before; nothing where a process cannot be watched so.
std::optional<bool> killedBeforeChange(int n, const std::function<void()>& work);

}  // namespace varo::test
