#include "minihost/host/SandboxPolicy.h"

#include <algorithm>
#include <utility>

namespace minihost {

bool IsInsideDirectory(std::string const& resolved, std::string const& directory) {
    if (directory.empty() || resolved.size() < directory.size() ||
        resolved.compare(0, directory.size(), directory) != 0) {
        return false;
    }
    // A whole component: nothing behind the prefix, a separator right behind it, or a
    // directory that ends in one ("/", "C:\").
    return resolved.size() == directory.size() || directory.back() == kPathSeparator ||
           resolved[directory.size()] == kPathSeparator;
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
FileHandle SandboxPolicy::OpenForReading(char const* path) const {
    std::string const absolute = JoinPath(mBase, path);
    if (mAllowAll) {
        return FilePolicy::OpenForReading(absolute.c_str());
    }
    FileHandle const found = FindFile(absolute);
    if (found == kNoFile) {
        return kNoFile;
    }
    bool const regular = RegularFileSize(found) >= 0;
    bool const allowed = regular && IsAllowed(found);
    FileHandle const file = allowed ? ReopenForReading(found) : kNoFile;
    CloseFile(found);
    if (regular && !allowed) {
        std::lock_guard<std::mutex> const lock(mRefusedLock);
        mRefused.emplace_back(path);
    }
    return file;
}

std::vector<std::string> SandboxPolicy::TakeRefusals() {
    std::lock_guard<std::mutex> const lock(mRefusedLock);
    return std::exchange(mRefused, {});
}

bool SandboxPolicy::IsAllowed(FileHandle found) const {
    std::string real;
    if (!RealPathOfFile(found, real)) {
        return false;
    }
    return std::any_of(mAllowed.begin(), mAllowed.end(), [&real](std::string const& directory) {
        return IsInsideDirectory(real, directory);
    });
}

}  // namespace minihost
