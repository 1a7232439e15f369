// Random texts for the property checks: drawn from a small alphabet so that matches, folds and
// faults are frequent, from a fixed seed so that a failure repeats.
#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace Tavrel::Testing {

class RandomText {
public:
    explicit RandomText(unsigned seed) : mEngine(seed) {}

    // A number from 0 to n - 1 (0 when n is 0).
    std::size_t Below(std::size_t n) {
        return n == 0 ? 0 : std::uniform_int_distribution<std::size_t>(0, n - 1)(mEngine);
    }

    // A text of 0 to maxSize bytes, each drawn from alphabet.
    std::string From(std::string_view alphabet, std::size_t maxSize) {
        std::string text(Below(maxSize + 1), '\0');
        for (char& c : text) {
            c = alphabet[Below(alphabet.size())];
        }
        return text;
    }

private:
    std::mt19937 mEngine;
};

}  // namespace Tavrel::Testing
