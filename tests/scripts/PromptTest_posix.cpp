// The prompt as a person meets it: minihost on a pseudo-terminal, typed at key by key, its
// screen read until the awaited text shows (bounded waits, no sleeps). Each session runs in a
// scratch directory that is also its home, with no ~/.inputrc and a dumb terminal, so that
// neither the user's settings nor the terminal's escape sequences come into it.
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <utility>
#include <vector>

#include "testing/TestFiles.h"

namespace minihost {
namespace {

using Clock = std::chrono::steady_clock;
using tavrel_testing::TempDir;

// Long enough for a sanitized build on a busy machine; a passing run waits milliseconds.
constexpr auto kLongWait = std::chrono::seconds(60);

// Adds what the terminal shows to screen, waiting until deadline for something; false when
// nothing came or the program has closed its side.
bool ReadSome(int terminal, std::string& screen, Clock::time_point deadline) {
    auto const left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd ready{terminal, POLLIN, 0};
    char block[4096];
    ssize_t const n = ::poll(&ready, 1, static_cast<int>(std::max<long long>(left, 0))) > 0
                          ? ::read(terminal, block, sizeof block)
                          : 0;
    screen.append(block, static_cast<std::size_t>(std::max<ssize_t>(n, 0)));
    return n > 0;
}

struct Step {
    std::string keys;   // typed, "\t" for Tab, "\x03" Ctrl-C, "\x10" Ctrl-P (back in history)
    std::string shown;  // must show after the steps before
};

// Starts the prompt on a pseudo-terminal in dir, with XDG_STATE_HOME unset when stateHome is
// "", types each step and awaits what it must show; then the session ends with quit or Ctrl-D.
void RunSession(TempDir const& dir, std::string const& stateHome, std::vector<Step> const& steps) {
    int terminal = -1;
    winsize size{24, 100, 0, 0};
    pid_t pid = ::forkpty(&terminal, nullptr, nullptr, &size);
    if (pid == 0) {
        if (::chdir(dir.Root().c_str()) != 0) {
            ::_exit(126);
        }
        ::setenv("HOME", dir.Root().c_str(), 1);
        ::setenv("TERM", "dumb", 1);
        ::setenv("INPUTRC", "/dev/null", 1);
        stateHome.empty() ? ::unsetenv("XDG_STATE_HOME")
                          : ::setenv("XDG_STATE_HOME", stateHome.c_str(), 1);
        ::execl(MINIHOST_PROGRAM, "minihost", nullptr);
        ::_exit(127);
    }
    ASSERT_GT(pid, 0);
    // Kills and reaps the program when the session ends before the program did.
    struct Reaper {
        pid_t& pid;
        int terminal;
        ~Reaper() {
            if (pid > 0) {
                ::kill(pid, SIGKILL);
                ::waitpid(pid, nullptr, 0);
            }
            ::close(terminal);
        }
    } const reaper{pid, terminal};
    std::string screen;
    std::size_t seen = 0;  // where the text after the last one awaited begins
    for (Step const& step : steps) {
        (void)!::write(terminal, step.keys.data(), step.keys.size());
        Clock::time_point const deadline = Clock::now() + kLongWait;
        std::size_t found = 0;
        while ((found = screen.find(step.shown, seen)) == std::string::npos &&
               ReadSome(terminal, screen, deadline)) {
        }
        ASSERT_NE(found, std::string::npos)
            << "after typing '" << step.keys << "' the screen did not show '" << step.shown
            << "' but:\n"
            << screen.substr(seen);
        seen = found + step.shown.size();
    }
    int status = 0;
    Clock::time_point const deadline = Clock::now() + kLongWait;
    while (::waitpid(pid, &status, WNOHANG) != pid) {
        if (Clock::now() > deadline) {
            FAIL() << "the program runs on; the screen showed:\n" << screen.substr(seen);
        }
        ReadSome(terminal, screen,
                 deadline);  // drains the screen, so that the program never blocks
    }
    pid = -1;
    EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, 0) << screen.substr(seen);
}

TEST(Prompt, AnswersAsAPersonTypes) {
    TempDir dir;
    dir.Write("data.bin", "12345");
    RunSession(dir, dir.Path("state"),
               {
                   {"",
                    "Binary 1.5.0.0 on minihost. Type help for the functions and statements, "
                    "quit or Ctrl-D to leave."},
                   {"", "tvl> "},
                   {"help\n", "Script functions (help NAME shows one; Tab completes names):"},
                   {"help Binary.Copy\n", "CONST_FUNCTION, entry tavrel_module_BinaryCopyPart"},
                   {"greeting = ToDataRef(\"hello\")\n", "tvl> "},
                   // Tab completes a function, a variable, and a file inside a string.
                   {"print Binary.Sl\tgre\t, 3)\n", "DATAREF(2) \"lo\""},
                   {"Size(Binary.MapFile(\"da\t))\n", "\r\n5\r\n"},
                   // A call goes on over lines; Ctrl-C drops all of them.
                   {"Size(\n", "...> "},
                   {"greeting)\n", "\r\n5\r\n"},
                   {"print Size(\n", "...> "},
                   {"\x03", "tvl> "},
                   {"print \"after\"\n", "\"after\""},
                   {"size(greeting)\n", "stdin:10:1: no function 'size'; did you mean 'Size'?"},
                   {"quit\n", ""},
               });
}

TEST(Prompt, KeepsTheHistoryAcrossSessions) {
    TempDir dir;
    // XDG_STATE_HOME, then the fallback under the home when it is unset.
    for (auto const& [stateHome, file] :
         {std::pair(dir.Path("state"), dir.Path("state/minihost/history")),
          std::pair(std::string(), dir.Path(".local/state/minihost/history"))}) {
        SCOPED_TRACE("row " + file);
        RunSession(dir, stateHome, {{"", "tvl> "}, {"x = 42\n", "tvl> "}, {"\x04", ""}});
        // Back twice: the line before this session's first.
        RunSession(dir, stateHome,
                   {{"", "tvl> "},
                    {"print 7\n", "7"},
                    {"\x10\x10\n", "tvl> "},
                    {"print x\n", "42"},
                    {"exit\n", ""}});
        EXPECT_TRUE(std::filesystem::is_regular_file(file));
    }
}

}  // namespace
}  // namespace minihost
