// Variant: one script value as the stand-in host keeps it, handed to module entries as
// an IVariant (arguments and result). It holds nothing, a number, a string of bytes, a
// buffer (DATAREF) or a user-defined object, and counts the assignments it receives.
// It does no conversion between types: reading a value of another type gives the empty
// value of the type asked for. It has no lock; one variant belongs to one thread.
#pragma once

#include <string>
#include <string_view>

#include "host/IUserDefinedType.h"
#include "host/IVariant.h"
#include "object/AutoRefPtr.h"
#include "object/IDataRef.h"

namespace minihost {

class Variant final : public Tavrel::IVariant {
public:
    // Type number of a variant that nothing has been assigned to yet.
    static constexpr unsigned int kNothing = 0;

    // An empty variant: type kNothing, no value.
    Variant() = default;

    // A NUMBER. Number(2.5).number() => 2.5.
    static Variant Number(double value);
    // A STRING with exactly these bytes: String("a\0b") keeps all 3 bytes; String("") => "".
    static Variant String(std::string_view bytes);
    // A DATAREF sharing data (adds a reference). An empty pointer => a DATAREF holding null.
    static Variant DataRef(Tavrel::AutoRefPtr<Tavrel::IDataRef> const& data);
    // A value of type typeNumber sharing object (adds a reference); object may be empty.
    // NOTE: the number is stored as given, so tests can also make values of types that no
    // entry accepts (1, 21, 40...). UserDefined(5, {}) reads as a NUMBER of 0.
    static Variant UserDefined(unsigned int typeNumber,
                               Tavrel::AutoRefPtr<Tavrel::IUserDefinedType> const& object);

    // A copy shares the buffer or object of the source.
    Variant(Variant const& other) = default;
    Variant(Variant&& other) noexcept = default;
    Variant& operator=(Variant const& other) = default;
    Variant& operator=(Variant&& other) noexcept = default;
    ~Variant() = default;

    // Host-side readers; no reference counts change.
    unsigned int type() const { return mType; }
    // The number of a NUMBER; anything else => 0.
    double number() const;
    // The bytes of a STRING; anything else => "".
    std::string const& string() const { return mString; }
    // A shared copy of the buffer of a DATAREF; anything else => empty.
    Tavrel::AutoRefPtr<Tavrel::IDataRef> data() const { return mData; }
    // The raw buffer pointer, without a reference, for identity checks; not DATAREF => null.
    Tavrel::IDataRef* dataPointer() const { return mData.get(); }
    // A shared copy of the user-defined object; none => empty.
    Tavrel::AutoRefPtr<Tavrel::IUserDefinedType> userDefined() const { return mObject; }
    // How many Interface_Assign* calls this variant received.
    int assignments() const { return mAssignments; }

    unsigned int Interface_GetType() const override { return mType; }
    // Not a NUMBER => 0.
    double Interface_GetNumber() const override { return number(); }
    // Not a STRING => "" (never null), and Interface_GetStringSize => 0.
    char const* Interface_GetString() const override { return mString.c_str(); }
    unsigned long long Interface_GetStringSize() const override { return mString.size(); }
    // The held buffer with one added reference, which the caller adopts; none => null.
    Tavrel::IDataRef* Interface_GetData() const override;
    // The held object with one added reference, which the caller adopts; none => null.
    Tavrel::IUserDefinedType* Interface_GetUserDefined() const override;
    // Each assignment drops the previous value (releasing a held buffer or object).
    void Interface_AssignNumber(double value) override;
    // Copies size bytes: (null, 0) => "", ("a\0b", 3) => 3 bytes. Null with size > 0 => "".
    void Interface_AssignString(char const* bytes, unsigned long size) override;
    // Adds its own reference to data (if not null) and releases the buffer held before;
    // assigning the buffer already held keeps it alive. null => a DATAREF holding null.
    void Interface_AssignData(Tavrel::IDataRef* data) override;

private:
    // Counts one assignment and drops the value held before.
    void StartAssignment();

    unsigned int mType = kNothing;
    double mNumber = 0.0;
    std::string mString;
    Tavrel::AutoRefPtr<Tavrel::IDataRef> mData;
    Tavrel::AutoRefPtr<Tavrel::IUserDefinedType> mObject;
    int mAssignments = 0;
};

}  // namespace minihost
