// EqualContent: compares the bytes of a host buffer with those of any other IDataRef, in
// blocks of 8192 bytes, so that neither side has to hold all of its bytes in memory. The
// other side is read directly when it exposes its bytes and through Read otherwise.
// It does not look at identity: a buffer compared with itself is read twice.
#pragma once

#include <functional>

#include "object/IDataRef.h"

namespace minihost {

// Reads up to count own bytes at offset into destination; gives how many it delivered.
using ReadOwnBytes = std::function<unsigned long long(char* destination, unsigned long long count,
                                                      unsigned long long offset)>;

// True when other holds exactly the size bytes that readOwn delivers.
//   other null                         => false
//   other's size differs from size     => false
//   size 0 and other empty             => true, nothing is read on either side
//   a short read on either side        => false (the bytes cannot be shown equal)
bool EqualContent(unsigned long long size, ReadOwnBytes const& readOwn,
                  Tavrel::IDataRef const* other);

}  // namespace minihost
