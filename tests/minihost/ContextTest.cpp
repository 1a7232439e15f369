#include <gtest/gtest.h>
#include <vector>

#include "minihost/host/Context.h"
#include "minihost/host/FilePolicy.h"

namespace minihost {
namespace {

using Tavrel::AutoRefPtr;
using Tavrel::IPolicy;

// The reports with every field are the module tests', setting the interruption flag the
// interpreter's.
TEST(Context, DropsReportsWithoutAHandlerAndSharesThePolicy) {
    AutoRefPtr<IPolicy> policy(new FilePolicy());
    {
        Context context(policy);
        context.Interface_TriggerErrorHandler(2, "Binary", "dropped", "no handler yet");
        std::vector<std::string> seen;
        context.SetErrorHandler([&seen](ErrorReport const& r) {
            seen.push_back(std::to_string(r.severity) + "|" + r.module + "|" + r.error + "|" +
                           r.reason);
        });
        context.Interface_TriggerErrorHandler(7, nullptr, nullptr, nullptr);
        EXPECT_EQ(seen, std::vector<std::string>{"7|||"});

        IPolicy* raw = context.Interface_GetPolicy();
        EXPECT_EQ(raw->Interface_GetCount(), 3) << "ours, the context's, the one handed out";
        raw->Release();
        context.Interrupt();
        context.ClearInterrupt();
        EXPECT_FALSE(context.Interface_IsInterrupted());
    }
    EXPECT_EQ(policy->Interface_GetCount(), 1);
    Context withoutPolicy{AutoRefPtr<IPolicy>()};
    EXPECT_NE(dynamic_cast<FilePolicy*>(withoutPolicy.GetPolicy().get()), nullptr);
}

}  // namespace
}  // namespace minihost
