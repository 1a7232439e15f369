#include "minihost/host/FileBuffer.h"

#include <cstring>
#include <string>
#include <utility>

#include "minihost/host/BufferCompare.h"
#include "minihost/host/MemoryBuffer.h"

namespace minihost {

namespace {

// The largest request handed to one read of the system; larger reads loop.
// NOTE: small on purpose. A signal that arrives during a pread of a regular file is taken only
// when the call returns, and a second SIGINT arriving meanwhile merges with the first. With one
// call for a whole large range, two Ctrl-C during it would count as one and the program would
// go on; a piece of 8 MiB returns within milliseconds, so each Ctrl-C is taken on its own (the
// first sets the interruption flag, the second ends the program). Reading 1 GiB of a sparse
// file takes the same time in 8 MiB pieces as in one call. (Windows takes Ctrl-C on a thread of
// its own, which no read delays; there the pieces only keep ReadFile within its 32-bit count.)
constexpr unsigned long long kMaxReadPerCall = 8ULL << 20;

// A clone whose file shrank holds room for the size at open; it gives the room back when it
// uses less than 1/8 of it. Giving back copies the bytes, so the peak stays below 1 + 1/8 of
// the size at open.
constexpr unsigned long long kShrinkWhenUsedBelow = 8;

// count cut so that offset + count does not pass size; offset >= size => 0.
unsigned long long ClipToSize(unsigned long long size, unsigned long long count,
                              unsigned long long offset) {
    if (offset >= size) {
        return 0;
    }
    return count > size - offset ? size - offset : count;
}

// Reads until count bytes, end of file or an error, at most kMaxReadPerCall bytes per read of
// the system; gives how many bytes arrived.
unsigned long long ReadFully(FileHandle file, char* destination, unsigned long long count,
                             unsigned long long offset) {
    unsigned long long done = 0;
    while (done < count) {
        unsigned long long const left = count - done;
        std::size_t const request = left < kMaxReadPerCall ? left : kMaxReadPerCall;
        long long const got = ReadAt(file, destination + done, request, offset + done);
        if (got <= 0) {
            break;
        }
        done += static_cast<unsigned long long>(got);
    }
    return done;
}

}  // namespace

FileBuffer::FileBuffer(FileHandle file, unsigned long long size) : mFile(file), mSize(size) {}

FileBuffer::~FileBuffer() { CloseFile(); }

unsigned long long FileBuffer::Interface_GetSize() const {
    return mInMemory ? mBytes.size() : mSize;
}

void FileBuffer::Interface_Assign(char const* bytes, unsigned long long size) {
    if (bytes == nullptr || size == 0) {
        mBytes.clear();
    } else {
        mBytes.assign(bytes, size);
    }
    mInMemory = true;
    CloseFile();
}

unsigned long long FileBuffer::Interface_Read(char* destination, unsigned long long count,
                                              unsigned long long offset) const {
    count = ClipToSize(Interface_GetSize(), count, offset);
    if (count == 0) {
        return 0;
    }
    if (mInMemory) {
        std::memcpy(destination, mBytes.data() + offset, count);
        return count;
    }
    return ReadFully(mFile, destination, count, offset);
}

bool FileBuffer::Interface_IsEqual(Tavrel::IDataRef* other) const {
    auto const readOwn = [this](char* destination, unsigned long long count,
                                unsigned long long offset) {
        return Interface_Read(destination, count, offset);
    };
    return EqualContent(Interface_GetSize(), readOwn, other);
}

Tavrel::IDataRef* FileBuffer::Interface_Clone() const {
    if (mInMemory) {
        return new MemoryBuffer(mBytes);
    }
    // The bytes are read once, straight into the storage the clone takes over.
    std::string bytes(mSize, '\0');
    bytes.resize(Interface_Read(bytes.data(), mSize, 0));
    if (bytes.size() < mSize / kShrinkWhenUsedBelow) {
        bytes.shrink_to_fit();
    }
    return new MemoryBuffer(MemoryBuffer::MoveBytesIn{}, std::move(bytes));
}

void FileBuffer::CloseFile() {
    minihost::CloseFile(mFile);
    mFile = kNoFile;
}

}  // namespace minihost
