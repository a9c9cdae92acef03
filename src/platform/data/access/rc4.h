#pragma once

#include <QtGlobal>

#include <span>

namespace varo::access {

/// Encodes the bytes with the cipher RC4, or decodes them: the keystream of the key is laid over
/// them from its beginning.
void applyRc4(std::span<const quint8> key, std::span<char> bytes);

}  // namespace varo::access
