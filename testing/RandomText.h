// RandomText: random numbers and texts for property checks, drawn from a small alphabet so
// that matches, folds and faults are frequent, from a fixed seed so that a failure repeats.
// The same seed gives the same sequence on every run and every machine of one standard
// library. It is no source of secrets and makes no attempt at an even spread over all bytes.
#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace tavrel_testing {

class RandomText {
public:
    explicit RandomText(unsigned seed) : mEngine(seed) {}

    // A number from 0 to n - 1.   0 => 0     1 => 0     3 => 0, 1 or 2
    std::size_t Below(std::size_t n) {
        return n == 0 ? 0 : std::uniform_int_distribution<std::size_t>(0, n - 1)(mEngine);
    }

    // A text of 0 to maxSize bytes, each drawn from alphabet.
    //   ("ab", 0)  => ""     ("ab", 3) => e.g. "", "b", "aab"     ("", 2) => undefined
    // NOTE: the alphabet must not be empty unless maxSize is 0.
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

}  // namespace tavrel_testing
