#pragma once

#include "promise.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <unistd.h>

namespace varo::fuzz {

/// The content of the files of a folder, by their names. Links and the like have none.
using Files = std::map<std::string, std::string>;

/// A folder of this process with a file beside it that nothing may touch, and a folder for the
/// temporary files of the code under test, which must leave none. All are below the folder of
/// temporary files, so in memory when TMPDIR says so.
class Sandbox {
  public:
    Sandbox()
        : root_(std::filesystem::temp_directory_path() /
                ("varo-fuzz-" + std::to_string(getpid()))) {
        for (const char* folder : {"files", "outside", "temporary"}) {
            std::filesystem::create_directories(root_ / folder);
        }
        write("../outside/victim", kVictim);
        setenv("TMPDIR", (root_ / "temporary").c_str(), 1);
    }
    ~Sandbox() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    /// Path of a file in the folder; of the folder itself, with a separator, for "".
    std::string path(const std::string& name) const { return (root_ / "files" / name).string(); }

    void write(const std::string& name, std::string_view content) const {
        std::ofstream file(path(name), std::ios::binary | std::ios::trunc);
        file.write(content.data(), static_cast<std::streamsize>(content.size()));
        require(file.flush().good(), "the sandbox can be written to");
    }

    std::string read(const std::string& name) const { return contentOf(path(name)); }

    Files files() const { return filesIn(root_ / "files"); }

    /// The promises about all that is not in the folder.
    void requireNothingOutside() const {
        require(filesIn(root_ / "outside") == Files{{"victim", kVictim}},
                "nothing outside changes");
        require(std::filesystem::is_empty(root_ / "temporary"), "no temporary file stays");
    }

    /// Removes everything from the folder.
    void clear() const {
        for (const auto& entry : std::filesystem::directory_iterator(root_ / "files")) {
            std::filesystem::remove_all(entry.path());
        }
    }

  private:
    static constexpr auto kVictim = "of somebody else";

    static std::string contentOf(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary | std::ios::ate);
        std::string content(file ? static_cast<std::size_t>(file.tellg()) : 0, '\0');
        file.seekg(0);
        file.read(content.data(), std::ssize(content));
        return content;
    }

    static Files filesIn(const std::filesystem::path& folder) {
        Files found;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            std::string& content = found[entry.path().filename().string()];
            if (entry.is_regular_file() && !entry.is_symlink()) {
                content = contentOf(entry.path());
            }
        }
        return found;
    }

    std::filesystem::path root_;
};

}  // namespace varo::fuzz
