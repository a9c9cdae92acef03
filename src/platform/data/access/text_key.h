#pragma once

#include <QByteArray>
#include <QStringView>

#include <optional>

namespace varo::access {

/// What an index in ascending order has for a text, under a sort order of this language and
/// version, without the byte with which a key begins. Nothing where that is not known for certain:
/// for another sort order, a character that is not in its table or a text that is too long.
std::optional<QByteArray> textKey(quint16 sortOrder, quint8 sortVersion, QStringView text);

}  // namespace varo::access
