#pragma once

#include "platform/data/access/page_file.h"

#include <functional>

namespace varo::access {

/// Bytes of the value of a long field, whose bytes in the row are `field`.
qint64 longValueSize(const Bytes& field);

/// Hands the value of such a field to `take`, piece by piece and in order. Throws data::Error when
/// it is damaged.
void readLongValue(PageFile& file, const Bytes& field,
                   const std::function<void(const Bytes&)>& take);

/// All of it.
QByteArray longValue(PageFile& file, const Bytes& field);

}  // namespace varo::access
