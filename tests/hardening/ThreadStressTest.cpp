// Several threads at once on shared buffers, the module's own and the host's: they call every
// entry with shared argument variants (each call adds and releases a reference to its buffers), and
// hand the buffers that the calls make to each other through a shared mailbox, so that the last
// reference of a buffer is often dropped on another thread than the one that made it. In the end
// every shared buffer has its old count, every buffer that was made was destroyed exactly once (its
// last Release said so, and no host buffer is left alive), and every call gave the status word and
// the number of reports that it gives on one thread. Under ThreadSanitizer any unordered access on
// the way is a failure as well.
#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "tests/hardening/LoadedBinary.h"

namespace {

using Tavrel::IDataRef;

constexpr int kThreads = 4;
constexpr int kRounds = 400;
constexpr std::size_t kMailboxSlots = 8;

TEST(ThreadStress, SharedBuffersAndEntriesOnSeveralThreads) {
    long const hostBuffersBefore = minihost::LiveToken::Count();
    {
        tavrel_testing::CallValues values;
        std::vector<tavrel_testing::EntryCall> const calls = EveryEntryCall(values);
        std::array<int, 4> const countsBefore = values.Counts();
        std::array<std::atomic<IDataRef*>, kMailboxSlots> mailbox{};
        // Calls with a wrong status word or number of reports on any thread, buffers made, and
        // mailbox releases that destroyed their buffer (each must: it held the last reference).
        std::atomic<int> wrong{0}, made{0}, destroyed{0};
        auto const putOut = [&](IDataRef* held) {
            destroyed += held != nullptr && held->Release() ? 1 : 0;
        };
        auto const work = [&] {
            std::vector<tavrel_testing::EntryCall> mine = calls;  // the variants stay shared
            for (int round = 0; round < kRounds; ++round) {
                // Each call adds a reference to every buffer it is given and drops it again.
                for (tavrel_testing::EntryCall& call : mine) {
                    int reports = 0;
                    minihost::Variant result;
                    unsigned int const status =
                        tavrel_testing::Invoke(call, result, values.policy, reports);
                    wrong += status != 0 || reports != call.reports ? 1 : 0;
                    // A buffer in the result goes into the mailbox with the only reference.
                    IDataRef* const fresh = result.dataPointer();
                    if (fresh != nullptr) {
                        fresh->AddRef();
                        result = minihost::Variant();
                        putOut(mailbox[made++ % kMailboxSlots].exchange(fresh));
                    }
                }
            }
        };
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back(work);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        for (auto& slot : mailbox) {
            putOut(slot.exchange(nullptr));
        }
        EXPECT_EQ(values.Counts(), countsBefore)
            << "the policy and the shared buffers keep their counts";
        EXPECT_EQ(wrong, 0) << "calls that gave another status word or number of reports";
        EXPECT_GT(made, 0);
        EXPECT_EQ(destroyed, made) << "a buffer's last reference did not destroy it: a lost count";
    }
    EXPECT_EQ(minihost::LiveToken::Count(), hostBuffersBefore) << "no host buffer is left";
}

}  // namespace
