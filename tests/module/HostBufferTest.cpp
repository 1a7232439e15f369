// Host buffers that break their word or are larger than 4 GiB.
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/VariantType.h"
#include "minihost/host/Context.h"
#include "minihost/host/MemoryBuffer.h"
#include "minihost/host/Variant.h"
#include "object/InterfaceImpl.h"
#include "tests/module/ModuleHarness.h"

namespace tavrel_testing {
namespace {

using minihost::MemoryBuffer;
using minihost::ReadFault;

// Every operation that reads a range into a new string or buffer, on host buffers whose Read
// keeps or breaks its word: one Read of the whole range, no GetData, and a result that holds
// exactly what the Read wrote and zero elsewhere, whatever count the Read gives back. The
// heap is left full of stale bytes before each call, so that a result made of memory that
// nobody wrote shows. Ranges below and above 4096 bytes.
constexpr std::size_t kSize = 50000;
constexpr char kStale = '\xA5';

std::string const kBytes = [] {
    std::string bytes(kSize, '\0');
    for (std::size_t i = 0; i < kSize; ++i) {
        bytes[i] = static_cast<char>(i * 13 + i / 256 + 1);
    }
    return bytes;
}();

// Fills and frees blocks of every size near the results to come, so that memory which the
// module takes without writing holds kStale instead of zeros.
void LeaveHeapDirty() {
    std::vector<std::unique_ptr<char[]>> blocks;
    for (std::size_t size = 16; size < 3 * kSize; size += size / 4) {
        blocks.emplace_back(new char[size]);
        std::fill_n(blocks.back().get(), size, kStale);
    }
}

// An entry with the numbers behind its buffer argument(s), the range of the host buffer that it
// reads, and whether a module buffer "head" comes first (Binary.Append).
struct Road {
    char const* entry;
    std::vector<double> numbers;
    std::size_t offset, count;
    bool appendsToFirst;
};

// The roads, for a host buffer of size bytes.
std::vector<Road> RoadsFor(std::size_t size) {
    std::size_t const half = size / 2;
    // clang-format off
    return {{"BinaryToString", {}, 0, size, false}, {"BinaryAppend", {}, 0, size, true},
            {"BinaryPartToString", {7, double(half)}, 7, half, false},
            {"BinarySlice", {double(size - 9), 5000}, size - 9, 9, false},
            {"BinarySliceRight", {double(half)}, half, size - half, false},
            {"BinaryCopyPart", {3, double(size)}, 3, size - 3, false},
            {"BinaryAppendPart", {10, double(half)}, 10, half, true}};
    // clang-format on
}

// What the Read writes of count bytes at offset: the first delivered bytes of the source.
std::string Written(std::size_t offset, std::size_t count, std::size_t chunk, ReadFault fault) {
    std::size_t const delivered = chunk != 0 && chunk < count ? chunk : count;
    std::size_t const written = fault == ReadFault::kOverClaim ? 0 : delivered;
    return kBytes.substr(offset, written) + std::string(count - written, '\0');
}

// clang-format off
struct Fault { char const* name; ReadFault fault; std::size_t chunk; };
Fault const kFaults[] = {
    {"honest", ReadFault::kNone, 0}, {"short by chunks of 4096", ReadFault::kNone, 4096},
    {"short by chunks of 1", ReadFault::kNone, 1}, {"under-reports", ReadFault::kUnderReport, 0},
    {"claims all, writes nothing", ReadFault::kOverClaim, 0},
    {"claims all, writes 1", ReadFault::kOverClaim, 1}, {"over-reports", ReadFault::kOverReport, 0},
    {"throws half-way", ReadFault::kThrowHalfway, 0},
};
// clang-format on

std::vector<Variant> ArgumentsOf(Road const& road, AutoRefPtr<MemoryBuffer> const& host,
                                 std::string const& head) {
    std::vector<Variant> arguments;
    if (road.appendsToFirst) {
        arguments.push_back(Variant::DataRef(ModuleBuffer(head)));
    }
    arguments.push_back(Variant::DataRef(AutoRefPtr<IDataRef>(host)));
    for (double number : road.numbers) {
        arguments.push_back(Variant::Number(number));
    }
    return arguments;
}

// A Read that throws half-way: the exception passes through the entry, the result variant
// keeps what it held, and no buffer or reference is left behind.
TEST(ReadRoads, ResultHoldsWhatReadWroteAndZeroElsewhere) {
    for (std::size_t size : {std::size_t{300}, kSize}) {
        std::string const source = kBytes.substr(0, size);
        std::string const head = kBytes.substr(0, size / 8);
        for (Fault const& fault : kFaults) {
            for (Road const& road : RoadsFor(size)) {
                SCOPED_TRACE(std::string(road.entry) + ", " + fault.name + ", size " +
                             std::to_string(size));
                long const liveBefore = MemoryBuffer::LiveCount();
                AutoRefPtr<MemoryBuffer> host(
                    new MemoryBuffer(source, {false, fault.chunk, fault.fault}));
                std::vector<Variant> arguments = ArgumentsOf(road, host, head);
                LeaveHeapDirty();
                if (fault.fault == ReadFault::kThrowHalfway) {
                    std::vector<Tavrel::IVariant*> pointers;
                    for (Variant& argument : arguments) {
                        pointers.push_back(&argument);
                    }
                    Variant result = Variant::String("earlier");
                    minihost::Context context{AutoRefPtr<Tavrel::IPolicy>()};
                    EXPECT_THROW(CallEntry(road.entry, pointers, &result, &context),
                                 std::runtime_error);
                    EXPECT_EQ(result.assignments(), 0);
                    EXPECT_EQ(result.string(), "earlier");
                    EXPECT_EQ(host->Interface_GetCount(), 2) << "held by the test and its variant";
                } else {
                    CallResult const call = Call(road.entry, arguments);
                    std::string const expected =
                        (road.appendsToFirst ? head : "") +
                        Written(road.offset, road.count, fault.chunk, fault.fault);
                    std::string const got = call.result.type() == Tavrel::VariantType::kString
                                                ? call.result.string()
                                                : BytesOf(call.result.dataPointer());
                    EXPECT_EQ(call.status, 0u);
                    EXPECT_TRUE(call.reports.empty());
                    EXPECT_TRUE(got == expected)
                        << "sizes " << got.size() << " / " << expected.size()
                        << ", first difference at "
                        << std::mismatch(got.begin(), got.end(), expected.begin(), expected.end())
                                   .first -
                               got.begin();
                }
                EXPECT_EQ(host->readCalls(), 1);
                EXPECT_EQ(host->getDataCalls(), 0);
                arguments.clear();
                host = AutoRefPtr<MemoryBuffer>();
                EXPECT_EQ(MemoryBuffer::LiveCount(), liveBefore);
            }
        }
    }
}

// Sizes and offsets past 4 GiB, on a host buffer that claims 5 GiB and makes each byte from
// its position instead of holding it: every size, offset and count travels in a type as wide
// as the data, on every platform (a 32-bit unsigned long would cut 5 GiB + 10 to 1 GiB + 10
// and read from the wrong place).
constexpr unsigned long long kGiB = 1ULL << 30;
constexpr unsigned long long kHugeSize = 5 * kGiB + 10;

// The byte at pos: its high bits count too, so a position cut to 32 bits gives another byte.
char ByteAt(unsigned long long pos) { return static_cast<char>(pos * 7 + (pos >> 32) * 31); }

std::string BytesAt(unsigned long long pos, unsigned long long count) {
    std::string bytes;
    while (bytes.size() < count) {
        bytes += ByteAt(pos + bytes.size());
    }
    return bytes;
}

// A read-only host buffer of kHugeSize bytes made on demand; it does not expose them. One
// that does not deliver writes nothing, which keeps a read of gigabytes quick.
class HugeBuffer final : public InterfaceImpl<IDataRef> {
public:
    explicit HugeBuffer(bool delivers = true) : mDelivers(delivers) {}
    unsigned long long Interface_GetSize() const override { return kHugeSize; }
    void Interface_Assign(char const* /*bytes*/, unsigned long long /*size*/) override {}
    unsigned long long Interface_Read(char* destination, unsigned long long count,
                                      unsigned long long offset) const override {
        if (offset >= kHugeSize || !mDelivers) {
            return 0;
        }
        count = count < kHugeSize - offset ? count : kHugeSize - offset;
        for (unsigned long long i = 0; i < count; ++i) {
            destination[i] = ByteAt(offset + i);
        }
        return count;
    }
    bool Interface_IsEqual(IDataRef* /*other*/) const override { return false; }
    IDataRef* Interface_Clone() const override { return new HugeBuffer(mDelivers); }

private:
    bool mDelivers;
};

Variant N(unsigned long long value) { return Variant::Number(static_cast<double>(value)); }

TEST(HugeBuffer, SizesAndRangesPastFourGiB) {
    AutoRefPtr<IDataRef> const huge(new HugeBuffer());
    Variant const hugeValue = Variant::DataRef(huge);
    Variant const head = Variant::DataRef(ModuleBuffer("hd"));
    // clang-format off
    struct Row { char const* entry; std::vector<Variant> arguments; std::string shown; };
    Row const rows[] = {
        {"BinarySize", {hugeValue}, "5:5368709130"},
        {"BinaryPartToString", {hugeValue, N(5 * kGiB + 2), N(4)}, "9:" + BytesAt(5 * kGiB + 2, 4)},
        {"BinarySlice", {hugeValue, N(5 * kGiB + 2), N(100)}, "13:" + BytesAt(5 * kGiB + 2, 8)},
        {"BinarySliceRight", {hugeValue, N(5 * kGiB + 5)}, "13:" + BytesAt(5 * kGiB + 5, 5)},
        {"BinaryCopyPart", {hugeValue, N(4 * kGiB + 1), N(3)}, "13:" + BytesAt(4 * kGiB + 1, 3)},
        {"BinaryAppendPart", {head, hugeValue, N(4 * kGiB + 7), N(2)},
         "13:hd" + BytesAt(4 * kGiB + 7, 2)},
        {"BinaryPartToString", {hugeValue, N(kHugeSize), N(1)}, "9:"},  // at the end: nothing
    };
    // clang-format on
    for (Row const& row : rows) {
        CallResult const call = Call(row.entry, row.arguments);
        EXPECT_EQ(call.status, 0u) << row.entry;
        EXPECT_TRUE(call.reports.empty()) << row.entry;
        EXPECT_EQ(Shown(call.result), row.shown) << row.entry;
    }
    // The whole copy is the buffer's own clone, as large as the original.
    CallResult const copy = Call("BinaryCopy", {hugeValue});
    CallResult const size = Call("BinarySize", {copy.result});
    EXPECT_EQ(Shown(size.result), "5:5368709130");
}

#if defined(_WIN32)

// NOTE: the host takes a string's size as an unsigned long, 32 bits wide here. A string
// result it cannot carry is not cut short: the exception passes through the entry, as a
// failed allocation's would, and the result variant keeps what it held.
TEST(HugeBuffer, StringTooLargeForTheHostThrowsThroughTheEntry) {
    AutoRefPtr<IDataRef> const huge(new HugeBuffer(false));
    Variant hugeValue = Variant::DataRef(huge);
    Variant offset = N(0), size = N(4 * kGiB + 1);
    Variant result = Variant::String("earlier");
    minihost::Context context{AutoRefPtr<Tavrel::IPolicy>()};
    EXPECT_THROW(CallEntry("BinaryPartToString", {&hugeValue, &offset, &size}, &result, &context),
                 std::length_error);
    EXPECT_EQ(result.assignments(), 0);
    EXPECT_EQ(result.string(), "earlier");
}

#endif

}  // namespace
}  // namespace tavrel_testing
