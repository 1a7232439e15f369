#include "minihost/host/Variant.h"

#include <utility>

#include "host/VariantType.h"

namespace minihost {

namespace {

// Adds the reference that travels with a raw pointer handed to the module.
template <class T>
T* WithAddedReference(Tavrel::AutoRefPtr<T> const& held) {
    held.AddRefImpl();
    return held.get();
}

// Shares a raw pointer that arrives without a reference of its own.
template <class T>
Tavrel::AutoRefPtr<T> Share(T* raw) {
    Tavrel::AutoRefPtr<T> shared(raw);
    shared.AddRefImpl();
    return shared;
}

}  // namespace

Variant Variant::Number(double value) {
    Variant variant;
    variant.mType = Tavrel::VariantType::kNumber;
    variant.mNumber = value;
    return variant;
}

Variant Variant::String(std::string_view bytes) {
    Variant variant;
    variant.mType = Tavrel::VariantType::kString;
    variant.mString.assign(bytes.data(), bytes.size());
    return variant;
}

Variant Variant::DataRef(Tavrel::AutoRefPtr<Tavrel::IDataRef> const& data) {
    Variant variant;
    variant.mType = Tavrel::VariantType::kDataRef;
    variant.mData = data;
    return variant;
}

Variant Variant::UserDefined(unsigned int typeNumber,
                             Tavrel::AutoRefPtr<Tavrel::IUserDefinedType> const& object) {
    Variant variant;
    variant.mType = typeNumber;
    variant.mObject = object;
    return variant;
}

double Variant::number() const { return mType == Tavrel::VariantType::kNumber ? mNumber : 0.0; }

Tavrel::IDataRef* Variant::Interface_GetData() const { return WithAddedReference(mData); }

Tavrel::IUserDefinedType* Variant::Interface_GetUserDefined() const {
    return WithAddedReference(mObject);
}

void Variant::Interface_AssignNumber(double value) {
    StartAssignment();
    mType = Tavrel::VariantType::kNumber;
    mNumber = value;
}

void Variant::Interface_AssignString(char const* bytes, unsigned long size) {
    StartAssignment();
    mType = Tavrel::VariantType::kString;
    if (bytes != nullptr) {
        mString.assign(bytes, size);
    }
}

void Variant::Interface_AssignData(Tavrel::IDataRef* data) {
    // NOTE: the new reference is taken before the old one goes, so assigning the buffer
    // already held never drops it to zero.
    Tavrel::AutoRefPtr<Tavrel::IDataRef> incoming = Share(data);
    StartAssignment();
    mType = Tavrel::VariantType::kDataRef;
    mData = std::move(incoming);
}

void Variant::StartAssignment() {
    ++mAssignments;
    mType = kNothing;
    mNumber = 0.0;
    mString.clear();
    mData = Tavrel::AutoRefPtr<Tavrel::IDataRef>();
    mObject = Tavrel::AutoRefPtr<Tavrel::IUserDefinedType>();
}

}  // namespace minihost
