// Ctrl-C during a long read on Windows, against the minihost program itself: it copies a 1 GiB
// sparse file on a console of the test's own, where GenerateConsoleCtrlEvent hands Ctrl-C to
// every program, on a thread of each program's own. The first, sent once the program's memory
// shows the copy, must leave it running; the second must end it, as Ctrl-C ends a program (not
// as an interrupted run, which exits with status 1).
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// psapi.h needs windows.h first.
#include <psapi.h>

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "testing/TestFiles.h"

namespace minihost {
namespace {

// The test's own answer to Ctrl-C: taken, so that the test goes on.
BOOL WINAPI TakeCtrlC(DWORD event) { return event == CTRL_C_EVENT ? TRUE : FALSE; }

// The program's memory that no file backs, or 0 when unknown.
SIZE_T Memory(HANDLE process) {
    PROCESS_MEMORY_COUNTERS counters{};
    return ::GetProcessMemoryInfo(process, &counters, sizeof counters) ? counters.PagefileUsage : 0;
}

TEST(Interruption, TwoCtrlCDuringOneLongReadEndTheProgram) {
    tavrel_testing::TempDir dir;
    std::filesystem::resize_file(dir.Write("big.bin", ""), 1ULL << 30);
    std::string const script = dir.Write(
        "copy.tvl", "copy = Binary.Copy(Binary.MapFile(\"big.bin\"))\nprint Size(copy)\n");
    ::FreeConsole();
    ASSERT_NE(::AllocConsole(), 0) << "no console: error " << ::GetLastError();
    ::SetConsoleCtrlHandler(&TakeCtrlC, TRUE);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    std::wstring commandLine = L"\"" +
                               std::filesystem::path(MINIHOST_PROGRAM).make_preferred().wstring() +
                               L"\" \"" + std::filesystem::path(script).wstring() + L"\"";
    PROCESS_INFORMATION process{};
    // NOTE: the lowest priority, so that a busy machine slows the copy more than the test.
    ASSERT_NE(::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE,
                               IDLE_PRIORITY_CLASS, nullptr, nullptr, &start, &process),
              0)
        << "cannot start " MINIHOST_PROGRAM ": error " << ::GetLastError();
    struct Ender {
        PROCESS_INFORMATION const& process;
        ~Ender() {
            ::TerminateProcess(process.hProcess, 1);
            ::WaitForSingleObject(process.hProcess, INFINITE);
            ::CloseHandle(process.hThread);
            ::CloseHandle(process.hProcess);
            ::SetConsoleCtrlHandler(&TakeCtrlC, FALSE);
            ::FreeConsole();
        }
    } const ender{process};
    auto const runsAfter = [&process](DWORD ms) {
        return ::WaitForSingleObject(process.hProcess, ms) == WAIT_TIMEOUT;
    };
    // Memory grown by 64 MiB: the copy, which makes room for 1 GiB, has begun.
    SIZE_T const before = Memory(process.hProcess);
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (runsAfter(1) && Memory(process.hProcess) < before + (SIZE_T{64} << 20) &&
           std::chrono::steady_clock::now() < deadline) {
    }
    ASSERT_NE(::GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0) << "error " << ::GetLastError();
    ASSERT_TRUE(runsAfter(100)) << "the first Ctrl-C ended the program";
    ASSERT_NE(::GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0), 0) << "error " << ::GetLastError();
    ASSERT_FALSE(runsAfter(60000)) << "the second Ctrl-C did not end the program";
    DWORD code = 0;
    ::GetExitCodeProcess(process.hProcess, &code);
    EXPECT_EQ(code, static_cast<DWORD>(STATUS_CONTROL_C_EXIT));
}

}  // namespace
}  // namespace minihost
