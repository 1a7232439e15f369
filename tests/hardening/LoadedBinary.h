// LoadedBinary: the built module, loaded once per test program through minihost's loader
// (dlopen, as the host loads it), and its entries by their short names. A module that does
// not load fails the test program at once.
#pragma once

#include <string_view>

#include "minihost/ModuleLoader.h"

namespace hardening {

minihost::LoadedModule& Binary();

// "BinarySize" => tavrel_module_BinarySize; a name that is not an entry aborts.
minihost::EntryFunction EntryOf(std::string_view name);

}  // namespace hardening
