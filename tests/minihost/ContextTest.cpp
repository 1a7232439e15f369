#include <gtest/gtest.h>
#include <vector>

#include "minihost/host/Context.h"

namespace minihost {
namespace {

// The shared policy, the default one and the reports with every field are the module tests'
// (OperationsTest's MapFile rows run through this context), the interruption flag the
// interpreter's and the prompt's. Here, what the module never sends: a report before a handler
// is set, and null texts.
TEST(Context, DropsReportsWithoutAHandlerAndTakesNullTextsAsEmpty) {
    Context context{Tavrel::AutoRefPtr<Tavrel::IPolicy>()};
    context.Interface_TriggerErrorHandler(2, "Binary", "dropped", "no handler yet");
    std::vector<std::string> seen;
    context.SetErrorHandler([&seen](ErrorReport const& r) {
        seen.push_back(std::to_string(r.severity) + "|" + r.module + "|" + r.error + "|" +
                       r.reason);
    });
    context.Interface_TriggerErrorHandler(7, nullptr, nullptr, nullptr);
    EXPECT_EQ(seen, std::vector<std::string>{"7|||"});
}

}  // namespace
}  // namespace minihost
