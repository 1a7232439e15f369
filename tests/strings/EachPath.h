// EachPath: runs a test once on every instruction-set path of the string library that this
// build and processor have (strings/Dispatch.h), named by the path ("avx2"), and puts the path
// that was in use back afterwards. It checks nothing itself.
#pragma once

#include <gtest/gtest.h>
#include <string>

#include "strings/Dispatch.h"

namespace Tavrel {

class EachPath : public testing::TestWithParam<StringsPath> {
protected:
    void SetUp() override {
        mBefore = ActiveStringsPath();
        ASSERT_TRUE(UseStringsPath(GetParam()));
    }
    void TearDown() override { UseStringsPath(mBefore); }

private:
    StringsPath mBefore = StringsPath::kPortable;
};

inline std::string PathName(testing::TestParamInfo<StringsPath> const& info) {
    return StringsPathName(info.param);
}

}  // namespace Tavrel

// The tests of Suite (a class derived from EachPath) run on every available path.
#define TAVREL_ON_EACH_PATH(Suite)                                                              \
    INSTANTIATE_TEST_SUITE_P(Path, Suite, testing::ValuesIn(::Tavrel::AvailableStringsPaths()), \
                             ::Tavrel::PathName)
