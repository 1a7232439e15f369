#include <unistd.h>

#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

#include "minihost/FilePolicy.h"
#include "minihost/MemoryBuffer.h"
#include "tests/minihost/TestFiles.h"

namespace minihost {
namespace {

using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;

// The first of a few usual character devices that really is one here; some containers
// replace /dev/null with a regular file. Null when there is none.
char const* FindCharacterDevice() {
    for (char const* path : {"/dev/null", "/dev/zero", "/dev/full", "/dev/urandom"}) {
        struct stat info {};
        if (::stat(path, &info) == 0 && S_ISCHR(info.st_mode)) {
            return path;
        }
    }
    return nullptr;
}

TEST(FilePolicy, GivesABufferForARegularFileOnlyAndNeverBlocks) {
    testing::TempDir dir;
    std::string const fifo = dir.Path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    std::string const unreadable = dir.Write("unreadable", "secret");
    ::chmod(unreadable.c_str(), 0);
    std::string const full = dir.Write("full", "abc");
    std::string const fileAsDirectory = full + "/";
    std::string const empty = dir.Write("empty", "");
    long const null = -1;
    char const* const device = FindCharacterDevice();
    struct Row {
        char const* name;
        char const* path;
        long expectedSize;
    } const rows[] = {
        {"null path", nullptr, null},
        {"empty path", "", null},
        {"missing", "/no/such/file", null},
        {"regular file with a trailing slash", fileAsDirectory.c_str(), null},
        {"directory", dir.Root().c_str(), null},
        {"fifo without a writer", fifo.c_str(), null},
        // Without a device here, the row repeats the missing-file case.
        {"character device", device != nullptr ? device : "/no/such/device", null},
        {"unreadable (root reads it)", unreadable.c_str(), ::geteuid() == 0 ? 6 : null},
        {"empty file", empty.c_str(), 0},
        {"file", full.c_str(), 3},
    };
    AutoRefPtr<FilePolicy> policy(new FilePolicy());
    long const liveBefore = MemoryBuffer::LiveCount();
    ::alarm(5);  // a load that blocks ends the program
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        AutoRefPtr<IDataRef> buffer(policy->Interface_LoadData(nullptr, row.path));
        EXPECT_EQ(buffer ? static_cast<long>(buffer->GetSize()) : null, row.expectedSize);
    }
    ::alarm(0);
    EXPECT_EQ(MemoryBuffer::LiveCount(), liveBefore);
}

}  // namespace
}  // namespace minihost
