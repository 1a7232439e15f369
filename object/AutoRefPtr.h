// AutoRefPtr<T>: the smart pointer through which module code holds counted objects.
// Building one from a raw pointer adopts a reference that is already counted; copying
// or converting from another AutoRefPtr shares (adds a reference); destroying releases.
// It has no thread protection of its own; only the count inside the object is atomic.
// Of the operations, only the destructor and the moves are noexcept: they run during
// clean-up, where an exception must not start.
#pragma once

#include <cstddef>
#include <utility>

namespace Tavrel {

template <class T>
class AutoRefPtr {
    using BoolType = void (AutoRefPtr::*)() const;

public:
    // An empty pointer.
    AutoRefPtr() : mPtr(nullptr) {}

    // Adopts p without adding a reference; null makes an empty pointer.
    explicit AutoRefPtr(T* p) : mPtr(p) {}

    // Shares other's object: adds a reference. other => unchanged.
    AutoRefPtr(AutoRefPtr const& other) : mPtr(other.mPtr) { AddRefImpl(); }

    // Shares another pointer's object, converted to T*: AutoRefPtr<IDataRef> from
    // AutoRefPtr<Data>. An empty source gives an empty pointer and adds nothing.
    template <class U>
    AutoRefPtr(AutoRefPtr<U> const& other) : mPtr(other.get()) {
        AddRefImpl();
    }

    // Takes other's reference; other becomes empty. The count does not change.
    AutoRefPtr(AutoRefPtr&& other) noexcept : mPtr(std::exchange(other.mPtr, nullptr)) {}

    ~AutoRefPtr() noexcept { ReleaseImpl(); }

    // Releases what this held, then takes other's reference; other becomes empty.
    AutoRefPtr& operator=(AutoRefPtr&& other) noexcept {
        T* taken = std::exchange(other.mPtr, nullptr);
        ReleaseImpl();
        mPtr = taken;
        return *this;
    }

    // Shares other's object after releasing what this held.
    AutoRefPtr& operator=(AutoRefPtr const& other) {
        if (this != &other) {
            other.AddRefImpl();
            ReleaseImpl();
            mPtr = other.mPtr;
        }
        return *this;
    }

    // Releases what this held, then adopts p without adding a reference.
    // NOTE: passing the pointer already held releases it first; never do that.
    template <class U>
    AutoRefPtr& reset(U* p) {
        ReleaseImpl();
        mPtr = p;
        return *this;
    }

    // The raw pointer, not tested for null. The caller gets no reference of its own.
    T* operator->() const { return mPtr; }
    T* get() const { return mPtr; }

    // True when an object is held. Converts to nothing else: no arithmetic, no integer.
    operator BoolType() const {
        return mPtr != nullptr ? &AutoRefPtr::InvalidCastOfAutoRefPtr : nullptr;
    }

    // Releases the held object, if any, without clearing the pointer: every caller
    // overwrites the pointer or ends its life straight after.
    void ReleaseImpl() const {
        if (mPtr != nullptr) {
            mPtr->Release();
        }
    }

    void AddRefImpl() const {
        if (mPtr != nullptr) {
            mPtr->AddRef();
        }
    }

private:
    void InvalidCastOfAutoRefPtr() const {}

    T* mPtr;
};

}  // namespace Tavrel
