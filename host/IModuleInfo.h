// IModuleInfo: what the host knows about the module. Passed to every entry, carried
// along, and never called or read by the module.
#pragma once

namespace Tavrel {

class IModuleInfo {
protected:
    IModuleInfo() = default;
    ~IModuleInfo() = default;
};

}  // namespace Tavrel
