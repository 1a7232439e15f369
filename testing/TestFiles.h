// Files for tests, fuzzers and benchmarks: TempDir, a fresh directory that is removed with
// everything in it when the object goes, and OpenDescriptors, which counts the file
// descriptors of this process so that a test can see that whatever it opened was closed
// again. They make no file outside the directory, keep nothing open, and know nothing of the
// module or of minihost.
#pragma once

#include <string>
#include <string_view>

namespace tavrel_testing {

class TempDir {
public:
    // Makes <temporary directory>/<prefix>-XXXXXX (mkdtemp), its root resolved.
    //   TempDir()           => /tmp/tavrel-test-a1B2c3
    //   TempDir("sandbox")  => /tmp/sandbox-x9Y8z7
    //   no room, no rights  => throws std::runtime_error
    explicit TempDir(std::string_view prefix = "tavrel-test");
    // Removes the directory and everything in it; a failure is ignored.
    ~TempDir();
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    // The directory, resolved: no link, "." or ".." in it.
    // NOTE: the system's temporary directory may lie behind a link (as /tmp can); the root
    // is resolved so that it compares equal to what realpath and /proc/self/fd give.
    std::string const& Root() const { return mPath; }

    // The path of name inside the directory; nothing is made.
    //   "a"     => <root>/a
    //   "a/b"   => <root>/a/b
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

// How many file descriptors this process has open now, as /proc/self/fd lists them.
// NOTE: the descriptor that reads the list is counted too; only a difference between two
// counts means something.   open a file between two counts => second = first + 1
// No /proc => throws std::filesystem::filesystem_error.
long OpenDescriptors();

}  // namespace tavrel_testing
