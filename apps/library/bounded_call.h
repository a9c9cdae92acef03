#pragma once

#include <QByteArray>

#include <functional>
#include <optional>

namespace varo {

#ifndef __has_feature
#define __has_feature(feature) 0
#endif

/// Whether a bounded call can be held to bounded memory and to the files that it has open: the
/// sanitizers reserve any amount, and open pipes.
#if defined(__SANITIZE_ADDRESS__) || __has_feature(address_sanitizer)
inline constexpr bool kMemoryIsBounded = false;
#else
inline constexpr bool kMemoryIsBounded = true;
#endif

/// What `work` returns. It runs in a process of its own, a copy of this one, which is ended when it
/// takes more than `seconds` of processor time or three times as long in all; there is no result
/// then, nor when it throws, crashes or asks for more than 4 GiB. This process must have one thread
/// only.
std::optional<QByteArray> boundedCall(int seconds, const std::function<QByteArray()>& work);

/// Within the work of a bounded call: from here on nothing can be opened by the process. What is
/// open stays so.
void openNoMoreFiles();

}  // namespace varo
