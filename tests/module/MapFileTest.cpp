// Binary.MapFile: the module hands the path to the host's policy and passes on its answer.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "host/IContext.h"
#include "minihost/FileBuffer.h"
#include "minihost/MemoryBuffer.h"
#include "minihost/Variant.h"
#include "object/InterfaceImpl.h"
#include "tests/module/ModuleHarness.h"

namespace {

using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;

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
    std::vector<moduletest::Report> reports;

private:
    FixedPolicy* mPolicy;
    bool mInterrupted;
};

struct Outcome {
    unsigned status;
    IDataRef* result;
    std::vector<moduletest::Report> reports;
    std::vector<std::string> paths;
    int policyCount;
};

Outcome MapFile(std::string const& path, AutoRefPtr<IDataRef> answer, bool interrupted) {
    AutoRefPtr<FixedPolicy> policy(new FixedPolicy(answer));
    OrderContext context(policy.get(), interrupted);
    minihost::Variant argument = minihost::Variant::String(path);
    minihost::Variant result;
    Tavrel::IVariant* arguments[] = {&argument};
    auto entry = moduletest::Module().Entry("tavrel_module_BinaryMapFile");
    unsigned status = entry(1, arguments, &result, moduletest::Module().Info(), &context);
    return {status, result.dataPointer(), context.reports, policy->paths,
            context.policyCountAtInterruptTest};
}

TEST(MapFile, PassesOnThePolicysAnswer) {
    AutoRefPtr<IDataRef> host(new minihost::MemoryBuffer("content", {false, 0}));
    struct Row {
        char const* name;
        std::string path;
        bool giveBuffer;
        bool interrupted;
        char const* reason;  // "" => no report
        char const* pathSeen;
    };
    Row const rows[] = {
        {"buffer", "a.txt", true, false, "", "a.txt"},
        {"no data", "/no/such", false, false, "Given File : '/no/such' does not exist.", "/no/such"},
        {"empty path", "", false, false, "Given File : '' does not exist.", ""},
        {"NUL in path", std::string("ab\0cd", 5), false, false, "Given File : 'ab", "ab"},
        {"interrupted, no data", "x", false, true, "", "x"},
        {"interrupted, buffer", "x", true, true, "", "x"},
    };
    for (Row const& row : rows) {
        int const before = host->Interface_GetCount();
        Outcome outcome = MapFile(row.path, row.giveBuffer ? host : AutoRefPtr<IDataRef>(), row.interrupted);
        EXPECT_EQ(outcome.status, 0u) << row.name;
        EXPECT_EQ(outcome.result, row.giveBuffer ? host.get() : nullptr) << row.name;
        EXPECT_EQ(outcome.paths, std::vector<std::string>{row.pathSeen}) << row.name;
        EXPECT_EQ(outcome.policyCount, 1) << row.name;
        std::vector<moduletest::Report> expected;
        if (*row.reason != '\0') {
            expected.push_back({2, "Binary", "Error.System.Access", row.reason});
        }
        EXPECT_EQ(outcome.reports, expected) << row.name;
        EXPECT_EQ(host->Interface_GetCount(), before) << row.name;
    }
}

TEST(MapFile, AHostWithoutAPolicyGivesNoData) {
    OrderContext context(nullptr, false);
    minihost::Variant argument = minihost::Variant::String("a.txt");
    minihost::Variant result;
    Tavrel::IVariant* arguments[] = {&argument};
    auto entry = moduletest::Module().Entry("tavrel_module_BinaryMapFile");
    EXPECT_EQ(entry(1, arguments, &result, moduletest::Module().Info(), &context), 0u);
    EXPECT_EQ(result.dataPointer(), nullptr);
    std::vector<moduletest::Report> const expected{
        {2, "Binary", "Error.System.Access", "Given File : 'a.txt' does not exist."}};
    EXPECT_EQ(context.reports, expected);
}

TEST(MapFile, ReadsARealFileThroughTheFilePolicy) {
    std::string const path = ::testing::TempDir() + "mapfile_test.bin";
    std::string const bytes("line one\n\0binary\xff", 17);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    auto mapped = moduletest::Call("BinaryMapFile", {minihost::Variant::String(path)});
    ASSERT_NE(mapped.result.dataPointer(), nullptr);
    EXPECT_EQ(mapped.result.dataPointer()->GetData(), nullptr);
    auto text = moduletest::Call("BinaryPartToString", {mapped.result, minihost::Variant::Number(9),
                                                        minihost::Variant::Number(100)});
    EXPECT_EQ(text.result.string(), bytes.substr(9));
    std::remove(path.c_str());
    auto missing = moduletest::Call("BinaryMapFile", {minihost::Variant::String(path)});
    EXPECT_EQ(missing.result.dataPointer(), nullptr);
    ASSERT_EQ(missing.reports.size(), 1u);
    EXPECT_EQ(missing.reports[0].reason, "Given File : '" + path + "' does not exist.");
}

}  // namespace
