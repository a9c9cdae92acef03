#include "library/toml_scan.h"

#include <QByteArray>
#include <QList>

#include <algorithm>
#include <string>
#include <vector>

namespace varo {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// A character that the parser must not look up.
struct Character {
    std::size_t at = 0;
    Position place;
};

class Scan {
  public:
    explicit Scan(std::string_view text) : text_(text) {}

    TomlScan run() {
        TomlScan result;
        result.refusal = scan();
        escape(result);
        return result;
    }

  private:
    std::optional<TomlRefusal> scan() {
        if (text_.starts_with(kByteOrderMark)) {
            at_ = kByteOrderMark.size();
            lineStart_ = at_;
        }
        while (at_ < text_.size()) {
            const char c = text_[at_];
            if ((c == '"' || c == '\'') && mayBeginString()) {
                if (const QString wrong = skipString(c); !wrong.isEmpty()) {
                    return TomlRefusal{position(), wrong};
                }
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

    /// The parser takes a quote elsewhere for a part of a number or date, and reads on behind it.
    bool mayBeginString() const {
        return std::string_view("\n=,.[{").find(last_) != std::string_view::npos;
    }

    /// Counts what `c`, which is in no string or comment, opens and joins; returns what is wrong.
    QString take(char c) {
        if (isBeyondAscii(c)) {
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

    static bool isBeyondAscii(char c) { return (static_cast<unsigned char>(c) & 0x80) != 0; }

    /// A string of one line ends with its line, which is an error that the parser stops at. Returns
    /// what is wrong.
    QString skipString(char quote) {
        const std::string delimiter(3, quote);
        const bool isLong = text_.substr(at_).starts_with(delimiter);
        const bool escapes = quote == '"';
        at_ += isLong ? 3 : 1;
        while (at_ < text_.size()) {
            if (isLong ? text_.substr(at_).starts_with(delimiter) : text_[at_] == quote) {
                at_ += isLong ? 3 : 1;
                skipQuotesAtEnd(quote, isLong);
                return {};
            }
            if (!isLong && text_[at_] == '\n') {
                return {};
            }
            if (escapes && text_[at_] == '\\' && at_ + 1 < text_.size()) {
                pass();
                if (isBeyondAscii(text_[at_])) {
                    return QStringLiteral("a backslash stands before a character beyond ASCII");
                }
                if (isLong && kBlanks.find(text_[at_]) != std::string_view::npos) {
                    skipBlanks();
                    continue;
                }
            }
            pass();
        }
        return {};
    }

    /// A backslash at the end of a line joins the lines without the blanks between them. The parser
    /// looks up in a table whether the next character is a blank; some beyond ASCII are not in it.
    void skipBlanks() {
        while (at_ < text_.size() && kBlanks.find(text_[at_]) != std::string_view::npos) {
            pass();
        }
        if (at_ < text_.size() && isBeyondAscii(text_[at_])) {
            toEscape_.push_back({at_, position()});
        }
    }

    /// Puts escapes for the characters that the parser must not look up.
    void escape(TomlScan& result) const {
        std::size_t from = 0;
        for (const auto& [at, place] : toEscape_) {
            std::size_t end = at + 1;
            while (end < text_.size() && (static_cast<unsigned char>(text_[end]) & 0xC0) == 0x80) {
                ++end;
            }
            // Read with the blank before it, since a byte order mark at the start is left out.
            const auto size = static_cast<qsizetype>(end - at) + 1;
            const auto points = QString::fromUtf8(text_.data() + at - 1, size).toUcs4();
            if (points.size() != 2 || points[1] == QChar::ReplacementCharacter) {
                continue;  // no UTF-8, which the parser refuses
            }
            result.text += text_.substr(from, at - from);
            result.text +=
                QByteArray("\\U") + QByteArray::number(points[1], 16).rightJustified(8, '0');
            result.escapes.push_back(place);
            from = end;
        }
        result.text += text_.substr(from);
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

    static constexpr std::string_view kBlanks = " \t\r\n";

    std::string_view text_;
    std::vector<Character> toEscape_;
    std::size_t at_ = 0;
    std::size_t lineStart_ = 0;
    int line_ = 1;
    char last_ = '\n';  ///< that was read and is no blank and in no comment
    int dots_ = 0;      ///< in the key that is being read
    int depth_ = 0;     ///< brackets that are open
};

}  // namespace

Position TomlScan::placeInText(Position at) const {
    constexpr int kEscapeLength = 10;
    for (const Position& escape : escapes) {  // one on a line at most
        if (escape.line == at.line && escape.column < at.column) {
            return {at.line, std::max(escape.column, at.column - kEscapeLength + 1)};
        }
    }
    return at;
}

TomlScan scanToml(std::string_view text) {
    return Scan(text).run();
}

}  // namespace varo
