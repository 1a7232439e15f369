// IDataRef: the interface behind the script type DATAREF, a counted sequence of bytes
// with a size, random read access and a way to replace the content. The module
// implements it as Data; a host implements it as it likes, and need not keep its
// bytes in one piece of memory. The virtual operations speak plain types only.
#pragma once

#include <cstddef>

#include "object/AutoRefPtr.h"
#include "object/IObject.h"

namespace Tavrel {

class IDataRef : public IObject {
public:
    // Number of bytes.
    unsigned long long GetSize() const { return Interface_GetSize(); }

    // Replaces the whole content with a copy of size bytes from bytes.
    void Assign(char const* bytes, std::size_t size) { Interface_Assign(bytes, size); }

    // Copies up to count bytes from offset into destination; returns how many it
    // delivered. offset at or past the end => 0, destination untouched.
    unsigned long long Read(char* destination, std::size_t count,
                            unsigned long long offset) const {
        return Interface_Read(destination, count, offset);
    }

    // A new buffer with the same bytes, sharing no storage; adopts the one reference
    // that comes back.
    AutoRefPtr<IDataRef> Clone() const { return AutoRefPtr<IDataRef>(Interface_Clone()); }

    // The bytes as one piece of memory, or null when the implementer does not expose
    // them (the caller then reads through Read).
    char const* GetData() const { return Interface_GetData(); }

    virtual unsigned long long Interface_GetSize() const = 0;
    virtual void Interface_Assign(char const* bytes, unsigned long long size) = 0;
    virtual unsigned long long Interface_Read(char* destination, unsigned long long count,
                                              unsigned long long offset) const = 0;
    virtual bool Interface_IsEqual(IDataRef* other) const = 0;
    virtual IDataRef* Interface_Clone() const = 0;
    virtual char const* Interface_GetData() const { return nullptr; }

protected:
    IDataRef() = default;
    IDataRef(IDataRef const&) = default;
    IDataRef& operator=(IDataRef const&) = default;
    ~IDataRef() = default;
};

}  // namespace Tavrel
