#pragma once

#include <QtEndian>

#include <bit>

namespace varo::access {

/// A sum of 64 bits by which bytes that were not written whole, or by another program, are told.
/// It does not resist forgery.
class Checksum {
  public:
    /// Adds `size` bytes, a multiple of 8.
    void add(const char* bytes, qsizetype size) noexcept {
        for (qsizetype at = 0; at < size; at += 8) {
            sum_ ^= qFromLittleEndian<quint64>(bytes + at) * 0x9E37'79B9'7F4A'7C15;
            sum_ = std::rotl(sum_, 31) * 0xD6E8'FEB8'6659'FD93;
        }
    }

    quint64 value() const noexcept {
        const quint64 mixed = (sum_ ^ (sum_ >> 32)) * 0xD6E8'FEB8'6659'FD93;
        return mixed ^ (mixed >> 32);
    }

  private:
    quint64 sum_ = 0x2545'F491'4F6C'DD1D;
};

}  // namespace varo::access
