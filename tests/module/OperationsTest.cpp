// The 13 script functions through their entries, on module buffers and on host buffers
// that expose their bytes, hide them, or deliver short reads.
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "minihost/host/MemoryBuffer.h"
#include "object/InterfaceImpl.h"
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
std::vector<SourceKind> const& SourceKinds() {
    static std::vector<SourceKind> const kinds = {
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
    return kinds;
}

Variant N(double value) { return Variant::Number(value); }
Variant NoBuffer() { return Variant::DataRef(AutoRefPtr<IDataRef>()); }
double const kHuge = 9.3e18;  // pinned to the largest long long
double const kInf = std::numeric_limits<double>::infinity();
double const kNaN = std::numeric_limits<double>::quiet_NaN();
char const* const kMin = "-9223372036854775808";

// One row of a range table over the source "abcdef": numbers in, bytes out, and the numbers
// as the report shows them (null: no report).
struct RangeRow {
    double offset;
    double size;
    char const* bytes;
    char const* shownOffset = nullptr;
    char const* shownSize = nullptr;
};

// Script numbers are cut toward zero, NaN is 0, and numbers beyond long long are pinned.
// clang-format off
std::vector<RangeRow> const kRanges = {
    {0, 6, "abcdef"},       {1, 2, "bc"},           {4, 100, "ef"},      {1, kHuge, "bcdef"},
    {6, 1, ""},             {9, 1, ""},             {2, 0, ""},          {2.9, 2.9, "cd"},
    {-0.5, 1, "a"},         {kNaN, 3, "abc"},       {0, kNaN, ""},       {1, kInf, "bcdef"},
    {1, 1e300, "bcdef"},    {1e19, 1, ""},          {-1, 2, "", "-1", "2"},
    {2, -1, "", "2", "-1"}, {-5, -6, "", "-5", "-6"}, {-2.9, 1, "", "-2", "1"},
    {-kInf, -1e300, "", kMin, kMin},
};
// clang-format on

// Runs entry(source, offset, size) for every row and source kind (the text "abcdef" for
// ToDataRefPart); checks the result (a new buffer with one reference, or a string), the exact
// report, and that the source keeps its bytes and its count.
void CheckRanges(char const* entry, char const* lead, char const* sizeName) {
    bool const givesText = std::string_view(entry) == "BinaryPartToString";
    std::vector<SourceKind> const kinds =
        std::string_view(entry) == "ToDataRefPart"
            ? std::vector<SourceKind>{{"text",
                                       [](std::string_view b) { return Variant::String(b); }}}
            : SourceKinds();
    for (SourceKind const& kind : kinds) {
        for (RangeRow const& row : kRanges) {
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

TEST(Operations, WholeBufferOperationsKeepEveryByte) {
    std::string const bytes("a\0b\0\xff", 5);
    struct Row {
        char const* entry;
        std::vector<double> numbers;
        std::string shown;
    };
    Row const rows[] = {
        {"BinarySize", {}, "5:5"},
        {"BinaryToString", {}, "9:" + bytes},
        {"BinaryCopy", {}, "13:" + bytes},
        {"BinarySliceRight", {0}, "13:" + bytes},
    };
    for (SourceKind const& kind : SourceKinds()) {
        for (Row const& row : rows) {
            SCOPED_TRACE(std::string(row.entry) + " on " + kind.name);
            Variant const source = kind.make(bytes);
            std::vector<Variant> arguments = {source};
            for (double number : row.numbers) {
                arguments.push_back(N(number));
            }
            auto call = Call(row.entry, arguments);
            EXPECT_EQ(Shown(call.result), row.shown);
            EXPECT_NE(call.result.dataPointer(), source.dataPointer());
            EXPECT_TRUE(call.reports.empty());
        }
    }
    for (char const* entry : {"ToDataRef", "BinarySetFromString"}) {
        EXPECT_EQ(Shown(Call(entry, {Variant::String(bytes)}).result), "13:" + bytes) << entry;
    }
}

TEST(Operations, SliceFromAnOffsetToTheEnd) {
    struct Row {
        double offset;
        char const* bytes;
        char const* reason;
    };
    Row const rows[] = {
        {0, "abcdef", ""},
        {2, "cdef", ""},
        {6, "", ""},
        {9, "", ""},
        {-3, "", "Cannot slice with negative offset or size. Offset: \"-3\" Size: \"9\""},
        {-1e300, "",
         "Cannot slice with negative offset or size. Offset: \"-9223372036854775808\" "
         "Size: \"9223372036854775807\""},
    };
    for (Row const& row : rows) {
        auto call =
            Call("BinarySliceRight", {Variant::DataRef(ModuleBuffer("abcdef")), N(row.offset)});
        EXPECT_EQ(Shown(call.result), std::string("13:") + row.bytes) << row.offset;
        EXPECT_EQ(call.reports, InvalidArguments(row.reason)) << row.offset;
    }
}

TEST(Operations, Appends) {
    struct Row {
        char const* name;
        std::vector<double> range;  // empty: the two-argument form
        char const* bytes;
        char const* reason;
    };
    Row const rows[] = {
        {"whole", {}, "xyabcd", ""},
        {"part", {1, 2}, "xybc", ""},
        {"count past the end", {1, kHuge}, "xybcd", ""},
        {"offset at the end", {4, 1}, "xy", ""},
        {"count 0", {0, 0}, "xy", ""},
        {"negative", {-4, 1}, "xy", "Cannot append with negative offset or count. Offset: \"-4\" Count: \"1\""},
    };
    for (SourceKind const& kind : SourceKinds()) {
        for (Row const& row : rows) {
            Variant const first = kind.make("xy");
            std::vector<Variant> arguments = {first, kind.make("abcd")};
            for (double number : row.range) {
                arguments.push_back(N(number));
            }
            auto call = Call(row.range.empty() ? "BinaryAppend" : "BinaryAppendPart", arguments);
            EXPECT_EQ(Shown(call.result), std::string("13:") + row.bytes)
                << row.name << " " << kind.name;
            EXPECT_EQ(call.reports, InvalidArguments(row.reason)) << row.name;
            EXPECT_EQ(BytesOf(first.dataPointer()), "xy");
        }
    }
}

// A host buffer that hides its bytes and writes each GetSize and Read it receives, with the
// buffer's name, to a log shared by all buffers of one call.
class LoggingBuffer final : public InterfaceImpl<IDataRef> {
public:
    LoggingBuffer(std::string name, std::string bytes, std::vector<std::string>& log)
        : mName(std::move(name)), mBytes(std::move(bytes)), mLog(log) {}
    unsigned long long Interface_GetSize() const override {
        mLog.push_back(mName + ".GetSize");
        return mBytes.size();
    }
    void Interface_Assign(char const*, unsigned long long) override { mLog.push_back("Assign"); }
    unsigned long long Interface_Read(char* destination, unsigned long long count,
                                      unsigned long long offset) const override {
        mLog.push_back(mName + ".Read " + std::to_string(count) + "@" + std::to_string(offset));
        std::string const part = mBytes.substr(offset, count);
        part.copy(destination, part.size());
        return part.size();
    }
    bool Interface_IsEqual(IDataRef*) const override { return false; }
    IDataRef* Interface_Clone() const override { return nullptr; }

private:
    std::string mName;
    std::string mBytes;
    std::vector<std::string>& mLog;
};

TEST(Operations, CallsOnTheBuffersComeInTheirOrder) {
    struct Row {
        char const* entry;
        bool sameObject;  // the second buffer argument is the first one again
        std::vector<double> numbers;
        std::vector<std::string> calls;
        char const* bytes;
    };
    Row const rows[] = {
        {"BinaryAppend", false, {},
         {"a.GetSize", "a.GetSize", "a.Read 2@0", "b.GetSize", "b.GetSize", "b.Read 4@0"},
         "xyabcd"},
        {"BinaryAppend", true, {},
         {"a.GetSize", "a.GetSize", "a.Read 2@0", "a.GetSize", "a.GetSize", "a.Read 2@0"},
         "xyxy"},
        {"BinaryAppendPart", false, {1, 9},
         {"a.GetSize", "a.GetSize", "a.Read 2@0", "b.GetSize", "b.GetSize", "b.Read 3@1"},
         "xybcd"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(std::string(row.entry) + (row.sameObject ? " on itself" : ""));
        std::vector<std::string> log;
        AutoRefPtr<IDataRef> a(new LoggingBuffer("a", "xy", log));
        AutoRefPtr<IDataRef> b(new LoggingBuffer("b", "abcd", log));
        std::vector<Variant> arguments = {Variant::DataRef(a),
                                          Variant::DataRef(row.sameObject ? a : b)};
        for (double number : row.numbers) {
            arguments.push_back(N(number));
        }
        auto call = Call(row.entry, arguments);
        EXPECT_EQ(log, row.calls);
        EXPECT_EQ(BytesOf(call.result.dataPointer()), row.bytes);
    }
}

TEST(Operations, MissingBuffers) {
    Variant const some = Variant::DataRef(ModuleBuffer("ab"));
    Report const noData = InvalidUsage("No binary data given!");
    Report const first = InvalidUsage("First parameter is invalid!");
    Report const second = InvalidUsage("Second parameter is invalid!");
    struct Row {
        char const* entry;
        std::vector<Variant> arguments;
        Report report;
        char const* shown;  // a number 0, an empty string, an empty buffer or null
    };
    Row const rows[] = {
        {"BinarySize", {NoBuffer()}, noData, "5:0"},
        {"BinaryToString", {NoBuffer()}, noData, "9:"},
        {"BinaryPartToString", {NoBuffer(), N(-1), N(-1)}, noData, "9:"},
        {"BinarySlice", {NoBuffer(), N(-1), N(-1)}, noData, "13:"},
        {"BinarySliceRight", {NoBuffer(), N(-1)}, noData, "13:"},
        {"BinaryCopy", {NoBuffer()}, noData, "13:null"},
        {"BinaryCopyPart", {NoBuffer(), N(-1), N(-1)}, noData, "13:null"},
        {"BinaryAppend", {NoBuffer(), NoBuffer()}, first, "13:"},
        {"BinaryAppend", {some, NoBuffer()}, second, "13:"},
        {"BinaryAppendPart", {NoBuffer(), some, N(-1), N(-1)}, first, "13:"},
        {"BinaryAppendPart", {some, NoBuffer(), N(0), N(1)}, second, "13:"},
    };
    for (Row const& row : rows) {
        auto call = Call(row.entry, row.arguments);
        EXPECT_EQ(call.status, 0u) << row.entry;
        EXPECT_EQ(call.reports, std::vector<Report>{row.report}) << row.entry;
        EXPECT_EQ(Shown(call.result), row.shown) << row.entry;
    }
}

TEST(Operations, CopyOfAHostBufferIsTheHostsClone) {
    auto host = AutoRefPtr<IDataRef>(new MemoryBuffer("abc", {false, 0}));
    auto call = Call("BinaryCopy", {Variant::DataRef(host)});
    auto* clone = dynamic_cast<MemoryBuffer*>(call.result.dataPointer());
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->bytes(), "abc");
    EXPECT_FALSE(clone->options().exposeBytes);
}

}  // namespace
