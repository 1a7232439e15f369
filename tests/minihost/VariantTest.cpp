#include <gtest/gtest.h>
#include <string>

#include "minihost/host/MemoryBuffer.h"
#include "minihost/host/Variant.h"

namespace minihost {
namespace {

using Tavrel::AutoRefPtr;
using Tavrel::IDataRef;
using Tavrel::IUserDefinedType;

class FakeUserObject final : public InterfaceImpl<IUserDefinedType> {
public:
    char const* Interface_GetTypeName() const override { return "Fake"; }
};

TEST(Variant, ReadersGiveTheEmptyValueOfAnotherType) {
    AutoRefPtr<IDataRef> buffer(new MemoryBuffer("xyz"));
    AutoRefPtr<IUserDefinedType> object(new FakeUserObject());
    struct Row {
        char const* name;
        Variant variant;
        unsigned int type;
        double number;
        std::string string;
        IDataRef* data;
        IUserDefinedType* user;
    } const rows[] = {
        {"empty", Variant(), 0, 0.0, "", nullptr, nullptr},
        {"number", Variant::Number(-2.5), 5, -2.5, "", nullptr, nullptr},
        {"string with NUL", Variant::String({"a\0b", 3}), 9, 0.0, {"a\0b", 3}, nullptr, nullptr},
        {"dataref", Variant::DataRef(buffer), 13, 0.0, "", buffer.get(), nullptr},
        {"null dataref", Variant::DataRef({}), 13, 0.0, "", nullptr, nullptr},
        {"user-defined", Variant::UserDefined(21, object), 21, 0.0, "", nullptr, object.get()},
        {"empty user-defined", Variant::UserDefined(40, {}), 40, 0.0, "", nullptr, nullptr},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        Tavrel::IVariant const& v = row.variant;
        EXPECT_EQ(v.GetType(), row.type);
        EXPECT_EQ(v.GetNumber(), row.number);
        ASSERT_NE(v.GetString(), nullptr);
        EXPECT_EQ(std::string(v.GetString(), v.GetStringSize()), row.string);
        EXPECT_EQ(v.GetData().get(), row.data);
        EXPECT_EQ(v.GetUserDefined().get(), row.user);
    }
    EXPECT_EQ(buffer->Interface_GetCount(), 2) << "ours and the row's: the rest came back";
    EXPECT_EQ(object->Interface_GetCount(), 2);
}

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
