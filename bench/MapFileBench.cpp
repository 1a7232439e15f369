// Binary.MapFile, then Size and a 4 KiB Binary.Slice from the middle, on a sparse file of
// 1 GiB beside the same on a file of 1 MiB: the time must not grow with the file, since
// nothing is read that is not asked for. The files live in a temporary directory that is
// removed when the program ends.
#include <benchmark/benchmark.h>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/BenchHost.h"
#include "testing/TestFiles.h"

using minihost::Variant;
using Tavrel::IVariant;

namespace {

constexpr unsigned long long kSliceSize = 4 * bench::kKiB;

// A temporary directory with one sparse file of 1 GiB and one file of 1 MiB of bytes.
class MappedFiles {
public:
    MappedFiles()
        : mSparse(Make("sparse-1GiB", 1024 * bench::kMiB, "")),
          mSmall(Make("bytes-1MiB", bench::kMiB, bench::PatternBytes(bench::kMiB))) {}

    std::string const& Sparse() const { return mSparse; }
    std::string const& Small() const { return mSmall; }

private:
    // A file of size bytes that starts with bytes; the rest is a hole.
    std::string Make(char const* name, unsigned long long size, std::string const& bytes) {
        std::string const path = mDirectory.Write(name, bytes);
        std::filesystem::resize_file(path, size);
        return path;
    }

    // NOTE: first, so that the directory exists before the files are made in it.
    tavrel_testing::TempDir mDirectory{"tavrel-bench"};
    std::string mSparse;
    std::string mSmall;
};

MappedFiles const& Files() {
    static MappedFiles const files;
    return files;
}

void RunMapFile(benchmark::State& state, std::string const& path, unsigned long long size) {
    bench::Host host;
    minihost::EntryFunction const mapFile = bench::Entry("BinaryMapFile");
    minihost::EntryFunction const sizeOf = bench::Entry("BinarySize");
    minihost::EntryFunction const slice = bench::Entry("BinarySlice");
    Variant pathValue = Variant::String(path);
    Variant middle = Variant::Number(static_cast<double>(size / 2));
    Variant sliceSize = Variant::Number(static_cast<double>(kSliceSize));
    Variant mapped;
    Variant sizeResult;
    Variant sliced;
    std::vector<IVariant*> mapArguments{&pathValue};
    std::vector<IVariant*> sizeArguments{&mapped};
    std::vector<IVariant*> sliceArguments{&mapped, &middle, &sliceSize};
    unsigned int status = 0;
    for (auto _ : state) {
        status |= host.Call(mapFile, mapArguments, &mapped);
        status |= host.Call(sizeOf, sizeArguments, &sizeResult);
        status |= host.Call(slice, sliceArguments, &sliced);
        benchmark::DoNotOptimize(status);
    }
    Tavrel::IDataRef const* const part = sliced.dataPointer();
    bench::Expect(state,
                  status == 0 && host.Reports() == 0 &&
                      sizeResult.number() == static_cast<double>(size) && part != nullptr &&
                      part->GetSize() == kSliceSize,
                  "MapFile, Size or Slice did not give the file's bytes");
}

void BM_MapFileSlice_1MiB(benchmark::State& state) {
    RunMapFile(state, Files().Small(), bench::kMiB);
}
void BM_MapFileSlice_Sparse1GiB(benchmark::State& state) {
    RunMapFile(state, Files().Sparse(), 1024 * bench::kMiB);
}

}  // namespace

BENCHMARK(BM_MapFileSlice_1MiB)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MapFileSlice_Sparse1GiB)->Unit(benchmark::kMicrosecond);
