// Interpreter: runs scripts against a loaded module, the way the host would. Each run parses
// and checks the whole text first, then runs its statements in order. A call is resolved
// through the module's definition text and made through the exported entry, with host
// variants as arguments and result. Error reports from the module go to the error stream
// with the place of the call, and the script goes on; a failed binding stops it. A file that
// the sandbox refused adds a line that names it and the option that would let it in.
// Standard output is flushed before anything goes to the error stream, so that both keep
// their order when they meet in one pipe.
// Variables live as long as the interpreter, across runs (so an interactive session keeps
// them). It neither loads modules nor installs signal handlers: the program does that.
#pragma once

#include <array>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "minihost/host/Context.h"
#include "minihost/host/ModuleLoader.h"
#include "minihost/host/SandboxPolicy.h"
#include "minihost/host/Variant.h"
#include "minihost/script/Ast.h"
#include "minihost/script/FunctionTable.h"

namespace minihost {

// What a run gives; the numbers are the program's exit statuses.
enum class RunStatus : int {
    kClean = 0,    // no report, no fault
    kReports = 1,  // the module reported errors, or the run was interrupted
    kFailed = 2,   // a parse or check error, a failed binding, or no form for the types
};

struct InterpreterSettings {
    // Stop at the first error report.
    bool strict = false;
    // The interactive prompt: print the value of a statement that is only an expression, and
    // put the word that a Ctrl-C interrupted a statement on a line of its own.
    bool prompt = false;
    // --echo: print each statement, and each comment on a line of its own before it, ahead
    // of what the statement prints: "<file>:<line>> <statement as written>"; the comments
    // after the last statement at the end.
    bool echo = false;
    // --full: print STRING and DATAREF values whole (ValuePrinter).
    bool full = false;
};

class Interpreter {
public:
    // Installs its own error handler on context; module, table and context must outlive it.
    // Every signature's entry must be exported by module (ModuleSetup checks that).
    Interpreter(LoadedModule& module, FunctionTable const& table, Context& context,
                std::ostream& out, std::ostream& err, InterpreterSettings settings);
    // Removes the error handler and drops every variable (releasing their buffers).
    ~Interpreter();

    Interpreter(Interpreter const&) = delete;
    Interpreter& operator=(Interpreter const&) = delete;

    // Parses, checks and runs source; file names it in messages, and its lines count from
    // firstLine. Messages (faults, reports) go to err as "<file>:<line>:<column>: ...";
    // what print shows goes to out.
    //   a malformed script or an unknown name  => kFailed, nothing of it runs
    //   a failed binding                       => kFailed, the statements after it do not run
    //   error reports                          => kReports (strict: stops after the first)
    //   the context interrupted                => kReports, stops after the statement in
    //                                             progress with "interrupted"
    RunStatus Run(std::string_view source, std::string const& file, int firstLine = 1);

    // The names of the variables assigned so far.
    std::set<std::string> VariableNames() const;

    // Names each path that sandbox refuses during a call, right after the call's reports.
    // sandbox must outlive the interpreter; null stops it.
    void WatchSandbox(SandboxPolicy* sandbox) { mSandbox = sandbox; }

private:
    // Prints the comments on lines of their own after the last statement echoed and before
    // the line before.
    void EchoComments(int before, std::vector<std::string_view> const& lines, int firstLine);
    // Prints the comments on lines of their own before statement, then statement itself.
    void Echo(Statement const& statement, std::vector<std::string_view> const& lines,
              int firstLine);
    void Execute(Statement const& statement);
    void ExecuteDump(Dump const& dump);
    // The offset and the count that a dump gives, evaluated (none: 0 and the largest number).
    std::array<unsigned long long, 2> DumpBounds(Dump const& dump);
    Variant Evaluate(Expression const& expression);
    Variant EvaluateCall(Call const& call, SourcePosition position);
    Signature const& Resolve(Call const& call, std::vector<Variant> const& arguments,
                             SourcePosition position) const;
    unsigned int Invoke(std::string const& entry, std::vector<Variant>& arguments, Variant& result);
    // Prints the reports that the last call made, at its place; stops a strict run.
    void FlushReports(SourcePosition position);

    LoadedModule& mModule;
    FunctionTable const& mTable;
    Context& mContext;
    std::ostream& mOut;
    std::ostream& mErr;
    InterpreterSettings mSettings;
    SandboxPolicy* mSandbox = nullptr;
    std::map<std::string, Variant> mVariables;
    std::vector<ErrorReport> mPending;
    std::string mFile;
    int mEchoedUpTo = 0;  // the last line that Echo has dealt with
    bool mHadReports = false;
};

}  // namespace minihost
