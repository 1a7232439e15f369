// WindowsText with MultiByteToWideChar, WideCharToMultiByte and FormatMessageW.
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <climits>

#include "minihost/host/WindowsText.h"

namespace minihost {

bool Utf8ToWide(std::string_view text, std::wstring& wide) {
    wide.clear();
    if (text.empty()) {
        return true;
    }
    if (text.find('\0') != std::string_view::npos || text.size() > INT_MAX) {
        return false;
    }
    int const size = static_cast<int>(text.size());
    int const length =
        ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, nullptr, 0);
    if (length <= 0) {
        return false;
    }
    wide.resize(static_cast<std::size_t>(length));
    return ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, wide.data(),
                                 length) == length;
}

std::string WideToUtf8(std::wstring_view wide) {
    if (wide.empty() || wide.size() > INT_MAX) {
        return std::string();
    }
    int const size = static_cast<int>(wide.size());
    int const length =
        ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    if (length <= 0) {
        return std::string();
    }
    std::string text(static_cast<std::size_t>(length), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, text.data(), length, nullptr, nullptr);
    return text;
}

std::string SystemErrorText(unsigned long code) {
    wchar_t* words = nullptr;
    DWORD const length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, 0, reinterpret_cast<wchar_t*>(&words), 0, nullptr);
    std::string text = length != 0 ? WideToUtf8(std::wstring_view(words, length))
                                   : "error " + std::to_string(code);
    ::LocalFree(words);
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) {
        text.pop_back();
    }
    return text;
}

}  // namespace minihost
