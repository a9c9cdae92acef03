#pragma once

#include <QString>

namespace varo::data {

/// Whether a database can hold `text` as it stands: SQLite ends a text at U+0000 when it compares,
/// and UTF-8 has no half surrogate pairs.
inline bool isStorable(const QString& text) {
    return !text.contains(QChar::Null) && text.isValidUtf16();
}

}  // namespace varo::data
