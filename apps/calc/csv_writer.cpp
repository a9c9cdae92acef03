#include "calc/csv_writer.h"

#include "calc/files.h"

#include <algorithm>

namespace varo::calc {
namespace {

bool isBlank(char character) {
    return character == ' ' || character == '\t';
}

bool needsQuotes(std::string_view content) {
    if (content.empty()) {
        return false;
    }
    return isBlank(content.front()) || isBlank(content.back()) ||
           std::any_of(content.begin(), content.end(),
                       [](char c) { return c == ',' || c == '"' || c == '\n' || c == '\r'; });
}

}  // namespace

CsvWriter::CsvWriter(bool byteOrderMark, bool carriageReturns)
    : text_(byteOrderMark ? "\xEF\xBB\xBF" : ""), lineEnd_(carriageReturns ? "\r\n" : "\n") {}

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
}

void CsvWriter::flush() {
    writeOutput(text_);
    text_.clear();
}

}  // namespace varo::calc
