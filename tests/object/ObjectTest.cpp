// The object model, linked directly: AutoRefPtr's counting, Data (reading ranges, comparing
// by both roads, PushBack, AppendRead) and AppendFromRead, whose new bytes are what
// the one Read wrote and zero elsewhere, whatever the Read gives back or throws.
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "minihost/host/MemoryBuffer.h"
#include "object/AppendFromRead.h"
#include "object/AutoRefPtr.h"
#include "object/Data.h"

namespace {

using minihost::MemoryBuffer;
using minihost::ReadFault;
using Tavrel::AutoRefPtr;
using Tavrel::Data;
using Tavrel::IDataRef;

std::string Content(IDataRef const& data) {
    std::string bytes(data.GetSize(), '\0');
    bytes.resize(data.Read(bytes.data(), bytes.size(), 0));
    return bytes;
}

std::string Zeros(std::size_t n) { return std::string(n, '\0'); }

// 20000 bytes with every byte value in it, NUL included.
std::string const kBig = [] {
    std::string bytes(20000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 7 + i / 256);
    }
    return bytes;
}();

// AutoRefPtr's adopting, copying, moving and releasing are checked through the counts of the
// module's and the host's buffers (tests/module, tests/minihost) and the last Release through
// the slots (tests/abi); reset, which only the host's start-up calls, here.
TEST(AutoRefPtr, ResetReleasesWhatItHeld) {
    long const live = MemoryBuffer::LiveCount();
    AutoRefPtr<IDataRef> held(new MemoryBuffer("a"));
    EXPECT_EQ(&held.reset(new MemoryBuffer("b")), &held);
    EXPECT_EQ(MemoryBuffer::LiveCount(), live + 1);
    EXPECT_EQ(Content(*held.get()), "b");
}

TEST(Data, ReadCutsAtTheEndAndKeepsNulBytes) {
    AutoRefPtr<Data> data(new Data(std::string(100, 'x')));
    struct Row {
        unsigned long long count, offset, delivered;
    };
    for (Row const row : {Row{10, 95, 5}, {10, 100, 0}, {0, 10, 0}}) {
        char sink[128] = {};
        EXPECT_EQ(data->Read(sink, row.count, row.offset), row.delivered)
            << row.count << " at " << row.offset;
    }
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
        {"abc", "abc", {true, 0}, true, 0},
        {"abc", "abd", {true, 0}, false, 0},
        {"abc", "ab", {false, 0}, false, 0},
        {std::string(8192, 'a'), std::string(8192, 'a'), {false, 0}, true, 1},
        {std::string(8193, 'a'), std::string(8193, 'a'), {false, 0}, true, 2},
        {base, differentLast, {false, 0}, false, 3},
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

TEST(Data, PushBack) {
    struct Row {
        std::size_t count, offset;
        char const* result;
        int reads;  // Read calls the source receives: one for every range that fits
    };
    Row const rows[] = {
        {0, 4, ">", 1},
        {3, 1, ">bcd", 1},
        {4, 1, ">", 0},
        {4, 0, ">abcd", 1},
        {static_cast<std::size_t>(-1), 2, ">", 0},
        {2, static_cast<std::size_t>(-1), ">", 0},
    };
    for (Row const& row : rows) {
        AutoRefPtr<MemoryBuffer> source(new MemoryBuffer("abcd", {false, 0}));
        AutoRefPtr<Data> data(new Data(">"));
        data->PushBack(AutoRefPtr<IDataRef>(source), row.count, row.offset);
        EXPECT_EQ(Content(*data.get()), row.result) << row.count << " at " << row.offset;
        EXPECT_EQ(source->readCalls(), row.reads) << row.count << " at " << row.offset;
    }
}

TEST(Data, AppendReadFromItselfReserveChangesNoContent) {
    AutoRefPtr<Data> data(new Data(kBig));
    data->AppendRead(*data.get(), kBig.size(), 0);
    data->PushBack(AutoRefPtr<IDataRef>(data), 8000, 100);
    EXPECT_TRUE(Content(*data.get()) == kBig + kBig + kBig.substr(100, 8000));
    AutoRefPtr<Data> small(new Data("abc"));
    small->Reserve(100000);
    small->Reserve(~0ULL);  // more than a string holds: left to the appends
    EXPECT_EQ(Content(*small.get()), "abc");
}

// The new bytes are what the one Read wrote and zero elsewhere, whatever count it gives back: a
// short Read, one that under- or over-reports, one that claims bytes it never wrote; a range
// past the end gives zeros, count 0 reads nothing. A Read that throws leaves what it wrote and
// zeros; a count past max_size throws without reading. Either way the bytes before stay.
TEST(AppendFromRead, NewBytesAreWhatTheReadWrote) {
    struct Row {
        ReadFault fault;
        unsigned long long chunk, count, offset;
        std::string added;
    };
    Row const rows[] = {
        {ReadFault::kNone, 0, 3, 0, kBig.substr(0, 3)},
        {ReadFault::kNone, 1, 3, 0, kBig.substr(0, 1) + Zeros(2)},
        {ReadFault::kNone, 0, 3, 20005, Zeros(3)},
        {ReadFault::kNone, 0, 9000, 15000, kBig.substr(15000) + Zeros(4000)},
        {ReadFault::kNone, 0, 0, 0, ""},
        {ReadFault::kUnderReport, 0, 10000, 5, kBig.substr(5, 10000)},
        {ReadFault::kOverReport, 0, 10000, 5, kBig.substr(5, 10000)},
        {ReadFault::kOverClaim, 0, 10000, 5, Zeros(10000)},
        {ReadFault::kOverClaim, 0, 10, 5, Zeros(10)},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        Row const& row = rows[i];
        SCOPED_TRACE("row " + std::to_string(i));
        AutoRefPtr<MemoryBuffer> source(new MemoryBuffer(kBig, {false, row.chunk, row.fault}));
        std::string bytes = "ab";
        Tavrel::AppendFromRead(bytes, *source.get(), row.count, row.offset);
        EXPECT_TRUE(bytes == "ab" + row.added) << "size " << bytes.size();
        EXPECT_EQ(source->readCalls(), row.count == 0 ? 0 : 1);
        EXPECT_EQ(source->getDataCalls(), 0);
    }
    AutoRefPtr<MemoryBuffer> source(new MemoryBuffer(kBig, {false, 0, ReadFault::kThrowHalfway}));
    std::string bytes = "ab";
    EXPECT_THROW(Tavrel::AppendFromRead(bytes, *source.get(), 10000, 0), std::runtime_error);
    EXPECT_TRUE(bytes == "ab" + kBig.substr(0, 5000) + Zeros(5000));
    bytes = "ab";
    EXPECT_THROW(Tavrel::AppendFromRead(bytes, *source.get(), bytes.max_size(), 0),
                 std::length_error);
    EXPECT_EQ(bytes, "ab");
    EXPECT_EQ(source->readCalls(), 1);
}

}  // namespace
