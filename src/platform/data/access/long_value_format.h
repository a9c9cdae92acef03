#pragma once

#include "platform/data/access/bytes.h"

namespace varo::access {

// A long field begins with its length and where its value is, then the place of that, if it is not
// in the row. Of several pieces each begins with the place of the next.
inline constexpr int kLongHeader = 12;
inline constexpr int kLongPlace = 4;
inline constexpr quint32 kLongLength = 0x3FFFFFFF;
inline constexpr quint32 kLongInRow = 0x80000000;
inline constexpr quint32 kLongInOnePiece = 0x40000000;
inline constexpr int kNextPiece = 4;  ///< bytes of the place of the next one

/// What a page of long values names as its table: "LVAL".
inline constexpr quint32 kLongValueOwner = 0x4C41564C;

}  // namespace varo::access
