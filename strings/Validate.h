// Tests whether a byte text is well-formed UTF-8, ASCII or printable ASCII, and where it first
// fails. The UTF-8 test checks only the form of lead and continuation bytes: it does not decode
// code points, so overlong forms, surrogates and values above U+10FFFF pass. Message and
// position are written only on failure. The checks run on the instruction-set path that
// Dispatch.h chooses; a fast path only finds the first block that fails, and the byte-by-byte
// rules then give the numbers, so every path reports the same.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Tavrel {

// Whether every byte is ASCII or begins a sequence (lead 0xC0-0xDF: 2 bytes, 0xE0-0xEF: 3,
// 0xF0-0xF7: 4) whose further bytes are all 0x80-0xBF. On failure message becomes
// "Sign: <place on the line, from 1> in column: <line, from 1> is not utf-8 conform." and
// *position (if position is not null) the failing index. For a faulty or cut-off sequence of
// length L with its lead at index k, the place is that of k + L and the index k + L - 1.
//   ""                    => true, message and position unchanged
//   "\xC0\xAF", "\xED\xA0\x80", "\xF7\xBF\xBF\xBF" => true (form only)
//   "\x80"                => false, "Sign: 1 in column: 1 ...", 0
//   "a\nb\x80"            => false, "Sign: 2 in column: 2 ...", 3
//   "ab\xC3"              => false, "Sign: 5 in column: 1 ...", 3 (the size of the text)
//   "\xE2"                => false, "Sign: 4 in column: 1 ...", 2 (behind the end)
//   "\0"                  => true (NUL is ASCII)
bool ValidUTF8(std::string_view const& text, std::string& message, std::size_t* position);
// Whether no byte is above 0x7F; on failure *position (if not null) is the first such index.
//   "" => true     "\0\n\x7F" => true     "ab\x80" => false, 2
bool ValidASCII(std::string_view const& text, std::size_t* position);
// Whether every byte lies in 0x20-0x7E; tab, line feed, NUL and 0x7F fail. On failure
// *position (if not null) is the first failing index. Does not depend on the locale.
//   "" => true     " ~" => true     "a\tb" => false, 1     "\x7F" => false, 0
bool ValidPrintableASCII(std::string_view const& text, std::size_t* position);

}  // namespace Tavrel
