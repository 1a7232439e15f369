// The shape of the interfaces that the host implements and the module calls, checked while
// this file compiles: the exact type of every virtual operation, which base each interface
// has, and that none carries data or a virtual destructor. A host compiled elsewhere was built
// against these declarations; a change here moves the binary face under it.
//
// The order of the operations in each virtual table is checked at run time, slot by slot
// (VirtualTableTest.cpp). This file holds no test of its own: it fails by not compiling.
#include <cstdint>
#include <type_traits>

#include "host/ErrorSeverity.h"
#include "host/IContext.h"
#include "host/IJSON.h"
#include "host/IModuleInfo.h"
#include "host/IPolicy.h"
#include "host/IUserDefinedType.h"
#include "host/IVariant.h"
#include "object/IDataRef.h"
#include "object/IObject.h"
#include "object/InterfaceImpl.h"

namespace Tavrel {
namespace {

// Compiles only when the member function Class::name has exactly the type Type (for an
// overloaded name: when one of its overloads has it). The conversion of the argument is the
// check; the assertion only gives it a place to stand.
template <class Type>
constexpr bool Declared(Type) {
    return true;
}
#define TAVREL_PIN(Class, name, ...) static_assert(Declared<__VA_ARGS__>(&Class::name))

// An interface as the host sees it: a pointer to its virtual table and nothing else; never
// copied into or destroyed through by the host, so no virtual destructor.
template <class I>
constexpr bool kIsInterface = std::is_polymorphic_v<I> && std::is_abstract_v<I> &&
                              !std::has_virtual_destructor_v<I> && sizeof(I) == sizeof(void*);

template <class T>
concept Complete = requires { sizeof(T); };

// ---- IObject: the counting protocol ------------------------------------------------------
static_assert(kIsInterface<IObject>);
TAVREL_PIN(IObject, Interface_AddRef, void (IObject::*)() const);
TAVREL_PIN(IObject, Interface_Release, bool (IObject::*)() const);
TAVREL_PIN(IObject, Interface_GetCount, int (IObject::*)() const);

// ---- IDataRef ------------------------------------------------------------------------------
static_assert(kIsInterface<IDataRef>);
static_assert(std::is_base_of_v<IObject, IDataRef> && std::is_convertible_v<IDataRef*, IObject*>);
TAVREL_PIN(IDataRef, Interface_GetSize, unsigned long long (IDataRef::*)() const);
TAVREL_PIN(IDataRef, Interface_Assign, void (IDataRef::*)(char const*, unsigned long long));
TAVREL_PIN(IDataRef, Interface_Read,
           unsigned long long (IDataRef::*)(char*, unsigned long long, unsigned long long) const);
TAVREL_PIN(IDataRef, Interface_IsEqual, bool (IDataRef::*)(IDataRef*) const);
TAVREL_PIN(IDataRef, Interface_Clone, IDataRef* (IDataRef::*)() const);
TAVREL_PIN(IDataRef, Interface_GetData, char const* (IDataRef::*)() const);

// ---- IVariant: no base, not counted --------------------------------------------------------
static_assert(kIsInterface<IVariant>);
static_assert(!std::is_base_of_v<IObject, IVariant>);
TAVREL_PIN(IVariant, Interface_GetType, unsigned int (IVariant::*)() const);
TAVREL_PIN(IVariant, Interface_GetNumber, double (IVariant::*)() const);
TAVREL_PIN(IVariant, Interface_GetString, char const* (IVariant::*)() const);
TAVREL_PIN(IVariant, Interface_GetStringSize, unsigned long long (IVariant::*)() const);
TAVREL_PIN(IVariant, Interface_GetData, IDataRef* (IVariant::*)() const);
TAVREL_PIN(IVariant, Interface_GetUserDefined, IUserDefinedType* (IVariant::*)() const);
TAVREL_PIN(IVariant, Interface_AssignNumber, void (IVariant::*)(double));
// NOTE: unsigned long, 32 bits on Windows and 64 on Linux: the host's own type.
TAVREL_PIN(IVariant, Interface_AssignString, void (IVariant::*)(char const*, unsigned long));
TAVREL_PIN(IVariant, Interface_AssignData, void (IVariant::*)(IDataRef*));

// ---- IContext: no base, not counted --------------------------------------------------------
static_assert(kIsInterface<IContext>);
static_assert(!std::is_base_of_v<IObject, IContext>);
static_assert(std::is_same_v<ErrorSeverity, std::uint8_t>, "the severity is one unsigned byte");
TAVREL_PIN(IContext, Interface_IsInterrupted, bool (IContext::*)() const);
TAVREL_PIN(IContext, Interface_GetPolicy, IPolicy* (IContext::*)() const);
TAVREL_PIN(IContext, Interface_TriggerErrorHandler,
           void (IContext::*)(std::uint8_t, char const*, char const*, char const*));

// ---- IPolicy -------------------------------------------------------------------------------
static_assert(kIsInterface<IPolicy>);
static_assert(std::is_base_of_v<IObject, IPolicy> && std::is_convertible_v<IPolicy*, IObject*>);
TAVREL_PIN(IPolicy, Interface_LoadData, IDataRef* (IPolicy::*)(IContext*, char const*));

// ---- IUserDefinedType: two overloaded pairs ------------------------------------------------
static_assert(kIsInterface<IUserDefinedType>);
static_assert(std::is_base_of_v<IObject, IUserDefinedType> &&
              std::is_convertible_v<IUserDefinedType*, IObject*>);
TAVREL_PIN(IUserDefinedType, Interface_GetTypeName, char const* (IUserDefinedType::*)() const);
TAVREL_PIN(IUserDefinedType, Interface_Deserialize, bool (IUserDefinedType::*)(IJSON const*));
TAVREL_PIN(IUserDefinedType, Interface_Deserialize,
           bool (IUserDefinedType::*)(IJSON const*, IContext*));
TAVREL_PIN(IUserDefinedType, Interface_Serialize, IJSON* (IUserDefinedType::*)() const);
TAVREL_PIN(IUserDefinedType, Interface_Serialize, IJSON* (IUserDefinedType::*)(IContext*) const);

// ---- IModuleInfo and IJSON: only passed along ----------------------------------------------
// IModuleInfo has no operation at all: the host's object is passed through and never called.
static_assert(std::is_empty_v<IModuleInfo> && !std::is_polymorphic_v<IModuleInfo>);
// IJSON is only named: nothing of the module may depend on its layout.
static_assert(!Complete<IJSON>, "IJSON must stay a declaration only");

// ---- InterfaceImpl: the module's counted objects, as the host calls them -------------------
// The count is the only field; the destructor is virtual (it comes behind T's operations).
static_assert(std::has_virtual_destructor_v<InterfaceImpl<IDataRef>>);
static_assert(std::is_base_of_v<IDataRef, InterfaceImpl<IDataRef>>);

#undef TAVREL_PIN

}  // namespace
}  // namespace Tavrel
