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

#include "minihost/host/FilePolicy.h"
#include "minihost/host/LiveCount.h"
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
        std::vector<int> const countsBefore = values.Counts();
        Tavrel::AutoRefPtr<Tavrel::IPolicy> const policy(new minihost::FilePolicy());
        std::array<std::atomic<IDataRef*>, kMailboxSlots> mailbox{};
        // Faults seen on any thread, and the buffers made and destroyed.
        std::atomic<int> wrongStatus{0}, wrongReports{0}, survived{0};
        std::atomic<int> made{0}, destroyed{0};
        // Releases what a mailbox slot held: that release must destroy it.
        auto const putOut = [&](IDataRef* held) {
            if (held != nullptr) {
                ++(held->Release() ? destroyed : survived);
            }
        };
        auto const work = [&](std::size_t thread) {
            std::vector<tavrel_testing::EntryCall> mine = calls;  // the variants stay shared
            for (std::size_t round = 0; round < kRounds; ++round) {
                // Each call adds a reference to every buffer it is given and drops it again.
                for (std::size_t i = 0; i < mine.size(); ++i) {
                    int reports = 0;
                    minihost::Variant result;
                    wrongStatus += tavrel_testing::Invoke(mine[i], result, policy, reports) != 0;
                    wrongReports += reports != mine[i].reports ? 1 : 0;
                    // A buffer in the result goes into the mailbox with the only reference.
                    IDataRef* const fresh = result.dataPointer();
                    if (fresh != nullptr) {
                        fresh->AddRef();
                        result = minihost::Variant();
                        ++made;
                        putOut(mailbox[(thread + i + round) % kMailboxSlots].exchange(fresh));
                    }
                }
            }
        };
        std::vector<std::thread> threads;
        for (std::size_t t = 0; t < kThreads; ++t) {
            threads.emplace_back(work, t);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        for (auto& slot : mailbox) {
            putOut(slot.exchange(nullptr));
        }
        EXPECT_EQ(values.Counts(), countsBefore) << "the shared buffers keep their counts";
        EXPECT_EQ(wrongStatus, 0);
        EXPECT_EQ(wrongReports, 0);
        EXPECT_EQ(survived, 0) << "a buffer's last reference did not destroy it: a lost count";
        EXPECT_GT(made, 0);
        EXPECT_EQ(destroyed, made) << "every made buffer was destroyed exactly once";
    }
    EXPECT_EQ(minihost::LiveToken::Count(), hostBuffersBefore) << "no host buffer is left";
}

}  // namespace
