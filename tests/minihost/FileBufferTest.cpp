#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "minihost/FileBuffer.h"
#include "minihost/FilePolicy.h"
#include "minihost/MemoryBuffer.h"
#include "tests/minihost/TestFiles.h"

namespace minihost {
namespace {

using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;

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
    testing::TempDir dir;
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
    testing::TempDir dir;
    std::string const content(100, 'a');
    std::string const path = dir.Write("f", content);
    AutoRefPtr<IDataRef> buffer = Load(path);
    ASSERT_TRUE(buffer);
    std::filesystem::resize_file(path, 60);
    EXPECT_EQ(buffer->GetSize(), 100u) << "the size at open";
    EXPECT_EQ(ReadRange(buffer, 10, 55).size(), 5u);
    EXPECT_EQ(ReadRange(buffer, 10, 70).size(), 0u);
    EXPECT_EQ(buffer->Clone()->GetSize(), 60u);
    EXPECT_FALSE(buffer->Interface_IsEqual(InMemory(content).get()));
}

TEST(FileBuffer, AssignMovesTheContentToMemoryAndClosesTheFile) {
    testing::TempDir dir;
    std::string const path = dir.Write("f", "file bytes");
    long const descriptorsBefore = testing::OpenDescriptors();
    long const liveBefore = MemoryBuffer::LiveCount();
    {
        AutoRefPtr<IDataRef> buffer = Load(path);
        AutoRefPtr<IDataRef> held = Load(path);
        ASSERT_TRUE(buffer && held);
        EXPECT_EQ(testing::OpenDescriptors(), descriptorsBefore + 2);
        EXPECT_EQ(MemoryBuffer::LiveCount(), liveBefore + 2);
        buffer->Assign("new", 3);
        EXPECT_EQ(testing::OpenDescriptors(), descriptorsBefore + 1);
        EXPECT_EQ(ReadRange(buffer, 10, 0), "new");
        EXPECT_EQ(ReadRange(buffer->Clone(), 10, 0), "new");
    }
    EXPECT_EQ(testing::OpenDescriptors(), descriptorsBefore)
        << "the descriptor is closed on release";
    EXPECT_EQ(MemoryBuffer::LiveCount(), liveBefore);
}

}  // namespace
}  // namespace minihost
