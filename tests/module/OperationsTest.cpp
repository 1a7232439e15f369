// The 13 script functions through their entries, on module buffers and on host buffers
// that expose their bytes or hide them.
#include <functional>
#include <gtest/gtest.h>
#include <limits>

#include "minihost/host/MemoryBuffer.h"
#include "tests/module/ModuleHarness.h"

namespace {

using minihost::MemoryBuffer;
using minihost::Variant;
using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;
using tavrel_testing::BytesOf;
using tavrel_testing::Call;
using tavrel_testing::InvalidArguments;
using tavrel_testing::InvalidUsage;
using tavrel_testing::ModuleBuffer;
using tavrel_testing::Report;
using tavrel_testing::Shown;

struct SourceKind {
    char const* name;
    std::function<Variant(std::string_view)> make;
};

// Every kind of buffer an operation may be given; each delivers all bytes asked for.
std::vector<SourceKind> const kKinds = {
    {"module buffer", [](std::string_view b) { return Variant::DataRef(ModuleBuffer(b)); }},
    {"host, exposed",
     [](std::string_view b) {
         return Variant::DataRef(AutoRefPtr<IDataRef>(new MemoryBuffer(b)));
     }},
    {"host, hidden",
     [](std::string_view b) {
         return Variant::DataRef(AutoRefPtr<IDataRef>(new MemoryBuffer(b, {false, 0})));
     }},
};

Variant N(double value) { return Variant::Number(value); }
double const kHuge = 9.3e18;  // pinned to the largest long long
double const kInf = std::numeric_limits<double>::infinity();
double const kNaN = std::numeric_limits<double>::quiet_NaN();
char const* const kMin = "-9223372036854775808";

// Runs entry(source, offset, size) for every row over the source "abcdef" and every source
// kind (the text "abcdef" for ToDataRefPart); checks the result (a new buffer with one
// reference, or a string), the exact report, and that the source keeps its bytes and count.
// Script numbers are cut toward zero, NaN is 0, and numbers beyond long long are pinned.
void CheckRanges(char const* entry, char const* lead, char const* sizeName) {
    // clang-format off
    struct Row { double offset, size; char const* bytes;
                 char const *shownOffset = nullptr, *shownSize = nullptr; };
    Row const rows[] = {  // the numbers as the report shows them; null: no report
        {0, 6, "abcdef"}, {1, 2, "bc"}, {4, 100, "ef"}, {1, kHuge, "bcdef"}, {6, 1, ""}, {9, 1, ""},
        {2, 0, ""}, {2.9, 2.9, "cd"}, {-0.5, 1, "a"}, {kNaN, 3, "abc"}, {0, kNaN, ""},
        {1, kInf, "bcdef"}, {1, 1e300, "bcdef"}, {1e19, 1, ""}, {-1, 2, "", "-1", "2"},
        {2, -1, "", "2", "-1"}, {-5, -6, "", "-5", "-6"}, {-2.9, 1, "", "-2", "1"},
        {-kInf, -1e300, "", kMin, kMin},
    };
    // clang-format on
    bool const givesText = std::string_view(entry) == "BinaryPartToString";
    std::vector<SourceKind> const kinds =
        std::string_view(entry) == "ToDataRefPart"
            ? std::vector<SourceKind>{{"text",
                                       [](std::string_view b) { return Variant::String(b); }}}
            : kKinds;
    for (SourceKind const& kind : kinds) {
        for (Row const& row : rows) {
            SCOPED_TRACE(std::string(entry) + " on " + kind.name + " (" +
                         std::to_string(row.offset) + ", " + std::to_string(row.size) + ")");
            Variant const source = kind.make("abcdef");
            IDataRef* const data = source.dataPointer();
            int const count = data != nullptr ? data->Interface_GetCount() : 0;
            auto call = Call(entry, {source, N(row.offset), N(row.size)});
            ASSERT_EQ(call.status, 0u);
            EXPECT_EQ(Shown(call.result), (givesText ? "9:" : "13:") + std::string(row.bytes));
            if (!givesText) {
                ASSERT_NE(call.result.dataPointer(), nullptr);
                EXPECT_NE(call.result.dataPointer(), data);
                EXPECT_EQ(call.result.dataPointer()->Interface_GetCount(), 1);
            }
            std::string const reason = row.shownOffset == nullptr
                                           ? ""
                                           : std::string(lead) + " Offset: \"" + row.shownOffset +
                                                 "\" " + sizeName + ": \"" + row.shownSize + "\"";
            EXPECT_EQ(call.reports, InvalidArguments(reason));
            if (data != nullptr) {
                EXPECT_EQ(data->Interface_GetCount(), count);
                EXPECT_EQ(BytesOf(data), "abcdef");
            }
        }
    }
}

TEST(Operations, RangesOfEveryRangedOperation) {
    CheckRanges("BinaryPartToString", "Cannot convert binary part to string.", "Size");
    CheckRanges("BinarySlice", "Cannot slice with negative offset or size.", "Size");
    CheckRanges("BinaryCopyPart", "Cannot copy with negative offset or count.", "Count");
    CheckRanges("ToDataRefPart", "Cannot create DATAREF from string with negative offset or count.",
                "Count");
}

// The other operations on every kind of buffer: the result is new, holds every byte, and the
// first buffer keeps its own.
TEST(Operations, WholeBuffersSlicesToTheEndAndAppends) {
    std::string const bytes("a\0b\0\xff", 5);
    std::string const min = "Cannot slice with negative offset or size. Offset: \"" +
                            std::string(kMin) + "\" Size: \"9223372036854775807\"";
    // clang-format off
    struct Row { char const* entry; std::string first; char const* second;
                 std::vector<double> numbers; std::string shown, reason = ""; };
    Row const rows[] = {  // second: a second buffer of the same kind, or none
        {"BinarySize", bytes, nullptr, {}, "5:5"},
        {"BinaryCopy", bytes, nullptr, {}, "13:" + bytes},
        {"BinaryToString", bytes, nullptr, {}, "9:" + bytes},
        {"BinarySliceRight", bytes, nullptr, {0}, "13:" + bytes},
        {"BinarySliceRight", "abcdef", nullptr, {2}, "13:cdef"},
        {"BinarySliceRight", "abcdef", nullptr, {6}, "13:"},
        {"BinarySliceRight", "abcdef", nullptr, {9}, "13:"},
        {"BinarySliceRight", "abcdef", nullptr, {-3}, "13:",
         "Cannot slice with negative offset or size. Offset: \"-3\" Size: \"9\""},
        {"BinarySliceRight", "abcdef", nullptr, {-1e300}, "13:", min},
        {"BinaryAppend", "xy", "abcd", {}, "13:xyabcd"},
        {"BinaryAppendPart", "xy", "abcd", {1, 2}, "13:xybc"},
        {"BinaryAppendPart", "xy", "abcd", {1, kHuge}, "13:xybcd"},
        {"BinaryAppendPart", "xy", "abcd", {4, 1}, "13:xy"},
        {"BinaryAppendPart", "xy", "abcd", {0, 0}, "13:xy"},
        {"BinaryAppendPart", "xy", "abcd", {-4, 1}, "13:xy",
         "Cannot append with negative offset or count. Offset: \"-4\" Count: \"1\""},
    };
    // clang-format on
    for (SourceKind const& kind : kKinds) {
        for (Row const& row : rows) {
            SCOPED_TRACE(std::string(row.entry) + " on " + kind.name + " " + row.shown);
            Variant const first = kind.make(row.first);
            std::vector<Variant> arguments = {first};
            if (row.second != nullptr) {
                arguments.push_back(kind.make(row.second));
            }
            for (double number : row.numbers) {
                arguments.push_back(N(number));
            }
            auto call = Call(row.entry, arguments);
            EXPECT_EQ(Shown(call.result), row.shown);
            EXPECT_NE(call.result.dataPointer(), first.dataPointer());
            EXPECT_EQ(call.reports, InvalidArguments(row.reason));
            EXPECT_EQ(BytesOf(first.dataPointer()), row.first);
        }
        Variant const self = kind.make("xy");  // appended to itself
        EXPECT_EQ(Shown(Call("BinaryAppend", {self, self}).result), "13:xyxy") << kind.name;
    }
    for (char const* entry : {"ToDataRef", "BinarySetFromString"}) {
        EXPECT_EQ(Shown(Call(entry, {Variant::String(bytes)}).result), "13:" + bytes) << entry;
    }
}

TEST(Operations, MissingBuffers) {
    Variant const some = Variant::DataRef(ModuleBuffer("ab"));
    Variant const none = Variant::DataRef(AutoRefPtr<IDataRef>());
    Report const noData = InvalidUsage("No binary data given!");
    Report const first = InvalidUsage("First parameter is invalid!");
    Report const second = InvalidUsage("Second parameter is invalid!");
    // clang-format off
    struct Row { char const* entry; std::vector<Variant> arguments; Report report;
                 char const* shown; };
    Row const rows[] = {  // shown: a number 0, an empty string, an empty buffer or null
        {"BinarySize", {none}, noData, "5:0"},
        {"BinaryToString", {none}, noData, "9:"},
        {"BinaryPartToString", {none, N(-1), N(-1)}, noData, "9:"},
        {"BinarySlice", {none, N(-1), N(-1)}, noData, "13:"},
        {"BinarySliceRight", {none, N(-1)}, noData, "13:"},
        {"BinaryCopy", {none}, noData, "13:null"},
        {"BinaryCopyPart", {none, N(-1), N(-1)}, noData, "13:null"},
        {"BinaryAppend", {none, none}, first, "13:"},
        {"BinaryAppend", {some, none}, second, "13:"},
        {"BinaryAppendPart", {none, some, N(-1), N(-1)}, first, "13:"},
        {"BinaryAppendPart", {some, none, N(0), N(1)}, second, "13:"},
    };
    // clang-format on
    for (Row const& row : rows) {
        auto call = Call(row.entry, row.arguments);
        EXPECT_EQ(call.status, 0u) << row.entry;
        EXPECT_EQ(call.reports, std::vector<Report>{row.report}) << row.entry;
        EXPECT_EQ(Shown(call.result), row.shown) << row.entry;
    }
}

}  // namespace
