#pragma once

#include <QByteArray>
#include <QRect>
#include <QtEndian>

#include <initializer_list>

namespace varo::test {

/// Puts a metafile together, record by record.
class WmfBuilder {
  public:
    /// Functions that the tests use.
    enum Function {
        SaveState = 0x001E,
        RestoreState = 0x0127,
        SelectObject = 0x012D,
        SetTextAlign = 0x012E,
        CreatePattern = 0x0142,
        DeleteObject = 0x01F0,
        SetWindowOrg = 0x020B,
        SetWindowExt = 0x020C,
        LineTo = 0x0213,
        MoveTo = 0x0214,
        CreatePen = 0x02FA,
        CreateFont = 0x02FB,
        CreateBrush = 0x02FC,
        Polygon = 0x0324,
        Polyline = 0x0325,
        IntersectClip = 0x0416,
        Ellipse = 0x0418,
        Rectangle = 0x041B,
        TextOut = 0x0521,
        PolyPolygon = 0x0538,
        Pie = 0x081A,
        ExtTextOut = 0x0A32,
        StretchBits = 0x0F43
    };

    /// Adds a record with parameters as words, the last one of the function first, and then bytes.
    WmfBuilder& add(int function, std::initializer_list<int> words, QByteArray bytes = {}) {
        if (bytes.size() % 2 != 0) {
            bytes.append('\0');
        }
        const auto size = 3 + static_cast<int>(words.size()) + static_cast<int>(bytes.size() / 2);
        records_ += bytesOf({size & 0xFFFF, size >> 16, function}) + bytesOf(words) + bytes;
        return *this;
    }

    /// The same for a record that says it has `size` words.
    WmfBuilder& addLying(quint32 size, int function, std::initializer_list<int> words) {
        const qsizetype at = records_.size();
        add(function, words);
        qToLittleEndian(size, records_.data() + at);
        return *this;
    }

    WmfBuilder& brush(int red, int green, int blue) {
        return add(CreateBrush, {0, red | green << 8, blue, 0});
    }
    WmfBuilder& pen(int style, int width, int red = 0, int green = 0, int blue = 0) {
        return add(CreatePen, {style, width, 0, red | green << 8, blue});
    }
    WmfBuilder& font(int height, int charset, const QByteArray& face, int angle = 0) {
        return add(CreateFont, {height, 0, angle, 0, 0, 0, charset << 8, 0, 0}, face + '\0');
    }

    /// The file without a placement.
    QByteArray bytes() const {
        const int size = 9 + static_cast<int>(records_.size() / 2) + 3;
        return bytesOf({1, 9, 0x300, size & 0xFFFF, size >> 16, 16, 1000, 0, 0}) + records_ +
               bytesOf({3, 0, 0});
    }

    /// The file with one.
    QByteArray placed(const QRect& bounds, int unitsPerInch) const {
        return QByteArray("\xD7\xCD\xC6\x9A", 4) +
               bytesOf({0, bounds.left(), bounds.top(), bounds.left() + bounds.width(),
                        bounds.top() + bounds.height(), unitsPerInch, 0, 0, 0}) +
               bytes();
    }

  private:
    static QByteArray bytesOf(std::initializer_list<int> words) {
        QByteArray bytes;
        for (const int word : words) {
            bytes.append(static_cast<char>(word & 0xFF));
            bytes.append(static_cast<char>(word >> 8 & 0xFF));
        }
        return bytes;
    }

    QByteArray records_;
};

}  // namespace varo::test
