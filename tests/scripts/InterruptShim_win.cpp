// Ctrl-C on Windows: the test gives itself a console of its own and starts minihost on it;
// GenerateConsoleCtrlEvent hands Ctrl-C to every program on the console, on a thread of each
// program's own. The program's memory shows when its copy runs.
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// psapi.h needs windows.h first.
#include <psapi.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "tests/scripts/InterruptShim.h"

namespace minihost::interrupt {
namespace {

// Memory grown by this much since the start: the copy, which makes room for 1 GiB, has begun.
constexpr SIZE_T kCopyBegun = SIZE_T{64} << 20;
constexpr DWORD kLongWaitMs = 60000;

PROCESS_INFORMATION gProcess{};

// The test's own answer to Ctrl-C: taken, so that the test goes on.
BOOL WINAPI TakeCtrlC(DWORD event) { return event == CTRL_C_EVENT ? TRUE : FALSE; }

// Whether the program still runs after waiting up to ms for its end.
bool RunsAfter(DWORD ms) { return ::WaitForSingleObject(gProcess.hProcess, ms) == WAIT_TIMEOUT; }

// Its exit status once it ended.
std::string ExitStatus() {
    DWORD code = 0;
    ::GetExitCodeProcess(gProcess.hProcess, &code);
    return "status " + std::to_string(code);
}

// Its memory that no file backs (its private bytes), or 0 when unknown.
SIZE_T Memory() {
    PROCESS_MEMORY_COUNTERS counters{};
    return ::GetProcessMemoryInfo(gProcess.hProcess, &counters, sizeof counters)
               ? counters.PagefileUsage
               : 0;
}

// Sends Ctrl-C to every program on the console, this one included.
std::string SendCtrlC() {
    ::SetConsoleCtrlHandler(&TakeCtrlC, TRUE);
    return ::GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != 0
               ? ""
               : "no Ctrl-C sent: error " + std::to_string(::GetLastError());
}

}  // namespace

std::string Start(std::string const& script, std::string const& output) {
    ::FreeConsole();
    if (::AllocConsole() == 0) {
        return "no console could be made: error " + std::to_string(::GetLastError());
    }
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE const sink = ::CreateFileW(std::filesystem::path(output).c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = sink;
    start.hStdError = sink;
    std::wstring commandLine = L"\"" +
                               std::filesystem::path(MINIHOST_PROGRAM).make_preferred().wstring() +
                               L"\" \"" + std::filesystem::path(script).wstring() + L"\"";
    // NOTE: the lowest priority, so that a machine busy enough to delay this test delays the
    // program more: the test's steps stay short against its copy.
    bool const started =
        sink != INVALID_HANDLE_VALUE &&
        ::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, IDLE_PRIORITY_CLASS,
                         nullptr, nullptr, &start, &gProcess) != 0;
    std::string const problem =
        "cannot start " MINIHOST_PROGRAM ": error " + std::to_string(::GetLastError());
    ::CloseHandle(sink);
    return started ? "" : problem;
}

// Waits until the memory grew by kCopyBegun over what it was first seen at.
std::string ReachTheCopy() {
    SIZE_T const start = Memory();
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kLongWaitMs);
    while (std::chrono::steady_clock::now() < deadline) {
        if (!RunsAfter(1)) {
            return "the program ended before its copy was seen, with " + ExitStatus();
        }
        if (Memory() >= start + kCopyBegun) {
            return "";
        }
    }
    return "the copy did not begin within " + std::to_string(kLongWaitMs / 1000) + " s";
}

// Gives the program 100 ms to end, which it must not.
std::string FirstCtrlC() {
    std::string const problem = SendCtrlC();
    return !problem.empty() || RunsAfter(100) ? problem
                                              : "one Ctrl-C ended it, with " + ExitStatus();
}

std::string SecondCtrlC() {
    std::string const problem = SendCtrlC();
    if (!problem.empty() || RunsAfter(kLongWaitMs)) {
        return problem.empty() ? "the second Ctrl-C did not end the program" : problem;
    }
    std::string const status = ExitStatus();
    return status == "status " + std::to_string(static_cast<DWORD>(STATUS_CONTROL_C_EXIT))
               ? ""
               : "the program ended with " + status;
}

void End() {
    if (gProcess.hProcess != nullptr) {
        ::TerminateProcess(gProcess.hProcess, 1);
        ::WaitForSingleObject(gProcess.hProcess, INFINITE);
        ::CloseHandle(gProcess.hThread);
        ::CloseHandle(gProcess.hProcess);
        gProcess = {};
    }
    ::SetConsoleCtrlHandler(&TakeCtrlC, FALSE);
    ::FreeConsole();
}

}  // namespace minihost::interrupt
