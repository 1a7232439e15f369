// Ctrl-C during a long read, against the minihost program itself: it runs a script that copies
// a 1 GiB sparse file. The first Ctrl-C, sent inside the copy, must leave it running; the
// second must end it at once, before its copy ends, as a program ended by Ctrl-C.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

#include "testing/TestFiles.h"
#include "tests/scripts/InterruptShim.h"

namespace minihost {
namespace {

std::string Contents(std::string const& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

TEST(Interruption, TwoCtrlCDuringOneLongReadEndTheProgram) {
    tavrel_testing::TempDir dir;
    // Sparse where it can be: no disk used.
    std::filesystem::resize_file(dir.Write("big.bin", ""), interrupt::kCopySize);
    std::string const output = dir.Path("output");
    struct Ender {
        ~Ender() { interrupt::End(); }
    } const ender;
    std::string const script = dir.Write(
        "copy.tvl", "copy = Binary.Copy(Binary.MapFile(\"big.bin\"))\nprint Size(copy)\n");
    ASSERT_EQ(interrupt::Start(script, output), "");
    ASSERT_EQ(interrupt::ReachTheCopy(), "") << "output: " << Contents(output);
    ASSERT_EQ(interrupt::FirstCtrlC(), "") << "output: " << Contents(output);
    ASSERT_EQ(interrupt::SecondCtrlC(), "");
    EXPECT_EQ(Contents(output), "") << "the program went on after the second Ctrl-C";
}

}  // namespace
}  // namespace minihost
