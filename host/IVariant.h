// IVariant: one script value of the host, as handed to an entry (arguments and result).
// The module reads it and assigns a result through the wrappers below; a variant is
// the host's and lives at least until the entry returns.
#pragma once

#include <cstddef>
#include <limits>
#include <stdexcept>

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
    // Copies size bytes; null with size 0 is accepted. The host takes the size as an unsigned
    // long, which is 32 bits wide on Windows: a size it cannot carry throws std::length_error
    // before the host is called, so a string is never cut short.
    //   ("abc", 3) => the host gets 3;  (any, 2^32) on Windows => std::length_error
    void AssignString(char const* bytes, std::size_t size) {
        if constexpr (sizeof(std::size_t) > sizeof(unsigned long)) {
            if (size > std::numeric_limits<unsigned long>::max()) {
                throw std::length_error("IVariant::AssignString: the host's size cannot carry it");
            }
        }
        Interface_AssignString(bytes, static_cast<unsigned long>(size));
    }
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
    // NOTE: unsigned long is the host's type here, part of the binary layout it owns.
    virtual void Interface_AssignString(char const* bytes, unsigned long size) = 0;
    virtual void Interface_AssignData(IDataRef* data) = 0;

protected:
    IVariant() = default;
    IVariant(IVariant const&) = default;
    IVariant& operator=(IVariant const&) = default;
    ~IVariant() = default;
};

}  // namespace Tavrel
