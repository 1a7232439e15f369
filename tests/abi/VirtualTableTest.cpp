// The virtual tables of the interfaces that the host implements and the module calls, slot by
// slot. Neither the module's exports nor its debug information show them (the module defines
// none of these operations), so a host compiled elsewhere relies on what is pinned here.
//
// Each interface gets a recorder: an object whose every operation notes its own name and the
// arguments it was given. Each row of a table names a slot and the operation that must sit
// there; the test
//   - reads the object's virtual table and calls that slot as a host does, through a plain
//     function pointer of the operation's type with the object as its first argument, and
//     checks that the row's operation ran with the arguments unchanged and its result came
//     back whole (64-bit values use their high bits, so nothing passes that a narrower type
//     would cut);
//   - calls the module's inline wrapper of that operation, where there is one, and checks
//     that it reaches the same operation with the same arguments, and that a wrapper that
//     returns an owned object adopts it: no AddRef, exactly one Release.
// The types of the operations are checked at compile time (InterfaceSignatures.cpp).
//
// It assumes the Itanium C++ ABI (g++ and clang on Linux, mingw-w64's g++): the object starts
// with the pointer to its table, a slot holds one function pointer, and an operation is called
// as a plain function whose first argument is the object.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "host/IContext.h"
#include "host/IJSON.h"
#include "host/IPolicy.h"
#include "host/IUserDefinedType.h"
#include "host/IVariant.h"
#include "object/IDataRef.h"
#include "object/IObject.h"
#include "object/InterfaceImpl.h"

namespace Tavrel {
namespace {

// ---- Recording ------------------------------------------------------------------------------

// One operation that ran: "<interface>::<operation>" and its arguments, each as 64 bits.
struct Call {
    std::string operation;
    std::vector<std::uint64_t> arguments;
    bool operator==(Call const&) const = default;
};

std::ostream& operator<<(std::ostream& out, Call const& call) {
    out << call.operation << "(";
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
        out << (i == 0 ? "" : ", ") << "0x" << std::hex << call.arguments[i] << std::dec;
    }
    return out << ")";
}

using Log = std::vector<Call>;

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
std::vector<std::uint64_t> Words(T... values) {
    return {Word(values)...};
}

// The base of every recorder: where the calls go, and under which interface name.
class Recorder {
public:
    Recorder(Log& log, char const* interface) : mLog(log), mInterface(interface) {}

protected:
    template <class... T>
    void Note(char const* operation, T... arguments) const {
        mLog.push_back(Call{std::string(mInterface) + "::" + operation, Words(arguments...)});
    }

private:
    Log& mLog;
    char const* mInterface;
};

// The three counting operations of a recorder derived from IObject: each only notes itself.
#define TAVREL_RECORD_IOBJECT                                  \
    void Interface_AddRef() const override { Note("AddRef"); } \
    bool Interface_Release() const override {                  \
        Note("Release");                                       \
        return true;                                           \
    }                                                          \
    int Interface_GetCount() const override {                  \
        Note("GetCount");                                      \
        return kCount;                                         \
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

char gBytes[8] = "bytes";
char const* const kText = "text";
// Distinct addresses that the operations only pass on and never follow.
int gMarkers[3];
IJSON* const kJSON = static_cast<IJSON*>(static_cast<void*>(&gMarkers[0]));
IContext* const kContext = static_cast<IContext*>(static_cast<void*>(&gMarkers[1]));
IDataRef* const kOtherData = static_cast<IDataRef*>(static_cast<void*>(&gMarkers[2]));

class DataRefRecorder final : public IDataRef, Recorder {
public:
    explicit DataRefRecorder(Log& log) : Recorder(log, "IDataRef") {}
    TAVREL_RECORD_IOBJECT
    unsigned long long Interface_GetSize() const override {
        Note("GetSize");
        return kSize;
    }
    void Interface_Assign(char const* bytes, unsigned long long size) override {
        Note("Assign", bytes, size);
    }
    unsigned long long Interface_Read(char* destination, unsigned long long count,
                                      unsigned long long offset) const override {
        Note("Read", destination, count, offset);
        return kSize;
    }
    bool Interface_IsEqual(IDataRef* other) const override {
        Note("IsEqual", other);
        return true;
    }
    IDataRef* Interface_Clone() const override {
        Note("Clone");
        return const_cast<DataRefRecorder*>(this);
    }
    char const* Interface_GetData() const override {
        Note("GetData");
        return kText;
    }
};

class UserDefinedRecorder final : public IUserDefinedType, Recorder {
public:
    explicit UserDefinedRecorder(Log& log) : Recorder(log, "IUserDefinedType") {}
    TAVREL_RECORD_IOBJECT
    char const* Interface_GetTypeName() const override {
        Note("GetTypeName");
        return kText;
    }
    bool Interface_Deserialize(IJSON const* json) override {
        Note("Deserialize", json);
        return true;
    }
    bool Interface_Deserialize(IJSON const* json, IContext* context) override {
        Note("Deserialize", json, context);
        return true;
    }
    IJSON* Interface_Serialize() const override {
        Note("Serialize");
        return kJSON;
    }
    IJSON* Interface_Serialize(IContext* context) const override {
        Note("Serialize", context);
        return kJSON;
    }
};

class PolicyRecorder final : public IPolicy, Recorder {
public:
    PolicyRecorder(Log& log, IDataRef* data) : Recorder(log, "IPolicy"), mData(data) {}
    TAVREL_RECORD_IOBJECT
    IDataRef* Interface_LoadData(IContext* context, char const* path) override {
        Note("LoadData", context, path);
        return mData;
    }

private:
    IDataRef* mData;
};

class VariantRecorder final : public IVariant, Recorder {
public:
    VariantRecorder(Log& log, IDataRef* data, IUserDefinedType* user)
        : Recorder(log, "IVariant"), mData(data), mUser(user) {}
    unsigned int Interface_GetType() const override {
        Note("GetType");
        return kType;
    }
    double Interface_GetNumber() const override {
        Note("GetNumber");
        return kNumber;
    }
    char const* Interface_GetString() const override {
        Note("GetString");
        return kText;
    }
    unsigned long long Interface_GetStringSize() const override {
        Note("GetStringSize");
        return kSize;
    }
    IDataRef* Interface_GetData() const override {
        Note("GetData");
        return mData;
    }
    IUserDefinedType* Interface_GetUserDefined() const override {
        Note("GetUserDefined");
        return mUser;
    }
    void Interface_AssignNumber(double value) override { Note("AssignNumber", value); }
    void Interface_AssignString(char const* bytes, unsigned long size) override {
        Note("AssignString", bytes, size);
    }
    void Interface_AssignData(IDataRef* data) override { Note("AssignData", data); }

private:
    IDataRef* mData;
    IUserDefinedType* mUser;
};

class ContextRecorder final : public IContext, Recorder {
public:
    ContextRecorder(Log& log, IPolicy* policy) : Recorder(log, "IContext"), mPolicy(policy) {}
    bool Interface_IsInterrupted() const override {
        Note("IsInterrupted");
        return true;
    }
    IPolicy* Interface_GetPolicy() const override {
        Note("GetPolicy");
        return mPolicy;
    }
    void Interface_TriggerErrorHandler(ErrorSeverity severity, char const* module,
                                       char const* error, char const* reason) override {
        Note("TriggerErrorHandler", severity, module, error, reason);
    }

private:
    IPolicy* mPolicy;
};

#undef TAVREL_RECORD_IOBJECT

// ---- Calling a slot as a host does ----------------------------------------------------------

// NOTE: clang's sanitizer of calls through a pointer of another function type would object to
// each call below; such a call is exactly what a host makes.
#if defined(__clang__)
#define TAVREL_NO_SANITIZE_FUNCTION __attribute__((no_sanitize("function")))
#else
#define TAVREL_NO_SANITIZE_FUNCTION
#endif

// The function in slot `slot` of the virtual table of `object`, called with `object` first.
template <class Result, class... Arguments>
TAVREL_NO_SANITIZE_FUNCTION Result CallSlot(void const* object, std::size_t slot,
                                            Arguments... arguments) {
    using Function = Result (*)(void const*, Arguments...);
    void const* const* table = nullptr;
    std::memcpy(&table, object, sizeof table);
    return std::bit_cast<Function>(table[slot])(object, arguments...);
}

// One slot of an interface's table: the operation that must sit there, what it must be given
// and give back, how a host calls the slot, and the module's wrapper of it (if it has one).
template <class Interface>
struct Slot {
    std::size_t slot;
    Call expected;
    std::uint64_t result;
    std::function<std::uint64_t(Interface*, std::size_t)> callSlot;
    std::function<std::uint64_t(Interface*)> callWrapper = nullptr;
    // The wrapper adopts the object that comes back, which it releases once at its end.
    char const* adoptedReleases = nullptr;
};

// Calls every row's slot, then its wrapper, and compares what ran against the row.
template <class Interface>
void CheckTable(Interface* object, Log& log, std::vector<Slot<Interface>> const& rows) {
    // The host reaches the counting operations through the same pointer: IObject must sit
    // at the start of every interface that derives from it.
    if constexpr (std::is_base_of_v<IObject, Interface>) {
        ASSERT_EQ(static_cast<void*>(static_cast<IObject*>(object)), static_cast<void*>(object));
    }
    for (Slot<Interface> const& row : rows) {
        SCOPED_TRACE("slot " + std::to_string(row.slot) + ": " + row.expected.operation);
        log.clear();
        EXPECT_EQ(row.callSlot(object, row.slot), row.result) << "result through the slot";
        EXPECT_EQ(log, Log{row.expected}) << "what the slot reached";
        if (!row.callWrapper) {
            continue;
        }
        log.clear();
        EXPECT_EQ(row.callWrapper(object), row.result) << "result through the wrapper";
        Log expected{row.expected};
        if (row.adoptedReleases != nullptr) {
            expected.push_back(Call{row.adoptedReleases, {}});
        }
        EXPECT_EQ(log, expected) << "what the wrapper reached";
    }
}

// The rows of the three counting operations, shared by every interface derived from IObject.
template <class Interface>
std::vector<Slot<Interface>> CountingSlots(std::string const& name) {
    return {
        {0,
         {name + "::AddRef", {}},
         0,
         [](Interface* o, std::size_t s) {
             CallSlot<void>(o, s);
             return std::uint64_t{0};
         },
         [](Interface* o) {
             o->AddRef();
             return std::uint64_t{0};
         }},
        {1,
         {name + "::Release", {}},
         1,
         [](Interface* o, std::size_t s) { return Word(CallSlot<bool>(o, s)); },
         [](Interface* o) { return Word(o->Release()); }},
        {2,
         {name + "::GetCount", {}},
         Word(kCount),
         [](Interface* o, std::size_t s) { return Word(CallSlot<int>(o, s)); }},
    };
}

template <class Interface>
std::vector<Slot<Interface>> Join(std::vector<Slot<Interface>> rows,
                                  std::vector<Slot<Interface>> const& more) {
    rows.insert(rows.end(), more.begin(), more.end());
    return rows;
}

// ---- The tables ---------------------------------------------------------------------------

TEST(VirtualTable, IDataRef) {
    Log log;
    DataRefRecorder data(log);
    IDataRef* const self = &data;
    using Row = Slot<IDataRef>;
    CheckTable<IDataRef>(
        self, log,
        Join(CountingSlots<IDataRef>("IDataRef"),
             {
                 Row{3,
                     {"IDataRef::GetSize", {}},
                     kSize,
                     [](IDataRef* o, std::size_t s) {
                         return Word(CallSlot<unsigned long long>(o, s));
                     },
                     [](IDataRef* o) { return Word(o->GetSize()); }},
                 Row{4,
                     {"IDataRef::Assign", Words(kText, kCountArg)},
                     0,
                     [](IDataRef* o, std::size_t s) {
                         CallSlot<void>(o, s, kText, kCountArg);
                         return std::uint64_t{0};
                     },
                     [](IDataRef* o) {
                         o->Assign(kText, kCountArg);
                         return std::uint64_t{0};
                     }},
                 Row{5,
                     {"IDataRef::Read", Words(gBytes, kCountArg, kOffsetArg)},
                     kSize,
                     [](IDataRef* o, std::size_t s) {
                         return Word(
                             CallSlot<unsigned long long>(o, s, gBytes, kCountArg, kOffsetArg));
                     },
                     [](IDataRef* o) { return Word(o->Read(gBytes, kCountArg, kOffsetArg)); }},
                 Row{6,
                     {"IDataRef::IsEqual", Words(kOtherData)},
                     1,
                     [](IDataRef* o, std::size_t s) {
                         return Word(CallSlot<bool>(o, s, kOtherData));
                     }},
                 Row{7,
                     {"IDataRef::Clone", {}},
                     Word(self),
                     [](IDataRef* o, std::size_t s) { return Word(CallSlot<IDataRef*>(o, s)); },
                     [](IDataRef* o) { return Word(o->Clone().get()); },
                     "IDataRef::Release"},
                 Row{8,
                     {"IDataRef::GetData", {}},
                     Word(kText),
                     [](IDataRef* o, std::size_t s) { return Word(CallSlot<char const*>(o, s)); },
                     [](IDataRef* o) { return Word(o->GetData()); }},
             }));
}

TEST(VirtualTable, IVariant) {
    Log log;
    DataRefRecorder data(log);
    UserDefinedRecorder user(log);
    VariantRecorder variant(log, &data, &user);
    IDataRef* const dataPointer = &data;
    IUserDefinedType* const userPointer = &user;
    // Adopted: made and (at the end, after the checks) released without a note in between.
    AutoRefPtr<IDataRef> const held(dataPointer);
    using Row = Slot<IVariant>;
    CheckTable<IVariant>(
        &variant, log,
        {
            Row{0,
                {"IVariant::GetType", {}},
                kType,
                [](IVariant* o, std::size_t s) { return Word(CallSlot<unsigned int>(o, s)); },
                [](IVariant* o) { return Word(o->GetType()); }},
            Row{1,
                {"IVariant::GetNumber", {}},
                Word(kNumber),
                [](IVariant* o, std::size_t s) { return Word(CallSlot<double>(o, s)); },
                [](IVariant* o) { return Word(o->GetNumber()); }},
            Row{2,
                {"IVariant::GetString", {}},
                Word(kText),
                [](IVariant* o, std::size_t s) { return Word(CallSlot<char const*>(o, s)); },
                [](IVariant* o) { return Word(o->GetString()); }},
            Row{3,
                {"IVariant::GetStringSize", {}},
                kSize,
                [](IVariant* o, std::size_t s) { return Word(CallSlot<unsigned long long>(o, s)); },
                [](IVariant* o) { return Word(o->GetStringSize()); }},
            Row{4,
                {"IVariant::GetData", {}},
                Word(dataPointer),
                [](IVariant* o, std::size_t s) { return Word(CallSlot<IDataRef*>(o, s)); },
                [](IVariant* o) { return Word(o->GetData().get()); },
                "IDataRef::Release"},
            Row{5,
                {"IVariant::GetUserDefined", {}},
                Word(userPointer),
                [](IVariant* o, std::size_t s) { return Word(CallSlot<IUserDefinedType*>(o, s)); },
                [](IVariant* o) { return Word(o->GetUserDefined().get()); },
                "IUserDefinedType::Release"},
            Row{6,
                {"IVariant::AssignNumber", Words(kNumber)},
                0,
                [](IVariant* o, std::size_t s) {
                    CallSlot<void>(o, s, kNumber);
                    return std::uint64_t{0};
                },
                [](IVariant* o) {
                    o->AssignNumber(kNumber);
                    return std::uint64_t{0};
                }},
            Row{7,
                {"IVariant::AssignString", Words(kText, kStringSize)},
                0,
                [](IVariant* o, std::size_t s) {
                    CallSlot<void>(o, s, kText, kStringSize);
                    return std::uint64_t{0};
                },
                [](IVariant* o) {
                    o->AssignString(kText, kStringSize);
                    return std::uint64_t{0};
                }},
            // The wrapper hands the buffer over without a reference: no AddRef, no Release.
            Row{8,
                {"IVariant::AssignData", Words(dataPointer)},
                0,
                [dataPointer](IVariant* o, std::size_t s) {
                    CallSlot<void>(o, s, dataPointer);
                    return std::uint64_t{0};
                },
                [&held](IVariant* o) {
                    o->AssignData(held);
                    return std::uint64_t{0};
                }},
        });
}

TEST(VirtualTable, IContext) {
    Log log;
    DataRefRecorder data(log);
    PolicyRecorder policy(log, &data);
    ContextRecorder context(log, &policy);
    IPolicy* const policyPointer = &policy;
    static std::string const module = "Binary";
    static std::string const error = "Error.Tavrel.InvalidUsage";
    static std::string const reason = "No binary data given!";
    using Row = Slot<IContext>;
    CheckTable<IContext>(
        &context, log,
        {
            Row{0,
                {"IContext::IsInterrupted", {}},
                1,
                [](IContext* o, std::size_t s) { return Word(CallSlot<bool>(o, s)); },
                [](IContext* o) { return Word(o->IsInterrupted()); }},
            Row{1,
                {"IContext::GetPolicy", {}},
                Word(policyPointer),
                [](IContext* o, std::size_t s) { return Word(CallSlot<IPolicy*>(o, s)); },
                [](IContext* o) { return Word(o->GetPolicy().get()); },
                "IPolicy::Release"},
            Row{2,
                {"IContext::TriggerErrorHandler",
                 Words(kSeverity, module.c_str(), error.c_str(), reason.c_str())},
                0,
                [](IContext* o, std::size_t s) {
                    CallSlot<void>(o, s, kSeverity, module.c_str(), error.c_str(), reason.c_str());
                    return std::uint64_t{0};
                },
                [](IContext* o) {
                    o->TriggerErrorHandler(kSeverity, module, error, reason);
                    return std::uint64_t{0};
                }},
        });
}

TEST(VirtualTable, IPolicy) {
    Log log;
    DataRefRecorder data(log);
    PolicyRecorder policy(log, &data);
    IDataRef* const dataPointer = &data;
    using Row = Slot<IPolicy>;
    CheckTable<IPolicy>(
        &policy, log,
        Join(CountingSlots<IPolicy>("IPolicy"),
             {
                 Row{3,
                     {"IPolicy::LoadData", Words(kContext, kText)},
                     Word(dataPointer),
                     [](IPolicy* o, std::size_t s) {
                         return Word(CallSlot<IDataRef*>(o, s, kContext, kText));
                     },
                     [](IPolicy* o) { return Word(o->LoadData(kContext, kText).get()); },
                     "IDataRef::Release"},
             }));
}

TEST(VirtualTable, IUserDefinedType) {
    Log log;
    UserDefinedRecorder user(log);
    using Row = Slot<IUserDefinedType>;
    // No wrappers: the module never calls these; a host calls them by slot.
    CheckTable<IUserDefinedType>(
        &user, log,
        Join(CountingSlots<IUserDefinedType>("IUserDefinedType"),
             {
                 Row{3,
                     {"IUserDefinedType::GetTypeName", {}},
                     Word(kText),
                     [](IUserDefinedType* o, std::size_t s) {
                         return Word(CallSlot<char const*>(o, s));
                     }},
                 Row{4,
                     {"IUserDefinedType::Deserialize", Words(kJSON)},
                     1,
                     [](IUserDefinedType* o, std::size_t s) {
                         return Word(CallSlot<bool>(o, s, static_cast<IJSON const*>(kJSON)));
                     }},
                 Row{5,
                     {"IUserDefinedType::Deserialize", Words(kJSON, kContext)},
                     1,
                     [](IUserDefinedType* o, std::size_t s) {
                         return Word(
                             CallSlot<bool>(o, s, static_cast<IJSON const*>(kJSON), kContext));
                     }},
                 Row{6,
                     {"IUserDefinedType::Serialize", {}},
                     Word(kJSON),
                     [](IUserDefinedType* o, std::size_t s) {
                         return Word(CallSlot<IJSON*>(o, s));
                     }},
                 Row{7,
                     {"IUserDefinedType::Serialize", Words(kContext)},
                     Word(kJSON),
                     [](IUserDefinedType* o, std::size_t s) {
                         return Word(CallSlot<IJSON*>(o, s, kContext));
                     }},
             }));
}

// ---- The module's own counted objects ------------------------------------------------------

// An InterfaceImpl<IDataRef> whose buffer operations do nothing; it notes its destruction.
class Counted final : public InterfaceImpl<IDataRef> {
public:
    explicit Counted(int& destroyed) : mDestroyed(destroyed) {}
    ~Counted() override { ++mDestroyed; }
    unsigned long long Interface_GetSize() const override { return 0; }
    void Interface_Assign(char const*, unsigned long long) override {}
    unsigned long long Interface_Read(char*, unsigned long long,
                                      unsigned long long) const override {
        return 0;
    }
    bool Interface_IsEqual(IDataRef*) const override { return false; }
    IDataRef* Interface_Clone() const override { return nullptr; }

private:
    int& mDestroyed;
};

// A host counts the module's buffers through slots 0 to 2, and the last release destroys.
TEST(VirtualTable, InterfaceImplCountsThroughTheFirstThreeSlots) {
    int destroyed = 0;
    IDataRef* const data = new Counted(destroyed);
    EXPECT_EQ(CallSlot<int>(data, 2), 1);
    CallSlot<void>(data, 0);
    EXPECT_EQ(CallSlot<int>(data, 2), 2);
    EXPECT_FALSE(CallSlot<bool>(data, 1));
    EXPECT_EQ(destroyed, 0);
    EXPECT_TRUE(CallSlot<bool>(data, 1));
    EXPECT_EQ(destroyed, 1);
}

// The destructor stands behind IDataRef's nine operations, as two slots in the Itanium ABI:
// slot 9 destroys and leaves the memory, slot 10 destroys and deletes.
TEST(VirtualTable, InterfaceImplDestructorComesLast) {
    int destroyed = 0;
    alignas(Counted) unsigned char storage[sizeof(Counted)];
    IDataRef* const inPlace = new (storage) Counted(destroyed);
    CallSlot<void>(inPlace, 9);
    EXPECT_EQ(destroyed, 1);

    IDataRef* const onHeap = new Counted(destroyed);
    CallSlot<void>(onHeap, 10);
    EXPECT_EQ(destroyed, 2);
}

}  // namespace
}  // namespace Tavrel
