// The 13 script functions through their entries, on module buffers and on host buffers that
// expose their bytes or hide them; Binary.MapFile with the host's policy; and the binding seen
// from the host: status words, empty results of failed bindings, the order in which arguments
// are read, and reference counts on every path.
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "host/IUserDefinedType.h"
#include "minihost/host/Context.h"
#include "minihost/host/MemoryBuffer.h"
#include "minihost/host/Variant.h"
#include "object/InterfaceImpl.h"
#include "tests/module/ModuleHarness.h"

namespace tavrel_testing {
namespace {

using minihost::MemoryBuffer;

struct SourceKind {
    char const* name;
    std::function<Variant(std::string_view)> make;
};

Variant Host(IDataRef* buffer) { return Variant::DataRef(AutoRefPtr<IDataRef>(buffer)); }

// Every kind of buffer an operation may be given; each delivers all bytes asked for.
std::vector<SourceKind> const kKinds = {
    {"module buffer", [](std::string_view b) { return Variant::DataRef(ModuleBuffer(b)); }},
    {"host, exposed", [](std::string_view b) { return Host(new MemoryBuffer(b)); }},
    {"host, hidden",
     [](std::string_view b) {
         return Host(new MemoryBuffer(b, {false, 0}));
     }},
};

Variant N(double value) { return Variant::Number(value); }
double const kHuge = 9.3e18;  // pinned to the largest long long
double const kInf = std::numeric_limits<double>::infinity();
double const kNaN = std::numeric_limits<double>::quiet_NaN();
char const* const kMin = "-9223372036854775808";

// A host buffer is read once at most by an operation, and never through GetData.
void ExpectReadOnceAtMost(IDataRef* data) {
    if (auto* host = dynamic_cast<MemoryBuffer*>(data)) {
        EXPECT_LE(host->readCalls(), 1);
        EXPECT_EQ(host->getDataCalls(), 0);
    }
}

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
            if (auto* host = dynamic_cast<MemoryBuffer*>(data)) {  // an empty range reads nothing
                EXPECT_EQ(host->readCalls(), *row.bytes == '\0' ? 0 : 1);
                EXPECT_EQ(host->getDataCalls(), 0);
            }
            if (data != nullptr) {
                EXPECT_EQ(data->Interface_GetCount(), count);
                EXPECT_EQ(BytesOf(data), "abcdef");
            }
        }
    }
}

// Every road that reads a range of a host buffer writes what the one Read wrote into its
// result and zero elsewhere, whatever count the Read gives back: a short Read, one that writes
// nothing and claims all, one that writes all and gives 0.
TEST(Operations, ReadingRoadsKeepWhatTheReadWroteAndZeroElsewhere) {
    // clang-format off
    // shown: how the result starts ("9:" a string, "13:" a buffer, "13:xy" appended to "xy")
    struct Row { char const* entry; std::vector<double> numbers; std::string shown; std::size_t offset, count; };
    Row const rows[] = {
        {"BinaryToString", {}, "9:", 0, 6},      {"BinaryPartToString", {1, 3}, "9:", 1, 3},
        {"BinarySlice", {1, 3}, "13:", 1, 3},    {"BinarySliceRight", {2}, "13:", 2, 4},
        {"BinaryCopyPart", {1, 3}, "13:", 1, 3}, {"BinaryAppend", {}, "13:xy", 0, 6},
        {"BinaryAppendPart", {1, 3}, "13:xy", 1, 3},
    };
    struct Fault { minihost::ReadFault fault; std::size_t chunk, written; };
    Fault const faults[] = {{minihost::ReadFault::kNone, 1, 1},
                            {minihost::ReadFault::kOverClaim, 0, 0},
                            {minihost::ReadFault::kUnderReport, 0, 6}};
    // clang-format on
    std::string const bytes = "abcdef";
    for (Fault const& fault : faults) {
        for (Row const& row : rows) {
            SCOPED_TRACE(std::string(row.entry) + ", writes " + std::to_string(fault.written));
            auto* host = new MemoryBuffer(bytes, {false, fault.chunk, fault.fault});
            std::vector<Variant> arguments = {Host(host)};
            if (row.shown == "13:xy") {
                arguments.insert(arguments.begin(), Variant::DataRef(ModuleBuffer("xy")));
            }
            for (double number : row.numbers) {
                arguments.push_back(N(number));
            }
            std::size_t const written = std::min(fault.written, row.count);
            std::string const expected = row.shown + bytes.substr(row.offset, written) +
                                         std::string(row.count - written, '\0');
            EXPECT_EQ(Shown(Call(row.entry, arguments).result), expected);
            EXPECT_EQ(host->readCalls(), 1);
            EXPECT_EQ(host->getDataCalls(), 0);
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
        {"BinarySliceRight", "abcdef", nullptr, {9}, "13:"},
        {"BinarySliceRight", "abcdef", nullptr, {-3}, "13:",
         "Cannot slice with negative offset or size. Offset: \"-3\" Size: \"9\""},
        {"BinarySliceRight", "abcdef", nullptr, {-1e300}, "13:", min},
        {"BinaryAppend", "xy", "abcd", {}, "13:xyabcd"},
        {"BinaryAppendPart", "xy", "abcd", {1, 2}, "13:xybc"},
        {"BinaryAppendPart", "xy", "abcd", {1, 1}, "13:xyb"},
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
            int const held = first.dataPointer()->Interface_GetCount();
            auto call = Call(row.entry, arguments);
            EXPECT_EQ(Shown(call.result), row.shown);
            EXPECT_NE(call.result.dataPointer(), first.dataPointer());
            EXPECT_EQ(first.dataPointer()->Interface_GetCount(), held);
            if (call.result.dataPointer() != nullptr) {  // a host buffer's copy is its clone
                EXPECT_EQ(call.result.dataPointer()->Interface_GetCount(), 1);
            }
            EXPECT_EQ(call.reports, InvalidArguments(row.reason));
            for (Variant const& argument : arguments) {
                ExpectReadOnceAtMost(argument.dataPointer());
            }
            EXPECT_EQ(BytesOf(first.dataPointer()), row.first);
        }
        Variant const self = kind.make("xy");  // appended to itself
        EXPECT_EQ(Shown(Call("BinaryAppend", {self, self}).result), "13:xyxy") << kind.name;
        EXPECT_EQ(self.dataPointer()->Interface_GetCount(), 1) << kind.name;
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

// Binary.MapFile: the module hands the path to the host's policy and passes on its answer.
// A policy that gives a fixed answer.
class FixedPolicy final : public InterfaceImpl<Tavrel::IPolicy> {
public:
    explicit FixedPolicy(AutoRefPtr<IDataRef> answer) : mAnswer(std::move(answer)) {}
    IDataRef* Interface_LoadData(Tavrel::IContext*, char const*) override {
        mAnswer.AddRefImpl();
        return mAnswer.get();
    }

private:
    AutoRefPtr<IDataRef> mAnswer;
};

// Each row with a policy that answers with the host's buffer or with none, or without a
// policy; the reports, the result, and every reference given back. (The path the policy
// sees: the script cases, through the host's file policy.)
TEST(MapFile, PassesOnThePolicysAnswer) {
    AutoRefPtr<IDataRef> host(new minihost::MemoryBuffer("content", {false, 0}));
    // clang-format off
    struct Row { std::string path; bool hasPolicy, giveBuffer, interrupted; char const* reason; };
    Row const rows[] = {  // reason "": no report
        {"a.txt", true, true, false, ""},
        {"", true, false, false, "Given File : '' does not exist."},
        {std::string("ab\0cd", 5), true, false, false, "Given File : 'ab"},
        {"x", true, false, true, ""}, {"x", true, true, true, ""},
        {"a.txt", false, false, false, "Given File : 'a.txt' does not exist."},
    };
    // clang-format on
    for (Row const& row : rows) {
        SCOPED_TRACE("path " + row.path + (row.interrupted ? ", interrupted" : ""));
        int const before = host->Interface_GetCount();
        {
            AutoRefPtr<Tavrel::IPolicy> policy(
                row.hasPolicy ? new FixedPolicy(row.giveBuffer ? host : AutoRefPtr<IDataRef>())
                              : nullptr);
            CallResult const call =
                Call("BinaryMapFile", {Variant::String(row.path)}, {}, policy, row.interrupted);
            EXPECT_EQ(call.status, 0u);
            EXPECT_EQ(call.result.dataPointer(), row.giveBuffer ? host.get() : nullptr);
            std::vector<Report> expected;
            if (*row.reason != '\0') {
                expected.push_back({2, "Binary", "Error.System.Access", row.reason});
            }
            EXPECT_EQ(call.reports, expected);
        }
        EXPECT_EQ(host->Interface_GetCount(), before);
    }
}

// The binding seen from the host: status words, empty results of failed bindings, the order
// in which arguments are read, and reference counts on every path.
class UserObject final : public InterfaceImpl<Tavrel::IUserDefinedType> {
public:
    char const* Interface_GetTypeName() const override { return "Test.Object"; }
};

Variant Buffer(std::string_view bytes) { return Variant::DataRef(ModuleBuffer(bytes)); }
Variant Text(std::string_view bytes) { return Variant::String(bytes); }
Variant NoObject() {
    return Variant::UserDefined(21, Tavrel::AutoRefPtr<Tavrel::IUserDefinedType>());
}
Variant WithObject() {
    return Variant::UserDefined(21, Tavrel::AutoRefPtr<Tavrel::IUserDefinedType>(new UserObject()));
}

TEST(Binding, StatusWords) {
    // clang-format off
    struct Row { char const *name, *entry; std::vector<Variant> arguments; std::vector<bool> nulls;
                 unsigned int status; };
    Row const rows[] = {
        {"no argument", "BinarySize", {}, {}, 65537},
        {"null element", "BinarySize", {N(1)}, {true}, 65538},
        {"number for a buffer", "BinarySize", {N(1)}, {}, 65538},
        {"user-defined without object", "BinarySize", {NoObject()}, {}, 65540},
        {"user-defined with object", "BinarySize", {WithObject()}, {}, 65538},
        {"type 20 is no user type", "BinarySize", {Variant::UserDefined(20, {})}, {}, 65538},
        {"extra null argument ignored", "BinarySize", {Buffer("ab"), N(0)}, {false, true}, 0},
        {"slice: one argument", "BinarySlice", {Buffer("ab")}, {}, 131073},
        {"slice: string for number", "BinarySlice", {Buffer("ab"), Text("1")}, {}, 131074},
        {"slice: third not read", "BinarySlice", {Buffer("ab"), Text("1"), Text("x")}, {}, 131074},
        {"slice: first wrong, rest missing", "BinarySlice", {Text("x")}, {}, 65538},
        {"slice: third missing", "BinarySlice", {Buffer("ab"), N(0)}, {}, 196609},
        {"append part: fourth wrong", "BinaryAppendPart",
         {Buffer("a"), Buffer("b"), N(0), Buffer("c")}, {}, 262146},
        {"no coercion: number for string", "ToDataRef", {N(5)}, {}, 65538},
        {"no coercion: buffer for string", "BinaryMapFile", {Buffer("x")}, {}, 65538},
        {"string for buffer", "BinaryToString", {Text("x")}, {}, 65538},
    };
    // clang-format on
    for (Row const& row : rows) {
        auto call = Call(row.entry, row.arguments, row.nulls);
        EXPECT_EQ(call.status, row.status) << row.name;
        EXPECT_TRUE(call.reports.empty()) << row.name;
        if (row.status != 0) {  // a failed binding stores the empty value of the result once
            std::string_view const entry = row.entry;
            char const* empty = entry == "BinarySize"       ? "5:0"
                                : entry == "BinaryToString" ? "9:"
                                                            : "13:null";
            EXPECT_EQ(Shown(call.result), empty) << row.name;
            EXPECT_EQ(call.result.assignments(), 1) << row.name;
        }
        for (Variant const& argument : row.arguments) {  // every reference given back
            EXPECT_TRUE(!argument.dataPointer() ||
                        argument.dataPointer()->Interface_GetCount() == 1);
        }
    }
}

// A STRING argument that logs which of its readers the binding calls, in order.
class LoggingText final : public Tavrel::IVariant {
public:
    explicit LoggingText(std::string bytes) : mBytes(std::move(bytes)) {}
    std::string const& Log() const { return mLog; }

    unsigned int Interface_GetType() const override { return Note("T", 9); }
    double Interface_GetNumber() const override { return Note("N", 0); }
    char const* Interface_GetString() const override { return Note("S", mBytes.c_str()); }
    unsigned long long Interface_GetStringSize() const override { return Note("Z", mBytes.size()); }
    Tavrel::IDataRef* Interface_GetData() const override { return Note("D", nullptr); }
    Tavrel::IUserDefinedType* Interface_GetUserDefined() const override {
        return Note("U", nullptr);
    }
    void Interface_AssignNumber(double) override {}
    void Interface_AssignString(char const*, unsigned long) override {}
    void Interface_AssignData(Tavrel::IDataRef*) override {}

private:
    template <class V>
    V Note(char const* reader, V value) const {
        mLog += reader;
        return value;
    }
    std::string mBytes;
    mutable std::string mLog;
};

TEST(Binding, StringArgumentsAreReadBytesFirstThenCount) {
    // ToDataRef holds a std::string_view, Binary.MapFile a std::string.
    for (char const* entry : {"ToDataRef", "BinaryMapFile"}) {
        for (char const* bytes : {"ab", ""}) {
            minihost::Context context(Tavrel::AutoRefPtr<Tavrel::IPolicy>(nullptr));
            LoggingText text(bytes);
            EXPECT_EQ(CallEntry(entry, {&text}, nullptr, &context), 0u) << entry << " " << bytes;
            EXPECT_EQ(text.Log(), "TSZ") << entry << " \"" << bytes << '"';
        }
    }
}

}  // namespace
}  // namespace tavrel_testing
