#include "minihost/script/ModuleSetup.h"

#include <utility>

#include "minihost/host/SystemFiles.h"
#include "minihost/script/DefinitionText.h"
#include "minihost/script/ProgramSystem.h"

namespace minihost {

namespace {

// The module's directory relative to the program's, installed and in the build tree, and the
// bytes that separate the components of a path as a user writes it.
#if defined(_WIN32)
constexpr char const* kInstalledDirectory = "\\..\\lib\\tavrel\\modules\\";
constexpr char const* kBuildTreeDirectory = "\\..\\module\\";
constexpr char const* kSeparators = "/\\";
#else
constexpr char const* kInstalledDirectory = "/../lib/tavrel/modules/";
constexpr char const* kBuildTreeDirectory = "/../module/";
constexpr char const* kSeparators = "/";
#endif

// Every entry that the definition text names must be one the module exports.
bool CheckEntries(LoadedModule const& module, FunctionTable const& table, std::string& error) {
    for (Signature const& signature : table.signatures()) {
        if (module.Entry(signature.entry) == nullptr) {
            error = "module '" + module.Path() + "' does not export '" + signature.entry +
                    "', which its definition text names for " + FormatSignature(signature);
            return false;
        }
    }
    return true;
}

}  // namespace

std::vector<std::string> DefaultModuleCandidates(std::string const& programDirectory) {
    return {programDirectory + kInstalledDirectory + kDefaultModuleFile,
            programDirectory + kBuildTreeDirectory + kDefaultModuleFile};
}

std::string ProgramDirectory() {
    std::string const path = ProgramPath();
    return path.empty() ? "" : DirectoryOf(path);
}

std::string FindDefaultModule(std::vector<std::string> const& candidates) {
    for (std::string const& candidate : candidates) {
        if (KindOfPath(candidate) == PathKind::kRegularFile) {
            return candidate;
        }
    }
    return "";
}

bool OpenModule(std::string const& path, ReadyModule& ready, std::string& error) {
    ready.module = LoadedModule::Load(path, error);
    if (!ready.module) {
        return false;
    }
    char const* text = ready.module->Definition();
    std::vector<Signature> signatures;
    std::string why;
    if (!ParseDefinitionText(text != nullptr ? text : "", signatures, why)) {
        error = "module '" + path + "' has a malformed definition text: " + why;
        return false;
    }
    ready.table = FunctionTable(std::move(signatures));
    return CheckEntries(*ready.module, ready.table, error);
}

std::string ModuleName(std::string const& path) {
    std::size_t const slash = path.find_last_of(kSeparators);
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    std::size_t const dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

}  // namespace minihost
