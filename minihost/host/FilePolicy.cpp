#include "minihost/host/FilePolicy.h"

#include <fcntl.h>
#include <unistd.h>

#include <sys/stat.h>

#include "minihost/host/FileBuffer.h"

namespace minihost {

namespace {

// The size of the regular file behind fd, or -1 when it is anything else.
long long RegularFileSize(int fd) {
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        return -1;
    }
    return static_cast<long long>(info.st_size);
}

// Wraps fd in a FileBuffer; closes it when the buffer cannot be made.
Tavrel::IDataRef* AdoptIntoBuffer(int fd, unsigned long long size) {
    try {
        return new FileBuffer(fd, size);
    } catch (...) {
        ::close(fd);
        throw;
    }
}

}  // namespace

Tavrel::IDataRef* FilePolicy::Interface_LoadData(Tavrel::IContext* /*context*/, char const* path) {
    mLoadCalls.fetch_add(1);
    if (path == nullptr) {
        return nullptr;
    }
    int const fd = OpenForReading(path);
    if (fd < 0) {
        return nullptr;
    }
    long long const size = RegularFileSize(fd);
    if (size < 0) {
        ::close(fd);
        return nullptr;
    }
    return AdoptIntoBuffer(fd, static_cast<unsigned long long>(size));
}

// NOTE: O_NONBLOCK lets a FIFO open at once instead of waiting for a writer; O_NOCTTY keeps
// a terminal from becoming the controlling one.
int FilePolicy::OpenForReading(char const* path) const {
    return ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
}

}  // namespace minihost
