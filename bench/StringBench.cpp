// The string library beside the C library and the loop a user would write, on the same texts:
// the validations against memchr for an absent byte; the case-insensitive search against
// strcasestr, with needles of 1, 3, 8 and 32 bytes; and ReplaceAll against the one-pass loop
// (std::string_view::find, append into a reserved string) for each shape of pattern, with an
// occurrence every 10 bytes (dense) or every 1000 (sparse; some also every 4096), and some
// shapes with occurrences at random places, so that no period helps either side; beside them,
// what an in-place deletion cannot do without: the text moved down once. Each at 1 MiB;
// ReplaceAll also at 16 MiB to show that it stays linear. The instruction-set path of the string
// library in use is named in the run's context ("strings path").
#include <strings.h>

#include <benchmark/benchmark.h>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include "bench/BenchHost.h"
#include "strings/Dispatch.h"
#include "strings/Replace.h"
#include "strings/Search.h"
#include "strings/Validate.h"
#include "testing/StringReferences.h"

namespace {

namespace ref = tavrel_testing::reference;

constexpr unsigned long long kTextSize = bench::kMiB;

// unit repeated up to size bytes; the last copy may be cut.
std::string Repeated(unsigned long long size, std::string_view const& unit) {
    std::string text;
    text.reserve(size);
    while (text.size() < size) {
        text.append(unit.substr(0, size - text.size()));
    }
    return text;
}

// unit repeated as often as it fits whole, the rest filled with filler.
std::string WholeUnits(unsigned long long size, std::string_view const& unit, char filler) {
    std::string text = Repeated(size / unit.size() * unit.size(), unit);
    text.append(size - text.size(), filler);
    return text;
}

constexpr std::string_view kLoremLine =
    "Lorem ipsum dolor sit amet, consectetur adipiscing elit, sed do eiusmod tempor "
    "incididunt ut labore et dolore magna aliqua.\n";

// Lines of ASCII prose, each ended by a line feed.
std::string AsciiLines(unsigned long long size) { return Repeated(size, kLoremLine); }

// ASCII prose without line feeds: every byte printable.
std::string PrintableProse(unsigned long long size) {
    return Repeated(size, kLoremLine.substr(0, kLoremLine.size() - 1));
}

// 1- to 4-byte sequences, about half of them ASCII, cut at a sequence boundary.
std::string MixedText(unsigned long long size) {
    return WholeUnits(size,
                      "caf\xC3\xA9 \xE2\x82\xAC 5 \xF0\x9F\x98\x80 na\xC3\xAFve "
                      "\xE6\x97\xA5\xE6\x9C\xAC \xD0\xBC\xD0\xB8\xD1\x80\n",
                      'x');
}

// Nothing but 2- to 4-byte sequences: Cyrillic, CJK and emoji, no ASCII before the last bytes.
std::string DenseText(unsigned long long size) {
    return WholeUnits(size,
                      "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82\xE6\x97\xA5\xE6\x9C"
                      "\xAC\xE8\xAA\x9E\xF0\x9F\x98\x80\xD0\xBC\xD0\xB8\xD1\x80\xF0\x9F\x8E"
                      "\x89\xE4\xB8\xAD\xE6\x96\x87",
                      'x');
}

void SetBytes(benchmark::State& state, unsigned long long size) {
    state.SetBytesProcessed(static_cast<long long>(state.iterations() * size));
}

void BM_MemchrAbsent(benchmark::State& state) {
    std::string const text = AsciiLines(kTextSize);
    void const* found = nullptr;
    for (auto _ : state) {
        char const* bytes = text.data();
        benchmark::DoNotOptimize(bytes);
        found = std::memchr(bytes, 0xFF, text.size());
        benchmark::DoNotOptimize(found);
    }
    SetBytes(state, text.size());
    bench::Expect(state, found == nullptr, "memchr found the absent byte");
}

void RunValidUTF8(benchmark::State& state, std::string const& text) {
    std::string message;
    std::size_t position = 0;
    bool valid = false;
    for (auto _ : state) {
        valid = Tavrel::ValidUTF8(text, message, &position);
        benchmark::DoNotOptimize(valid);
    }
    SetBytes(state, text.size());
    bench::Expect(state, valid, "the text did not validate");
}

void BM_ValidUTF8_Ascii(benchmark::State& state) { RunValidUTF8(state, AsciiLines(kTextSize)); }
void BM_ValidUTF8_Mixed(benchmark::State& state) { RunValidUTF8(state, MixedText(kTextSize)); }
void BM_ValidUTF8_Dense(benchmark::State& state) { RunValidUTF8(state, DenseText(kTextSize)); }

template <bool (*kTest)(std::string_view const&, std::size_t*)>
void RunByteTest(benchmark::State& state) {
    std::string const text = PrintableProse(kTextSize);
    std::size_t position = 0;
    bool valid = false;
    for (auto _ : state) {
        valid = kTest(text, &position);
        benchmark::DoNotOptimize(valid);
    }
    SetBytes(state, text.size());
    bench::Expect(state, valid, "the text did not pass");
}

void BM_ValidASCII(benchmark::State& state) { RunByteTest<Tavrel::ValidASCII>(state); }
void BM_ValidPrintableASCII(benchmark::State& state) {
    RunByteTest<Tavrel::ValidPrintableASCII>(state);
}

// Prose without the needle, ended by the needle in lower case; it is searched in upper case.
std::string SearchText(unsigned long long size, std::string_view const& needle) {
    std::string text = Repeated(size - needle.size(),
                                "ut enim ad minim veniam, quis nostrud exercitation ullamco "
                                "laboris nisi ut aliquip ex ea commodo consequat. ");
    text.append(needle);
    return text;
}

void BM_Strcasestr(benchmark::State& state, std::string_view const& needle) {
    std::string const text = SearchText(kTextSize, needle);
    std::string const upper = ref::Upper(needle);
    char const* found = nullptr;
    for (auto _ : state) {
        char const* bytes = text.c_str();
        benchmark::DoNotOptimize(bytes);
        found = ::strcasestr(bytes, upper.c_str());
        benchmark::DoNotOptimize(found);
    }
    SetBytes(state, text.size());
    bench::Expect(state, found == text.c_str() + text.size() - needle.size(),
                  "strcasestr did not find the needle at the end");
}

void BM_FindCaseInsensitive(benchmark::State& state, std::string_view const& needle) {
    std::string const text = SearchText(static_cast<unsigned long long>(state.range(0)), needle);
    std::string const upper = ref::Upper(needle);
    std::size_t found = Tavrel::npos;
    for (auto _ : state) {
        found = Tavrel::FindCaseInsensitive(text, upper);
        benchmark::DoNotOptimize(found);
    }
    SetBytes(state, text.size());
    bench::Expect(state, found == text.size() - needle.size(),
                  "FindCaseInsensitive did not find the needle at the end");
}

// A text and what ReplaceAll replaces in it.
struct Shape {
    std::string text;
    std::string from;
    std::string to;
};

// An occurrence every 10 bytes: unit is 10 bytes long and holds from once.
Shape Dense(unsigned long long size, std::string_view unit, std::string from, std::string to) {
    return {Repeated(size, unit), std::move(from), std::move(to)};
}

// An occurrence every `every` bytes (1000 unless said), at the end of a stretch of prose.
Shape Sparse(unsigned long long size, std::string from, std::string to, std::size_t every = 1000) {
    std::string paragraph = Repeated(every - from.size(), kLoremLine);
    paragraph += from;
    return {Repeated(size, paragraph), std::move(from), std::move(to)};
}

// Occurrences at random places, on average one every `every` bytes (gaps of every / 2 to
// 3 * every / 2 bytes of prose), from a fixed seed: no period for a branch predictor to learn.
Shape Scattered(unsigned long long size, std::size_t every, std::string from, std::string to) {
    std::mt19937 random(17);
    std::uniform_int_distribution<std::size_t> gap(every / 2, every * 3 / 2);
    std::string text;
    text.reserve(size + every * 2);
    std::size_t prose = 0;
    while (text.size() < size) {
        for (std::size_t k = gap(random); k > 0; --k, ++prose) {
            text.push_back(kLoremLine[prose % kLoremLine.size()]);
        }
        text += from;
    }
    text.resize(size);
    return {std::move(text), std::move(from), std::move(to)};
}

// How the occurrences of a shape lie in its text.
enum class Spacing {
    kUnit,    // unit repeated: unit is 10 bytes long and holds from once
    kEvery,   // at the end of every stretch of `every` bytes of prose
    kRandom,  // at random, about every `every` bytes
};

struct ShapeRow {
    std::string_view name;
    Spacing spacing;
    std::size_t every;
    std::string_view unit;
    std::string_view from;
    std::string_view to;
};

constexpr std::string_view kToken = "0123456789abcdef0123456789abcdef";
constexpr std::string_view kUpperToken = "0123456789ABCDEF0123456789ABCDEF";

constexpr ShapeRow kShapes[] = {
    {"1to3_dense", Spacing::kUnit, 10, "ab-cd.efg ", "-", "+++"},
    {"1to3_sparse", Spacing::kEvery, 1000, "", "#", "+++"},
    {"2equal_dense", Spacing::kUnit, 10, "ab%%cd.ef ", "%%", "pct"},
    {"2equal_sparse", Spacing::kEvery, 1000, "", "%%", "pct"},
    {"2diff_dense", Spacing::kUnit, 10, "ab-cd.efg ", "ab", "xyz"},
    {"2diff_sparse", Spacing::kEvery, 1000, "", "<b", "xyz"},
    {"8to1_dense", Spacing::kUnit, 10, "{{name}}. ", "{{name}}", "x"},
    {"8to1_sparse", Spacing::kEvery, 1000, "", "{{name}}", "x"},
    {"32to32_sparse", Spacing::kEvery, 1000, "", kToken, kUpperToken},
    {"3to0_dense", Spacing::kUnit, 10, "ab<b>cdefg", "<b>", ""},
    {"3to0_sparse", Spacing::kEvery, 1000, "", "<b>", ""},
    {"1to0_sparse", Spacing::kEvery, 1000, "", "#", ""},
    {"8to0_sparse", Spacing::kEvery, 1000, "", "{{name}}", ""},
    {"16to0_sparse", Spacing::kEvery, 1000, "", "<!-- comment -->", ""},
    {"32to32_sparse4k", Spacing::kEvery, 4096, "", kToken, kUpperToken},
    {"3to0_sparse4k", Spacing::kEvery, 4096, "", "<b>", ""},
    {"3to0_random100", Spacing::kRandom, 100, "", "<b>", ""},
    {"1to3_random100", Spacing::kRandom, 100, "", "#", "+++"},
    {"3to0_random10", Spacing::kRandom, 10, "", "<b>", ""},
};

Shape MakeShape(std::string_view const& name, unsigned long long size) {
    for (ShapeRow const& row : kShapes) {
        if (row.name != name) {
            continue;
        }
        std::string from(row.from), to(row.to);
        switch (row.spacing) {
            case Spacing::kUnit:
                return Dense(size, row.unit, std::move(from), std::move(to));
            case Spacing::kEvery:
                return Sparse(size, std::move(from), std::move(to), row.every);
            case Spacing::kRandom:
                return Scattered(size, row.every, std::move(from), std::move(to));
        }
    }
    return {};
}

// The loop a user would write: each occurrence found with std::string_view::find, the pieces
// appended to a string reserved at the result's exact size (which the user could not know, so
// the loop never grows its string), which then takes text's place.
void OnePassReplace(std::string& text, std::string_view from, std::string_view to,
                    std::size_t resultSize) {
    std::string_view const in = text;
    std::string out;
    out.reserve(resultSize);
    std::size_t read = 0;
    for (std::size_t at = in.find(from); at != std::string_view::npos; at = in.find(from, read)) {
        out.append(in.substr(read, at - read));
        out.append(to);
        read = at + from.size();
    }
    out.append(in.substr(read));
    text = std::move(out);
}

// How a replacement is done in RunReplace.
enum class Replacer {
    kLibrary,  // Tavrel::ReplaceAll
    kLoop,     // OnePassReplace
    kMove,     // no replacement: the bytes behind the first occurrence moved down over it with
               // memmove, the least that any in-place deletion of it has to do
};

// Both sides change a fresh copy of the text that is made outside the timed part, as a
// caller's own text; each result lives until the next one replaces it, and the text it
// replaced is freed inside the timed part on both sides.
template <Replacer kReplacer>
void RunReplace(benchmark::State& state, std::string_view const& name) {
    Shape const shape = MakeShape(name, static_cast<unsigned long long>(state.range(0)));
    std::string expected = ref::ReplaceAll(shape.text, shape.from, shape.to);
    std::size_t const first = shape.text.find(shape.from);
    if constexpr (kReplacer == Replacer::kMove) {
        expected = shape.text;
        expected.erase(first, shape.from.size());
    }
    std::string replaced;
    for (auto _ : state) {
        state.PauseTiming();
        std::string copy = shape.text;
        state.ResumeTiming();
        if constexpr (kReplacer == Replacer::kLibrary) {
            Tavrel::ReplaceAll(copy, shape.from, shape.to);
        } else if constexpr (kReplacer == Replacer::kLoop) {
            OnePassReplace(copy, shape.from, shape.to, expected.size());
        } else {
            std::size_t const behind = first + shape.from.size();
            std::memmove(copy.data() + first, copy.data() + behind, copy.size() - behind);
            copy.resize(copy.size() - shape.from.size());
        }
        benchmark::DoNotOptimize(copy.data());
        replaced = std::move(copy);
    }
    SetBytes(state, shape.text.size());
    bench::Expect(state, !shape.from.empty() && replaced == expected,
                  "the replacement differs from the plain procedure");
}

void BM_ReplaceAll(benchmark::State& state, std::string_view const& name) {
    RunReplace<Replacer::kLibrary>(state, name);
}
void BM_OnePassReplace(benchmark::State& state, std::string_view const& name) {
    RunReplace<Replacer::kLoop>(state, name);
}
void BM_MoveBehindFirst(benchmark::State& state, std::string_view const& name) {
    RunReplace<Replacer::kMove>(state, name);
}

// Names the path of the string library in the run's context, once.
int const kPathNamed = [] {
    benchmark::AddCustomContext("strings path",
                                Tavrel::StringsPathName(Tavrel::ActiveStringsPath()));
    return 0;
}();

}  // namespace

BENCHMARK(BM_MemchrAbsent)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ValidUTF8_Ascii)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ValidUTF8_Mixed)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ValidUTF8_Dense)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ValidASCII)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ValidPrintableASCII)->Unit(benchmark::kMicrosecond);

#define TAVREL_SEARCH(name, needle)                                                \
    BENCHMARK_CAPTURE(BM_Strcasestr, name, needle)->Unit(benchmark::kMicrosecond); \
    BENCHMARK_CAPTURE(BM_FindCaseInsensitive, name, needle)                        \
        ->Arg(1 << 20)                                                             \
        ->Unit(benchmark::kMicrosecond)
TAVREL_SEARCH(needle1, "z");
TAVREL_SEARCH(needle3, "ant");
TAVREL_SEARCH(needle8, "needle42");
TAVREL_SEARCH(needle32, "the quick brown fox jumps over a");
BENCHMARK_CAPTURE(BM_FindCaseInsensitive, needle8, "needle42")
    ->Arg(4 << 20)
    ->Unit(benchmark::kMicrosecond);

#define TAVREL_REPLACE(shape)                                                                     \
    BENCHMARK_CAPTURE(BM_ReplaceAll, shape, #shape)->Arg(1 << 20)->Unit(benchmark::kMicrosecond); \
    BENCHMARK_CAPTURE(BM_OnePassReplace, shape, #shape)->Arg(1 << 20)->Unit(benchmark::kMicrosecond)
TAVREL_REPLACE(1to3_dense);
TAVREL_REPLACE(1to3_sparse);
TAVREL_REPLACE(2equal_dense);
TAVREL_REPLACE(2equal_sparse);
TAVREL_REPLACE(2diff_dense);
TAVREL_REPLACE(2diff_sparse);
TAVREL_REPLACE(8to1_dense);
TAVREL_REPLACE(8to1_sparse);
TAVREL_REPLACE(32to32_sparse);
TAVREL_REPLACE(3to0_dense);
TAVREL_REPLACE(3to0_sparse);
TAVREL_REPLACE(1to0_sparse);
TAVREL_REPLACE(8to0_sparse);
TAVREL_REPLACE(16to0_sparse);
TAVREL_REPLACE(32to32_sparse4k);
TAVREL_REPLACE(3to0_sparse4k);
TAVREL_REPLACE(3to0_random100);
TAVREL_REPLACE(1to3_random100);
TAVREL_REPLACE(3to0_random10);
BENCHMARK_CAPTURE(BM_MoveBehindFirst, 3to0_sparse, "3to0_sparse")
    ->Arg(1 << 20)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(BM_ReplaceAll, 2diff_dense, "2diff_dense")
    ->Arg(16 << 20)
    ->Unit(benchmark::kMicrosecond);
