#include "library/toml_writer.h"

#include "library/text_error.h"
#include "library/toml_format.h"

#include <algorithm>
#include <span>

namespace varo {

namespace {

/// Characters of a long text, and bytes of a picture in whole lines, that are written at a time.
constexpr qsizetype kTextPiece = qsizetype{1} << 16;
constexpr qint64 kPicturePiece = qint64{57} << 10;

QString beforeValue(const char* key) {
    return QLatin1String(key) + QStringLiteral(" = ");
}

}  // namespace

void TomlWriter::begin(const char* kind) {
    line(QStringLiteral("\n[[%1]]").arg(QLatin1String(kind)));
}

void TomlWriter::number(const char* key, qint32 value) {
    line(beforeValue(key) + QString::number(value));
}

void TomlWriter::numberUnless(const char* key, qint32 value, qint32 usual) {
    if (value != usual) {
        number(key, value);
    }
}

void TomlWriter::text(const char* key, const QString& value) {
    write(beforeValue(key));
    string(value);
    line({});
}

void TomlWriter::textUnlessEmpty(const char* key, const QString& value) {
    if (!value.isEmpty()) {
        text(key, value);
    }
}

void TomlWriter::paragraph(const char* key, const QString& value) {
    if (value.size() > kTextPiece) {
        text(key, value);
    } else {
        line(beforeValue(key) + tomlParagraph(value));
    }
}

void TomlWriter::picture(const char* key, data::BlobField& picture) {
    write(beforeValue(key) + QStringLiteral("{ base64 = \"\"\"\n"));
    for (qint64 left = picture.size(); left > 0;) {
        QByteArray piece(std::min(left, kPicturePiece), Qt::Uninitialized);
        picture.getChunk(std::span(piece.data(), static_cast<std::size_t>(piece.size())));
        left -= piece.size();
        write(tomlBase64Lines(piece));
    }
    line(QStringLiteral("\"\"\" }"));
}

void TomlWriter::string(const QString& value) {
    if (value.size() <= kTextPiece) {
        write(tomlString(value));
        return;
    }
    write(QStringLiteral("\""));
    for (qsizetype at = 0; at < value.size();) {
        qsizetype end = std::min(at + kTextPiece, value.size());
        end -= end < value.size() && value[end].isLowSurrogate() ? 1 : 0;
        write(tomlEscaped(value.mid(at, end - at)));
        at = end;
    }
    write(QStringLiteral("\""));
}

void TomlWriter::line(const QString& content) {
    write(content + u'\n');
}

void TomlWriter::write(const QString& content) {
    const QByteArray bytes = content.toUtf8();
    if (out_.write(bytes) != bytes.size()) {
        throw TextError(QStringLiteral("output"), out_.errorString());
    }
}

}  // namespace varo
