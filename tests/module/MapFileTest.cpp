// Binary.MapFile: the module hands the path to the host's policy and passes on its answer.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/IContext.h"
#include "minihost/host/MemoryBuffer.h"
#include "minihost/host/Variant.h"
#include "object/InterfaceImpl.h"
#include "tests/module/ModuleHarness.h"

namespace {

using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;
using tavrel_testing::CallEntry;
using tavrel_testing::Report;

// A policy that gives a fixed answer and remembers the paths it was asked for.
class FixedPolicy final : public InterfaceImpl<Tavrel::IPolicy> {
public:
    explicit FixedPolicy(AutoRefPtr<IDataRef> answer) : mAnswer(std::move(answer)) {}
    IDataRef* Interface_LoadData(Tavrel::IContext*, char const* path) override {
        paths.emplace_back(path);
        mAnswer.AddRefImpl();
        return mAnswer.get();
    }
    std::vector<std::string> paths;

private:
    AutoRefPtr<IDataRef> mAnswer;
};

// A context that checks the order of the module's calls.
class OrderContext final : public Tavrel::IContext {
public:
    OrderContext(FixedPolicy* policy, bool interrupted) : mPolicy(policy), mInterrupted(interrupted) {}
    bool Interface_IsInterrupted() const override {
        // The module's reference to the policy is gone by now: only ours is left.
        policyCountAtInterruptTest = mPolicy != nullptr ? mPolicy->Interface_GetCount() : 0;
        return mInterrupted;
    }
    Tavrel::IPolicy* Interface_GetPolicy() const override {
        if (mPolicy != nullptr) {
            mPolicy->AddRef();
        }
        return mPolicy;
    }
    void Interface_TriggerErrorHandler(Tavrel::ErrorSeverity severity, char const* module,
                                       char const* error, char const* reason) override {
        reports.push_back({severity, module, error, reason});
    }
    mutable int policyCountAtInterruptTest = 0;
    std::vector<Report> reports;

private:
    FixedPolicy* mPolicy;
    bool mInterrupted;
};

struct Outcome {
    unsigned status;
    IDataRef* result;
    std::vector<Report> reports;
    std::vector<std::string> paths;
    int policyCount;
};

// A null policy stands for a host without one.
Outcome MapFile(std::string const& path, AutoRefPtr<IDataRef> answer, bool interrupted,
                bool hasPolicy) {
    AutoRefPtr<FixedPolicy> policy(hasPolicy ? new FixedPolicy(answer) : nullptr);
    OrderContext context(policy.get(), interrupted);
    minihost::Variant argument = minihost::Variant::String(path);
    minihost::Variant result;
    unsigned const status = CallEntry("BinaryMapFile", {&argument}, &result, &context);
    return {status, result.dataPointer(), context.reports,
            hasPolicy ? policy->paths : std::vector<std::string>(),
            context.policyCountAtInterruptTest};
}

TEST(MapFile, PassesOnThePolicysAnswer) {
    AutoRefPtr<IDataRef> host(new minihost::MemoryBuffer("content", {false, 0}));
    struct Row {
        char const* name;
        std::string path;
        bool giveBuffer;
        bool interrupted;
        char const* reason;    // "" => no report
        char const* pathSeen;  // null => a host without a policy
    };
    Row const rows[] = {
        {"buffer", "a.txt", true, false, "", "a.txt"},
        {"no data", "/no/such", false, false, "Given File : '/no/such' does not exist.",
         "/no/such"},
        {"empty path", "", false, false, "Given File : '' does not exist.", ""},
        {"NUL in path", std::string("ab\0cd", 5), false, false, "Given File : 'ab", "ab"},
        {"interrupted, no data", "x", false, true, "", "x"},
        {"interrupted, buffer", "x", true, true, "", "x"},
        {"no policy", "a.txt", false, false, "Given File : 'a.txt' does not exist.", nullptr},
    };
    for (Row const& row : rows) {
        int const before = host->Interface_GetCount();
        bool const hasPolicy = row.pathSeen != nullptr;
        Outcome outcome = MapFile(row.path, row.giveBuffer ? host : AutoRefPtr<IDataRef>(),
                                  row.interrupted, hasPolicy);
        EXPECT_EQ(outcome.status, 0u) << row.name;
        EXPECT_EQ(outcome.result, row.giveBuffer ? host.get() : nullptr) << row.name;
        EXPECT_EQ(outcome.paths,
                  hasPolicy ? std::vector<std::string>{row.pathSeen} : std::vector<std::string>())
            << row.name;
        EXPECT_EQ(outcome.policyCount, hasPolicy ? 1 : 0) << row.name;
        std::vector<Report> expected;
        if (*row.reason != '\0') {
            expected.push_back({2, "Binary", "Error.System.Access", row.reason});
        }
        EXPECT_EQ(outcome.reports, expected) << row.name;
        EXPECT_EQ(host->Interface_GetCount(), before) << row.name;
    }
}

}  // namespace
