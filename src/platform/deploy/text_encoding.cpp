#include "platform/deploy/text_encoding.h"

#include <QStringDecoder>
#include <QUtf8StringView>

#include <algorithm>

namespace varo::deploy {

namespace {

bool isTextCharacter(QChar c) {
    if (c == u'\t' || c == u'\n' || c == u'\r') {
        return true;
    }
    return c.category() != QChar::Other_Control && c != QChar(0xFFFE) && c != QChar(0xFFFF);
}

std::optional<QString> decodeAs(QStringDecoder&& decoder, const QByteArray& bytes) {
    if (!decoder.isValid()) {
        return std::nullopt;
    }
    QString text = decoder(bytes);
    if (decoder.hasError()) {
        return std::nullopt;
    }
    return text;
}

/// Stateless, so that a character cut off at the end counts as an error; the mark, if any, is taken
/// off.
std::optional<QString> decodeUnchecked(const QByteArray& bytes) {
    constexpr auto Strict = QStringConverter::Flag::Stateless;
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF")) {
        auto text = decodeAs(QStringDecoder(QStringConverter::Utf16, Strict), bytes);
        return bytes.size() % 2 == 0 && text && text->isValidUtf16() ? text : std::nullopt;
    }
    if (QUtf8StringView(bytes.constData(), bytes.size()).isValidUtf8()) {
        return decodeAs(QStringDecoder(QStringConverter::Utf8, Strict), bytes);
    }
    return decodeAs(QStringDecoder("GB18030", Strict), bytes);
}

}  // namespace

std::optional<QString> decodeText(const QByteArray& bytes) {
    auto text = decodeUnchecked(bytes);
    return text && isText(*text) ? text : std::nullopt;
}

bool isText(QStringView text) {
    return std::all_of(text.cbegin(), text.cend(), isTextCharacter);
}

}  // namespace varo::deploy
