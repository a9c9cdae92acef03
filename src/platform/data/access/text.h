#pragma once

#include "platform/data/access/bytes.h"
#include "platform/data/access/format.h"

#include <QString>

namespace varo::access {

/// The text of bytes in UTF-16.
QString plainText(const Bytes& bytes);

/// The text of bytes in a code page of Windows, 1252 where it is not known.
QString codePageText(const Bytes& bytes, quint16 codePage);

/// The text of a field of a file with this header, in UTF-8: of the code page in the oldest
/// version, else of UTF-16 whose pieces may have one byte for a character. Half a surrogate pair
/// becomes U+FFFD.
QByteArray fieldText(const Bytes& bytes, const Header& header);

}  // namespace varo::access
