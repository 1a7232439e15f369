// FilePolicy: the stand-in host's policy for Binary.MapFile. LoadData opens a path
// read-only and hands back a FileBuffer over it when it is a regular file; anything else
// (missing, directory, FIFO, device, socket, unreadable) gives no data. It never blocks
// on a FIFO and never reads the file itself. How a path is opened, and so which files may
// be opened at all, is decided by OpenForReading, which a stricter policy (a sandbox)
// overrides; this one opens every path the user can read.
#pragma once

#include <atomic>

#include "host/IContext.h"
#include "host/IPolicy.h"
#include "object/IDataRef.h"
#include "object/InterfaceImpl.h"

namespace minihost {

class FilePolicy : public InterfaceImpl<Tavrel::IPolicy> {
public:
    FilePolicy() = default;

    // A new FileBuffer (one reference, which the caller adopts) over the regular file at
    // path, or null:
    //   null path, or OpenForReading(path) gives -1  => null
    //   "" / missing / unreadable                     => null
    //   "/" / a directory, a FIFO, a character device, a socket => null, without blocking
    //   a regular file, empty or not                  => a buffer of the file's size
    Tavrel::IDataRef* Interface_LoadData(Tavrel::IContext* context, char const* path) override;

    // How many Interface_LoadData calls this policy received.
    int loadCalls() const { return mLoadCalls.load(); }

protected:
    // A new read-only descriptor (close-on-exec, not blocking, never the controlling
    // terminal) for path (never null), or -1. This policy opens every path as the system
    // looks it up, symbolic links followed; an override may refuse any path, and must not
    // block either.
    //   "" / missing / unreadable => -1;  a FIFO without a writer => a descriptor, at once
    virtual int OpenForReading(char const* path) const;

private:
    std::atomic<int> mLoadCalls{0};
};

}  // namespace minihost
