#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

#include "minihost/host/Context.h"
#include "minihost/host/SandboxPolicy.h"
#include "object/AutoRefPtr.h"
#include "testing/TestFiles.h"

namespace minihost {
namespace {

namespace fs = std::filesystem;
using tavrel_testing::TempDir;

#if defined(_WIN32)
constexpr bool kOnWindows = true;
#else
constexpr bool kOnWindows = false;
#endif

// A scratch tree, removed with everything in it at the end:
//   allowed/file, allowed/sub/deep, allowedx/file, outside/secret, "allowed\secret" (on
//   Windows the file secret in allowed, since a backslash separates there)
class Tree : public TempDir {
public:
    Tree() {
        for (char const* directory : {"allowed/sub", "allowedx", "outside"}) {
            fs::create_directories(Path(directory));
        }
        for (char const* file : {"allowed/file", "allowed/sub/deep", "allowedx/file",
                                 "outside/secret", "allowed\\secret"}) {
            Write(file, std::string("bytes of ") + file);
        }
    }

    // A path given as "@/x" stands for <root>/x; any other stays as it is.
    std::string Expand(std::string const& path) const {
        return path.rfind('@', 0) == 0 ? Path("") + path.substr(2) : path;
    }
};

// Whether the policy hands out data for path, through the host's context as the module
// asks for it.
bool Serves(SandboxPolicy& policy, std::string const& path) {
    Context context{Tavrel::AutoRefPtr<Tavrel::IPolicy>()};
    Tavrel::AutoRefPtr<Tavrel::IDataRef> data(policy.Interface_LoadData(&context, path.c_str()));
    return static_cast<bool>(data);
}

struct Row {
    SandboxPolicy& policy;
    std::string path;  // relative to the base, allowed/; "@" stands for the tree's root
    bool served;
};

void ExpectRows(Tree const& tree, std::vector<Row> const& rows) {
    for (Row const& row : rows) {
        EXPECT_EQ(Serves(row.policy, tree.Expand(row.path)), row.served)
            << "row " << &row - rows.data() << " " << row.path;
    }
}

TEST(SandboxPolicy, ServesOnlyFilesUnderTheAllowedDirectories) {
    Tree const tree;
    SandboxPolicy only(tree.Path("allowed"), {tree.Path("allowed")}, false);
    SandboxPolicy all(tree.Path("allowed"), {}, true);
    // Given with "..": stored resolved. A missing one allows nothing.
    SandboxPolicy moved(tree.Path("allowed"),
                        {tree.Path("allowedx/../allowedx"), tree.Path("no-such-directory")}, false);
    EXPECT_EQ(moved.allowedDirectories(), std::vector<std::string>{tree.Path("allowedx")});
    std::vector<Row> rows = {
        {only, "file", true},
        {only, "sub/deep", true},
        {only, "./sub//deep", true},
        {only, "@/allowed/file", true},      // absolute, inside
        {only, "../allowed/file", true},     // leaves and comes back
        {only, "../outside/secret", false},  // escape by ".."
        {only, "@/outside/secret", false},   // escape by an absolute path
        {only, "@/allowedx/file", false},    // a directory named with allowed's prefix
        // A backslash is an ordinary byte of a name, except on Windows, where it separates.
        {only, "@/allowed\\secret", kOnWindows},
        {only, "missing", false},
        {only, "", false},
        {only, ".", false},  // the directory itself is no file
        {all, "../outside/secret", true},
        {all, "missing", false},
        {moved, "../allowedx/file", true},
        {moved, "file", false},
    };
#if defined(_WIN32)
    tavrel_testing::WaitingPipe const pipe;
    std::vector<Row> const windowsRows = {
        // The check is on the path the system gives for the file, not on the name as written:
        // case-insensitive look-ups find the files, and their real names decide.
        {only, "@/ALLOWED/FILE", true},
        {only, "@/ALLOWEDX/file", false},
        // Devices are refused before anything is opened.
        {only, "NUL", false},
        {only, "sub/NUL", false},
        {all, "NUL", false},
        {all, "COM1", false},
        {all, pipe.Path(), false},
        {only, R"(\\?\)" + tree.Path("allowed/file"), false},
    };
    for (Row const& row : windowsRows) {
        rows.push_back(row);
    }
#else
    ASSERT_EQ(::mkfifo(tree.Path("allowed/fifo").c_str(), 0600), 0);
    rows.push_back({all, "fifo", false});  // no regular file; no blocking
#endif
    ExpectRows(tree, rows);
    long allRows = 0;
    for (Row const& row : rows) {
        allRows += &row.policy == &all ? 1 : 0;
    }
    EXPECT_EQ(all.loadCalls(), allRows) << "a refused load counts as well";
#if defined(_WIN32)
    EXPECT_TRUE(pipe.NeverConnected()) << "the sandbox connected to the pipe";
#endif
}

// Links are followed on the way, and the file where they lead is what is checked.
//   allowed/to-secret -> ../outside/secret, allowed/to-file -> file,
//   allowed/to-outside -> ../outside (a directory)
TEST(SandboxPolicy, FollowsLinksAndChecksWhereTheyLead) {
    Tree const tree;
    if (!tavrel_testing::MakeSymbolicLink("../outside/secret", tree.Path("allowed/to-secret"),
                                          false)) {
        GTEST_SKIP() << "this system made no symbolic link (on Windows that needs developer mode "
                        "or the right to make links; wine makes none)";
    }
    ASSERT_TRUE(tavrel_testing::MakeSymbolicLink("file", tree.Path("allowed/to-file"), false));
    ASSERT_TRUE(
        tavrel_testing::MakeSymbolicLink("../outside", tree.Path("allowed/to-outside"), true));
    SandboxPolicy only(tree.Path("allowed"), {tree.Path("allowed")}, false);
    SandboxPolicy all(tree.Path("allowed"), {}, true);
    // Given through a link: stored resolved.
    SandboxPolicy moved(tree.Path("allowed"),
                        {tree.Path("allowed/to-outside"), tree.Path("allowedx")}, false);
    EXPECT_EQ(moved.allowedDirectories(),
              (std::vector<std::string>{tree.Path("outside"), tree.Path("allowedx")}));
    ExpectRows(tree, {
                         {only, "to-file", true},             // a link that stays inside
                         {only, "to-secret", false},          // escape by a link to a file
                         {only, "to-outside/secret", false},  // escape by a link to a directory
                         {all, "to-secret", true},
                         {moved, "to-secret", true},  // from one allowed directory into another
                         {moved, "../allowedx/file", true},
                         {moved, "file", false},
                     });
}

TEST(SandboxPolicy, IsInsideDirectoryComparesWholeComponents) {
    struct InsideRow {
        std::string path, directory;
        bool inside;
    };
    std::vector<InsideRow> const rows = {
#if defined(_WIN32)
        {"C:\\a\\x", "C:\\a", true},
        {"C:\\a", "C:\\a", true},
        {"C:\\ab", "C:\\a", false},
        {"C:\\a/x", "C:\\a", false},  // the system gives no "/" in a real path
        {"C:", "C:\\a", false},
        {"C:\\x", "C:\\", true},
        {"C:\\A\\x", "C:\\a", false},  // the case counts
        {"D:\\a\\x", "C:\\a", false},
        {"\\\\srv\\share\\x", "\\\\srv\\share", true},
        {"\\\\srv\\sharex", "\\\\srv\\share", false},
        {"C:\\a\\x", "", false},
        {"", "C:\\a", false},
#else
        {"/tmp/a/x", "/tmp/a", true},
        {"/tmp/a", "/tmp/a", true},
        {"/tmp/ab", "/tmp/a", false},
        {"/tmp/a\\x", "/tmp/a", false},
        {"/tmp", "/tmp/a", false},
        {"/x", "/", true},
        {"/", "/", true},
        {"/tmp/a/x", "", false},
        {"", "/tmp", false},
        {"/tmp/x\\/y", "/tmp/x\\", true},
        {"/tmp/x\\y", "/tmp/x\\", false},
#endif
    };
    for (InsideRow const& row : rows) {
        EXPECT_EQ(IsInsideDirectory(row.path, row.directory), row.inside)
            << "row " << row.path << " in " << row.directory;
    }
}

}  // namespace
}  // namespace minihost
