#include "platform/deploy/text_encoding.h"

#include <QStringDecoder>
#include <QStringEncoder>
#include <QUtf8StringView>

#include <algorithm>

namespace varo::deploy {

namespace {

constexpr char kUtf8Mark[] = "\xEF\xBB\xBF";

bool isTextCharacter(QChar c) {
    if (c == u'\t' || c == u'\n' || c == u'\r') {
        return true;
    }
    return c.category() != QChar::Other_Control && c != QChar(0xFFFE) && c != QChar(0xFFFF);
}

std::optional<DecodedText> decodeAs(TextEncoding encoding, QStringDecoder&& decoder,
                                    const QByteArray& bytes) {
    if (!decoder.isValid()) {
        return std::nullopt;
    }
    QString text = decoder(bytes);
    if (decoder.hasError()) {
        return std::nullopt;
    }
    return DecodedText{text, encoding};
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
std::optional<DecodedText> decodeUnchecked(const QByteArray& bytes) {
    constexpr auto kStrict = QStringConverter::Flag::Stateless;
    const bool isLittleEndian = bytes.startsWith("\xFF\xFE");
    if (isLittleEndian || bytes.startsWith("\xFE\xFF")) {
        auto found = decodeAs(isLittleEndian ? TextEncoding::Utf16LE : TextEncoding::Utf16BE,
                              QStringDecoder(QStringConverter::Utf16, kStrict), bytes);
        const bool isWhole = bytes.size() % 2 == 0 && found && found->text.isValidUtf16();
        return isWhole ? found : std::nullopt;
    }
    if (QUtf8StringView(bytes.constData(), bytes.size()).isValidUtf8()) {
        return decodeAs(
            bytes.startsWith(kUtf8Mark) ? TextEncoding::Utf8WithMark : TextEncoding::Utf8,
            QStringDecoder(QStringConverter::Utf8, kStrict), bytes);
    }
    return decodeAs(TextEncoding::Gb18030, QStringDecoder("GB18030", kStrict),
                    withGbEuroSigns(bytes));
}

}  // namespace

std::optional<DecodedText> decodeText(const QByteArray& bytes) {
    auto found = decodeUnchecked(bytes);
    if (!found) {
        return std::nullopt;
    }
    if (found->text.endsWith(QChar(0x1A))) {
        found->text.chop(1);
    }
    found->text.replace(u'\f', u' ');
    return isText(found->text) ? found : std::nullopt;
}

QByteArray encodeText(const QString& text, TextEncoding encoding) {
    constexpr auto kMarked = QStringConverter::Flag::WriteBom;
    QByteArray bytes;
    switch (encoding) {
        case TextEncoding::Utf8:
            return text.toUtf8();
        case TextEncoding::Utf8WithMark:
            return kUtf8Mark + text.toUtf8();
        case TextEncoding::Utf16LE:
            return QStringEncoder(QStringConverter::Utf16LE, kMarked)(text);
        case TextEncoding::Utf16BE:
            return QStringEncoder(QStringConverter::Utf16BE, kMarked)(text);
        case TextEncoding::Gb18030:
            bytes = QStringEncoder("GB18030")(text);
            break;
    }
    // Some bytes of GB18030 are valid in UTF-8 too, where they are other characters.
    const auto readBack = decodeText(bytes);
    return readBack && readBack->text == text ? bytes : kUtf8Mark + text.toUtf8();
}

bool isText(QStringView text) {
    return std::all_of(text.cbegin(), text.cend(), isTextCharacter);
}

}  // namespace varo::deploy
