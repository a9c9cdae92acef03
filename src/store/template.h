#pragma once

#include "platform/data/connection.h"

#include <QString>
#include <QStringList>

namespace varo {

/// Name of the file that new libraries are copied from.
inline constexpr auto kTemplateFileName = "VaroPelm.tpl";

/// Version that a template's "DBVersion" record must carry.
inline constexpr auto kTemplateVersion = "2.0";

/// The statements that make the tables and indexes of a library, each as the file keeps it.
QStringList libraryStatements();

/// The formats in which libraries are made: that of SQLite, and those of the Access program, of
/// 2000 to 2003 (.mdb) and of 2007 and later (.accdb).
enum class LibraryFormat { Sqlite, Mdb, Accdb };

/// Makes a new, empty library file at `path`, with all tables, the indexes that the statements need
/// and the version record. The file appears complete or not at all. Throws data::Error when it
/// cannot be written or something is already there.
void createEmptyLibrary(const QString& path, LibraryFormat format = LibraryFormat::Sqlite);

/// Reads the item `itemName` of the template in `folder`. `ok` false: `errorText` says why. A
/// missing item leaves `value` as it was; NULL reads as "".
void ReadTemplateInfo(const QString& folder, const QString& itemName, QString& value,
                      QString& errorText, bool& ok);

}  // namespace varo
