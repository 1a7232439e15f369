// Comparing a module buffer with a host buffer of 1 MiB of equal bytes, beside memcmp of
// the same bytes: once when the host buffer exposes its bytes (one memcmp, no block) and
// once when it does not (one block of 8192 bytes filled by Read, compared block by block).
#include <benchmark/benchmark.h>
#include <cstring>
#include <string>

#include "bench/BenchHost.h"
#include "minihost/host/MemoryBuffer.h"

using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;

namespace {

constexpr unsigned long long kCompareSize = bench::kMiB;

void BM_Memcmp(benchmark::State& state) {
    std::string const& mine = bench::PatternBytes(kCompareSize);
    std::string const other = mine;
    char const* left = mine.data();
    char const* right = other.data();
    int difference = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(left);
        benchmark::DoNotOptimize(right);
        difference = std::memcmp(left, right, kCompareSize);
        benchmark::DoNotOptimize(difference);
    }
    state.SetBytesProcessed(static_cast<long long>(state.iterations() * kCompareSize));
    bench::Expect(state, difference == 0, "memcmp found a difference");
}

void RunCompare(benchmark::State& state, bool exposeBytes) {
    std::string const& bytes = bench::PatternBytes(kCompareSize);
    AutoRefPtr<IDataRef> const mine = bench::ModuleBuffer(bytes);
    minihost::MemoryBufferOptions options;
    options.exposeBytes = exposeBytes;
    AutoRefPtr<IDataRef> const other(new minihost::MemoryBuffer(bytes, options));
    bool equal = false;
    for (auto _ : state) {
        equal = mine->Interface_IsEqual(other.get());
        benchmark::DoNotOptimize(equal);
    }
    state.SetBytesProcessed(static_cast<long long>(state.iterations() * kCompareSize));
    bench::Expect(state, equal, "equal buffers compared unequal");
}

void BM_CompareExposed(benchmark::State& state) { RunCompare(state, true); }
void BM_CompareThroughRead(benchmark::State& state) { RunCompare(state, false); }

}  // namespace

BENCHMARK(BM_Memcmp)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CompareExposed)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CompareThroughRead)->Unit(benchmark::kMicrosecond);
