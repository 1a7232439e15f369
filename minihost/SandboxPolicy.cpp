#include "minihost/SandboxPolicy.h"

#include <cstdlib>
#include <memory>
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

Tavrel::IDataRef* SandboxPolicy::Interface_LoadData(Tavrel::IContext* context, char const* path) {
    if (path == nullptr) {
        return FilePolicy::Interface_LoadData(context, nullptr);
    }
    std::string resolved;
    if (!ResolveRealPath(mBase, path, resolved)) {
        resolved.clear();
    }
    // NOTE: "" never resolves, so an unresolvable path is refused by Allows below while the
    // call is still counted like any other.
    return FilePolicy::Interface_LoadData(context, resolved.c_str());
}

bool SandboxPolicy::Allows(char const* path) const {
    std::string resolved;
    if (!ResolveRealPath(mBase, path, resolved)) {
        return false;
    }
    if (mAllowAll) {
        return true;
    }
    for (std::string const& directory : mAllowed) {
        if (IsInsideDirectory(resolved, directory)) {
            return true;
        }
    }
    return false;
}

}  // namespace minihost
