// AppendFromRead: the new bytes are what the one Read wrote and zero elsewhere, whatever the
// Read gives back or throws; the bytes before them are kept.
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "minihost/host/MemoryBuffer.h"
#include "object/AppendFromRead.h"
#include "object/Data.h"

namespace {

using minihost::MemoryBuffer;
using minihost::ReadFault;
using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;

// 20000 bytes with every byte value in it, NUL included.
std::string const kBig = [] {
    std::string bytes(20000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 7 + i / 256);
    }
    return bytes;
}();

std::string Zeros(std::size_t n) { return std::string(n, '\0'); }

TEST(AppendFromRead, NewBytesAreWhatTheReadWrote) {
    struct Row {
        std::string prefix;
        ReadFault fault;
        unsigned long long chunk, count, offset;
        std::string expected;
    };
    Row const rows[] = {
        {"ab", ReadFault::kNone, 0, 3, 0, "ab" + kBig.substr(0, 3)},
        {"ab", ReadFault::kNone, 1, 3, 0, "ab" + kBig.substr(0, 1) + Zeros(2)},
        {"", ReadFault::kNone, 0, 3, 20005, Zeros(3)},  // offset past the end: all zeros
        {"ab", ReadFault::kNone, 0, 0, 0, "ab"},        // count 0: nothing, no Read
        {"", ReadFault::kNone, 0, 9000, 15000, kBig.substr(15000) + Zeros(4000)},
        {"p", ReadFault::kUnderReport, 0, 10000, 5, "p" + kBig.substr(5, 10000)},
        {"p", ReadFault::kOverReport, 0, 10000, 5, "p" + kBig.substr(5, 10000)},
        {"p", ReadFault::kOverClaim, 0, 10000, 5, "p" + Zeros(10000)},
        {"p", ReadFault::kOverClaim, 0, 10, 5, "p" + Zeros(10)},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        Row const& row = rows[i];
        SCOPED_TRACE("row " + std::to_string(i));
        AutoRefPtr<MemoryBuffer> source(new MemoryBuffer(kBig, {false, row.chunk, row.fault}));
        std::string bytes = row.prefix;
        Tavrel::AppendFromRead(bytes, *source.get(), row.count, row.offset);
        EXPECT_TRUE(bytes == row.expected) << "size " << bytes.size();
        EXPECT_EQ(source->readCalls(), row.count == 0 ? 0 : 1);
        EXPECT_EQ(source->getDataCalls(), 0);
    }
}

TEST(AppendFromRead, ReadThatThrowsLeavesWhatItWroteAndZeros) {
    AutoRefPtr<MemoryBuffer> source(new MemoryBuffer(kBig, {false, 0, ReadFault::kThrowHalfway}));
    for (unsigned long long count : {10ULL, 10000ULL}) {
        std::string bytes = "ab";
        EXPECT_THROW(Tavrel::AppendFromRead(bytes, *source.get(), count, 0), std::runtime_error);
        EXPECT_TRUE(bytes == "ab" + kBig.substr(0, count / 2) + Zeros(count - count / 2)) << count;
    }
}

TEST(AppendFromRead, CountPastMaxSizeThrowsWithoutReading) {
    AutoRefPtr<MemoryBuffer> source(new MemoryBuffer("abc"));
    std::string bytes = "ab";
    EXPECT_THROW(Tavrel::AppendFromRead(bytes, *source.get(), bytes.max_size(), 0),
                 std::length_error);
    EXPECT_EQ(bytes, "ab");
    EXPECT_EQ(source->readCalls(), 0);
}

TEST(DataAppendRead, FromItselfAndThroughPushBack) {
    AutoRefPtr<Tavrel::Data> data(new Tavrel::Data(kBig));
    data->AppendRead(*data.get(), kBig.size(), 0);
    AutoRefPtr<IDataRef> self(data);
    data->PushBack(self, 8000, 100);
    std::string const expected = kBig + kBig + kBig.substr(100, 8000);
    ASSERT_EQ(data->GetSize(), expected.size());
    EXPECT_TRUE(std::string(data->GetData(), data->GetSize()) == expected);
}

TEST(DataAppendRead, ReserveChangesNoContent) {
    AutoRefPtr<Tavrel::Data> data(new Tavrel::Data("abc"));
    for (unsigned long long size : {0ULL, 2ULL, 100000ULL, ~0ULL}) {
        data->Reserve(size);
        EXPECT_EQ(std::string(data->GetData(), data->GetSize()), "abc") << size;
    }
}

}  // namespace
