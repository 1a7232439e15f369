// SharedLibrary: the system's loader in three calls, so that the module loader reads the same
// on every platform: dlopen/dlsym/dlclose where they exist, LoadLibrary/GetProcAddress/
// FreeLibrary on Windows. It knows nothing of the module's names; it keeps no state.
#pragma once

#include <string>

namespace minihost {

// Opens the shared library file at path, binding every symbol now and sharing none with the
// program; null with why set to the loader's own words when it cannot. A path without a
// directory names a file in the current directory, never one found on the library path.
//   "/no/such.so" => null, why "...: cannot open shared object file: No such file..."
//   Windows: the path is UTF-8; why is the system's words for the error
//   ("The specified module could not be found.", wine: "Module not found.")
void* OpenSharedLibrary(std::string const& path, std::string& why);

// The address of the exported name in library, or null.
void* FindSymbol(void* library, char const* name);

// Closes what OpenSharedLibrary opened.
void CloseSharedLibrary(void* library);

}  // namespace minihost
