// FilePolicy: the stand-in host's policy for Binary.MapFile. LoadData opens a path
// read-only and hands back a FileBuffer over it when it is a regular file; anything else
// (missing, directory, FIFO, device, socket, unreadable; on Windows anything but a file on a
// disk) gives no data. It never blocks on a FIFO, pipe or device and never reads the file
// itself. How a path is opened, and so which files may be opened at all, is decided by
// OpenForReading, which a stricter policy (a sandbox) overrides; this one opens every path
// the user can read.
#pragma once

#include <atomic>

#include "host/IContext.h"
#include "host/IPolicy.h"
#include "minihost/host/SystemFiles.h"
#include "object/IDataRef.h"
#include "object/InterfaceImpl.h"

namespace minihost {

class FilePolicy : public InterfaceImpl<Tavrel::IPolicy> {
public:
    FilePolicy() = default;

    // A new FileBuffer (one reference, which the caller adopts) over the regular file at
    // path, or null:
    //   null path, or OpenForReading(path) gives kNoFile => null
    //   "" / missing / unreadable                        => null
    //   "/" / a directory, a FIFO, a character device, a socket => null, without blocking
    //   Windows: "NUL", "CON", "\\.\pipe\p" => null, never opened
    //   a regular file, empty or not                     => a buffer of the file's size
    Tavrel::IDataRef* Interface_LoadData(Tavrel::IContext* context, char const* path) override;

    // How many Interface_LoadData calls this policy received.
    int loadCalls() const { return mLoadCalls.load(); }

protected:
    // A new handle for reading path (never null), as OpenFileForReading gives it (not
    // inherited, not blocking, never the controlling terminal), or kNoFile. This policy opens
    // every path as the system looks it up, symbolic links followed; an override may refuse
    // any path, and must not block either.
    //   "" / missing / unreadable => kNoFile;  a FIFO without a writer => a handle, at once
    virtual FileHandle OpenForReading(char const* path) const;

private:
    std::atomic<int> mLoadCalls{0};
};

}  // namespace minihost
