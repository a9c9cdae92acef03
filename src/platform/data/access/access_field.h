#pragma once

#include "platform/data/access/access_file.h"
#include "platform/data/access/long_value_writer.h"

namespace varo::access {

/// The value of a memo or OLE column in one row. It is replaced with the last of the bytes that
/// write() takes, which must come in order.
class AccessField final : public data::LongBinary, private data::HandleUser {
  public:
    /// `table` is one of the file's. Throws data::Error when it has no row with this `id`.
    AccessField(AccessFile& file, SeenTable& table, std::size_t column, qint32 id);

    qint64 size() override;
    void read(qint64 offset, std::span<char> chunk) override;
    void replace(qint64 total) override;
    void write(qint64 offset, std::span<const char> chunk) override;

  private:
    void release() noexcept override;
    void releaseUndone() noexcept override;
    AccessFile& opened() const;
    void finish();

    SeenTable& table_;
    std::size_t column_;
    RowPlace place_;
    std::optional<QByteArray> value_;          ///< what was read
    std::unique_ptr<LongValueWriter> writer_;  ///< while it is being replaced
    qint64 total_ = 0;
    qint64 written_ = 0;
};

}  // namespace varo::access
