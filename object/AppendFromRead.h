// AppendFromRead: appends a range of a buffer to a std::string with one Read of the whole
// range, made straight into the string's own storage. Bytes that the Read does not deliver
// are zero, exactly as if the string had been resized first and then read into.
// It never splits the Read, never calls GetData and never looks at the source otherwise.
#pragma once

#include <string>

#include "object/IDataRef.h"

namespace Tavrel {

// Appends count bytes of source from offset to bytes: one source.Read(destination, count,
// offset), then zeroes whatever that Read did not deliver. Gives what the Read gave.
//   "ab", Read delivers "xyz" of 3        => "abxyz", 3
//   "ab", Read delivers "x" of 3          => "abx\0\0", 1
//   "", offset at or past source's end    => count zero bytes, 0
//   count 0                               => bytes unchanged, source not read, 0
// A count that would take bytes past max_size() throws std::length_error, as resize does.
// source must not read from bytes itself: the string is lent out while the Read runs (the
// simple road below has no such limit).
// The new bytes are written once: the Read goes into spare capacity, which grows
// geometrically. Small counts take AppendFromReadByResize, whose result is the same.
unsigned long long AppendFromRead(std::string& bytes, IDataRef const& source,
                                  unsigned long long count, unsigned long long offset);

// The simple road to the same result: resize (zeroing count new bytes), then the one Read.
// The new bytes are written twice.
unsigned long long AppendFromReadByResize(std::string& bytes, IDataRef const& source,
                                          unsigned long long count, unsigned long long offset);

}  // namespace Tavrel
