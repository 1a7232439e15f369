// AllTexts: every short text over an alphabet, for the string and path tests that compare the
// libraries with the references of testing/ on all of them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavrel_testing {

// Every text of up to longest bytes drawn from alphabet, "" first, shorter ones before longer.
inline std::vector<std::string> AllTexts(std::string_view alphabet, std::size_t longest) {
    std::vector<std::string> texts = {""};
    for (std::size_t i = 0; texts[i].size() < longest; ++i) {
        for (char const c : alphabet) {
            texts.push_back(texts[i] + c);
        }
    }
    return texts;
}

}  // namespace tavrel_testing
