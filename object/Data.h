// Data: the module's own buffer, a std::string of bytes behind IDataRef. Every buffer the
// module creates is a Data; it is written only before it is handed out, and it is
// always allocated with new (it deletes itself on its last release).
// It never reads a file and never reports to the host.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "object/AutoRefPtr.h"
#include "object/IDataRef.h"
#include "object/InterfaceImpl.h"

namespace Tavrel {

class Data : public InterfaceImpl<IDataRef> {
public:
    Data() = default;
    // A copy of all bytes of text, NUL bytes included.
    explicit Data(std::string_view const& text);
    // A copy of size bytes from bytes; a NUL byte does not end the copy.
    Data(char const* bytes, std::size_t size);

    unsigned long long Interface_GetSize() const override;
    void Interface_Assign(char const* bytes, unsigned long long size) override;
    // offset >= size => 0; count cut to size - offset; otherwise copies count bytes.
    unsigned long long Interface_Read(char* destination, unsigned long long count,
                                      unsigned long long offset) const override;
    // null => false; other size => false; both empty => true; then compares the bytes,
    // directly when other exposes them, else through Read in blocks of 8192 bytes.
    // A short read counts as a difference.
    bool Interface_IsEqual(IDataRef* other) const override;
    // A new Data with a copy of all bytes; the one reference travels with the pointer.
    IDataRef* Interface_Clone() const override;
    // Never null, not even when empty.
    char const* Interface_GetData() const override;

    // Appends count bytes of source from offset: the store grows by count zero bytes, then
    // one Read of source writes into them, and its result is not looked at. Does nothing
    // when source is empty or offset + count runs past its end (no clipping: callers clip
    // first); count 0 makes one Read of 0 bytes and changes nothing.
    void PushBack(AutoRefPtr<IDataRef> const& source, std::size_t count, std::size_t offset);
    // Appends all of source; does nothing when source is empty.
    void PushBack(AutoRefPtr<IDataRef> const& source);
    // Appends count bytes as AppendFromRead does, with no range test of its own: the new
    // bytes are what one source.Read(store end, count, offset) wrote, zero elsewhere.
    //   "ab", source "xyz", 3 at 0 => "abxyz"     "ab", source "xyz", 3 at 2 => "abz\0\0"
    //   count 0 => unchanged, source not read    source this same Data => as for any other
    void AppendRead(IDataRef const& source, unsigned long long count, unsigned long long offset);
    // Makes room for size bytes in all, so that appends up to that size move no byte that
    // is already here. Changes neither the size nor the content. A size at or below the
    // current capacity, or above what a std::string can hold, does nothing.
    void Reserve(unsigned long long size);

    ~Data() override = default;

private:
    std::string mBytes;
};

}  // namespace Tavrel
