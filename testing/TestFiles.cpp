#include "testing/TestFiles.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace tavrel_testing {

TempDir::TempDir(std::string_view prefix)
    : mPath((std::filesystem::temp_directory_path() / (std::string(prefix) + "-XXXXXX")).string()) {
    if (::mkdtemp(mPath.data()) == nullptr) {
        throw std::runtime_error("cannot make a temporary directory " + mPath);
    }
    mPath = std::filesystem::canonical(mPath).string();
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
}

std::string TempDir::Path(std::string_view name) const { return mPath + "/" + std::string(name); }

std::string TempDir::Write(std::string_view name, std::string_view bytes) const {
    std::string path = Path(name);
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path);
    }
    return path;
}

long OpenDescriptors() {
    auto const fds = std::filesystem::directory_iterator("/proc/self/fd");
    return std::distance(begin(fds), end(fds));
}

}  // namespace tavrel_testing
