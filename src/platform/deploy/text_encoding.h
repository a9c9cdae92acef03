#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <optional>

namespace varo::deploy {

/// Text of a file's bytes: UTF-8 or UTF-16 by their mark, else UTF-8 when the bytes are valid as
/// such, else GB18030, in which a single byte 0x80 is the euro sign as in code page 936. An
/// end-of-file mark (0x1A) behind the last character is dropped, and form feeds become blanks.
/// Nothing when the bytes are none of these or hold control characters other than tab and line
/// ends, which no text file holds.
std::optional<QString> decodeText(const QByteArray& bytes);

/// Whether a text holds no control characters other than tab and line ends.
bool isText(QStringView text);

}  // namespace varo::deploy
