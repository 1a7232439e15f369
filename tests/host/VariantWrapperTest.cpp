// IVariant::AssignString hands a string's size to the host as the host's unsigned long. Where
// that is narrower than a size (64-bit Windows), a string it cannot carry throws
// std::length_error before the host is called, instead of reaching it cut short.
#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>
#include <vector>

#include "host/IVariant.h"

namespace Tavrel {
namespace {

// Records the sizes that reach the host; reads no byte.
class RecordingVariant final : public IVariant {
public:
    unsigned int Interface_GetType() const override { return 0; }
    double Interface_GetNumber() const override { return 0; }
    char const* Interface_GetString() const override { return ""; }
    unsigned long long Interface_GetStringSize() const override { return 0; }
    IDataRef* Interface_GetData() const override { return nullptr; }
    IUserDefinedType* Interface_GetUserDefined() const override { return nullptr; }
    void Interface_AssignNumber(double /*value*/) override {}
    void Interface_AssignString(char const* /*bytes*/, unsigned long size) override {
        sizes.push_back(size);
    }
    void Interface_AssignData(IDataRef* /*data*/) override {}
    std::vector<unsigned long> sizes;
};

TEST(VariantWrapper, AssignStringNeverCutsTheSize) {
    constexpr std::size_t kLargest = std::numeric_limits<unsigned long>::max();
    RecordingVariant variant;
    variant.AssignString("abc", 3);
    variant.AssignString(nullptr, 0);
    variant.AssignString("", kLargest);  // the bytes are the host's to read; this one reads none
    if constexpr (sizeof(std::size_t) > sizeof(unsigned long)) {
        EXPECT_THROW(variant.AssignString("", kLargest + 1), std::length_error);
        EXPECT_THROW(variant.AssignString("", std::size_t{5} << 30), std::length_error);
    }
    EXPECT_EQ(variant.sizes, (std::vector<unsigned long>{3, 0, kLargest}));
}

}  // namespace
}  // namespace Tavrel
