// The binding seen from the host: status words, empty results of failed bindings, the order
// in which arguments are read, and reference counts on every path.
#include <gtest/gtest.h>
#include <string>
#include <utility>

#include "host/IUserDefinedType.h"
#include "minihost/host/MemoryBuffer.h"
#include "object/InterfaceImpl.h"
#include "tests/module/ModuleHarness.h"

namespace {

using minihost::Variant;
using tavrel_testing::Call;
using tavrel_testing::CallEntry;
using tavrel_testing::ModuleBuffer;
using tavrel_testing::Shown;

class UserObject final : public InterfaceImpl<Tavrel::IUserDefinedType> {
public:
    char const* Interface_GetTypeName() const override { return "Test.Object"; }
};

Variant Buffer(std::string_view bytes) { return Variant::DataRef(ModuleBuffer(bytes)); }
Variant Number(double value) { return Variant::Number(value); }
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
        {"null element", "BinarySize", {Number(1)}, {true}, 65538},
        {"number for a buffer", "BinarySize", {Number(1)}, {}, 65538},
        {"user-defined without object", "BinarySize", {NoObject()}, {}, 65540},
        {"user-defined with object", "BinarySize", {WithObject()}, {}, 65538},
        {"type 200 without object", "BinarySize", {Variant::UserDefined(200, {})}, {}, 65540},
        {"type 20 is no user type", "BinarySize", {Variant::UserDefined(20, {})}, {}, 65538},
        {"extra null argument ignored", "BinarySize", {Buffer("ab"), Number(0)}, {false, true}, 0},
        {"slice: one argument", "BinarySlice", {Buffer("ab")}, {}, 131073},
        {"slice: string for number", "BinarySlice", {Buffer("ab"), Text("1")}, {}, 131074},
        {"slice: third not read", "BinarySlice", {Buffer("ab"), Text("1"), Text("x")}, {}, 131074},
        {"slice: first wrong, rest missing", "BinarySlice", {Text("x")}, {}, 65538},
        {"slice: third missing", "BinarySlice", {Buffer("ab"), Number(0)}, {}, 196609},
        {"append part: fourth wrong", "BinaryAppendPart",
         {Buffer("a"), Buffer("b"), Number(0), Buffer("c")}, {}, 262146},
        {"no coercion: number for string", "ToDataRef", {Number(5)}, {}, 65538},
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
    }
}

TEST(Binding, NullResultVariantStillRunsTheOperation) {
    minihost::Context context(Tavrel::AutoRefPtr<Tavrel::IPolicy>(nullptr));
    int reports = 0;
    context.SetErrorHandler([&](minihost::ErrorReport const&) { ++reports; });
    Variant text = Text("abc");
    Variant offset = Number(-1);
    Variant count = Number(1);
    EXPECT_EQ(CallEntry("ToDataRefPart", {&text, &offset, &count}, nullptr, &context), 0u);
    EXPECT_EQ(reports, 1);
    // A failed binding with a null result stores nothing and does not crash.
    EXPECT_EQ(CallEntry("ToDataRefPart", {}, nullptr, &context), 65537u);
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

TEST(Binding, ReferencesBalanceOnEveryPath) {
    long const live = minihost::MemoryBuffer::LiveCount();
    {
        Tavrel::AutoRefPtr<Tavrel::IDataRef> host(new minihost::MemoryBuffer("hello"));
        Variant argument = Variant::DataRef(host);
        int const before = host->Interface_GetCount();
        Call("BinarySize", {argument});
        Call("BinarySlice", {argument, Text("bad")});
        Call("BinaryAppendPart", {argument, argument, Number(1), Text("bad")});
        Call("BinaryAppendPart", {argument, argument, Number(1), Number(2)});
        Call("BinaryCopy", {argument});
        EXPECT_EQ(host->Interface_GetCount(), before);
        auto copy = Call("BinaryMapFile", {Text("/nonexistent/file")});
        EXPECT_EQ(copy.result.dataPointer(), nullptr);
    }
    EXPECT_EQ(minihost::MemoryBuffer::LiveCount(), live);
}

}  // namespace
