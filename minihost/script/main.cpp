// minihost: the stand-in for the Tavrel host. Loads the module as the host does, then runs
// a script file, statements given with -e, a script from standard input, or an interactive
// prompt; or describes the module. See HelpText() in minihost/script/Options.cpp for the
// options.
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "minihost/host/Context.h"
#include "minihost/host/SandboxPolicy.h"
#include "minihost/host/SystemFiles.h"
#include "minihost/script/Describe.h"
#include "minihost/script/Interpreter.h"
#include "minihost/script/Interruption.h"
#include "minihost/script/ModuleSetup.h"
#include "minihost/script/Options.h"
#include "minihost/script/ProgramSystem.h"
#include "minihost/script/Repl.h"

namespace {

using namespace minihost;

constexpr int kExitFailed = static_cast<int>(RunStatus::kFailed);

int Fail(std::string const& message) {
    std::cerr << "minihost: " << message << '\n';
    return kExitFailed;
}

// The module given with --module, or the one beside the program.
bool ModulePath(Options const& options, std::string& path, std::string& error) {
    if (!options.module.empty()) {
        path = options.module;
        return true;
    }
    std::vector<std::string> const candidates = DefaultModuleCandidates(ProgramDirectory());
    path = FindDefaultModule(candidates);
    if (path.empty()) {
        error = "no module found beside the program (looked for " + candidates[0] + " and " +
                candidates[1] + "); give one with --module PATH";
        return false;
    }
    return true;
}

// The sandbox: the script's directory (when there is a script) and the current directory,
// plus every --allow. Relative paths in the script are read against the script's directory.
bool MakePolicy(Options const& options, Tavrel::AutoRefPtr<SandboxPolicy>& policy,
                std::string& error) {
    std::string current;
    if (!ResolveRealPath("", ".", current)) {
        current.clear();
    }
    std::vector<std::string> allowed{current};
    std::string base = current;
    if (options.mode == Mode::kScript &&
        ResolveRealPath("", DirectoryOf(options.scriptPath), base)) {
        allowed.push_back(base);
    }
    for (std::string const& directory : options.allow) {
        std::string resolved;
        if (!ResolveRealPath("", directory, resolved) ||
            KindOfPath(resolved) != PathKind::kDirectory) {
            error = "--allow: '" + directory + "' is not a directory";
            return false;
        }
        allowed.push_back(resolved);
    }
    policy.reset(new SandboxPolicy(base, allowed, options.allowAll));
    return true;
}

// The text to run and the name that messages give it: the -e statements ("-e"), the script
// file (its path as given) or standard input ("stdin"). False with error set when the file or
// standard input cannot be read.
bool ScriptText(Options const& options, std::string& text, std::string& name, std::string& error) {
    if (options.mode == Mode::kEval) {
        text = options.evalText;
        name = "-e";
        return true;
    }
    if (options.mode == Mode::kScript) {
        name = options.scriptPath;
        if (!ReadWholeFile(options.scriptPath, text, error)) {
            error = "cannot read script '" + options.scriptPath + "': " + error;
            return false;
        }
        return true;
    }
    name = "stdin";
    if (!ReadStandardInput(text, error)) {
        error = "cannot read standard input: " + error;
        return false;
    }
    return true;
}

// Runs the script, the -e statements, standard input or the prompt.
int RunScripts(Options const& options, ReadyModule& ready, Context& context,
               SandboxPolicy& sandbox) {
    InterpreterSettings const settings{
        options.strict, options.mode == Mode::kStandardIn && StandardInputIsTerminal(),
        options.echo, options.full};
    Interpreter interpreter(*ready.module, ready.table, context, std::cout, std::cerr, settings);
    interpreter.WatchSandbox(&sandbox);
    if (settings.prompt) {
        return RunPrompt(interpreter, ready, context);
    }
    std::string text;
    std::string name;
    std::string error;
    if (!ScriptText(options, text, name, error)) {
        return Fail(error);
    }
    ArmInterruption(context);
    int const status = static_cast<int>(interpreter.Run(text, name));
    DisarmInterruption();
    return status;
}

int Main(std::vector<std::string> const& arguments) {
    std::vector<char const*> argv;
    argv.reserve(arguments.size());
    for (std::string const& argument : arguments) {
        argv.push_back(argument.c_str());
    }
    Options options;
    std::string error;
    if (!ParseOptions(static_cast<int>(argv.size()), argv.data(), options, error)) {
        return Fail(error + "\nTry 'minihost --help'.");
    }
    if (options.mode == Mode::kHelp) {
        std::cout << HelpText();
        return 0;
    }
    std::string modulePath;
    ReadyModule ready;
    if (!ModulePath(options, modulePath, error) || !OpenModule(modulePath, ready, error)) {
        return Fail(error);
    }
    if (options.mode == Mode::kDescribe) {
        Describe(*ready.module, ready.table, std::cout);
        return 0;
    }
    Tavrel::AutoRefPtr<SandboxPolicy> policy;
    if (!MakePolicy(options, policy, error)) {
        return Fail(error);
    }
    Context context(policy);
    int const status = RunScripts(options, ready, context, *policy.get());
    DisarmInterruption();
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        UseBinaryStandardStreams();
        return Main(ProgramArguments(argc, argv));
    } catch (std::exception const& exception) {
        return Fail(std::string("stopped: ") + exception.what());
    }
}
