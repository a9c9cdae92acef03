#include "library/toml_format.h"

#include <QStringList>

#include <algorithm>

namespace varo {

namespace {

/// Characters that a reader would not see, or that some editors and TOML readers take for a line's
/// end.
bool isInvisible(QChar c) {
    const ushort code = c.unicode();
    return code < 0x20 || (code >= 0x7F && code <= 0x9F) || (code >= 0x200B && code <= 0x200F) ||
           (code >= 0x2028 && code <= 0x202E) || (code >= 0x2060 && code <= 0x206F) ||
           code == 0xFEFF || code >= 0xFFF0;
}

bool isBareKey(const QString& name) {
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), [](QChar c) {
        const ushort code = c.unicode();
        return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') ||
               (code >= '0' && code <= '9') || code == '_' || code == '-';
    });
}

}  // namespace

QString tomlEscaped(const QString& text) {
    QString result;
    result.reserve(text.size() + 8);
    for (const QChar c : text) {
        if (c == u'"' || c == u'\\') {
            result += u'\\';
            result += c;
        } else if (c == u'\n') {
            result += QStringLiteral("\\n");
        } else if (c == u'\r') {
            result += QStringLiteral("\\r");
        } else if (c == u'\t') {
            result += QStringLiteral("\\t");
        } else if (isInvisible(c)) {
            result += QStringLiteral("\\u%1").arg(uint(c.unicode()), 4, 16, QLatin1Char('0'));
        } else {
            result += c;
        }
    }
    return result;
}

QString tomlString(const QString& text) {
    const bool special = text.contains(u'"') || text.contains(u'\\');
    const bool literal =
        special && !text.contains(u'\'') && std::none_of(text.begin(), text.end(), isInvisible);
    return literal ? u'\'' + text + u'\'' : u'"' + tomlEscaped(text) + u'"';
}

QString tomlParagraph(const QString& text) {
    if (!text.contains(u'\n')) {
        return tomlString(text);
    }
    QStringList lines = text.split(u'\n');
    std::transform(lines.begin(), lines.end(), lines.begin(), tomlEscaped);
    return QStringLiteral("\"\"\"\n") + lines.join(u'\n') + QStringLiteral("\"\"\"");
}

QString tomlKey(const QString& name) {
    return isBareKey(name) ? name : u'"' + tomlEscaped(name) + u'"';
}

QString tomlBase64Lines(const QByteArray& bytes) {
    constexpr qsizetype lineLength = 76;
    const QByteArray encoded = bytes.toBase64();
    QString result;
    for (qsizetype at = 0; at < encoded.size(); at += lineLength) {
        result += QLatin1StringView(
            QByteArrayView(encoded).sliced(at, std::min(lineLength, encoded.size() - at)));
        result += u'\n';
    }
    return result;
}

}  // namespace varo
