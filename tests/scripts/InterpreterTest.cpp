#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>

#include "minihost/host/FilePolicy.h"
#include "minihost/script/Interpreter.h"
#include "minihost/script/ModuleSetup.h"
#include "tests/scripts/Rows.h"

namespace minihost {
namespace {

// A policy that plays a Ctrl-C arriving while the host looks for the file: it sets the
// context's interruption flag and finds nothing.
class InterruptingPolicy final : public FilePolicy {
public:
    Tavrel::IDataRef* Interface_LoadData(Tavrel::IContext* context, char const* /*path*/) override {
        static_cast<Context*>(context)->Interrupt();
        return nullptr;
    }
};

// The built module with a context and an interpreter whose streams the test reads.
class Session {
public:
    explicit Session(Tavrel::AutoRefPtr<Tavrel::IPolicy> policy = {},
                     InterpreterSettings settings = {})
        : mContext(std::move(policy)) {
        std::string error;
        if (!OpenModule(TAVREL_MODULE_PATH, mReady, error)) {
            throw std::runtime_error(error);
        }
        mInterpreter = std::make_unique<Interpreter>(*mReady.module, mReady.table, mContext, mOut,
                                                     mErr, settings);
    }

    // Runs source; gives "<status>|<output>|<errors>" and empties the streams.
    std::string Run(std::string const& source) {
        int const status = static_cast<int>(mInterpreter->Run(source, "t"));
        std::string text = std::to_string(status) + "|" + mOut.str() + "|" + mErr.str();
        mOut.str("");
        mErr.str("");
        return text;
    }

private:
    ReadyModule mReady;
    Context mContext;
    std::ostringstream mOut;
    std::ostringstream mErr;
    std::unique_ptr<Interpreter> mInterpreter;
};

// The prompt shows the value of each expression statement; an interrupted run stops after the
// statement without a report (at the prompt the word stands below the ^C the terminal shows).
TEST(Interpreter, ThePromptAndAnInterruptedRun) {
    Tavrel::AutoRefPtr<Tavrel::IPolicy> const interrupting(new InterruptingPolicy());
    InterpreterSettings const atPrompt{false, true, false, false};
    EXPECT_EQ(Session({}, atPrompt).Run("ToDataRef(\"a\", 0, 1); 2; x = 3"),
              "0|DATAREF(1) \"a\"\n2\n|");
    EXPECT_EQ(Session(interrupting).Run("print \"a\"\nprint Binary.MapFile(\"f\")\nprint 1"),
              "1|\"a\"\nnull\n|t:2:1: interrupted\n");
    EXPECT_EQ(Session(interrupting, atPrompt).Run("Binary.MapFile(\"f\")"),
              "1|null\n|\nt:1:1: interrupted\n");
}

// Rows run in order in one session: variables last across runs, a faulty run defines nothing,
// and each fault says what to write instead, where it can.
TEST(Interpreter, VariablesAndFaults) {
    Session session;
    rows::Expect<std::string, std::string>(
        {
            {"x = ToDataRef(\"ab\")", "0||"},
            {"print Size(x)", "0|2\n|"},
            // Names are checked before anything runs, also inside the arguments of a call.
            {"y = x\nprint Size(z)", "2||t:2:12: unknown variable 'z'\n"},
            {"print y", "2||t:1:7: unknown variable 'y'\n"},
            // A failed binding stops the run, but what ran before it stays done.
            {"y = x\nSize(\"s\")\nz = 1",
             "2||t:2:1: argument 1 of Size (DATAREF): expected DATAREF, got STRING (status "
             "65538)\n"},
            {"print y", "0|DATAREF(2) \"ab\"\n|"},
            {"print z", "2||t:1:7: unknown variable 'z'\n"},
            {"Size(y)", "0||"},
            {"greeting = y", "0||"},
            {"print greting", "2||t:1:7: unknown variable 'greting'; did you mean 'greeting'?\n"},
            {"quit",
             "2||t:1:1: unknown variable 'quit'; help, quit and exit are commands of the "
             "interactive prompt, alone on a line\n"},
            {"size(greeting, 1)",
             "2||t:1:1: no function 'size'; did you mean 'Size'? But no form of 'Size' takes 2 "
             "arguments; there is:\n  Size (DATAREF)\n"},
            {"call tavrel_module_BinarySise(1)",
             "2||t:1:1: unknown entry 'tavrel_module_BinarySise'; did you mean "
             "'tavrel_module_BinarySize' or 'tavrel_module_BinarySlice'?\n"},
            {"dump 5", "2||t:1:6: dump shows a DATAREF or a STRING, not NUMBER\n"},
            {"dump greeting, \"1\"", "2||t:1:16: dump: the offset must be a NUMBER, not STRING\n"},
            {"dump greeting, 0, -2", "2||t:1:19: dump: the count -2 is negative\n"},
        },
        [&session](std::string const& source) { return session.Run(source); });
}

}  // namespace
}  // namespace minihost
