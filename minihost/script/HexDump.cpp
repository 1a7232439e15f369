#include "minihost/script/HexDump.h"

#include <cmath>

#include "minihost/script/ValuePrinter.h"

namespace minihost {

namespace {

constexpr std::size_t kBytesPerLine = 16;
constexpr std::size_t kGapAfter = 8;
constexpr int kOffsetDigits = 8;
// The bytes read from a buffer at a time: whole lines, and little memory for a huge buffer.
constexpr std::size_t kBlockBytes = 4096 * kBytesPerLine;
// 2^64: the first double that no unsigned long long holds.
constexpr double kBeyondBounds = 18446744073709551616.0;

constexpr char kDigits[] = "0123456789abcdef";

void AppendHexByte(std::string& out, unsigned char byte) {
    out += kDigits[byte >> 4];
    out += kDigits[byte & 0x0F];
}

std::string HexOffset(unsigned long long offset) {
    std::string digits;
    for (; offset != 0 || digits.size() < kOffsetDigits; offset >>= 4) {
        digits.insert(digits.begin(), kDigits[offset & 0x0F]);
    }
    return digits;
}

void AppendLine(std::string& out, std::string_view line, unsigned long long offset) {
    out += HexOffset(offset) + "  ";
    for (std::size_t i = 0; i < kBytesPerLine; ++i) {
        out += i == kGapAfter ? " " : "";
        if (i < line.size()) {
            AppendHexByte(out, static_cast<unsigned char>(line[i]));
            out += ' ';
        } else {
            out += "   ";
        }
    }
    out += " |";
    for (char const byte : line) {
        out += byte >= 0x20 && byte <= 0x7E ? byte : '.';
    }
    out += "|\n";
}

}  // namespace

std::string HexDump(std::string_view bytes, unsigned long long first) {
    std::string out;
    for (std::size_t at = 0; at < bytes.size(); at += kBytesPerLine) {
        AppendLine(out, bytes.substr(at, kBytesPerLine), first + at);
    }
    return out;
}

bool ReadDumpBound(char const* name, double value, unsigned long long& bound, std::string& error) {
    if (std::isnan(value) || value <= -1.0) {
        error = std::string("the ") + name + " " + FormatNumber(value) +
                (std::isnan(value) ? " is no number" : " is negative");
        return false;
    }
    bound = value >= kBeyondBounds ? ~0ULL : static_cast<unsigned long long>(value);
    return true;
}

ByteRange DumpRange(unsigned long long size, unsigned long long offset, unsigned long long count) {
    unsigned long long const begin = offset < size ? offset : size;
    return ByteRange{begin, begin + (count < size - begin ? count : size - begin)};
}

void WriteHexDump(std::ostream& out, Tavrel::IDataRef const& data, ByteRange range,
                  std::function<bool()> const& stop) {
    std::string block;
    for (unsigned long long at = range.begin; at < range.end && !stop();) {
        unsigned long long const left = range.end - at;
        std::size_t const asked = left < kBlockBytes ? static_cast<std::size_t>(left) : kBlockBytes;
        block.resize(asked);
        unsigned long long const got = data.Read(block.data(), asked, at);
        block.resize(got < asked ? static_cast<std::size_t>(got) : asked);
        out << HexDump(block, at);
        if (block.size() < asked) {
            return;  // a short read: what the buffer delivered is all there is to show
        }
        at += asked;
    }
}

}  // namespace minihost
