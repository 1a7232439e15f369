// Ctrl-C during a long read, against the minihost program itself, on Windows. The test gives
// itself a console of its own and starts minihost on it, with a script that copies a 1 GiB
// sparse file; once the program's memory shows that the copy runs, the test sends Ctrl-C to
// the console (GenerateConsoleCtrlEvent), which the system hands to every program on it, on a
// thread of each program's own. The first Ctrl-C must leave the program running; the second
// must end it at once, before its copy ends, with the status of a program ended by Ctrl-C.
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// psapi.h needs windows.h first.
#include <psapi.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <thread>

#include "testing/TestFiles.h"

namespace minihost {
namespace {

using Clock = std::chrono::steady_clock;
using tavrel_testing::TempDir;
using namespace std::chrono_literals;

constexpr unsigned long long kFileSize = 1ULL << 30;
// Memory grown by this much since the start: the copy, which makes room for 1 GiB, has begun.
constexpr SIZE_T kCopyBegun = SIZE_T{64} << 20;
constexpr auto kLongWait = 60s;
// How long one Ctrl-C is given to end the program, which it must not.
constexpr auto kAfterFirstCtrlC = 100ms;

std::string Contents(std::string const& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// The test's own answer to Ctrl-C: taken, so that the test goes on.
BOOL WINAPI TakeCtrlC(DWORD event) { return event == CTRL_C_EVENT ? TRUE : FALSE; }

// A console of this process's own, which the program started next shares; the test takes
// Ctrl-C itself while the object lives.
class OwnConsole {
public:
    OwnConsole() {
        ::FreeConsole();
        mMade = ::AllocConsole() != 0;
    }
    ~OwnConsole() {
        ::SetConsoleCtrlHandler(&TakeCtrlC, FALSE);
        ::FreeConsole();
    }
    OwnConsole(OwnConsole const&) = delete;
    OwnConsole& operator=(OwnConsole const&) = delete;

    bool Made() const { return mMade; }
    // Sends Ctrl-C to every program on the console, this one included.
    bool SendCtrlC() const {
        ::SetConsoleCtrlHandler(&TakeCtrlC, TRUE);
        return ::GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != 0;
    }

private:
    bool mMade = false;
};

// The minihost program running one script, its output and errors going to one file; ended and
// closed when the object goes.
class Program {
public:
    Program(std::string const& script, std::string const& output) {
        SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        HANDLE const sink = ::CreateFileW(std::filesystem::path(output).c_str(), GENERIC_WRITE,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                          CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (sink == INVALID_HANDLE_VALUE) {
            return;
        }
        STARTUPINFOW start{};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdInput = nullptr;
        start.hStdOutput = sink;
        start.hStdError = sink;
        std::wstring commandLine =
            L"\"" + std::filesystem::path(MINIHOST_PROGRAM).make_preferred().wstring() + L"\" \"" +
            std::filesystem::path(script).wstring() + L"\"";
        // NOTE: the lowest priority, so that a machine busy enough to delay this test delays
        // the program more: the test's steps stay short against its copy.
        mStarted = ::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE,
                                    IDLE_PRIORITY_CLASS, nullptr, nullptr, &start, &mProcess) != 0;
        ::CloseHandle(sink);
    }
    ~Program() {
        if (mStarted) {
            ::TerminateProcess(mProcess.hProcess, 1);
            ::WaitForSingleObject(mProcess.hProcess, INFINITE);
            ::CloseHandle(mProcess.hThread);
            ::CloseHandle(mProcess.hProcess);
        }
    }
    Program(Program const&) = delete;
    Program& operator=(Program const&) = delete;

    bool Started() const { return mStarted; }

    // Whether the program still runs after waiting up to limit for its end.
    bool RunsAfter(Clock::duration limit) const {
        auto const ms = std::chrono::duration_cast<std::chrono::milliseconds>(limit).count();
        return ::WaitForSingleObject(mProcess.hProcess, static_cast<DWORD>(ms)) == WAIT_TIMEOUT;
    }

    // Its exit status once it ended.
    DWORD ExitCode() const {
        DWORD code = 0;
        ::GetExitCodeProcess(mProcess.hProcess, &code);
        return code;
    }

    // Its memory that no file backs (its private bytes), or 0 when unknown.
    SIZE_T Memory() const {
        PROCESS_MEMORY_COUNTERS counters{};
        return ::GetProcessMemoryInfo(mProcess.hProcess, &counters, sizeof counters)
                   ? counters.PagefileUsage
                   : 0;
    }

    // Waits until the memory grew by kCopyBegun over what it was first seen at; gives what
    // went wrong, or "" with the copy running.
    std::string WaitForTheCopy() const {
        SIZE_T const start = Memory();
        Clock::time_point const deadline = Clock::now() + kLongWait;
        while (Clock::now() < deadline) {
            if (!RunsAfter(1ms)) {
                return "the program ended before its copy was seen, with status " +
                       std::to_string(ExitCode());
            }
            if (Memory() >= start + kCopyBegun) {
                return "";
            }
        }
        return "the copy did not begin within " + std::to_string(kLongWait.count()) + " s";
    }

private:
    PROCESS_INFORMATION mProcess{};
    bool mStarted = false;
};

TEST(Interruption, TwoCtrlCDuringOneLongReadEndTheProgram) {
    OwnConsole const console;
    ASSERT_TRUE(console.Made()) << "no console could be made: error " << ::GetLastError();
    TempDir dir;
    std::filesystem::resize_file(dir.Write("big.bin", ""), kFileSize);  // sparse where it can be
    std::string const script = dir.Write(
        "copy.tvl", "copy = Binary.Copy(Binary.MapFile(\"big.bin\"))\nprint Size(copy)\n");
    std::string const output = dir.Path("output");
    Program program(script, output);
    ASSERT_TRUE(program.Started())
        << "cannot start " << MINIHOST_PROGRAM << ": error " << ::GetLastError();

    std::string const problem = program.WaitForTheCopy();
    ASSERT_EQ(problem, "") << "output: " << Contents(output);
    ASSERT_TRUE(console.SendCtrlC()) << "error " << ::GetLastError();  // the first Ctrl-C
    ASSERT_TRUE(program.RunsAfter(kAfterFirstCtrlC))
        << "one Ctrl-C ended the program (status 0x" << std::hex << program.ExitCode()
        << "); output: " << Contents(output);
    ASSERT_TRUE(console.SendCtrlC()) << "error " << ::GetLastError();  // the second one
    ASSERT_FALSE(program.RunsAfter(kLongWait)) << "the second Ctrl-C did not end the program";

    EXPECT_EQ(program.ExitCode(), static_cast<DWORD>(STATUS_CONTROL_C_EXIT))
        << std::hex << program.ExitCode();
    EXPECT_EQ(Contents(output), "") << "the program went on after the second Ctrl-C";
}

}  // namespace
}  // namespace minihost
