#include "minihost/script/Interruption.h"

#include <atomic>
#include <csignal>

namespace minihost {

namespace {

std::atomic<Context*> gInterrupted{nullptr};
static_assert(std::atomic<Context*>::is_always_lock_free,
              "the signal handler may only touch lock-free atomics");

extern "C" void OnInterrupt(int /*signal*/) {
    if (Context* context = gInterrupted.load()) {
        context->Interrupt();
    }
}

void SetAction(void (*handler)(int), int flags) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGINT, &action, nullptr);
}

}  // namespace

void ArmInterruption(Context& context) {
    gInterrupted.store(&context);
    // NOTE: SA_RESETHAND makes the handler one-shot: the kernel puts back the default action
    // as it delivers the first SIGINT, and SIGINT stays blocked while the handler runs, so any
    // later one ends the program with the usual status, with no state in the handler. A
    // handler that counted its calls would add nothing: the one case that fails is two SIGINT
    // arriving while the first is still pending (inside one long system call), which the kernel
    // merges into one delivery that no handler can count. That case is kept short instead:
    // FileBuffer reads at most 8 MiB per call, so a signal waits milliseconds, not a whole
    // large read. Without SA_RESTART a blocked read returns EINTR instead of going on waiting.
    SetAction(&OnInterrupt, SA_RESETHAND);
}

void DisarmInterruption() {
    SetAction(SIG_DFL, 0);
    gInterrupted.store(nullptr);
}

}  // namespace minihost
