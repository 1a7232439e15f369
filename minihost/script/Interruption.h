// Interruption: routes Ctrl-C to a context's interruption flag instead of letting it end the
// program. Once armed, the first Ctrl-C sets the flag and the handler steps aside, so a
// second Ctrl-C before the program re-arms it ends the program at once.
// POSIX (Interruption_posix.cpp): a SIGINT handler; the second Ctrl-C ends the program as
// usual (killed by SIGINT; a shell shows status 130). The handler does nothing but one atomic
// load and the context's atomic store; no read, no syscall restart: a blocking read returns
// EINTR, so a prompt can notice. It does not keep two Ctrl-C apart that arrive during one
// system call: the kernel merges them, so the host keeps its long work in short calls
// (FileBuffer).
// Windows (Interruption_win.cpp): a console control handler, which the system runs on a
// thread of its own for Ctrl-C and Ctrl-Break; the second one ends the program with the
// status of a program ended by Ctrl-C (STATUS_CONTROL_C_EXIT, 0xC000013A), whatever the
// program's own thread is doing. A console read that Ctrl-C cuts short returns no bytes.
#pragma once

#include "minihost/host/Context.h"

namespace minihost {

// Installs the handler for context, which must outlive it or be disarmed first.
void ArmInterruption(Context& context);

// Forgets the context; from then on Ctrl-C ends the program (POSIX: the default action of
// SIGINT again). Once it returns, no handler touches the context any more.
void DisarmInterruption();

}  // namespace minihost
