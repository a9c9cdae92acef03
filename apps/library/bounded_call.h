#pragma once

#include <QByteArray>

#include <functional>
#include <optional>

namespace varo {

/// What `work` returns. It runs in a process of its own, a copy of this one, which is ended when it
/// takes more than `seconds` of processor time; there is no result then, nor when it crashes. This
/// process must have one thread only.
std::optional<QByteArray> boundedCall(int seconds, const std::function<QByteArray()>& work);

}  // namespace varo
