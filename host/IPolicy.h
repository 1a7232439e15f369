// IPolicy: the host's rules for what a script may reach. The module asks it for the
// content of a file; opening, mapping and reading that file is the host's work.
#pragma once

#include "object/AutoRefPtr.h"
#include "object/IDataRef.h"
#include "object/IObject.h"

namespace Tavrel {

class IContext;

class IPolicy : public IObject {
public:
    // A buffer over the file at path (NUL-terminated), or empty when the host gives
    // no data for it. Adopts the reference that comes back.
    AutoRefPtr<IDataRef> LoadData(IContext* context, char const* path) {
        return AutoRefPtr<IDataRef>(Interface_LoadData(context, path));
    }

    virtual IDataRef* Interface_LoadData(IContext* context, char const* path) = 0;

protected:
    IPolicy() = default;
    ~IPolicy() = default;
};

}  // namespace Tavrel
