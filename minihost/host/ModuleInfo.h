// ModuleInfo: what the stand-in host knows about a loaded module, handed to every entry
// as an IModuleInfo. It holds the module's path; the module carries it along and never
// reads it. It does nothing else.
#pragma once

#include <string>
#include <utility>

#include "host/IModuleInfo.h"

namespace minihost {

class ModuleInfo final : public Tavrel::IModuleInfo {
public:
    // The path the module was loaded from, as given ("" is kept as "").
    explicit ModuleInfo(std::string path) : mPath(std::move(path)) {}
    ~ModuleInfo() = default;

    std::string const& Path() const { return mPath; }

private:
    std::string mPath;
};

}  // namespace minihost
