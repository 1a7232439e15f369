// The module's public face: its fixed texts and its definition text (the names it exports
// are read from the file in ExportTableTest.cpp).
#include <gtest/gtest.h>
#include <string>

#include "minihost/host/SharedLibrary.h"
#include "module/ReplaceAllStringsInPlace.h"
#include "tests/module/ModuleHarness.h"

namespace {

using tavrel_testing::Module;

TEST(Surface, FixedTexts) {
    // clang-format off
    struct Row { char const *function, *text; };
    Row const rows[] = {
        {"GetModuleVersion", "1.5.0.0"}, {"GetSupportedPlatforms", "linux,mac,windows"},
        {"GetState", "stable"}, {"GetDownwardsCompatibility", "1.1.0"},
        {"GetSDKDependency", "[1.20.13.0-]"}, {"GetModuleDependencies", ""},
        {"GetModuleDependenciesOptional", ""}, {"GetModuleDependenciesLoadBefore", ""},
        {"GetAlternativeFunctionDependencies", ""}, {"GetAlternativeProcedureDependencies", ""},
        {"GetOptionalFunctionDependencies", ""}, {"GetOptionalProcedureDependencies", ""},
        {"GetModuleTavrelVersion", "1.20.16.0-19"}, {"GetTavrelSDKVersion", "1.20.16.0"},
    };
    // clang-format on
    for (Row const& row : rows) {
        char const* text = Module().Text(row.function);
        ASSERT_NE(text, nullptr) << row.function;
        EXPECT_STREQ(text, row.text) << row.function;
    }
}

std::string const kFinalDefinition =
    " CONST_FUNCTION NUMBER Size (DATAREF) : tavrel_module_BinarySize"
    " CONST_FUNCTION DATAREF Binary.ToDataRef (STRING) : tavrel_module_BinarySetFromString"
    " CONST_FUNCTION DATAREF ToDataRef (STRING) : tavrel_module_ToDataRef"
    " CONST_FUNCTION DATAREF ToDataRef (STRING,NUMBER,NUMBER) : tavrel_module_ToDataRefPart"
    " FUNCTION DATAREF Binary.MapFile (STRING) : tavrel_module_BinaryMapFile"
    " CONST_FUNCTION DATAREF Binary.Slice (DATAREF,NUMBER,NUMBER) : tavrel_module_BinarySlice"
    " CONST_FUNCTION DATAREF Binary.Slice (DATAREF,NUMBER) : tavrel_module_BinarySliceRight"
    " CONST_FUNCTION STRING Binary.PartToString (DATAREF,NUMBER,NUMBER) : "
    "tavrel_module_BinaryPartToString"
    " CONST_FUNCTION STRING ToString (DATAREF) : tavrel_module_BinaryToString"
    " CONST_FUNCTION DATAREF Binary.Copy (DATAREF) : tavrel_module_BinaryCopy"
    " CONST_FUNCTION DATAREF Binary.Copy (DATAREF,NUMBER,NUMBER) : tavrel_module_BinaryCopyPart"
    " CONST_FUNCTION DATAREF Binary.Append (DATAREF,DATAREF) : tavrel_module_BinaryAppend"
    " CONST_FUNCTION DATAREF Binary.Append (DATAREF,DATAREF,NUMBER,NUMBER) : "
    "tavrel_module_BinaryAppendPart";

TEST(Surface, DefinitionTextIsFinalAndStable) {
    void* handle = Module().Handle();
    auto* getDefinition = reinterpret_cast<char const* (*)(void*)>(
        minihost::FindSymbol(handle, "GetModuleDefinition"));
    ASSERT_NE(getDefinition, nullptr);
    char const* first = getDefinition(nullptr);
    EXPECT_EQ(first, kFinalDefinition);
    int ignored = 0;
    EXPECT_EQ(getDefinition(&ignored), first);
    EXPECT_EQ(getDefinition(nullptr), kFinalDefinition);
}

// The definition text above goes through it too.
TEST(Surface, ReplaceAllStringsInPlace) {
    // clang-format off
    struct Row { std::string text, from, to, expected; };
    Row const rows[] = {
        {"a,,,b", ",,", ",", "a,,b"}, {"aaa", "a", "aa", "aaaaaa"}, {"abc", "", "x", "abc"}};
    // clang-format on
    for (Row const& row : rows) {
        std::string text = row.text;
        Tavrel::ReplaceAllStringsInPlace(text, row.from, row.to);
        EXPECT_EQ(text, row.expected) << row.text << " / " << row.from << " -> " << row.to;
    }
}

}  // namespace
