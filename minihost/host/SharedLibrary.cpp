#include "minihost/host/SharedLibrary.h"

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "minihost/host/WindowsText.h"
#else
#include <dlfcn.h>
#endif

#include <cstring>

namespace minihost {

namespace {

// NOTE: both loaders search their library path for a bare name; a host loads a file.
std::string InCurrentDirectory(std::string const& path) {
    return path.find_first_of("/\\") == std::string::npos ? "./" + path : path;
}

#if defined(_WIN32)

// path (UTF-8) as a full path with backslashes, or false with why set.
// NOTE: LoadLibrary takes a path with slashes for a bare name, and with
// LOAD_WITH_ALTERED_SEARCH_PATH a relative path has no defined meaning; a full path names
// the one file.
bool FullLibraryPath(std::string const& path, std::wstring& full, std::string& why) {
    std::wstring wide;
    if (!Utf8ToWide(path, wide)) {
        why = "the path is no UTF-8 text";
        return false;
    }
    DWORD const needed = ::GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
    full.assign(needed, L'\0');
    DWORD const length =
        needed == 0 ? 0 : ::GetFullPathNameW(wide.c_str(), needed, full.data(), nullptr);
    if (length == 0 || length >= needed) {
        why = SystemErrorText(::GetLastError());
        return false;
    }
    full.resize(length);
    return true;
}

#endif

}  // namespace

#if defined(_WIN32)

// NOTE: the path is UTF-8, as every path of minihost on Windows. The system is told to
// answer a broken module with an error code instead of a dialog box that waits for a click.
void* OpenSharedLibrary(std::string const& path, std::string& why) {
    std::wstring full;
    if (!FullLibraryPath(InCurrentDirectory(path), full, why)) {
        return nullptr;
    }
    DWORD previousMode = 0;
    ::SetThreadErrorMode(SEM_FAILCRITICALERRORS, &previousMode);
    HMODULE const library = ::LoadLibraryExW(full.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    DWORD const error = ::GetLastError();
    ::SetThreadErrorMode(previousMode, nullptr);
    if (library == nullptr) {
        why = SystemErrorText(error);
    }
    return static_cast<void*>(library);
}

void* FindSymbol(void* library, char const* name) {
    FARPROC const symbol = ::GetProcAddress(static_cast<HMODULE>(library), name);
    void* address = nullptr;
    static_assert(sizeof(address) == sizeof(symbol));
    std::memcpy(&address, &symbol, sizeof(address));
    return address;
}

void CloseSharedLibrary(void* library) { ::FreeLibrary(static_cast<HMODULE>(library)); }

#else

void* OpenSharedLibrary(std::string const& path, std::string& why) {
    ::dlerror();
    void* const library = ::dlopen(InCurrentDirectory(path).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        char const* const text = ::dlerror();
        why = text != nullptr ? text : "unknown loader error";
    }
    return library;
}

void* FindSymbol(void* library, char const* name) { return ::dlsym(library, name); }

void CloseSharedLibrary(void* library) { ::dlclose(library); }

#endif

}  // namespace minihost
