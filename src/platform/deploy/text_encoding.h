#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <optional>

namespace varo::deploy {

enum class TextEncoding { Utf8, Utf8WithMark, Utf16LE, Utf16BE, Gb18030 };

struct DecodedText {
    QString text;
    TextEncoding encoding = TextEncoding::Utf8;
};

/// Text of a file's bytes with their encoding: UTF-8 or UTF-16 by their mark, else UTF-8 when the
/// bytes are valid as such, else GB18030, in which a single byte 0x80 is the euro sign as in code
/// page 936. An end-of-file mark (0x1A) behind the last character is dropped, and form feeds become
/// blanks. Nothing when the bytes are none of these or hold control characters other than tab and
/// line ends, which no text file holds.
std::optional<DecodedText> decodeText(const QByteArray& bytes);

/// The bytes of a text in an encoding, with the mark that it has; in UTF-8 with its mark when bytes
/// in that encoding would not read back as the text.
QByteArray encodeText(const QString& text, TextEncoding encoding);

/// Whether a text holds no control characters other than tab and line ends.
bool isText(QStringView text);

}  // namespace varo::deploy
