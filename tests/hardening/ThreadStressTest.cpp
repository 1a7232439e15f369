// Several threads at once on shared buffers, the module's own and the host's: they add and
// release references, call every entry with shared argument variants, and hand the buffers
// that the calls make to each other through a shared mailbox, so that the last reference of
// a buffer is often dropped on another thread than the one that made it. In the end every
// shared buffer has its old count, every buffer that was made was destroyed exactly once
// (its last Release said so, and no host buffer is left alive), and every call gave the
// status word and the number of reports that it gives on one thread. Under ThreadSanitizer
// any unordered access on the way is a failure as well.
#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "minihost/host/Context.h"
#include "minihost/host/FilePolicy.h"
#include "minihost/host/LiveCount.h"
#include "minihost/host/Variant.h"
#include "tests/hardening/LoadedBinary.h"

namespace {

using minihost::Variant;
using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;
using tavrel_testing::Binary;
using tavrel_testing::CallValues;
using tavrel_testing::EntryCall;
using tavrel_testing::EntryOf;
using tavrel_testing::EveryEntryCall;

constexpr int kThreads = 4;
constexpr int kRounds = 400;
constexpr int kReferencesPerRound = 8;
constexpr std::size_t kMailboxSlots = 8;

// What the threads share. Everything here is only read while the threads run, apart from
// the counts of the buffers and the mailbox.
class SharedWorld {
public:
    std::vector<EntryCall> const& Calls() const { return mCalls; }
    std::vector<IDataRef*> Buffers() const { return mValues.Buffers(); }
    std::vector<int> Counts() const { return mValues.Counts(); }
    AutoRefPtr<Tavrel::IPolicy> const& Policy() const { return mPolicy; }

    // Puts made into a slot, taking over its one reference, and releases what was there.
    // 0: the slot was empty; 1: that release destroyed the old buffer; -1: it did not.
    int Exchange(std::size_t slot, IDataRef* made) {
        IDataRef* const old = mMailbox[slot % kMailboxSlots].exchange(made);
        if (old == nullptr) {
            return 0;
        }
        return old->Release() ? 1 : -1;
    }

    // Releases what the mailbox still holds; gives how many of those releases destroyed.
    int Drain() {
        int destroyed = 0;
        for (auto& slot : mMailbox) {
            if (IDataRef* const held = slot.exchange(nullptr)) {
                destroyed += held->Release() ? 1 : 0;
            }
        }
        return destroyed;
    }

private:
    CallValues mValues;
    std::vector<EntryCall> const mCalls = EveryEntryCall(mValues);
    AutoRefPtr<Tavrel::IPolicy> mPolicy{new minihost::FilePolicy()};
    std::array<std::atomic<IDataRef*>, kMailboxSlots> mMailbox{};
};

// What one thread saw.
struct Tally {
    int wrongStatus = 0;
    int wrongReports = 0;
    int made = 0;              // buffers that calls gave and that went into the mailbox
    int destroyed = 0;         // buffers put out of the mailbox and destroyed by that release
    int survived = 0;          // buffers put out of the mailbox that lived on: a lost count
    int releasedTooEarly = 0;  // a churned reference that destroyed a shared buffer
};

// Adds and drops references on the shared buffers, one burst per buffer.
void ChurnReferences(std::vector<IDataRef*> const& shared, Tally& tally) {
    for (IDataRef* const buffer : shared) {
        for (int i = 0; i < kReferencesPerRound; ++i) {
            buffer->AddRef();
        }
        for (int i = 0; i < kReferencesPerRound; ++i) {
            tally.releasedTooEarly += buffer->Release() ? 1 : 0;
        }
    }
}

// One call; a buffer in the result goes into the mailbox with the only reference to it.
void CallAndHandOver(SharedWorld& world, EntryCall& call, std::size_t slot, Tally& tally) {
    int reports = 0;
    minihost::Context context{world.Policy()};
    context.SetErrorHandler([&reports](minihost::ErrorReport const&) { ++reports; });
    Variant result;
    unsigned int const status =
        EntryOf(call.entry)(static_cast<int>(call.arguments.size()), call.arguments.data(), &result,
                            Binary().Info(), &context);
    tally.wrongStatus += status != 0 ? 1 : 0;
    tally.wrongReports += reports != call.reports ? 1 : 0;
    AutoRefPtr<IDataRef> made = result.data();
    result = Variant();
    if (!made) {
        return;
    }
    IDataRef* const raw = made.get();
    raw->AddRef();  // the mailbox's reference; `made` drops its own below
    made = AutoRefPtr<IDataRef>();
    ++tally.made;
    int const putOut = world.Exchange(slot, raw);
    tally.destroyed += putOut == 1 ? 1 : 0;
    tally.survived += putOut == -1 ? 1 : 0;
}

void Work(SharedWorld& world, int thread, Tally& tally) {
    std::vector<EntryCall> calls = world.Calls();  // shared variants, read only
    std::vector<IDataRef*> const shared = world.Buffers();
    for (int round = 0; round < kRounds; ++round) {
        ChurnReferences(shared, tally);
        for (std::size_t i = 0; i < calls.size(); ++i) {
            CallAndHandOver(world, calls[i], static_cast<std::size_t>(thread) + i + round, tally);
        }
    }
}

TEST(ThreadStress, SharedBuffersAndEntriesOnSeveralThreads) {
    long const hostBuffersBefore = minihost::LiveToken::Count();
    std::array<Tally, kThreads> tallies{};
    {
        SharedWorld world;
        std::vector<int> const countsBefore = world.Counts();
        std::vector<std::thread> threads;
        threads.reserve(kThreads);
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&world, &tallies, t] { Work(world, t, tallies[t]); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        int const drained = world.Drain();
        EXPECT_EQ(world.Counts(), countsBefore) << "the shared buffers keep their counts";

        Tally total;
        for (Tally const& tally : tallies) {
            SCOPED_TRACE("thread " + std::to_string(&tally - tallies.data()));
            EXPECT_EQ(tally.wrongStatus, 0);
            EXPECT_EQ(tally.wrongReports, 0);
            EXPECT_EQ(tally.releasedTooEarly, 0);
            EXPECT_EQ(tally.survived, 0);
            total.made += tally.made;
            total.destroyed += tally.destroyed;
        }
        EXPECT_GT(total.made, 0);
        // Every made buffer was destroyed exactly once, by the release of its last reference.
        EXPECT_EQ(total.destroyed + drained, total.made);
    }
    EXPECT_EQ(minihost::LiveToken::Count(), hostBuffersBefore) << "no host buffer is left";
}

}  // namespace
