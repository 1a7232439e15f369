// The module's public face: the names it exports, read as the system's loader reads them
// (the dynamic symbol table of the ELF shared object's file, the export directory of the DLL
// as it was mapped): exactly the 28 names of the lists leave the module, the hidden ones stay
// inside it, and a DLL needs no other DLL than Windows' own; its fixed texts and its
// definition text.
#include <cstdint>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "minihost/host/ModuleLoader.h"
#include "minihost/host/SharedLibrary.h"
#include "module/ReplaceAllStringsInPlace.h"
#include "tests/module/ModuleHarness.h"

#if defined(_WIN32)
#include <cctype>
#else
#include <elf.h>
#endif

namespace tavrel_testing {
namespace {

std::set<std::string> ExpectedNames() {
    std::set<std::string> expected;
    for (std::string_view name : minihost::LoadedModule::ExportedNames()) {
        expected.insert(std::string(name));
    }
    return expected;
}

#if defined(_WIN32)

// The module as the loader mapped it: its handle is its base address, and a relative virtual
// address is an offset from there.
char const* Base() { return static_cast<char const*>(Module().Handle()); }
std::uint32_t Word(std::uint32_t rva) {
    std::uint32_t value = 0;
    std::memcpy(&value, Base() + rva, sizeof value);
    return value;
}
// The relative address of data directory index (0 exports, 1 imports) of the PE32+ image.
std::uint32_t Directory(std::uint32_t index) { return Word(Word(0x3C) + 24 + 112 + 8 * index); }

std::set<std::string> ExportedNamesOfTheModule() {
    std::uint32_t const exports = Directory(0);
    std::set<std::string> found;
    for (std::uint32_t i = 0; i < Word(exports + 24); ++i) {
        found.insert(Base() + Word(Word(exports + 32) + 4 * i));
    }
    return found;
}

TEST(ExportTable, NeedsNoDllBeyondWindowsOwn) {
    int imports = 0;
    for (std::uint32_t entry = Directory(1); Word(entry + 12) != 0; entry += 20, ++imports) {
        std::string dll = Base() + Word(entry + 12);
        for (char& c : dll) {
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
        EXPECT_TRUE(dll == "KERNEL32.DLL" || dll == "MSVCRT.DLL" || dll.starts_with("API-MS-WIN-"))
            << dll;
    }
    EXPECT_GT(imports, 0);
}

#else

// A value of type T at offset of the image, copied out (the image is not aligned for it).
template <class T>
T At(std::string const& image, std::size_t offset) {
    T value{};
    if (offset <= image.size() && sizeof(T) <= image.size() - offset) {
        std::memcpy(&value, image.data() + offset, sizeof(T));
    }
    return value;
}

struct Symbol {
    Elf64_Addr value;
    Elf64_Xword size;
    unsigned char bind;
    unsigned char type;
};

// The defined symbols of the module file's symbol table of the given kind (SHT_DYNSYM: the
// names a host can look up; SHT_SYMTAB: every name the link kept, local ones included).
std::map<std::string, Symbol> DefinedSymbols(Elf64_Word kind) {
    std::ifstream file(TAVREL_MODULE_PATH, std::ios::binary);
    std::string const image((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
    auto const header = At<Elf64_Ehdr>(image, 0);
    std::map<std::string, Symbol> found;
    for (int i = 0; i < header.e_shnum; ++i) {
        auto const section = At<Elf64_Shdr>(image, header.e_shoff + i * sizeof(Elf64_Shdr));
        if (section.sh_type != kind) {
            continue;
        }
        auto const strings =
            At<Elf64_Shdr>(image, header.e_shoff + section.sh_link * sizeof(Elf64_Shdr));
        for (std::size_t s = 0; s < section.sh_size / sizeof(Elf64_Sym); ++s) {
            auto const symbol = At<Elf64_Sym>(image, section.sh_offset + s * sizeof(Elf64_Sym));
            if (symbol.st_shndx != SHN_UNDEF && symbol.st_name != 0) {
                found[image.c_str() + strings.sh_offset + symbol.st_name] = {
                    symbol.st_value, symbol.st_size,
                    static_cast<unsigned char>(ELF64_ST_BIND(symbol.st_info)),
                    static_cast<unsigned char>(ELF64_ST_TYPE(symbol.st_info))};
            }
        }
    }
    return found;
}

std::set<std::string> ExportedNamesOfTheModule() {
    std::set<std::string> exported;
    for (auto const& [name, symbol] : DefinedSymbols(SHT_DYNSYM)) {
        if (symbol.bind != STB_LOCAL) {
            exported.insert(name);
        }
    }
    return exported;
}

TEST(ExportTable, HiddenNamesExistAsLocalSymbols) {
    std::map<std::string, Symbol> const symbols = DefinedSymbols(SHT_SYMTAB);
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
    // Called where the loader put it: the load address of the module plus its value, the
    // load address being that of an exported text function less its own value.
    Symbol const version = symbols.at("GetModuleVersion");
    auto const loaded = reinterpret_cast<std::uintptr_t>(
        minihost::FindSymbol(Module().Handle(), "GetModuleVersion"));
    auto const name = reinterpret_cast<char const* (*)()>(loaded - version.value + function.value);
    EXPECT_STREQ(name(), "Binary");
}

#endif

TEST(ExportTable, ExportsExactlyTheTwentyEightNames) {
    std::set<std::string> const expected = ExpectedNames();
    ASSERT_EQ(expected.size(), 28u);
    EXPECT_EQ(ExportedNamesOfTheModule(), expected);
}

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
}  // namespace tavrel_testing
