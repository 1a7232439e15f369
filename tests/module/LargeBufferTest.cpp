// Operations that read a range into a new string or buffer, on host buffers large enough for
// the in-place road: one Read of the whole range, no GetData, and zeros wherever a short
// Read leaves bytes out.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "host/VariantType.h"
#include "minihost/MemoryBuffer.h"
#include "tests/module/ModuleHarness.h"

namespace {

using minihost::MemoryBuffer;
using minihost::Variant;
using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;

constexpr std::size_t kSize = 50000;

std::string const kBytes = [] {
    std::string bytes(kSize, '\0');
    for (std::size_t i = 0; i < kSize; ++i) {
        bytes[i] = static_cast<char>(i * 13 + i / 256);
    }
    return bytes;
}();

Variant N(double value) { return Variant::Number(value); }

// What a host buffer that delivers at most chunk bytes per Read gives for count bytes at
// offset, padded with zeros to count.
std::string Padded(std::size_t offset, std::size_t count, std::size_t chunk) {
    std::size_t const delivered = chunk != 0 && chunk < count ? chunk : count;
    return kBytes.substr(offset, delivered) + std::string(count - delivered, '\0');
}

TEST(LargeBuffers, OneReadAndZerosForWhatIsNotDelivered) {
    struct Row {
        char const* entry;
        std::vector<double> numbers;  // after the buffer argument(s)
        std::size_t offset, count;    // the range of the host buffer that is read
        bool appendsToFirst;          // Binary.Append: a module buffer "head" comes first
    };
    Row const rows[] = {
        {"BinaryToString", {}, 0, kSize, false},
        {"BinaryPartToString", {1000, 30000}, 1000, 30000, false},
        {"BinarySlice", {49000, 5000}, 49000, 1000, false},
        {"BinarySliceRight", {20000}, 20000, kSize - 20000, false},
        {"BinaryCopyPart", {7, 40000}, 7, 40000, false},
        {"BinaryAppend", {}, 0, kSize, true},
        {"BinaryAppendPart", {10, 20000}, 10, 20000, true},
    };
    std::string const head = kBytes.substr(0, 6000);
    for (std::size_t chunk : {std::size_t{0}, std::size_t{4096}, std::size_t{1}}) {
        for (Row const& row : rows) {
            SCOPED_TRACE(std::string(row.entry) + " chunk " + std::to_string(chunk));
            AutoRefPtr<MemoryBuffer> host(new MemoryBuffer(kBytes, {false, chunk}));
            std::vector<Variant> arguments;
            if (row.appendsToFirst) {
                arguments.push_back(Variant::DataRef(moduletest::ModuleBuffer(head)));
            }
            arguments.push_back(Variant::DataRef(AutoRefPtr<IDataRef>(host)));
            for (double number : row.numbers) {
                arguments.push_back(N(number));
            }
            moduletest::CallResult const call = moduletest::Call(row.entry, arguments);
            std::string const expected =
                (row.appendsToFirst ? head : "") + Padded(row.offset, row.count, chunk);
            std::string const got = call.result.type() == Tavrel::VariantType::kString
                                        ? call.result.string()
                                        : moduletest::BytesOf(call.result.dataPointer());
            EXPECT_EQ(call.status, 0u);
            EXPECT_TRUE(call.reports.empty());
            EXPECT_TRUE(got == expected) << "sizes " << got.size() << " / " << expected.size();
            EXPECT_EQ(host->readCalls(), 1);
            EXPECT_EQ(host->getDataCalls(), 0);
        }
    }
}

}  // namespace
