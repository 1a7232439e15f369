#include "module/ReplaceAllStringsInPlace.h"

namespace Tavrel {

void ReplaceAllStringsInPlace(std::string& text, std::string const& from, std::string const& to) {
    if (from.empty()) {
        return;
    }
    std::string::size_type position = 0;
    while ((position = text.find(from, position)) != std::string::npos) {
        text.replace(position, from.length(), to);
        position += to.length();
    }
}

}  // namespace Tavrel
