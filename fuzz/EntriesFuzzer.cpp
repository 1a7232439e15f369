// The entries fuzzer: loads the built module the way a host does (dlopen) and calls one
// entry per input, with a count, arguments, a result variant and a context that the input
// chooses. Besides running clean under the sanitizers, every call must meet these rules:
//  - the status word is the one that the binding rules predict (EntrySignatures);
//  - the result variant gets exactly one value, of the entry's result type, and the empty
//    value of that type when the binding failed;
//  - a failed binding reports nothing; a successful one reports once exactly when a buffer is
//    missing, a number is negative, or the host gave no file (severity 2, module "Binary");
//  - argument buffers keep their bytes and their counts, a new result buffer is held by the
//    result variant alone, and every host buffer and user object is gone once the values of
//    the call are;
//  - the bytes of a string or buffer made from a range are what the host buffer's one Read
//    wrote there and zero elsewhere, also when that Read lies about its count; a Read that
//    throws passes through the entry and leaves the result variant untouched.
// A broken rule aborts with a message, which libFuzzer records as a crash.
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <fuzzer/FuzzedDataProvider.h>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/EntrySignatures.h"
#include "fuzz/FuzzCheck.h"
#include "host/IPolicy.h"
#include "host/IUserDefinedType.h"
#include "minihost/host/Context.h"
#include "minihost/host/LiveCount.h"
#include "minihost/host/MemoryBuffer.h"
#include "minihost/host/ModuleLoader.h"
#include "minihost/host/Variant.h"
#include "object/InterfaceImpl.h"

namespace {

using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;

// One more place than any entry takes, so that extra arguments are exercised too.
constexpr int kMaxArguments = 5;
constexpr std::size_t kMaxBufferBytes = 64;
constexpr std::size_t kMaxStringBytes = 64;
constexpr std::size_t kMaxLongBufferBytes = 12 * 1024;

using tavrel_testing::ArgumentShape;
using tavrel_testing::ParseDefinition;
using tavrel_testing::PredictStatus;
using tavrel_testing::Require;
using tavrel_testing::ScriptType;
using tavrel_testing::Signature;
using tavrel_testing::TypeNumber;

// A user-defined object that counts the objects alive.
class UserObject final : public InterfaceImpl<Tavrel::IUserDefinedType> {
public:
    UserObject() { sLive.fetch_add(1); }
    ~UserObject() override { sLive.fetch_sub(1); }
    char const* Interface_GetTypeName() const override { return "Fuzz.Object"; }
    static long Live() { return sLive.load(); }

private:
    static inline std::atomic<long> sLive{0};
};

// A host policy that needs no file system: a path that begins with "f" gives a host buffer
// holding the path's bytes, any other path gives no data.
class FuzzPolicy final : public InterfaceImpl<Tavrel::IPolicy> {
public:
    static bool GivesData(std::string_view path) { return !path.empty() && path[0] == 'f'; }

    IDataRef* Interface_LoadData(Tavrel::IContext* /*context*/, char const* path) override {
        return path != nullptr && GivesData(path) ? new minihost::MemoryBuffer(path) : nullptr;
    }
};

// The loaded module and its entries, in the order of the definition text.
struct Surface {
    std::unique_ptr<minihost::LoadedModule> module;
    std::vector<Signature> signatures;
    std::vector<minihost::EntryFunction> entries;
};

Surface& TheSurface() {
    static Surface surface;
    return surface;
}

void LoadSurface() {
    Surface& surface = TheSurface();
    std::string error;
    surface.module = minihost::LoadedModule::Load(TAVREL_FUZZ_MODULE_PATH, error);
    Require(surface.module != nullptr, error.c_str(), "module");
    auto signatures = ParseDefinition(surface.module->Definition());
    std::vector<std::string_view> const entryNames = minihost::LoadedModule::EntryNames();
    Require(signatures && signatures->size() == entryNames.size(),
            "one readable signature per exported entry", "definition");
    for (std::size_t i = 0; i < entryNames.size(); ++i) {
        Signature const& signature = (*signatures)[i];
        Require(signature.entry == entryNames[i], "the entries in the order of the export list",
                signature.entry);
        minihost::EntryFunction entry = surface.module->Entry(signature.entry);
        Require(entry != nullptr, "every named entry is exported", signature.entry);
        surface.entries.push_back(entry);
    }
    surface.signatures = std::move(*signatures);
}

// What the entry does besides binding, by its name.
struct EntryTraits {
    bool reportsBadValues;   // a missing buffer or a negative number is reported
    bool isMapFile;          // the result comes from the policy
    bool nullWithoutBuffer;  // a missing buffer gives a null reference, not a new buffer
};

EntryTraits TraitsOf(std::string_view entry) {
    bool const fromString =
        entry == "tavrel_module_ToDataRef" || entry == "tavrel_module_BinarySetFromString";
    bool const isMapFile = entry == "tavrel_module_BinaryMapFile";
    bool const isCopy =
        entry == "tavrel_module_BinaryCopy" || entry == "tavrel_module_BinaryCopyPart";
    return {!fromString && !isMapFile, isMapFile, isCopy};
}

// All bytes of a buffer: a host buffer's own, whatever its Read does; any other read in as
// many pieces as it delivers.
std::string BytesOf(IDataRef const& buffer) {
    if (auto const* host = dynamic_cast<minihost::MemoryBuffer const*>(&buffer)) {
        return host->bytes();
    }
    std::string bytes(buffer.GetSize(), '\0');
    unsigned long long done = 0;
    while (done < bytes.size()) {
        unsigned long long const got = buffer.Read(bytes.data() + done, bytes.size() - done, done);
        if (got == 0) {
            break;
        }
        done += got;
    }
    return bytes;
}

// Numbers that sit on the edges of the conversion to long long.
double EdgeNumber(FuzzedDataProvider& input) {
    constexpr double kEdges[] = {
        std::numeric_limits<double>::quiet_NaN(),
        std::numeric_limits<double>::infinity(),
        -std::numeric_limits<double>::infinity(),
        1e300,
        -1e300,
        9223372036854775807.0,   // 2^63 once rounded
        -9223372036854775808.0,  // -2^63
        18446744073709551616.0,  // 2^64
        9007199254740993.0,      // 2^53 + 1
        -0.5,
        -0.0,
        -1.0,
        2.9,
        -2.9,
    };
    return kEdges[input.ConsumeIntegralInRange<std::size_t>(0, std::size(kEdges) - 1)];
}

double FuzzedNumber(FuzzedDataProvider& input) {
    switch (input.ConsumeIntegralInRange(0, 2)) {
        case 0:
            return EdgeNumber(input);
        case 1:
            return input.ConsumeIntegralInRange<int>(-3, 80);
        default:
            return input.ConsumeFloatingPoint<double>();
    }
}

enum class ArgumentKind {
    kNullPointer,
    kNumber,
    kString,
    kNullBuffer,
    kModuleBuffer,
    kHostBuffer,
    kHiddenHostBuffer,
    kChunkedHostBuffer,
    kFaultyHostBuffer,
    kUserObject,
    kUserWithoutObject,
    kOtherType,
    kSameAsEarlier,
    kMaxValue = kSameAsEarlier,  // the last kind, as FuzzedDataProvider::ConsumeEnum needs
};

// The values of one call. Every variant, buffer and object of the call lives here, so that
// destroying the setup releases all of them.
struct CallSetup {
    std::vector<minihost::Variant> values;
    std::vector<Tavrel::IVariant*> pointers;  // the arguments array, count places
    std::vector<ArgumentShape> shapes;
    std::vector<double> numbers;       // per place, NUMBER values only
    std::vector<std::string> strings;  // per place, STRING values only
    std::vector<AutoRefPtr<IDataRef>> buffers;
    std::vector<std::string> bufferBytes;
    std::vector<int> bufferCounts;
};

AutoRefPtr<IDataRef> ModuleBuffer(std::string_view bytes) {
    Surface& surface = TheSurface();
    minihost::Variant text = minihost::Variant::String(bytes);
    minihost::Variant result;
    Tavrel::IVariant* arguments[] = {&text};
    minihost::Context context{AutoRefPtr<Tavrel::IPolicy>(new FuzzPolicy())};
    minihost::EntryFunction const toDataRef = surface.module->Entry("tavrel_module_ToDataRef");
    Require(toDataRef(1, arguments, &result, surface.module->Info(), &context) == 0,
            "ToDataRef binds a STRING", "tavrel_module_ToDataRef");
    return result.data();
}

AutoRefPtr<IDataRef> HostBuffer(std::string_view bytes, bool expose, unsigned long long chunk,
                                minihost::ReadFault fault = minihost::ReadFault::kNone) {
    return AutoRefPtr<IDataRef>(new minihost::MemoryBuffer(bytes, {expose, chunk, fault}));
}

// bytes, or, as the input chooses, bytes repeated to a length of up to 12 KiB (byte values
// counting up when bytes is empty), so that ranges of more than a page are read too.
std::string Lengthened(std::string const& bytes, FuzzedDataProvider& input) {
    if (!input.ConsumeBool()) {
        return bytes;
    }
    std::string longer(input.ConsumeIntegralInRange<std::size_t>(0, kMaxLongBufferBytes), '\0');
    for (std::size_t i = 0; i < longer.size(); ++i) {
        longer[i] = bytes.empty() ? static_cast<char>(i + 1) : bytes[i % bytes.size()];
    }
    return longer;
}

minihost::ReadFault FuzzedFault(FuzzedDataProvider& input) {
    return static_cast<minihost::ReadFault>(
        input.ConsumeIntegralInRange<int>(0, static_cast<int>(minihost::ReadFault::kThrowHalfway)));
}

// Makes the value of one place; the shape says what the binding can see of it.
void AddArgument(FuzzedDataProvider& input, CallSetup& setup) {
    auto kind = input.ConsumeEnum<ArgumentKind>();
    if (kind == ArgumentKind::kSameAsEarlier && setup.values.empty()) {
        kind = ArgumentKind::kNullPointer;
    }
    minihost::Variant value;
    ArgumentShape shape{true, 0, false};
    double number = 0.0;
    std::string text;
    AutoRefPtr<IDataRef> buffer;
    std::string const bytes = input.ConsumeRandomLengthString(kMaxBufferBytes);
    switch (kind) {
        case ArgumentKind::kNullPointer:
            shape.present = false;
            break;
        case ArgumentKind::kNumber:
            number = FuzzedNumber(input);
            value = minihost::Variant::Number(number);
            break;
        case ArgumentKind::kString:
            text = input.ConsumeRandomLengthString(kMaxStringBytes);
            value = minihost::Variant::String(text);
            break;
        case ArgumentKind::kNullBuffer:
            value = minihost::Variant::DataRef(buffer);
            break;
        case ArgumentKind::kModuleBuffer:
            buffer = ModuleBuffer(bytes);
            break;
        case ArgumentKind::kHostBuffer:
            buffer = HostBuffer(bytes, true, 0);
            break;
        case ArgumentKind::kHiddenHostBuffer:
            buffer = HostBuffer(bytes, false, 0);
            break;
        case ArgumentKind::kChunkedHostBuffer:
            buffer = HostBuffer(bytes, input.ConsumeBool(), input.ConsumeIntegralInRange(1, 7));
            break;
        case ArgumentKind::kFaultyHostBuffer:
            buffer = HostBuffer(Lengthened(bytes, input), false, input.ConsumeIntegralInRange(0, 7),
                                FuzzedFault(input));
            break;
        case ArgumentKind::kUserObject:
            value = minihost::Variant::UserDefined(
                input.ConsumeIntegralInRange(21u, 400u),
                AutoRefPtr<Tavrel::IUserDefinedType>(new UserObject()));
            break;
        case ArgumentKind::kUserWithoutObject:
            value = minihost::Variant::UserDefined(input.ConsumeIntegralInRange(21u, 400u), {});
            break;
        case ArgumentKind::kOtherType:
            value = minihost::Variant::UserDefined(input.ConsumeIntegralInRange(0u, 20u), {});
            break;
        case ArgumentKind::kSameAsEarlier: {
            std::size_t const earlier =
                input.ConsumeIntegralInRange<std::size_t>(0, setup.values.size() - 1);
            value = setup.values[earlier];
            shape = setup.shapes[earlier];
            number = setup.numbers[earlier];
            text = setup.strings[earlier];
            buffer = setup.buffers[earlier];
            break;
        }
    }
    if (buffer && kind != ArgumentKind::kSameAsEarlier) {
        value = minihost::Variant::DataRef(buffer);
    }
    if (shape.present) {
        shape.type = value.type();
        shape.hasObject = static_cast<bool>(value.userDefined());
    }
    setup.values.push_back(std::move(value));
    setup.shapes.push_back(shape);
    setup.numbers.push_back(number);
    setup.strings.push_back(std::move(text));
    setup.buffers.push_back(std::move(buffer));
}

void FillArguments(FuzzedDataProvider& input, CallSetup& setup, int count) {
    setup.values.reserve(kMaxArguments);
    for (int place = 0; place < kMaxArguments; ++place) {
        AddArgument(input, setup);
    }
    for (int place = 0; place < count; ++place) {
        bool const present = setup.shapes[place].present;
        setup.pointers.push_back(present ? &setup.values[place] : nullptr);
    }
    for (auto const& buffer : setup.buffers) {
        setup.bufferBytes.push_back(buffer ? BytesOf(*buffer.get()) : std::string());
    }
}

// NaN becomes 0 and every number above -1 truncates to 0 or more, so only these are negative.
bool IsNegativeNumber(double number) { return number <= -1.0; }

// Whether the operation must report once, for a call whose binding succeeded.
bool ExpectsReport(Signature const& signature, CallSetup const& setup, bool interrupted) {
    EntryTraits const traits = TraitsOf(signature.entry);
    if (traits.isMapFile) {
        std::string_view const path(setup.strings[0].c_str());  // the host sees it up to a NUL
        return !interrupted && !FuzzPolicy::GivesData(path);
    }
    if (!traits.reportsBadValues) {
        return false;
    }
    for (std::size_t place = 0; place < signature.parameters.size(); ++place) {
        ScriptType const type = signature.parameters[place];
        if (type == ScriptType::kDataRef && !setup.buffers[place]) {
            return true;
        }
        if (type == ScriptType::kNumber && IsNegativeNumber(setup.numbers[place])) {
            return true;
        }
    }
    return false;
}

// Whether a successful call gives a null reference: a copy of a missing buffer, or a file
// that the host does not give (interrupted or not).
bool ExpectsNullBuffer(Signature const& signature, CallSetup const& setup) {
    EntryTraits const traits = TraitsOf(signature.entry);
    if (traits.isMapFile) {
        return !FuzzPolicy::GivesData(setup.strings[0].c_str());
    }
    return traits.nullWithoutBuffer && !setup.buffers[0];
}

void CheckEmptyValue(minihost::Variant const& result, Signature const& signature) {
    Require(result.number() == 0.0 && result.string().empty() && !result.dataPointer(),
            "a failed binding stores the empty value", signature.entry);
}

// A script number as the binding hands it on: NaN => 0, beyond long long => the nearest
// limit, otherwise truncated toward zero.
long long Bound(double number) {
    if (std::isnan(number)) {
        return 0;
    }
    if (number >= 9223372036854775808.0) {
        return std::numeric_limits<long long>::max();
    }
    if (number <= -9223372036854775808.0) {
        return std::numeric_limits<long long>::min();
    }
    return static_cast<long long>(number);
}

// A range of an argument buffer that an entry reads with one Read.
struct ReadRange {
    std::size_t place;
    unsigned long long offset, count;
};
using Ranges = std::vector<ReadRange>;

// The range of place's buffer from offset for count as the operations cut it: none for a
// missing buffer, a negative number, an offset at or past the end or a count of 0.
Ranges Clipped(CallSetup const& setup, std::size_t place, long long offset, long long count) {
    long long const total = static_cast<long long>(setup.bufferBytes[place].size());
    if (!setup.buffers[place] || offset < 0 || count < 0 || offset >= total || count == 0) {
        return {};
    }
    return {{place, static_cast<unsigned long long>(offset),
             static_cast<unsigned long long>(std::min(count, total - offset))}};
}

Ranges Whole(CallSetup const& setup, std::size_t place) {
    return Clipped(setup, place, 0, std::numeric_limits<long long>::max());
}

Ranges Joined(Ranges first, Ranges const& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// The ranges whose bytes make the result of a call that bound, in order; nullopt for an
// entry whose result is not made from ranges of its arguments.
std::optional<Ranges> RangesOf(std::string_view entry, CallSetup const& setup) {
    auto const number = [&setup](std::size_t place) { return Bound(setup.numbers[place]); };
    bool const bothGiven = setup.buffers[0] && setup.buffers[1];
    if (entry == "tavrel_module_BinaryToString") {
        return Whole(setup, 0);
    }
    if (entry == "tavrel_module_BinaryPartToString" || entry == "tavrel_module_BinarySlice" ||
        entry == "tavrel_module_BinaryCopyPart") {
        return Clipped(setup, 0, number(1), number(2));
    }
    if (entry == "tavrel_module_BinarySliceRight") {
        return Clipped(setup, 0, number(1), std::numeric_limits<long long>::max());
    }
    if (entry == "tavrel_module_BinaryAppend") {
        return bothGiven ? Joined(Whole(setup, 0), Whole(setup, 1)) : Ranges{};
    }
    if (entry == "tavrel_module_BinaryAppendPart") {
        return bothGiven ? Joined(Whole(setup, 0), Clipped(setup, 1, number(2), number(3)))
                         : Ranges{};
    }
    return std::nullopt;
}

// What one Read of range writes into zeroed room: the first bytes that the buffer delivers
// (all of them unless it is a host buffer with a chunk limit or a Read that writes nothing),
// then zeros.
std::string WrittenByRead(CallSetup const& setup, ReadRange const& range) {
    unsigned long long written = range.count;
    if (auto const* host =
            dynamic_cast<minihost::MemoryBuffer const*>(setup.buffers[range.place].get())) {
        minihost::MemoryBufferOptions const& options = host->options();
        if (options.maxReadChunk != 0) {
            written = std::min(written, options.maxReadChunk);
        }
        if (options.readFault == minihost::ReadFault::kOverClaim) {
            written = 0;
        }
    }
    return setup.bufferBytes[range.place].substr(range.offset, written) +
           std::string(range.count - written, '\0');
}

bool ThrowsOnRead(IDataRef const* buffer) {
    auto const* host = dynamic_cast<minihost::MemoryBuffer const*>(buffer);
    return host != nullptr && host->options().readFault == minihost::ReadFault::kThrowHalfway;
}

void CheckBytesMadeFromRanges(minihost::Variant const& result, Signature const& signature,
                              CallSetup const& setup) {
    std::optional<Ranges> const ranges = RangesOf(signature.entry, setup);
    if (!ranges) {
        return;
    }
    std::string expected;
    for (ReadRange const& range : *ranges) {
        Require(!ThrowsOnRead(setup.buffers[range.place].get()),
                "a Read that throws passes through the entry", signature.entry);
        expected += WrittenByRead(setup, range);
    }
    IDataRef const* const made = result.dataPointer();
    std::string const got = signature.result == ScriptType::kString ? result.string()
                            : made != nullptr                       ? BytesOf(*made)
                                                                    : std::string();
    Require(got == expected, "the result holds what each Read wrote and zero elsewhere",
            signature.entry);
}

void CheckBoundValue(minihost::Variant const& result, Signature const& signature,
                     CallSetup const& setup) {
    if (signature.result == ScriptType::kNumber) {
        unsigned long long const size = setup.buffers[0] ? setup.buffers[0]->GetSize() : 0;
        Require(result.number() == static_cast<double>(size), "Size gives the size",
                signature.entry);
    }
    if (signature.result != ScriptType::kDataRef) {
        return;
    }
    IDataRef* const made = result.dataPointer();
    Require((made == nullptr) == ExpectsNullBuffer(signature, setup),
            "a null result exactly where the operation gives one", signature.entry);
    if (made == nullptr) {
        return;
    }
    Require(made->Interface_GetCount() == 1, "a new result is held by the variant alone",
            signature.entry);
    for (auto const& buffer : setup.buffers) {
        Require(made != buffer.get(), "the result is never an argument", signature.entry);
    }
}

void CheckResult(minihost::Variant const& result, Signature const& signature, unsigned int status,
                 CallSetup const& setup) {
    Require(result.assignments() == 1, "the result variant gets exactly one value",
            signature.entry);
    Require(result.type() == TypeNumber(signature.result), "the result has the entry's result type",
            signature.entry);
    if (status != 0) {
        CheckEmptyValue(result, signature);
    } else {
        CheckBoundValue(result, signature, setup);
        CheckBytesMadeFromRanges(result, signature, setup);
    }
}

void CheckArgumentsUntouched(CallSetup const& setup, std::string const& entry) {
    for (std::size_t place = 0; place < setup.buffers.size(); ++place) {
        IDataRef const* const buffer = setup.buffers[place].get();
        if (buffer == nullptr) {
            continue;
        }
        Require(BytesOf(*buffer) == setup.bufferBytes[place], "argument buffers keep their bytes",
                entry);
        Require(buffer->Interface_GetCount() == setup.bufferCounts[place],
                "argument buffers keep their counts", entry);
    }
}

struct Reports {
    int count = 0;
    bool wellFormed = true;
};

// A call left by an exception: only a host buffer's throwing Read raises one, and the
// result variant gets nothing.
void CheckThrowFromRead(CallSetup const& setup, int count, minihost::Variant const& result,
                        std::string const& entry) {
    bool const throwingArgument =
        std::any_of(setup.buffers.begin(), setup.buffers.begin() + std::max(count, 0),
                    [](AutoRefPtr<IDataRef> const& buffer) { return ThrowsOnRead(buffer.get()); });
    Require(throwingArgument, "only a throwing Read raises an exception", entry);
    Require(result.assignments() == 0, "a call left by an exception stores nothing", entry);
    CheckArgumentsUntouched(setup, entry);
}

// One call, set up, made and checked; everything it made is released on return.
void RunOneCall(FuzzedDataProvider& input) {
    Surface& surface = TheSurface();
    std::size_t const which =
        input.ConsumeIntegralInRange<std::size_t>(0, surface.signatures.size() - 1);
    Signature const& signature = surface.signatures[which];
    int const count = input.ConsumeIntegralInRange(-2, kMaxArguments);
    bool const interrupted = input.ConsumeBool();
    bool const withResult = input.ConsumeBool();
    bool const resultHeldBuffer = input.ConsumeBool();

    CallSetup setup;
    FillArguments(input, setup, count);
    minihost::Variant result = resultHeldBuffer
                                   ? minihost::Variant::DataRef(HostBuffer("old", true, 0))
                                   : minihost::Variant::String("an earlier value");
    Reports reports;
    minihost::Context context{AutoRefPtr<Tavrel::IPolicy>(new FuzzPolicy())};
    context.SetErrorHandler([&reports](minihost::ErrorReport const& report) {
        ++reports.count;
        reports.wellFormed =
            reports.wellFormed && report.severity == 2 && report.module == "Binary";
    });
    if (interrupted) {
        context.Interrupt();
    }
    for (auto const& buffer : setup.buffers) {
        setup.bufferCounts.push_back(buffer ? buffer->Interface_GetCount() : 0);
    }

    unsigned int status = 0;
    try {
        status =
            surface.entries[which](count, setup.pointers.data(), withResult ? &result : nullptr,
                                   surface.module->Info(), &context);
    } catch (std::runtime_error const&) {
        CheckThrowFromRead(setup, count, result, signature.entry);
        return;
    }

    Require(status == PredictStatus(signature, count, setup.shapes),
            "the status word follows the binding rules", signature.entry);
    int const expectedReports = status == 0 && ExpectsReport(signature, setup, interrupted);
    Require(reports.count == expectedReports, "one report exactly for a bad value",
            signature.entry);
    Require(reports.wellFormed, "reports have severity 2 and the module's name", signature.entry);
    if (withResult) {
        CheckResult(result, signature, status, setup);
    } else {
        Require(result.assignments() == 0, "no result variant, nothing stored", signature.entry);
    }
    CheckArgumentsUntouched(setup, signature.entry);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    LoadSurface();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    long const hostBuffers = minihost::LiveToken::Count();
    long const userObjects = UserObject::Live();
    FuzzedDataProvider input(data, size);
    RunOneCall(input);
    Require(minihost::LiveToken::Count() == hostBuffers, "every host buffer is released",
            "the call");
    Require(UserObject::Live() == userObjects, "every user object is released", "the call");
    return 0;
}
