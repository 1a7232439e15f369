#include "minihost/script/ValuePrinter.h"

#include <charconv>
#include <cmath>

#include "host/VariantType.h"

namespace minihost {

namespace {

// The escape of a byte that has a letter of its own, or null.
char const* NamedEscape(char byte) {
    switch (byte) {
        case '\n':
            return "\\n";
        case '\t':
            return "\\t";
        case '\r':
            return "\\r";
        case '\\':
            return "\\\\";
        case '"':
            return "\\\"";
        default:
            return nullptr;
    }
}

bool IsPlainPrintable(char byte) { return byte >= 0x20 && byte <= 0x7E; }

void AppendHexEscape(std::string& out, char byte) {
    static constexpr char kDigits[] = "0123456789abcdef";
    auto const value = static_cast<unsigned char>(byte);
    out += "\\x";
    out += kDigits[value >> 4];
    out += kDigits[value & 0x0F];
}

// The first bytes of a buffer, read through its interface: direct access is not required of
// a host's buffer. A short read shows what was delivered.
std::string PreviewOf(Tavrel::IDataRef const& data, unsigned long long wanted) {
    std::string bytes(wanted, '\0');
    if (wanted != 0) {
        bytes.resize(data.Read(bytes.data(), wanted, 0));
    }
    return bytes;
}

// "<TYPE>(<size>) \"<preview>\"", with "..." behind when it was cut to the preview.
std::string Sized(char const* type, unsigned long long size, std::string_view preview, bool cut) {
    std::string text = std::string(type) + "(" + std::to_string(size) + ") " + QuoteBytes(preview);
    return cut ? text + "..." : text;
}

std::string FormatDataRef(Variant const& value, bool full) {
    Tavrel::AutoRefPtr<Tavrel::IDataRef> const data = value.data();
    if (!data) {
        return "null";
    }
    unsigned long long const size = data->GetSize();
    bool const cut = !full && size > kPreviewBytes;
    return Sized("DATAREF", size, PreviewOf(*data.get(), cut ? kPreviewBytes : size), cut);
}

std::string FormatString(std::string_view bytes, bool full) {
    if (full || bytes.size() <= kLongString) {
        return QuoteBytes(bytes);
    }
    return Sized("STRING", bytes.size(), bytes.substr(0, kPreviewBytes), true);
}

}  // namespace

std::string EscapeBytes(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size());
    for (char const byte : bytes) {
        if (char const* named = NamedEscape(byte)) {
            out += named;
        } else if (IsPlainPrintable(byte)) {
            out += byte;
        } else {
            AppendHexEscape(out, byte);
        }
    }
    return out;
}

std::string QuoteBytes(std::string_view bytes) { return '"' + EscapeBytes(bytes) + '"'; }

std::string FormatNumber(double value) {
    // NOTE: to_chars would give "-nan" for a NaN with the sign bit; a NaN has no sign to show.
    if (std::isnan(value)) {
        return "nan";
    }
    char buffer[64];
    auto const result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

std::string FormatValue(Variant const& value, bool full) {
    unsigned int const type = value.type();
    switch (type) {
        case Tavrel::VariantType::kNumber:
            return FormatNumber(value.number());
        case Tavrel::VariantType::kString:
            return FormatString(value.string(), full);
        case Tavrel::VariantType::kDataRef:
            return FormatDataRef(value, full);
        case Variant::kNothing:
            return "nothing";
        default:
            return "user-defined value (type " + std::to_string(type) + ")";
    }
}

}  // namespace minihost
