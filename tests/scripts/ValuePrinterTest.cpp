#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <string>

#include "minihost/host/MemoryBuffer.h"
#include "minihost/script/HexDump.h"
#include "minihost/script/ValuePrinter.h"
#include "object/Data.h"

namespace minihost {
namespace {

using namespace std::string_literals;

TEST(ValuePrinter, NumbersReadBackAsTheSameValue) {
    struct Row {
        double value;
        std::string text;
    };
    Row const rows[] = {
        {0, "0"},
        {-0.0, "-0"},
        {-2.5, "-2.5"},
        {0.1, "0.1"},
        {1e21, "1e+21"},
        {9007199254740993.0, "9007199254740992"},
        {std::nan(""), "nan"},
        {-std::nan(""), "nan"},
        {std::numeric_limits<double>::infinity(), "inf"},
        {-std::numeric_limits<double>::infinity(), "-inf"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(FormatNumber(row.value), row.text) << "row " << row.text;
    }
}

TEST(ValuePrinter, EscapesEveryByteThatIsNotPlainPrintable) {
    EXPECT_EQ(QuoteBytes("a\"b\\c\nd\te\r"), "\"a\\\"b\\\\c\\nd\\te\\r\"");
    EXPECT_EQ(QuoteBytes("\0\x1f\x7f\x80\xff ~"s), "\"\\x00\\x1f\\x7f\\x80\\xff ~\"");
    for (int byte = 0; byte < 256; ++byte) {
        std::string const shown = EscapeBytes(std::string(1, static_cast<char>(byte)));
        bool const plain = byte >= 0x20 && byte <= 0x7e && byte != '"' && byte != '\\';
        EXPECT_EQ(shown.size(), plain ? 1u : (shown[1] == 'x' ? 4u : 2u)) << "row " << byte;
    }
}

Tavrel::AutoRefPtr<Tavrel::IDataRef> Host(std::string const& bytes, MemoryBuffer::Options options) {
    return Tavrel::AutoRefPtr<Tavrel::IDataRef>(new MemoryBuffer(bytes, options));
}

// Numbers, strings and module buffers with bytes are shown by the script cases.
TEST(ValuePrinter, ShowsEachKindOfValue) {
    std::string const long60(60, 'z');
    std::string const long257(257, 's');
    struct Row {
        std::string name;
        Variant value;
        std::string text;
        bool full = false;
    };
    Row const rows[] = {
        {"empty buffer", Variant::DataRef(Tavrel::AutoRefPtr<Tavrel::IDataRef>(new Tavrel::Data())),
         "DATAREF(0) \"\""},
        {"long buffer shows 48 bytes",
         Variant::DataRef(Tavrel::AutoRefPtr<Tavrel::IDataRef>(new Tavrel::Data(long60))),
         "DATAREF(60) \"" + long60.substr(0, 48) + "\"..."},
        {"long buffer in full",
         Variant::DataRef(Tavrel::AutoRefPtr<Tavrel::IDataRef>(new Tavrel::Data(long60))),
         "DATAREF(60) \"" + long60 + "\"", true},
        {"string of 256 bytes", Variant::String(long257.substr(1)), '"' + long257.substr(1) + '"'},
        {"string of 257 bytes", Variant::String(long257),
         "STRING(257) \"" + long257.substr(0, 48) + "\"..."},
        {"long string in full", Variant::String(long257), '"' + long257 + '"', true},
        // A host buffer need not expose its bytes; the preview reads them.
        {"hidden bytes", Variant::DataRef(Host("abc", {false, 0})), "DATAREF(3) \"abc\""},
        {"short reads", Variant::DataRef(Host("abcdef", {false, 4})), "DATAREF(6) \"abcd\""},
        {"null buffer", Variant::DataRef({}), "null"},
        {"nothing", Variant(), "nothing"},
        {"user-defined", Variant::UserDefined(21, {}), "user-defined value (type 21)"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(FormatValue(row.value, row.full), row.text) << "row " << row.name;
    }
}

TEST(HexDump, ShowsOffsetHexAndText) {
    std::string const gap(3 * 15 + 2, ' ');  // the byte's blank, 15 missing, the middle gap
    struct Row {
        std::string bytes;
        unsigned long long first;
        std::string dump;
    };
    Row const rows[] = {
        {"", 0, ""},
        {"Hello, Tavrel!", 0,
         "00000000  48 65 6c 6c 6f 2c 20 54  61 76 72 65 6c 21        |Hello, Tavrel!|\n"},
        {"0123456789abcdef!", 0x10,
         "00000010  30 31 32 33 34 35 36 37  38 39 61 62 63 64 65 66  |0123456789abcdef|\n"
         "00000020  21" +
             gap + " |!|\n"},
        {"\0\n~\x7f\xff"s, 0xabc,
         "00000abc  00 0a 7e 7f ff" + std::string(3 * 11 + 2, ' ') + " |..~..|\n"},
        {"A", 0x100000000ULL, "100000000  41" + gap + " |A|\n"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(HexDump(row.bytes, row.first), row.dump) << "row " << row.first;
    }
}

TEST(HexDump, ReadsTheRangeAsTheModuleDoes) {
    unsigned long long const all = ~0ULL;
    struct Row {
        double offset;
        double count;
        std::string range;  // "begin-end", or the error
    };
    Row const rows[] = {
        {0, 1e300, "0-10"},
        {4, 3, "4-7"},
        {8, 5, "8-10"},
        {20, 1, "10-10"},
        {2.9, 0.5, "2-2"},
        {-0.5, 2, "0-2"},
        {-1, 2, "the offset -1 is negative"},
        {0, -2, "the count -2 is negative"},
        {std::nan(""), 1, "the offset nan is no number"},
    };
    for (Row const& row : rows) {
        unsigned long long offset = all;
        unsigned long long count = all;
        std::string error;
        if (ReadDumpBound("offset", row.offset, offset, error) &&
            ReadDumpBound("count", row.count, count, error)) {
            ByteRange const range = DumpRange(10, offset, count);
            error = std::to_string(range.begin) + "-" + std::to_string(range.end);
        }
        EXPECT_EQ(error, row.range) << "row " << row.offset << ", " << row.count;
    }
}

TEST(HexDump, ReadsABufferInBlocksAndStopsAtAShortRead) {
    std::string bytes(65536 + 21, 'q');
    bytes[65536] = '\n';
    std::ostringstream whole;
    WriteHexDump(whole, *Host(bytes, {false, 0}).get(), ByteRange{3, bytes.size()},
                 [] { return false; });
    EXPECT_EQ(whole.str(), HexDump(std::string_view(bytes).substr(3), 3));
    std::ostringstream cut;
    WriteHexDump(cut, *Host(bytes, {false, 20}).get(), ByteRange{0, 40}, [] { return false; });
    EXPECT_EQ(cut.str(), HexDump(bytes.substr(0, 20), 0));
    std::ostringstream stopped;
    WriteHexDump(stopped, *Host(bytes, {false, 0}).get(), ByteRange{0, 40}, [] { return true; });
    EXPECT_EQ(stopped.str(), "");
}

}  // namespace
}  // namespace minihost
