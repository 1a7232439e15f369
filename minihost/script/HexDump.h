// HexDump: the bytes of a STRING or a DATAREF shown as a hex dump, as the statement `dump`
// prints them. One line per 16 bytes: the offset of its first byte in hex (8 digits, more
// when needed), the bytes in hex with a gap after the eighth, and the bytes again between
// bars, each byte outside printable ASCII (0x20..0x7E) as '.':
//   00000000  48 65 6c 6c 6f 2c 20 54  61 76 72 65 6c 21        |Hello, Tavrel!|
// It also reads the range that a dump asks for. It never changes a buffer.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "object/IDataRef.h"

namespace minihost {

// The lines of bytes, the first byte being at offset first; "" for no bytes.
//   ("Hi", 0)         => "00000000  48 69" + 46 blanks + "|Hi|\n"
//   (17 bytes, 0x10)  => a line at 00000010 with 16 bytes, one at 00000020 with 1
//   ("\0\n~\x7f", 0)  => "...|..~.|"
//   ("A", 0x100000000) => "100000000  41 ..."
std::string HexDump(std::string_view bytes, unsigned long long first);

// The bytes [begin, end) of a value that a dump shows.
struct ByteRange {
    unsigned long long begin = 0;
    unsigned long long end = 0;
};

// One bound of a dump, name being "offset" or "count", as a whole number: cut toward zero as
// the module takes numbers, one beyond the largest held at the largest. False with error set
// for a negative bound or a NaN:
//   ("offset", 2.9) => 2;  ("offset", -0.5) => 0;  ("count", 1e300) => 18446744073709551615
//   ("offset", -1) => "the offset -1 is negative";  ("count", NaN) => "the count nan is no number"
bool ReadDumpBound(char const* name, double value, unsigned long long& bound, std::string& error);

// The bytes that a dump of size bytes shows: from offset, count of them at most, cut to what
// exists.
//   (10, 0, max) => [0, 10);  (10, 4, 3) => [4, 7);  (10, 8, 5) => [8, 10);  (10, 20, 1) => [10,
//   10)
ByteRange DumpRange(unsigned long long size, unsigned long long offset, unsigned long long count);

// Writes the dump of the bytes of data in range, read in blocks through its interface. It
// stops early, after a whole block, when stop() says so (a Ctrl-C), or when a read delivers
// fewer bytes than asked (what was delivered is shown). An empty range writes nothing.
void WriteHexDump(std::ostream& out, Tavrel::IDataRef const& data, ByteRange range,
                  std::function<bool()> const& stop);

}  // namespace minihost
