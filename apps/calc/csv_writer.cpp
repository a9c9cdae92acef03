#include "calc/csv_writer.h"

#include "calc/files.h"

#include <algorithm>

namespace varo::calc {
namespace {

constexpr std::size_t kMostKept = std::size_t{1} << 20;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isBlank(char character) {
    return character == ' ' || character == '\t';
}

bool needsQuotes(std::string_view content) {
    if (content.empty()) {
        return false;
    }
    // At the beginning of the file the mark would not be read as part of the cell.
    return content.starts_with(kByteOrderMark) || isBlank(content.front()) ||
           isBlank(content.back()) || std::any_of(content.begin(), content.end(), [](char c) {
               return c == ',' || c == '"' || c == '\n' || c == '\r';
           });
}

}  // namespace

CsvWriter::CsvWriter(bool byteOrderMark, bool carriageReturns)
    : text_(byteOrderMark ? kByteOrderMark : ""), lineEnd_(carriageReturns ? "\r\n" : "\n") {}

void CsvWriter::addCell(std::string_view content) {
    if (rowBegun_) {
        text_ += ',';
    }
    rowBegun_ = true;
    if (!needsQuotes(content)) {
        text_ += content;
        return;
    }
    text_ += '"';
    for (const char character : content) {
        if (character == '"') {
            text_ += '"';
        }
        text_ += character;
    }
    text_ += '"';
}

void CsvWriter::endRow() {
    text_ += lineEnd_;
    rowBegun_ = false;
    // Short rows of a wide table become long ones.
    if (text_.size() > kMostKept) {
        flush();
    }
}

void CsvWriter::flush() {
    writeOutput(text_);
    text_.clear();
}

}  // namespace varo::calc
