#include "tests/hardening/LoadedBinary.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace hardening {

minihost::LoadedModule& Binary() {
    static std::unique_ptr<minihost::LoadedModule> const module = [] {
        std::string error;
        auto loaded = minihost::LoadedModule::Load(TAVREL_MODULE_PATH, error);
        if (!loaded) {
            (void)std::fprintf(stderr, "%s\n", error.c_str());
            std::abort();
        }
        return loaded;
    }();
    return *module;
}

minihost::EntryFunction EntryOf(std::string_view name) {
    minihost::EntryFunction const entry = Binary().Entry("tavrel_module_" + std::string(name));
    if (entry == nullptr) {
        (void)std::fprintf(stderr, "no entry tavrel_module_%.*s\n", static_cast<int>(name.size()),
                     name.data());
        std::abort();
    }
    return entry;
}

}  // namespace hardening
