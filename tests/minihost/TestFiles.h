// Files for tests: TempDir, a fresh directory for one test, removed with its content when the
// object goes; and OpenDescriptors, to see that whatever a test opened was closed again.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace minihost::testing {

class TempDir {
public:
    TempDir() : mPath((std::filesystem::temp_directory_path() / "minihost-XXXXXX").string()) {
        if (::mkdtemp(mPath.data()) == nullptr) {
            throw std::runtime_error("cannot make a temporary directory");
        }
        // The temporary directory may lie behind a link (as /tmp can): the root is resolved,
        // so that it compares equal to the paths that realpath gives.
        mPath = std::filesystem::canonical(mPath).string();
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    std::string const& Root() const { return mPath; }
    std::string Path(std::string_view name) const { return mPath + "/" + std::string(name); }
    // Writes bytes (NUL bytes included) to a new file and gives its path.
    std::string Write(std::string_view name, std::string_view bytes) const {
        std::ofstream(Path(name), std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return Path(name);
    }

private:
    std::string mPath;
};

// How many file descriptors this process has open.
inline long OpenDescriptors() {
    auto const fds = std::filesystem::directory_iterator("/proc/self/fd");
    return std::distance(begin(fds), end(fds));
}

}  // namespace minihost::testing
