// The module's public face: the names it exports, its fixed texts and its definition text.
#include <dlfcn.h>
#include <elf.h>

#include <fstream>
#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <set>
#include <string>

#include "minihost/host/ModuleLoader.h"
#include "module/ReplaceAllStringsInPlace.h"
#include "tests/module/ModuleHarness.h"

namespace {

using tavrel_testing::Module;

struct Symbol {
    Elf64_Addr value;
    Elf64_Xword size;
    unsigned char bind;
    unsigned char type;
};

// The defined symbols of the file's symbol table of the given kind (SHT_DYNSYM: the names
// a host can look up; SHT_SYMTAB: every name the link kept, local ones included).
std::map<std::string, Symbol> DefinedSymbols(std::string const& path, Elf64_Word kind) {
    std::ifstream file(path, std::ios::binary);
    std::string const image((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    auto const* header = reinterpret_cast<Elf64_Ehdr const*>(image.data());
    auto const* sections = reinterpret_cast<Elf64_Shdr const*>(image.data() + header->e_shoff);
    std::map<std::string, Symbol> found;
    for (int i = 0; i < header->e_shnum; ++i) {
        if (sections[i].sh_type != kind) {
            continue;
        }
        char const* strings = image.data() + sections[sections[i].sh_link].sh_offset;
        auto const* symbols = reinterpret_cast<Elf64_Sym const*>(image.data() + sections[i].sh_offset);
        std::size_t const count = sections[i].sh_size / sizeof(Elf64_Sym);
        for (std::size_t s = 0; s < count; ++s) {
            Elf64_Sym const& symbol = symbols[s];
            if (symbol.st_shndx != SHN_UNDEF && symbol.st_name != 0) {
                found[strings + symbol.st_name] = {symbol.st_value, symbol.st_size,
                                                   ELF64_ST_BIND(symbol.st_info),
                                                   ELF64_ST_TYPE(symbol.st_info)};
            }
        }
    }
    return found;
}

// The names of the defined, non-local symbols in the file's dynamic symbol table.
std::set<std::string> DynamicSymbols(std::string const& path) {
    std::set<std::string> names;
    for (auto const& [name, symbol] : DefinedSymbols(path, SHT_DYNSYM)) {
        if (symbol.bind != STB_LOCAL) {
            names.insert(name);
        }
    }
    return names;
}

TEST(Surface, ExportsExactlyTheTwentyEightNames) {
    std::set<std::string> expected;
    for (std::string_view name : minihost::LoadedModule::ExportedNames()) {
        expected.insert(std::string(name));
    }
    ASSERT_EQ(expected.size(), 28u);
    EXPECT_EQ(DynamicSymbols(TAVREL_MODULE_PATH), expected);
}

TEST(Surface, HiddenNamesExistAsLocalSymbols) {
    std::map<std::string, Symbol> const symbols = DefinedSymbols(TAVREL_MODULE_PATH, SHT_SYMTAB);
    if (symbols.empty()) {
        GTEST_SKIP() << "the module was stripped of its symbol table";
    }
    for (int i = 0; i <= 12; ++i) {
        std::string const name = "dummy" + std::to_string(i);
        ASSERT_EQ(symbols.count(name), 1u) << name;
        EXPECT_EQ(symbols.at(name).bind, STB_LOCAL) << name;
        EXPECT_EQ(symbols.at(name).type, STT_OBJECT) << name;
        EXPECT_EQ(symbols.at(name).size, 1u) << name;
    }
    ASSERT_EQ(symbols.count("GetTavrelModuleName"), 1u);
    Symbol const function = symbols.at("GetTavrelModuleName");
    EXPECT_EQ(function.bind, STB_LOCAL);
    ASSERT_EQ(function.type, STT_FUNC);
    // Called where the loader put it: the load address of the module plus its value.
    Dl_info info{};
    ASSERT_NE(dladdr(dlsym(Module().Handle(), "GetModuleVersion"), &info), 0);
    auto const* base = static_cast<char const*>(info.dli_fbase);
    auto const name = reinterpret_cast<char const* (*)()>(base + function.value);
    EXPECT_STREQ(name(), "Binary");
}

TEST(Surface, FixedTexts) {
    struct Row {
        char const* function;
        char const* text;
    };
    Row const rows[] = {
        {"GetModuleVersion", "1.5.0.0"},
        {"GetSupportedPlatforms", "linux,mac,windows"},
        {"GetState", "stable"},
        {"GetDownwardsCompatibility", "1.1.0"},
        {"GetSDKDependency", "[1.20.13.0-]"},
        {"GetModuleDependencies", ""},
        {"GetModuleDependenciesOptional", ""},
        {"GetModuleDependenciesLoadBefore", ""},
        {"GetAlternativeFunctionDependencies", ""},
        {"GetAlternativeProcedureDependencies", ""},
        {"GetOptionalFunctionDependencies", ""},
        {"GetOptionalProcedureDependencies", ""},
        {"GetModuleTavrelVersion", "1.20.16.0-19"},
        {"GetTavrelSDKVersion", "1.20.16.0"},
    };
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
    auto* getDefinition = reinterpret_cast<char const* (*)(void*)>(dlsym(handle, "GetModuleDefinition"));
    ASSERT_NE(getDefinition, nullptr);
    char const* first = getDefinition(nullptr);
    EXPECT_EQ(first, kFinalDefinition);
    int ignored = 0;
    EXPECT_EQ(getDefinition(&ignored), first);
    EXPECT_EQ(getDefinition(nullptr), kFinalDefinition);
}

TEST(Surface, ReplaceAllStringsInPlace) {
    struct Row {
        std::string text, from, to, expected;
    };
    Row const rows[] = {
        {"a,,,b", ",,", ",", "a,,b"},
        {"aaa", "a", "aa", "aaaaaa"},
        {"abc", "", "x", "abc"},
        {"", "a", "b", ""},
    };
    for (Row const& row : rows) {
        std::string text = row.text;
        Tavrel::ReplaceAllStringsInPlace(text, row.from, row.to);
        EXPECT_EQ(text, row.expected) << row.text << " / " << row.from << " -> " << row.to;
    }
}

}  // namespace
