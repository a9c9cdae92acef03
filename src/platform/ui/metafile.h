#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QColor>
#include <QImage>
#include <QRectF>

#include <optional>
#include <vector>

namespace varo::ui {

/// One record of a metafile: a function of the drawing interface with its parameters, which are
/// 16-bit words, the last parameter of the function first.
class MetafileRecord {
  public:
    MetafileRecord(int function, QByteArrayView parameters)
        : function_(function), parameters_(parameters) {}

    int function() const { return function_; }
    int words() const { return static_cast<int>(parameters_.size() / 2); }

    /// The word at `index`, below words(), as a signed number.
    int number(int index) const;
    /// The same without a sign.
    int word(int index) const { return number(index) & 0xFFFF; }
    /// The color in the two words from `index` on.
    QColor color(int index) const;
    /// The bytes from the word at `index` on, at most words().
    QByteArrayView bytesFrom(int index) const { return parameters_.sliced(2 * index); }

  private:
    int function_;
    QByteArrayView parameters_;
};

/// A drawing in the Windows metafile format (wmf). Nothing in the file is trusted: what reaches
/// beyond a record, refers to nothing or is unknown is left out of the drawing.
class Metafile {
  public:
    /// Whether the content begins like a metafile.
    static bool isMetafile(QByteArrayView data);

    /// The drawing in the content of a file. Nothing when the content is cut off, says no usable
    /// size, or is larger than any sensible drawing.
    static std::optional<Metafile> read(const QByteArray& data);

    /// Width and height in pixels, at 96 to the inch.
    QSizeF size() const { return size_; }

    /// The drawing on white, filling `size`. Null when its records draw more than any sensible
    /// drawing does in that size; that depends on nothing else.
    QImage image(QSize size) const;

  private:
    Metafile() = default;
    bool readHeader();
    bool readRecords(qsizetype at);
    bool findWindow();

    QByteArray data_;
    std::vector<MetafileRecord> records_;  ///< their parameters are in data_
    QRectF window_;                        ///< what is shown, in the drawing's own units
    QSizeF size_;
};

}  // namespace varo::ui
