#pragma once

#include <QString>

#include <optional>

namespace varo {

/// Environment variable that names the shared folder in the place of the one that is found.
inline constexpr auto kSharedFolderVariable = "VARO_SHARED_FOLDER";

/// The folder of the files that all controls share, such as the template of new libraries: what the
/// environment names; else, while the program or shared object that holds this code lies in the
/// build tree, the folder of the build tree; else the folder share/varo beside the shared object or
/// beside the folder that it lies in; for code that is linked into the program, the folder that the
/// build installs to. Ends in a separator. Nothing when that folder does not exist.
std::optional<QString> GetVaroSharedFolder();

}  // namespace varo
