#include "platform/data/access/access_field.h"

#include "platform/data/access/long_value.h"
#include "platform/data/access/reading.h"
#include "platform/data/identifiers.h"
#include "platform/data/statement.h"

#include <cstring>

namespace varo::access {

namespace {

using data::Error;

/// The field of the row at `place`; nothing when it is NULL. Throws Error when the row is gone.
std::optional<Bytes> fieldAt(PageFile& file, const TableDefinition& table, const Column& column,
                             RowPlace place, Page& page) {
    const auto found = findRow(file, place);
    if (!found) {
        throw Error(QStringLiteral("the row of the field has been removed"));
    }
    page = found->page;
    return Row(file.layout(), table, found->page, found->bytes).field(column);
}

}  // namespace

AccessField::AccessField(AccessFile& file, SeenTable& table, std::size_t column, qint32 id)
    : HandleUser(file), table_(table), column_(column) {
    const FieldType type = table.definition.columns.at(column).type;
    if (type != FieldType::Memo && type != FieldType::Ole) {
        throw Error(QStringLiteral("%1.%2 has no long values")
                        .arg(table.entry.name, table.definition.columns[column].name));
    }
    const auto row = data::prepare(
        file.handle(),
        QStringLiteral("Select rowid From %1 Where ID = ?").arg(data::quoted(table.entry.name)),
        {id});
    if (!data::step(row.get())) {
        throw Error(QStringLiteral("%1 has no row %2").arg(table.entry.name).arg(id));
    }
    place_ = rowPlace(sqlite3_column_int64(row.get(), 0));
}

AccessFile& AccessField::opened() const {
    if (file() == nullptr) {
        throw Error(QStringLiteral("the file of the field is closed"));
    }
    return static_cast<AccessFile&>(*file());
}

void AccessField::release() noexcept {
    value_.reset();
    writer_.reset();
}

void AccessField::releaseUndone() noexcept {
    release();
}

qint64 AccessField::size() {
    PageFile& pages = opened().pages();
    const Reading reading(pages);
    Page page;
    const auto field =
        fieldAt(pages, table_.definition, table_.definition.columns[column_], place_, page);
    return field && !field->isEmpty() ? longValueSize(*field) : 0;
}

void AccessField::read(qint64 offset, std::span<char> chunk) {
    PageFile& pages = opened().pages();
    if (!value_) {
        const Reading reading(pages);
        Page page;
        const auto field =
            fieldAt(pages, table_.definition, table_.definition.columns[column_], place_, page);
        value_ = field && !field->isEmpty() ? longValue(pages, *field) : QByteArray();
    }
    const auto length = static_cast<qsizetype>(chunk.size());
    if (offset < 0 || offset > value_->size() || length > value_->size() - offset) {
        throw Error(QStringLiteral("the field holds fewer bytes"));
    }
    std::memcpy(chunk.data(), value_->constData() + offset, chunk.size());
}

void AccessField::replace(qint64 total) {
    PageFile& pages = opened().pages();
    value_.reset();
    writer_.reset();
    const TableDefinition& table = table_.definition;
    writer_ = std::make_unique<LongValueWriter>(
        pages, table.longValuePagesOf(table.columns[column_]), total);
    total_ = total;
    written_ = 0;
    if (total == 0) {
        finish();
    }
}

void AccessField::write(qint64 offset, std::span<const char> chunk) {
    const ChangingRows changing = opened().changing();
    if (writer_ == nullptr || offset != written_) {
        throw Error(QStringLiteral("the bytes of a field are to be written in order"));
    }
    writer_->append(Bytes(QByteArray::fromRawData(chunk.data(), std::ssize(chunk))));
    written_ += std::ssize(chunk);
    if (written_ == total_) {
        finish();
    }
}

/// Gives the row its new field, and frees the former one's pages.
void AccessField::finish() {
    opened().setField(table_, column_, place_, writer_->finish());
    writer_.reset();
}

}  // namespace varo::access
