#pragma once

#include "platform/data/error.h"

#include <QtGlobal>

#include <memory>
#include <span>

namespace varo::data {

/// A long-binary field of one row, read or replaced in chunks without holding it in memory.
class BlobField {
  public:
    BlobField(BlobField&&) noexcept = default;
    BlobField& operator=(BlobField&&) noexcept = default;
    ~BlobField() = default;

    /// Bytes stored in the field; 0 when it is empty.
    qint64 size() const;

    /// Reads the next chunk.size() bytes, from the start of the field on the first call. Throws
    /// Error when the field holds fewer bytes.
    void getChunk(std::span<char> chunk);

    /// Empties the field and makes room for exactly `total` bytes, which appendChunk() then writes.
    /// Throws Error when `total` is negative or more than a field can hold. Call it inside a
    /// Transaction: until the last byte has arrived the field is incomplete and the outermost
    /// transaction does not commit, even when this has been destroyed.
    void replace(qint64 total);

    /// Writes the next bytes. Throws Error when they exceed the total given to replace(), or the
    /// replacement has been undone with its transaction.
    void appendChunk(std::span<const char> chunk);

  private:
    friend class Connection;
    BlobField(std::shared_ptr<class LongBinary> value,
              std::shared_ptr<struct Replacements> replacements);

    std::shared_ptr<class LongBinary> value_;
    std::shared_ptr<struct Replacements> replacements_;
    quint64 replacement_ = 0;
    qint64 total_ = 0;
    qint64 written_ = 0;
    qint64 read_ = 0;
};

}  // namespace varo::data
