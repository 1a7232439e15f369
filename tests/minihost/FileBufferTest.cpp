#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// psapi.h needs windows.h first.
#include <psapi.h>
#else
#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
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
    std::string lastDiffers = content;
    lastDiffers.back() = 'x';
    AutoRefPtr<IDataRef> buffer = Load(dir.Write("f", content));
    ASSERT_TRUE(buffer);
    EXPECT_EQ(buffer->GetSize(), content.size());
    EXPECT_EQ(buffer->GetData(), nullptr);
    EXPECT_EQ(ReadRange(buffer, 3, 3), content.substr(3, 3));
    EXPECT_EQ(ReadRange(buffer, 5, content.size() - 2), "qq");
    EXPECT_EQ(ReadRange(buffer, 5, content.size()), "");
    EXPECT_EQ(ReadRange(buffer, 5, ~0ULL), "");
    EXPECT_TRUE(buffer->Interface_IsEqual(InMemory(content, false).get()));
    EXPECT_FALSE(buffer->Interface_IsEqual(InMemory(lastDiffers).get()));
}

TEST(FileBuffer, AFileThatShrinksGivesShortReads) {
    TempDir dir;
    std::string const content(100, 'a');
    std::string const path = dir.Write("f", content);
    AutoRefPtr<IDataRef> buffer = Load(path);
    ASSERT_TRUE(buffer);
    std::filesystem::resize_file(path, 60);
    EXPECT_EQ(buffer->GetSize(), 100u) << "the size at open";
    EXPECT_EQ(ReadRange(buffer, 10, 55).size(), 5u);
    EXPECT_EQ(ReadRange(buffer, 10, 70).size(), 0u);
    EXPECT_FALSE(buffer->Interface_IsEqual(InMemory(content).get()));
}

TEST(FileBuffer, ACloneOfAShrunkFileHoldsExactlyWhatWasRead) {
    struct Row {
        unsigned long long atOpen;
        unsigned long long now;
    };
    for (Row const row : {Row{100, 60}, Row{1 << 20, 10}}) {
        TempDir dir;
        std::string const path = dir.Write("f", std::string(row.atOpen, 'a'));
        AutoRefPtr<IDataRef> buffer = Load(path);
        ASSERT_TRUE(buffer);
        std::filesystem::resize_file(path, row.now);
        AutoRefPtr<IDataRef> const clone = buffer->Clone();
        auto const& bytes = static_cast<MemoryBuffer*>(clone.get())->bytes();
        EXPECT_EQ(bytes, std::string(row.now, 'a')) << row.atOpen << " => " << row.now;
        EXPECT_LT(bytes.capacity(), row.now + row.atOpen / 2)
            << "a clone keeps no room for bytes the file no longer has";
    }
}

// What cloning a file took (in a child process where the system can fork): its peak memory
// growth and the clone's size.
struct CloneCost {
    long peakGrowthKiB = -1;
    unsigned long long cloneSize = 0;
};

#if defined(_WIN32)

// NOTE: Windows has no fork, so the clone is measured in this process. The peak working set
// is the high-water mark of the whole process, which the other tests of this program may have
// raised above the present working set; the growth is taken from the present size before the
// clone to the peak after it, which can only overstate what the clone cost.
CloneCost MeasureClone(std::string const& path) {
    CloneCost cost;
    AutoRefPtr<IDataRef> const buffer = Load(path);
    PROCESS_MEMORY_COUNTERS before{};
    PROCESS_MEMORY_COUNTERS after{};
    if (!buffer || !::GetProcessMemoryInfo(::GetCurrentProcess(), &before, sizeof before)) {
        return cost;
    }
    AutoRefPtr<IDataRef> const clone = buffer->Clone();
    if (::GetProcessMemoryInfo(::GetCurrentProcess(), &after, sizeof after)) {
        cost.peakGrowthKiB =
            static_cast<long>((after.PeakWorkingSetSize - before.WorkingSetSize) >> 10);
        cost.cloneSize = clone ? clone->GetSize() : 0;
    }
    return cost;
}

#else

long PeakKiB() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// Runs in the forked child: clones the file at path and reports through fd.
[[noreturn]] void CloneAndReport(std::string const& path, int fd) {
    CloneCost cost;
    AutoRefPtr<IDataRef> const buffer = Load(path);
    long const before = PeakKiB();
    AutoRefPtr<IDataRef> const clone = buffer ? buffer->Clone() : AutoRefPtr<IDataRef>();
    cost.peakGrowthKiB = PeakKiB() - before;
    cost.cloneSize = clone ? clone->GetSize() : 0;
    bool const sent = ::write(fd, &cost, sizeof cost) == static_cast<ssize_t>(sizeof cost);
    ::_exit(sent ? 0 : 1);
}

// NOTE: ru_maxrss is the high-water mark of the whole process, which the other tests of this
// program have already raised; a fresh child starts from its current size.
CloneCost MeasureClone(std::string const& path) {
    int fds[2];
    if (::pipe(fds) != 0) {
        return {};
    }
    pid_t const child = ::fork();
    if (child == 0) {
        ::close(fds[0]);
        CloneAndReport(path, fds[1]);
    }
    ::close(fds[1]);
    CloneCost cost;
    pollfd ready{fds[0], POLLIN, 0};
    if (child > 0 && ::poll(&ready, 1, 120000) == 1 &&
        ::read(fds[0], &cost, sizeof cost) != static_cast<ssize_t>(sizeof cost)) {
        cost = {};
    }
    ::close(fds[0]);
    if (child > 0) {
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }
    return cost;
}

#endif

TEST(FileBuffer, CloningAFileNeedsItsSizeInMemoryOnce) {
#if defined(TAVREL_THREAD_SANITIZER)
    // NOTE: ThreadSanitizer keeps shadow memory for every byte the clone writes, so the
    // process's peak says nothing of the clone's own.
    GTEST_SKIP() << "the process's peak memory includes ThreadSanitizer's shadow memory";
#endif
    TempDir dir;
    unsigned long long const size = 256ULL << 20;
    std::string const path = dir.Path("sparse");
    dir.Write("sparse", "");
    std::filesystem::resize_file(path, size);  // a hole: no disk used, reads give zeros
    CloneCost const cost = MeasureClone(path);
    ASSERT_GE(cost.peakGrowthKiB, 0) << "the clone's cost could not be measured";
    EXPECT_EQ(cost.cloneSize, size);
    long const sizeKiB = static_cast<long>(size >> 10);
    RecordProperty("peakGrowthMiB", static_cast<int>(cost.peakGrowthKiB >> 10));
    EXPECT_LE(cost.peakGrowthKiB, sizeKiB * 6 / 5 + (16 << 10))
        << "peak growth " << (cost.peakGrowthKiB >> 10) << " MiB for a clone of " << (sizeKiB >> 10)
        << " MiB";
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
