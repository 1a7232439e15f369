// IVariant: one script value of the host, as handed to an entry (arguments and result).
// The module reads it and assigns a result through the wrappers below; a variant is
// the host's and lives at least until the entry returns.
#pragma once

#include "host/IUserDefinedType.h"
#include "object/AutoRefPtr.h"
#include "object/IDataRef.h"

namespace Tavrel {

class IVariant {
public:
    // The type number: VariantType::kNumber, kString, kDataRef, or a user-defined one.
    unsigned int GetType() const { return Interface_GetType(); }
    double GetNumber() const { return Interface_GetNumber(); }
    // The bytes of a STRING; they may hold NUL bytes, so GetStringSize counts them.
    char const* GetString() const { return Interface_GetString(); }
    unsigned long long GetStringSize() const { return Interface_GetStringSize(); }
    // The buffer of a DATAREF, or empty; adopts the reference that comes back.
    AutoRefPtr<IDataRef> GetData() const { return AutoRefPtr<IDataRef>(Interface_GetData()); }
    // The object of a user-defined value, or empty; adopts the reference that comes back.
    AutoRefPtr<IUserDefinedType> GetUserDefined() const {
        return AutoRefPtr<IUserDefinedType>(Interface_GetUserDefined());
    }

    void AssignNumber(double value) { Interface_AssignNumber(value); }
    // Copies size bytes; null with size 0 is accepted.
    void AssignString(char const* bytes, unsigned long size) { Interface_AssignString(bytes, size); }
    // Hands the buffer over without a reference: the host adds its own if it keeps it.
    // An empty pointer is accepted.
    void AssignData(AutoRefPtr<IDataRef> const& data) { Interface_AssignData(data.get()); }

    virtual unsigned int Interface_GetType() const = 0;
    virtual double Interface_GetNumber() const = 0;
    virtual char const* Interface_GetString() const = 0;
    virtual unsigned long long Interface_GetStringSize() const = 0;
    virtual IDataRef* Interface_GetData() const = 0;
    virtual IUserDefinedType* Interface_GetUserDefined() const = 0;
    virtual void Interface_AssignNumber(double value) = 0;
    virtual void Interface_AssignString(char const* bytes, unsigned long size) = 0;
    virtual void Interface_AssignData(IDataRef* data) = 0;

protected:
    IVariant() = default;
    IVariant(IVariant const&) = default;
    IVariant& operator=(IVariant const&) = default;
    ~IVariant() = default;
};

}  // namespace Tavrel
