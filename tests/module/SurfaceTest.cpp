// The module's public face: the names its file exports, read from the file itself as the
// system's loader reads them (the dynamic symbol table of an ELF shared object, the export
// directory of a Windows DLL): exactly the 28 names of the lists leave the module, the hidden
// ones stay inside it, and a DLL needs no other DLL than Windows' own; its fixed texts and its
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

std::string FileBytes(char const* path) {
    std::ifstream file(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
}

// A value of type T at offset of the image, copied out (the image is not aligned for it).
template <class T>
T At(std::string const& image, std::size_t offset) {
    T value{};
    if (offset <= image.size() && sizeof(T) <= image.size() - offset) {
        std::memcpy(&value, image.data() + offset, sizeof(T));
    }
    return value;
}

std::set<std::string> ExpectedNames() {
    std::set<std::string> expected;
    for (std::string_view name : minihost::LoadedModule::ExportedNames()) {
        expected.insert(std::string(name));
    }
    return expected;
}

#if defined(_WIN32)

// The parts of a PE image that locate its directories.
struct PeImage {
    std::string bytes;
    std::size_t sections = 0;  // offset of the section table
    unsigned count = 0;        // number of sections

    // The file offset of a relative virtual address, through the section that holds it.
    std::size_t Offset(std::uint32_t rva) const {
        for (unsigned i = 0; i < count; ++i) {
            std::size_t const section = sections + i * 40;
            auto const address = At<std::uint32_t>(bytes, section + 12);
            auto const size = At<std::uint32_t>(bytes, section + 16);
            if (rva >= address && rva < address + size) {
                return rva - address + At<std::uint32_t>(bytes, section + 20);
            }
        }
        return 0;
    }
    std::string Text(std::uint32_t rva) const { return std::string(bytes.c_str() + Offset(rva)); }
    // The relative address of data directory index (0 exports, 1 imports) of a PE32+ image.
    std::uint32_t Directory(std::size_t optional, int index) const {
        return At<std::uint32_t>(bytes, optional + 112 + 8 * static_cast<std::size_t>(index));
    }
};

PeImage ReadPe(char const* path, std::size_t& optional) {
    PeImage image{FileBytes(path)};
    auto const pe = At<std::uint32_t>(image.bytes, 0x3C);
    optional = pe + 24;
    image.count = At<std::uint16_t>(image.bytes, pe + 6);
    image.sections = optional + At<std::uint16_t>(image.bytes, pe + 20);
    return image;
}

std::set<std::string> ExportedNamesOf(char const* path) {
    std::size_t optional = 0;
    PeImage const image = ReadPe(path, optional);
    std::size_t const exports = image.Offset(image.Directory(optional, 0));
    auto const count = At<std::uint32_t>(image.bytes, exports + 24);
    std::size_t const names = image.Offset(At<std::uint32_t>(image.bytes, exports + 32));
    std::set<std::string> found;
    for (std::uint32_t i = 0; i < count; ++i) {
        found.insert(image.Text(At<std::uint32_t>(image.bytes, names + 4 * i)));
    }
    return found;
}

std::set<std::string> ImportedDllsOf(char const* path) {
    std::size_t optional = 0;
    PeImage const image = ReadPe(path, optional);
    std::set<std::string> found;
    for (std::size_t entry = image.Offset(image.Directory(optional, 1));
         At<std::uint32_t>(image.bytes, entry + 12) != 0; entry += 20) {
        std::string name = image.Text(At<std::uint32_t>(image.bytes, entry + 12));
        for (char& c : name) {
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
        found.insert(name);
    }
    return found;
}

TEST(ExportTable, ExportsExactlyTheTwentyEightNames) {
    std::set<std::string> const expected = ExpectedNames();
    ASSERT_EQ(expected.size(), 28u);
    EXPECT_EQ(ExportedNamesOf(TAVREL_MODULE_PATH), expected);
}

TEST(ExportTable, NeedsNoDllBeyondWindowsOwn) {
    std::set<std::string> const imports = ImportedDllsOf(TAVREL_MODULE_PATH);
    EXPECT_FALSE(imports.empty());
    for (std::string const& dll : imports) {
        EXPECT_TRUE(dll == "KERNEL32.DLL" || dll == "MSVCRT.DLL" || dll.starts_with("API-MS-WIN-"))
            << dll;
    }
}

#else

struct Symbol {
    Elf64_Addr value;
    Elf64_Xword size;
    unsigned char bind;
    unsigned char type;
};

// The defined symbols of the file's symbol table of the given kind (SHT_DYNSYM: the names
// a host can look up; SHT_SYMTAB: every name the link kept, local ones included).
std::map<std::string, Symbol> DefinedSymbols(char const* path, Elf64_Word kind) {
    std::string const image = FileBytes(path);
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

TEST(ExportTable, ExportsExactlyTheTwentyEightNames) {
    std::set<std::string> const expected = ExpectedNames();
    ASSERT_EQ(expected.size(), 28u);
    std::set<std::string> exported;
    for (auto const& [name, symbol] : DefinedSymbols(TAVREL_MODULE_PATH, SHT_DYNSYM)) {
        if (symbol.bind != STB_LOCAL) {
            exported.insert(name);
        }
    }
    EXPECT_EQ(exported, expected);
}

TEST(ExportTable, HiddenNamesExistAsLocalSymbols) {
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
    // Called where the loader put it: the load address of the module plus its value, the
    // load address being that of an exported text function less its own value.
    Symbol const version = symbols.at("GetModuleVersion");
    auto const loaded = reinterpret_cast<std::uintptr_t>(
        minihost::FindSymbol(Module().Handle(), "GetModuleVersion"));
    auto const name = reinterpret_cast<char const* (*)()>(loaded - version.value + function.value);
    EXPECT_STREQ(name(), "Binary");
}

#endif

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
