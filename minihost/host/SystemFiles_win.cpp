// SystemFiles on Windows: handles from CreateFileW, ReadFile at an offset, GetFileType,
// ReOpenFile and GetFinalPathNameByHandleW. Paths arrive as UTF-8 and are made full
// (GetFullPathNameW) before anything is opened, so that a name of a device is known as one
// and refused without being opened.
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <string_view>

#include "minihost/host/SystemFiles.h"
#include "minihost/host/WindowsText.h"

namespace minihost {

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
// ReadFile takes a 32-bit count.
constexpr std::size_t kMaxRequest = std::size_t{1} << 30;

HANDLE AsHandle(FileHandle file) { return reinterpret_cast<HANDLE>(file); }

FileHandle FromHandle(HANDLE handle) { return reinterpret_cast<FileHandle>(handle); }

bool IsSeparator(char c) { return c == '\\' || c == '/'; }

bool IsAsciiLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool SameIgnoringCase(std::wstring_view a, std::wstring_view b) {
    return ::CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                                  static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

// The share of a full UNC path "\\server\share\...", or "" for any other path.
std::wstring_view UncShare(std::wstring_view full) {
    if (!full.starts_with(L"\\\\")) {
        return {};
    }
    std::size_t const serverEnd = full.find(L'\\', 2);
    if (serverEnd == std::wstring_view::npos) {
        return {};
    }
    std::size_t const shareEnd = full.find(L'\\', serverEnd + 1);
    return full.substr(serverEnd + 1, shareEnd == std::wstring_view::npos
                                          ? std::wstring_view::npos
                                          : shareEnd - serverEnd - 1);
}

// Whether full (as GetFullPathNameW gives it) names a device rather than a file on a disk:
// the device namespaces "\\.\" and "\\?\", the NT namespace "\??\", and the pipe and mailslot
// shares of any server.
// NOTE: GetFullPathNameW turns the reserved names (NUL, CON, COM1, ..., also inside a
// directory: "C:\x\NUL") into "\\.\NUL", so they are caught here too. A file in "\\?\C:\..."
// is refused as well: such paths pass by the system's own path rules.
bool IsDeviceName(std::wstring_view full) {
    if (full.starts_with(L"\\\\.\\") || full.starts_with(L"\\\\?\\") ||
        full.starts_with(L"\\??\\")) {
        return true;
    }
    std::wstring_view const share = UncShare(full);
    return SameIgnoringCase(share, L"pipe") || SameIgnoringCase(share, L"mailslot");
}

// path (UTF-8) as the full path the system would open, or false when it is no valid UTF-8.
bool FullPath(std::string const& path, std::wstring& full) {
    std::wstring wide;
    if (path.empty() || !Utf8ToWide(path, wide)) {
        return false;
    }
    DWORD const needed = ::GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
    if (needed == 0) {
        return false;
    }
    full.assign(needed, L'\0');
    DWORD const length = ::GetFullPathNameW(wide.c_str(), needed, full.data(), nullptr);
    if (length == 0 || length >= needed) {
        return false;
    }
    full.resize(length);
    return true;
}

// The full path of a file on a disk, or false for no valid UTF-8 or the name of a device.
bool FullFilePath(std::string const& path, std::wstring& full) {
    return FullPath(path, full) && !IsDeviceName(full);
}

// NOTE: SECURITY_IDENTIFICATION keeps a server at the other end (should a path lead to a
// pipe after all) from acting as this user; the handle is not inherited by child programs.
FileHandle Open(std::wstring const& full, DWORD access, DWORD flags) {
    return FromHandle(::CreateFileW(full.c_str(), access, kShareAll, nullptr, OPEN_EXISTING,
                                    flags | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION,
                                    nullptr));
}

// A handle for the attributes of the file or directory at full, for KindOfPath and
// ResolveRealPath; kNoFile when there is none.
FileHandle FindFileOrDirectory(std::wstring const& full) {
    return Open(full, FILE_READ_ATTRIBUTES, FILE_FLAG_BACKUP_SEMANTICS);
}

// A path as GetFinalPathNameByHandleW gives it, without its "\\?\": "\\?\C:\a" => "C:\a",
// "\\?\UNC\s\h\a" => "\\s\h\a"; false for a volume without a drive letter.
bool WithoutLongPrefix(std::wstring_view final, std::string& path) {
    if (final.starts_with(L"\\\\?\\UNC\\")) {
        path = "\\\\" + WideToUtf8(final.substr(8));
        return true;
    }
    if (final.starts_with(L"\\\\?\\")) {
        final.remove_prefix(4);
    }
    if (final.size() < 3 || final[1] != L':' || final[2] != L'\\') {
        return false;
    }
    path = WideToUtf8(final);
    return true;
}

}  // namespace

FileHandle OpenFileForReading(std::string const& path) {
    std::wstring full;
    if (!FullFilePath(path, full)) {
        return kNoFile;
    }
    return Open(full, GENERIC_READ, FILE_ATTRIBUTE_NORMAL);
}

// NOTE: opened for its attributes only, the way to ask about a file or device "without
// accessing" it; without FILE_FLAG_BACKUP_SEMANTICS a directory does not open at all.
FileHandle FindFile(std::string const& path) {
    std::wstring full;
    if (!FullFilePath(path, full)) {
        return kNoFile;
    }
    return Open(full, FILE_READ_ATTRIBUTES, 0);
}

// NOTE: ReOpenFile opens the file object that found names, looking up no name: what was
// checked is what is read.
FileHandle ReopenForReading(FileHandle found) {
    if (found == kNoFile) {
        return kNoFile;
    }
    return FromHandle(::ReOpenFile(AsHandle(found), GENERIC_READ, kShareAll, 0));
}

long long RegularFileSize(FileHandle file) {
    BY_HANDLE_FILE_INFORMATION info{};
    if (file == kNoFile || ::GetFileType(AsHandle(file)) != FILE_TYPE_DISK ||
        !::GetFileInformationByHandle(AsHandle(file), &info) ||
        (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return -1;
    }
    return static_cast<long long>((static_cast<unsigned long long>(info.nFileSizeHigh) << 32) |
                                  info.nFileSizeLow);
}

// NOTE: on a handle opened without FILE_FLAG_OVERLAPPED, ReadFile with an OVERLAPPED reads at
// its offset and waits for the bytes; the system serializes such reads of one handle.
long long ReadAt(FileHandle file, char* destination, std::size_t count, unsigned long long offset) {
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(offset);
    at.OffsetHigh = static_cast<DWORD>(offset >> 32);
    DWORD got = 0;
    DWORD const request = static_cast<DWORD>(count < kMaxRequest ? count : kMaxRequest);
    if (!::ReadFile(AsHandle(file), destination, request, &got, &at)) {
        return ::GetLastError() == ERROR_HANDLE_EOF ? 0 : -1;
    }
    return static_cast<long long>(got);
}

void CloseFile(FileHandle file) {
    if (file != kNoFile) {
        ::CloseHandle(AsHandle(file));
    }
}

bool RealPathOfFile(FileHandle file, std::string& path) {
    if (file == kNoFile) {
        return false;
    }
    constexpr DWORD kFlags = FILE_NAME_NORMALIZED | VOLUME_NAME_DOS;
    std::wstring final(MAX_PATH, L'\0');
    DWORD length = ::GetFinalPathNameByHandleW(AsHandle(file), final.data(),
                                               static_cast<DWORD>(final.size()), kFlags);
    if (length >= final.size()) {  // too small: length is the size needed
        final.assign(length, L'\0');
        length = ::GetFinalPathNameByHandleW(AsHandle(file), final.data(),
                                             static_cast<DWORD>(final.size()), kFlags);
    }
    if (length == 0 || length >= final.size()) {
        return false;
    }
    final.resize(length);
    return WithoutLongPrefix(final, path);
}

std::string JoinPath(std::string const& base, std::string const& path) {
    bool const standsAlone =
        !path.empty() &&
        (IsSeparator(path[0]) || (path.size() >= 2 && path[1] == ':' && IsAsciiLetter(path[0])));
    if (path.empty() || base.empty() || standsAlone) {
        return path;
    }
    return IsSeparator(base.back()) ? base + path : base + '\\' + path;
}

bool ResolveRealPath(std::string const& base, std::string const& path, std::string& resolved) {
    std::wstring full;
    if (!FullFilePath(JoinPath(base, path), full)) {
        return false;
    }
    FileHandle const found = FindFileOrDirectory(full);
    bool const ok = RealPathOfFile(found, resolved);
    CloseFile(found);
    return ok;
}

PathKind KindOfPath(std::string const& path) {
    std::wstring full;
    if (!FullPath(path, full)) {
        return PathKind::kMissing;
    }
    if (IsDeviceName(full)) {
        return PathKind::kOther;
    }
    FileHandle const found = FindFileOrDirectory(full);
    if (found == kNoFile) {
        return PathKind::kMissing;
    }
    BY_HANDLE_FILE_INFORMATION info{};
    PathKind kind = PathKind::kOther;
    if (::GetFileType(AsHandle(found)) == FILE_TYPE_DISK &&
        ::GetFileInformationByHandle(AsHandle(found), &info)) {
        kind = (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? PathKind::kDirectory
                                                                       : PathKind::kRegularFile;
    }
    CloseFile(found);
    return kind;
}

}  // namespace minihost
