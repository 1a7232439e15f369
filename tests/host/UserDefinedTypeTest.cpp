// The paired (de)serialisation operations of IUserDefinedType: overriding one of a pair
// serves both, and a null context answers false or null.
#include <gtest/gtest.h>

#include "host/IUserDefinedType.h"
#include "object/AutoRefPtr.h"
#include "object/InterfaceImpl.h"

namespace Tavrel {
namespace {

// Distinct pointers that the operations only pass on and never follow.
int gMarkers[2];
IContext* const kContext = static_cast<IContext*>(static_cast<void*>(&gMarkers[0]));
IJSON* const kJSON = static_cast<IJSON*>(static_cast<void*>(&gMarkers[1]));

// Overrides the forms without a context, and remembers how often they ran.
class WithoutContext final : public InterfaceImpl<IUserDefinedType> {
public:
    using IUserDefinedType::Interface_Deserialize;
    using IUserDefinedType::Interface_Serialize;
    char const* Interface_GetTypeName() const override { return "WithoutContext"; }
    bool Interface_Deserialize(IJSON const* json) override {
        ++calls;
        return json == kJSON;
    }
    IJSON* Interface_Serialize() const override {
        ++calls;
        return kJSON;
    }
    mutable int calls = 0;
};

// Overrides the forms with a context, and remembers the context it was given last.
class WithContext final : public InterfaceImpl<IUserDefinedType> {
public:
    using IUserDefinedType::Interface_Deserialize;
    using IUserDefinedType::Interface_Serialize;
    char const* Interface_GetTypeName() const override { return "WithContext"; }
    bool Interface_Deserialize(IJSON const* json, IContext* context) override {
        seen = context;
        return json == kJSON;
    }
    IJSON* Interface_Serialize(IContext* context) const override {
        seen = context;
        return kJSON;
    }
    mutable IContext* seen = kContext;
};

TEST(IUserDefinedType, AContextFormOverriddenServesTheOtherForm) {
    AutoRefPtr<WithContext> type(new WithContext());
    EXPECT_TRUE(type->Interface_Deserialize(kJSON));
    EXPECT_EQ(type->seen, nullptr) << "Deserialize passes a null context";
    type->seen = kContext;
    EXPECT_EQ(type->Interface_Serialize(), kJSON);
    EXPECT_EQ(type->seen, nullptr) << "Serialize passes a null context";
}

TEST(IUserDefinedType, AFormWithoutContextNeedsAContextToBeReached) {
    AutoRefPtr<WithoutContext> type(new WithoutContext());
    EXPECT_FALSE(type->Interface_Deserialize(kJSON, nullptr));
    EXPECT_EQ(type->Interface_Serialize(nullptr), nullptr);
    EXPECT_EQ(type->calls, 0);
    EXPECT_TRUE(type->Interface_Deserialize(kJSON, kContext));
    EXPECT_EQ(type->Interface_Serialize(kContext), kJSON);
    EXPECT_EQ(type->calls, 2);
}

}  // namespace
}  // namespace Tavrel
