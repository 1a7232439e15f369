// SandboxPolicy: the policy that keeps a script's Binary.MapFile inside the directories it
// is allowed. A path is first made absolute (a relative one against the base directory, the
// script's own) and resolved on the real file system, symbolic links and ".." followed, and
// only then checked: it must lie under one of the allowed directories by whole path
// components, so "/tmp/ab" is not under "/tmp/a". A refused path gives no data, as a missing
// file does, and the module reports it. It opens the resolved path, never the given text.
// It does not watch the file system: a directory renamed after the check is not noticed.
#pragma once

#include <string>
#include <vector>

#include "minihost/FilePolicy.h"

namespace minihost {

// path made absolute against base (when relative) and resolved with realpath, or false when
// that fails (a missing file, a dangling link, a component that is not a directory).
//   ("/etc", "passwd")     => "/etc/passwd"
//   (any, "/a/../etc/x")   => "/etc/x" (when it exists)
//   (any, "") or a path with no file behind it => false
bool ResolveRealPath(std::string const& base, std::string const& path, std::string& resolved);

// Whether resolved (an absolute path as ResolveRealPath gives it) lies in directory, itself
// resolved, or is that directory.
//   ("/tmp/a/x", "/tmp/a") => true;  ("/tmp/a", "/tmp/a") => true;  ("/tmp/ab", "/tmp/a")
//   => false;  ("/x", "/") => true;  ("/tmp/a\\x", "/tmp/a") => false (a backslash is an
//   ordinary byte of a file name here)
bool IsInsideDirectory(std::string const& resolved, std::string const& directory);

class SandboxPolicy final : public FilePolicy {
public:
    // base: the directory against which relative paths are read. allowed: the directories
    // whose files may be read; each is resolved now, and one that cannot be resolved allows
    // nothing. allowAll lifts the check (paths are still read against base).
    SandboxPolicy(std::string base, std::vector<std::string> const& allowed, bool allowAll);

    // The allowed directories as resolved.
    std::vector<std::string> const& allowedDirectories() const { return mAllowed; }

    // Resolves path against the base, then loads the resolved path as FilePolicy does (which
    // asks Allows). Null path => null; a path that does not resolve => null.
    Tavrel::IDataRef* Interface_LoadData(Tavrel::IContext* context, char const* path) override;

protected:
    // Resolves path against the base and checks it against the allowed directories.
    bool Allows(char const* path) const override;

private:
    std::string mBase;
    std::vector<std::string> mAllowed;
    bool mAllowAll;
};

}  // namespace minihost
