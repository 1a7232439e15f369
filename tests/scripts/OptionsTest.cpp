#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "minihost/script/Options.h"
#include "tests/scripts/Rows.h"

namespace minihost {
namespace {

// The options in one line: "<mode> path=<p> eval=<e> module=<m> strict allow-all allow=<d>...",
// or "error: <text>".
std::string Read(std::vector<char const*> arguments) {
    arguments.insert(arguments.begin(), "minihost");
    Options options;
    std::string error;
    if (!ParseOptions(static_cast<int>(arguments.size()), arguments.data(), options, error)) {
        return "error: " + error;
    }
    static char const* const kModes[] = {"script", "eval", "stdin", "describe", "help"};
    std::string text = kModes[static_cast<int>(options.mode)];
    text += " path=" + options.scriptPath + " eval=" + options.evalText;
    text += " module=" + options.module;
    text += options.strict ? " strict" : "";
    text += options.allowAll ? " allow-all" : "";
    for (std::string const& directory : options.allow) {
        text += " allow=" + directory;
    }
    return text;
}

TEST(Options, ReadsTheCommandLine) {
    rows::Expect<std::vector<char const*>, std::string>(
        {
            // The plain forms are the script cases': stdin, eval, echo, strict, sandbox_allow.
            {{"-"}, "script path=- eval= module="},
            {{"--eval=x = 1"}, "eval path= eval=x = 1 module="},
            {{"--describe", "--module", "m.so"}, "describe path= eval= module=m.so"},
            {{"--module=m.so", "--describe", "t.tvl"}, "describe path=t.tvl eval= module=m.so"},
            {{"t.tvl", "--help", "--bogus-after-help-is-still-read"},
             "error: unknown option '--bogus-after-help-is-still-read'"},
            {{"--help", "t.tvl"}, "help path=t.tvl eval= module="},
            {{"--describe", "-e", "x"}, "describe path= eval=x module="},
            {{"--strict", "--allow", "a", "--allow=b", "--allow-all", "t.tvl"},
             "script path=t.tvl eval= module= strict allow-all allow=a allow=b"},
            {{"--", "--strict"}, "script path=--strict eval= module="},
            {{"-x"}, "error: unknown option '-x'"},
            {{"--module"}, "error: option '--module' needs a value"},
            {{"--strict=1"}, "error: option '--strict' takes no value"},
            {{"a.tvl", "b.tvl"}, "error: more than one script: 'b.tvl'"},
            {{"-e", "x", "a.tvl"}, "error: more than one script: 'a.tvl'"},
            {{"a.tvl", "-e", "x"}, "error: more than one script: '-e'"},
        },
        Read);
}

}  // namespace
}  // namespace minihost
