// SystemFiles on POSIX systems: descriptors, pread, fstat, realpath and /proc/self/fd.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <utility>

#include "minihost/host/SystemFiles.h"

namespace minihost {

namespace {

// The name through which the system reaches the very file behind fd.
std::string DescriptorLink(int fd) { return "/proc/self/fd/" + std::to_string(fd); }

}  // namespace

// NOTE: O_NONBLOCK lets a FIFO open at once instead of waiting for a writer; O_NOCTTY keeps
// a terminal from becoming the controlling one.
FileHandle OpenFileForReading(std::string const& path) {
    return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
}

// NOTE: O_PATH looks the file up without opening it: no device or FIFO code runs.
FileHandle FindFile(std::string const& path) { return ::open(path.c_str(), O_PATH | O_CLOEXEC); }

// NOTE: opening /proc/self/fd/N looks up no name: the system hands over the file that
// descriptor N already names, so what was checked is what is opened.
FileHandle ReopenForReading(FileHandle found) { return OpenFileForReading(DescriptorLink(found)); }

long long RegularFileSize(FileHandle file) {
    struct stat info {};
    if (::fstat(file, &info) != 0 || !S_ISREG(info.st_mode)) {
        return -1;
    }
    return static_cast<long long>(info.st_size);
}

long long ReadAt(FileHandle file, char* destination, std::size_t count, unsigned long long offset) {
    ssize_t got;
    do {
        got = ::pread(file, destination, count, static_cast<off_t>(offset));
    } while (got < 0 && errno == EINTR);
    return got;
}

void CloseFile(FileHandle file) {
    if (file >= 0) {
        ::close(file);
    }
}

// NOTE: the text is where the file is now: a file renamed after it was opened shows its new
// place, and one removed shows " (deleted)" behind its old path.
bool RealPathOfFile(FileHandle file, std::string& path) {
    if (file < 0) {
        return false;
    }
    std::string text(PATH_MAX, '\0');
    ssize_t const length = ::readlink(DescriptorLink(file).c_str(), text.data(), text.size());
    if (length <= 0 || static_cast<size_t>(length) >= text.size() || text.front() != '/') {
        return false;
    }
    text.resize(static_cast<size_t>(length));
    path = std::move(text);
    return true;
}

std::string JoinPath(std::string const& base, std::string const& path) {
    if (path.empty() || path.front() == '/' || base.empty()) {
        return path;
    }
    return base.back() == '/' ? base + path : base + '/' + path;
}

bool ResolveRealPath(std::string const& base, std::string const& path, std::string& resolved) {
    std::string const absolute = JoinPath(base, path);
    if (absolute.empty()) {
        return false;
    }
    std::unique_ptr<char, decltype(&std::free)> real(::realpath(absolute.c_str(), nullptr),
                                                     &std::free);
    if (!real) {
        return false;
    }
    resolved = real.get();
    return true;
}

PathKind KindOfPath(std::string const& path) {
    struct stat info {};
    if (path.empty() || ::stat(path.c_str(), &info) != 0) {
        return PathKind::kMissing;
    }
    if (S_ISREG(info.st_mode)) {
        return PathKind::kRegularFile;
    }
    return S_ISDIR(info.st_mode) ? PathKind::kDirectory : PathKind::kOther;
}

}  // namespace minihost
