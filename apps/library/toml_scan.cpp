#include "library/toml_scan.h"

#include <string>

namespace varo {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

class Scan {
  public:
    explicit Scan(std::string_view text) : text_(text) {}

    std::optional<TomlRefusal> run() {
        if (text_.starts_with(kByteOrderMark)) {
            at_ = kByteOrderMark.size();
            lineStart_ = at_;
        }
        while (at_ < text_.size()) {
            const char c = text_[at_];
            if ((c == '"' || c == '\'') && mayBeginString()) {
                skipString(c);
                last_ = c;
            } else if (c == '#') {
                skipComment();
            } else if (const QString wrong = take(c); !wrong.isEmpty()) {
                return TomlRefusal{position(), wrong};
            } else {
                last_ = c == ' ' || c == '\t' ? last_ : c;
                pass();
            }
        }
        return std::nullopt;
    }

  private:
    /// The parser takes a quote elsewhere for a part of a number or date, and reads on behind it.
    bool mayBeginString() const {
        return std::string_view("\n=,.[{").find(last_) != std::string_view::npos;
    }

    /// Counts what `c`, which is in no string or comment, opens and joins; returns what is wrong.
    QString take(char c) {
        if ((static_cast<unsigned char>(c) & 0x80) != 0) {
            return QStringLiteral("a name or text with characters beyond ASCII needs quotes");
        }
        if (c == '.') {
            if (++dots_ >= kMaxTomlDepth) {
                return QStringLiteral("a name has more than %1 parts").arg(kMaxTomlDepth);
            }
        } else if (c == '=' || c == ',' || c == '\n') {
            dots_ = 0;
        } else if (c == '[' || c == '{') {
            dots_ = 0;
            if (++depth_ > kMaxTomlDepth) {
                return QStringLiteral("brackets are nested more than %1 deep").arg(kMaxTomlDepth);
            }
        } else if ((c == ']' || c == '}') && depth_ > 0) {
            dots_ = 0;
            --depth_;
        }
        return {};
    }

    /// A string of one line ends with its line, which is an error that the parser stops at.
    void skipString(char quote) {
        const std::string delimiter(3, quote);
        const bool isLong = text_.substr(at_).starts_with(delimiter);
        const bool escapes = quote == '"';
        at_ += isLong ? 3 : 1;
        while (at_ < text_.size()) {
            if (isLong ? text_.substr(at_).starts_with(delimiter) : text_[at_] == quote) {
                at_ += isLong ? 3 : 1;
                skipQuotesAtEnd(quote, isLong);
                return;
            }
            if (!isLong && text_[at_] == '\n') {
                return;
            }
            if (escapes && text_[at_] == '\\' && at_ + 1 < text_.size()) {
                pass();
            }
            pass();
        }
    }

    /// Up to two quotes before the closing three belong to a string of several lines.
    void skipQuotesAtEnd(char quote, bool isLong) {
        for (int more = 0; isLong && more < 2 && at_ < text_.size() && text_[at_] == quote;
             ++more) {
            ++at_;
        }
    }

    void skipComment() {
        while (at_ < text_.size() && text_[at_] != '\n') {
            ++at_;
        }
    }

    void pass() {
        if (text_[at_++] == '\n') {
            ++line_;
            lineStart_ = at_;
        }
    }

    /// Columns count characters.
    Position position() const {
        int column = 1;
        for (const char c : text_.substr(lineStart_, at_ - lineStart_)) {
            column += (static_cast<unsigned char>(c) & 0xC0) == 0x80 ? 0 : 1;
        }
        return {line_, column};
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::size_t lineStart_ = 0;
    int line_ = 1;
    char last_ = '\n';  ///< that was read and is no blank and in no comment
    int dots_ = 0;      ///< in the key that is being read
    int depth_ = 0;     ///< brackets that are open
};

}  // namespace

std::optional<TomlRefusal> refusedInToml(std::string_view text) {
    return Scan(text).run();
}

}  // namespace varo
