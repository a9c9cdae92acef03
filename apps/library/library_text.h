#pragma once

#include "store/template.h"

#include <QIODevice>
#include <QString>
#include <QStringList>

/// A library as text: building a library file from it, adding it to one, and dumping a file to it.
/// docs/library-text.md describes the format.

namespace varo {

/// Builds the library that the text at `textPath` describes into the file `libraryPath`, replacing
/// a library or an empty file that is there, with `force` any regular file. The new file appears
/// complete or not at all; on failure the old one keeps its content. A library that another program
/// has locked is not replaced. Needs a QGuiApplication when the text names drawings. Returns
/// warnings on what was built, with the place in the text, a line each. Throws TextError or
/// data::Error.
QStringList buildLibrary(const QString& textPath, const QString& libraryPath, bool force = false,
                         LibraryFormat format = LibraryFormat::Sqlite);

/// What mergeLibrary() has added.
struct MergeReport {
    QStringList warnings;  ///< on what has been left out, a line each
    qint64 folders = 0;
    qint64 formulas = 0;
    qint64 namesakes = 0;  ///< of the formulas, those that have the name of one that was there
};

/// Adds the folders and formulas of the text at `textPath`, with their pictures, values, properties
/// and conditions, to the library at `libraryPath`, all or nothing. A folder that the library has
/// at the same place under the same name is that folder and stays as it is; formulas and other
/// folders are added behind those that are there. Identifiers are given anew. What the text says of
/// the library itself, and values and properties of nothing in the text, are left out. Throws
/// TextError or data::Error.
MergeReport mergeLibrary(const QString& textPath, const QString& libraryPath);

/// Writes the library's text to `out`, from which buildLibrary() makes a library with the same
/// rows. Holds the rows' numbers, the conditions and one text at a time in memory. The text is one
/// state of the library, whatever other programs do. Returns what has been left out, a line each
/// with table and row: rows with no identifier or one that another row has, and what is no number
/// where the text has numbers. Throws TextError when `out` does
/// not take the text, data::Error when the library cannot be read.
QStringList dumpLibrary(const QString& libraryPath, QIODevice& out);

/// What checkLibrary() found.
struct CheckReport {
    QStringList faults;  ///< one line each; empty when the library is sound
    QStringList warnings =
        {};  ///< one line each: what is evaluated otherwise than one would read it
    qint64 folders = 0;
    qint64 formulas = 0;
    qint64 pictures = 0;
};

/// Looks for everything in the file that the system would not have written: damage, missing tables,
/// references to nothing, folders inside themselves, order numbers and names used twice, pictures
/// that are none, texts over their limits. Looks at one state of the file and changes nothing. A
/// file that cannot be read is a fault like the others.
CheckReport checkLibrary(const QString& libraryPath);

}  // namespace varo
