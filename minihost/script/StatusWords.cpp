#include "minihost/script/StatusWords.h"

namespace minihost {

namespace {

constexpr unsigned int kMissing = 1;
constexpr unsigned int kWrong = 2;
constexpr unsigned int kEmptyUserDefined = 4;

unsigned int PositionOf(unsigned int status) { return status >> 16; }
unsigned int CodeOf(unsigned int status) { return status & 0xFFFFu; }

std::string CodeWords(unsigned int code) {
    switch (code) {
        case kMissing:
            return "argument missing";
        case kWrong:
            return "wrong argument";
        case kEmptyUserDefined:
            return "empty user-defined value";
        default:
            return "unknown code " + std::to_string(code);
    }
}

// What came at the place, for a code that names the argument; "" for any other code.
std::string Given(unsigned int code, std::string const* given) {
    if (code == kMissing || (code == kWrong && given == nullptr)) {
        return "no argument";
    }
    if (code == kWrong) {
        return *given;
    }
    return code == kEmptyUserDefined ? "an empty user-defined value" : "";
}

}  // namespace

std::string DescribeStatus(unsigned int status) {
    if (status == 0) {
        return "bound";
    }
    return "argument " + std::to_string(PositionOf(status)) + ": " + CodeWords(CodeOf(status));
}

std::string DescribeBindingFailure(Signature const& signature,
                                   std::vector<std::string> const& given, unsigned int status) {
    unsigned int const position = PositionOf(status);
    std::string const place =
        "argument " + std::to_string(position) + " of " + FormatSignature(signature) + ": ";
    std::string const tail = " (status " + std::to_string(status) + ")";
    bool const known = position >= 1 && position <= signature.parameters.size();
    std::string const got =
        known ? Given(CodeOf(status), position <= given.size() ? &given[position - 1] : nullptr)
              : "";
    if (got.empty()) {
        return place + CodeWords(CodeOf(status)) + tail;
    }
    return place + "expected " + signature.parameters[position - 1] + ", got " + got + tail;
}

}  // namespace minihost
