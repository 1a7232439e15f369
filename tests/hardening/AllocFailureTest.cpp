// Failing each allocation of an entry call in turn. For every entry, with typical arguments
// and with arguments that make it report, and for every N from 1 to the number of
// allocations that the call makes, the N-th allocation fails: std::bad_alloc must leave the
// entry, no block may be left that was not there before, the result variant keeps what it
// held, every buffer keeps its count, as many host buffers are alive as before, and no file
// descriptor stays open.
//
// The program's own global operator new and delete, which every other form without an
// alignment argument calls, count the calls and the blocks alive, and can be armed so that one
// chosen call fails. The program exports them (ENABLE_EXPORTS) so that the module, loaded with
// dlopen, allocates through them as well. Where the module cannot share the program's
// operator new (TAVREL_ALLOCATOR_NOT_SHARED: the sanitizers replace it themselves; on Windows
// the module links its own C++ runtime) nothing is replaced and the test skips.
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <tuple>

#include "tests/hardening/LoadedBinary.h"

static std::atomic<long> gCalls{0};   // operator new calls since the start, failed ones too
static std::atomic<long> gLive{0};    // blocks not yet given back
static std::atomic<long> gFailAt{0};  // the call number that fails; 0: none
static std::atomic<bool> gFired{false};

#ifndef TAVREL_ALLOCATOR_NOT_SHARED
// NOTE: only these are replaced. The standard library's own array and nothrow forms call them,
// so every allocation and release of the program and the module comes here.
void* operator new(std::size_t size) {
    long call = gCalls.fetch_add(1) + 1;
    if (gFailAt.compare_exchange_strong(call, 0)) {
        gFired.store(true);
        throw std::bad_alloc();
    }
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    gLive.fetch_add(1);
    return block;
}
void operator delete(void* block) noexcept {
    if (block != nullptr) {
        gLive.fetch_sub(1);
        std::free(block);
    }
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
#endif

namespace {

using minihost::LiveToken;
using minihost::Variant;
using tavrel_testing::CallValues;
using tavrel_testing::OpenDescriptors;

TEST(AllocFailure, EveryAllocationOfEveryEntryFailsCleanly) {
#ifdef TAVREL_ALLOCATOR_NOT_SHARED
    GTEST_SKIP() << "the module does not allocate through this program's operator new "
                    "(sanitizers replace it; on Windows the module has its own runtime)";
#endif
    tavrel_testing::EntryOf("ToDataRef");  // loads the module
    long const blocks = gLive.load();
    Variant const probe = CallValues::ModuleBuffer();
    ASSERT_GE(gLive.load() - blocks, 2) << "the module allocates through this operator new";
    CallValues values;
    // What a call must leave as it found it: blocks, host buffers, descriptors, the counts of
    // the policy and of the shared buffers.
    auto const state = [&] {
        return std::tuple(gLive.load(), LiveToken::Count(), OpenDescriptors(), values.Counts());
    };
    for (tavrel_testing::EntryCall call : tavrel_testing::EveryEntryCall(values)) {
        // One call with the result at its earlier value and the n-th allocation failing (0:
        // none): whether std::bad_alloc left it, and the checks on what it leaves. A call that
        // completes leaves in `made` how many allocations it made. (Its status word and reports
        // are those of the row: ThreadStressTest checks them on the same rows.)
        long made = 0;
        auto const attempt = [&](long n) {
            int reports = 0;
            bool threw = false;
            // NOTE: its string's room holds every string result, so that the host's own
            // assignment allocates nothing: a failure is always the module's.
            Variant result = Variant::String(CallValues::kBytes);
            auto const before = state();
            gFired.store(false);
            gFailAt.store(n == 0 ? 0 : gCalls.load() + n);
            long const start = gCalls.load();
            try {
                tavrel_testing::Invoke(call, result, values.policy, reports);
                made = gCalls.load() - start;
            } catch (std::bad_alloc const&) {
                threw = true;
            }
            gFailAt.store(0);
            if (threw) {
                EXPECT_EQ(result.assignments(), 0) << "the result keeps what it held";
                EXPECT_EQ(state(), before);
            }
            return threw;
        };
        SCOPED_TRACE(call.name);
        attempt(0);  // lets everything that is made once be made first
        EXPECT_FALSE(attempt(0)) << "std::bad_alloc without a failing allocation";
        long const allocations = made;
        for (long n = 1; n <= allocations; ++n) {
            SCOPED_TRACE("allocation " + std::to_string(n));
            EXPECT_TRUE(attempt(n) && gFired.load());
        }
        EXPECT_FALSE(attempt(allocations + 1)) << "more allocations than counted";
        EXPECT_FALSE(gFired.load()) << "more allocations than counted";
    }
}

}  // namespace
