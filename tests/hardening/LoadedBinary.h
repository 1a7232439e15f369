// LoadedBinary: the entries of the module that ModuleHarness loads, by their short names, and
// one table of calls that reaches every entry with typical arguments and with arguments that
// it reports. It checks no result itself: the tests do.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "minihost/host/Context.h"
#include "minihost/host/FilePolicy.h"
#include "minihost/host/LiveCount.h"
#include "minihost/host/MemoryBuffer.h"
#include "minihost/host/Variant.h"
#include "testing/TestFiles.h"
#include "tests/module/ModuleHarness.h"

namespace tavrel_testing {

// "BinarySize" => tavrel_module_BinarySize, which the module's loader found (it loads only a
// module that has every entry).
inline minihost::EntryFunction EntryOf(std::string const& name) {
    return Module().Entry("tavrel_module_" + name);
}

// The argument values of the calls: buffers of the module and of the host (one that hides
// its bytes), a null DATAREF, a string, a file that exists and one that does not, numbers
// (3, 500: past every end, -1).
struct CallValues {
    using Variant = minihost::Variant;
    // Long enough that every copy of it leaves the string's inline storage.
    static constexpr std::string_view kBytes =
        "0123456789abcdefghijklmnopqrstuvwxyz-0123456789ABCDEFGHIJKLMNOP";

    static Variant HostBuffer(minihost::MemoryBufferOptions options) {
        return Variant::DataRef(
            Tavrel::AutoRefPtr<Tavrel::IDataRef>(new minihost::MemoryBuffer(kBytes, options)));
    }
    // A module buffer with bytes, made by the module's ToDataRef.
    static Variant ModuleBuffer() { return Variant::DataRef(tavrel_testing::ModuleBuffer(kBytes)); }

    // The reference counts of the policy and of the three buffers that the calls share.
    std::array<int, 4> Counts() const {
        return {policy->Interface_GetCount(), module.dataPointer()->Interface_GetCount(),
                host.dataPointer()->Interface_GetCount(),
                hidden.dataPointer()->Interface_GetCount()};
    }

    TempDir directory;  // of the file, a fresh one for each program run
    Variant module = ModuleBuffer(), host = HostBuffer({}), hidden = HostBuffer({false, 7});
    Variant missing = Variant::DataRef({}), text = Variant::String(kBytes);
    Variant file = Variant::String(directory.Write("mapped", kBytes));
    Variant noFile = Variant::String(directory.Path("no such file, long name"));
    Variant three = Variant::Number(3), many = Variant::Number(500), minus = Variant::Number(-1);
    Tavrel::AutoRefPtr<Tavrel::IPolicy> policy{new minihost::FilePolicy()};  // of the calls
};

struct EntryCall {
    char const* name;
    minihost::EntryFunction function;
    std::vector<Tavrel::IVariant*> arguments;
    int reports;  // error reports that the call makes
};

// Every entry once, and each distinct way of reporting once: the missing buffer (with and
// without a result made before it), the negative range (before and after the result is made),
// the missing file, and the missing argument of an append, before and after bytes came in.
inline std::vector<EntryCall> EveryEntryCall(CallValues& v) {
    return {
        {"size of nothing", EntryOf("BinarySize"), {&v.missing}, 1},
        {"from string", EntryOf("BinarySetFromString"), {&v.text}, 0},
        {"to buffer", EntryOf("ToDataRef"), {&v.text}, 0},
        {"to buffer, negative", EntryOf("ToDataRefPart"), {&v.text, &v.minus, &v.many}, 1},
        {"map a file", EntryOf("BinaryMapFile"), {&v.file}, 0},
        {"map no file", EntryOf("BinaryMapFile"), {&v.noFile}, 1},
        {"slice", EntryOf("BinarySlice"), {&v.hidden, &v.three, &v.many}, 0},
        {"slice right, negative", EntryOf("BinarySliceRight"), {&v.host, &v.minus}, 1},
        {"part to string", EntryOf("BinaryPartToString"), {&v.host, &v.three, &v.many}, 0},
        {"to string of nothing", EntryOf("BinaryToString"), {&v.missing}, 1},
        {"copy a module buffer", EntryOf("BinaryCopy"), {&v.module}, 0},
        {"copy part", EntryOf("BinaryCopyPart"), {&v.hidden, &v.three, &v.many}, 0},
        {"append to a module buffer", EntryOf("BinaryAppend"), {&v.module, &v.hidden}, 0},
        {"append nothing", EntryOf("BinaryAppend"), {&v.module, &v.missing}, 1},
        {"append part", EntryOf("BinaryAppendPart"), {&v.module, &v.host, &v.three, &v.many}, 0},
        {"append at -1", EntryOf("BinaryAppendPart"), {&v.host, &v.module, &v.minus, &v.three}, 1},
    };
}

// One call of the table with a fresh context on `policy`, counting its reports into `reports`;
// the status word.
inline unsigned int Invoke(EntryCall& call, Tavrel::IVariant& result,
                           Tavrel::AutoRefPtr<Tavrel::IPolicy> const& policy, int& reports) {
    minihost::Context context{policy};
    context.SetErrorHandler([&reports](minihost::ErrorReport const&) { ++reports; });
    return call.function(static_cast<int>(call.arguments.size()), call.arguments.data(), &result,
                         Module().Info(), &context);
}

}  // namespace tavrel_testing
