#include "bench/BenchHost.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>

#include "minihost/host/FilePolicy.h"

namespace bench {

minihost::LoadedModule& ModuleAt(std::string const& path) {
    static std::map<std::string, std::unique_ptr<minihost::LoadedModule>> loaded;
    std::unique_ptr<minihost::LoadedModule>& module = loaded[path];
    if (!module) {
        std::string error;
        module = minihost::LoadedModule::Load(path, error);
        if (!module) {
            std::fprintf(stderr, "%s\n", error.c_str());
            std::abort();
        }
    }
    return *module;
}

minihost::LoadedModule& Module() {
    // NOTE: kept, since every call of an entry asks for the module's information.
    static minihost::LoadedModule& module = ModuleAt(TAVREL_MODULE_PATH);
    return module;
}

minihost::EntryFunction EntryAt(std::string const& path, std::string_view name) {
    std::string const full = "tavrel_module_" + std::string(name);
    minihost::EntryFunction const entry = ModuleAt(path).Entry(full);
    if (entry == nullptr) {
        std::fprintf(stderr, "%s has no entry %s\n", path.c_str(), full.c_str());
        std::abort();
    }
    return entry;
}

minihost::EntryFunction Entry(std::string_view name) { return EntryAt(TAVREL_MODULE_PATH, name); }

Host::Host() : mContext(Tavrel::AutoRefPtr<Tavrel::IPolicy>(new minihost::FilePolicy())) {
    mContext.SetErrorHandler([this](minihost::ErrorReport const&) { ++mReports; });
}

std::string const& PatternBytes(unsigned long long size) {
    // NOTE: kept for the whole run, so that the repetitions of a benchmark on 64 MiB do not
    // each spend longer making their input than measuring.
    static std::map<unsigned long long, std::string> made;
    auto [place, isNew] = made.try_emplace(size, size, '\0');
    if (isNew) {
        std::string& bytes = place->second;
        for (unsigned long long i = 0; i < size; ++i) {
            bytes[i] = static_cast<char>((i * 131 + i / 251) & 0xFF);
        }
    }
    return place->second;
}

Tavrel::AutoRefPtr<Tavrel::IDataRef> ModuleBuffer(std::string_view bytes) {
    Host host;
    minihost::Variant text = minihost::Variant::String(bytes);
    std::vector<Tavrel::IVariant*> arguments{&text};
    minihost::Variant result;
    host.Call(Entry("ToDataRef"), arguments, &result);
    return result.data();
}

bool Expect(benchmark::State& state, bool condition, char const* what) {
    if (!condition) {
        state.SkipWithError(what);
    }
    return condition;
}

}  // namespace bench
