// Ctrl-C during a long read, against the minihost program itself: it copies a 1 GiB sparse
// file. The first SIGINT, sent inside the copy, must be taken while the copy still runs (not
// held until one long read ends, where a second would merge with it) and leave the program
// reading; the second must end it at once, as SIGINT ends a program (not as an interrupted
// run, which exits with status 1). /proc shows its progress.
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>

#include "testing/TestFiles.h"

namespace minihost {
namespace {

constexpr unsigned long long kCopySize = 1ULL << 30;

// The number after "key:" in /proc/<pid>/<file>, read in base; 0 when there is none.
unsigned long long Proc(pid_t pid, char const* file, std::string const& key, int base = 10) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/" + file);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind(key + ":", 0) == 0) {
            return std::stoull(line.substr(key.size() + 1), nullptr, base);
        }
    }
    return 0;
}

// Polls done until it holds or 60 s pass.
template <class Condition>
bool WaitUntil(Condition done) {
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!done() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return done();
}

TEST(Interruption, TwoCtrlCDuringOneLongReadEndTheProgram) {
    tavrel_testing::TempDir dir;
    std::filesystem::resize_file(dir.Write("big.bin", ""), kCopySize);
    std::string const script = dir.Write(
        "copy.tvl", "copy = Binary.Copy(Binary.MapFile(\"big.bin\"))\nprint Size(copy)\n");
    pid_t const pid = ::fork();
    if (pid == 0) {
        // NOTE: the lowest priority, so that a busy machine slows the copy more than the test.
        ::setpriority(PRIO_PROCESS, 0, 19);
        ::execl(MINIHOST_PROGRAM, "minihost", script.c_str(), nullptr);
        ::_exit(127);
    }
    ASSERT_GT(pid, 0);
    int status = -1;
    bool gone = false;
    auto const ended = [&] { return gone || (gone = ::waitpid(pid, &status, WNOHANG) == pid); };
    auto const read = [pid] { return Proc(pid, "io", "rchar"); };
    // More than loading the program and the script reads: the copy has begun.
    EXPECT_TRUE(WaitUntil([&] { return read() >= (4ULL << 20) || ended(); }));
    ::kill(pid, SIGINT);
    EXPECT_TRUE(WaitUntil([&] {
        return ended() ||
               ((Proc(pid, "status", "SigPnd", 16) | Proc(pid, "status", "ShdPnd", 16)) >>
                    (SIGINT - 1) &
                1) == 0;
    }));
    // Still reading after the first: taken by the program, which went on with its copy.
    unsigned long long const taken = read();
    EXPECT_TRUE(WaitUntil([&] { return read() >= taken + (16ULL << 20) || ended(); }));
    EXPECT_FALSE(ended()) << "the first Ctrl-C ended the program";
    EXPECT_LT(read(), kCopySize) << "the first Ctrl-C was taken only after the whole read";
    if (!ended()) {
        ::kill(pid, SIGINT);
        EXPECT_TRUE(WaitUntil(ended)) << "the second Ctrl-C did not end the program";
    }
    if (!ended()) {
        ::kill(pid, SIGKILL);
        WaitUntil(ended);
    }
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << "wait status " << status;
}

}  // namespace
}  // namespace minihost
