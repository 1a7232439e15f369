// Data: reading ranges, comparing by both roads, cloning and PushBack.
#include <gtest/gtest.h>

#include <string>

#include "minihost/host/MemoryBuffer.h"
#include "object/Data.h"

namespace {

using minihost::MemoryBuffer;
using Tavrel::AutoRefPtr;
using Tavrel::Data;
using Tavrel::IDataRef;

std::string Content(IDataRef const& data) {
    std::string bytes(data.GetSize(), '\0');
    if (!bytes.empty()) {
        data.Read(bytes.data(), bytes.size(), 0);
    }
    return bytes;
}

TEST(Data, ReadCutsAtTheEnd) {
    std::string const hundred(100, 'x');
    AutoRefPtr<Data> data(new Data(hundred));
    struct Row {
        unsigned long long count, offset, delivered;
    };
    Row const rows[] = {{10, 95, 5}, {10, 100, 0}, {10, 500, 0}, {0, 10, 0}, {100, 0, 100}};
    for (Row const& row : rows) {
        char sink[128] = {};
        EXPECT_EQ(data->Read(sink, row.count, row.offset), row.delivered)
            << row.count << " at " << row.offset;
    }
    AutoRefPtr<Data> empty(new Data());
    EXPECT_EQ(empty->Read(nullptr, 10, 0), 0u);
    EXPECT_NE(empty->GetData(), nullptr);
}

TEST(Data, KeepsNulBytes) {
    AutoRefPtr<Data> data(new Data(std::string_view("a\0b", 3)));
    EXPECT_EQ(data->GetSize(), 3u);
    AutoRefPtr<Data> counted(new Data("x\0y", 3));
    EXPECT_EQ(Content(*counted.get()), std::string("x\0y", 3));
}

TEST(Data, IsEqualByBothRoads) {
    std::string const base(20000, 'q');
    std::string differentLast = base;
    differentLast.back() = 'r';
    struct Row {
        std::string mine, other;
        MemoryBuffer::Options options;
        bool equal;
        int reads;  // Read calls the other side receives
    };
    Row const rows[] = {
        {"", "", {false, 0}, true, 0},
        {"abc", "abc", {true, 0}, true, 0},
        {"abc", "abd", {true, 0}, false, 0},
        {"abc", "ab", {false, 0}, false, 0},
        {std::string(8192, 'a'), std::string(8192, 'a'), {false, 0}, true, 1},
        {std::string(8193, 'a'), std::string(8193, 'a'), {false, 0}, true, 2},
        {base, differentLast, {false, 0}, false, 3},
        {base, base, {false, 0}, true, 3},
        {base, base, {false, 100}, false, 1},  // a short read counts as a difference
    };
    for (Row const& row : rows) {
        AutoRefPtr<Data> mine(new Data(row.mine));
        AutoRefPtr<MemoryBuffer> other(new MemoryBuffer(row.other, row.options));
        EXPECT_EQ(mine->Interface_IsEqual(other.get()), row.equal) << row.mine.size();
        EXPECT_EQ(other->readCalls(), row.reads) << row.mine.size();
    }
    AutoRefPtr<Data> self(new Data("same"));
    EXPECT_TRUE(self->Interface_IsEqual(self.get()));
    EXPECT_FALSE(self->Interface_IsEqual(nullptr));
}

TEST(Data, CloneIsIndependent) {
    AutoRefPtr<Data> data(new Data("abc"));
    AutoRefPtr<IDataRef> clone = data->Clone();
    EXPECT_EQ(clone->Interface_GetCount(), 1);
    EXPECT_TRUE(data->Interface_IsEqual(clone.get()));
    clone->Assign("z", 1);
    EXPECT_EQ(Content(*data.get()), "abc");
}

TEST(Data, PushBack) {
    struct Row {
        std::size_t count, offset;
        char const* result;
        int reads;  // Read calls the source receives: one for every range that fits
    };
    Row const rows[] = {
        {2, 1, ">bc", 1},   {0, 2, ">", 1},     {0, 4, ">", 1},
        {3, 1, ">bcd", 1},  {4, 1, ">", 0},     {4, 0, ">abcd", 1},
        {static_cast<std::size_t>(-1), 2, ">", 0}, {2, static_cast<std::size_t>(-1), ">", 0},
    };
    for (Row const& row : rows) {
        AutoRefPtr<MemoryBuffer> source(new MemoryBuffer("abcd", {false, 0}));
        AutoRefPtr<Data> data(new Data(">"));
        data->PushBack(AutoRefPtr<IDataRef>(source), row.count, row.offset);
        EXPECT_EQ(Content(*data.get()), row.result) << row.count << " at " << row.offset;
        EXPECT_EQ(source->readCalls(), row.reads) << row.count << " at " << row.offset;
    }
    AutoRefPtr<Data> data(new Data("xy"));
    data->PushBack(AutoRefPtr<IDataRef>(nullptr));
    data->PushBack(AutoRefPtr<IDataRef>(nullptr), 1, 0);
    AutoRefPtr<IDataRef> self(data);
    data->PushBack(self);
    EXPECT_EQ(Content(*data.get()), "xyxy");
    AutoRefPtr<IDataRef> shortReads(new MemoryBuffer("abcd", {false, 1}));
    data->PushBack(shortReads);
    EXPECT_EQ(Content(*data.get()), std::string("xyxya\0\0\0", 8));
}

}  // namespace
