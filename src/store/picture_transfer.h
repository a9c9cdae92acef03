#pragma once

#include "platform/data/blob_field.h"

#include <QString>

namespace varo {

/// Bytes of a picture that are moved at a time.
inline constexpr qint64 kPictureChunk = 16384;

/// Most full chunks that a picture may have.
inline constexpr qint64 kPictureChunkLimit = 32767;

/// Replaces the content of `field` by the bytes of the file, one chunk in memory at a time: first
/// the bytes that fill no chunk, then the full chunks. An empty file leaves the field unchanged.
/// Returns false with the description in `failure` when the file cannot be read; throws data::Error
/// when the field takes no bytes. The caller then undoes the row.
bool ReadFileToField(data::BlobField& field, const QString& fileName, QString& failure);

/// Writes the bytes of `field` to the file in the same way, replacing what is there. Returns false
/// with the description in `failure` when a step failed; no partial file is then left.
bool WriteFieldToFile(data::BlobField& field, const QString& fileName, QString& failure);

}  // namespace varo
