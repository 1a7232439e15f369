// Host buffers larger than 4 GiB. (Host buffers whose Read breaks its word: every road reads
// through AppendFromRead, whose tests in tests/object hold every kind of broken Read; the
// operations tests check that each road reads a host buffer once at most, never by GetData.)
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

#include "minihost/host/Context.h"
#include "minihost/host/Variant.h"
#include "object/InterfaceImpl.h"
#include "tests/module/ModuleHarness.h"

namespace tavrel_testing {
namespace {

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
        {"BinarySliceRight", {hugeValue, N(5 * kGiB + 5)}, "13:" + BytesAt(5 * kGiB + 5, 5)},
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
