#pragma once

namespace varo {

/// Most characters of the texts that a library stores; they stand here alone.

inline constexpr int kFormulaNameLimit = 20;
/// Of the names of folders and of libraries.
inline constexpr int kFolderNameLimit = 40;
inline constexpr int kPropertyNameLimit = 50;
/// Of a formula, a description and the value of a variable.
inline constexpr int kTextLimit = 255;

/// Most characters of a stored text that are shown, which is several times what the control stores;
/// a file of another program may hold texts of any length.
inline constexpr int kShownTextLimit = 2000;

}  // namespace varo
