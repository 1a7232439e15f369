#include "minihost/host/FilePolicy.h"

#include "minihost/host/FileBuffer.h"
#include "minihost/host/SystemFiles.h"

namespace minihost {

namespace {

// Wraps file in a FileBuffer; closes it when the buffer cannot be made.
Tavrel::IDataRef* AdoptIntoBuffer(FileHandle file, unsigned long long size) {
    try {
        return new FileBuffer(file, size);
    } catch (...) {
        CloseFile(file);
        throw;
    }
}

}  // namespace

Tavrel::IDataRef* FilePolicy::Interface_LoadData(Tavrel::IContext* /*context*/, char const* path) {
    mLoadCalls.fetch_add(1);
    if (path == nullptr) {
        return nullptr;
    }
    FileHandle const file = OpenForReading(path);
    if (file == kNoFile) {
        return nullptr;
    }
    long long const size = RegularFileSize(file);
    if (size < 0) {
        CloseFile(file);
        return nullptr;
    }
    return AdoptIntoBuffer(file, static_cast<unsigned long long>(size));
}

FileHandle FilePolicy::OpenForReading(char const* path) const { return OpenFileForReading(path); }

}  // namespace minihost
