#include "minihost/script/Options.h"

#include <string_view>

#include "minihost/script/ModuleSetup.h"

namespace minihost {

namespace {

// One argument split into the option's name and the value written after '=', if any.
struct Split {
    std::string_view name;
    std::string_view value;
    bool hasValue = false;
};

Split SplitOption(std::string_view argument) {
    std::size_t const equals = argument.find('=');
    if (argument.rfind("--", 0) != 0 || equals == std::string_view::npos) {
        return Split{argument, {}, false};
    }
    return Split{argument.substr(0, equals), argument.substr(equals + 1), true};
}

class Reader {
public:
    Reader(int argc, char const* const* argv, Options& options)
        : mArgc(argc), mArgv(argv), mOptions(options) {}

    bool Run(std::string& error) {
        bool optionsEnded = false;
        for (mIndex = 1; mIndex < mArgc; ++mIndex) {
            std::string_view const argument = mArgv[mIndex];
            bool ok = true;
            if (optionsEnded || argument.size() < 2 || argument[0] != '-') {
                ok = SetScript(argument, Mode::kScript, error);
            } else if (argument == "--") {
                optionsEnded = true;
            } else {
                ok = ReadOption(SplitOption(argument), error);
            }
            if (!ok) {
                return false;
            }
        }
        return true;
    }

private:
    // The run's one script: the file's path (kScript) or the statements of -e (kEval).
    bool SetScript(std::string_view text, Mode mode, std::string& error) {
        bool const eval = mode == Mode::kEval;
        if (mHasScript) {
            error = "more than one script: '" + std::string(eval ? "-e" : text) + "'";
            return false;
        }
        mHasScript = true;
        if (mOptions.mode != Mode::kDescribe && mOptions.mode != Mode::kHelp) {
            mOptions.mode = mode;
        }
        (eval ? mOptions.evalText : mOptions.scriptPath) = std::string(text);
        return true;
    }

    // The option's value: after '=' or the next argument.
    bool Value(Split const& option, std::string& value, std::string& error) {
        if (option.hasValue) {
            value = std::string(option.value);
            return true;
        }
        if (mIndex + 1 >= mArgc) {
            error = "option '" + std::string(option.name) + "' needs a value";
            return false;
        }
        value = mArgv[++mIndex];
        return true;
    }

    bool Flag(Split const& option, bool& flag, std::string& error) {
        if (option.hasValue) {
            error = "option '" + std::string(option.name) + "' takes no value";
            return false;
        }
        flag = true;
        return true;
    }

    bool SetMode(Split const& option, Mode mode, std::string& error) {
        bool unused = false;
        if (!Flag(option, unused, error)) {
            return false;
        }
        if (mOptions.mode != Mode::kHelp) {
            mOptions.mode = mode;
        }
        return true;
    }

    bool ReadOption(Split const& option, std::string& error) {
        std::string value;
        if (option.name == "-h" || option.name == "--help") {
            return SetMode(option, Mode::kHelp, error);
        }
        if (option.name == "--describe") {
            return SetMode(option, Mode::kDescribe, error);
        }
        if (option.name == "--strict") {
            return Flag(option, mOptions.strict, error);
        }
        if (option.name == "--allow-all") {
            return Flag(option, mOptions.allowAll, error);
        }
        if (option.name == "--echo") {
            return Flag(option, mOptions.echo, error);
        }
        if (option.name == "--full") {
            return Flag(option, mOptions.full, error);
        }
        if (option.name == "-e" || option.name == "--eval") {
            return Value(option, value, error) && SetScript(value, Mode::kEval, error);
        }
        if (option.name == "--module") {
            return Value(option, mOptions.module, error);
        }
        if (option.name == "--allow") {
            bool const ok = Value(option, value, error);
            mOptions.allow.push_back(value);
            return ok;
        }
        error = "unknown option '" + std::string(option.name) + "'";
        return false;
    }

    int mArgc;
    char const* const* mArgv;
    Options& mOptions;
    int mIndex = 1;
    bool mHasScript = false;
};

}  // namespace

bool ParseOptions(int argc, char const* const* argv, Options& options, std::string& error) {
    options = Options{};
    error.clear();
    return Reader(argc, argv, options).Run(error);
}

std::string HelpText() {
    std::string const module = kDefaultModuleFile;
    return R"(Usage: minihost [OPTION]... [SCRIPT.tvl]
       minihost [OPTION]... -e STATEMENTS
       minihost --describe [--module PATH]

Runs Tavrel scripts against the Binary module, loading it as the Tavrel host does. With no
script, minihost gives an interactive prompt on a terminal and otherwise reads the script
from standard input. At the prompt, help lists the functions and statements, help NAME
shows one, Tab completes names (and file names inside a string), a line that ends after
'(' or ',' goes on with the next, and quit, exit or the end of input leave.

Options:
  -e, --eval STATEMENTS  run STATEMENTS (separated by ';' or line ends) instead of a file
  --describe             print the module's name and file, versions, state, platforms,
                         dependencies and its script functions as its definition text gives
                         them; exit
  --module PATH          load the module from PATH instead of the one installed beside the
                         program (<prefix>/lib/tavrel/modules/)" +
           module + R"(, or in the build
                         tree ../module/)" +
           module + R"()
  --strict               stop at the first error report from the module
  --echo                 print each statement, with its file and line, before what it
                         prints or reports, and each comment line before it:
                         t.tvl:3> print Size(d)
  --full                 print STRING and DATAREF values whole; without it a DATAREF, and a
                         STRING longer than 256 bytes, show their size and first 48 bytes
  --allow DIR            let Binary.MapFile read files under DIR as well (repeatable); by
                         default it reads only under the script's directory and the
                         current directory
  --allow-all            let Binary.MapFile read any file the user can read
  -h, --help             print this help and exit

Examples:
  minihost                               the prompt: type help, then Binary.Sl and Tab
  minihost --echo examples/tour.tvl      the tour, each statement before its result
  minihost -e 'dump ToDataRef("Hi\r\n")'  the bytes in hex: 00000000  48 69 0d 0a ...
  minihost --full -e 'print ToString(Binary.MapFile("notes.txt"))'   the whole text
  minihost --describe                    the module file loaded, and its functions

Exit status:
  0  the script ran without error reports
  1  the module reported errors (or the run was interrupted with Ctrl-C)
  2  a malformed script, an unknown name, a failed binding, a missing script file, a
     module that cannot be loaded, or a malformed command line
)";
}

}  // namespace minihost
