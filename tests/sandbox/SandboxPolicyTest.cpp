#include <unistd.h>

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "minihost/host/Context.h"
#include "minihost/host/SandboxPolicy.h"
#include "object/AutoRefPtr.h"
#include "testing/TestFiles.h"

namespace minihost {
namespace {

namespace fs = std::filesystem;
using tavrel_testing::TempDir;

// A scratch tree, removed with everything in it at the end:
//   allowed/file, allowed/sub/deep, allowedx/file, outside/secret, "allowed\secret",
//   allowed/to-secret -> ../outside/secret, allowed/to-file -> file,
//   allowed/to-outside -> ../outside (a directory), allowed/fifo
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
        fs::create_symlink("../outside/secret", Path("allowed/to-secret"));
        fs::create_symlink("file", Path("allowed/to-file"));
        fs::create_directory_symlink("../outside", Path("allowed/to-outside"));
        ::mkfifo(Path("allowed/fifo").c_str(), 0600);
    }
};

// Whether the policy hands out data for path, through the host's context as the module
// asks for it.
bool Serves(SandboxPolicy& policy, std::string const& path) {
    Context context{Tavrel::AutoRefPtr<Tavrel::IPolicy>()};
    Tavrel::AutoRefPtr<Tavrel::IDataRef> data(policy.Interface_LoadData(&context, path.c_str()));
    return static_cast<bool>(data);
}

TEST(SandboxPolicy, ServesOnlyFilesUnderTheAllowedDirectories) {
    Tree const tree;
    SandboxPolicy only(tree.Path("allowed"), {tree.Path("allowed")}, false);
    SandboxPolicy all(tree.Path("allowed"), {}, true);
    // Given through a link and with "..": stored resolved. A missing one allows nothing.
    SandboxPolicy moved(tree.Path("allowed"),
                        {tree.Path("allowed/to-outside"), tree.Path("allowedx/../allowedx"),
                         tree.Path("no-such-directory")},
                        false);
    EXPECT_EQ(moved.allowedDirectories(),
              (std::vector<std::string>{tree.Path("outside"), tree.Path("allowedx")}));
    struct Row {
        SandboxPolicy& policy;
        std::string path;  // relative to the base, allowed/; "@" stands for the tree's root
        bool served;
    };
    Row const rows[] = {
        {only, "file", true},
        {only, "sub/deep", true},
        {only, "./sub//deep", true},
        {only, "@/allowed/file", true},      // absolute, inside
        {only, "to-file", true},             // a link that stays inside
        {only, "../allowed/file", true},     // leaves and comes back
        {only, "../outside/secret", false},  // escape by ".."
        {only, "@/outside/secret", false},   // escape by an absolute path
        {only, "to-secret", false},          // escape by a link to a file
        {only, "to-outside/secret", false},  // escape by a link to a directory
        {only, "@/allowedx/file", false},    // a directory named with allowed's prefix
        {only, "@/allowed\\secret", false},  // a backslash is no separator here
        {only, "missing", false},
        {only, "", false},
        {only, ".", false},  // the directory itself is no file
        {all, "to-secret", true},
        {all, "../outside/secret", true},
        {all, "missing", false},
        {all, "fifo", false},  // no regular file; no blocking
        {moved, "to-secret", true},
        {moved, "../allowedx/file", true},
        {moved, "file", false},
    };
    for (Row const& row : rows) {
        std::string path = row.path;
        if (path.rfind('@', 0) == 0) {
            path = tree.Path("") + path.substr(2);
        }
        EXPECT_EQ(Serves(row.policy, path), row.served) << "row " << &row - rows << " " << row.path;
    }
    EXPECT_EQ(all.loadCalls(), 4) << "a refused load counts as well";
}

TEST(SandboxPolicy, IsInsideDirectoryComparesWholeComponents) {
    struct Row {
        std::string path, directory;
        bool inside;
    };
    Row const rows[] = {
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
    };
    for (Row const& row : rows) {
        EXPECT_EQ(IsInsideDirectory(row.path, row.directory), row.inside)
            << "row " << row.path << " in " << row.directory;
    }
}

}  // namespace
}  // namespace minihost
