#include "minihost/host/ModuleLoader.h"

#include <cstring>
#include <iterator>
#include <utility>

#include "minihost/host/SharedLibrary.h"

namespace minihost {

namespace {

// The exported names, in the order of the export list: the fixed-text functions, then
// GetModuleDefinition, then the entries. Generated from the module's own lists.
constexpr std::string_view kNames[] = {
#define TAVREL_EXPORTED_TEXT(name) #name,
#define TAVREL_EXPORTED_DEFINITION(name) #name,
#define TAVREL_EXPORTED_ENTRY(name) #name,
#include "generated/ExportedNames.def"
#undef TAVREL_EXPORTED_TEXT
#undef TAVREL_EXPORTED_DEFINITION
#undef TAVREL_EXPORTED_ENTRY
};

constexpr std::size_t kTextCount = 0
#define TAVREL_EXPORTED_TEXT(name) +1
#define TAVREL_EXPORTED_DEFINITION(name)
#define TAVREL_EXPORTED_ENTRY(name)
#include "generated/ExportedNames.def"
#undef TAVREL_EXPORTED_TEXT
#undef TAVREL_EXPORTED_DEFINITION
#undef TAVREL_EXPORTED_ENTRY
    ;
constexpr std::size_t kFirstText = 0;
constexpr std::size_t kDefinitionIndex = kTextCount;
constexpr std::size_t kFirstEntry = kDefinitionIndex + 1;
constexpr std::size_t kNameCount = std::size(kNames);

std::string CannotOpen(std::string const& path, std::string const& why) {
    return "cannot open module '" + path + "': " + why;
}

// Why a path cannot even be handed to the loader, or "" when it can.
std::string UnusablePath(std::string const& path) {
    if (path.empty()) {
        return "no path given";
    }
    if (path.find('\0') != std::string::npos) {
        return "the path holds a NUL byte";
    }
    return std::string();
}

// "module '<path>' lacks N of the 28 names: a, b".
std::string LacksNames(std::string const& path, std::vector<std::string_view> const& missing) {
    std::string text = "module '" + path + "' lacks " + std::to_string(missing.size()) + " of the " +
                       std::to_string(kNameCount) + " names: ";
    for (std::size_t i = 0; i < missing.size(); ++i) {
        text += (i == 0 ? "" : ", ");
        text += missing[i];
    }
    return text;
}

// A function pointer from a symbol address; dlsym gives functions as void*.
template <class Function>
Function AsFunction(void* symbol) {
    Function function = nullptr;
    static_assert(sizeof(function) == sizeof(symbol));
    std::memcpy(&function, &symbol, sizeof(function));
    return function;
}

}  // namespace

std::vector<std::string_view> const& LoadedModule::ExportedNames() {
    static std::vector<std::string_view> const names(std::begin(kNames), std::end(kNames));
    return names;
}

std::vector<std::string_view> LoadedModule::EntryNames() {
    return {std::begin(kNames) + kFirstEntry, std::end(kNames)};
}

std::unique_ptr<LoadedModule> LoadedModule::Load(std::string const& path, std::string& error) {
    if (std::string why = UnusablePath(path); !why.empty()) {
        error = CannotOpen(path, why);
        return nullptr;
    }
    std::string why;
    void* handle = OpenSharedLibrary(path, why);
    if (handle == nullptr) {
        error = CannotOpen(path, why);
        return nullptr;
    }
    std::vector<void*> symbols(kNameCount);
    std::vector<std::string_view> missing;
    for (std::size_t i = 0; i < kNameCount; ++i) {
        std::string const name(ExportedNames()[i]);
        symbols[i] = FindSymbol(handle, name.c_str());
        if (symbols[i] == nullptr) {
            missing.push_back(ExportedNames()[i]);
        }
    }
    if (!missing.empty()) {
        CloseSharedLibrary(handle);
        error = LacksNames(path, missing);
        return nullptr;
    }
    error.clear();
    return std::unique_ptr<LoadedModule>(new LoadedModule(handle, path, std::move(symbols)));
}

LoadedModule::LoadedModule(void* handle, std::string const& path, std::vector<void*> symbols)
    : mHandle(handle), mInfo(path), mSymbols(std::move(symbols)) {}

LoadedModule::~LoadedModule() { CloseSharedLibrary(mHandle); }

void* LoadedModule::Symbol(std::string_view name, std::size_t from, std::size_t to) const {
    for (std::size_t i = from; i < to; ++i) {
        if (ExportedNames()[i] == name) {
            return mSymbols[i];
        }
    }
    return nullptr;
}

EntryFunction LoadedModule::Entry(std::string_view name) const {
    return AsFunction<EntryFunction>(Symbol(name, kFirstEntry, kNameCount));
}

char const* LoadedModule::Text(std::string_view name) const {
    auto const function = AsFunction<TextFunction>(Symbol(name, kFirstText, kTextCount));
    return function != nullptr ? function() : nullptr;
}

char const* LoadedModule::Definition() const {
    return AsFunction<DefinitionFunction>(mSymbols[kDefinitionIndex])(nullptr);
}

}  // namespace minihost
