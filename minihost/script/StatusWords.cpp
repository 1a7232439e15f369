#include "minihost/script/StatusWords.h"

namespace minihost {

namespace {

std::string CodeWords(unsigned int code) {
    switch (code) {
        case 1:
            return "argument missing";
        case 2:
            return "wrong argument";
        case 4:
            return "empty user-defined value";
        default:
            return "unknown code " + std::to_string(code);
    }
}

}  // namespace

std::string DescribeStatus(unsigned int status) {
    if (status == 0) {
        return "bound";
    }
    unsigned int const position = status >> 16;
    unsigned int const code = status & 0xFFFFu;
    return "argument " + std::to_string(position) + ": " + CodeWords(code);
}

}  // namespace minihost
