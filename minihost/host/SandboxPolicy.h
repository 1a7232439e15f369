// SandboxPolicy: the policy that keeps a script's Binary.MapFile inside the directories it
// is allowed. A path is made absolute (a relative one against the base directory, the
// script's own) and looked up once, symbolic links and ".." followed, into a handle that
// only names the file: nothing is opened for reading yet, so no device or FIFO is touched.
// The check is made on that handle: the file must be a regular one, and the real path the
// system gives for it (/proc/self/fd; GetFinalPathNameByHandleW on Windows) must lie under
// one of the allowed directories by whole path components, so "/tmp/ab" is not under
// "/tmp/a". Only then is that same file opened for reading, through the handle, never by its
// name again: a directory swapped for a link between the check and the open cannot bring in
// a file from elsewhere, since what is checked is what is read. Where the system cannot tell
// the path behind a handle (no /proc), every path is refused. A refused path gives no data,
// as a missing file does, and the module reports it; the policy keeps the path, so that the
// program can tell the user which option would let it in. On Windows, names of devices ("NUL",
// "\\.\pipe\p", anything in "\\.\" or "\\?\") are refused before anything is opened.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "minihost/host/FilePolicy.h"
#include "minihost/host/SystemFiles.h"

namespace minihost {

// Whether resolved (an absolute path as ResolveRealPath or RealPathOfFile gives it) lies in
// directory, itself resolved, or is that directory. Only kPathSeparator separates, and the
// bytes are compared exactly.
//   ("/tmp/a/x", "/tmp/a") => true;  ("/tmp/a", "/tmp/a") => true;  ("/tmp/ab", "/tmp/a")
//   => false;  ("/x", "/") => true;  ("/tmp/a\\x", "/tmp/a") => false (a backslash is an
//   ordinary byte of a file name here);  "" on either side => false
//   Windows: ("C:\a\x", "C:\a") => true;  ("C:\x", "C:\") => true;  ("C:\A\x", "C:\a") =>
//   false;  ("C:\a/x", "C:\a") => false (the system gives no "/" in a real path)
// NOTE: on Windows too the case counts. Both sides are names that the system gives for open
// files, so a file in an allowed directory shows that directory's name with the very same
// case; folding case would let "C:\Allowed" pass for "C:\allowed", which are two directories
// where a directory is case-sensitive (NTFS can make one so).
bool IsInsideDirectory(std::string const& resolved, std::string const& directory);

class SandboxPolicy final : public FilePolicy {
public:
    // base: the directory against which relative paths are read. allowed: the directories
    // whose files may be read; each is resolved now, and one that cannot be resolved allows
    // nothing. allowAll lifts the check (paths are still read against base).
    SandboxPolicy(std::string base, std::vector<std::string> const& allowed, bool allowAll);

    // The allowed directories as resolved.
    std::vector<std::string> const& allowedDirectories() const { return mAllowed; }

    // The paths, as the script gave them, of the regular files refused for lying outside the
    // allowed directories since the last call, oldest first; each is given out once. A
    // missing file, a directory, a FIFO or a device is no refusal of the sandbox.
    //   MapFile("/etc/passwd") => {"/etc/passwd"}, then {};  MapFile("missing") => {}
    std::vector<std::string> TakeRefusals();

protected:
    // Opens path, read against the base, for reading when the file it names is a regular
    // file under an allowed directory (any file with allowAll), else kNoFile.
    //   "sub/f", a file under an allowed directory => a handle
    //   a link to a file outside, "../x" leaving, a missing file, "", "." => kNoFile
    //   a FIFO or a device under an allowed directory => kNoFile, never opened for reading
    //   (with allowAll it is opened as FilePolicy does, which then refuses it)
    FileHandle OpenForReading(char const* path) const override;

private:
    // Whether found (a handle naming a file) has its real path under an allowed directory.
    bool IsAllowed(FileHandle found) const;

    std::string mBase;
    std::vector<std::string> mAllowed;
    bool mAllowAll;
    mutable std::mutex mRefusedLock;
    mutable std::vector<std::string> mRefused;
};

}  // namespace minihost
