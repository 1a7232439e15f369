// SystemFiles: the questions the stand-in host asks the system about files, one function
// each, so that the file policy, the sandbox and the file buffer read the same on every
// platform. SystemFiles_posix.cpp answers them with open, pread, fstat, realpath and
// /proc/self/fd; SystemFiles_win.cpp with CreateFileW, ReadFile, GetFileType, ReOpenFile and
// GetFinalPathNameByHandleW. A file is held as a FileHandle: a descriptor on POSIX systems,
// the value of a HANDLE on Windows (so that no header needs windows.h). Paths are bytes on
// POSIX systems and UTF-8 on Windows. It decides nothing about which files may be read: the
// policies do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace minihost {

#if defined(_WIN32)
using FileHandle = std::intptr_t;  // a HANDLE, as a number
constexpr char kPathSeparator = '\\';
#else
using FileHandle = int;  // a file descriptor
constexpr char kPathSeparator = '/';
#endif
// No file. NOTE: also INVALID_HANDLE_VALUE, which is -1 as a number.
constexpr FileHandle kNoFile = -1;

// A new handle for reading path as the system looks it up, links followed, or kNoFile. It never
// waits, never makes a terminal the controlling one and is not inherited by child programs.
//   "" / missing / unreadable => kNoFile;  a FIFO without a writer => a handle, at once
//   Windows: a directory => kNoFile; a device ("NUL", "C:\x\COM1", "\\.\pipe\p", any path in
//   "\\.\" or "\\?\") => kNoFile, without anything being opened; a path that is no UTF-8
//   => kNoFile
FileHandle OpenFileForReading(std::string const& path);

// A new handle that names the file at path, links followed, without opening it for reading
// (O_PATH; on Windows opened for its attributes only), so that no device or FIFO code runs;
// kNoFile when there is none. Windows: a directory or a device => kNoFile, as above.
FileHandle FindFile(std::string const& path);

// A new handle for reading the very file that found names, reached through found and no name
// (/proc/self/fd/N; ReOpenFile on Windows), or kNoFile. Never waits, as OpenFileForReading.
FileHandle ReopenForReading(FileHandle found);

// The size of the regular file behind file, or -1 for anything else: a directory, FIFO,
// device or socket (on Windows any file type but a disk file), or a handle it cannot ask.
//   a file of 3 bytes => 3;  an empty file => 0;  kNoFile => -1
long long RegularFileSize(FileHandle file);

// One read of at most count bytes at offset, repeated while a signal interrupts it: the
// number of bytes read, 0 at the end of the file, -1 on an error. It does not move a file
// position that other reads depend on, so reads from several threads are safe.
long long ReadAt(FileHandle file, char* destination, std::size_t count, unsigned long long offset);

// Closes file; kNoFile => nothing.
void CloseFile(FileHandle file);

// The real path of the file behind file, as the system names it now, or false when it cannot
// tell (no /proc, a closed handle, a path the system cannot give).
//   a handle of "/tmp/a/f" opened through a link "/tmp/l" -> "/tmp/a" => "/tmp/a/f"
//   the file renamed to "/tmp/b/f" after the open                      => "/tmp/b/f"
//   Windows: "\\?\C:\a\f" as the system gives it => "C:\a\f"; "\\?\UNC\s\h\f" => "\\s\h\f"
//   kNoFile, or a handle that is not open => false
bool RealPathOfFile(FileHandle file, std::string& path);

// path made absolute against base (when relative): a path that starts at the root ("/x"; on
// Windows also "\x", "C:\x", "C:x" and "\\server\share") is kept as it is.
//   ("/a", "b") => "/a/b";  ("/a/", "b") => "/a/b";  (any, "/b") => "/b";  ("", "b") => "b"
//   Windows: ("C:\a", "b") => "C:\a\b";  ("C:\a", "D:\b") => "D:\b"
std::string JoinPath(std::string const& base, std::string const& path);

// path made absolute against base and resolved, links and ".." followed, or false when that
// fails (a missing file, a dangling link, a component that is not a directory).
//   ("/etc", "passwd")     => "/etc/passwd"
//   (any, "/a/../etc/x")   => "/etc/x" (when it exists)
//   (any, "") or a path with no file behind it => false
//   Windows: the path the system gives for the opened file, as RealPathOfFile
bool ResolveRealPath(std::string const& base, std::string const& path, std::string& resolved);

enum class PathKind { kMissing, kRegularFile, kDirectory, kOther };

// What path names, links followed, found without opening it for reading.
//   a file => kRegularFile;  "/" => kDirectory;  "/dev/null", a FIFO => kOther;
//   "", missing => kMissing;  Windows: "NUL" => kOther
PathKind KindOfPath(std::string const& path);

}  // namespace minihost
