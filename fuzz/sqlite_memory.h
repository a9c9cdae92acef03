#pragma once

#include "promise.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <sqlite3.h>

namespace varo::fuzz {

/// Gives SQLite memory in pieces that are used again, by their size. The sanitizer's bookkeeping
/// for each of them takes half of all time, and finds little: SQLite's code is not instrumented.
class SqliteMemory {
  public:
    /// To be called before SQLite is used.
    static void install() {
        static sqlite3_mem_methods methods = {
            take,         giveBack,
            enlarge,      [](void* piece) { return static_cast<int>(sizeOf(piece)); },
            roundUp,      [](void*) { return SQLITE_OK; },
            [](void*) {}, nullptr};
        require(sqlite3_config(SQLITE_CONFIG_MALLOC, &methods) == SQLITE_OK,
                "SQLite takes its memory from here");
    }

  private:
    static constexpr std::size_t kHead = 16;  // in front of a piece: its size
    static constexpr std::size_t kSmallest = 16;
    static constexpr std::size_t kLargest = 1 << 16;  // what is larger comes from the system
    static constexpr std::size_t kBlock = 1 << 20;

    static inline std::array<void*, 32> free_{};  // by the power of two
    static inline char* block_ = nullptr;
    static inline std::size_t left_ = 0;

    static std::size_t sizeOf(void* piece) {
        std::size_t size = 0;
        std::memcpy(&size, static_cast<char*>(piece) - kHead, sizeof(size));
        return size;
    }

    static int roundUp(int size) {
        const auto wanted = std::max(static_cast<std::size_t>(size), kSmallest);
        return static_cast<int>(wanted > kLargest ? (wanted + 7) / 8 * 8 : std::bit_ceil(wanted));
    }

    static void* take(int wanted) {
        const auto size = static_cast<std::size_t>(roundUp(wanted));
        void*& free = free_[static_cast<std::size_t>(std::countr_zero(size)) % free_.size()];
        if (size <= kLargest && free != nullptr) {
            void* const piece = free;
            std::memcpy(&free, piece, sizeof(free));
            return piece;
        }
        char* memory = nullptr;
        if (size > kLargest) {
            memory = static_cast<char*>(std::malloc(kHead + size));
            if (memory == nullptr) {
                return nullptr;
            }
        } else {
            if (left_ < kHead + size) {
                block_ = static_cast<char*>(std::malloc(kBlock));
                left_ = kBlock;
            }
            memory = block_;
            block_ += kHead + size;
            left_ -= kHead + size;
        }
        std::memcpy(memory, &size, sizeof(size));
        return memory + kHead;
    }

    static void giveBack(void* piece) {
        const std::size_t size = sizeOf(piece);
        if (size > kLargest) {
            std::free(static_cast<char*>(piece) - kHead);
            return;
        }
        void*& free = free_[static_cast<std::size_t>(std::countr_zero(size))];
        std::memcpy(piece, &free, sizeof(free));
        free = piece;
    }

    static void* enlarge(void* piece, int wanted) {
        const std::size_t size = sizeOf(piece);
        if (static_cast<std::size_t>(wanted) <= size) {
            return piece;
        }
        void* const larger = take(wanted);
        if (larger != nullptr) {
            std::memcpy(larger, piece, size);
            giveBack(piece);
        }
        return larger;
    }
};

}  // namespace varo::fuzz
