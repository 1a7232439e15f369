// The paired (de)serialisation operations of IUserDefinedType: overriding one of a pair serves
// both, and a null context answers false or null. (IVariant::AssignString's size check is
// tested with the virtual tables, in tests/abi.)
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

int gCalls = 0;              // calls of the overridden forms without a context
IContext* gSeen = kContext;  // the context the overridden forms with one were given last

class WithoutContext final : public InterfaceImpl<IUserDefinedType> {
    char const* Interface_GetTypeName() const override { return "WithoutContext"; }
    bool Interface_Deserialize(IJSON const* json) override { return ++gCalls, json == kJSON; }
    IJSON* Interface_Serialize() const override { return ++gCalls, kJSON; }
};

class WithContext final : public InterfaceImpl<IUserDefinedType> {
    char const* Interface_GetTypeName() const override { return "WithContext"; }
    bool Interface_Deserialize(IJSON const* json, IContext* context) override {
        return gSeen = context, json == kJSON;
    }
    IJSON* Interface_Serialize(IContext* context) const override { return gSeen = context, kJSON; }
};

TEST(IUserDefinedType, OneFormOverriddenServesTheOther) {
    AutoRefPtr<IUserDefinedType> const with(new WithContext());
    EXPECT_TRUE(with->Interface_Deserialize(kJSON));
    EXPECT_EQ(gSeen, nullptr) << "Deserialize passes a null context";
    gSeen = kContext;
    EXPECT_EQ(with->Interface_Serialize(), kJSON);
    EXPECT_EQ(gSeen, nullptr) << "Serialize passes a null context";

    // A form without a context needs a context to be reached.
    AutoRefPtr<IUserDefinedType> const without(new WithoutContext());
    EXPECT_FALSE(without->Interface_Deserialize(kJSON, nullptr));
    EXPECT_EQ(without->Interface_Serialize(nullptr), nullptr);
    EXPECT_EQ(gCalls, 0);
    EXPECT_TRUE(without->Interface_Deserialize(kJSON, kContext));
    EXPECT_EQ(without->Interface_Serialize(kContext), kJSON);
    EXPECT_EQ(gCalls, 2);
}

}  // namespace
}  // namespace Tavrel
