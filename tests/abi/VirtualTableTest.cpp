// The virtual tables of the interfaces that the host implements and the module calls, slot by
// slot. Neither the module's exports nor its debug information show them (the module defines
// none of these operations), so a host compiled elsewhere relies on what is pinned here.
//
// Each interface gets a recorder: an object whose every operation notes its own name and the
// arguments it was given, and returns a value that a narrower or a swapped type would change.
// Each row of a table names a slot, the operation that must sit there (as a member-function
// pointer), the module's inline wrapper of it (if it has one) and the arguments. The test
//   - calls the operation through the member pointer: what ran and what came back there is
//     what the slot must give;
//   - reads the object's virtual table and calls that slot as a host does, through a plain
//     function pointer of the operation's type with the object as its first argument, and
//     checks that the same operation ran with the arguments unchanged and its result came
//     back whole;
//   - calls the wrapper, and checks that it reaches the same operation with the same
//     arguments, and that a wrapper that returns an owned object adopts it: no AddRef,
//     exactly one Release.
// Each row also names the exact type of its operation, which is checked as the file compiles,
// as are the interfaces' bases and size (below).
//
// It assumes the Itanium C++ ABI (g++ and clang on Linux, mingw-w64's g++): the object starts
// with the pointer to its table, a slot holds one function pointer, and an operation is called
// as a plain function whose first argument is the object.
#include <bit>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "host/ErrorSeverity.h"
#include "host/IContext.h"
#include "host/IJSON.h"
#include "host/IModuleInfo.h"
#include "host/IPolicy.h"
#include "host/IUserDefinedType.h"
#include "host/IVariant.h"
#include "object/Data.h"
#include "object/IDataRef.h"
#include "object/IObject.h"
#include "object/InterfaceImpl.h"

namespace Tavrel {
namespace {

// ---- The shape of the interfaces, checked as this file compiles -----------------------------

// An interface as the host sees it: a pointer to its virtual table and nothing else; never
// copied into or destroyed through by the host, so no virtual destructor.
template <class... I>
constexpr bool kAreInterfaces = ((std::is_polymorphic_v<I> && std::is_abstract_v<I> &&
                                  !std::has_virtual_destructor_v<I> &&
                                  sizeof(I) == sizeof(void*)) &&
                                 ...);
static_assert(kAreInterfaces<IObject, IDataRef, IVariant, IContext, IPolicy, IUserDefinedType>);
// Counted by the host: the buffers, the policy and the user-defined objects (CheckCounting
// below converts them to IObject); not the variants and the context (their slot 0 below).
// IModuleInfo has no operation at all: the host's object is passed through and never called.
static_assert(std::is_empty_v<IModuleInfo> && !std::is_polymorphic_v<IModuleInfo>);
// IJSON is only named: nothing of the module may depend on its layout.
template <class T>
concept Complete = requires {
    sizeof(T);
};
static_assert(!Complete<IJSON>, "IJSON must stay a declaration only");

// ---- Recording ------------------------------------------------------------------------------

// One operation that ran: its name, the object it ran on and its arguments, each as 64 bits.
struct Call {
    std::string operation;
    std::vector<std::uint64_t> arguments;
    bool operator==(Call const&) const = default;
};
using Log = std::vector<Call>;
Log gLog;

// Any argument or result as 64 bits: pointers by address, doubles by their bits.
template <class T>
std::uint64_t Word(T value) {
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<std::uintptr_t>(value);
    } else if constexpr (std::is_same_v<T, double>) {
        return std::bit_cast<std::uint64_t>(value);
    } else {
        static_assert(std::is_integral_v<T>);
        return static_cast<std::uint64_t>(value);
    }
}

template <class... T>
void Note(char const* operation, void const* object, T... arguments) {
    gLog.push_back(Call{operation, {Word(object), Word(arguments)...}});
}

// Results and arguments that a narrower or a swapped type would change.
constexpr int kCount = -123456789;
constexpr unsigned long long kSize = 0x1234'5678'9abc'def0ULL;
constexpr unsigned long long kCountArg = 0x2'0000'0005ULL;
constexpr unsigned long long kOffsetArg = 0x3'0000'0007ULL;
constexpr unsigned int kType = 0x8000'0015U;
constexpr double kNumber = -2.5e300;
// Fits the host's unsigned long on every system (32 bits on Windows), high bit set.
constexpr unsigned long kStringSize = 0x8000'0001UL;
constexpr std::uint8_t kSeverity = 0xfe;
std::string const kModule = "Binary", kError = "Error.Tavrel.InvalidUsage",
                  kReason = "No binary data given!";

char gBytes[8] = "bytes";
char const* const kText = "text";
// Distinct addresses that the operations only pass on and never follow.
int gMarkers[3];
IJSON* const kJSON = static_cast<IJSON*>(static_cast<void*>(&gMarkers[0]));
IContext* const kContext = static_cast<IContext*>(static_cast<void*>(&gMarkers[1]));
IDataRef* const kOtherData = static_cast<IDataRef*>(static_cast<void*>(&gMarkers[2]));

// The three counting operations of a recorder derived from IObject.
template <class I>
class Counting : public I {
public:
    void Interface_AddRef() const override { Note("AddRef", this); }
    bool Interface_Release() const override { return Note("Release", this), true; }
    int Interface_GetCount() const override { return Note("GetCount", this), kCount; }
};

using U64 = unsigned long long;

class DataRefRecorder final : public Counting<IDataRef> {
public:
    U64 Interface_GetSize() const override { return Note("GetSize", this), kSize; }
    void Interface_Assign(char const* bytes, U64 size) override {
        Note("Assign", this, bytes, size);
    }
    U64 Interface_Read(char* destination, U64 count, U64 offset) const override {
        return Note("Read", this, destination, count, offset), kSize;
    }
    bool Interface_IsEqual(IDataRef* other) const override {
        return Note("IsEqual", this, other), true;
    }
    IDataRef* Interface_Clone() const override {
        return Note("Clone", this), const_cast<DataRefRecorder*>(this);
    }
    char const* Interface_GetData() const override { return Note("GetData", this), kText; }
} gData;

class UserDefinedRecorder final : public Counting<IUserDefinedType> {
public:
    char const* Interface_GetTypeName() const override { return Note("GetTypeName", this), kText; }
    bool Interface_Deserialize(IJSON const* json) override {
        return Note("Deserialize", this, json), true;
    }
    bool Interface_Deserialize(IJSON const* json, IContext* context) override {
        return Note("Deserialize", this, json, context), true;
    }
    IJSON* Interface_Serialize() const override { return Note("Serialize", this), kJSON; }
    IJSON* Interface_Serialize(IContext* context) const override {
        return Note("Serialize", this, context), kJSON;
    }
} gUser;

class PolicyRecorder final : public Counting<IPolicy> {
public:
    IDataRef* Interface_LoadData(IContext* context, char const* path) override {
        return Note("LoadData", this, context, path), &gData;
    }
} gPolicy;

class VariantRecorder final : public IVariant {
public:
    unsigned int Interface_GetType() const override { return Note("GetType", this), kType; }
    double Interface_GetNumber() const override { return Note("GetNumber", this), kNumber; }
    char const* Interface_GetString() const override { return Note("GetString", this), kText; }
    U64 Interface_GetStringSize() const override { return Note("GetStringSize", this), kSize; }
    IDataRef* Interface_GetData() const override { return Note("GetData", this), &gData; }
    IUserDefinedType* Interface_GetUserDefined() const override {
        return Note("GetUserDefined", this), &gUser;
    }
    void Interface_AssignNumber(double value) override { Note("AssignNumber", this, value); }
    void Interface_AssignString(char const* bytes, unsigned long size) override {
        Note("AssignString", this, bytes, size);
    }
    void Interface_AssignData(IDataRef* data) override { Note("AssignData", this, data); }
} gVariant;

class ContextRecorder final : public IContext {
public:
    bool Interface_IsInterrupted() const override { return Note("IsInterrupted", this), true; }
    IPolicy* Interface_GetPolicy() const override { return Note("GetPolicy", this), &gPolicy; }
    void Interface_TriggerErrorHandler(ErrorSeverity severity, char const* module,
                                       char const* error, char const* reason) override {
        Note("TriggerErrorHandler", this, severity, module, error, reason);
    }
} gContext;

// ---- Calling a slot as a host does ----------------------------------------------------------

// NOTE: clang's sanitizer of calls through a pointer of another function type would object to
// each call below; such a call is exactly what a host makes.
#if defined(__clang__)
#define TAVREL_NO_SANITIZE_FUNCTION __attribute__((no_sanitize("function")))
#else
#define TAVREL_NO_SANITIZE_FUNCTION
#endif

// Slot<M>::Call: the function in slot `slot` of the virtual table of `object`, called as a plain
// function of the member type M (say `int() const`) with `object` first.
template <class M>
struct Slot;
template <class R, class... P>
struct Slot<R(P...)> {
    TAVREL_NO_SANITIZE_FUNCTION static R Call(void const* object, std::size_t slot,
                                              P... arguments) {
        void const* const* table = nullptr;
        std::memcpy(&table, object, sizeof table);
        return std::bit_cast<R (*)(void const*, P...)>(table[slot])(object, arguments...);
    }
};
template <class R, class... P>
struct Slot<R(P...) const> : Slot<R(P...)> {};

// Whether R owns an object (AutoRefPtr): a wrapper that returns one adopts the reference.
template <class R>
constexpr bool kOwns = requires { std::declval<R>().get(); };

// What a call reached, and last what it gave back, as a word under the name "=". An owned
// object that comes back is dropped at once, so its Release shows before that.
template <class F>
Log Run(F call) {
    gLog.clear();
    std::uint64_t result = 0;
    using R = decltype(call());
    if constexpr (std::is_void_v<R>) {
        call();
    } else if constexpr (kOwns<R>) {
        result = Word(call().get());
    } else {
        result = Word(call());
    }
    Log log = gLog;
    log.push_back(Call{"=", {result}});
    return log;
}

// The wrapper that has the operation's name without "Interface_" and takes its arguments.
#define TAVREL_WRAPPER(name) [](auto o, auto... a) { return o->name(a...); }

// One row: the operation `member`, of exactly the type M (checked as the file compiles; for an
// overloaded name M picks the overload), must sit in slot `slot` of the table of `object`;
// called through the member pointer, through the slot and through `wrapper` (unless nullptr)
// with `arguments`, each must reach the same operation with the same arguments and give the
// same result.
template <class M, class I, class C, class W, class... A>
void CheckSlot(I* object, std::size_t slot, M C::*member, W wrapper, A... arguments) {
    Log const direct = Run([&] { return (object->*member)(arguments...); });
    ASSERT_EQ(direct.size(), 2u) << "slot " << slot;
    SCOPED_TRACE("slot " + std::to_string(slot) + ": " + direct[0].operation);
    EXPECT_EQ(direct[0].arguments, (std::vector<std::uint64_t>{Word(object), Word(arguments)...}));
    EXPECT_EQ(Run([&] { return Slot<M>::Call(object, slot, arguments...); }), direct)
        << "what the slot reached and gave back";
    if constexpr (!std::is_null_pointer_v<W>) {
        Log expected = direct;
        if constexpr (kOwns<decltype(wrapper(object, arguments...))>) {
            expected.insert(expected.end() - 1, Call{"Release", direct.back().arguments});
        }
        EXPECT_EQ(Run([&] { return wrapper(object, arguments...); }), expected)
            << "what the wrapper reached and gave back";
    }
}

// IObject's three operations at the start of the table of an interface derived from it,
// reached through the same pointer.
template <class I>
void CheckCounting(I* object) {
    ASSERT_EQ(static_cast<void*>(static_cast<IObject*>(object)), static_cast<void*>(object));
    CheckSlot<void() const>(object, 0, &IObject::Interface_AddRef, TAVREL_WRAPPER(AddRef));
    CheckSlot<bool() const>(object, 1, &IObject::Interface_Release, TAVREL_WRAPPER(Release));
    CheckSlot<int() const>(object, 2, &IObject::Interface_GetCount, nullptr);
}

// ---- The tables ---------------------------------------------------------------------------

TEST(VirtualTable, IDataRef) {
    using I = IDataRef;
    I* const o = &gData;
    CheckCounting(o);
    CheckSlot<U64() const>(o, 3, &I::Interface_GetSize, TAVREL_WRAPPER(GetSize));
    CheckSlot<void(char const*, U64)>(o, 4, &I::Interface_Assign, TAVREL_WRAPPER(Assign), kText,
                                      kCountArg);
    CheckSlot<U64(char*, U64, U64) const>(o, 5, &I::Interface_Read, TAVREL_WRAPPER(Read), gBytes,
                                          kCountArg, kOffsetArg);
    CheckSlot<bool(IDataRef*) const>(o, 6, &I::Interface_IsEqual, nullptr, kOtherData);
    CheckSlot<IDataRef*() const>(o, 7, &I::Interface_Clone, TAVREL_WRAPPER(Clone));
    CheckSlot<char const*() const>(o, 8, &I::Interface_GetData, TAVREL_WRAPPER(GetData));
}

TEST(VirtualTable, IVariant) {
    using I = IVariant;
    I* const o = &gVariant;
    // Adopted: made and (at the end, after the checks) released without a note in between.
    AutoRefPtr<IDataRef> const held(&gData);
    // The wrapper hands the buffer over without a reference: no AddRef, no Release.
    auto const assignData = [&held](I* variant, auto...) { variant->AssignData(held); };
    CheckSlot<unsigned int() const>(o, 0, &I::Interface_GetType, TAVREL_WRAPPER(GetType));
    CheckSlot<double() const>(o, 1, &I::Interface_GetNumber, TAVREL_WRAPPER(GetNumber));
    CheckSlot<char const*() const>(o, 2, &I::Interface_GetString, TAVREL_WRAPPER(GetString));
    CheckSlot<U64() const>(o, 3, &I::Interface_GetStringSize, TAVREL_WRAPPER(GetStringSize));
    CheckSlot<IDataRef*() const>(o, 4, &I::Interface_GetData, TAVREL_WRAPPER(GetData));
    CheckSlot<IUserDefinedType*() const>(o, 5, &I::Interface_GetUserDefined,
                                         TAVREL_WRAPPER(GetUserDefined));
    CheckSlot<void(double)>(o, 6, &I::Interface_AssignNumber, TAVREL_WRAPPER(AssignNumber),
                            kNumber);
    // NOTE: unsigned long, 32 bits on Windows and 64 on Linux: the host's own type.
    CheckSlot<void(char const*, unsigned long)>(o, 7, &I::Interface_AssignString,
                                                TAVREL_WRAPPER(AssignString), kText, kStringSize);
    CheckSlot<void(IDataRef*)>(o, 8, &I::Interface_AssignData, assignData, held.get());
}

TEST(VirtualTable, IContextAndIPolicy) {
    using I = IContext;
    I* const o = &gContext;
    auto const trigger = [](I* context, auto...) {
        context->TriggerErrorHandler(kSeverity, kModule, kError, kReason);
    };
    CheckSlot<bool() const>(o, 0, &I::Interface_IsInterrupted, TAVREL_WRAPPER(IsInterrupted));
    CheckSlot<IPolicy*() const>(o, 1, &I::Interface_GetPolicy, TAVREL_WRAPPER(GetPolicy));
    CheckSlot<void(std::uint8_t, char const*, char const*, char const*)>(
        o, 2, &I::Interface_TriggerErrorHandler, trigger, kSeverity, kModule.c_str(),
        kError.c_str(), kReason.c_str());
    IPolicy* const policy = &gPolicy;
    CheckCounting(policy);
    CheckSlot<IDataRef*(IContext*, char const*)>(policy, 3, &IPolicy::Interface_LoadData,
                                                 TAVREL_WRAPPER(LoadData), kContext, kText);
}

// No wrappers: the module never calls these; a host calls them by slot.
TEST(VirtualTable, IUserDefinedType) {
    using I = IUserDefinedType;
    I* const o = &gUser;
    CheckCounting(o);
    CheckSlot<char const*() const>(o, 3, &I::Interface_GetTypeName, nullptr);
    CheckSlot<bool(IJSON const*)>(o, 4, &I::Interface_Deserialize, nullptr, kJSON);
    CheckSlot<bool(IJSON const*, IContext*)>(o, 5, &I::Interface_Deserialize, nullptr, kJSON,
                                             kContext);
    CheckSlot<IJSON*() const>(o, 6, &I::Interface_Serialize, nullptr);
    CheckSlot<IJSON*(IContext*) const>(o, 7, &I::Interface_Serialize, nullptr, kContext);
}

// The paired forms of IUserDefinedType: a host object overrides one of a pair, and the other
// serves too. Without a context, the form with one is called with a null context; with a
// context, the form without one is called only when the context is not null (else false, null).
// The overrides give true and kJSON only for the arguments that the other form must pass on.
class WithContext final : public InterfaceImpl<IUserDefinedType> {
    char const* Interface_GetTypeName() const override { return kText; }
    bool Interface_Deserialize(IJSON const* json, IContext* context) override {
        return json == kJSON && context == nullptr;
    }
    IJSON* Interface_Serialize(IContext* context) const override {
        return context == nullptr ? kJSON : nullptr;
    }
};

class WithoutContext final : public InterfaceImpl<IUserDefinedType> {
    char const* Interface_GetTypeName() const override { return kText; }
    bool Interface_Deserialize(IJSON const* json) override { return json == kJSON; }
    IJSON* Interface_Serialize() const override { return kJSON; }
};

TEST(VirtualTable, IUserDefinedTypeOneFormServesTheOther) {
    AutoRefPtr<IUserDefinedType> const with(new WithContext()), without(new WithoutContext());
    EXPECT_TRUE(with->Interface_Deserialize(kJSON));
    EXPECT_EQ(with->Interface_Serialize(), kJSON);
    EXPECT_FALSE(without->Interface_Deserialize(kJSON, nullptr));
    EXPECT_EQ(without->Interface_Serialize(nullptr), nullptr);
    EXPECT_TRUE(without->Interface_Deserialize(kJSON, kContext));
    EXPECT_EQ(without->Interface_Serialize(kContext), kJSON);
}

// ---- The module's own counted objects ------------------------------------------------------

// A buffer of the module that notes its destruction.
class Counted final : public Data {
public:
    ~Counted() override { Note("destroyed", this); }
};

// A host's last release of a module buffer, through slot 1, destroys it (the counting itself is
// checked by module_tests; slots 0 to 2 by CheckCounting). The destructor stands behind IDataRef's
// nine operations, as two slots in the Itanium ABI: slot 9 destroys and leaves the memory, slot 10
// destroys and deletes.
TEST(VirtualTable, InterfaceImplCountsAndDestroysThroughItsSlots) {
    gLog.clear();
    EXPECT_TRUE(Slot<bool() const>::Call(new Counted(), 1));
    EXPECT_EQ(gLog.size(), 1u);
    alignas(Counted) unsigned char storage[sizeof(Counted)];
    Slot<void()>::Call(new (storage) Counted(), 9);
    EXPECT_EQ(gLog.size(), 2u);
    Slot<void()>::Call(new Counted(), 10);
    EXPECT_EQ(gLog.size(), 3u);
}

}  // namespace
}  // namespace Tavrel
