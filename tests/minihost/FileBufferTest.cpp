#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#if !defined(_WIN32)
#include <unistd.h>

#include <fstream>
#include <sys/resource.h>
#endif

#include "minihost/host/FileBuffer.h"
#include "minihost/host/FilePolicy.h"
#include "minihost/host/MemoryBuffer.h"
#include "testing/TestFiles.h"

namespace minihost {
namespace {

using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;
using tavrel_testing::OpenDescriptors;
using tavrel_testing::TempDir;

AutoRefPtr<IDataRef> Load(std::string const& path) {
    return AutoRefPtr<FilePolicy>(new FilePolicy())->LoadData(nullptr, path.c_str());
}

std::string ReadRange(AutoRefPtr<IDataRef> const& buffer, unsigned long count,
                      unsigned long long offset) {
    std::string bytes(count, '\0');
    bytes.resize(buffer->Read(bytes.data(), count, offset));
    return bytes;
}

AutoRefPtr<IDataRef> InMemory(std::string const& bytes, bool expose = true) {
    return AutoRefPtr<IDataRef>(new MemoryBuffer(bytes, {expose, 0}));
}

TEST(FileBuffer, ReadsRangesAndComparesWithOtherBuffers) {
    TempDir dir;
    std::string content = "0123x5" + std::string(8190, 'q');
    content[4] = '\0';
    AutoRefPtr<IDataRef> buffer = Load(dir.Write("f", content));
    ASSERT_TRUE(buffer);
    EXPECT_EQ(buffer->GetSize(), content.size());
    EXPECT_EQ(buffer->GetData(), nullptr);
    EXPECT_EQ(ReadRange(buffer, 3, 3), content.substr(3, 3));
    EXPECT_EQ(ReadRange(buffer, 5, content.size() - 2), "qq");
    EXPECT_EQ(ReadRange(buffer, 5, content.size()), "");
    EXPECT_EQ(ReadRange(buffer, 5, ~0ULL), "");
    EXPECT_TRUE(buffer->Interface_IsEqual(InMemory(content, false).get()));
}

// Reads after the file shrank come short, and a clone holds exactly what was read, keeping no
// room for the bytes the file no longer has.
TEST(FileBuffer, AFileThatShrinksGivesShortReadsAndASmallerClone) {
    for (auto const& [atOpen, now] :
         {std::pair<std::size_t, std::size_t>{100, 60}, {1 << 20, 10}}) {
        SCOPED_TRACE(std::to_string(atOpen) + " => " + std::to_string(now));
        TempDir dir;
        std::string const content(atOpen, 'a');
        std::string const path = dir.Write("f", content);
        AutoRefPtr<IDataRef> buffer = Load(path);
        ASSERT_TRUE(buffer);
        std::filesystem::resize_file(path, now);
        EXPECT_EQ(buffer->GetSize(), atOpen) << "the size at open";
        EXPECT_EQ(ReadRange(buffer, 10, now - 5).size(), 5u);
        EXPECT_EQ(ReadRange(buffer, 10, now + 10).size(), 0u);
        EXPECT_FALSE(buffer->Interface_IsEqual(InMemory(content).get()));
        AutoRefPtr<IDataRef> const clone = buffer->Clone();
        auto const& bytes = static_cast<MemoryBuffer*>(clone.get())->bytes();
        EXPECT_EQ(bytes, std::string(now, 'a'));
        EXPECT_LT(bytes.capacity(), now + atOpen / 2);
    }
}

// The growth of the process's memory from its present size to its peak while the clone is made.
// NOTE: the peak is the high-water mark of the whole process, which the other tests of this
// program may have raised above the present size; the growth is taken from the present size,
// which can only overstate what the clone cost. The clone's code is the same on every system,
// so one system's measure guards it.
TEST(FileBuffer, CloningAFileNeedsItsSizeInMemoryOnce) {
#if defined(_WIN32) || defined(TAVREL_THREAD_SANITIZER)
    // NOTE: ThreadSanitizer keeps shadow memory for every byte the clone writes, so the
    // process's peak says nothing of the clone's own.
    GTEST_SKIP() << "measured on POSIX systems, without ThreadSanitizer's shadow memory";
#else
    TempDir dir;
    unsigned long long const size = 256ULL << 20;
    std::filesystem::resize_file(dir.Write("sparse", ""), size);  // a hole: reads give zeros
    AutoRefPtr<IDataRef> const buffer = Load(dir.Path("sparse"));
    ASSERT_TRUE(buffer);
    long pages = -1;
    long resident = -1;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    EXPECT_EQ(buffer->Clone()->GetSize(), size);
    rusage usage{};
    ASSERT_TRUE(resident >= 0 && ::getrusage(RUSAGE_SELF, &usage) == 0) << "cannot measure";
    long const growthKiB = usage.ru_maxrss - resident * (::sysconf(_SC_PAGESIZE) >> 10);
    long const sizeKiB = static_cast<long>(size >> 10);
    RecordProperty("peakGrowthMiB", static_cast<int>(growthKiB >> 10));
    EXPECT_LE(growthKiB, sizeKiB * 6 / 5 + (16 << 10))
        << "peak growth " << (growthKiB >> 10) << " MiB for a clone of " << (sizeKiB >> 10)
        << " MiB";
#endif
}

TEST(FileBuffer, AssignMovesTheContentToMemoryAndClosesTheFile) {
    TempDir dir;
    std::string const path = dir.Write("f", "file bytes");
    long const descriptorsBefore = OpenDescriptors();
    long const liveBefore = MemoryBuffer::LiveCount();
    {
        AutoRefPtr<IDataRef> buffer = Load(path);
        AutoRefPtr<IDataRef> held = Load(path);
        ASSERT_TRUE(buffer && held);
        EXPECT_EQ(OpenDescriptors(), descriptorsBefore + 2);
        EXPECT_EQ(MemoryBuffer::LiveCount(), liveBefore + 2);
        buffer->Assign("new", 3);
        EXPECT_EQ(OpenDescriptors(), descriptorsBefore + 1);
        EXPECT_EQ(ReadRange(buffer, 10, 0), "new");
        EXPECT_EQ(ReadRange(buffer->Clone(), 10, 0), "new");
    }
    EXPECT_EQ(OpenDescriptors(), descriptorsBefore) << "the descriptor is closed on release";
    EXPECT_EQ(MemoryBuffer::LiveCount(), liveBefore);
}

}  // namespace
}  // namespace minihost
