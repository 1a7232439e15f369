// The sandbox policy of minihost on a scratch tree of files, directories and links: which
// paths it serves, and that it never serves the outside while a directory is swapped for a link.
#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>

#include <sys/stat.h>
#endif

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "minihost/host/Context.h"
#include "minihost/host/SandboxPolicy.h"
#include "object/AutoRefPtr.h"
#include "testing/TestFiles.h"

namespace minihost {
namespace {

namespace fs = std::filesystem;
using tavrel_testing::OpenDescriptors;
using tavrel_testing::TempDir;

// Where a backslash separates the names of a path.
constexpr bool kOnWindows = kPathSeparator == '\\';

// Whether the policy hands out data for each path (relative to its base, allowed/), through
// the host's context as the module asks for it, on a scratch tree:
//   allowed/file, allowed/sub/deep, allowedx/file, outside/secret, "allowed\\secret" (on
//   Windows the file secret in allowed, since a backslash separates there), and where the
//   system makes links: allowed/to-secret -> ../outside/secret, allowed/to-file -> file,
//   allowed/to-outside -> ../outside (a directory). Links are followed on the way, and the
//   file where they lead is what is checked.
TEST(SandboxPolicy, ServesOnlyFilesUnderTheAllowedDirectories) {
    TempDir const tree;
    for (char const* directory : {"allowed/sub", "allowedx", "outside"}) {
        fs::create_directories(tree.Path(directory));
    }
    for (char const* file : {"allowed/file", "allowed/sub/deep", "allowedx/file", "outside/secret",
                             "allowed\\secret"}) {
        tree.Write(file, std::string("bytes of ") + file);
    }
    using tavrel_testing::MakeSymbolicLink;
    bool const links =
        MakeSymbolicLink("../outside/secret", tree.Path("allowed/to-secret"), false) &&
        MakeSymbolicLink("file", tree.Path("allowed/to-file"), false) &&
        MakeSymbolicLink("../outside", tree.Path("allowed/to-outside"), true);
    SandboxPolicy only(tree.Path("allowed"), {tree.Path("allowed")}, false);
    SandboxPolicy all(tree.Path("allowed"), {}, true);
    // Given with ".." or through a link: resolved, so that the files under them are found
    // inside. A missing one allows nothing.
    std::string const linked = links ? "allowed/to-outside" : "outside";
    SandboxPolicy moved(
        tree.Path("allowed"),
        {tree.Path("allowedx/../allowedx"), tree.Path("no-such-directory"), tree.Path(linked)},
        false);
#if defined(_WIN32)
    tavrel_testing::WaitingPipe const pipe;
#else
    ASSERT_EQ(::mkfifo(tree.Path("allowed/fifo").c_str(), 0600), 0);
#endif
    struct Row {
        SandboxPolicy* policy;
        std::string path;
        bool served;
    };
    std::vector<Row> rows = {
        {&only, "file", true},
        {&only, tree.Path("allowed/file"), true},     // absolute, inside
        {&only, "../allowed/file", true},             // leaves and comes back
        {&only, "../outside/secret", false},          // escape by ".."
        {&only, tree.Path("outside/secret"), false},  // escape by an absolute path
        {&only, tree.Path("allowedx/file"), false},   // a directory named with allowed's prefix
        // A backslash is an ordinary byte of a name, except on Windows, where it separates.
        {&only, tree.Path("allowed\\secret"), kOnWindows},
        {&only, "missing", false},
        {&only, ".", false},  // the directory itself is no file
        {&all, "../outside/secret", true},
        {&moved, "../allowedx/file", true},
        {&moved, "../outside/secret", true},
        {&moved, "file", false},
#if defined(_WIN32)
        // The check is on the path the system gives for the file, not on the name as written:
        // case-insensitive look-ups find the files, and their real names decide.
        {&only, tree.Path("ALLOWED/FILE"), true},
        {&only, tree.Path("ALLOWEDX/file"), false},
        // Devices are refused before anything is opened.
        {&only, "NUL", false},
        {&only, "sub/NUL", false},
        {&all, "COM1", false},
        {&all, pipe.Path(), false},
        {&only, R"(\\?\)" + tree.Path("allowed/file"), false},
#else
        {&all, "fifo", false},  // no regular file; no blocking
#endif
    };
    if (links) {
        rows.insert(rows.end(),
                    {
                        {&only, "to-file", true},             // stays inside
                        {&only, "to-secret", false},          // escape by a link to a file
                        {&only, "to-outside/secret", false},  // by a link to a directory
                        {&moved, "to-secret", true},  // from one allowed directory into another
                    });
    }
    for (Row const& row : rows) {
        Context context{Tavrel::AutoRefPtr<Tavrel::IPolicy>()};
        Tavrel::AutoRefPtr<Tavrel::IDataRef> data(
            row.policy->Interface_LoadData(&context, row.path.c_str()));
        EXPECT_EQ(static_cast<bool>(data), row.served)
            << "row " << &row - rows.data() << " " << row.path;
    }
#if defined(_WIN32)
    EXPECT_TRUE(pipe.NeverConnected()) << "the sandbox connected to the pipe";
#endif
}

// The edges that no path of the tree above reaches: the directory itself, the root, empty
// strings, a name that ends in a backslash.
TEST(SandboxPolicy, IsInsideDirectoryComparesWholeComponents) {
    struct InsideRow {
        std::string path, directory;
        bool inside;
    };
    std::vector<InsideRow> const rows = {
#if defined(_WIN32)
        {"C:\\a", "C:\\a", true},
        {"C:\\a/x", "C:\\a", false},  // the system gives no "/" in a real path
        {"C:\\x", "C:\\", true},
        {"C:\\A\\x", "C:\\a", false},  // the case counts
        {"D:\\a\\x", "C:\\a", false},
        {"\\\\srv\\share\\x", "\\\\srv\\share", true},
        {"\\\\srv\\sharex", "\\\\srv\\share", false}
#else
        {"/tmp/a", "/tmp/a", true},
        {"/tmp", "/tmp/a", false},
        {"/x", "/", true},
        {"/tmp/a/x", "", false},
        {"/tmp/x\\y", "/tmp/x\\", false}
#endif
    };
    for (InsideRow const& row : rows) {
        EXPECT_EQ(IsInsideDirectory(row.path, row.directory), row.inside)
            << "row " << row.path << " in " << row.directory;
    }
}

// Swaps the two names a and b: "" when done, else why not.
#if defined(_WIN32)
// NOTE: Windows cannot exchange two names at once; three renames do it, and in between a
// load meets no d at all, which it refuses like any missing file.
std::string Exchange(std::string const& a, std::string const& b) {
    std::wstring const first = fs::path(a).wstring(), second = fs::path(b).wstring();
    std::wstring const aside = first + L".swap";
    if (!::MoveFileExW(first.c_str(), aside.c_str(), 0)) {
        return "error " + std::to_string(::GetLastError());
    }
    if (::MoveFileExW(second.c_str(), first.c_str(), 0) &&
        ::MoveFileExW(aside.c_str(), second.c_str(), 0)) {
        return "";
    }
    std::string const why = "error " + std::to_string(::GetLastError());
    ::MoveFileExW(aside.c_str(), first.c_str(), 0);
    return why;
}
#else
// Atomically (RENAME_EXCHANGE).
std::string Exchange(std::string const& a, std::string const& b) {
    bool const done = ::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0;
    return done ? "" : std::strerror(errno);
}
#endif

// The sandbox must read the file it checked. One thread swaps the real directory allowed/d
// (holding f, "inside") with allowed/link, a link to outside (holding f, "SECRET!", one byte
// longer), while
// loads of "d/f" run: a load that checks the path and then opens it again by name would at
// times open outside/f.
TEST(SandboxPolicy, NeverServesTheOutsideWhileADirectoryIsSwappedForALink) {
    TempDir tree;
    fs::create_directories(tree.Path("allowed/d"));
    fs::create_directories(tree.Path("outside"));
    tree.Write("allowed/d/f", "inside");
    tree.Write("outside/f", "SECRET!");
    if (!tavrel_testing::MakeSymbolicLink("../outside", tree.Path("allowed/link"), true)) {
        GTEST_SKIP() << "this system made no symbolic link (on Windows that needs developer mode "
                        "or the right to make links; wine makes none)";
    }
    std::string const d = tree.Path("allowed/d"), link = tree.Path("allowed/link");
    if (std::string const why = Exchange(d, link); !why.empty()) {
#if !defined(_WIN32)
        ASSERT_TRUE(errno == EINVAL || errno == ENOSYS) << why;
#endif
        GTEST_SKIP() << "the file system cannot exchange two names: " << why;
    }
    ASSERT_EQ(Exchange(d, link), "");

    SandboxPolicy policy(tree.Path("allowed"), {tree.Path("allowed")}, false);
    Context context{Tavrel::AutoRefPtr<Tavrel::IPolicy>()};
    long const descriptors = OpenDescriptors();
    long served = 0, refused = 0, leaked = 0;
    std::atomic<bool> stop{false};
    std::thread swapper([&] {
        while (!stop.load()) {
            Exchange(d, link);
        }
    });
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    for (int load = 0; load < 100000 && std::chrono::steady_clock::now() < deadline; ++load) {
        Tavrel::AutoRefPtr<Tavrel::IDataRef> data(policy.Interface_LoadData(&context, "d/f"));
        ++(!data ? refused : data->GetSize() == 6 ? served : leaked);
    }
    stop.store(true);
    swapper.join();
    EXPECT_EQ(leaked, 0) << "loads that read outside/f (" << served << " served inside)";
    // The race really ran: the loads met both the directory and the link (refused: outside).
    EXPECT_GT(served, 0);
    EXPECT_GT(refused, 0);
    EXPECT_EQ(OpenDescriptors(), descriptors) << "every refused file is closed";
}

}  // namespace
}  // namespace minihost
