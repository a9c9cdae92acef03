#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace varo::calc {

/// A file, or the standard input, that is read once from beginning to end.
class InputFile {
  public:
    /// Opens the file at `path`; "-" is the standard input. Throws CalcError.
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// What messages call it.
    const std::string& name() const { return name_; }

    /// Its size in bytes; nothing for what is not a file on a disk.
    std::optional<std::uint64_t> size() const;

    /// Reads what is there, at most as much as fits into `buffer`, and returns how many bytes that
    /// is; 0 at the end. Says on the standard error when a pipe or device has given nothing for a
    /// second. Throws CalcError.
    std::size_t read(std::span<char> buffer);

  private:
    void awaitFirstBytes();

    std::string name_;
    int descriptor_;
    bool hasBegun_ = false;
};

/// Writes `text` to the standard output. Throws CalcError.
void writeOutput(std::string_view text);

}  // namespace varo::calc
