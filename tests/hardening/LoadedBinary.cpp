#include "tests/hardening/LoadedBinary.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "minihost/host/Context.h"
#include "minihost/host/MemoryBuffer.h"

namespace tavrel_testing {

namespace {

using minihost::Variant;
using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;

// Long enough that every copy of it leaves the string's inline storage.
constexpr std::string_view kBytes =
    "0123456789abcdefghijklmnopqrstuvwxyz-0123456789ABCDEFGHIJKLMNOP";

Variant HostBuffer(minihost::MemoryBufferOptions options) {
    return Variant::DataRef(AutoRefPtr<IDataRef>(new minihost::MemoryBuffer(kBytes, options)));
}

// A module buffer with bytes, made by the module's ToDataRef.
AutoRefPtr<IDataRef> ModuleBuffer(std::string_view bytes) {
    Variant text = Variant::String(bytes);
    Variant result;
    Tavrel::IVariant* arguments[] = {&text};
    minihost::Context context{AutoRefPtr<Tavrel::IPolicy>()};
    EntryOf("ToDataRef")(1, arguments, &result, Binary().Info(), &context);
    return result.data();
}

}  // namespace

minihost::LoadedModule& Binary() {
    static std::unique_ptr<minihost::LoadedModule> const module = [] {
        std::string error;
        auto loaded = minihost::LoadedModule::Load(TAVREL_MODULE_PATH, error);
        if (!loaded) {
            (void)std::fprintf(stderr, "%s\n", error.c_str());
            std::abort();
        }
        return loaded;
    }();
    return *module;
}

minihost::EntryFunction EntryOf(std::string_view name) {
    minihost::EntryFunction const entry = Binary().Entry("tavrel_module_" + std::string(name));
    if (entry == nullptr) {
        (void)std::fprintf(stderr, "no entry tavrel_module_%.*s\n", static_cast<int>(name.size()),
                           name.data());
        std::abort();
    }
    return entry;
}

CallValues::CallValues()
    : module(Variant::DataRef(ModuleBuffer(kBytes))),
      host(HostBuffer({})),
      hidden(HostBuffer({false, 7})),
      missing(Variant::DataRef({})),
      text(Variant::String(kBytes)),
      file(Variant::String(directory.Write("mapped", kBytes))),
      noFile(Variant::String(directory.Path("no such file, long name"))),
      three(Variant::Number(3)),
      many(Variant::Number(500)),
      negative(Variant::Number(-1)) {}

std::vector<IDataRef*> CallValues::Buffers() const {
    return {module.dataPointer(), host.dataPointer(), hidden.dataPointer()};
}

std::vector<int> CallValues::Counts() const {
    std::vector<int> counts;
    for (IDataRef* const buffer : Buffers()) {
        counts.push_back(buffer->Interface_GetCount());
    }
    return counts;
}

std::vector<EntryCall> EveryEntryCall(CallValues& v) {
    return {
        {"size", "BinarySize", {&v.module}, 0},
        {"size of nothing", "BinarySize", {&v.missing}, 1},
        {"from string", "BinarySetFromString", {&v.text}, 0},
        {"to buffer", "ToDataRef", {&v.text}, 0},
        {"to buffer, part", "ToDataRefPart", {&v.text, &v.three, &v.many}, 0},
        {"to buffer, negative", "ToDataRefPart", {&v.text, &v.negative, &v.many}, 1},
        {"map a file", "BinaryMapFile", {&v.file}, 0},
        {"map no file", "BinaryMapFile", {&v.noFile}, 1},
        {"slice", "BinarySlice", {&v.hidden, &v.three, &v.many}, 0},
        {"slice nothing", "BinarySlice", {&v.missing, &v.three, &v.three}, 1},
        {"slice, negative", "BinarySlice", {&v.module, &v.negative, &v.three}, 1},
        {"slice right", "BinarySliceRight", {&v.module, &v.three}, 0},
        {"slice right, negative", "BinarySliceRight", {&v.host, &v.negative}, 1},
        {"part to string", "BinaryPartToString", {&v.host, &v.three, &v.many}, 0},
        {"part to string, negative", "BinaryPartToString", {&v.module, &v.negative, &v.three}, 1},
        {"to string", "BinaryToString", {&v.hidden}, 0},
        {"to string of nothing", "BinaryToString", {&v.missing}, 1},
        {"copy a host buffer", "BinaryCopy", {&v.host}, 0},
        {"copy a module buffer", "BinaryCopy", {&v.module}, 0},
        {"copy nothing", "BinaryCopy", {&v.missing}, 1},
        {"copy part", "BinaryCopyPart", {&v.hidden, &v.three, &v.many}, 0},
        {"copy part, negative", "BinaryCopyPart", {&v.module, &v.three, &v.negative}, 1},
        {"append to a module buffer", "BinaryAppend", {&v.module, &v.hidden}, 0},
        {"append to itself", "BinaryAppend", {&v.module, &v.module}, 0},
        {"append to nothing", "BinaryAppend", {&v.missing, &v.module}, 1},
        {"append nothing", "BinaryAppend", {&v.module, &v.missing}, 1},
        {"append part", "BinaryAppendPart", {&v.module, &v.host, &v.three, &v.many}, 0},
        {"append part to nothing", "BinaryAppendPart", {&v.missing, &v.host, &v.three, &v.many}, 1},
        {"append part, negative",
         "BinaryAppendPart",
         {&v.host, &v.module, &v.negative, &v.three},
         1},
    };
}

}  // namespace tavrel_testing
