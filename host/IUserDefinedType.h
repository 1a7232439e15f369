// IUserDefinedType: a script value of a type that some module defines (type number 21
// and above). The module only tests such a value for null; the (de)serialisation pairs
// below have bodies so that an implementer overrides one of each pair.
#pragma once

#include "host/IJSON.h"
#include "object/IObject.h"

namespace Tavrel {

class IContext;

class IUserDefinedType : public IObject {
public:
    // The name of the user-defined type, as the defining module declares it.
    virtual char const* Interface_GetTypeName() const = 0;

    // Calls the form with a context, passing null.
    virtual bool Interface_Deserialize(IJSON const* json) {
        return Interface_Deserialize(json, nullptr);
    }
    // null context => false; otherwise calls the form without a context.
    virtual bool Interface_Deserialize(IJSON const* json, IContext* context) {
        return context != nullptr && Interface_Deserialize(json);
    }
    // Calls the form with a context, passing null.
    virtual IJSON* Interface_Serialize() const { return Interface_Serialize(nullptr); }
    // null context => null; otherwise calls the form without a context.
    virtual IJSON* Interface_Serialize(IContext* context) const {
        return context != nullptr ? Interface_Serialize() : nullptr;
    }

protected:
    IUserDefinedType() = default;
    ~IUserDefinedType() = default;
};

}  // namespace Tavrel
