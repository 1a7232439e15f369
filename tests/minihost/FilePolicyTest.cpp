#include <unistd.h>

#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

#include "minihost/host/FilePolicy.h"
#include "minihost/host/MemoryBuffer.h"
#include "testing/TestFiles.h"

namespace minihost {
namespace {

using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;
using tavrel_testing::OpenDescriptors;
using tavrel_testing::TempDir;

TEST(FilePolicy, GivesABufferForARegularFileOnlyAndNeverBlocks) {
    TempDir dir;
    std::string const fifo = dir.Path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    std::string const full = dir.Write("full", "abc");
    std::string const empty = dir.Write("empty", "");
    long const null = -1;
    struct Row {
        char const* name;
        char const* path;
        long expectedSize;
    } const rows[] = {
        {"null path", nullptr, null},
        {"missing", "/no/such/file", null},
        {"directory", dir.Root().c_str(), null},
        {"fifo without a writer", fifo.c_str(), null},
        {"empty file", empty.c_str(), 0},
        {"file", full.c_str(), 3},
    };
    AutoRefPtr<FilePolicy> policy(new FilePolicy());
    long const liveBefore = MemoryBuffer::LiveCount();
    long const descriptors = OpenDescriptors();
    ::alarm(5);  // a load that blocks ends the program
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        AutoRefPtr<IDataRef> buffer(policy->Interface_LoadData(nullptr, row.path));
        EXPECT_EQ(buffer ? static_cast<long>(buffer->GetSize()) : null, row.expectedSize);
    }
    ::alarm(0);
    EXPECT_EQ(MemoryBuffer::LiveCount(), liveBefore);
    EXPECT_EQ(OpenDescriptors(), descriptors) << "a refused file is closed again";
}

}  // namespace
}  // namespace minihost
