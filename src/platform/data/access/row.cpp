#include "platform/data/access/row.h"

namespace varo::access {

namespace {

/// A row refers to another place when it moved, which does not refer to a third one for long.
constexpr int kMostMoves = 16;

std::optional<FoundRow> findRow(PageFile& file, Page page, int row) {
    const Layout& layout = file.layout();
    RowEntry entry = rowEntry(layout, Bytes(*page), row);
    if (entry.isDeleted) {
        return std::nullopt;
    }
    for (int moves = 0; entry.hasMoved; ++moves) {
        if (moves == kMostMoves) {
            throwDamaged("a row refers to others without end");
        }
        const Bytes reference = Bytes(*page).part(entry.begin, entry.end - entry.begin);
        const RowPlace place = RowPlace::read(reference, 0);
        page = file.page(place.page, PageKind::Data);
        entry = rowEntry(layout, Bytes(*page), place.row);
    }
    const Bytes bytes = Bytes(*page).part(entry.begin, entry.end - entry.begin);
    return FoundRow{std::move(page), bytes};
}

}  // namespace

int fixedSize(const Column& column) {
    switch (column.type) {
        case FieldType::Byte:
            return 1;
        case FieldType::Integer:
            return 2;
        case FieldType::Long:
        case FieldType::Single:
        case FieldType::Complex:
            return 4;
        case FieldType::Money:
        case FieldType::Double:
        case FieldType::Date:
        case FieldType::BigInteger:
            return 8;
        case FieldType::Guid:
            return 16;
        case FieldType::Decimal:
            return 17;
        case FieldType::ExtendedDate:
            return 42;
        default:
            return column.size;
    }
}

Row::Row(const Layout& layout, const TableDefinition& table, Page page, const Bytes& bytes)
    : layout_(layout), page_(std::move(page)), bytes_(bytes) {
    const auto size = static_cast<int>(bytes.size());
    columns_ = layout.hasWideNumbers ? bytes.u16(0) : bytes.byte(0);
    int end = size - (columns_ + 7) / 8;
    marks_ = bytes.from(end);
    if (table.variableColumns == 0) {
        return;
    }
    if (layout.hasWideNumbers) {
        variables_ = bytes.u16(end - 2);
        offsets_ = end - 4;
        return;
    }
    variables_ = bytes.byte(end - 1);
    // A row over 256 bytes has a list of the fields at which the places pass a multiple of that;
    // the last one of the list may be a filler.
    jumpCount_ = (size - 1) / 256;
    jumps_ = end - 2;
    offsets_ = end - 2 - jumpCount_;
    if ((offsets_ - variables_) / 256 < jumpCount_) {
        --jumpCount_;
    }
}

bool Row::isMarked(int number) const {
    return number < columns_ && (marks_.byte(number / 8) >> (number % 8) & 1) != 0;
}

bool Row::isYes(const Column& column) const {
    return isMarked(column.number);
}

int Row::variableOffset(int variable) const {
    if (layout_.hasWideNumbers) {
        return bytes_.u16(offsets_ - variable * 2);
    }
    int jumps = 0;
    while (jumps < jumpCount_ && bytes_.byte(jumps_ - jumps) <= variable) {
        ++jumps;
    }
    return bytes_.byte(offsets_ - variable) + jumps * 256;
}

std::optional<Bytes> Row::field(const Column& column) const {
    if (!isMarked(column.number)) {
        return std::nullopt;
    }
    if (column.isFixed) {
        const int header = layout_.hasWideNumbers ? 2 : 1;
        return bytes_.part(header + column.fixed, fixedSize(column));
    }
    if (column.variable >= variables_) {
        return std::nullopt;
    }
    const int begin = variableOffset(column.variable);
    return bytes_.part(begin, variableOffset(column.variable + 1) - begin);
}

std::optional<FoundRow> findRow(PageFile& file, RowPlace place) {
    return findRow(file, file.page(place.page, PageKind::Data), place.row);
}

RowScan::RowScan(PageFile& file, const TableDefinition& table)
    : file_(file), owner_(table.page), pages_(markedPages(file, table.ownedPages)) {}

std::optional<FoundRow> RowScan::next() {
    for (;;) {
        while (nextRow_ < rows_) {
            place_.row = nextRow_++;
            if (auto found = findRow(file_, page_, place_.row)) {
                return found;
            }
        }
        if (nextPage_ == pages_.size()) {
            return std::nullopt;
        }
        place_.page = pages_[nextPage_++];
        page_ = file_.page(place_.page);
        // The map marks the pages that the table has, also those not used any more.
        const Bytes bytes(*page_);
        const bool isOfTable =
            static_cast<PageKind>(bytes.byte(0)) == PageKind::Data && ownerOf(bytes) == owner_;
        rows_ = isOfTable ? rowCount(file_.layout(), bytes) : 0;
        nextRow_ = 0;
    }
}

}  // namespace varo::access
