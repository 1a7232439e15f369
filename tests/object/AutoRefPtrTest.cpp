// Counting rules of AutoRefPtr and InterfaceImpl, observed on a buffer's count.
#include <gtest/gtest.h>

#include "object/AutoRefPtr.h"
#include "object/Data.h"

namespace {

using Tavrel::AutoRefPtr;
using Tavrel::Data;
using Tavrel::IDataRef;

// A Data that records its destruction.
class Tracked final : public Data {
public:
    explicit Tracked(int& destroyed) : mDestroyed(destroyed) {}
    ~Tracked() override { ++mDestroyed; }

private:
    int& mDestroyed;
};

TEST(AutoRefPtr, AdoptShareAndRelease) {
    int destroyed = 0;
    {
        AutoRefPtr<Data> data(new Tracked(destroyed));
        EXPECT_EQ(data->Interface_GetCount(), 1);
        {
            AutoRefPtr<IDataRef> shared(data);
            EXPECT_EQ(data->Interface_GetCount(), 2);
            EXPECT_EQ(shared.get(), data.get());
        }
        EXPECT_EQ(data->Interface_GetCount(), 1);
        data->AddRef();
        EXPECT_FALSE(data->Release());
        EXPECT_EQ(destroyed, 0);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(AutoRefPtr, EmptyPointers) {
    AutoRefPtr<Data> empty(nullptr);
    AutoRefPtr<IDataRef> converted(empty);
    EXPECT_FALSE(converted);
    EXPECT_FALSE(empty);
    empty.ReleaseImpl();
    empty.AddRefImpl();
    EXPECT_EQ(empty.get(), nullptr);
    // The true value of the boolean test is a member that does nothing when called.
    AutoRefPtr<Data> set(new Data());
    auto const truth = static_cast<void (AutoRefPtr<Data>::*)() const>(set);
    ASSERT_NE(truth, nullptr);
    (set.*truth)();
    EXPECT_EQ(static_cast<void (AutoRefPtr<Data>::*)() const>(empty), nullptr);
}

TEST(AutoRefPtr, MoveAssignmentAndReset) {
    int destroyed = 0;
    AutoRefPtr<IDataRef> target(new Tracked(destroyed));
    AutoRefPtr<IDataRef> source(new Tracked(destroyed));
    IDataRef* const moved = source.get();
    target = std::move(source);
    EXPECT_EQ(destroyed, 1);
    EXPECT_FALSE(source);
    EXPECT_EQ(target.get(), moved);
    EXPECT_EQ(moved->Interface_GetCount(), 1);
    AutoRefPtr<IDataRef> nothing(nullptr);
    target = std::move(nothing);
    EXPECT_EQ(destroyed, 2);
    EXPECT_FALSE(target);
    auto& same = target.reset(new Tracked(destroyed));
    EXPECT_EQ(&same, &target);
    target.reset(new Data());
    EXPECT_EQ(destroyed, 3);
    bool const set = static_cast<bool>(target);
    EXPECT_TRUE(set);
    EXPECT_EQ(target->Interface_GetCount(), 1);
}

TEST(InterfaceImpl, ReleaseAtOneDestroys) {
    int destroyed = 0;
    auto* data = new Tracked(destroyed);
    data->AddRef();
    EXPECT_FALSE(data->Release());
    EXPECT_TRUE(data->Release());
    EXPECT_EQ(destroyed, 1);
}

}  // namespace
