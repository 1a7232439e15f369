// Failing each allocation of an entry call in turn. For every entry, with typical arguments
// and with arguments that make it report, and for every N from 1 to the number of
// allocations that the call makes, the N-th allocation fails: std::bad_alloc must leave the
// entry, no block may be left that was not there before, the result variant keeps what it
// held, every buffer keeps its count, as many host buffers are alive as before, and no file
// descriptor stays open.
#include <dirent.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "minihost/Context.h"
#include "minihost/FilePolicy.h"
#include "minihost/LiveCount.h"
#include "minihost/MemoryBuffer.h"
#include "minihost/Variant.h"
#include "tests/hardening/CountingAllocator.h"
#include "tests/hardening/LoadedBinary.h"

namespace {

using minihost::Variant;
using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;

// Long enough that every copy of it leaves the string's inline storage.
constexpr char kBytes[] = "0123456789abcdefghijklmnopqrstuvwxyz-0123456789ABCDEFGHIJKLMNOP";

long gCasesRun = 0;

// Prints how many failing calls ran, once all tests are done.
class CaseCount : public testing::Environment {
public:
    void TearDown() override { std::printf("allocation-failure cases run: %ld\n", gCasesRun); }
};
[[maybe_unused]] testing::Environment* const kCaseCount =
    testing::AddGlobalTestEnvironment(new CaseCount);

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

// Open file descriptors of this process.
int OpenDescriptors() {
    int count = 0;
    if (DIR* const dir = ::opendir("/proc/self/fd")) {
        while (::readdir(dir) != nullptr) {
            ++count;
        }
        ::closedir(dir);
    }
    return count;
}

struct Case {
    char const* name;
    char const* entry;
    std::vector<Variant> arguments;
    int reports;  // when nothing fails
};

// Everything a call of a case may touch, made once for all its calls.
class CaseRun {
public:
    explicit CaseRun(Case const& c) : mCase(c), mArguments(c.arguments) {
        for (Variant& argument : mArguments) {
            mPointers.push_back(&argument);
            if (argument.dataPointer() != nullptr) {
                mBuffers.push_back(argument.dataPointer());
            }
        }
        mEntry = hardening::EntryOf(c.entry);
    }

    // One call into result, counting the reports; the status word.
    unsigned int Invoke(KeepingVariant& result, int& reports) {
        minihost::Context context{mPolicy};
        context.SetErrorHandler([&reports](minihost::ErrorReport const&) { ++reports; });
        return mEntry(static_cast<int>(mPointers.size()), mPointers.data(), &result,
                      hardening::Binary().Info(), &context);
    }

    // One call, with the result variant at its earlier value; the status word.
    unsigned int Call(int& reports) {
        KeepingVariant result{Variant::DataRef(mEarlier)};
        return Invoke(result, reports);
    }

    // How many allocations one call makes; the call must also behave as the case says.
    long Allocations() {
        int reports = 0;
        Call(reports);  // lets everything that is made once be made first
        reports = 0;
        long const before = allocfail::Calls();
        EXPECT_EQ(Call(reports), 0u) << mCase.name;
        long const made = allocfail::Calls() - before;
        EXPECT_EQ(reports, mCase.reports) << mCase.name;
        return made;
    }

    // The call with its n-th allocation failing, and every check on what it leaves.
    void FailAt(long n) {
        SCOPED_TRACE(std::string(mCase.name) + ", allocation " + std::to_string(n));
        KeepingVariant result{Variant::DataRef(mEarlier)};
        int reports = 0;
        std::vector<int> const counts = Counts();
        long const hostBuffers = minihost::LiveToken::Count();
        int const descriptors = OpenDescriptors();
        long const blocks = allocfail::LiveBlocks();

        bool threw = false;
        allocfail::FailNth(n);
        try {
            Invoke(result, reports);
        } catch (std::bad_alloc const&) {
            threw = true;
        }
        allocfail::Disarm();

        EXPECT_TRUE(threw && allocfail::Fired());
        EXPECT_EQ(allocfail::LiveBlocks(), blocks);
        EXPECT_EQ(result.held().dataPointer(), mEarlier.get());
        EXPECT_EQ(Counts(), counts);
        EXPECT_EQ(minihost::LiveToken::Count(), hostBuffers);
        EXPECT_EQ(OpenDescriptors(), descriptors);
        ++gCasesRun;
    }

    // With the failure armed one allocation too late the call completes.
    void SucceedsWith(long allocations) {
        int reports = 0;
        allocfail::FailNth(allocations + 1);
        EXPECT_EQ(Call(reports), 0u) << mCase.name;
        allocfail::Disarm();
        EXPECT_FALSE(allocfail::Fired()) << mCase.name << ": more allocations than counted";
    }

private:
    // The counts of the argument buffers, the result's earlier buffer and the policy.
    std::vector<int> Counts() const {
        std::vector<int> counts{mEarlier->Interface_GetCount(), mPolicy->Interface_GetCount()};
        for (IDataRef const* buffer : mBuffers) {
            counts.push_back(buffer->Interface_GetCount());
        }
        return counts;
    }

    Case const& mCase;
    std::vector<Variant> mArguments;
    std::vector<Tavrel::IVariant*> mPointers;
    std::vector<IDataRef const*> mBuffers;
    minihost::EntryFunction mEntry = nullptr;
    AutoRefPtr<IDataRef> mEarlier{new minihost::MemoryBuffer("what the result held before")};
    AutoRefPtr<Tavrel::IPolicy> mPolicy{new minihost::FilePolicy()};
};

class AllocFailure : public testing::Test {
protected:
    void SetUp() override {
        if (!allocfail::Active()) {
            GTEST_SKIP() << "sanitizers replace operator new themselves";
        }
    }
};

AutoRefPtr<IDataRef> ModuleBuffer(std::string_view bytes) {
    Variant text = Variant::String(bytes);
    Variant result;
    Tavrel::IVariant* arguments[] = {&text};
    minihost::Context context{AutoRefPtr<Tavrel::IPolicy>()};
    hardening::EntryOf("ToDataRef")(1, arguments, &result, hardening::Binary().Info(), &context);
    return result.data();
}

std::string FileWith(std::string_view bytes) {
    std::string path = testing::TempDir() + "alloc_failure_mapped_file";
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<long>(bytes.size()));
    return path;
}

TEST_F(AllocFailure, TheModuleAllocatesThroughTheTestsOperatorNew) {
    Variant text = Variant::String(std::string(1000, 'x'));
    Variant result;
    Tavrel::IVariant* arguments[] = {&text};
    minihost::Context context{AutoRefPtr<Tavrel::IPolicy>()};
    minihost::EntryFunction const toDataRef = hardening::EntryOf("ToDataRef");  // loads it
    long const calls = allocfail::Calls();
    long const blocks = allocfail::LiveBlocks();
    toDataRef(1, arguments, &result, hardening::Binary().Info(), &context);
    // The new buffer and its 1000 bytes, at least.
    EXPECT_GE(allocfail::Calls() - calls, 2);
    EXPECT_GE(allocfail::LiveBlocks() - blocks, 2);
    result = Variant();
    EXPECT_EQ(allocfail::LiveBlocks(), blocks);
}

TEST_F(AllocFailure, EveryAllocationOfEveryEntryFailsCleanly) {
    Variant const module = Variant::DataRef(ModuleBuffer(kBytes));
    Variant const host = Variant::DataRef(AutoRefPtr<IDataRef>(new minihost::MemoryBuffer(kBytes)));
    Variant const hidden =
        Variant::DataRef(AutoRefPtr<IDataRef>(new minihost::MemoryBuffer(kBytes, {false, 7})));
    Variant const missing = Variant::DataRef(AutoRefPtr<IDataRef>());
    Variant const text = Variant::String(kBytes);
    Variant const file = Variant::String(FileWith(kBytes));
    Variant const noFile = Variant::String(testing::TempDir() + "no such file, long name");
    auto number = [](double value) { return Variant::Number(value); };

    std::vector<Case> const cases = {
        {"size", "BinarySize", {module}, 0},
        {"size of nothing", "BinarySize", {missing}, 1},
        {"from string", "BinarySetFromString", {text}, 0},
        {"to buffer", "ToDataRef", {text}, 0},
        {"to buffer, part", "ToDataRefPart", {text, number(3), number(40)}, 0},
        {"to buffer, negative", "ToDataRefPart", {text, number(-1), number(40)}, 1},
        {"map a file", "BinaryMapFile", {file}, 0},
        {"map no file", "BinaryMapFile", {noFile}, 1},
        {"slice", "BinarySlice", {hidden, number(2), number(50)}, 0},
        {"slice nothing", "BinarySlice", {missing, number(0), number(1)}, 1},
        {"slice right", "BinarySliceRight", {module, number(3)}, 0},
        {"slice right, negative", "BinarySliceRight", {host, number(-2)}, 1},
        {"part to string", "BinaryPartToString", {host, number(2), number(30)}, 0},
        {"part to string, negative", "BinaryPartToString", {module, number(-1), number(2)}, 1},
        {"to string", "BinaryToString", {hidden}, 0},
        {"to string of nothing", "BinaryToString", {missing}, 1},
        {"copy a host buffer", "BinaryCopy", {host}, 0},
        {"copy a module buffer", "BinaryCopy", {module}, 0},
        {"copy nothing", "BinaryCopy", {missing}, 1},
        {"copy part", "BinaryCopyPart", {hidden, number(1), number(40)}, 0},
        {"copy part, negative", "BinaryCopyPart", {module, number(0), number(-3)}, 1},
        {"append", "BinaryAppend", {module, hidden}, 0},
        {"append to itself", "BinaryAppend", {module, module}, 0},
        {"append to nothing", "BinaryAppend", {missing, module}, 1},
        {"append part", "BinaryAppendPart", {module, host, number(2), number(40)}, 0},
        {"append part, negative", "BinaryAppendPart", {host, module, number(-1), number(1)}, 1},
    };
    std::set<std::string> entries;
    for (Case const& c : cases) {
        entries.insert(c.entry);
        CaseRun run(c);
        long const allocations = run.Allocations();
        for (long n = 1; n <= allocations; ++n) {
            run.FailAt(n);
        }
        run.SucceedsWith(allocations);
    }
    EXPECT_EQ(entries.size(), 13u) << "every entry has a case";
}

}  // namespace
