#include "minihost/Interruption.h"

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
    // NOTE: SA_RESETHAND makes the handler one-shot; without SA_RESTART a blocked read
    // returns EINTR instead of going on waiting.
    SetAction(&OnInterrupt, SA_RESETHAND);
}

void DisarmInterruption() {
    SetAction(SIG_DFL, 0);
    gInterrupted.store(nullptr);
}

}  // namespace minihost
