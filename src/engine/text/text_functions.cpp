#include "engine/text/text_functions.h"

#include "engine/text/text_search.h"
#include "engine/text/unicode.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace varo::engine {
namespace {

constexpr std::size_t kNowhere = std::string_view::npos;

/// The integer part of `value`, cut to low ... high.
std::size_t cut(double value, std::size_t low, std::size_t high) {
    if (!(value > static_cast<double>(low))) {
        return low;
    }
    return value < static_cast<double>(high) ? static_cast<std::size_t>(value) : high;
}

/// Where position `start` lies in `text`, in bytes; a position behind the text is its end.
std::size_t offsetOfPosition(std::string_view text, double start) {
    return byteOffset(text, cut(start, 1, text.size() + 1) - 1);
}

/// Calls `visit(offset)` for each occurrence of `wanted`, which is not empty, until it answers
/// false.
template <class Visitor>
void forEachOccurrence(std::string_view text, std::string_view wanted, Visitor visit) {
    const TextSearch<char> search(wanted);
    std::size_t at = search.find(text, 0);
    while (at != kNowhere && visit(at)) {
        at = search.find(text, at + wanted.size());
    }
}

std::u32string foldedCharacters(std::string_view text) {
    std::u32string folded;
    folded.reserve(text.size());
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at != end;) {
        const Decoded next = decode(at, end);
        folded += foldCase(next.character);
        at += next.bytes;
    }
    return folded;
}

/// A part of a text, in bytes.
struct Part {
    std::size_t begin;
    std::size_t end;
};

/// As forEachOccurrence, without regard to letter case: two texts alike may differ in their bytes.
template <class Visitor>
void forEachFoldedOccurrence(std::string_view text, std::string_view wanted, Visitor visit) {
    const std::u32string folded = foldedCharacters(text);
    const std::u32string foldedWanted = foldedCharacters(wanted);
    const TextSearch<char32_t> search(foldedWanted);
    Part part{0, 0};
    std::size_t index = 0;
    for (std::size_t found = search.find(folded, 0); found != std::u32string_view::npos;
         found = search.find(folded, index)) {
        part.begin = part.end + byteOffset(text.substr(part.end), found - index);
        part.end = part.begin + byteOffset(text.substr(part.begin), foldedWanted.size());
        index = found + foldedWanted.size();
        if (!visit(part)) {
            return;
        }
    }
}

/// Copies a text piece by piece, with some parts replaced.
class Replacer {
  public:
    Replacer(std::string_view text, std::string_view replacement, double index, ByteLimit limit)
        : text_(text), replacement_(replacement), index_(index), limit_(limit.bytes) {}

    /// To be called for each occurrence in turn; false when no further one matters.
    bool occurrence(const Part& part) {
        ++count_;
        if (index_ != 0 && static_cast<double>(count_) != index_) {
            return true;
        }
        result_ += text_.substr(copied_, part.begin - copied_);
        result_ += replacement_;
        copied_ = part.end;
        return index_ == 0 && result_.size() <= limit_;
    }

    /// The whole copy; nothing when it is too long.
    std::optional<std::string> finish() {
        result_ += text_.substr(copied_);
        return result_.size() <= limit_ ? std::optional(std::move(result_)) : std::nullopt;
    }

  private:
    std::string_view text_;
    std::string_view replacement_;
    double index_;
    std::size_t limit_;
    std::string result_;
    std::size_t count_ = 0;
    std::size_t copied_ = 0;
};

}  // namespace

bool contains(std::string_view text, std::string_view wanted) {
    return wanted.empty() || TextSearch<char>(wanted).find(text, 0) != kNowhere;
}

std::string concatenate(std::span<const std::string_view> texts) {
    std::size_t size = 0;
    for (const std::string_view text : texts) {
        size += text.size();
    }
    std::string joined;
    joined.reserve(size);
    for (const std::string_view text : texts) {
        joined += text;
    }
    return joined;
}

std::string changeCase(std::string_view text, bool upper) {
    std::string result;
    result.reserve(text.size());
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at != end;) {
        const Decoded next = decode(at, end);
        appendCharacter(result, upper ? upperCase(next.character) : lowerCase(next.character));
        at += next.bytes;
    }
    return result;
}

std::string_view subText(std::string_view text, double start, double count, bool fromRight) {
    if (!fromRight) {
        return leftText(text.substr(offsetOfPosition(text, start)), count);
    }
    const std::size_t length = characterCount(text);
    const std::size_t skipped = cut(start, 1, length + 1) - 1;
    return rightText(text.substr(0, byteOffset(text, length - skipped)), count);
}

std::string_view leftText(std::string_view text, double count) {
    return text.substr(0, byteOffset(text, cut(count, 0, text.size())));
}

std::string_view rightText(std::string_view text, double count) {
    const std::size_t length = characterCount(text);
    return text.substr(byteOffset(text, length - cut(count, 0, length)));
}

std::string_view piece(std::string_view text, std::string_view separator, double index) {
    if (index < 1) {
        return {};
    }
    const std::size_t wantedPiece = cut(index, 1, text.size() + 2);
    std::size_t current = 1;
    std::size_t begin = 0;
    std::optional<std::size_t> end;
    if (!separator.empty()) {
        forEachOccurrence(text, separator, [&](std::size_t at) {
            if (current == wantedPiece) {
                end = at;
                return false;
            }
            ++current;
            begin = at + separator.size();
            return true;
        });
    }
    if (current != wantedPiece) {
        return {};
    }
    return text.substr(begin, end.value_or(text.size()) - begin);
}

double findText(std::string_view text, std::string_view wanted, double start) {
    const std::size_t from = offsetOfPosition(text, start);
    const std::size_t found = wanted.empty() ? from : TextSearch<char>(wanted).find(text, from);
    return found == kNowhere ? 0 : static_cast<double>(characterCount(text.substr(0, found)) + 1);
}

double countText(std::string_view text, std::string_view wanted) {
    std::size_t count = 0;
    if (!wanted.empty()) {
        forEachOccurrence(text, wanted, [&count](std::size_t) {
            ++count;
            return true;
        });
    }
    return static_cast<double>(count);
}

double countMatching(std::string_view left, std::string_view right, double leftStart,
                     double rightStart, bool ignoreCase) {
    const char* a = left.data() + offsetOfPosition(left, leftStart);
    const char* b = right.data() + offsetOfPosition(right, rightStart);
    const char* const aEnd = left.data() + left.size();
    const char* const bEnd = right.data() + right.size();
    std::size_t count = 0;
    for (; a != aEnd && b != bEnd; ++count) {
        const Decoded fromLeft = decode(a, aEnd);
        const Decoded fromRight = decode(b, bEnd);
        const bool same =
            fromLeft.character == fromRight.character ||
            (ignoreCase && foldCase(fromLeft.character) == foldCase(fromRight.character));
        if (!same) {
            break;
        }
        a += fromLeft.bytes;
        b += fromRight.bytes;
    }
    return static_cast<double>(count);
}

std::string_view trimText(std::string_view text, std::string_view wanted, bool atStart) {
    if (wanted.empty()) {
        return text;
    }
    while (atStart ? text.starts_with(wanted) : text.ends_with(wanted)) {
        atStart ? text.remove_prefix(wanted.size()) : text.remove_suffix(wanted.size());
    }
    return text;
}

std::optional<std::string> replaceText(std::string_view text, std::string_view wanted,
                                       std::string_view replacement, double index, bool ignoreCase,
                                       ByteLimit limit) {
    Replacer replacer(text, replacement, std::trunc(index), limit);
    if (!wanted.empty() && ignoreCase) {
        forEachFoldedOccurrence(text, wanted,
                                [&](const Part& part) { return replacer.occurrence(part); });
    } else if (!wanted.empty()) {
        forEachOccurrence(text, wanted, [&](std::size_t at) {
            return replacer.occurrence({at, at + wanted.size()});
        });
    }
    return replacer.finish();
}

std::optional<std::string> deleteText(std::string_view text, std::string_view wanted,
                                      ByteLimit limit) {
    return replaceText(text, wanted, {}, 0, false, limit);
}

std::string insertText(std::string_view text, std::string_view added, double start) {
    const std::size_t at = offsetOfPosition(text, start);
    std::string result;
    result.reserve(text.size() + added.size());
    result += text.substr(0, at);
    result += added;
    result += text.substr(at);
    return result;
}

}  // namespace varo::engine
