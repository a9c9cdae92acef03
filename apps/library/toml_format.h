#pragma once

#include <QByteArray>
#include <QString>

namespace varo {

/// `text` as a TOML string on one line: between apostrophes when that spares escapes, else between
/// quotes with every character escaped that is invisible or special. Reads back as `text`.
QString tomlString(const QString& text);

/// The same, but a text of several lines is laid out over as many lines.
QString tomlParagraph(const QString& text);

/// `name` as a TOML key: bare where that is allowed.
QString tomlKey(const QString& name);

/// `text`, or a part of one, as it stands between quotes.
QString tomlEscaped(const QString& text);

/// `bytes` as base64 in lines of 76 characters, which stand for 57 bytes each.
QString tomlBase64Lines(const QByteArray& bytes);

}  // namespace varo
