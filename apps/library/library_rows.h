#pragma once

#include "library/text_error.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace varo {

/// The rows of a library as its text gives them, with every identifier and order number filled in.

struct FolderRow {
    qint32 id = 0;
    QString name;
    qint32 parent = 0;  ///< 0: top level
    qint32 order = 0;
};

/// A picture: its bytes as they stand, or the file to take them from.
struct PictureText {
    Position at;
    QByteArray bytes;
    QString file;    ///< relative to the folder of the text; "" when `bytes` holds the picture
    QString format;  ///< "jpg" or "bmp" for a drawing that is to be rendered, else ""
    std::optional<qint32> width;   ///< pixels
    std::optional<qint32> height;  ///< pixels
};

struct FormulaRow {
    qint32 id = 0;
    QString name;
    qint32 folder = 0;  ///< 0: top level
    qint32 order = 0;
    QString expression;
    QString memo;
    qint32 pictureType = 0;
    std::optional<PictureText> picture;
};

struct ValueRow {
    QString name;
    qint32 formula = 0;  ///< 0: unowned
    QString value;
    qint32 source = 0;
    QString memo;
};

struct PropertyRow {
    qint32 id = 0;
    QString name;
    qint32 filter = 0;
    qint32 node = 0;
    qint32 nodeType = 0;
};

struct ConditionRow {
    qint32 id = 0;
    qint32 user = 0;
    qint32 parent = 0;
    qint32 type = 0;
};

struct ExpressionRow {
    qint32 filter = 0;
    qint32 id = 0;
    QString table;
    QString field;
    qint32 fieldType = 0;
    qint32 compare = 0;
    QString constant;
};

struct InfoRow {
    QString name;
    QString value;
};

struct LibraryRows {
    std::vector<FolderRow> folders;
    std::vector<FormulaRow> formulas;
    std::vector<ValueRow> values;
    std::vector<PropertyRow> properties;
    std::vector<ConditionRow> conditions;
    std::vector<ExpressionRow> expressions;
    std::vector<InfoRow> info;
    QStringList warnings;  ///< on what is read, with its place in the text, a line each
};

/// Reads the library text at `path`. Throws TextError, with the place, for anything that is not in
/// the format: a syntax error, an unknown key, a wrong type, a missing key, an identifier given
/// twice. Picture files are not looked at.
LibraryRows readLibraryText(const QString& path);

}  // namespace varo
