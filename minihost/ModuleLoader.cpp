#include "minihost/ModuleLoader.h"

#include <dlfcn.h>

#include <cstring>
#include <utility>

namespace minihost {

namespace {

constexpr std::size_t kFirstText = 0;
constexpr std::size_t kTextCount = 14;
constexpr std::size_t kDefinitionIndex = 14;
constexpr std::size_t kFirstEntry = 15;

// The current dlerror text, or a fallback when the loader left none.
std::string LoaderError() {
    char const* text = ::dlerror();
    return text != nullptr ? std::string(text) : std::string("unknown loader error");
}

std::string CannotOpen(std::string const& path, std::string const& why) {
    return "cannot open module '" + path + "': " + why;
}

// Why a path cannot even be handed to dlopen, or "" when it can.
std::string UnusablePath(std::string const& path) {
    if (path.empty()) {
        return "no path given";
    }
    if (path.find('\0') != std::string::npos) {
        return "the path holds a NUL byte";
    }
    return std::string();
}

// NOTE: dlopen searches the library path for a name without "/"; a host loads a file.
std::string PathForDlopen(std::string const& path) {
    return path.find('/') == std::string::npos ? "./" + path : path;
}

// "module '<path>' lacks N of the 28 names: a, b".
std::string LacksNames(std::string const& path, std::vector<std::string_view> const& missing) {
    std::string text =
        "module '" + path + "' lacks " + std::to_string(missing.size()) + " of the 28 names: ";
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
    static std::vector<std::string_view> const names = {
        "GetModuleVersion",
        "GetSupportedPlatforms",
        "GetState",
        "GetDownwardsCompatibility",
        "GetSDKDependency",
        "GetModuleDependencies",
        "GetModuleDependenciesOptional",
        "GetModuleDependenciesLoadBefore",
        "GetAlternativeFunctionDependencies",
        "GetAlternativeProcedureDependencies",
        "GetOptionalFunctionDependencies",
        "GetOptionalProcedureDependencies",
        "GetModuleTavrelVersion",
        "GetTavrelSDKVersion",
        "GetModuleDefinition",
        "tavrel_module_BinarySize",
        "tavrel_module_BinarySetFromString",
        "tavrel_module_ToDataRef",
        "tavrel_module_ToDataRefPart",
        "tavrel_module_BinaryMapFile",
        "tavrel_module_BinarySlice",
        "tavrel_module_BinarySliceRight",
        "tavrel_module_BinaryPartToString",
        "tavrel_module_BinaryToString",
        "tavrel_module_BinaryCopy",
        "tavrel_module_BinaryCopyPart",
        "tavrel_module_BinaryAppend",
        "tavrel_module_BinaryAppendPart",
    };
    return names;
}

std::unique_ptr<LoadedModule> LoadedModule::Load(std::string const& path, std::string& error) {
    if (std::string why = UnusablePath(path); !why.empty()) {
        error = CannotOpen(path, why);
        return nullptr;
    }
    ::dlerror();
    void* handle = ::dlopen(PathForDlopen(path).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        error = CannotOpen(path, LoaderError());
        return nullptr;
    }
    std::array<void*, kNameCount> symbols{};
    std::vector<std::string_view> missing;
    for (std::size_t i = 0; i < kNameCount; ++i) {
        std::string const name(ExportedNames()[i]);
        symbols[i] = ::dlsym(handle, name.c_str());
        if (symbols[i] == nullptr) {
            missing.push_back(ExportedNames()[i]);
        }
    }
    if (!missing.empty()) {
        ::dlclose(handle);
        error = LacksNames(path, missing);
        return nullptr;
    }
    error.clear();
    return std::unique_ptr<LoadedModule>(new LoadedModule(handle, path, symbols));
}

LoadedModule::LoadedModule(void* handle, std::string const& path,
                           std::array<void*, kNameCount> symbols)
    : mHandle(handle), mInfo(path), mSymbols(symbols) {}

LoadedModule::~LoadedModule() { ::dlclose(mHandle); }

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
