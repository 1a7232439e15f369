// The string library beside the C library and Abseil on the same texts: UTF-8 validation
// against memchr for an absent byte, the case-insensitive search against strcasestr, and
// ReplaceAll against absl::StrReplaceAll; each at 1 MiB, search and replace also at 4 MiB
// to show that they stay linear.
#include <strings.h>

#include <absl/strings/str_replace.h>
#include <benchmark/benchmark.h>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "bench/BenchHost.h"
#include "strings/Replace.h"
#include "strings/Search.h"
#include "strings/Validate.h"

namespace {

constexpr unsigned long long kTextSize = bench::kMiB;

// Words of plain prose repeated up to size bytes.
std::string Prose(unsigned long long size, std::string_view const& words) {
    std::string text;
    text.reserve(size);
    while (text.size() < size) {
        text.append(words.substr(0, size - text.size()));
    }
    return text;
}

// Lines of ASCII prose, each ended by a line feed.
std::string AsciiLines(unsigned long long size) {
    return Prose(size,
                 "Lorem ipsum dolor sit amet, consectetur adipiscing elit, sed do eiusmod "
                 "tempor incididunt ut labore et dolore magna aliqua.\n");
}

// Text with 2-, 3- and 4-byte sequences among ASCII, cut at a sequence boundary.
std::string MixedText(unsigned long long size) {
    std::string_view const unit =
        "caf\xC3\xA9 \xE2\x82\xAC 5 \xF0\x9F\x98\x80 na\xC3\xAFve "
        "\xE6\x97\xA5\xE6\x9C\xAC \xD0\xBC\xD0\xB8\xD1\x80\n";
    std::string text;
    while (text.size() + unit.size() <= size) {
        text.append(unit);
    }
    text.append(size - text.size(), 'x');
    return text;
}

// Prose without the needle, ended by the needle in lower case.
std::string SearchText(unsigned long long size, std::string_view const& needle) {
    std::string text = Prose(size - needle.size(),
                             "ut enim ad minim veniam, quis nostrud exercitation ullamco laboris "
                             "nisi ut aliquip ex ea commodo consequat. ");
    text.append(needle);
    return text;
}

constexpr std::string_view kNeedleInText = "needle42";
constexpr char kNeedle[] = "NEEDLE42";

// About one match every 10.5 bytes: 1 MiB holds 104857 of them.
std::string ReplaceText(unsigned long long size) { return Prose(size, "ab-cd.efg "); }

std::string const kFrom = "ab";
std::string const kTo = "xyz";

// Non-overlapping matches of from in text, counted the plain way.
unsigned long long CountMatches(std::string const& text, std::string const& from) {
    unsigned long long count = 0;
    for (auto at = text.find(from); at != std::string::npos;
         at = text.find(from, at + from.size())) {
        ++count;
    }
    return count;
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

void BM_Strcasestr(benchmark::State& state) {
    std::string const text = SearchText(kTextSize, kNeedleInText);
    char const* found = nullptr;
    for (auto _ : state) {
        char const* bytes = text.c_str();
        benchmark::DoNotOptimize(bytes);
        found = ::strcasestr(bytes, kNeedle);
        benchmark::DoNotOptimize(found);
    }
    SetBytes(state, text.size());
    bench::Expect(state, found == text.c_str() + text.size() - kNeedleInText.size(),
                  "strcasestr did not find the needle at the end");
}

void BM_FindCaseInsensitive(benchmark::State& state) {
    std::string const text =
        SearchText(static_cast<unsigned long long>(state.range(0)), kNeedleInText);
    std::size_t found = Tavrel::npos;
    for (auto _ : state) {
        found = Tavrel::FindCaseInsensitive(text, kNeedle);
        benchmark::DoNotOptimize(found);
    }
    SetBytes(state, text.size());
    bench::Expect(state, found == text.size() - kNeedleInText.size(),
                  "FindCaseInsensitive did not find the needle at the end");
}

// Both sides make a new text from a constant one in each call: Abseil returns it, ReplaceAll
// rewrites a fresh copy. Making that copy is the caller's work, not the replacement's, so it
// is left out of the time; ReplaceAll's own allocation of its larger result is not.
void BM_AbslStrReplaceAll(benchmark::State& state) {
    std::string const text = ReplaceText(kTextSize);
    std::string replaced;
    for (auto _ : state) {
        replaced = absl::StrReplaceAll(text, {{kFrom, kTo}});
        benchmark::DoNotOptimize(replaced.data());
    }
    SetBytes(state, text.size());
    // Each match of "ab" grows the text by one byte.
    bench::Expect(state, replaced.size() == text.size() + CountMatches(text, kFrom),
                  "absl::StrReplaceAll did not replace every match");
}

void BM_ReplaceAll(benchmark::State& state) {
    std::string const text = ReplaceText(static_cast<unsigned long long>(state.range(0)));
    std::string replaced;
    for (auto _ : state) {
        state.PauseTiming();
        std::string copy = text;
        state.ResumeTiming();
        Tavrel::ReplaceAll(copy, kFrom, kTo);
        benchmark::DoNotOptimize(copy.data());
        replaced = std::move(copy);
    }
    SetBytes(state, text.size());
    bench::Expect(state, replaced == absl::StrReplaceAll(text, {{kFrom, kTo}}),
                  "ReplaceAll differs from absl::StrReplaceAll");
}

}  // namespace

BENCHMARK(BM_MemchrAbsent)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ValidUTF8_Ascii)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ValidUTF8_Mixed)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Strcasestr)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FindCaseInsensitive)->Arg(1 << 20)->Arg(4 << 20)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AbslStrReplaceAll)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ReplaceAll)->Arg(1 << 20)->Arg(4 << 20)->Unit(benchmark::kMicrosecond);
