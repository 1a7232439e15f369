#include "testing/TestFiles.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <system_error>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#endif

namespace tavrel_testing {

namespace {

// Six letters and digits drawn at random, for a fresh name.
std::string RandomSuffix() {
    static constexpr char kLetters[] =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::random_device device;
    std::mt19937_64 random(
        device() ^
        static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()));
    std::uniform_int_distribution<std::size_t> pick(0, sizeof kLetters - 2);
    std::string suffix(6, ' ');
    for (char& c : suffix) {
        c = kLetters[pick(random)];
    }
    return suffix;
}

#if defined(_WIN32)

constexpr char kSeparator = '\\';

// The directory as the system names it for an open handle (GetFinalPathNameByHandleW, without
// "\\?\"), so that it compares equal to the real paths that the sandbox sees.
std::string ResolvedRoot(std::filesystem::path const& directory) {
    HANDLE const handle =
        ::CreateFileW(directory.c_str(), FILE_READ_ATTRIBUTES,
                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("cannot open " + directory.string());
    }
    std::wstring final(32768, L'\0');
    DWORD const length = ::GetFinalPathNameByHandleW(
        handle, final.data(), static_cast<DWORD>(final.size()), FILE_NAME_NORMALIZED);
    ::CloseHandle(handle);
    if (length == 0 || length >= final.size()) {
        throw std::runtime_error("cannot resolve " + directory.string());
    }
    final.resize(length);
    if (final.starts_with(L"\\\\?\\UNC\\")) {
        final.replace(0, 8, L"\\\\");
    } else if (final.starts_with(L"\\\\?\\")) {
        final.erase(0, 4);
    }
    return std::filesystem::path(final).string();
}

// How many values name an open handle of this process, asking for each value in turn
// (GetHandleInformation) up to well past the last one found. Handle values are multiples of 4,
// and the system gives out the lowest free one, so they stay close together.
long HandlesByAsking() {
    constexpr std::uintptr_t kStep = 4;
    constexpr std::uintptr_t kPastTheLast = 4096;
    long count = 0;
    std::uintptr_t last = 0;
    for (std::uintptr_t value = kStep; value <= last + kPastTheLast; value += kStep) {
        DWORD flags = 0;
        if (::GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) {
            ++count;
            last = value;
        }
    }
    return count;
}

#else

constexpr char kSeparator = '/';

std::string ResolvedRoot(std::filesystem::path const& directory) {
    return std::filesystem::canonical(directory).string();
}

#endif

}  // namespace

TempDir::TempDir(std::string_view prefix) {
    std::filesystem::path const parent = std::filesystem::temp_directory_path();
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::filesystem::path const candidate =
            parent / (std::string(prefix) + "-" + RandomSuffix());
        std::error_code error;
        // NOTE: false without an error when the name is taken: then another name is tried.
        if (std::filesystem::create_directory(candidate, error)) {
            std::filesystem::permissions(candidate, std::filesystem::perms::owner_all, error);
            mPath = ResolvedRoot(candidate);
            return;
        }
        if (error) {
            throw std::runtime_error("cannot make a temporary directory in " + parent.string() +
                                     ": " + error.message());
        }
    }
    throw std::runtime_error("cannot find a free name for a temporary directory in " +
                             parent.string());
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
}

std::string TempDir::Path(std::string_view name) const {
    std::string path = mPath + kSeparator + std::string(name);
    if (kSeparator != '/') {
        std::replace(path.begin(), path.end(), '/', kSeparator);
    }
    return path;
}

std::string TempDir::Write(std::string_view name, std::string_view bytes) const {
    std::string path = Path(name);
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path);
    }
    return path;
}

#if defined(_WIN32)

bool MakeSymbolicLink(std::string const& target, std::string const& link, bool toDirectory) {
    std::string systemTarget = target;
    std::replace(systemTarget.begin(), systemTarget.end(), '/', '\\');
    std::wstring const linkName = std::filesystem::path(link).wstring();
    DWORD const flags = (toDirectory ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0) |
                        SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE;
    if (!::CreateSymbolicLinkW(linkName.c_str(),
                               std::filesystem::path(systemTarget).wstring().c_str(), flags)) {
        return false;
    }
    // NOTE: wine answers yes and makes nothing; only a link that is there counts.
    DWORD const attributes = ::GetFileAttributesW(linkName.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

WaitingPipe::WaitingPipe(std::string_view prefix) {
    static std::atomic<int> made{0};
    mPath = R"(\\.\pipe\)" + std::string(prefix) + "-" + std::to_string(::GetCurrentProcessId()) +
            "-" + std::to_string(++made);
    mServer = ::CreateNamedPipeA(mPath.c_str(), PIPE_ACCESS_INBOUND, PIPE_TYPE_BYTE | PIPE_WAIT, 1,
                                 0, 0, 0, nullptr);
    if (mServer == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("cannot make the named pipe " + mPath + ": error " +
                                 std::to_string(::GetLastError()));
    }
}

WaitingPipe::~WaitingPipe() { ::CloseHandle(mServer); }

bool WaitingPipe::NeverConnected() const {
    HANDLE const client =
        ::CreateFileA(mPath.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (client == INVALID_HANDLE_VALUE) {
        return false;
    }
    ::CloseHandle(client);
    return true;
}

// NOTE: GetProcessHandleCount is the system's own count; wine answers it with 0, and there the
// handles are found one by one. (wine's table of all handles, NtQuerySystemInformation, is no
// way: asking for it while other programs start and end has made its server crash.)
long OpenDescriptors() {
    DWORD count = 0;
    if (::GetProcessHandleCount(::GetCurrentProcess(), &count) && count > 0) {
        return static_cast<long>(count);
    }
    return HandlesByAsking();
}

#else

bool MakeSymbolicLink(std::string const& target, std::string const& link, bool toDirectory) {
    std::error_code error;
    if (toDirectory) {
        std::filesystem::create_directory_symlink(target, link, error);
    } else {
        std::filesystem::create_symlink(target, link, error);
    }
    return !error;
}

long OpenDescriptors() {
    auto const fds = std::filesystem::directory_iterator("/proc/self/fd");
    return std::distance(begin(fds), end(fds));
}

#endif

}  // namespace tavrel_testing
