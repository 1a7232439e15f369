#include "object/AppendFromRead.h"

#include <stdexcept>

namespace Tavrel {

void AppendFromRead(std::string& bytes, IDataRef const& source, unsigned long long count,
                    unsigned long long offset) {
    if (count == 0) {
        return;
    }
    if (count > bytes.max_size() - bytes.size()) {
        throw std::length_error("AppendFromRead: the string would pass max_size()");
    }
    std::string::size_type const old = bytes.size();
    bytes.resize(old + count);
    // NOTE: the result of the Read is not looked at. Trusting it would either wipe bytes that
    // a buffer wrote but under-reported, or keep memory that it claimed but never wrote; the
    // zeros of the resize make both cases exact.
    source.Read(bytes.data() + old, count, offset);
}

}  // namespace Tavrel
