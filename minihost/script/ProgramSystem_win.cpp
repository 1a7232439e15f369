// ProgramSystem on Windows: GetCommandLineW, GetModuleFileNameW, GetConsoleMode and the C
// runtime's _wfopen, whose errno gives the same words for a missing file as elsewhere.
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// shellapi.h needs windows.h first.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "minihost/host/SystemFiles.h"
#include "minihost/host/WindowsText.h"
#include "minihost/script/ProgramSystem.h"

namespace minihost {

namespace {

// All bytes of stream until its end; false with error set.
bool ReadStream(std::FILE* stream, std::string& text, std::string& error) {
    char block[65536];
    std::size_t n;
    while ((n = std::fread(block, 1, sizeof block, stream)) > 0) {
        text.append(block, n);
    }
    if (std::ferror(stream)) {
        error = std::strerror(errno);
        return false;
    }
    return true;
}

bool HasDrive(std::string const& path) { return path.size() >= 2 && path[1] == ':'; }

}  // namespace

std::vector<std::string> ProgramArguments(int argc, char** argv) {
    int count = 0;
    wchar_t** const wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (wide == nullptr) {
        return std::vector<std::string>(argv, argv + argc);
    }
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) {
        arguments.push_back(WideToUtf8(wide[i]));
    }
    ::LocalFree(wide);
    return arguments;
}

void UseBinaryStandardStreams() {
    ::_setmode(::_fileno(stdin), _O_BINARY);
    ::_setmode(::_fileno(stdout), _O_BINARY);
    ::_setmode(::_fileno(stderr), _O_BINARY);
}

std::string ProgramPath() {
    std::wstring path(MAX_PATH, L'\0');
    while (true) {
        DWORD const length =
            ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) {
            return "";
        }
        if (length < path.size()) {
            path.resize(length);
            return WideToUtf8(path);
        }
        path.resize(path.size() * 2);  // cut short: the whole path did not fit
    }
}

std::string DirectoryOf(std::string const& path) {
    std::size_t const slash = path.find_last_of("/\\");
    if (slash == std::string::npos) {
        return HasDrive(path) ? path.substr(0, 2) : ".";  // "C:t.tvl" => "C:"
    }
    bool const isRoot = slash == 0 || (slash == 2 && HasDrive(path));
    return path.substr(0, isRoot ? slash + 1 : slash);
}

bool StandardInputIsTerminal() {
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(STD_INPUT_HANDLE), &mode) != 0;
}

bool ReadWholeFile(std::string const& path, std::string& text, std::string& error) {
    // NOTE: opening a directory fails with "Permission denied" here; it is named as elsewhere.
    if (KindOfPath(path) == PathKind::kDirectory) {
        error = std::strerror(EISDIR);
        return false;
    }
    std::wstring wide;
    if (!Utf8ToWide(path, wide)) {
        error = "the path is no UTF-8 text";
        return false;
    }
    std::FILE* const file = ::_wfopen(wide.c_str(), L"rb");
    if (file == nullptr) {
        error = std::strerror(errno);
        return false;
    }
    bool const ok = ReadStream(file, text, error);
    (void)std::fclose(file);
    return ok;
}

bool ReadStandardInput(std::string& text, std::string& error) {
    return ReadStream(stdin, text, error);
}

}  // namespace minihost
