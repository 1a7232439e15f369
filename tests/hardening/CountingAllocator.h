// CountingAllocator: the test program's own global operator new and delete, which every other
// form without an alignment argument calls. They count the calls and the blocks alive, and
// can be armed so that one chosen call fails with std::bad_alloc. The program must export
// them (ENABLE_EXPORTS) so that a module loaded with dlopen allocates through them as well.
// Where the module cannot share the program's operator new (TAVREL_ALLOCATOR_NOT_SHARED: the
// sanitizers replace it themselves; on Windows the module links its own C++ runtime) nothing
// is replaced; Active() then says false and the counts stay 0.
#pragma once

namespace tavrel_testing {

// The counts and the armed failure of the replacement: one per program, so every member is
// static.
class CountingAllocator {
public:
    // Whether the replacement is in this program.   sanitizers or Windows => false
    static bool Active();

    // Blocks from operator new not yet given back.
    static long LiveBlocks();

    // operator new calls since the program started, failed ones included.
    static long Calls();

    // Makes the n-th operator new call from now fail (n = 1: the next one) and clears Fired.
    // The failure fires once and disarms itself.
    static void FailNth(long n);

    // Takes back a failure that has not fired yet; Fired keeps its value.
    static void Disarm();

    // Whether the failure armed by the last FailNth has fired.
    //   FailNth(1), one allocation => true     FailNth(2), one allocation, Disarm => false
    static bool Fired();
};

}  // namespace tavrel_testing
