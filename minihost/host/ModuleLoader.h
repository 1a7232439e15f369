// LoadedModule: a module shared object opened the way the host opens one (dlopen with
// RTLD_NOW | RTLD_LOCAL, LoadLibrary on Windows; see SharedLibrary.h), then every one of the
// 28 exported names looked up by its plain name (the names come from the module's own lists,
// generated at build time). A module that cannot be opened or lacks a name is refused with a
// text that says why. It calls nothing in the module while loading; the caller calls entries
// and texts.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/IContext.h"
#include "host/IModuleInfo.h"
#include "host/IVariant.h"
#include "minihost/host/ModuleInfo.h"

namespace minihost {

// An exported entry: count, arguments, result, module information, context => status word.
using EntryFunction = unsigned int (*)(int, Tavrel::IVariant**, Tavrel::IVariant*,
                                       Tavrel::IModuleInfo*, Tavrel::IContext*);
// A fixed-text function such as GetModuleVersion.
using TextFunction = char const* (*)();
// GetModuleDefinition; its one argument is ignored by the module.
using DefinitionFunction = char const* (*)(void*);

class LoadedModule {
public:
    // Opens the shared object at path and resolves all 28 names; on failure gives null and
    // sets error (on success error is cleared):
    //   "" or a path with a NUL byte => "cannot open module '<path>': <why>"
    //   missing file / not a shared object => "cannot open module '<path>': <dlerror text>"
    //   names missing => "module '<path>' lacks 3 of the 28 names: GetState, ..." (each
    //                    missing name, in the order of ExportedNames)
    // NOTE: a path without a "/" is opened as "./<path>", a file in the current directory,
    // rather than searched for in the library path as the loader would.
    static std::unique_ptr<LoadedModule> Load(std::string const& path, std::string& error);

    LoadedModule(LoadedModule const&) = delete;
    LoadedModule& operator=(LoadedModule const&) = delete;
    // Closes the library.
    ~LoadedModule();

    // The entry of that full name: "tavrel_module_BinarySize" => the function;
    // "BinarySize", "GetState", "" => null.
    EntryFunction Entry(std::string_view name) const;
    // Calls the fixed-text function of that name: "GetModuleVersion" => its text;
    // "GetModuleDefinition", an entry name, "" => null.
    char const* Text(std::string_view name) const;
    // Calls GetModuleDefinition(nullptr).
    char const* Definition() const;

    // The loader's handle of the library, for tests.
    void* Handle() const { return mHandle; }
    // The path as given to Load.
    std::string const& Path() const { return mInfo.Path(); }
    // Passed to every entry.
    ModuleInfo* Info() { return &mInfo; }

    // The 28 names: the 14 fixed-text functions, GetModuleDefinition, the 13 entries.
    static std::vector<std::string_view> const& ExportedNames();
    // The 13 entries, in the order of the definition text: "tavrel_module_BinarySize", ...
    static std::vector<std::string_view> EntryNames();

private:
    LoadedModule(void* handle, std::string const& path, std::vector<void*> symbols);
    // The symbol of a name among those from..to of ExportedNames; null if not there.
    void* Symbol(std::string_view name, std::size_t from, std::size_t to) const;

    void* mHandle;
    ModuleInfo mInfo;
    std::vector<void*> mSymbols;
};

}  // namespace minihost
