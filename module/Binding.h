// The binding between the host's untyped calls and the module's typed functions.
//
// An exported entry receives (count, arguments, result, module information, context).
// CallEntry creates one holder per parameter of the typed function, lets a
// CPPNameParameterTransformer fill them from the arguments left to right, and either
// calls the function and stores its result (status word 0) or, on the first argument
// that does not fit, stores the empty value of the result type and returns the status
// word of that failure. The binding never reports through the host's error handler and
// catches nothing: an exception from below passes through the entry after the holders
// are destroyed. It allocates nothing except the copy that a std::string holder makes.
#pragma once

#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "host/IContext.h"
#include "host/IModuleInfo.h"
#include "host/IUserDefinedType.h"
#include "host/IVariant.h"
#include "host/VariantType.h"
#include "module/ScriptType.h"
#include "object/AutoRefPtr.h"
#include "object/IDataRef.h"

// Folds a piece of the binding into the entry that uses it, so that an entry compiles to what a
// hand-written one would be: the typed function called directly, no call per argument.
// NOTE: the pieces are templates shared by several entries, which the compiler would otherwise
// keep as calls of their own.
// TAVREL_BINDING_INLINE_LAMBDA does the same for a lambda, between its parameters and its body.
#if defined(__GNUC__) || defined(__clang__)
#define TAVREL_BINDING_INLINE __attribute__((always_inline)) inline
#define TAVREL_BINDING_INLINE_LAMBDA __attribute__((always_inline))
#else
#define TAVREL_BINDING_INLINE inline
#define TAVREL_BINDING_INLINE_LAMBDA
#endif

namespace Tavrel {

// The low 16 bits of a non-zero status word.
enum BindingCode : unsigned int {
    kArgumentMissing = 1,   // the function needs one more script argument than count gives
    kWrongArgument = 2,     // null variant, or a type number other than the one accepted
    kEmptyUserDefined = 4,  // a user-defined value (type 21 and above) without an object
};

// The status word of a failure at 0-based argument index: position index + 1 in the high
// 16 bits, the code in the low 16 bits. index 0, kWrongArgument => 65538.
constexpr unsigned int MakeStatusWord(int index, BindingCode code) {
    return ((static_cast<unsigned int>(index + 1) & 0xFFFFu) << 16) | code;
}

namespace binding_detail {

// Whether T stands for the script type with that type number (module/ScriptType.h).
template <class T, unsigned int TypeNumber>
inline constexpr bool kIsScriptType =
    ScriptTypeOf<T>::kKnown && ScriptTypeOf<T>::kTypeNumber == TypeNumber;

template <class T>
inline constexpr bool kIsDataRef = kIsScriptType<T, VariantType::kDataRef>;

// Arithmetic holders other than double, float and bool take a script NUMBER.
template <class T>
inline constexpr bool kIsIntegralNumber =
    std::is_arithmetic_v<T> && !std::is_same_v<T, double> && !std::is_same_v<T, float> &&
    !std::is_same_v<T, bool>;

// Arithmetic results other than bool go back as a script NUMBER.
template <class R>
inline constexpr bool kIsNumberResult = std::is_arithmetic_v<R> && !std::is_same_v<R, bool>;

// Converts a script number to T, truncating toward zero.
// NaN => 0; beyond T's range => the nearest limit; 2.9 => 2; -2.9 => -2.
template <class T>
T NumberToIntegral(double value) {
    // NOTE: a plain cast is undefined for NaN and out-of-range values; scripts can pass
    // both, so they are pinned here instead.
    if (std::isnan(value)) {
        return 0;
    }
    constexpr double kUpper = static_cast<double>(std::numeric_limits<T>::max());
    constexpr double kLower = static_cast<double>(std::numeric_limits<T>::lowest());
    if (value >= kUpper) {  // kUpper is max + 1 once rounded to double for 64-bit T
        return std::numeric_limits<T>::max();
    }
    if (value <= kLower) {
        return std::numeric_limits<T>::lowest();
    }
    return static_cast<T>(value);
}

inline bool HasType(IVariant* variant, unsigned int type) {
    if (variant != nullptr && variant->GetType() == type) [[likely]] {
        return true;
    }
    return false;
}

// DATAREF => the variant's buffer, moved in; a DATAREF that holds no buffer still succeeds.
template <class T>
TAVREL_BINDING_INLINE std::enable_if_t<kIsDataRef<T>, bool> CheckAndConvert(IVariant* variant,
                                                                            T& holder) {
    if (!HasType(variant, ScriptTypeOf<T>::kTypeNumber)) {
        return false;
    }
    holder = variant->GetData();
    return true;
}

// NUMBER => the number truncated toward zero (see NumberToIntegral).
template <class T>
TAVREL_BINDING_INLINE std::enable_if_t<kIsIntegralNumber<T>, bool> CheckAndConvert(
    IVariant* variant, T& holder) {
    if (!HasType(variant, ScriptTypeOf<T>::kTypeNumber)) {
        return false;
    }
    holder = NumberToIntegral<T>(variant->GetNumber());
    return true;
}

// STRING => a copy of all its bytes, NUL bytes included.
template <class T>
TAVREL_BINDING_INLINE std::enable_if_t<std::is_same_v<T, std::string>, bool> CheckAndConvert(
    IVariant* variant, T& holder) {
    if (!HasType(variant, ScriptTypeOf<T>::kTypeNumber)) {
        return false;
    }
    // NOTE: the host is asked for the bytes first and for their count second, in two
    // statements, because the order of evaluation of call arguments is unspecified.
    char const* const bytes = variant->GetString();
    unsigned long long const size = variant->GetStringSize();
    if (size == 0) {
        holder.clear();  // the host may give null for an empty text
    } else {
        holder.assign(bytes, size);
    }
    return true;
}

// STRING => a view of the host's bytes; nothing is copied. Bytes first, count second.
template <class T>
TAVREL_BINDING_INLINE std::enable_if_t<std::is_same_v<T, std::string_view>, bool> CheckAndConvert(
    IVariant* variant, T& holder) {
    if (!HasType(variant, ScriptTypeOf<T>::kTypeNumber)) {
        return false;
    }
    char const* const bytes = variant->GetString();
    unsigned long long const size = variant->GetStringSize();
    holder = std::string_view(bytes, size);
    return true;
}

}  // namespace binding_detail

// SetReturn<R>(result) stores the empty value of R, SetReturn<R>(result, value) the value.
// Both do nothing when result is null.
// NUMBER: 0.0 / the value as double (sizes above 2^53 round).
template <class R>
std::enable_if_t<binding_detail::kIsNumberResult<R>> SetReturn(IVariant* result) {
    if (result != nullptr) {
        result->AssignNumber(0.0);
    }
}
template <class R>
std::enable_if_t<binding_detail::kIsNumberResult<R>> SetReturn(IVariant* result, R const& value) {
    if (result != nullptr) {
        result->AssignNumber(static_cast<double>(value));
    }
}
// DATAREF: a null reference / the buffer, which may itself be null.
template <class R>
std::enable_if_t<binding_detail::kIsDataRef<R>> SetReturn(IVariant* result) {
    if (result != nullptr) {
        result->AssignData(AutoRefPtr<IDataRef>(nullptr));
    }
}
template <class R>
std::enable_if_t<binding_detail::kIsDataRef<R>> SetReturn(IVariant* result, R const& value) {
    if (result != nullptr) {
        result->AssignData(value);
    }
}
// STRING: a null pointer with size 0 / the string's bytes and size.
template <class R>
std::enable_if_t<std::is_same_v<R, std::string>> SetReturn(IVariant* result) {
    if (result != nullptr) {
        result->AssignString(nullptr, 0);
    }
}
template <class R>
std::enable_if_t<std::is_same_v<R, std::string>> SetReturn(IVariant* result, R const& value) {
    if (result != nullptr) {
        result->AssignString(value.data(), value.size());
    }
}

// Fills the holders of one call from the script arguments, left to right, and keeps the
// status word of the first failure. After a failure it looks at nothing more.
class CPPNameParameterTransformer {
public:
    CPPNameParameterTransformer(IContext* context, IModuleInfo* info, IVariant** arguments,
                                int count)
        : mContext(context), mInfo(info), mArguments(arguments), mCount(count) {}

    // Takes the next script argument into holder.
    template <class T>
    TAVREL_BINDING_INLINE void operator()(T& holder) {
        static_assert(ScriptTypeOf<T>::kParameter,
                      "A script argument binds only to AutoRefPtr<IDataRef>, long long, "
                      "std::string or std::string_view.");
        // NOTE: the hints keep a call that binds at once on a straight line of code; a script
        // error is the rare case.
        if (mError != 0) [[unlikely]] {
            return;
        }
        ++mIndex;
        if (mIndex >= mCount) [[unlikely]] {
            mError = MakeStatusWord(mIndex, kArgumentMissing);
            return;
        }
        IVariant* const variant = mArguments[mIndex];
        if (binding_detail::CheckAndConvert<T>(variant, holder)) [[likely]] {
            return;
        }
        mError = MakeStatusWord(mIndex, IsEmptyUserDefined(variant) ? kEmptyUserDefined
                                                                    : kWrongArgument);
    }

    // The context takes no script argument and is stored even after a failure.
    void operator()(IContext*& holder) { holder = mContext; }

    // 0 while every argument fitted; otherwise the status word of the first failure.
    unsigned int Error() const { return mError; }

private:
    static bool IsEmptyUserDefined(IVariant* variant) {
        if (variant == nullptr || variant->GetType() < VariantType::kFirstUserDefined) {
            return false;
        }
        AutoRefPtr<IUserDefinedType> const object = variant->GetUserDefined();
        return !object;
    }

    unsigned int mError = 0;
    int mIndex = -1;
    IContext* mContext;
    [[maybe_unused]] IModuleInfo* mInfo;  // carried along, never read
    IVariant** mArguments;
    int mCount;
};

// Calls functor once on each holder, left to right.
template <class F, class... H>
TAVREL_BINDING_INLINE void for_each_argument(F& functor, H&&... holders) {
    (functor(holders), ...);
}

// Calls the typed function with the filled holders and stores its result. The result
// lives until after SetReturn, so a returned buffer is still held while the host takes it.
template <class R>
struct CPPNameFunctionForward {
    template <class F, class... H>
    TAVREL_BINDING_INLINE static void Call(IVariant* result, F const& function, H&... holders) {
        R const value = function(holders...);
        SetReturn<R>(result, value);
    }
};

// One call of one typed function with result R: binds, then calls or stores the empty value.
template <class R>
class CPPNameFunctionCaller {
public:
    CPPNameFunctionCaller(IVariant** arguments, int count, IVariant* result, IContext* context,
                          IModuleInfo* info)
        : mArguments(arguments), mCount(count), mResult(result), mContext(context), mInfo(info) {}

    // Returns the status word: 0 when the function ran.
    template <class F, class... H>
    TAVREL_BINDING_INLINE unsigned int operator()(F const& function, H&&... holders) {
        CPPNameParameterTransformer transformer(mContext, mInfo, mArguments, mCount);
        for_each_argument(transformer, holders...);
        if (transformer.Error() != 0) [[unlikely]] {
            SetEmptyReturn();
            return transformer.Error();
        }
        CPPNameFunctionForward<R>::Call(mResult, function, holders...);
        return 0;
    }

    void SetEmptyReturn() {
        if (mResult != nullptr) {
            SetReturn<R>(mResult);
        }
    }

private:
    IVariant** mArguments;
    int mCount;
    IVariant* mResult;
    IContext* mContext;
    IModuleInfo* mInfo;
};

namespace binding_detail {

// The holder of a parameter: its plain type (a const reference gets a holder of its own).
template <class P>
using Holder = std::remove_cv_t<std::remove_reference_t<P>>;

template <class P>
inline constexpr bool kIsByConstReference =
    std::is_lvalue_reference_v<P> && std::is_const_v<std::remove_reference_t<P>>;

// Checks one parameter of a typed function; the messages speak to whoever adds an entry.
template <class P>
constexpr bool CheckParameter() {
    using H = Holder<P>;
    static_assert(ScriptTypeOf<H>::kParameter || ScriptTypeOf<H>::kContext,
                  "A typed function takes only AutoRefPtr<IDataRef> const& (DATAREF), "
                  "long long (NUMBER), std::string_view or std::string const& (STRING), and "
                  "IContext* as its last parameter.");
    static_assert(!(kIsDataRef<H> || std::is_same_v<H, std::string>) || kIsByConstReference<P>,
                  "Take AutoRefPtr<IDataRef> and std::string by const reference: the holder "
                  "owns the value for the whole call.");
    static_assert(kIsDataRef<H> || std::is_same_v<H, std::string> || std::is_same_v<P, H>,
                  "Take long long, std::string_view and IContext* by value.");
    return true;
}

template <class... P>
constexpr bool ContextOnlyLast() {
    constexpr bool isContext[] = {ScriptTypeOf<Holder<P>>::kContext..., false};
    for (std::size_t i = 0; i + 1 < sizeof...(P); ++i) {
        if (isContext[i]) {
            return false;
        }
    }
    return true;
}

template <class R>
constexpr bool CheckResult() {
    static_assert(ScriptTypeOf<R>::kResult,
                  "A typed function returns std::size_t (NUMBER), std::string (STRING) or "
                  "AutoRefPtr<IDataRef> (DATAREF).");
    return true;
}

// The holders of one call as base classes, so that they are built left to right and
// destroyed right to left, exactly like local variables.
template <std::size_t I, class T>
struct HolderSlot {
    T value{};
};

template <class Indexes, class... T>
struct HolderPack;

template <std::size_t... I, class... T>
struct HolderPack<std::index_sequence<I...>, T...> : HolderSlot<I, T>... {
    template <class F>
    TAVREL_BINDING_INLINE unsigned int Apply(F&& functor) {
        return functor(static_cast<HolderSlot<I, T>&>(*this).value...);
    }
};

}  // namespace binding_detail

// The body of every exported entry: binds the arguments to function's parameters, calls it
// and stores its result. Returns the status word.
template <class R, class... P>
TAVREL_BINDING_INLINE unsigned int CallEntry(R (*function)(P...), int count, IVariant** arguments,
                                             IVariant* result, IModuleInfo* info,
                                             IContext* context) {
    static_assert(binding_detail::CheckResult<R>() &&
                  (binding_detail::CheckParameter<P>() && ...));
    static_assert(binding_detail::ContextOnlyLast<P...>(),
                  "IContext* must be the last parameter of a typed function.");
    R (*const local)(P...) = function;
    binding_detail::HolderPack<std::index_sequence_for<P...>, binding_detail::Holder<P>...>
        holders;
    // NOTE: the caller takes the context before the module information, the reverse of
    // the entry's own order.
    CPPNameFunctionCaller<R> caller(arguments, count, result, context, info);
    // NOTE: the lambda is folded in too; as a call of its own, the typed function inside it
    // would be reached through a pointer that only link-time optimisation sees to be constant,
    // too late to be inlined.
    return holders.Apply(
        [&](auto&... holder) TAVREL_BINDING_INLINE_LAMBDA { return caller(local, holder...); });
}

}  // namespace Tavrel
