// Files for tests, fuzzers and benchmarks: TempDir, a fresh directory that is removed with
// everything in it when the object goes; MakeSymbolicLink, which tells whether the system made
// the link; on Windows WaitingPipe, a named pipe whose server waits for a client; and
// OpenDescriptors, which counts the file descriptors (on Windows the handles) of this process
// so that a test can see that whatever it opened was closed again. They make no file outside
// the directory, keep nothing open beyond their objects, and know nothing of the module or of
// minihost.
#pragma once

#include <string>
#include <string_view>

namespace tavrel_testing {

class TempDir {
public:
    // Makes <temporary directory>/<prefix>-XXXXXX, a name not taken yet with six random
    // letters and digits, that only the user may enter; its root resolved.
    //   TempDir()           => /tmp/tavrel-test-a1B2c3
    //   TempDir("sandbox")  => /tmp/sandbox-x9Y8z7;  Windows: C:\Users\u\Temp\sandbox-x9Y8z7
    //   no room, no rights  => throws std::runtime_error
    explicit TempDir(std::string_view prefix = "tavrel-test");
    // Removes the directory and everything in it; a failure is ignored.
    ~TempDir();
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    // The directory, resolved: no link, "." or ".." in it.
    // NOTE: the system's temporary directory may lie behind a link (as /tmp can); the root
    // is resolved so that it compares equal to what realpath and /proc/self/fd give (on
    // Windows, GetFinalPathNameByHandleW).
    std::string const& Root() const { return mPath; }

    // The path of name inside the directory, with the system's separator; nothing is made.
    //   "a"     => <root>/a
    //   "a/b"   => <root>/a/b  (Windows: <root>\a\b, every "/" made a "\")
    //   ""      => <root>/
    std::string Path(std::string_view name) const;

    // Writes bytes (NUL bytes included) to the file name, made or emptied, and gives its path.
    //   ("f", "")         => <root>/f, an empty file
    //   ("f", "a\0b")     => <root>/f, 3 bytes
    //   ("no/such", "x")  => throws std::runtime_error (the directory does not exist)
    std::string Write(std::string_view name, std::string_view bytes) const;

private:
    std::string mPath;
};

// Makes a symbolic link at link that leads to target, as written (a relative target is read
// from the link's directory); a link to a directory when toDirectory. False when the system
// makes none: Windows without developer mode or the right to make links, or wine, which takes
// the call and makes nothing.
//   ("../outside", "<root>/allowed/to-outside", true) => true on Linux
bool MakeSymbolicLink(std::string const& target, std::string const& link, bool toDirectory);

#if defined(_WIN32)
// A named pipe "\\.\pipe\<prefix>-<process>-<n>" with one instance, whose server waits for a
// client until the object goes: what a reader could wait on forever on Windows, which has no
// FIFO in its file system. Throws std::runtime_error when it cannot be made.
class WaitingPipe {
public:
    explicit WaitingPipe(std::string_view prefix = "tavrel-test");
    ~WaitingPipe();
    WaitingPipe(WaitingPipe const&) = delete;
    WaitingPipe& operator=(WaitingPipe const&) = delete;

    // "\\.\pipe\tavrel-test-1234-1"
    std::string const& Path() const { return mPath; }
    // Whether no client has connected so far.
    // NOTE: a client that came and left keeps the one instance busy until the server lets it
    // go, so this asks whether a new client can still connect.
    bool NeverConnected() const;

private:
    std::string mPath;
    void* mServer;
};
#endif

// How many file descriptors this process has open now, as /proc/self/fd lists them; on
// Windows how many handles of any kind (GetProcessHandleCount, or under wine, which answers
// that with 0, each handle value asked for in turn).
// NOTE: the descriptor that reads the list is counted too; only a difference between two
// counts means something.   open a file between two counts => second = first + 1
// No /proc => throws std::filesystem::filesystem_error.
long OpenDescriptors();

}  // namespace tavrel_testing
