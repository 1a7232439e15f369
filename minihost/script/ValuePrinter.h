// ValuePrinter: how minihost shows script values. A NUMBER as a number, a STRING quoted with
// every byte that is not printable ASCII escaped, a DATAREF as its size and a preview of its
// first bytes (escaped the same way), a DATAREF that holds no buffer as null. A STRING longer
// than kLongString bytes is shortened like a DATAREF, with its size; shown in full, neither
// is shortened. The escapes are those of the script language, so a printed string can be
// pasted back into a script.
// It does not print: it gives texts, and it never changes a value or a buffer.
#pragma once

#include <string>
#include <string_view>

#include "minihost/host/Variant.h"

namespace minihost {

// How many bytes of a DATAREF, or of a long STRING, the preview shows.
inline constexpr unsigned long long kPreviewBytes = 48;
// The longest STRING that is shown whole when values are shortened.
inline constexpr std::size_t kLongString = 256;

// bytes with \n, \r, \t, \\ and \" for those five and \xNN (lower-case hex) for every other
// byte outside 0x20..0x7E; everything else as it is.
//   "" => "";  "a\"b" => "a\\\"b";  "\0" => "\\x00";  "\xC3\xA9" => "\\xc3\\xa9";  "\r" => "\\r"
std::string EscapeBytes(std::string_view bytes);

// EscapeBytes between double quotes.  "" => "\"\"";  "a\nb" => "\"a\\nb\""
std::string QuoteBytes(std::string_view bytes);

// The shortest text that reads back as the same double; no fraction for whole numbers.
//   5 => "5";  -2.5 => "-2.5";  0.1 => "0.1";  1e21 => "1e+21";  -0.0 => "-0";  NaN => "nan";
//   infinity => "inf"
std::string FormatNumber(double value);

// The value as print shows it; full turns the shortening off.
//   NUMBER 3                 => "3"
//   STRING "a\0"             => "\"a\\x00\""
//   STRING of 300 bytes      => "STRING(300) \"<first 48 bytes>\"...";  full => all, quoted
//   DATAREF over "hi"        => "DATAREF(2) \"hi\""
//   DATAREF over 100 bytes   => "DATAREF(100) \"<first 48 bytes>\"...";  full => all 100
//   DATAREF holding no buffer => "null"
//   nothing assigned         => "nothing";  user-defined type 21 => "user-defined value (type 21)"
std::string FormatValue(Variant const& value, bool full = false);

}  // namespace minihost
