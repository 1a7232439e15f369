// MemoryBuffer: a host-side buffer whose bytes live in memory, for tests, fuzzing and
// benchmarks. It can hide its bytes (GetData gives null, so readers must use Read) and
// cut every Read short, to play a host whose buffers deliver in pieces. It counts the
// Read and GetData calls it receives. It never touches a file.
#pragma once

#include <atomic>
#include <string>
#include <string_view>
#include <utility>

#include "minihost/host/LiveCount.h"
#include "object/IDataRef.h"
#include "object/InterfaceImpl.h"

namespace minihost {

// How a MemoryBuffer's Read misbehaves, to play a host whose Read does not keep its word.
// Each fault acts on the bytes the Read would deliver (after maxReadChunk).
enum class ReadFault : unsigned char {
    kNone,          // writes the bytes and gives their count
    kUnderReport,   // writes the bytes and gives 0
    kOverClaim,     // writes nothing and gives the whole count asked for
    kOverReport,    // writes the bytes and gives more than the count asked for
    kThrowHalfway,  // writes the first half of the bytes, then throws std::runtime_error
};

// How a MemoryBuffer presents its bytes.
struct MemoryBufferOptions {
    // false => Interface_GetData gives null.
    bool exposeBytes = true;
    // > 0 => every Read delivers at most this many bytes; 0 => no limit.
    unsigned long long maxReadChunk = 0;
    ReadFault readFault = ReadFault::kNone;
};

class MemoryBuffer final : public InterfaceImpl<Tavrel::IDataRef> {
public:
    using Options = MemoryBufferOptions;

    // A buffer with a copy of bytes, NUL bytes included; its count starts at 1.
    explicit MemoryBuffer(std::string_view bytes, Options options = {});
    // Selects the constructor below; a plain string argument would make the call ambiguous
    // with the one above for string literals.
    struct MoveBytesIn {};
    // A buffer that takes over bytes (moved from, not copied), so a large content exists
    // once; otherwise as above.
    MemoryBuffer(MoveBytesIn /*tag*/, std::string&& bytes, Options options = {})
        : mBytes(std::move(bytes)), mOptions(options) {}

    // Host-side readers.
    std::string const& bytes() const { return mBytes; }
    Options const& options() const { return mOptions; }
    // How many Interface_Read / Interface_GetData calls this buffer received.
    int readCalls() const { return mReadCalls.load(); }
    int getDataCalls() const { return mGetDataCalls.load(); }

    // MemoryBuffer and FileBuffer objects alive in this process now.
    static long LiveCount() { return LiveToken::Count(); }

    unsigned long long Interface_GetSize() const override { return mBytes.size(); }
    // Replaces the content with size bytes; (null, 0) => empty. Null with size > 0 => empty.
    void Interface_Assign(char const* bytes, unsigned long long size) override;
    // As Data: offset >= size => 0 (destination untouched); count cut to size - offset,
    // then to maxReadChunk. Size 100: (10 at 95) => 5; maxReadChunk 3: (10 at 0) => 3.
    // Then readFault acts: size 100, (10 at 0) => kUnderReport 0, kOverClaim 10 with nothing
    // written, kOverReport 11, kThrowHalfway 5 bytes written and a std::runtime_error.
    unsigned long long Interface_Read(char* destination, unsigned long long count,
                                      unsigned long long offset) const override;
    // Same size and same bytes, read from other in blocks; null => false.
    bool Interface_IsEqual(Tavrel::IDataRef* other) const override;
    // A new MemoryBuffer with the same bytes and options; the one reference travels with it.
    Tavrel::IDataRef* Interface_Clone() const override;
    // The bytes (never null, also when empty) when exposeBytes is set; otherwise null.
    char const* Interface_GetData() const override;

private:
    std::string mBytes;
    Options mOptions;
    mutable std::atomic<int> mReadCalls{0};
    mutable std::atomic<int> mGetDataCalls{0};
    LiveToken mLive;
};

}  // namespace minihost
