// Ctrl-C during a long read, against the minihost program itself: it runs a script that copies
// a 1 GiB sparse file, and the test watches it through /proc. SIGSTOP serves as a probe: a
// program stops only where it can take a signal, so a stop in the middle of the read shows
// that a Ctrl-C there is taken at once, not merged with the next one until the read ends (a
// read of the whole file in one call cannot be stopped midway). From such a stop the first
// Ctrl-C is let in, then the second, which must end the program before its copy ends.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>

#include "testing/TestFiles.h"

namespace minihost {
namespace {

using Clock = std::chrono::steady_clock;
using tavrel_testing::TempDir;
using namespace std::chrono_literals;

constexpr unsigned long long kFileSize = 1ULL << 30;
// More bytes read than loading the program and the script takes: the copy has begun.
constexpr unsigned long long kCopyBegun = 4ULL << 20;
constexpr auto kLongWait = 60s;

// The value of "key:" in /proc/<pid>/<file>; empty when there is none.
std::string ProcValue(pid_t pid, char const* file, std::string const& key) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/" + file);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind(key + ":", 0) == 0) {
            std::istringstream value(line.substr(key.size() + 1));
            std::string word;
            value >> word;
            return word;
        }
    }
    return "";
}

// 'T' stopped, 'Z' ended (not yet reaped), 'R', 'S', ...; '?' when unreadable.
char State(pid_t pid) {
    std::string const state = ProcValue(pid, "status", "State");
    return state.empty() ? '?' : state[0];
}

// The bytes the process has received from read calls so far.
unsigned long long BytesRead(pid_t pid) { return std::stoull(ProcValue(pid, "io", "rchar")); }

bool SigintPending(pid_t pid) {
    unsigned long long const bit = 1ULL << (SIGINT - 1);
    return ((std::stoull(ProcValue(pid, "status", "ShdPnd"), nullptr, 16) |
             std::stoull(ProcValue(pid, "status", "SigPnd"), nullptr, 16)) &
            bit) != 0;
}

template <class Condition>
bool WaitUntil(Condition done, Clock::duration limit) {
    Clock::time_point const deadline = Clock::now() + limit;
    while (!done()) {
        if (Clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(200us);
    }
    return true;
}

std::string Contents(std::string const& path) {
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), {}};
}

// The minihost program running one script, its output and errors going to one file; killed
// and reaped when the object goes.
class Program {
public:
    Program(std::string const& script, std::string const& output) : mPid(::fork()) {
        if (mPid == 0) {
            // NOTE: the lowest priority, so that a machine busy enough to delay this test
            // delays the program more: the probe's steps stay short against its read.
            ::setpriority(PRIO_PROCESS, 0, 19);
            int const fd = ::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            ::dup2(fd, STDOUT_FILENO);
            ::dup2(fd, STDERR_FILENO);
            ::execl(MINIHOST_PROGRAM, "minihost", script.c_str(), nullptr);
            ::_exit(127);
        }
    }
    ~Program() {
        if (mPid > 0 && !mReaped) {
            ::kill(mPid, SIGKILL);
            ::waitpid(mPid, nullptr, 0);
        }
    }
    Program(Program const&) = delete;
    Program& operator=(Program const&) = delete;

    pid_t Pid() const { return mPid; }
    void Send(int signal) const { ::kill(mPid, signal); }

    // Stops the program where it can next take a signal; false when it ended instead.
    bool Stop() const {
        Send(SIGSTOP);
        WaitUntil(
            [this] {
                char const state = State(mPid);
                return state == 'T' || state == 'Z';
            },
            kLongWait);
        return State(mPid) == 'T';
    }

    // Stops it again and again until a stop falls inside the copy of the file; gives what went
    // wrong, or "" with the program stopped there.
    std::string StopInsideTheCopy() const {
        Clock::time_point const deadline = Clock::now() + 2 * kLongWait;
        while (Clock::now() < deadline) {
            if (!Stop()) {
                return "the program ended before its copy was seen";
            }
            unsigned long long const read = BytesRead(mPid);
            if (read >= kFileSize) {
                return "no stop fell inside the copy: the program took the first signal after "
                       "it had read all " +
                       std::to_string(read) + " bytes";
            }
            if (read >= kCopyBegun) {
                return "";
            }
            Send(SIGCONT);
            std::this_thread::sleep_for(1ms);
        }
        return "the copy did not begin within " + std::to_string(2 * kLongWait.count()) + " s";
    }

    // Lets the stopped program take its pending SIGINT and stops it again; false when it
    // ended or the signal stayed pending.
    bool TakePendingSigint() const {
        for (int attempt = 0; attempt < 10; ++attempt) {
            Send(SIGCONT);
            if (!Stop()) {
                return false;
            }
            if (!SigintPending(mPid)) {
                return true;
            }
        }
        return false;
    }

    // The wait status once it ended, or -1 when it still runs after limit.
    int WaitForEnd(Clock::duration limit) {
        int status = -1;
        WaitUntil([&] { return ::waitpid(mPid, &status, WNOHANG) == mPid; }, limit);
        mReaped = WIFEXITED(status) || WIFSIGNALED(status);
        return mReaped ? status : -1;
    }

private:
    pid_t mPid;
    bool mReaped = false;
};

TEST(Interruption, TwoCtrlCDuringOneLongReadEndTheProgram) {
    if (!std::filesystem::exists("/proc/self/io")) {
        GTEST_SKIP() << "this kernel gives no /proc/<pid>/io to see how far a read got";
    }
    TempDir dir;
    std::filesystem::resize_file(dir.Write("big.bin", ""), kFileSize);  // sparse: no disk used
    std::string const script = dir.Write(
        "copy.tvl", "copy = Binary.Copy(Binary.MapFile(\"big.bin\"))\nprint Size(copy)\n");
    Program program(script, dir.Path("output"));
    ASSERT_GT(program.Pid(), 0);

    std::string const problem = program.StopInsideTheCopy();
    ASSERT_EQ(problem, "") << "output: " << Contents(dir.Path("output"));
    RecordProperty("bytesReadAtTheStop", std::to_string(BytesRead(program.Pid())));
    program.Send(SIGINT);  // the first Ctrl-C, in the middle of the copy
    ASSERT_TRUE(program.TakePendingSigint())
        << "the first Ctrl-C was not taken; output: " << Contents(dir.Path("output"));
    program.Send(SIGINT);  // the second one, before the copy ends
    program.Send(SIGCONT);
    int const status = program.WaitForEnd(kLongWait);

    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT)
        << "wait status " << status << " (-1: still running)";
    EXPECT_EQ(Contents(dir.Path("output")), "") << "the program went on after the second Ctrl-C";
}

}  // namespace
}  // namespace minihost
