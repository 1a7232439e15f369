// CountingAllocator: the test program's own global operator new and delete, which every other
// form without an alignment argument calls. They count the calls and the blocks alive, and
// can be armed so that one chosen call fails with std::bad_alloc. The program must export
// them (ENABLE_EXPORTS) so that a module loaded with dlopen allocates through them as well.
// Built with sanitizers (TAVREL_SANITIZED) nothing is replaced, since the sanitizers replace
// operator new themselves; Active() then says false and the counts stay 0.
#pragma once

namespace allocfail {

// Whether the replacement is in this program.
bool Active();

// Blocks from operator new not yet given back.
long LiveBlocks();

// operator new calls since the program started, failed ones included.
long Calls();

// Makes the n-th operator new call from now fail (n = 1: the next one) and clears Fired.
// The failure fires once and disarms itself.
void FailNth(long n);

// Takes back a failure that has not fired yet; Fired keeps its value.
void Disarm();

// Whether the failure armed by the last FailNth has fired.
bool Fired();

}  // namespace allocfail
