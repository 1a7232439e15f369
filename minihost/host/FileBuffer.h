// FileBuffer: a host buffer over a regular file that reads on demand at an offset (pread, or
// ReadFile on Windows) and never holds or exposes the file's bytes, so a file larger than
// memory works. The size is the size at open; a file that shrinks while held gives short
// reads (fewer bytes, never a crash). After Assign the content lives in memory and the file
// is no longer read.
// It does not open files or decide which files may be read: FilePolicy does that. Reads
// from several threads are safe; Assign must not run at the same time as anything else.
#pragma once

#include <string>

#include "minihost/host/LiveCount.h"
#include "minihost/host/SystemFiles.h"
#include "object/IDataRef.h"
#include "object/InterfaceImpl.h"

namespace minihost {

class FileBuffer final : public InterfaceImpl<Tavrel::IDataRef> {
public:
    // Takes ownership of file, an open readable handle of a regular file whose size is
    // size; the handle is closed when the buffer is destroyed.
    FileBuffer(FileHandle file, unsigned long long size);
    ~FileBuffer() override;

    FileBuffer(FileBuffer const&) = delete;
    FileBuffer& operator=(FileBuffer const&) = delete;

    // The size at open, or of the content assigned since.
    unsigned long long Interface_GetSize() const override;
    // Replaces the content with a copy of size bytes held in memory from then on and
    // closes the file. (null, 0) => empty; null with size > 0 => empty.
    void Interface_Assign(char const* bytes, unsigned long long size) override;
    // offset >= size => 0; count cut to size - offset; then reads from the file until
    // count bytes or its current end. File shrunk to 60 of 100 bytes: (10 at 55) => 5,
    // (10 at 70) => 0. A read error ends the read: the bytes delivered so far count.
    // NOTE: a large range is read in pieces of at most 8 MiB, so a signal (Ctrl-C) is taken
    // within one piece instead of after the whole range.
    unsigned long long Interface_Read(char* destination, unsigned long long count,
                                      unsigned long long offset) const override;
    // Same size and same bytes, both sides read in blocks; null => false; a short read
    // on either side => false.
    bool Interface_IsEqual(Tavrel::IDataRef* other) const override;
    // A new MemoryBuffer holding the bytes read now (fewer if the file shrank: 100 bytes at
    // open, 60 now => 60 bytes). The bytes are read once into the clone's own storage, so
    // cloning needs memory for the file's size once, not twice; a clone that got less than
    // an eighth of that gives the spare room back. A file larger than memory cannot be
    // cloned: the allocation fails with std::bad_alloc.
    Tavrel::IDataRef* Interface_Clone() const override;
    // NOTE: always null, also after Assign: a file buffer never exposes its bytes, so
    // readers always take the Read path with it.
    char const* Interface_GetData() const override { return nullptr; }

private:
    unsigned long long ReadFromFile(char* destination, unsigned long long count,
                                    unsigned long long offset) const;
    void CloseFile();

    FileHandle mFile;
    unsigned long long mSize;
    bool mInMemory = false;
    std::string mBytes;
    LiveToken mLive;
};

}  // namespace minihost
