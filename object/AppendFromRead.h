// AppendFromRead: appends a range of a buffer to a std::string with one Read of the whole
// range: the string grows by count zero bytes first, then the Read writes into them. So the
// new bytes are exactly what the Read wrote, and zero wherever it wrote nothing, whatever
// count it gives back: a buffer that under-reports keeps its bytes, one that claims bytes it
// never wrote leaves zeros, never memory that nobody wrote.
// It never splits the Read, never calls GetData and never looks at the source otherwise.
#pragma once

#include <string>

#include "object/IDataRef.h"

namespace Tavrel {

// Appends count bytes of source from offset to bytes: resizes bytes by count (the new bytes
// are zero), then makes one source.Read(first new byte, count, offset), whose result is not
// looked at.
//   "ab", Read writes "xyz"                    => "abxyz"
//   "ab", Read writes "x" (gives 1, 3 or 0)    => "abx\0\0"
//   "ab", Read writes nothing but gives 3      => "ab\0\0\0"
//   "", offset at or past source's end         => count zero bytes
//   count 0                                    => bytes unchanged, source not read
//   Read throws after writing "x"              => the exception passes; bytes is "abx\0\0"
// A count that would take bytes past max_size() throws std::length_error without reading.
// source may be the owner of bytes: the range it reads lies below the new bytes.
void AppendFromRead(std::string& bytes, IDataRef const& source, unsigned long long count,
                    unsigned long long offset);

}  // namespace Tavrel
