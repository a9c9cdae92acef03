#include "platform/data/access/rc4.h"

#include <array>
#include <numeric>
#include <utility>

namespace varo::access {

void applyRc4(std::span<const quint8> key, std::span<char> bytes) {
    std::array<quint8, 256> state;
    std::iota(state.begin(), state.end(), quint8{0});
    quint8 j = 0;
    for (std::size_t i = 0; i < state.size(); ++i) {
        j = static_cast<quint8>(j + state[i] + key[i % key.size()]);
        std::swap(state[i], state[j]);
    }
    quint8 i = 0;
    j = 0;
    for (char& byte : bytes) {
        j = static_cast<quint8>(j + state[++i]);
        std::swap(state[i], state[j]);
        byte = static_cast<char>(static_cast<quint8>(byte) ^ state[(state[i] + state[j]) & 0xFF]);
    }
}

}  // namespace varo::access
