// AppendFromRead: both roads give what resize-then-Read gives, with one Read and no GetData,
// and the fast road keeps the string when the Read throws.
#include <cstring>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "minihost/MemoryBuffer.h"
#include "object/AppendFromRead.h"
#include "object/Data.h"

namespace {

using minihost::MemoryBuffer;
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

using Road = unsigned long long (*)(std::string&, IDataRef const&, unsigned long long,
                                    unsigned long long);

struct NamedRoad {
    char const* name;
    Road road;
};
NamedRoad const kRoads[] = {{"fast", &Tavrel::AppendFromRead},
                            {"resize", &Tavrel::AppendFromReadByResize}};

TEST(AppendFromRead, GivesResizeThenReadWithOneRead) {
    struct Row {
        std::string prefix, source;
        unsigned long long chunk, count, offset;
        std::string expected;
        unsigned long long delivered;
    };
    Row const rows[] = {
        {"ab", "xyz", 0, 3, 0, "abxyz", 3},
        {"ab", "xyz", 1, 3, 0, std::string("abx\0\0", 5), 1},
        {"", "xyz", 0, 3, 5, Zeros(3), 0},  // offset past the end: all zeros
        {"ab", "xyz", 0, 0, 0, "ab", 0},    // count 0: nothing, no Read
        {"", kBig, 0, 10000, 5000, kBig.substr(5000, 10000), 10000},
        {"", kBig, 4096, 10000, 0, kBig.substr(0, 4096) + Zeros(5904), 4096},
        {"p", kBig, 0, 4096, 100, "p" + kBig.substr(100, 4096), 4096},
        {"p", kBig, 0, 4095, 100, "p" + kBig.substr(100, 4095), 4095},
        {kBig.substr(0, 5000), kBig, 3000, 8000, 12000,
         kBig.substr(0, 5000) + kBig.substr(12000, 3000) + Zeros(5000), 3000},
        {"", kBig, 0, 9000, 15000, kBig.substr(15000) + Zeros(4000), 5000},  // runs past end
    };
    for (NamedRoad const& road : kRoads) {
        for (std::size_t i = 0; i < std::size(rows); ++i) {
            Row const& row = rows[i];
            SCOPED_TRACE(std::string(road.name) + " row " + std::to_string(i));
            AutoRefPtr<MemoryBuffer> source(new MemoryBuffer(row.source, {false, row.chunk}));
            std::string bytes = row.prefix;
            EXPECT_EQ(road.road(bytes, *source.get(), row.count, row.offset), row.delivered);
            EXPECT_EQ(bytes, row.expected);
            EXPECT_EQ(source->readCalls(), row.count == 0 ? 0 : 1);
            EXPECT_EQ(source->getDataCalls(), 0);
        }
    }
}

TEST(AppendFromRead, RoadsAgreeOnTrickyInputs) {
    std::size_t const prefixes[] = {0, 1, 15, 16, 4095, 4096, 10000};
    unsigned long long const counts[] = {1, 4095, 4096, 4097, 20000};
    unsigned long long const chunks[] = {0, 1, 4096};
    unsigned long long const offsets[] = {0, 7, 19999, 20000};
    for (std::size_t prefix : prefixes) {
        for (unsigned long long count : counts) {
            for (unsigned long long chunk : chunks) {
                for (unsigned long long offset : offsets) {
                    AutoRefPtr<MemoryBuffer> source(new MemoryBuffer(kBig, {false, chunk}));
                    std::string fast = kBig.substr(0, prefix);
                    std::string simple = fast;
                    Tavrel::AppendFromRead(fast, *source.get(), count, offset);
                    Tavrel::AppendFromReadByResize(simple, *source.get(), count, offset);
                    ASSERT_EQ(fast, simple) << "prefix " << prefix << " count " << count
                                            << " chunk " << chunk << " offset " << offset;
                }
            }
        }
    }
}

// A buffer whose Read writes what it was asked for and then fails.
class FailingSource final : public InterfaceImpl<IDataRef> {
public:
    unsigned long long Interface_GetSize() const override { return 1 << 20; }
    void Interface_Assign(char const*, unsigned long long) override {}
    unsigned long long Interface_Read(char* destination, unsigned long long count,
                                      unsigned long long) const override {
        std::memset(destination, 'x', count);
        throw std::runtime_error("read failed");
    }
    bool Interface_IsEqual(IDataRef*) const override { return false; }
    IDataRef* Interface_Clone() const override { return nullptr; }
};

TEST(AppendFromRead, FastRoadKeepsTheStringWhenReadThrows) {
    AutoRefPtr<FailingSource> source(new FailingSource());
    EXPECT_EQ(source->GetData(), nullptr) << "a buffer that does not expose its bytes";
    for (std::size_t prefix : {0, 3, 9000}) {
        std::string bytes = kBig.substr(0, prefix);
        EXPECT_THROW(Tavrel::AppendFromRead(bytes, *source.get(), 10000, 0), std::runtime_error);
        EXPECT_EQ(bytes, kBig.substr(0, prefix)) << "prefix " << prefix;
    }
}

TEST(AppendFromRead, CountPastMaxSizeThrowsWithoutReading) {
    for (NamedRoad const& road : kRoads) {
        AutoRefPtr<MemoryBuffer> source(new MemoryBuffer("abc"));
        std::string bytes = "ab";
        EXPECT_THROW(road.road(bytes, *source.get(), bytes.max_size(), 0), std::length_error)
            << road.name;
        EXPECT_EQ(bytes, "ab") << road.name;
        EXPECT_EQ(source->readCalls(), 0) << road.name;
    }
}

TEST(DataAppendRead, FromItselfAndThroughPushBack) {
    // Large enough for the fast road, which must not lend out the store it reads from.
    AutoRefPtr<Tavrel::Data> data(new Tavrel::Data(kBig));
    data->AppendRead(*data.get(), kBig.size(), 0);
    AutoRefPtr<IDataRef> self(data);
    data->PushBack(self, 8000, 100);
    std::string const expected = kBig + kBig + kBig.substr(100, 8000);
    ASSERT_EQ(data->GetSize(), expected.size());
    EXPECT_EQ(std::memcmp(data->GetData(), expected.data(), expected.size()), 0);
}

TEST(DataAppendRead, ReserveChangesNoContent) {
    AutoRefPtr<Tavrel::Data> data(new Tavrel::Data("abc"));
    for (unsigned long long size : {0ULL, 2ULL, 100000ULL, ~0ULL}) {
        data->Reserve(size);
        EXPECT_EQ(std::string(data->GetData(), data->GetSize()), "abc") << size;
    }
}

}  // namespace
