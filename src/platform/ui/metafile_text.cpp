#include "platform/ui/metafile_text.h"

#include <QFontMetricsF>
#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cmath>

namespace varo::ui {

namespace {

constexpr int kSymbolCharset = 2;
constexpr qreal kDefaultPixels = 14;
constexpr qreal kMaxPixels = 1000;

/// Characters of one text times their height in pixels; what goes beyond is cut.
constexpr int kPixelsOfText = 100'000;

/// Greek letters in the places of A to Z and a to z.
constexpr QStringView kSymbolCapitals = u"ΑΒΧΔΕΦΓΗΙϑΚΛΜΝΟΠΘΡΣΤΥςΩΞΨΖ";
constexpr QStringView kSymbolSmalls = u"αβχδεφγηιϕκλμνοπθρστυϖωξψζ";

struct SymbolSign {
    uchar byte;
    char16_t sign;
};
constexpr std::array kSymbolSigns = {
    SymbolSign{0xA3, u'≤'}, SymbolSign{0xA5, u'∞'}, SymbolSign{0xAC, u'←'}, SymbolSign{0xAD, u'↑'},
    SymbolSign{0xAE, u'→'}, SymbolSign{0xAF, u'↓'}, SymbolSign{0xB0, u'°'}, SymbolSign{0xB1, u'±'},
    SymbolSign{0xB3, u'≥'}, SymbolSign{0xB4, u'×'}, SymbolSign{0xB8, u'÷'}, SymbolSign{0xB9, u'≠'},
    SymbolSign{0xBB, u'≈'}, SymbolSign{0xC6, u'∅'}, SymbolSign{0xD0, u'∠'}, SymbolSign{0xD6, u'√'},
    SymbolSign{0xD7, u'⋅'}, SymbolSign{0xE5, u'∑'}, SymbolSign{0xF2, u'∫'},
};

/// How texts of a character set are encoded. What names no set of its own was mostly written on a
/// Chinese system.
const char* encodingOf(int charset) {
    switch (charset) {
        case 128:
            return "Shift_JIS";
        case 129:
            return "EUC-KR";
        case 136:
            return "Big5";
        case 161:
            return "windows-1253";
        case 204:
            return "windows-1251";
        default:
            return "GB18030";
    }
}

bool isTwoByteCharset(int charset) {
    return charset != kSymbolCharset && charset != 161 && charset != 204;
}

QString symbolOf(uchar byte) {
    if (byte >= 'A' && byte <= 'Z') {
        return kSymbolCapitals.sliced(byte - 'A', 1).toString();
    }
    if (byte >= 'a' && byte <= 'z') {
        return kSymbolSmalls.sliced(byte - 'a', 1).toString();
    }
    const auto* found = std::find_if(kSymbolSigns.begin(), kSymbolSigns.end(),
                                     [byte](const SymbolSign& each) { return each.byte == byte; });
    return QString(found == kSymbolSigns.end() ? QChar(byte) : QChar(found->sign));
}

QString decoded(QByteArrayView bytes, int charset) {
    if (charset == kSymbolCharset) {
        return symbolOf(static_cast<uchar>(bytes[0]));
    }
    if (bytes.size() == 1 && static_cast<uchar>(bytes[0]) < 0x80) {
        return QString(QLatin1Char(bytes[0]));
    }
    QStringDecoder decoder(encodingOf(charset), QStringConverter::Flag::Stateless);
    const QString text = decoder.isValid() ? QString(decoder(bytes)) : QString();
    return text.isEmpty() || decoder.hasError() ? QString::fromLatin1(bytes) : text;
}

/// A character with the bytes that it was made of.
struct Character {
    QString text;
    int bytes;
};

std::vector<Character> charactersOf(QByteArrayView bytes, int charset) {
    std::vector<Character> result;
    for (qsizetype at = 0; at < bytes.size();) {
        const auto lead = static_cast<uchar>(bytes[at]);
        const bool isPair = isTwoByteCharset(charset) && lead > 0x80 && at + 1 < bytes.size();
        const qsizetype length = isPair ? 2 : 1;
        result.push_back({decoded(bytes.sliced(at, length), charset), static_cast<int>(length)});
        at += length;
    }
    return result;
}

QFont fontOf(const MetafileFont& description, qreal scale) {
    QFont font;
    // A symbol font has its signs at other places than those of Unicode, to which they are decoded.
    if (!description.family.isEmpty() && description.charset != kSymbolCharset) {
        font.setFamily(description.family);
    }
    font.setWeight(static_cast<QFont::Weight>(std::clamp(description.weight, 1, 1000)));
    font.setItalic(description.italic);
    font.setUnderline(description.underline);
    font.setStrikeOut(description.strikeOut);
    qreal pixels = description.height == 0 ? kDefaultPixels : std::abs(description.height) * scale;
    pixels = std::clamp(pixels, 1.0, kMaxPixels);
    font.setPixelSize(std::max(1, qRound(pixels)));
    if (description.height > 0) {
        const qreal line = QFontMetricsF(font).height();
        font.setPixelSize(std::max(1, qRound(pixels * pixels / std::max(line, 1.0))));
    }
    return font;
}

qreal baselineFrom(int align, const QFontMetricsF& metrics) {
    if ((align & AlignBaseline) == AlignBaseline) {
        return 0;
    }
    return (align & AlignBottom) != 0 ? -metrics.descent() : metrics.ascent();
}

}  // namespace

QString metafileName(QByteArrayView bytes) {
    const qsizetype end = bytes.indexOf('\0');
    const QByteArrayView name = end < 0 ? bytes : bytes.first(end);
    return name.isEmpty() ? QString() : decoded(name, 1);
}

qreal drawMetafileText(QPainter& painter, const MetafileText& text, const MetafileFont& description,
                       qreal scale) {
    const QFont font = fontOf(description, scale);
    const QFontMetricsF metrics(font);
    std::vector<Character> characters = charactersOf(text.bytes, description.charset);
    const int longest = kPixelsOfText / font.pixelSize();
    characters.resize(std::min(characters.size(), static_cast<std::size_t>(longest)));
    std::vector<qreal> advances;
    std::size_t byte = 0;
    for (const Character& character : characters) {
        qreal advance = 0;
        if (text.advances.empty()) {
            advance = metrics.horizontalAdvance(character.text);
        } else {
            for (int i = 0; i < character.bytes; ++i) {
                advance += text.advances[byte++];
            }
        }
        advances.push_back(advance);
    }
    qreal length = 0;
    for (const qreal advance : advances) {
        length += advance;
    }

    painter.save();
    painter.translate(text.at);
    painter.rotate(-description.angle);
    qreal x = 0;
    if ((text.align & AlignCenter) == AlignCenter) {
        x = -length / 2;
    } else if ((text.align & AlignRight) != 0) {
        x = -length;
    }
    const qreal y = baselineFrom(text.align, metrics);
    if (text.background) {
        painter.fillRect(QRectF(x, y - metrics.ascent(), length, metrics.height()),
                         *text.background);
    }
    painter.setFont(font);
    painter.setPen(text.color);
    for (std::size_t i = 0; i < characters.size(); ++i) {
        painter.drawText(QPointF(x, y), characters[i].text);
        x += advances[i];
    }
    painter.restore();
    return length;
}

}  // namespace varo::ui
