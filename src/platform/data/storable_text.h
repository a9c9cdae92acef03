#pragma once

#include <QString>

namespace varo::data {

/// Whether a database keeps the text as it stands: SQLite ends text at U+0000 when it compares, and
/// UTF-8 has no half surrogate pairs, so that either would be stored or found as something else.
inline bool isStorable(const QString& text) {
    return !text.contains(QChar::Null) && text.isValidUtf16();
}

}  // namespace varo::data
