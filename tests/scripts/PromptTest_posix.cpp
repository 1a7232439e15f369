// The prompt as a person meets it: minihost on a pseudo-terminal, typed at key by key, its
// screen read until the awaited text shows (bounded waits, no sleeps). Each session runs in a
// scratch directory that is also its home, with no ~/.inputrc and a dumb terminal, so that
// neither the user's settings nor the terminal's escape sequences come into it.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <vector>

#include "testing/TestFiles.h"

namespace minihost {
namespace {

using Clock = std::chrono::steady_clock;
using tavrel_testing::TempDir;

// Long enough for a sanitized build on a busy machine; a passing run waits milliseconds.
constexpr auto kLongWait = std::chrono::seconds(60);

// minihost on the far side of a pseudo-terminal; killed and reaped when the object goes.
class Terminal {
public:
    // Starts the prompt in directory; stateHome "" leaves XDG_STATE_HOME unset.
    Terminal(std::string const& directory, std::string const& stateHome)
        : mMaster(::posix_openpt(O_RDWR | O_NOCTTY)) {
        if (mMaster < 0 || ::grantpt(mMaster) != 0 || ::unlockpt(mMaster) != 0) {
            return;
        }
        winsize const size{24, 100, 0, 0};
        ::ioctl(mMaster, TIOCSWINSZ, &size);
        std::string const slave = ::ptsname(mMaster);
        mPid = ::fork();
        if (mPid == 0) {
            RunChild(slave, directory, stateHome);
        }
    }
    ~Terminal() {
        if (mPid > 0 && !mReaped) {
            ::kill(mPid, SIGKILL);
            ::waitpid(mPid, nullptr, 0);
        }
        if (mMaster >= 0) {
            ::close(mMaster);
        }
    }
    Terminal(Terminal const&) = delete;
    Terminal& operator=(Terminal const&) = delete;

    bool Started() const { return mPid > 0; }
    void Type(std::string const& keys) const { (void)!::write(mMaster, keys.data(), keys.size()); }

    // Reads the screen until text shows after what an earlier wait found; true when it did.
    bool WaitFor(std::string const& text) {
        Clock::time_point const deadline = Clock::now() + kLongWait;
        while (true) {
            std::size_t const found = mScreen.find(text, mSeen);
            if (found != std::string::npos) {
                mSeen = found + text.size();
                return true;
            }
            if (Clock::now() > deadline || !ReadSome(deadline)) {
                return false;
            }
        }
    }

    // The exit status once the program has ended, or -1 when it runs on.
    int ExitStatus() {
        int status = 0;
        Clock::time_point const deadline = Clock::now() + kLongWait;
        while (::waitpid(mPid, &status, WNOHANG) != mPid) {
            if (Clock::now() > deadline) {
                return -1;
            }
            ReadSome(deadline);  // drains the screen, so that the program never blocks on it
        }
        mReaped = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    // What the screen showed after the last text awaited.
    std::string Rest() const { return mScreen.substr(mSeen); }

private:
    [[noreturn]] static void RunChild(std::string const& slave, std::string const& directory,
                                      std::string const& stateHome) {
        ::setsid();
        int const fd = ::open(slave.c_str(), O_RDWR);  // becomes the controlling terminal
        ::dup2(fd, STDIN_FILENO);
        ::dup2(fd, STDOUT_FILENO);
        ::dup2(fd, STDERR_FILENO);
        if (::chdir(directory.c_str()) != 0) {
            ::_exit(126);
        }
        ::setenv("HOME", directory.c_str(), 1);
        ::setenv("TERM", "dumb", 1);
        ::setenv("INPUTRC", "/dev/null", 1);
        if (stateHome.empty()) {
            ::unsetenv("XDG_STATE_HOME");
        } else {
            ::setenv("XDG_STATE_HOME", stateHome.c_str(), 1);
        }
        ::execl(MINIHOST_PROGRAM, "minihost", nullptr);
        ::_exit(127);
    }

    // Reads what is there, waiting until deadline for something; false at the end.
    bool ReadSome(Clock::time_point deadline) {
        auto const left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd ready{mMaster, POLLIN, 0};
        if (::poll(&ready, 1, static_cast<int>(std::max<long long>(left.count(), 0))) <= 0) {
            return false;
        }
        char block[4096];
        ssize_t const n = ::read(mMaster, block, sizeof block);
        if (n <= 0) {
            return false;  // EIO: the program has closed its side
        }
        mScreen.append(block, static_cast<std::size_t>(n));
        return true;
    }

    int mMaster;
    pid_t mPid = -1;
    bool mReaped = false;
    std::string mScreen;
    std::size_t mSeen = 0;
};

struct Step {
    std::string keys;   // typed, "\t" for Tab, "\x03" Ctrl-C, "\x10" Ctrl-P (back in history)
    std::string shown;  // must show after the steps before
};

// Types each step and awaits what it must show; then the session ends with quit or Ctrl-D.
void RunSession(TempDir const& dir, std::string const& stateHome, std::vector<Step> const& steps) {
    Terminal terminal(dir.Root(), stateHome);
    ASSERT_TRUE(terminal.Started());
    for (Step const& step : steps) {
        terminal.Type(step.keys);
        ASSERT_TRUE(terminal.WaitFor(step.shown))
            << "after typing '" << step.keys << "' the screen did not show '" << step.shown
            << "' but:\n"
            << terminal.Rest();
    }
    EXPECT_EQ(terminal.ExitStatus(), 0) << terminal.Rest();
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
    struct Row {
        std::string stateHome;
        std::string file;
    };
    Row const rows[] = {
        {dir.Path("state"), dir.Path("state/minihost/history")},
        {"", dir.Path(".local/state/minihost/history")},  // the fallback under the home
    };
    for (Row const& row : rows) {
        SCOPED_TRACE("row " + row.file);
        RunSession(dir, row.stateHome, {{"", "tvl> "}, {"x = 42\n", "tvl> "}, {"\x04", ""}});
        // Back twice: the line before this session's first.
        RunSession(dir, row.stateHome,
                   {{"", "tvl> "},
                    {"print 7\n", "7"},
                    {"\x10\x10\n", "tvl> "},
                    {"print x\n", "42"},
                    {"exit\n", ""}});
        EXPECT_TRUE(std::filesystem::is_regular_file(row.file));
    }
}

}  // namespace
}  // namespace minihost
