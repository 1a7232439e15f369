// IObject: the root of every reference-counted object that crosses between the module
// and the host. It declares the counting protocol only; InterfaceImpl<T> implements it.
// An object is never destroyed through an IObject pointer: it deletes itself inside its
// own Interface_Release, so IObject has no virtual destructor.
#pragma once

namespace Tavrel {

class IObject {
public:
    // Adds one reference.
    void AddRef() const { Interface_AddRef(); }

    // Drops one reference. Returns true when this call destroyed the object
    // (the count went from 1 to 0); the pointer is dangling afterwards.
    bool Release() const { return Interface_Release(); }

    virtual void Interface_AddRef() const = 0;
    virtual bool Interface_Release() const = 0;
    virtual int Interface_GetCount() const = 0;

protected:
    IObject() = default;
    IObject(IObject const&) = default;
    IObject& operator=(IObject const&) = default;
    ~IObject() = default;
};

}  // namespace Tavrel
