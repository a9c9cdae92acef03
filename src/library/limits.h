#pragma once

namespace varo {

/// Most characters of the texts that a library stores; they stand here alone.

inline constexpr int kFormulaNameLimit = 20;
/// Of the names of folders and of libraries.
inline constexpr int kFolderNameLimit = 40;
inline constexpr int kPropertyNameLimit = 50;
/// Of a formula, a description and the value of a variable.
inline constexpr int kTextLimit = 255;

}  // namespace varo
