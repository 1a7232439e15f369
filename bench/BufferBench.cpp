// The buffer operations on 1 MiB and 64 MiB, each through its exported entry, beside the
// copy-construction of a std::string of the same size (one fresh allocation, one copy).
// Sources are module buffers made by ToDataRef, as a script makes them. A buffer result is
// kept in a variant from call to call, as a script variable assigned in a loop.
#include <benchmark/benchmark.h>
#include <string>
#include <utility>
#include <vector>

#include "bench/BenchHost.h"
#include "host/VariantType.h"

using minihost::Variant;
using Tavrel::IVariant;

namespace {

// Where a ranged operation starts in its source, which is that much longer than the range.
constexpr unsigned long long kRangeOffset = 4 * bench::kKiB;

// All bytes of a buffer, read through its interface.
std::string BytesOf(Tavrel::IDataRef const* data) {
    std::string bytes(data == nullptr ? 0 : data->GetSize(), '\0');
    if (!bytes.empty()) {
        data->Read(bytes.data(), bytes.size(), 0);
    }
    return bytes;
}

// What the host does with a result during the timed calls.
enum class HostKeeps {
    kResult,   // stores it in a variant that it keeps from call to call, as a script variable
    kNothing,  // passes no result variant, so only the module's own work is timed
};

// Calls entry on arguments until the state ends; then checks, with one more call that keeps
// its result, that the entry succeeded, reported nothing and gave expected.
void RunEntry(benchmark::State& state, char const* entryName, std::vector<Variant> values,
              std::string const& expected, HostKeeps keeps = HostKeeps::kResult) {
    bench::Host host;
    minihost::EntryFunction const entry = bench::Entry(entryName);
    std::vector<IVariant*> arguments;
    for (Variant& value : values) {
        arguments.push_back(&value);
    }
    Variant kept;
    IVariant* const result = keeps == HostKeeps::kResult ? &kept : nullptr;
    // NOTE: one call before the clock starts, so that every timed call finds the variant
    // holding the previous result, as in a script loop.
    unsigned int status = host.Call(entry, arguments, result);
    for (auto _ : state) {
        status |= host.Call(entry, arguments, result);
        benchmark::DoNotOptimize(status);
    }
    state.SetBytesProcessed(static_cast<long long>(state.iterations() * expected.size()));
    status |= host.Call(entry, arguments, &kept);
    std::string const got =
        kept.type() == Tavrel::VariantType::kString ? kept.string() : BytesOf(kept.dataPointer());
    bench::Expect(state, status == 0 && host.Reports() == 0 && got == expected,
                  "the entry did not give the expected bytes");
}

Variant Number(unsigned long long value) { return Variant::Number(static_cast<double>(value)); }

Variant BufferOf(std::string const& bytes) { return Variant::DataRef(bench::ModuleBuffer(bytes)); }

unsigned long long Size(benchmark::State const& state) {
    return static_cast<unsigned long long>(state.range(0));
}

// The baselines: a std::string copy-constructed from one of the same size, with the two
// lifetimes that the rows have. Freed at once, as a result that the host does not keep
// (ToString); kept until the next copy replaces it, as a buffer result in a script variable,
// so that two copies live at once while the new one is made, as two buffers do.
void BM_StringCopy(benchmark::State& state) {
    std::string const& source = bench::PatternBytes(Size(state));
    benchmark::DoNotOptimize(std::string(source).data());
    for (auto _ : state) {
        std::string copy(source);
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<long long>(state.iterations() * source.size()));
}

void BM_StringCopyKept(benchmark::State& state) {
    std::string const& source = bench::PatternBytes(Size(state));
    std::string kept(source);
    for (auto _ : state) {
        std::string copy(source);
        benchmark::DoNotOptimize(copy.data());
        kept = std::move(copy);  // the previous copy is freed here
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<long long>(state.iterations() * source.size()));
}

void BM_ToDataRef(benchmark::State& state) {
    std::string const& bytes = bench::PatternBytes(Size(state));
    RunEntry(state, "ToDataRef", {Variant::String(bytes)}, bytes);
}

void BM_ToString(benchmark::State& state) {
    std::string const& bytes = bench::PatternBytes(Size(state));
    // NOTE: a host copies a string result into its own variant; that copy is the host's
    // work, which no module can spare it, so it is left out of the time.
    RunEntry(state, "BinaryToString", {BufferOf(bytes)}, bytes, HostKeeps::kNothing);
}

void BM_CopyWhole(benchmark::State& state) {
    std::string const& bytes = bench::PatternBytes(Size(state));
    RunEntry(state, "BinaryCopy", {BufferOf(bytes)}, bytes);
}

void BM_CopyRange(benchmark::State& state) {
    std::string const& source = bench::PatternBytes(Size(state) + 2 * kRangeOffset);
    RunEntry(state, "BinaryCopyPart", {BufferOf(source), Number(kRangeOffset), Number(Size(state))},
             source.substr(kRangeOffset, Size(state)));
}

// Two halves joined into a result of the measured size.
void BM_Append(benchmark::State& state) {
    std::string const& bytes = bench::PatternBytes(Size(state));
    std::string const first = bytes.substr(0, bytes.size() / 2);
    std::string const second = bytes.substr(bytes.size() / 2);
    RunEntry(state, "BinaryAppend", {BufferOf(first), BufferOf(second)}, bytes);
}

void BM_Slice(benchmark::State& state) {
    std::string const& source = bench::PatternBytes(Size(state) + 2 * kRangeOffset);
    RunEntry(state, "BinarySlice", {BufferOf(source), Number(kRangeOffset), Number(Size(state))},
             source.substr(kRangeOffset, Size(state)));
}

}  // namespace

#define TAVREL_BUFFER_SIZES ->Arg(1 << 20)->Arg(64 << 20)->Unit(benchmark::kMicrosecond)

BENCHMARK(BM_StringCopy) TAVREL_BUFFER_SIZES;
BENCHMARK(BM_StringCopyKept) TAVREL_BUFFER_SIZES;
BENCHMARK(BM_ToDataRef) TAVREL_BUFFER_SIZES;
BENCHMARK(BM_ToString) TAVREL_BUFFER_SIZES;
BENCHMARK(BM_CopyWhole) TAVREL_BUFFER_SIZES;
BENCHMARK(BM_CopyRange) TAVREL_BUFFER_SIZES;
BENCHMARK(BM_Append) TAVREL_BUFFER_SIZES;
BENCHMARK(BM_Slice) TAVREL_BUFFER_SIZES;
