#pragma once

#include "platform/data/connection.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace varo {

/// A table from which a variable's value is picked: a database file in the library's folder and a
/// table in it.
struct DataTableName {
    QString file;  ///< name of the file, without a folder
    QString table;

    bool operator==(const DataTableName&) const = default;
};

/// The parameter of a variable's source that names the table: file, "->", table.
QString parameterOf(const DataTableName& name);

/// The table that such a parameter names. Without "->" the whole text is the name of the file.
DataTableName dataTableOf(const QString& parameter);

/// Names of the files in `folder` that may hold data tables, by their patterns *.mdb and *.accdb,
/// in alphabetical order. A file whose name contains "->" could not be named and is left out.
QStringList dataFiles(const QString& folder);

/// Path of the data file `file` of `folder`; nothing when the name does not fit the patterns or has
/// a folder in it, and so could name a file elsewhere.
std::optional<QString> dataFilePath(const QString& folder, const QString& file);

/// Points `connection` at the data file, closing what was open. Returns false when the name is
/// refused (see dataFilePath()) or the file cannot be opened; `connection` then stays as it was.
bool openDataFile(const QString& folder, const QString& file, data::Connection& connection);

}  // namespace varo
