#include "platform/data/blob_field.h"

#include "platform/data/driver.h"

namespace varo::data {

BlobField::BlobField(std::shared_ptr<LongBinary> value) : value_(std::move(value)) {}

qint64 BlobField::size() const {
    return value_->size();
}

void BlobField::getChunk(std::span<char> chunk) {
    const auto length = static_cast<qint64>(chunk.size());
    if (length > value_->size() - read_) {
        throw Error(QStringLiteral("the field holds fewer bytes"));
    }
    if (length > 0) {
        value_->read(read_, chunk);
        read_ += length;
    }
}

void BlobField::replace(qint64 total) {
    value_->replace(total);
    total_ = total;
    written_ = 0;
    read_ = 0;
}

void BlobField::appendChunk(std::span<const char> chunk) {
    const auto length = static_cast<qint64>(chunk.size());
    if (length > total_ - written_) {
        throw Error(QStringLiteral("more bytes than the field was given room for"));
    }
    if (length > 0) {
        value_->write(written_, chunk);
        written_ += length;
    }
}

}  // namespace varo::data
