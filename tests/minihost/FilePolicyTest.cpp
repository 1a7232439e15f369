#include <gtest/gtest.h>
#include <string>
#include <vector>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

#include "minihost/host/FilePolicy.h"
#include "minihost/host/MemoryBuffer.h"
#include "testing/TestFiles.h"

namespace minihost {
namespace {

using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;
using tavrel_testing::OpenDescriptors;
using tavrel_testing::TempDir;

struct Row {
    std::string name;
    std::string path;
    long expectedSize;  // kNull: no buffer
};
constexpr long kNull = -1;

TEST(FilePolicy, GivesABufferForARegularFileOnlyAndNeverBlocks) {
    TempDir dir;
    std::vector<Row> rows = {
        {"missing", "/no/such/file", kNull},
        {"directory", dir.Root(), kNull},
        {"empty file", dir.Write("empty", ""), 0},
        {"file", dir.Write("full", "abc"), 3},
    };
#if defined(_WIN32)
    // Windows has no FIFO in its file system; its pipes and other devices have names of their
    // own, which the policy refuses without opening them.
    tavrel_testing::WaitingPipe const pipe;
    rows.insert(rows.end(),
                {
                    {"named pipe with a waiting server", pipe.Path(), kNull},
                    {"NUL", "NUL", kNull},
                    {"NUL in a directory", dir.Path("NUL"), kNull},
                    {"console", "CON", kNull},
                    {"serial port", "COM1", kNull},
                    {"a file by its device-namespace name", R"(\\?\)" + dir.Path("full"), kNull},
                });
#else
    std::string const fifo = dir.Path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    rows.push_back({"fifo without a writer", fifo, kNull});
#endif
    AutoRefPtr<FilePolicy> policy(new FilePolicy());
    auto const loadEveryRow = [&rows, &policy] {
        AutoRefPtr<IDataRef> const none(policy->Interface_LoadData(nullptr, nullptr));
        EXPECT_FALSE(none) << "null path";
        for (Row const& row : rows) {
            SCOPED_TRACE(row.name);
            AutoRefPtr<IDataRef> buffer(policy->Interface_LoadData(nullptr, row.path.c_str()));
            EXPECT_EQ(buffer ? static_cast<long>(buffer->GetSize()) : kNull, row.expectedSize);
        }
    };
    // NOTE: the system may keep a handle of its own from the first call of a kind (wine does,
    // from the first file opened), so the rows run once before the count is taken.
    loadEveryRow();
    long const liveBefore = MemoryBuffer::LiveCount();
    long const descriptors = OpenDescriptors();
    loadEveryRow();
    EXPECT_EQ(MemoryBuffer::LiveCount(), liveBefore);
    EXPECT_EQ(OpenDescriptors(), descriptors) << "a refused file is closed again";
#if defined(_WIN32)
    EXPECT_TRUE(pipe.NeverConnected()) << "the policy connected to the pipe";
#endif
}

}  // namespace
}  // namespace minihost
