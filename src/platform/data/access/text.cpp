#include "platform/data/access/text.h"

#include <QVarLengthArray>

#include <algorithm>
#include <iconv.h>

namespace varo::access {

namespace {

constexpr quint8 kCompressedFirst = 0xFF;
constexpr quint8 kCompressedSecond = 0xFE;

/// UTF-8 of bytes that are one character each.
void appendNarrow(const Bytes& bytes, QByteArray& text) {
    const char* begin = bytes.data();
    const char* end = begin + bytes.size();
    if (std::all_of(begin, end, [](char c) { return static_cast<quint8>(c) < 0x80; })) {
        text.append(begin, bytes.size());
    } else {
        text += QString::fromLatin1(begin, bytes.size()).toUtf8();
    }
}

QByteArray utf8Of(const Bytes& wide) {
    QVarLengthArray<char16_t, 512> units(wide.size() / 2);
    qFromLittleEndian<char16_t>(wide.data(), units.size(), units.data());
    return QStringView(units.constData(), units.size()).toUtf8();
}

/// Pieces with one byte for a character and such with two, a zero between them.
QByteArray uncompressed(const Bytes& bytes) {
    QByteArray text;
    bool isNarrow = true;
    for (qsizetype at = 0; at < bytes.size();) {
        qsizetype end = at;
        if (isNarrow) {
            while (end < bytes.size() && bytes.byte(end) != 0) {
                ++end;
            }
            appendNarrow(bytes.part(at, end - at), text);
        } else {
            while (end + 1 < bytes.size() && bytes.byte(end) != 0) {
                end += 2;
            }
            text += utf8Of(bytes.part(at, end - at));
        }
        at = end + 1;
        isNarrow = !isNarrow;
    }
    return text;
}

}  // namespace

QString plainText(const Bytes& bytes) {
    QString text(bytes.size() / 2, Qt::Uninitialized);
    qFromLittleEndian<char16_t>(bytes.data(), text.size(), text.data());
    return text;
}

QString codePageText(const Bytes& bytes, quint16 codePage) {
    const QByteArray name = "CP" + QByteArray::number(codePage);
    iconv_t converter = iconv_open("UTF-16LE", name.constData());
    if (converter == reinterpret_cast<iconv_t>(-1)) {
        converter = iconv_open("UTF-16LE", "CP1252");
    }
    QByteArray wide(bytes.size() * 2, Qt::Uninitialized);
    QByteArray narrow = bytes.toByteArray();
    char* from = narrow.data();
    char* to = wide.data();
    auto fromLeft = static_cast<std::size_t>(narrow.size());
    auto toLeft = static_cast<std::size_t>(wide.size());
    while (fromLeft > 0 &&
           iconv(converter, &from, &fromLeft, &to, &toLeft) == static_cast<std::size_t>(-1)) {
        if (toLeft < 2 || fromLeft == 0) {
            break;
        }
        *to++ = '\xFD';  // U+FFFD for what the code page does not have
        *to++ = '\xFF';
        toLeft -= 2;
        ++from;
        --fromLeft;
    }
    iconv_close(converter);
    return plainText(Bytes(wide.constData(), to - wide.constData()));
}

QByteArray fieldText(const Bytes& bytes, const Header& header) {
    if (header.isJet3()) {
        return codePageText(bytes, header.codePage).toUtf8();
    }
    if (bytes.size() >= 2 && bytes.byte(0) == kCompressedFirst &&
        bytes.byte(1) == kCompressedSecond) {
        return uncompressed(bytes.from(2));
    }
    return utf8Of(bytes);
}

}  // namespace varo::access
