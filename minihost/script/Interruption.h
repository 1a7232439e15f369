// Interruption: routes Ctrl-C (SIGINT) to a context's interruption flag instead of letting
// it end the program. Once armed, the first Ctrl-C sets the flag and the handler steps
// aside, so a second Ctrl-C before the program re-arms it ends the program as usual (killed
// by SIGINT; a shell shows status 130). The handler does nothing but one atomic load and the
// context's atomic store; no read, no syscall restart: a blocking read returns EINTR, so a
// prompt can notice. It does not keep two Ctrl-C apart that arrive during one system call:
// the kernel merges them, so the host keeps its long work in short calls (FileBuffer).
#pragma once

#include "minihost/host/Context.h"

namespace minihost {

// Installs the handler for context, which must outlive it or be disarmed first.
void ArmInterruption(Context& context);

// Restores the default action of SIGINT and forgets the context.
void DisarmInterruption();

}  // namespace minihost
