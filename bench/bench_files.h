#pragma once

#include "store/template.h"

#include <QString>

namespace varo::bench {

/// Writes a library of `count` folders in a tree eight wide.
void makeFolders(const QString& path, int count, LibraryFormat format = LibraryFormat::Sqlite);

/// Writes a library with one folder of `count` formulas.
void makeFormulas(const QString& path, int count, LibraryFormat format = LibraryFormat::Sqlite);

/// Adds the formulas of such a library.
void addFormulas(data::Connection& connection, int count);

/// A folder and a formula of a subtree: folders stand eight wide under the first one, identifiers
/// and numbers run from 1.
struct FolderRow {
    QString name;
    int parent;
    int order;
};
FolderRow subtreeFolder(int id);
struct FormulaRow {
    QString name;
    QString expression;
    QString memo;
};
FormulaRow subtreeFormula(int folder, int number);

/// Writes a library with one subtree of that many folders and formulas in each.
void makeSubtree(const QString& path, int folders, int formulasEach);

/// Writes a library with `rows` stored values: `perFormula` for each formula, under names that many
/// formulas share, and one formula that uses some of them.
void makeValues(const QString& path, int rows, int perFormula,
                LibraryFormat format = LibraryFormat::Sqlite);

/// Writes a library of so many folders in a tree eight wide, and formulas spread over them.
void makeFoldersAndFormulas(const QString& path, int folders, int formulas);

/// Writes a library with one folder of `count` formulas that have a picture each.
void makePictures(const QString& path, int count);

/// Writes a configuration file into `folder` that names these libraries.
void makeConfiguration(const QString& folder, const QStringList& libraries);

}  // namespace varo::bench
