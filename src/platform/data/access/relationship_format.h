#pragma once

#include <QtGlobal>

namespace varo::access {

// Which side of a relationship the table has whose definition has the index.
inline constexpr quint8 kReferencedSide = 1;
inline constexpr quint8 kReferencingSide = 2;

// What the index says of changes and removals of the referenced row.
inline constexpr quint8 kCascade = 1;
inline constexpr quint8 kSetNull = 2;

// The same in the table of relationships.
inline constexpr quint32 kOneToOne = 0x1;
inline constexpr quint32 kNotEnforced = 0x2;
inline constexpr quint32 kChangesCascade = 0x100;
inline constexpr quint32 kRemovalsCascade = 0x1000;
inline constexpr quint32 kRemovalsSetNull = 0x2000;
inline constexpr quint32 kJoins = 0x03000000;  ///< how queries show the tables

}  // namespace varo::access
