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

/// `bytes` with a two-byte euro sign for each byte 0x80 that stands where a GB18030 character
/// begins: no such character begins with it, and GBK's code page 936 has the euro sign there.
QByteArray withGbEuroSigns(const QByteArray& bytes) {
    const auto byteAt = [&](qsizetype at) {
        return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
    };
    QByteArray result;
    for (qsizetype at = 0; at < bytes.size();) {
        if (byteAt(at) == 0x80) {
            result += "\xA2\xE3";
            ++at;
            continue;
        }
        const bool isFourBytes = byteAt(at + 1) >= '0' && byteAt(at + 1) <= '9';
        const qsizetype length = byteAt(at) < 0x80 ? 1 : isFourBytes ? 4 : 2;
        result.append(bytes.constData() + at, std::min(length, bytes.size() - at));
        at += length;
    }
    return result;
}

/// Stateless, so that a character cut off at the end counts as an error; the mark, if any, is taken
/// off.
std::optional<QString> decodeUnchecked(const QByteArray& bytes) {
    constexpr auto kStrict = QStringConverter::Flag::Stateless;
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF")) {
        auto text = decodeAs(QStringDecoder(QStringConverter::Utf16, kStrict), bytes);
        return bytes.size() % 2 == 0 && text && text->isValidUtf16() ? text : std::nullopt;
    }
    if (QUtf8StringView(bytes.constData(), bytes.size()).isValidUtf8()) {
        return decodeAs(QStringDecoder(QStringConverter::Utf8, kStrict), bytes);
    }
    return decodeAs(QStringDecoder("GB18030", kStrict), withGbEuroSigns(bytes));
}

}  // namespace

std::optional<QString> decodeText(const QByteArray& bytes) {
    auto text = decodeUnchecked(bytes);
    if (!text) {
        return std::nullopt;
    }
    if (text->endsWith(QChar(0x1A))) {
        text->chop(1);
    }
    text->replace(u'\f', u' ');
    return isText(*text) ? text : std::nullopt;
}

bool isText(QStringView text) {
    return std::all_of(text.cbegin(), text.cend(), isTextCharacter);
}

}  // namespace varo::deploy
