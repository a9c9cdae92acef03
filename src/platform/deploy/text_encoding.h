#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <optional>

namespace varo::deploy {

/// Text of a file's bytes: UTF-8 or UTF-16 by their mark, else UTF-8 when the bytes are valid as
/// such, else GB18030. Nothing when the bytes are none of these or hold control characters other
/// than tab and line ends, which no text file holds.
std::optional<QString> decodeText(const QByteArray& bytes);

/// Whether a text holds no control characters other than tab and line ends.
bool isText(QStringView text);

}  // namespace varo::deploy
