// Ctrl-C on POSIX systems: SIGINT, with the program watched through /proc. SIGSTOP serves as
// a probe: a program stops only where it can take a signal, so a stop in the middle of the
// read shows that a Ctrl-C there is taken at once, not merged with the next one until the read
// ends (a read of the whole file in one call cannot be stopped midway).
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>

#include "tests/scripts/InterruptShim.h"

namespace minihost::interrupt {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// More bytes read than loading the program and the script takes: the copy has begun.
constexpr unsigned long long kCopyBegun = 4ULL << 20;
constexpr auto kLongWait = 60s;

pid_t gPid = -1;

// The text after "key:" in /proc/<pid>/<file>; "" when there is none.
std::string Proc(char const* file, std::string const& key) {
    std::ifstream in("/proc/" + std::to_string(gPid) + "/" + file);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind(key + ":", 0) == 0) {
            return line.substr(key.size() + 1);
        }
    }
    return "";
}

// 'T' stopped, 'Z' ended (not yet reaped), 'R', 'S', ...; '?' when unreadable.
char State() {
    char state = '?';
    std::istringstream(Proc("status", "State")) >> state;
    return state;
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

// Stops the program where it can next take a signal; false when it ended instead.
bool Stop() {
    ::kill(gPid, SIGSTOP);
    WaitUntil([] { return State() == 'T' || State() == 'Z'; }, kLongWait);
    return State() == 'T';
}

}  // namespace

std::string Start(std::string const& script, std::string const& output) {
    gPid = ::fork();
    if (gPid == 0) {
        // NOTE: the lowest priority, so that a machine busy enough to delay this test delays
        // the program more: the probe's steps stay short against its read.
        ::setpriority(PRIO_PROCESS, 0, 19);
        int const fd = ::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        ::dup2(fd, STDOUT_FILENO);
        ::dup2(fd, STDERR_FILENO);
        ::execl(MINIHOST_PROGRAM, "minihost", script.c_str(), nullptr);
        ::_exit(127);
    }
    return gPid > 0 ? "" : "cannot start " MINIHOST_PROGRAM;
}

// Stops the program again and again until a stop falls inside the copy, and leaves it stopped.
std::string ReachTheCopy() {
    Clock::time_point const deadline = Clock::now() + 2 * kLongWait;
    while (Clock::now() < deadline) {
        if (!Stop()) {
            return "the program ended before its copy was seen";
        }
        unsigned long long const read = std::stoull(Proc("io", "rchar"));
        if (read >= kCopySize) {
            return "no stop fell inside the copy: the program took the first signal after it "
                   "had read all " +
                   std::to_string(read) + " bytes";
        }
        if (read >= kCopyBegun) {
            return "";
        }
        ::kill(gPid, SIGCONT);
        std::this_thread::sleep_for(1ms);
    }
    return "the copy did not begin within " + std::to_string(2 * kLongWait.count()) + " s";
}

// Lets the stopped program take the SIGINT and stops it again.
std::string FirstCtrlC() {
    ::kill(gPid, SIGINT);
    for (int attempt = 0; attempt < 10; ++attempt) {
        ::kill(gPid, SIGCONT);
        if (!Stop()) {
            return "the first Ctrl-C ended the program";
        }
        unsigned long long const pending = std::stoull(Proc("status", "ShdPnd"), nullptr, 16) |
                                           std::stoull(Proc("status", "SigPnd"), nullptr, 16);
        if ((pending >> (SIGINT - 1) & 1) == 0) {
            return "";
        }
    }
    return "the first Ctrl-C was not taken";
}

std::string SecondCtrlC() {
    ::kill(gPid, SIGINT);
    ::kill(gPid, SIGCONT);
    int status = -1;
    if (!WaitUntil([&status] { return ::waitpid(gPid, &status, WNOHANG) == gPid; }, kLongWait)) {
        return "the second Ctrl-C did not end the program";
    }
    gPid = -1;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGINT
               ? ""
               : "the program ended with wait status " + std::to_string(status);
}

void End() {
    if (gPid > 0) {
        ::kill(gPid, SIGKILL);
        ::waitpid(gPid, nullptr, 0);
        gPid = -1;
    }
}

}  // namespace minihost::interrupt
