// SandboxPolicy: the policy that keeps a script's Binary.MapFile inside the directories it
// is allowed. A path is made absolute (a relative one against the base directory, the
// script's own) and looked up once, symbolic links and ".." followed, into a descriptor that
// only names the file: nothing is opened for reading yet, so no device or FIFO is touched.
// The check is made on that descriptor: the file must be a regular one, and the real path
// the system gives for it must lie under one of the allowed directories by whole path
// components, so "/tmp/ab" is not under "/tmp/a". Only then is that same file opened for
// reading, through the descriptor, never by its name again: a directory swapped for a link
// between the check and the open cannot bring in a file from elsewhere, since what is
// checked is what is read. Without /proc, where the system tells the path behind a
// descriptor, every path is refused. A refused path gives no data, as a missing file does,
// and the module reports it.
#pragma once

#include <string>
#include <vector>

#include "minihost/host/FilePolicy.h"

namespace minihost {

// path made absolute against base (when relative) and resolved with realpath, or false when
// that fails (a missing file, a dangling link, a component that is not a directory).
//   ("/etc", "passwd")     => "/etc/passwd"
//   (any, "/a/../etc/x")   => "/etc/x" (when it exists)
//   (any, "") or a path with no file behind it => false
bool ResolveRealPath(std::string const& base, std::string const& path, std::string& resolved);

// The real path of the file behind the open descriptor fd, as the system names it now, or
// false when it cannot tell (no /proc, a closed descriptor, a path too long to give).
//   fd of "/tmp/a/f" opened through a link "/tmp/l" -> "/tmp/a" => "/tmp/a/f"
//   the file renamed to "/tmp/b/f" after the open                => "/tmp/b/f"
//   -1, or a descriptor that is not open                         => false
bool RealPathOfDescriptor(int fd, std::string& path);

// Whether resolved (an absolute path as ResolveRealPath or RealPathOfDescriptor gives it)
// lies in directory, itself resolved, or is that directory.
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

protected:
    // Opens path, read against the base, for reading when the file it names is a regular
    // file under an allowed directory (any file with allowAll), else -1.
    //   "sub/f", a file under an allowed directory => a descriptor
    //   a link to a file outside, "../x" leaving, a missing file, "", "." => -1
    //   a FIFO or a device under an allowed directory => -1, never opened for reading
    //   (with allowAll it is opened as FilePolicy does, which then refuses it)
    int OpenForReading(char const* path) const override;

private:
    // Whether found (a descriptor naming a file) has its real path under an allowed
    // directory.
    bool IsAllowed(int found) const;
    // A new read-only descriptor for the very file found names, or -1.
    int Reopen(int found) const;

    std::string mBase;
    std::vector<std::string> mAllowed;
    bool mAllowAll;
};

}  // namespace minihost
