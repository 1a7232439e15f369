#include "minihost/host/BufferCompare.h"

#include <cstring>
#include <memory>

namespace minihost {

namespace {

constexpr unsigned long long kBlockSize = 8192;

// Compares one block of own bytes with other's bytes at offset, read or exposed.
bool BlockMatches(char const* own, unsigned long long n, unsigned long long offset,
                  Tavrel::IDataRef const& other, char const* otherBytes, char* scratch) {
    if (otherBytes != nullptr) {
        return std::memcmp(own, otherBytes + offset, n) == 0;
    }
    return other.Read(scratch, n, offset) == n && std::memcmp(own, scratch, n) == 0;
}

}  // namespace

bool EqualContent(unsigned long long size, ReadOwnBytes const& readOwn,
                  Tavrel::IDataRef const* other) {
    if (other == nullptr || other->GetSize() != size) {
        return false;
    }
    if (size == 0) {
        return true;
    }
    char const* const otherBytes = other->GetData();
    std::unique_ptr<char[]> own(new char[kBlockSize]);
    std::unique_ptr<char[]> scratch(otherBytes == nullptr ? new char[kBlockSize] : nullptr);
    for (unsigned long long offset = 0; offset < size;) {
        unsigned long long const n = size - offset < kBlockSize ? size - offset : kBlockSize;
        if (readOwn(own.get(), n, offset) != n ||
            !BlockMatches(own.get(), n, offset, *other, otherBytes, scratch.get())) {
            return false;
        }
        offset += n;
    }
    return true;
}

}  // namespace minihost
