// Binary.MapFile: the module hands the path to the host's policy and passes on its answer.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "minihost/host/Context.h"
#include "minihost/host/MemoryBuffer.h"
#include "minihost/host/Variant.h"
#include "object/InterfaceImpl.h"
#include "tests/module/ModuleHarness.h"

namespace {

using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;
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

// Each row with a policy that answers with the host's buffer or with none, or without a
// policy; the reports, the result and the paths the policy saw, and every reference given back.
TEST(MapFile, PassesOnThePolicysAnswer) {
    AutoRefPtr<IDataRef> host(new minihost::MemoryBuffer("content", {false, 0}));
    // clang-format off
    struct Row { std::string path; bool giveBuffer, interrupted; char const *reason, *pathSeen; };
    Row const rows[] = {  // reason "": no report; pathSeen null: a host without a policy
        {"a.txt", true, false, "", "a.txt"},
        {"/no/such", false, false, "Given File : '/no/such' does not exist.", "/no/such"},
        {"", false, false, "Given File : '' does not exist.", ""},
        {std::string("ab\0cd", 5), false, false, "Given File : 'ab", "ab"},
        {"x", false, true, "", "x"}, {"x", true, true, "", "x"},
        {"a.txt", false, false, "Given File : 'a.txt' does not exist.", nullptr},
    };
    // clang-format on
    for (Row const& row : rows) {
        SCOPED_TRACE("path " + row.path + (row.interrupted ? ", interrupted" : ""));
        int const before = host->Interface_GetCount();
        bool const hasPolicy = row.pathSeen != nullptr;
        AutoRefPtr<FixedPolicy> policy(
            hasPolicy ? new FixedPolicy(row.giveBuffer ? host : AutoRefPtr<IDataRef>()) : nullptr);
        std::vector<Report> reports;
        {
            minihost::Context context{AutoRefPtr<Tavrel::IPolicy>(policy)};
            context.SetErrorHandler([&reports](minihost::ErrorReport const& report) {
                reports.push_back({report.severity, report.module, report.error, report.reason});
            });
            if (row.interrupted) {
                context.Interrupt();
            }
            minihost::Variant argument = minihost::Variant::String(row.path);
            minihost::Variant result;
            EXPECT_EQ(tavrel_testing::CallEntry("BinaryMapFile", {&argument}, &result, &context),
                      0u);
            EXPECT_EQ(result.dataPointer(), row.giveBuffer ? host.get() : nullptr);
        }
        std::vector<Report> expected;
        if (*row.reason != '\0') {
            expected.push_back({2, "Binary", "Error.System.Access", row.reason});
        }
        EXPECT_EQ(reports, expected);
        if (hasPolicy) {
            EXPECT_EQ(policy->paths, std::vector<std::string>{row.pathSeen});
            EXPECT_EQ(policy->Interface_GetCount(), 1);
        }
        policy = AutoRefPtr<FixedPolicy>();
        EXPECT_EQ(host->Interface_GetCount(), before);
    }
}

}  // namespace
