// Every operation that reads a range into a new string or buffer, on host buffers whose Read
// keeps or breaks its word: one Read of the whole range, no GetData, and a result that holds
// exactly what the Read wrote and zero elsewhere, whatever count the Read gives back. The
// heap is left full of stale bytes before each call, so that a result made of memory that
// nobody wrote shows. Ranges below and above 4096 bytes.
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/VariantType.h"
#include "minihost/host/MemoryBuffer.h"
#include "tests/module/ModuleHarness.h"

namespace {

using minihost::MemoryBuffer;
using minihost::ReadFault;
using minihost::Variant;
using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;
using tavrel_testing::BytesOf;
using tavrel_testing::Call;
using tavrel_testing::CallEntry;
using tavrel_testing::CallResult;
using tavrel_testing::ModuleBuffer;

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

TEST(ReadRoads, ResultHoldsWhatReadWroteAndZeroElsewhere) {
    for (std::size_t size : {std::size_t{300}, kSize}) {
        std::string const source = kBytes.substr(0, size);
        std::string const head = kBytes.substr(0, size / 8);
        for (Fault const& fault : kFaults) {
            for (Road const& road : RoadsFor(size)) {
                SCOPED_TRACE(std::string(road.entry) + ", " + fault.name + ", size " +
                             std::to_string(size));
                AutoRefPtr<MemoryBuffer> host(
                    new MemoryBuffer(source, {false, fault.chunk, fault.fault}));
                std::vector<Variant> arguments = ArgumentsOf(road, host, head);
                LeaveHeapDirty();
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
                EXPECT_EQ(host->readCalls(), 1);
                EXPECT_EQ(host->getDataCalls(), 0);
            }
        }
    }
}

TEST(ReadRoads, ReadThatThrowsHalfWayPassesThroughAndLeavesNothing) {
    for (std::size_t size : {std::size_t{300}, kSize}) {
        for (Road const& road : RoadsFor(size)) {
            SCOPED_TRACE(std::string(road.entry) + ", size " + std::to_string(size));
            long const liveBefore = MemoryBuffer::LiveCount();
            {
                AutoRefPtr<MemoryBuffer> host(
                    new MemoryBuffer(kBytes.substr(0, size), {false, 0, ReadFault::kThrowHalfway}));
                std::vector<Variant> arguments = ArgumentsOf(road, host, "head");
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
            }
            EXPECT_EQ(MemoryBuffer::LiveCount(), liveBefore);
        }
    }
}

}  // namespace
