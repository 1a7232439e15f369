#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "strings/Dispatch.h"

namespace Tavrel {
namespace {

constexpr StringsPath kAll[] = {StringsPath::kPortable, StringsPath::kSse2, StringsPath::kAvx2,
                                StringsPath::kAvx512};

TEST(StringsPath, NamesBothWays) {
    struct Row {
        StringsPath path;
        char const* name;
    };
    Row const rows[] = {{StringsPath::kPortable, "portable"},
                        {StringsPath::kSse2, "sse2"},
                        {StringsPath::kAvx2, "avx2"},
                        {StringsPath::kAvx512, "avx512"}};
    for (Row const& row : rows) {
        EXPECT_STREQ(StringsPathName(row.path), row.name);
        EXPECT_EQ(ParseStringsPath(row.name), row.path) << row.name;
    }
    for (char const* unknown : {"", "AVX2", "avx-512", "sse", "portable "}) {
        EXPECT_EQ(ParseStringsPath(unknown), std::nullopt) << unknown;
    }
}

// The available paths are the portable one and every one up to the fastest; each can be put
// in use, and one that is not available leaves the path as it was.
TEST(StringsPath, AvailablePathsCanBeUsed) {
    std::vector<StringsPath> const available = AvailableStringsPaths();
    ASSERT_FALSE(available.empty());
    RecordProperty("fastest", StringsPathName(available.back()));
    StringsPath const before = ActiveStringsPath();
    for (std::size_t k = 0; k < std::size(kAll); ++k) {
        StringsPath const path = kAll[k];
        bool const listed = k < available.size();
        EXPECT_EQ(StringsPathAvailable(path), listed) << StringsPathName(path);
        if (listed) {
            EXPECT_EQ(available[k], path);
        }
        UseStringsPath(StringsPath::kPortable);
        EXPECT_EQ(UseStringsPath(path), listed) << StringsPathName(path);
        EXPECT_EQ(ActiveStringsPath(), listed ? path : StringsPath::kPortable);
    }
    UseStringsPath(before);
#ifdef TAVREL_STRINGS_NO_SIMD
    EXPECT_EQ(available.size(), 1u);
#endif
}

// Run by CTest with TAVREL_STRINGS_PATH set (tests/strings/CMakeLists.txt). Every other test
// puts back the path it changed, so this sees the path chosen on first use.
TEST(StringsPath, FirstUseFollowsEnvironment) {
    StringsPath const fastest = AvailableStringsPaths().back();
    auto const atMost = [fastest](StringsPath path) {
        return static_cast<int>(path) < static_cast<int>(fastest) ? path : fastest;
    };
    char const* const wanted = std::getenv("TAVREL_STRINGS_PATH");
    std::string const name = wanted == nullptr ? "" : wanted;
    StringsPath expected = fastest;  // no variable, or a name that is none
    if (name == "portable") {
        expected = StringsPath::kPortable;
    } else if (name == "sse2") {
        expected = atMost(StringsPath::kSse2);
    } else if (name == "avx2") {
        expected = atMost(StringsPath::kAvx2);
    }
    EXPECT_EQ(ActiveStringsPath(), expected) << "TAVREL_STRINGS_PATH=" << name;
}

}  // namespace
}  // namespace Tavrel
