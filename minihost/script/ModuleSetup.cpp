#include "minihost/script/ModuleSetup.h"

#include <unistd.h>

#include <sys/stat.h>
#include <utility>

#include "minihost/script/DefinitionText.h"

namespace minihost {

namespace {

constexpr char const* kInstalledModule = "/../lib/tavrel/modules/Binary.so";
constexpr char const* kBuildTreeModule = "/../module/Binary.so";

bool IsFile(std::string const& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

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
    return {programDirectory + kInstalledModule, programDirectory + kBuildTreeModule};
}

std::string ProgramDirectory() {
    std::string buffer(4096, '\0');
    ssize_t const length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0 || static_cast<std::size_t>(length) >= buffer.size()) {
        return "";
    }
    buffer.resize(static_cast<std::size_t>(length));
    std::size_t const slash = buffer.rfind('/');
    return slash == std::string::npos ? "" : buffer.substr(0, slash == 0 ? 1 : slash);
}

std::string FindDefaultModule(std::vector<std::string> const& candidates) {
    for (std::string const& candidate : candidates) {
        if (IsFile(candidate)) {
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
    std::size_t const slash = path.rfind('/');
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    std::size_t const dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

}  // namespace minihost
