#pragma once

#include "platform/data/blob_field.h"

#include <QIODevice>
#include <QString>

namespace varo {

/// Writes a TOML text. Long texts and pictures are written piece by piece. Everything throws
/// TextError when the output takes nothing more.
class TomlWriter {
  public:
    /// `out` must outlive this.
    explicit TomlWriter(QIODevice& out) : out_(out) {}

    /// Begins an entry of the array of tables `kind`.
    void begin(const char* kind);

    /// A key and its value on a line.
    void number(const char* key, qint32 value);
    void numberUnless(const char* key, qint32 value, qint32 usual);
    void text(const char* key, const QString& value);
    void textUnlessEmpty(const char* key, const QString& value);

    /// A text over as many lines as it has, unless it is long.
    void paragraph(const char* key, const QString& value);

    /// The bytes of `picture`, from which nothing has been read. Throws data::Error, too.
    void picture(const char* key, data::BlobField& picture);

    /// `value` as it stands behind a key.
    void string(const QString& value);

    void line(const QString& content);
    void write(const QString& content);

  private:
    QIODevice& out_;
};

}  // namespace varo
