#pragma once

#include "platform/data/access/page_file.h"

#include <QStringList>

namespace varo::access {

/// What is wrong with how the pages of the file are divided among the definitions, rows, long
/// values and indexes of its tables, the maps of these and the free pages: pages that have two
/// uses or none, and maps that mark what is of another kind. A sentence each; a danger that the
/// next change destroys something comes first, and of each kind some are told. Throws data::Error
/// when the catalog cannot be read.
QStringList checkPages(PageFile& file);

}  // namespace varo::access
