// The typed operations behind the module's script functions. Each reports a bad value
// through the context (severity 2, module "Binary") and returns normally with the result
// its contract states; none fails by exception except when memory runs out.
// They read a buffer they are given only through GetSize and Read, and write only to a
// buffer they have just created. They live in the global namespace.
#pragma once

#include <string>
#include <string_view>

#include "host/IContext.h"
#include "object/AutoRefPtr.h"
#include "object/IDataRef.h"

// Size (DATAREF): the number of bytes. Empty reference => report, 0.
std::size_t BinarySize(Tavrel::AutoRefPtr<Tavrel::IDataRef> const& data,
                         Tavrel::IContext* context);

// ToDataRef (STRING): a new buffer with all bytes of text, NUL bytes included. "" => empty.
Tavrel::AutoRefPtr<Tavrel::IDataRef> ToDataRef(std::string_view text);
// Binary.ToDataRef (STRING): the same as ToDataRef under another script name.
Tavrel::AutoRefPtr<Tavrel::IDataRef> BinarySetFromString(std::string_view text);
// ToDataRef (STRING,NUMBER,NUMBER): a new buffer with count bytes of text from offset.
// Never null. Negative offset or count => report, empty buffer. offset >= size or
// count 0 => empty buffer, no report. count past the end is cut: "abc", 1, 100 => "bc".
Tavrel::AutoRefPtr<Tavrel::IDataRef> ToDataRefPart(std::string_view text, long long offset,
                                                   long long count, Tavrel::IContext* context);

// ToString (DATAREF): all bytes of data as a string. Empty reference => report, "".
std::string BinaryToString(Tavrel::AutoRefPtr<Tavrel::IDataRef> const& data,
                           Tavrel::IContext* context);
// Binary.PartToString (DATAREF,NUMBER,NUMBER): size bytes from offset. Empty reference or
// negative numbers => report, "". offset >= size or size < 1 => "". Bytes a short Read
// does not deliver are zero.
std::string BinaryPartToString(Tavrel::AutoRefPtr<Tavrel::IDataRef> const& data, long long offset,
                               long long size, Tavrel::IContext* context);

// Binary.Slice (DATAREF,NUMBER,NUMBER): a new buffer with size bytes from offset, read
// straight into it; bytes a short Read leaves out are zero. Never null: empty reference or
// negative numbers => report, empty buffer; offset >= size or size 0 => empty buffer.
Tavrel::AutoRefPtr<Tavrel::IDataRef> BinarySlice(Tavrel::AutoRefPtr<Tavrel::IDataRef> const& data,
                                                 long long offset, long long size,
                                                 Tavrel::IContext* context);
// Binary.Slice (DATAREF,NUMBER): everything from offset; reports through BinarySlice, whose
// reason then prints size - offset as the size (-3 on 10 bytes => Size "13").
Tavrel::AutoRefPtr<Tavrel::IDataRef> BinarySliceRight(
    Tavrel::AutoRefPtr<Tavrel::IDataRef> const& data, long long offset, Tavrel::IContext* context);

// Binary.Copy (DATAREF): the buffer's own Clone. Empty reference => report, null reference.
Tavrel::AutoRefPtr<Tavrel::IDataRef> BinaryCopy(Tavrel::AutoRefPtr<Tavrel::IDataRef> const& data,
                                                Tavrel::IContext* context);
// Binary.Copy (DATAREF,NUMBER,NUMBER): a new buffer with count bytes from offset, read
// straight into it. Empty reference => report, null reference. Negative numbers => report,
// empty buffer. offset >= size or count 0 => empty buffer.
Tavrel::AutoRefPtr<Tavrel::IDataRef> BinaryCopyPart(
    Tavrel::AutoRefPtr<Tavrel::IDataRef> const& data, long long offset, long long count,
    Tavrel::IContext* context);

// Binary.Append (DATAREF,DATAREF): a new buffer with the bytes of first, then second.
// Never null, never an argument. A missing argument => report which, empty buffer.
// first is asked for its size and read before second is asked anything.
Tavrel::AutoRefPtr<Tavrel::IDataRef> BinaryAppend(
    Tavrel::AutoRefPtr<Tavrel::IDataRef> const& first,
    Tavrel::AutoRefPtr<Tavrel::IDataRef> const& second, Tavrel::IContext* context);
// Binary.Append (DATAREF,DATAREF,NUMBER,NUMBER): first, then count bytes of second from
// offset. Negative numbers => report, a copy of first. "xy" + "abcd", 1, 2 => "xybc".
Tavrel::AutoRefPtr<Tavrel::IDataRef> BinaryAppendPart(
    Tavrel::AutoRefPtr<Tavrel::IDataRef> const& first,
    Tavrel::AutoRefPtr<Tavrel::IDataRef> const& second, long long offset, long long count,
    Tavrel::IContext* context);

// Binary.MapFile (STRING): the host policy's buffer for path, itself, not a copy. No data
// and not interrupted => report "Given File : '<path>' does not exist.", null reference.
Tavrel::AutoRefPtr<Tavrel::IDataRef> BinaryMapFile(std::string const& path,
                                                   Tavrel::IContext* context);
