#include "minihost/host/MemoryBuffer.h"

#include <cstring>
#include <stdexcept>

#include "minihost/host/BufferCompare.h"

namespace minihost {

namespace {

// The count a read at offset may deliver: cut to what exists, then to the chunk limit.
unsigned long long DeliverableCount(unsigned long long size, unsigned long long count,
                                    unsigned long long offset, unsigned long long maxChunk) {
    if (offset >= size) {
        return 0;
    }
    if (count > size - offset) {
        count = size - offset;
    }
    if (maxChunk > 0 && count > maxChunk) {
        count = maxChunk;
    }
    return count;
}

// What a Read that was to write n of the count bytes asked for does under fault: writes
// (part of) the n bytes with write, then gives a count or throws.
template <typename Write>
unsigned long long WithFault(ReadFault fault, unsigned long long n, unsigned long long count,
                             Write const& write) {
    switch (fault) {
        case ReadFault::kNone:
            break;
        case ReadFault::kUnderReport:
            write(n);
            return 0;
        case ReadFault::kOverClaim:
            return count;
        case ReadFault::kOverReport:
            write(n);
            return count + 1;
        case ReadFault::kThrowHalfway:
            write(n / 2);
            throw std::runtime_error("MemoryBuffer: a Read that fails half-way");
    }
    write(n);
    return n;
}

}  // namespace

MemoryBuffer::MemoryBuffer(std::string_view bytes, Options options)
    : mBytes(bytes), mOptions(options) {}

void MemoryBuffer::Interface_Assign(char const* bytes, unsigned long long size) {
    if (bytes == nullptr || size == 0) {
        mBytes.clear();
        return;
    }
    mBytes.assign(bytes, size);
}

unsigned long long MemoryBuffer::Interface_Read(char* destination, unsigned long long count,
                                                unsigned long long offset) const {
    mReadCalls.fetch_add(1);
    unsigned long long const n =
        DeliverableCount(mBytes.size(), count, offset, mOptions.maxReadChunk);
    return WithFault(mOptions.readFault, n, count, [&](unsigned long long written) {
        if (written != 0) {
            std::memcpy(destination, mBytes.data() + offset, written);
        }
    });
}

bool MemoryBuffer::Interface_IsEqual(Tavrel::IDataRef* other) const {
    // NOTE: own bytes are copied directly, not through Interface_Read, so comparing does
    // not move readCalls() of this buffer and ignores its own chunk limit.
    auto const readOwn = [this](char* destination, unsigned long long count,
                                unsigned long long offset) {
        unsigned long long const n = DeliverableCount(mBytes.size(), count, offset, 0);
        if (n != 0) {
            std::memcpy(destination, mBytes.data() + offset, n);
        }
        return n;
    };
    return EqualContent(mBytes.size(), readOwn, other);
}

Tavrel::IDataRef* MemoryBuffer::Interface_Clone() const {
    return new MemoryBuffer(mBytes, mOptions);
}

char const* MemoryBuffer::Interface_GetData() const {
    mGetDataCalls.fetch_add(1);
    return mOptions.exposeBytes ? mBytes.data() : nullptr;
}

}  // namespace minihost
