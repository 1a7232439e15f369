#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "minihost/host/ModuleLoader.h"
#include "testing/TestFiles.h"

#if defined(_WIN32)
#include "minihost/host/WindowsText.h"
#endif

namespace minihost {
namespace {

using tavrel_testing::TempDir;

std::string const kFullModule = MINIHOST_FAKE_MODULE_FULL;
std::string const kPartialModule = MINIHOST_FAKE_MODULE_PARTIAL;

// What the system's loader says of a file that is no shared library. A missing file is the
// script case bad_module_missing's.
#if defined(_WIN32)
std::string const kNotALibrary = SystemErrorText(193);  // ERROR_BAD_EXE_FORMAT
#else
std::string const kNotALibrary = "ELF";
#endif

TEST(LoadedModule, RefusesWhatCannotBeOpenedAndNamesThePath) {
    TempDir dir;
    std::string const notElf = dir.Write("text.so", std::string(200, 't'));
    std::string const withNul("lib\0x.so", 8);
    struct Row {
        std::string path;
        std::string expected;  // the whole text, or its start when it ends in ": "
        std::string loaderSays;
    } const rows[] = {
        {"", "cannot open module '': no path given", ""},
        {withNul, "cannot open module '" + withNul + "': the path holds a NUL byte", ""},
        {notElf, "cannot open module '" + notElf + "': ", kNotALibrary},
        {dir.Root(), "cannot open module '" + dir.Root() + "': ", ""},
        {kPartialModule,
         "module '" + kPartialModule + "' lacks 3 of the 28 names: GetState, " +
             "GetModuleDefinition, tavrel_module_BinaryCopy",
         ""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.path);
        std::string error = "stale";
        EXPECT_EQ(LoadedModule::Load(row.path, error), nullptr);
        bool const isPrefix = row.expected.ends_with(": ");
        EXPECT_EQ(isPrefix ? error.substr(0, row.expected.size()) : error, row.expected);
        EXPECT_NE(error.find(row.loaderSays, row.expected.size()), std::string::npos) << error;
    }
}

TEST(LoadedModule, ResolvesEveryNameToItsOwnFunction) {
    std::string error = "stale";
    std::unique_ptr<LoadedModule> module = LoadedModule::Load(kFullModule, error);
    ASSERT_NE(module, nullptr) << error;
    EXPECT_EQ(error, "");
    EXPECT_EQ(module->Info()->Path(), kFullModule);
    EXPECT_STREQ(module->Definition(), "fake definition");
    auto const& names = LoadedModule::ExportedNames();
    EXPECT_EQ(std::set<std::string_view>(names.begin(), names.end()).size(), 28u);
    unsigned int place = 0;
    for (std::string_view name : names) {
        SCOPED_TRACE(std::string(name));
        bool const isEntry = name.starts_with("tavrel_module_");
        EXPECT_EQ(module->Entry(name) != nullptr, isEntry);
        if (isEntry) {
            EXPECT_EQ(module->Entry(name)(0, nullptr, nullptr, nullptr, nullptr), place++);
        }
        bool const isText = !isEntry && name != "GetModuleDefinition";
        EXPECT_EQ(std::string_view(module->Text(name) ? module->Text(name) : "-"),
                  isText ? name : "-");
    }
    EXPECT_EQ(place, 13u);
    EXPECT_EQ(module->Entry("BinarySize"), nullptr);

    // A bare file name means a file in the current directory, not a library search.
    std::filesystem::path const before = std::filesystem::current_path();
    std::filesystem::current_path(std::filesystem::path(kFullModule).parent_path());
    bool const loaded = LoadedModule::Load(std::filesystem::path(kFullModule).filename().string(),
                                           error) != nullptr;
    std::filesystem::current_path(before);
    EXPECT_TRUE(loaded) << error;
}

}  // namespace
}  // namespace minihost
