// FuzzCheck: how a fuzz target reports a broken rule. It prints which rule broke, and for
// what, and aborts, so that libFuzzer records the input as a crash. It checks nothing itself.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace tavrel_testing {

// Prints "broken rule in <where>: <rule>" and aborts.
[[noreturn]] inline void Fail(char const* rule, std::string const& where) {
    (void)std::fprintf(stderr, "broken rule in %s: %s\n", where.c_str(), rule);
    std::abort();
}

// Fail(rule, where) unless holds.
inline void Require(bool holds, char const* rule, std::string const& where) {
    if (!holds) {
        Fail(rule, where);
    }
}

}  // namespace tavrel_testing
