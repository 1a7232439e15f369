// Options: minihost's command line, read into a plain structure, and the help text that
// describes every option. It checks only the form of the command line; whether a file or a
// directory exists is found out later by those who use it.
#pragma once

#include <string>
#include <vector>

namespace minihost {

enum class Mode {
    kScript,      // run the script file `scriptPath`
    kEval,        // run the statements `evalText` given with -e
    kStandardIn,  // no script: a prompt on a terminal, else the script read from standard input
    kDescribe,    // --describe
    kHelp,        // --help
};

struct Options {
    Mode mode = Mode::kStandardIn;
    std::string scriptPath;          // the script file named on the command line, or ""
    std::string evalText;            // the statements given with -e, or ""
    std::string module;              // --module; "" => the module next to the program
    bool strict = false;             // --strict
    bool echo = false;               // --echo
    bool full = false;               // --full
    bool allowAll = false;           // --allow-all
    std::vector<std::string> allow;  // each --allow, in order
};

// Reads argv[1..argc-1]; false with error set on a malformed command line. An option's value
// may follow as the next argument or after '=' ("--module=x"); "--" ends the options. At most
// one script is given, a file or -e; --describe and --help take the mode but keep the script.
//   {}                            => kStandardIn
//   {"t.tvl"}                     => kScript, scriptPath "t.tvl"
//   {"-e", "print 1"}             => kEval, evalText "print 1"
//   {"--describe", "--module", "m.so"} => kDescribe, module "m.so"
//   {"--", "-x.tvl"}              => kScript, scriptPath "-x.tvl"
//   {"--bogus"}                   => false, "unknown option '--bogus'"
//   {"--module"}                  => false, "option '--module' needs a value"
//   {"a.tvl", "b.tvl"}            => false, "more than one script: 'b.tvl'"
//   {"-e", "x", "a.tvl"}          => false, "more than one script: 'a.tvl'"
//   {"--echo", "--full", "t.tvl"} => kScript, echo, full
//   {"--strict=1"}                => false, "option '--strict' takes no value"
bool ParseOptions(int argc, char const* const* argv, Options& options, std::string& error);

// The help text, every option with what it does, ending in a line end.
std::string HelpText();

}  // namespace minihost
