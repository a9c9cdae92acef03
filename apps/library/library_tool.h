#pragma once

#include <QIODevice>
#include <QStringList>

namespace varo {

/// The program varo-library: runs the command in `arguments` (without the program's name), writes
/// what was asked for to `out` and complaints to `err`. Returns the exit code: 0 done, 1 the
/// command failed or found faults, 2 the arguments are wrong.
int runLibraryTool(const QStringList& arguments, QIODevice& out, QIODevice& err);

}  // namespace varo
