#pragma once

#include <QString>

namespace varo::bench {

/// Writes a library of `count` folders in a tree eight wide.
void makeFolders(const QString& path, int count);

/// Writes a library with one folder of `count` formulas.
void makeFormulas(const QString& path, int count);

/// Writes a library with `rows` stored values: `perFormula` for each formula, under names that many
/// formulas share, and one formula that uses some of them.
void makeValues(const QString& path, int rows, int perFormula);

/// Writes a configuration file into `folder` that names these libraries.
void makeConfiguration(const QString& folder, const QStringList& libraries);

}  // namespace varo::bench
