#include <gtest/gtest.h>
#include <string>

#include "minihost/host/MemoryBuffer.h"

namespace minihost {
namespace {

using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;

std::string Digits(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>('0' + i % 10);
    }
    return bytes;
}

TEST(MemoryBuffer, ReadClipsToTheEndAndToTheChunk) {
    struct Row {
        char const* name;
        std::size_t size;
        unsigned long long chunk, count, offset, expected;
    } const rows[] = {
        {"past the end is cut", 100, 0, 10, 95, 5},    {"offset at the end", 100, 0, 10, 100, 0},
        {"offset past the end", 100, 0, 10, ~0ULL, 0}, {"count 0", 100, 0, 0, 5, 0},
        {"huge count", 100, 0, ~0ULL, 1, 99},          {"chunk cuts", 100, 3, 10, 0, 3},
        {"end cuts below chunk", 100, 3, 10, 98, 2},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        std::string const bytes = Digits(row.size);
        AutoRefPtr<IDataRef> buffer(new MemoryBuffer(bytes, {.maxReadChunk = row.chunk}));
        std::string destination(200, '#');
        unsigned long long const got =
            buffer->Interface_Read(destination.data(), row.count, row.offset);
        ASSERT_EQ(got, row.expected);
        EXPECT_EQ(destination.substr(0, got), got == 0 ? "" : bytes.substr(row.offset, got));
        EXPECT_EQ(destination[got], '#') << "nothing written past what was delivered";
    }
    // The faulty Reads that tests ask for, 10 bytes at 0 of 100: what each gives back.
    struct FaultRow {
        ReadFault fault;
        unsigned long long expected;
    };
    for (FaultRow const row :
         {FaultRow{ReadFault::kUnderReport, 0}, FaultRow{ReadFault::kOverClaim, 10},
          FaultRow{ReadFault::kOverReport, 11}}) {
        AutoRefPtr<IDataRef> buffer(new MemoryBuffer(Digits(100), {false, 0, row.fault}));
        std::string destination(10, '#');
        EXPECT_EQ(buffer->Interface_Read(destination.data(), 10, 0), row.expected);
    }
    AutoRefPtr<IDataRef> assigned(new MemoryBuffer("xy"));
    assigned->Interface_Assign("abc", 3);
    EXPECT_EQ(std::string(assigned->Interface_GetData(), assigned->Interface_GetSize()), "abc");
}

TEST(MemoryBuffer, IsEqualComparesBytesWhateverTheOtherSideIs) {
    std::string const big = Digits(8193);
    std::string lastDiffers = big;
    lastDiffers.back() = 'x';
    std::string firstDiffers = big;
    firstDiffers.front() = 'x';
    MemoryBufferOptions const hidden{.exposeBytes = false};
    struct Row {
        char const* name;
        std::string mine;
        IDataRef* other;  // the row owns one reference
        bool expected;
    } const rows[] = {
        {"same, exposed", big, new MemoryBuffer(big), true},
        {"same, hidden", big, new MemoryBuffer(big, hidden), true},
        {"last byte differs, exposed", big, new MemoryBuffer(lastDiffers), false},
        {"last byte differs, hidden", big, new MemoryBuffer(lastDiffers, hidden), false},
        {"first byte differs, hidden", big, new MemoryBuffer(firstDiffers, hidden), false},
        {"other size", big, new MemoryBuffer(big.substr(1)), false},
        {"both empty", "", new MemoryBuffer("", hidden), true},
        {"other reads short", big, new MemoryBuffer(big, {false, 100}), false},
        {"null", "a", nullptr, false},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        AutoRefPtr<IDataRef> other(row.other);
        AutoRefPtr<IDataRef> mine(new MemoryBuffer(row.mine, {.maxReadChunk = 1}));
        EXPECT_EQ(mine->Interface_IsEqual(other.get()), row.expected);
    }
    AutoRefPtr<MemoryBuffer> shown(new MemoryBuffer(""));
    EXPECT_NE(shown->Interface_GetData(), nullptr) << "exposed even when empty";
    AutoRefPtr<MemoryBuffer> source(new MemoryBuffer("abc", hidden));
    EXPECT_EQ(source->Clone()->GetData(), nullptr) << "a clone keeps the options";
    EXPECT_EQ(source->getDataCalls(), 0);
}

}  // namespace
}  // namespace minihost
