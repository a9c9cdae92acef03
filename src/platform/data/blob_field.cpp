#include "platform/data/blob_field.h"

#include "platform/data/driver.h"
#include "platform/data/replacements.h"

namespace varo::data {

BlobField::BlobField(std::shared_ptr<LongBinary> value, std::shared_ptr<Replacements> replacements)
    : value_(std::move(value)), replacements_(std::move(replacements)) {}

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
    if (total < 0) {
        throw Error(QStringLiteral("a field cannot hold %1 bytes").arg(total));
    }
    value_->replace(total);
    replacements_->incomplete.erase(replacement_);
    replacement_ = ++replacements_->last;
    if (total > 0) {
        replacements_->incomplete.insert(replacement_);
    }
    total_ = total;
    written_ = 0;
    read_ = 0;
}

void BlobField::appendChunk(std::span<const char> chunk) {
    const auto length = static_cast<qint64>(chunk.size());
    if (length > total_ - written_) {
        throw Error(QStringLiteral("more bytes than the field was given room for"));
    }
    if (length == 0) {
        return;
    }
    if (!replacements_->incomplete.contains(replacement_)) {
        throw Error(QStringLiteral("the replacement of the field has been undone"));
    }
    value_->write(written_, chunk);
    written_ += length;
    if (written_ == total_) {
        replacements_->incomplete.erase(replacement_);
    }
}

}  // namespace varo::data
