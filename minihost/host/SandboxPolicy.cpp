#include "minihost/host/SandboxPolicy.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <utility>

#include "path/FSPath.h"

namespace minihost {

namespace {

// path as the system should look it up: relative paths are taken from base.
std::string Absolute(std::string const& base, std::string const& path) {
    if (path.empty() || path.front() == '/' || base.empty()) {
        return path;
    }
    return base.back() == '/' ? base + path : base + '/' + path;
}

// A path held as it is: the FSPath constructors would turn backslashes into slashes.
Tavrel::FSPath RawPath(std::string const& text) {
    Tavrel::FSPath path;
    path = std::string_view(text);
    return path;
}

// NOTE: FSPath counts a backslash as a separator too, so it calls "/tmp/a\x" a path under
// "/tmp/a". Here a backslash is part of a file name, so the byte behind the prefix must be a
// slash (or the directory must end in one, as "/" does).
bool SlashBehindPrefix(std::string const& resolved, std::string const& directory) {
    return resolved.size() == directory.size() || directory.back() == '/' ||
           resolved[directory.size()] == '/';
}

// The name through which the system reaches the very file behind fd.
std::string DescriptorLink(int fd) { return "/proc/self/fd/" + std::to_string(fd); }

// A descriptor that names the file at path, links followed, without opening it for reading
// (O_PATH: no device or FIFO code runs), or -1.
int FindFile(std::string const& path) { return ::open(path.c_str(), O_PATH | O_CLOEXEC); }

// Whether the file fd names is a regular file.
bool IsRegularFile(int fd) {
    struct stat info {};
    return ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
}

}  // namespace

bool ResolveRealPath(std::string const& base, std::string const& path, std::string& resolved) {
    std::string const absolute = Absolute(base, path);
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

// NOTE: the one place that asks the system for the path of an open file (a port to another
// system replaces only this). The text is where the file is now: a file renamed after it
// was opened shows its new place, and one removed shows " (deleted)" behind its old path.
bool RealPathOfDescriptor(int fd, std::string& path) {
    if (fd < 0) {
        return false;
    }
    std::string text(PATH_MAX, '\0');
    ssize_t const length = ::readlink(DescriptorLink(fd).c_str(), text.data(), text.size());
    if (length <= 0 || static_cast<size_t>(length) >= text.size() || text.front() != '/') {
        return false;
    }
    text.resize(static_cast<size_t>(length));
    path = std::move(text);
    return true;
}

bool IsInsideDirectory(std::string const& resolved, std::string const& directory) {
    if (directory.empty() || resolved.empty()) {
        return false;
    }
    return RawPath(resolved).StartsWithPath(RawPath(directory), false) &&
           SlashBehindPrefix(resolved, directory);
}

SandboxPolicy::SandboxPolicy(std::string base, std::vector<std::string> const& allowed,
                             bool allowAll)
    : mBase(std::move(base)), mAllowAll(allowAll) {
    for (std::string const& directory : allowed) {
        std::string resolved;
        if (ResolveRealPath(mBase, directory, resolved)) {
            mAllowed.push_back(std::move(resolved));
        }
    }
}

// NOTE: the check is made on the file already found, not on its name, and the file read is
// that same file; checking a resolved name and then opening the name again lets a directory
// swapped for a link in between bring in a file from outside. Links are followed on the way
// as before, so a link that stays inside, or leads from one allowed directory into another,
// is served. (Resolving "beneath" a directory, as openat2 can, would refuse those links.)
int SandboxPolicy::OpenForReading(char const* path) const {
    std::string const absolute = Absolute(mBase, path);
    if (mAllowAll) {
        return FilePolicy::OpenForReading(absolute.c_str());
    }
    int const found = FindFile(absolute);
    if (found < 0) {
        return -1;
    }
    int const fd = IsRegularFile(found) && IsAllowed(found) ? Reopen(found) : -1;
    ::close(found);
    return fd;
}

bool SandboxPolicy::IsAllowed(int found) const {
    std::string real;
    if (!RealPathOfDescriptor(found, real)) {
        return false;
    }
    return std::any_of(mAllowed.begin(), mAllowed.end(), [&real](std::string const& directory) {
        return IsInsideDirectory(real, directory);
    });
}

// NOTE: opening /proc/self/fd/N looks up no name: the system hands over the file that
// descriptor N already names, so what was checked is what is opened.
int SandboxPolicy::Reopen(int found) const {
    return FilePolicy::OpenForReading(DescriptorLink(found).c_str());
}

}  // namespace minihost
