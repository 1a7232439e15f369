// BenchHost: what the benchmarks share to drive the module the way a host does: the module
// opened once through the minihost loader, its entries by name, a context that counts the
// error reports it receives, and module buffers made through the ToDataRef entry.
// It measures nothing itself and never links the module's code directly.
#pragma once

#include <benchmark/benchmark.h>
#include <string>
#include <string_view>
#include <vector>

#include "minihost/host/Context.h"
#include "minihost/host/ModuleLoader.h"
#include "minihost/host/Variant.h"
#include "object/AutoRefPtr.h"
#include "object/IDataRef.h"

namespace bench {

inline constexpr unsigned long long kKiB = 1024;
inline constexpr unsigned long long kMiB = 1024 * kKiB;

// The module under measurement, opened on first use; aborts with the loader's reason when
// it cannot be opened. ModuleAt: the module at path, opened the same way.
minihost::LoadedModule& Module();
minihost::LoadedModule& ModuleAt(std::string const& path);

// The entry "tavrel_module_<name>" of the module under measurement, or of the one at path;
// aborts when the module lacks it.
minihost::EntryFunction Entry(std::string_view name);
minihost::EntryFunction EntryAt(std::string const& path, std::string_view name);

// One calling context with a file policy, as the host gives every entry. Reports are
// counted, not kept, so that a benchmark can tell that its calls succeeded.
class Host {
public:
    Host();

    // Calls entry with arguments and result, exactly as the host does; gives the status word.
    unsigned int Call(minihost::EntryFunction entry, std::vector<Tavrel::IVariant*>& arguments,
                      Tavrel::IVariant* result) {
        return entry(static_cast<int>(arguments.size()), arguments.data(), result, Module().Info(),
                     &mContext);
    }

    Tavrel::IContext* Context() { return &mContext; }
    // Error reports received since this host was made.
    long Reports() const { return mReports; }

private:
    minihost::Context mContext;
    long mReports = 0;
};

// size bytes of a fixed pattern with every byte value in it, NUL included; made once per
// size and kept until the program ends.
std::string const& PatternBytes(unsigned long long size);

// A new module buffer (a Data) holding bytes, made through the ToDataRef entry.
Tavrel::AutoRefPtr<Tavrel::IDataRef> ModuleBuffer(std::string_view bytes);

// Ends the benchmark with an error when what was measured did not give the expected
// result, so that no figure comes from a broken path. Gives false in that case.
bool Expect(benchmark::State& state, bool condition, char const* what);

}  // namespace bench
