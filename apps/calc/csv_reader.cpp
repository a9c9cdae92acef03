#include "calc/csv_reader.h"

#include "calc/complaint.h"

#include <algorithm>
#include <csv.h>
#include <new>
#include <utility>

namespace varo::calc {
namespace {

constexpr std::size_t kChunk = std::size_t{1} << 17;
constexpr std::size_t kCellGrowth = std::size_t{1} << 16;
constexpr std::size_t kLongestRow = std::size_t{1} << 24;
constexpr std::size_t kLongestCell = std::size_t{1} << 20;
constexpr std::size_t kMostCells = 16384;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

bool CsvRows::hasContentFrom(std::size_t row, std::size_t column) const {
    const Row& found = rows_[row];
    return column < found.cellCount &&
           ends_[found.firstCell + column] != ends_[found.firstCell + found.cellCount];
}

void CsvReader::ParserDeleter::operator()(csv_parser* parser) const {
    csv_free(parser);
    delete parser;
}

CsvReader::CsvReader(InputFile& file) : file_(file), parser_(new csv_parser), buffer_(kChunk) {
    csv_init(parser_.get(), 0);
    csv_set_opts(parser_.get(), CSV_REPALL_NL);  // empty lines count as lines
    csv_set_blk_size(parser_.get(), kCellGrowth);
}

CsvReader::~CsvReader() = default;

bool CsvReader::next() {
    forgetRows();
    if (failure_) {
        std::rethrow_exception(failure_);
    }
    while (rows_.size() == 0 && !finished_) {
        const std::string_view chunk = readChunk();
        if (chunk.empty()) {
            finish();
        } else {
            parse(chunk);
        }
    }
    return rows_.size() != 0;
}

std::string_view CsvReader::readChunk() {
    const bool first = bytesRead_ == 0;
    std::size_t size = file_.read(buffer_);
    // A pipe may hand over even the byte-order mark in pieces.
    while (first && size > 0 && size <= kByteOrderMark.size()) {
        const std::size_t more = file_.read(std::span(buffer_).subspan(size));
        if (more == 0) {
            break;
        }
        size += more;
    }
    bytesRead_ += size;
    std::string_view chunk(buffer_.data(), size);
    if (first && chunk.starts_with(kByteOrderMark)) {
        hasByteOrderMark_ = true;
        chunk.remove_prefix(kByteOrderMark.size());
    }
    return chunk;
}

void CsvReader::parse(std::string_view chunk) {
    openRowBytes_ += chunk.size();
    const std::size_t parsed =
        csv_parse(parser_.get(), chunk.data(), chunk.size(), takeCell, takeRowEnd, this);
    if (failure_) {
        throwBehindRows();
        return;
    }
    if (parsed != chunk.size()) {
        throw std::bad_alloc();
    }
    if (openRowBytes_ > kLongestRow) {
        refuseOpenRow("这一行超过16 MiB，可能缺少引号！");
    }
}

void CsvReader::finish() {
    finished_ = true;
    // Only a strict parser tells that the file ends inside quotes.
    csv_set_opts(parser_.get(), CSV_STRICT | CSV_STRICT_FINI);
    const int result = csv_fini(parser_.get(), takeCell, takeRowEnd, this);
    if (failure_) {
        throwBehindRows();
        return;
    }
    if (result != 0) {
        refuseOpenRow("单元格缺少后面的引号！");
    }
}

/// The rows before the failure are handed out first.
void CsvReader::throwBehindRows() const {
    if (rows_.size() == 0) {
        std::rethrow_exception(failure_);
    }
}

/// Keeps the cells of the row that has not ended.
void CsvReader::forgetRows() {
    const std::size_t firstKept = rows_.ends_.size() - 1 - openRowCells_;
    const std::size_t begin = rows_.ends_[firstKept];
    rows_.bytes_.erase(0, begin);
    rows_.ends_.erase(rows_.ends_.begin(),
                      rows_.ends_.begin() + static_cast<std::ptrdiff_t>(firstKept));
    for (std::size_t& end : rows_.ends_) {
        end -= begin;
    }
    rows_.rows_.clear();
}

void CsvReader::takeCell(void* content, std::size_t size, void* reader) {
    auto* const self = static_cast<CsvReader*>(reader);
    if (self->failure_) {
        return;
    }
    try {
        self->addCell({static_cast<const char*>(content), size});
    } catch (...) {
        self->failure_ = std::current_exception();
    }
}

void CsvReader::takeRowEnd(int terminator, void* reader) {
    auto* const self = static_cast<CsvReader*>(reader);
    if (self->failure_) {
        return;
    }
    try {
        self->endRow(terminator);
    } catch (...) {
        self->failure_ = std::current_exception();
    }
}

void CsvReader::addCell(std::string_view content) {
    if (openRowCells_ == 0) {
        openRowLine_ = line_;
    }
    ++openRowCells_;
    if (content.size() > kLongestCell) {
        refuseOpenRow("有一个单元格超过1 MiB，可能缺少引号！");
    }
    if (openRowCells_ > kMostCells) {
        refuseOpenRow("这一行的单元格超过16384个！");
    }
    rows_.bytes_.append(content);
    rows_.ends_.push_back(rows_.bytes_.size());
    line_ += static_cast<std::uint64_t>(std::count(content.begin(), content.end(), '\n'));
    afterCarriageReturn_ = false;
}

/// `terminator` is the character that ended the row, or an empty line; -1 at the end of the file.
void CsvReader::endRow(int terminator) {
    const bool restOfLineEnd = terminator == '\n' && afterCarriageReturn_;
    line_ += restOfLineEnd ? 0 : 1;
    afterCarriageReturn_ = terminator == '\r';
    openRowBytes_ = 0;
    if (openRowCells_ == 0) {
        return;
    }
    if (!hasHeader_) {
        hasHeader_ = true;
        hasCarriageReturns_ = terminator == '\r';
    }
    rows_.rows_.push_back(
        {rows_.ends_.size() - 1 - openRowCells_, std::exchange(openRowCells_, 0), openRowLine_});
}

void CsvReader::refuseOpenRow(const char* reason) const {
    const std::uint64_t line = openRowCells_ == 0 ? line_ : openRowLine_;
    throw CalcError(file_.name() + ":" + std::to_string(line) + ": " + reason);
}

}  // namespace varo::calc
