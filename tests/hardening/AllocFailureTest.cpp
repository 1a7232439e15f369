// Failing each allocation of an entry call in turn. For every entry, with typical arguments
// and with arguments that make it report, and for every N from 1 to the number of
// allocations that the call makes, the N-th allocation fails: std::bad_alloc must leave the
// entry, no block may be left that was not there before, the result variant keeps what it
// held, every buffer keeps its count, as many host buffers are alive as before, and no file
// descriptor stays open.
#include <gtest/gtest.h>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "minihost/host/Context.h"
#include "minihost/host/FilePolicy.h"
#include "minihost/host/LiveCount.h"
#include "minihost/host/MemoryBuffer.h"
#include "minihost/host/Variant.h"
#include "testing/TestFiles.h"
#include "tests/hardening/CountingAllocator.h"
#include "tests/hardening/LoadedBinary.h"

namespace {

using minihost::Variant;
using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;
using tavrel_testing::Binary;
using tavrel_testing::CallValues;
using tavrel_testing::CountingAllocator;
using tavrel_testing::EntryCall;
using tavrel_testing::EntryOf;
using tavrel_testing::EveryEntryCall;
using tavrel_testing::OpenDescriptors;

// A result variant whose assignments are all or nothing: the new value is built on a copy
// and moved in. NOTE: minihost's Variant drops its old value before it copies a new string,
// so a failure inside the host's own assignment would otherwise look like the module's.
class KeepingVariant final : public Tavrel::IVariant {
public:
    explicit KeepingVariant(Variant held) : mHeld(std::move(held)) {}
    Variant const& held() const { return mHeld; }

    unsigned int Interface_GetType() const override { return mHeld.Interface_GetType(); }
    double Interface_GetNumber() const override { return mHeld.Interface_GetNumber(); }
    char const* Interface_GetString() const override { return mHeld.Interface_GetString(); }
    unsigned long long Interface_GetStringSize() const override {
        return mHeld.Interface_GetStringSize();
    }
    IDataRef* Interface_GetData() const override { return mHeld.Interface_GetData(); }
    Tavrel::IUserDefinedType* Interface_GetUserDefined() const override {
        return mHeld.Interface_GetUserDefined();
    }
    void Interface_AssignNumber(double value) override {
        Assign([value](Variant& next) { next.Interface_AssignNumber(value); });
    }
    void Interface_AssignString(char const* bytes, unsigned long size) override {
        Assign([bytes, size](Variant& next) { next.Interface_AssignString(bytes, size); });
    }
    void Interface_AssignData(IDataRef* data) override {
        Assign([data](Variant& next) { next.Interface_AssignData(data); });
    }

private:
    template <class Change>
    void Assign(Change change) {
        Variant next = mHeld;
        change(next);
        mHeld = std::move(next);
    }

    Variant mHeld;
};

// One entry call of the table, repeated with each of its allocations failing in turn.
class CaseRun {
public:
    CaseRun(EntryCall call, CallValues const& values)
        : mCall(std::move(call)), mValues(values), mEntry(EntryOf(mCall.entry)) {}

    // One call, with the result variant at its earlier value, counting the reports; the
    // status word.
    unsigned int Invoke(KeepingVariant& result, int& reports) {
        minihost::Context context{mPolicy};
        context.SetErrorHandler([&reports](minihost::ErrorReport const&) { ++reports; });
        return mEntry(static_cast<int>(mCall.arguments.size()), mCall.arguments.data(), &result,
                      Binary().Info(), &context);
    }

    unsigned int Call(int& reports) {
        KeepingVariant result{Variant::DataRef(mEarlier)};
        return Invoke(result, reports);
    }

    // How many allocations one call makes; the call must also behave as the table says.
    long Allocations() {
        int reports = 0;
        Call(reports);  // lets everything that is made once be made first
        reports = 0;
        long const before = CountingAllocator::Calls();
        EXPECT_EQ(Call(reports), 0u) << mCall.name;
        long const made = CountingAllocator::Calls() - before;
        EXPECT_EQ(reports, mCall.reports) << mCall.name;
        return made;
    }

    // The call with its n-th allocation failing, and every check on what it leaves.
    void FailAt(long n) {
        SCOPED_TRACE(std::string(mCall.name) + ", allocation " + std::to_string(n));
        KeepingVariant result{Variant::DataRef(mEarlier)};
        int reports = 0;
        std::vector<int> const counts = Counts();
        long const hostBuffers = minihost::LiveToken::Count();
        long const descriptors = OpenDescriptors();
        long const blocks = CountingAllocator::LiveBlocks();

        bool threw = false;
        CountingAllocator::FailNth(n);
        try {
            Invoke(result, reports);
        } catch (std::bad_alloc const&) {
            threw = true;
        }
        CountingAllocator::Disarm();

        EXPECT_TRUE(threw && CountingAllocator::Fired());
        EXPECT_EQ(CountingAllocator::LiveBlocks(), blocks);
        EXPECT_EQ(result.held().dataPointer(), mEarlier.get());
        EXPECT_EQ(Counts(), counts);
        EXPECT_EQ(minihost::LiveToken::Count(), hostBuffers);
        EXPECT_EQ(OpenDescriptors(), descriptors);
    }

    // With the failure armed one allocation too late the call completes.
    void SucceedsWith(long allocations) {
        int reports = 0;
        CountingAllocator::FailNth(allocations + 1);
        EXPECT_EQ(Call(reports), 0u) << mCall.name;
        CountingAllocator::Disarm();
        EXPECT_FALSE(CountingAllocator::Fired()) << mCall.name << ": more allocations than counted";
    }

private:
    // The counts of the shared buffers, the result's earlier buffer and the policy.
    std::vector<int> Counts() const {
        std::vector<int> counts = mValues.Counts();
        counts.push_back(mEarlier->Interface_GetCount());
        counts.push_back(mPolicy->Interface_GetCount());
        return counts;
    }

    EntryCall mCall;
    CallValues const& mValues;
    minihost::EntryFunction mEntry;
    AutoRefPtr<IDataRef> mEarlier{new minihost::MemoryBuffer("what the result held before")};
    AutoRefPtr<Tavrel::IPolicy> mPolicy{new minihost::FilePolicy()};
};

class AllocFailure : public testing::Test {
protected:
    void SetUp() override {
        if (!CountingAllocator::Active()) {
            GTEST_SKIP() << "the module does not allocate through this program's operator new "
                            "(sanitizers replace it; on Windows the module has its own runtime)";
        }
    }
};

TEST_F(AllocFailure, TheModuleAllocatesThroughTheTestsOperatorNew) {
    Variant text = Variant::String(std::string(1000, 'x'));
    Variant result;
    Tavrel::IVariant* arguments[] = {&text};
    minihost::Context context{AutoRefPtr<Tavrel::IPolicy>()};
    minihost::EntryFunction const toDataRef = EntryOf("ToDataRef");  // loads it
    long const calls = CountingAllocator::Calls();
    long const blocks = CountingAllocator::LiveBlocks();
    toDataRef(1, arguments, &result, Binary().Info(), &context);
    // The new buffer and its 1000 bytes, at least.
    EXPECT_GE(CountingAllocator::Calls() - calls, 2);
    EXPECT_GE(CountingAllocator::LiveBlocks() - blocks, 2);
    result = Variant();
    EXPECT_EQ(CountingAllocator::LiveBlocks(), blocks);
}

TEST_F(AllocFailure, EveryAllocationOfEveryEntryFailsCleanly) {
    CallValues values;
    std::set<std::string> entries;
    int calls = 0;
    long failures = 0;
    for (EntryCall const& call : EveryEntryCall(values)) {
        entries.insert(call.entry);
        CaseRun run(call, values);
        long const allocations = run.Allocations();
        for (long n = 1; n <= allocations; ++n) {
            run.FailAt(n);
        }
        run.SucceedsWith(allocations);
        ++calls;
        failures += allocations;
    }
    EXPECT_EQ(entries.size(), 13u) << "every entry has a case";
    // The figures for reports (--gtest_output=xml): calls tried, and allocations failed.
    RecordProperty("entry_calls", calls);
    RecordProperty("failed_allocations", static_cast<int>(failures));
}

}  // namespace
