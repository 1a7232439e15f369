// The 13 script functions through their entries, on module buffers and on host buffers
// that expose their bytes, hide them, or deliver short reads.
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "minihost/MemoryBuffer.h"
#include "object/InterfaceImpl.h"
#include "tests/module/ModuleHarness.h"

namespace {

using minihost::MemoryBuffer;
using minihost::Variant;
using moduletest::BytesOf;
using moduletest::Call;
using moduletest::InvalidArgument;
using moduletest::InvalidUsage;
using moduletest::Report;
using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;

struct SourceKind {
    char const* name;
    std::function<AutoRefPtr<IDataRef>(std::string_view)> make;
};

// Every kind of buffer an operation may be given; each delivers all bytes asked for.
std::vector<SourceKind> const& SourceKinds() {
    static std::vector<SourceKind> const kinds = {
        {"module buffer", [](std::string_view b) { return moduletest::ModuleBuffer(b); }},
        {"host, exposed", [](std::string_view b) { return AutoRefPtr<IDataRef>(new MemoryBuffer(b)); }},
        {"host, hidden",
         [](std::string_view b) { return AutoRefPtr<IDataRef>(new MemoryBuffer(b, {false, 0})); }},
    };
    return kinds;
}

Variant N(double value) { return Variant::Number(value); }
Variant NoBuffer() { return Variant::DataRef(AutoRefPtr<IDataRef>()); }
double const kHuge = 9.3e18;  // pinned to the largest long long

std::string ReasonFor(char const* lead, char const* sizeName, long long offset, long long size) {
    return std::string(lead) + " Offset: \"" + std::to_string(offset) + "\" " + sizeName + ": \"" +
           std::to_string(size) + "\"";
}

// One row of a range table over the source "abcdef": numbers in, bytes and report out.
struct RangeRow {
    double offset;
    double size;
    char const* bytes;
    bool reported;
};

std::vector<RangeRow> const kRanges = {
    {0, 6, "abcdef", false}, {1, 2, "bc", false},   {4, 100, "ef", false},
    {1, kHuge, "bcdef", false}, {6, 1, "", false},  {9, 1, "", false},
    {2, 0, "", false},       {-1, 2, "", true},      {2, -1, "", true},
    {-5, -6, "", true},
};

// Runs entry(source, offset, size) for every row and source kind; checks the result is a
// buffer (or a string when isString) with the expected bytes and the exact report.
void CheckRanges(char const* entry, bool isString, char const* lead, char const* sizeName) {
    for (SourceKind const& kind : SourceKinds()) {
        for (RangeRow const& row : kRanges) {
            std::string const name = std::string(entry) + " on " + kind.name + " (" +
                                     std::to_string(row.offset) + ", " + std::to_string(row.size) + ")";
            auto source = kind.make("abcdef");
            int const count = source->Interface_GetCount();
            auto call = Call(entry, {Variant::DataRef(source), N(row.offset), N(row.size)});
            ASSERT_EQ(call.status, 0u) << name;
            if (isString) {
                EXPECT_EQ(call.result.string(), row.bytes) << name;
            } else {
                ASSERT_NE(call.result.dataPointer(), nullptr) << name;
                EXPECT_NE(call.result.dataPointer(), source.get()) << name;
                EXPECT_EQ(BytesOf(call.result.dataPointer()), row.bytes) << name;
                EXPECT_EQ(call.result.dataPointer()->Interface_GetCount(), 1) << name;
            }
            std::vector<Report> expected;
            if (row.reported) {
                expected.push_back(InvalidArgument(ReasonFor(
                    lead, sizeName, static_cast<long long>(row.offset), static_cast<long long>(row.size))));
            }
            EXPECT_EQ(call.reports, expected) << name;
            EXPECT_EQ(source->Interface_GetCount(), count) << name;
            EXPECT_EQ(BytesOf(source.get()), "abcdef") << name;
        }
    }
}

TEST(Operations, RangesOfEveryRangedOperation) {
    CheckRanges("BinaryPartToString", true, "Cannot convert binary part to string.", "Size");
    CheckRanges("BinarySlice", false, "Cannot slice with negative offset or size.", "Size");
    CheckRanges("BinaryCopyPart", false, "Cannot copy with negative offset or count.", "Count");
}

TEST(Operations, RangesOfTextsMadeIntoBuffers) {
    for (RangeRow const& row : kRanges) {
        auto call = Call("ToDataRefPart", {Variant::String("abcdef"), N(row.offset), N(row.size)});
        ASSERT_NE(call.result.dataPointer(), nullptr);
        EXPECT_EQ(BytesOf(call.result.dataPointer()), row.bytes) << row.offset << ", " << row.size;
        EXPECT_EQ(call.reports.size(), row.reported ? 1u : 0u) << row.offset << ", " << row.size;
    }
}

TEST(Operations, WholeBufferOperationsKeepEveryByte) {
    std::string const bytes("a\0b\0\xff", 5);
    for (SourceKind const& kind : SourceKinds()) {
        auto source = kind.make(bytes);
        Variant argument = Variant::DataRef(source);
        EXPECT_EQ(Call("BinarySize", {argument}).result.number(), 5.0) << kind.name;
        EXPECT_EQ(Call("BinaryToString", {argument}).result.string(), bytes) << kind.name;
        for (char const* entry : {"BinaryCopy", "BinarySliceRight"}) {
            std::vector<Variant> arguments = {argument};
            if (std::string_view(entry) == "BinarySliceRight") {
                arguments.push_back(N(0));
            }
            auto call = Call(entry, arguments);
            ASSERT_NE(call.result.dataPointer(), nullptr) << entry << " " << kind.name;
            EXPECT_NE(call.result.dataPointer(), source.get()) << entry << " " << kind.name;
            EXPECT_EQ(BytesOf(call.result.dataPointer()), bytes) << entry << " " << kind.name;
            EXPECT_TRUE(call.reports.empty());
        }
    }
    for (char const* entry : {"ToDataRef", "BinarySetFromString"}) {
        auto call = Call(entry, {Variant::String(bytes)});
        EXPECT_EQ(BytesOf(call.result.dataPointer()), bytes) << entry;
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
        auto call = Call("BinarySliceRight", {Variant::DataRef(moduletest::ModuleBuffer("abcdef")), N(row.offset)});
        EXPECT_EQ(BytesOf(call.result.dataPointer()), row.bytes) << row.offset;
        std::vector<Report> expected;
        if (*row.reason != '\0') {
            expected.push_back(InvalidArgument(row.reason));
        }
        EXPECT_EQ(call.reports, expected) << row.offset;
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
            auto first = kind.make("xy");
            auto second = kind.make("abcd");
            std::vector<Variant> arguments = {Variant::DataRef(first), Variant::DataRef(second)};
            for (double number : row.range) {
                arguments.push_back(N(number));
            }
            auto call = Call(row.range.empty() ? "BinaryAppend" : "BinaryAppendPart", arguments);
            ASSERT_NE(call.result.dataPointer(), nullptr) << row.name;
            EXPECT_EQ(BytesOf(call.result.dataPointer()), row.bytes) << row.name << " " << kind.name;
            std::vector<Report> expected;
            if (*row.reason != '\0') {
                expected.push_back(InvalidArgument(row.reason));
            }
            EXPECT_EQ(call.reports, expected) << row.name;
            EXPECT_EQ(BytesOf(first.get()), "xy");
        }
    }
    auto self = moduletest::ModuleBuffer("ab");
    auto doubled = Call("BinaryAppend", {Variant::DataRef(self), Variant::DataRef(self)});
    EXPECT_EQ(BytesOf(doubled.result.dataPointer()), "abab");
    EXPECT_EQ(self->GetSize(), 2u);
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
    Variant const some = Variant::DataRef(moduletest::ModuleBuffer("ab"));
    Report const noData = InvalidUsage("No binary data given!");
    Report const first = InvalidUsage("First parameter is invalid!");
    Report const second = InvalidUsage("Second parameter is invalid!");
    enum Result { kNumberZero, kEmptyString, kEmptyBuffer, kNullBuffer };
    struct Row {
        char const* entry;
        std::vector<Variant> arguments;
        Report report;
        Result result;
    };
    Row const rows[] = {
        {"BinarySize", {NoBuffer()}, noData, kNumberZero},
        {"BinaryToString", {NoBuffer()}, noData, kEmptyString},
        {"BinaryPartToString", {NoBuffer(), N(-1), N(-1)}, noData, kEmptyString},
        {"BinarySlice", {NoBuffer(), N(-1), N(-1)}, noData, kEmptyBuffer},
        {"BinarySliceRight", {NoBuffer(), N(-1)}, noData, kEmptyBuffer},
        {"BinaryCopy", {NoBuffer()}, noData, kNullBuffer},
        {"BinaryCopyPart", {NoBuffer(), N(-1), N(-1)}, noData, kNullBuffer},
        {"BinaryAppend", {NoBuffer(), NoBuffer()}, first, kEmptyBuffer},
        {"BinaryAppend", {some, NoBuffer()}, second, kEmptyBuffer},
        {"BinaryAppendPart", {NoBuffer(), some, N(-1), N(-1)}, first, kEmptyBuffer},
        {"BinaryAppendPart", {some, NoBuffer(), N(0), N(1)}, second, kEmptyBuffer},
    };
    for (Row const& row : rows) {
        auto call = Call(row.entry, row.arguments);
        EXPECT_EQ(call.status, 0u) << row.entry;
        EXPECT_EQ(call.reports, std::vector<Report>{row.report}) << row.entry;
        switch (row.result) {
            case kNumberZero:
                EXPECT_EQ(call.result.type(), 5u) << row.entry;
                EXPECT_EQ(call.result.number(), 0.0) << row.entry;
                break;
            case kEmptyString:
                EXPECT_EQ(call.result.type(), 9u) << row.entry;
                EXPECT_EQ(call.result.string(), "") << row.entry;
                break;
            case kEmptyBuffer:
                ASSERT_NE(call.result.dataPointer(), nullptr) << row.entry;
                EXPECT_EQ(call.result.dataPointer()->GetSize(), 0u) << row.entry;
                break;
            case kNullBuffer:
                EXPECT_EQ(call.result.type(), 13u) << row.entry;
                EXPECT_EQ(call.result.dataPointer(), nullptr) << row.entry;
                break;
        }
    }
}

TEST(Operations, ShortReadsLeaveZeros) {
    auto hidden = [] { return AutoRefPtr<IDataRef>(new MemoryBuffer("abcdef", {false, 4})); };
    std::string const expected("abcd\0\0", 6);
    EXPECT_EQ(Call("BinaryToString", {Variant::DataRef(hidden())}).result.string(), expected);
    for (char const* entry : {"BinarySlice", "BinaryCopyPart"}) {
        auto call = Call(entry, {Variant::DataRef(hidden()), N(0), N(6)});
        EXPECT_EQ(BytesOf(call.result.dataPointer()), expected) << entry;
    }
    auto appended = Call("BinaryAppend", {Variant::DataRef(hidden()), Variant::DataRef(hidden())});
    EXPECT_EQ(BytesOf(appended.result.dataPointer()), expected + expected);
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
