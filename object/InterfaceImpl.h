// InterfaceImpl<T>: the counting implementation that a concrete counted class inherits.
// It adds one atomic reference count to the interface T and the deleting virtual
// destructor, which sits behind all of T's operations in the virtual table.
// It does not guard against overflow or against more releases than references.
#pragma once

#include <atomic>

template <class T>
class InterfaceImpl : public T {
public:
    // A new object starts with one reference, which belongs to its creator.
    InterfaceImpl() noexcept : mCount(1) {}
    InterfaceImpl(InterfaceImpl const&) = delete;
    InterfaceImpl& operator=(InterfaceImpl const&) = delete;

    void Interface_AddRef() const override { mCount.fetch_add(1, std::memory_order_seq_cst); }

    // Destroys the object when the count before this call was exactly 1.
    bool Interface_Release() const override {
        if (mCount.fetch_add(-1, std::memory_order_seq_cst) != 1) {
            return false;
        }
        delete this;
        return true;
    }

    int Interface_GetCount() const override { return mCount.load(std::memory_order_seq_cst); }

    virtual ~InterfaceImpl() {}

private:
    mutable std::atomic<int> mCount;
};
