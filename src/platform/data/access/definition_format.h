#pragma once

#include <QtGlobal>

namespace varo::access {

// What the parts of a table's definition contain that are the same in all versions.
inline constexpr int kFreeDefinitionBytes = 2;
inline constexpr int kNextDefinitionPage = 4;
inline constexpr int kDefinitionLength = 8;  ///< without the beginnings of its further pages
inline constexpr int kDefinitionMark = 12;   ///< from version Jet4 on

inline constexpr quint8 kSystemTable = 0x53;

inline constexpr quint8 kFixedLength = 0x01;
inline constexpr quint8 kAutoNumber = 0x04;
inline constexpr quint8 kAutoGuid = 0x40;
inline constexpr quint8 kCompressed = 0x01;
inline constexpr quint8 kComputed = 0xC0;

inline constexpr int kIndexColumns = 10;  ///< that the entry of a tree has room for
inline constexpr quint16 kNoColumn = 0xFFFF;
inline constexpr quint8 kAscending = 0x01;
inline constexpr quint8 kUnique = 0x01;
inline constexpr quint8 kIgnoresNulls = 0x02;
inline constexpr quint8 kRequired = 0x08;
inline constexpr quint8 kPrimary = 1;
inline constexpr quint8 kForeign = 2;

}  // namespace varo::access
