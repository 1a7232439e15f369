// WindowsText: the text conversions around the Windows system calls of minihost, which take
// and give UTF-16: UTF-8 to UTF-16 and back, and the system's own words for an error code.
// Only the *_win.cpp files use it. It declares nothing of windows.h, so that including it
// brings none of the system's names (windows.h has a COM IContext of its own).
#pragma once

#include <string>
#include <string_view>

namespace minihost {

// text as UTF-16, or false when it is no valid UTF-8 or holds a NUL byte (which would end
// the text where the system reads it).
//   "a/\xc3\xa4" => L"a/\u00e4";  "" => L"";  "\xff" => false;  "a\0b" => false
bool Utf8ToWide(std::string_view text, std::wstring& wide);

// wide as UTF-8; an unpaired surrogate becomes U+FFFD.   L"\u00e4" => "\xc3\xa4"
std::string WideToUtf8(std::wstring_view wide);

// The system's words for a Windows error code, without the line end.
//   2 => "The system cannot find the file specified."; a code without words => "error 12345"
std::string SystemErrorText(unsigned long code);

}  // namespace minihost
