#include "strings/Dispatch.h"

#include <atomic>
#include <cstdlib>

#include "strings/Kernels.h"

namespace Tavrel {

namespace {

constexpr StringsPath kAllPaths[] = {StringsPath::kPortable, StringsPath::kSse2, StringsPath::kAvx2,
                                     StringsPath::kAvx512};
constexpr char const* kNames[] = {"portable", "sse2", "avx2", "avx512"};

int Index(StringsPath path) { return static_cast<int>(path); }

// The fastest path the processor can run, asked once.
// NOTE: __builtin_cpu_supports also checks that the system saves the wide registers (XGETBV),
// so a processor with AVX-512 under a system that does not enable it counts as without.
StringsPath FastestPath() {
#ifdef TAVREL_STRINGS_X86
    __builtin_cpu_init();
    bool const bits = __builtin_cpu_supports("popcnt") && __builtin_cpu_supports("bmi") &&
                      __builtin_cpu_supports("bmi2");
    if (bits && __builtin_cpu_supports("avx2")) {
        if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
            __builtin_cpu_supports("avx512vl")) {
            return StringsPath::kAvx512;
        }
        return StringsPath::kAvx2;
    }
    return StringsPath::kSse2;
#else
    return StringsPath::kPortable;
#endif
}

StringsPath Fastest() {
    static StringsPath const fastest = FastestPath();
    return fastest;
}

// The path on first use: the fastest, lowered to what TAVREL_STRINGS_PATH names.
int InitialPath() {
    StringsPath path = Fastest();
    if (char const* const name = std::getenv("TAVREL_STRINGS_PATH"); name != nullptr) {
        if (std::optional<StringsPath> const wanted = ParseStringsPath(name);
            wanted && Index(*wanted) < Index(path)) {
            path = *wanted;
        }
    }
    return Index(path);
}

// NOTE: the path is read on every call of a dispatched function, so it is a relaxed atomic:
// a switch by UseStringsPath in one thread is seen by the others without any ordering cost.
std::atomic<int>& Current() {
    static std::atomic<int> current{InitialPath()};
    return current;
}

}  // namespace

StringsPath ActiveStringsPath() {
    return static_cast<StringsPath>(Current().load(std::memory_order_relaxed));
}

bool StringsPathAvailable(StringsPath path) {
    return Index(path) >= 0 && Index(path) <= Index(Fastest());
}

std::vector<StringsPath> AvailableStringsPaths() {
    std::vector<StringsPath> paths;
    for (StringsPath const path : kAllPaths) {
        if (StringsPathAvailable(path)) {
            paths.push_back(path);
        }
    }
    return paths;
}

bool UseStringsPath(StringsPath path) {
    if (!StringsPathAvailable(path)) {
        return false;
    }
    Current().store(Index(path), std::memory_order_relaxed);
    return true;
}

char const* StringsPathName(StringsPath path) { return kNames[Index(path)]; }

std::optional<StringsPath> ParseStringsPath(std::string_view name) {
    for (StringsPath const path : kAllPaths) {
        if (name == kNames[Index(path)]) {
            return path;
        }
    }
    return std::nullopt;
}

namespace kernels {

namespace {

#ifdef TAVREL_STRINGS_X86
// Whether the AVX-512 path may also compress bytes (VBMI2), asked once.
bool HasVbmi2() {
    static bool const has = __builtin_cpu_supports("avx512vbmi2");
    return has;
}
#endif

}  // namespace

Kernels const& KernelsOf(StringsPath path) {
    switch (path) {
#ifdef TAVREL_STRINGS_X86
        case StringsPath::kSse2:
            return kSse2Kernels;
        case StringsPath::kAvx2:
            return kAvx2Kernels;
        case StringsPath::kAvx512:
            return HasVbmi2() ? kAvx512Vbmi2Kernels : kAvx512Kernels;
#endif
        default:
            return kPortableKernels;
    }
}

Kernels const& ActiveKernels() { return KernelsOf(ActiveStringsPath()); }

}  // namespace kernels

}  // namespace Tavrel
