#include "object/AppendFromRead.h"

#include <climits>
#include <cstring>
#include <ios>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace Tavrel {

namespace {

// Below this many bytes, zeroing them first costs less than opening spare capacity.
constexpr unsigned long long kInPlaceMinCount = 4096;

void CheckRoomFor(std::string const& bytes, unsigned long long count) {
    if (count > bytes.max_size() - bytes.size()) {
        throw std::length_error("AppendFromRead: the string would pass max_size()");
    }
}

// Makes capacity for count more bytes, at least doubling it when it has to grow, so that a
// string grown by many appends is copied only a logarithmic number of times.
void ReserveFor(std::string& bytes, unsigned long long count) {
    std::string::size_type const needed = bytes.size() + count;
    if (needed > bytes.capacity()) {
        std::string::size_type const doubled = bytes.capacity() * 2;
        bytes.reserve(needed > doubled ? needed : doubled);
    }
}

// Zeroes the bytes of a count-byte destination that a Read giving delivered left out.
void ZeroUndelivered(char* destination, unsigned long long count, unsigned long long delivered) {
    if (delivered < count) {
        std::memset(destination + delivered, 0, count - delivered);
    }
}

// The spare capacity of a string, open for writing. The string is moved into a stringbuf
// whose put area starts at its end and reaches to its capacity; the bytes written there and
// committed become part of the string when it is moved back, with no copy and no zeroing.
// The destructor moves it back on every way out, so an exception from the writer leaves the
// string as it was.
// NOTE: this is the C++20 way to write into a string's capacity without first filling it:
// the put area of a stringbuf is writable storage by contract, and str() && moves the
// string out with the length of what was written.
class SpareCapacity : private std::stringbuf {
public:
    explicit SpareCapacity(std::string& bytes)
        : std::stringbuf(std::move(bytes), std::ios_base::out | std::ios_base::ate),
          mBytes(bytes) {}
    ~SpareCapacity() override { mBytes = std::move(static_cast<std::stringbuf&>(*this)).str(); }

    SpareCapacity(SpareCapacity const&) = delete;
    SpareCapacity& operator=(SpareCapacity const&) = delete;

    char* Begin() const { return pptr(); }
    unsigned long long Size() const { return static_cast<unsigned long long>(epptr() - pptr()); }

    // Makes the next count written bytes part of the string.
    void Commit(unsigned long long count) {
        for (; count > INT_MAX; count -= INT_MAX) {
            pbump(INT_MAX);
        }
        pbump(static_cast<int>(count));
    }

private:
    std::string& mBytes;
};

// Reads count bytes into the spare capacity of bytes and commits them, zeroing what the Read
// left out; gives what the Read gave. Gives nothing, and reads nothing, when the room that
// opens is shorter than count.
// NOTE: the standard promises a put area only as long as the string's size; one library may
// open less of the capacity than another, and then the caller takes the simple road.
std::optional<unsigned long long> ReadIntoSpareCapacity(std::string& bytes, IDataRef const& source,
                                                        unsigned long long count,
                                                        unsigned long long offset) {
    SpareCapacity spare(bytes);
    if (spare.Size() < count) {
        return std::nullopt;
    }
    unsigned long long const delivered = source.Read(spare.Begin(), count, offset);
    ZeroUndelivered(spare.Begin(), count, delivered);
    spare.Commit(count);
    return delivered;
}

}  // namespace

unsigned long long AppendFromReadByResize(std::string& bytes, IDataRef const& source,
                                          unsigned long long count, unsigned long long offset) {
    if (count == 0) {
        return 0;
    }
    CheckRoomFor(bytes, count);
    std::string::size_type const old = bytes.size();
    bytes.resize(old + count);
    // The destination is taken after the resize; bytes not delivered stay zero.
    return source.Read(bytes.data() + old, count, offset);
}

unsigned long long AppendFromRead(std::string& bytes, IDataRef const& source,
                                  unsigned long long count, unsigned long long offset) {
    if (count < kInPlaceMinCount) {
        return AppendFromReadByResize(bytes, source, count, offset);
    }
    CheckRoomFor(bytes, count);
    ReserveFor(bytes, count);
    if (std::optional<unsigned long long> const delivered =
            ReadIntoSpareCapacity(bytes, source, count, offset)) {
        return *delivered;
    }
    return AppendFromReadByResize(bytes, source, count, offset);
}

}  // namespace Tavrel
