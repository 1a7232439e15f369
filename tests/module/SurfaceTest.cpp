// The module's public face as the system's loader sees it: the hidden names stay inside the
// module (the ELF file's symbol table) and a DLL needs no other DLL than Windows' own; and its
// definition text. (That exactly the 28 names leave it: the abi_baseline stage and the
// loader's own check; its fixed texts: the describe script case.)
#include <cstdint>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <string>

#include "minihost/host/SharedLibrary.h"
#include "tests/module/ModuleHarness.h"

#if defined(_WIN32)
#include <cctype>
#else
#include <elf.h>
#endif

namespace tavrel_testing {
namespace {

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

// The defined symbols of the module file's symbol table, local ones included (empty for a
// stripped module).
std::map<std::string, Elf64_Sym> DefinedSymbols() {
    std::ifstream file(TAVREL_MODULE_PATH, std::ios::binary);
    std::string const image((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
    auto const header = At<Elf64_Ehdr>(image, 0);
    std::map<std::string, Elf64_Sym> found;
    for (int i = 0; i < header.e_shnum; ++i) {
        auto const section = At<Elf64_Shdr>(image, header.e_shoff + i * sizeof(Elf64_Shdr));
        if (section.sh_type != SHT_SYMTAB) {
            continue;
        }
        auto const strings =
            At<Elf64_Shdr>(image, header.e_shoff + section.sh_link * sizeof(Elf64_Shdr));
        for (std::size_t s = 0; s < section.sh_size / sizeof(Elf64_Sym); ++s) {
            auto const symbol = At<Elf64_Sym>(image, section.sh_offset + s * sizeof(Elf64_Sym));
            if (symbol.st_shndx != SHN_UNDEF && symbol.st_name != 0) {
                found[image.c_str() + strings.sh_offset + symbol.st_name] = symbol;
            }
        }
    }
    return found;
}

TEST(ExportTable, HiddenNamesExistAsLocalSymbols) {
    std::map<std::string, Elf64_Sym> const symbols = DefinedSymbols();
    if (symbols.empty()) {
        GTEST_SKIP() << "the module was stripped of its symbol table";
    }
    for (int i = 0; i <= 13; ++i) {  // the last one: the hidden text function
        std::string const name = i < 13 ? "dummy" + std::to_string(i) : "GetTavrelModuleName";
        ASSERT_EQ(symbols.count(name), 1u) << name;
        EXPECT_EQ(ELF64_ST_BIND(symbols.at(name).st_info), STB_LOCAL) << name;
        EXPECT_EQ(ELF64_ST_TYPE(symbols.at(name).st_info), i < 13 ? STT_OBJECT : STT_FUNC) << name;
        EXPECT_TRUE(i == 13 || symbols.at(name).st_size == 1u) << name;
    }
    // Called where the loader put it: the load address of the module plus its value, the
    // load address being that of an exported text function less its own value.
    auto const loaded = reinterpret_cast<std::uintptr_t>(
        minihost::FindSymbol(Module().Handle(), "GetModuleVersion"));
    auto const name =
        reinterpret_cast<char const* (*)()>(loaded - symbols.at("GetModuleVersion").st_value +
                                            symbols.at("GetTavrelModuleName").st_value);
    EXPECT_STREQ(name(), "Binary");
}

#endif

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

}  // namespace
}  // namespace tavrel_testing
