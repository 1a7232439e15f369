#include "minihost/host/SharedLibrary.h"

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
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

// The text of the thread's last Windows error, without its line end.
std::string LastErrorText() {
    DWORD const code = ::GetLastError();
    char* text = nullptr;
    DWORD const length = ::FormatMessageA(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, 0, reinterpret_cast<char*>(&text), 0, nullptr);
    std::string why = length != 0 ? std::string(text, length) : "error " + std::to_string(code);
    ::LocalFree(text);
    while (!why.empty() && (why.back() == '\n' || why.back() == '\r' || why.back() == ' ')) {
        why.pop_back();
    }
    return why;
}

// NOTE: LoadLibrary wants backslashes; a path with slashes is taken as a bare name.
std::string WithBackslashes(std::string path) {
    for (char& c : path) {
        c = c == '/' ? '\\' : c;
    }
    return path;
}

#endif

}  // namespace

#if defined(_WIN32)

void* OpenSharedLibrary(std::string const& path, std::string& why) {
    HMODULE const library = ::LoadLibraryExA(WithBackslashes(InCurrentDirectory(path)).c_str(),
                                             nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library == nullptr) {
        why = LastErrorText();
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
