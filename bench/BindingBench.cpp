// The cost of the binding: Size called through the module's exported entry, beside a
// hand-written entry that makes the same host calls in the same order without the
// templates. Both are reached through a function pointer, as the host reaches an entry, and
// neither sees the host's classes, so neither can bind the host's calls at build time. Both
// live in the same shared object, a copy of the module that also holds the hand-written entry
// (bench/CMakeLists.txt), so that they are compiled, placed and called alike.
// NOTE: code in the program itself and code in a shared object differ by a few cycles per call
// on some processors whatever they do; only the two in one object compare the binding alone.
#include <benchmark/benchmark.h>
#include <string>
#include <vector>

#include "bench/BenchHost.h"
#include "bench/HandWrittenSize.h"
#include "host/IVariant.h"

using Tavrel::IVariant;

namespace {

void RunSize(benchmark::State& state, minihost::EntryFunction entry) {
    // NOTE: the pointer is made opaque so that the hand-written entry is called, not inlined.
    benchmark::DoNotOptimize(entry);
    bench::Host host;
    std::string const bytes = bench::PatternBytes(100);
    minihost::Variant argument = minihost::Variant::DataRef(bench::ModuleBuffer(bytes));
    std::vector<IVariant*> arguments{&argument};
    minihost::Variant result;
    unsigned int status = 0;
    for (auto _ : state) {
        status = host.Call(entry, arguments, &result);
        benchmark::DoNotOptimize(status);
    }
    bench::Expect(state, status == 0 && result.number() == 100.0 && host.Reports() == 0,
                  "Size did not give the size");
}

void BM_Size_Entry(benchmark::State& state) {
    RunSize(state, bench::EntryAt(TAVREL_SIZE_MODULE_PATH, "BinarySize"));
}
void BM_Size_HandWritten(benchmark::State& state) { RunSize(state, &bench::HandWrittenSize); }

}  // namespace

BENCHMARK(BM_Size_Entry);
BENCHMARK(BM_Size_HandWritten);
