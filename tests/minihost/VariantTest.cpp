#include <gtest/gtest.h>
#include <string>

#include "minihost/host/MemoryBuffer.h"
#include "minihost/host/Variant.h"

namespace minihost {
namespace {

using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;

// The readers and the references they add are exercised through these variants by every
// module test (OperationsTest counts the references of arguments and results); here, what no
// module call does.
TEST(Variant, DataReferencesBalance) {
    long const liveBefore = MemoryBuffer::LiveCount();
    {
        Variant only;
        only.Interface_AssignString(nullptr, 5);
        EXPECT_EQ(only.string(), "") << "no bytes for a null pointer, whatever the size";
        only.Interface_AssignData(AutoRefPtr<IDataRef>(new MemoryBuffer("only")).get());
        only.Interface_AssignData(only.dataPointer());  // its only reference, assigned again
        ASSERT_NE(only.dataPointer(), nullptr);
        EXPECT_EQ(only.dataPointer()->Interface_GetCount(), 1);
        EXPECT_EQ(only.dataPointer()->GetSize(), 4u);
        EXPECT_EQ(only.assignments(), 3);
    }
    EXPECT_EQ(MemoryBuffer::LiveCount(), liveBefore);
}

}  // namespace
}  // namespace minihost
