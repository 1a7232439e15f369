#include "object/Data.h"

#include <cstring>
#include <memory>

#include "object/AppendFromRead.h"

namespace Tavrel {

namespace {

constexpr unsigned long long kCompareBlockSize = 8192;

// Copies size bytes into store; a null pointer is only accepted together with size 0.
void AssignBytes(std::string& store, char const* bytes, unsigned long long size) {
    if (size == 0) {
        store.clear();
        return;
    }
    store.assign(bytes, size);
}

// Compares mine with other through Read, one block of 8192 bytes at a time.
bool EqualThroughReads(std::string const& mine, IDataRef const& other) {
    std::unique_ptr<char[]> block(new char[kCompareBlockSize]);
    unsigned long long remaining = mine.size();
    unsigned long long position = 0;
    while (remaining > 0) {
        unsigned long long const n = remaining < kCompareBlockSize ? remaining : kCompareBlockSize;
        if (other.Read(block.get(), n, position) != n) {
            return false;
        }
        if (std::memcmp(mine.data() + position, block.get(), n) != 0) {
            return false;
        }
        remaining -= n;
        position += n;
    }
    return true;
}

}  // namespace

Data::Data(std::string_view const& text) : mBytes(text) {}

Data::Data(char const* bytes, std::size_t size) { AssignBytes(mBytes, bytes, size); }

unsigned long long Data::Interface_GetSize() const { return mBytes.size(); }

void Data::Interface_Assign(char const* bytes, unsigned long long size) {
    AssignBytes(mBytes, bytes, size);
}

unsigned long long Data::Interface_Read(char* destination, unsigned long long count,
                                        unsigned long long offset) const {
    unsigned long long const size = mBytes.size();
    if (offset >= size) {
        return 0;
    }
    if (count > size - offset) {
        count = size - offset;
    }
    if (count != 0) {
        std::memcpy(destination, mBytes.data() + offset, count);
    }
    return count;
}

bool Data::Interface_IsEqual(IDataRef* other) const {
    if (other == nullptr || other->GetSize() != mBytes.size()) {
        return false;
    }
    if (mBytes.empty()) {
        return true;
    }
    // NOTE: the same object takes this direct path too and compares equal.
    if (char const* bytes = other->GetData()) {
        return std::memcmp(mBytes.data(), bytes, mBytes.size()) == 0;
    }
    return EqualThroughReads(mBytes, *other);
}

IDataRef* Data::Interface_Clone() const { return new Data(std::string_view(mBytes)); }

char const* Data::Interface_GetData() const { return mBytes.data(); }

void Data::PushBack(AutoRefPtr<IDataRef> const& source, std::size_t count, std::size_t offset) {
    if (!source) {
        return;
    }
    unsigned long long const available = source->GetSize();
    if (count > available || offset > available - count) {
        return;
    }
    if (count == 0) {
        // NOTE: an empty range is asked of the source like any other; it delivers nothing
        // and the buffer stays as it is.
        source->Read(mBytes.data() + mBytes.size(), 0, offset);
        return;
    }
    AppendRead(*source.get(), count, offset);
}

void Data::AppendRead(IDataRef const& source, unsigned long long count, unsigned long long offset) {
    AppendFromRead(mBytes, source, count, offset);
}

void Data::PushBack(AutoRefPtr<IDataRef> const& source) {
    if (source) {
        PushBack(source, source->GetSize(), 0);
    }
}

void Data::Reserve(unsigned long long size) {
    // NOTE: a size the store can never hold is left to the appends, which then fail as they
    // would have without the reserve.
    if (size > mBytes.capacity() && size <= mBytes.max_size()) {
        mBytes.reserve(size);
    }
}

}  // namespace Tavrel
