// Which instruction set the string library's hot loops run on: the UTF-8, ASCII and printable
// checks of Validate.h, the occurrence scanner of ReplaceAll and the candidate filter of
// FindCaseInsensitive. Every path gives the same results; they differ only in speed.
// The path is chosen once, on first use, from what the processor has (SSE2 as the floor on
// x86-64, AVX2 and AVX-512BW with AVX-512VL where present) and from the environment variable
// TAVREL_STRINGS_PATH, which can only lower it. Tests, fuzzers and benchmarks may switch it
// afterwards. A build with TAVREL_STRINGS_NO_SIMD, or for a processor other than x86, has the
// portable path only. Does not decide anything else about the library.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace Tavrel {

// The paths, from the slowest to the fastest.
enum class StringsPath { kPortable = 0, kSse2 = 1, kAvx2 = 2, kAvx512 = 3 };

// The path in use. On the first call: the fastest available path, or, when
// TAVREL_STRINGS_PATH names one, the fastest available path not faster than the named one.
// An unknown name is ignored.
//   AVX-512BW processor, no variable          => kAvx512
//   AVX-512BW processor, "avx2"               => kAvx2
//   AVX2 processor, "avx512"                  => kAvx2
//   any processor, "portable"                 => kPortable
//   any processor, "fast"                     => as without the variable
StringsPath ActiveStringsPath();

// Whether this build and this processor can run path.
//   kPortable => always true     kAvx512 on a processor without AVX-512BW => false
bool StringsPathAvailable(StringsPath path);

// The available paths, from the slowest to the fastest; kPortable always comes first.
//   AVX-512BW processor => {kPortable, kSse2, kAvx2, kAvx512}     NO_SIMD build => {kPortable}
std::vector<StringsPath> AvailableStringsPaths();

// Makes path the one in use from now on, in every thread (for tests, fuzzers and benchmarks).
// An unavailable path changes nothing.
//   available => true, ActiveStringsPath() == path     not available => false
bool UseStringsPath(StringsPath path);

// The name that TAVREL_STRINGS_PATH takes for path, and back.
//   kPortable <=> "portable"   kSse2 <=> "sse2"   kAvx2 <=> "avx2"   kAvx512 <=> "avx512"
//   ParseStringsPath("AVX2"), ParseStringsPath("") => nullopt (names are lower case)
char const* StringsPathName(StringsPath path);
std::optional<StringsPath> ParseStringsPath(std::string_view name);

}  // namespace Tavrel
