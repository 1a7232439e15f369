// Interruption on Windows: a console control handler, installed once and armed with a context.
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <atomic>

#include "minihost/script/Interruption.h"

namespace minihost {

namespace {

// The context that the next Ctrl-C interrupts; null once one has.
std::atomic<Context*> gArmed{nullptr};
// How many handlers may be touching a context now, so that disarming can wait for them.
std::atomic<int> gHandlersRunning{0};
std::atomic<bool> gInstalled{false};

// NOTE: the system runs this on a thread of its own, while the program's thread goes on with
// whatever it does. The first Ctrl-C takes the armed context (an atomic exchange, so that two
// Ctrl-C at once cannot both take it) and sets its flag; any other one ends the program on the
// spot, without running exit code, as SIGINT's default action does elsewhere: the program's
// thread may be in the middle of anything. Other events (the console closing, logging off)
// are left to the system.
BOOL WINAPI OnConsoleEvent(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        return FALSE;
    }
    gHandlersRunning.fetch_add(1);
    Context* const context = gArmed.exchange(nullptr);
    if (context != nullptr) {
        context->Interrupt();
    }
    gHandlersRunning.fetch_sub(1);
    if (context == nullptr) {
        ::TerminateProcess(::GetCurrentProcess(), STATUS_CONTROL_C_EXIT);
    }
    return TRUE;
}

}  // namespace

void ArmInterruption(Context& context) {
    gArmed.store(&context);
    if (!gInstalled.exchange(true)) {
        ::SetConsoleCtrlHandler(&OnConsoleEvent, TRUE);
    }
}

void DisarmInterruption() {
    gArmed.store(nullptr);
    while (gHandlersRunning.load() != 0) {
        ::Sleep(0);
    }
}

}  // namespace minihost
