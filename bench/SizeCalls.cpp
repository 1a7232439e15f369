// The program that bench/instructions.sh runs under callgrind: it calls the Size entry, or the
// hand-written entry beside it in the same shared object (bench/HandWrittenSize.h), a given
// number of times with the same DATAREF of 100 bytes, exactly as BindingBench.cpp times them.
// It measures nothing itself; callgrind counts the instructions inside the entry it calls.
//
//   tavrel_size_calls entry|hand COUNT     exit status 0 when every call gave the size
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "bench/BenchHost.h"
#include "bench/HandWrittenSize.h"
#include "host/IVariant.h"

int main(int argc, char** argv) {
    if (argc != 3 ||
        (std::string_view(argv[1]) != "entry" && std::string_view(argv[1]) != "hand")) {
        std::fprintf(stderr, "usage: tavrel_size_calls entry|hand COUNT\n");
        return 2;
    }
    minihost::EntryFunction const entry =
        std::string_view(argv[1]) == "entry" ? bench::Entry("BinarySize") : &bench::HandWrittenSize;
    long const count = std::strtol(argv[2], nullptr, 10);
    bench::Host host;
    std::string const bytes = bench::PatternBytes(100);
    minihost::Variant argument = minihost::Variant::DataRef(bench::ModuleBuffer(bytes));
    std::vector<Tavrel::IVariant*> arguments{&argument};
    minihost::Variant result;
    bool allGood = true;
    for (long k = 0; k < count; ++k) {
        allGood = host.Call(entry, arguments, &result) == 0 && allGood;
    }
    allGood = allGood && result.number() == 100.0 && host.Reports() == 0;
    return allGood ? 0 : 1;
}
