#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <string>
#include <utility>

#include "minihost/host/MemoryBuffer.h"
#include "minihost/script/HexDump.h"
#include "minihost/script/ValuePrinter.h"
#include "object/Data.h"
#include "tests/scripts/Rows.h"

namespace minihost {
namespace {

using namespace std::string_literals;

TEST(ValuePrinter, NumbersReadBackAsTheSameValue) {
    double const inf = std::numeric_limits<double>::infinity();
    rows::Expect<double, std::string>({{0, "0"},
                                       {-0.0, "-0"},
                                       {-2.5, "-2.5"},
                                       {0.1, "0.1"},
                                       {1e21, "1e+21"},
                                       {9007199254740993.0, "9007199254740992"},
                                       {std::nan(""), "nan"},
                                       {-std::nan(""), "nan"},
                                       {inf, "inf"},
                                       {-inf, "-inf"}},
                                      FormatNumber);
}

// The quotes, the backslash and the bytes outside 0x20-0x7e are escaped; the script cases show
// \n, \t, \x00 and \xff.
TEST(ValuePrinter, EscapesEveryByteThatIsNotPlainPrintable) {
    EXPECT_EQ(QuoteBytes("a\"b\\c\nd\te\r"), "\"a\\\"b\\\\c\\nd\\te\\r\"");
    EXPECT_EQ(QuoteBytes("\0\x1f\x7f\x80\xff ~"s), "\"\\x00\\x1f\\x7f\\x80\\xff ~\"");
}

Tavrel::AutoRefPtr<Tavrel::IDataRef> Host(std::string const& bytes, MemoryBuffer::Options options) {
    return Tavrel::AutoRefPtr<Tavrel::IDataRef>(new MemoryBuffer(bytes, options));
}

Variant Module(std::string const& bytes) {
    return Variant::DataRef(Tavrel::AutoRefPtr<Tavrel::IDataRef>(new Tavrel::Data(bytes)));
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
        {"empty buffer", Module(""), "DATAREF(0) \"\""},
        {"long buffer", Module(long60), "DATAREF(60) \"" + long60.substr(0, 48) + "\"..."},
        {"long buffer in full", Module(long60), "DATAREF(60) \"" + long60 + "\"", true},
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

// The script case dump shows lines of 16 bytes and shorter ones, and the second line's offset.
TEST(HexDump, ShowsOffsetHexAndText) {
    std::string const gap(3 * 15 + 2, ' ');  // the byte's blank, 15 missing, the middle gap
    rows::Expect<std::pair<std::string, unsigned long long>, std::string>(
        {{{"", 0}, ""},
         {{"\0\n~\x7f\xff"s, 0xabc},
          "00000abc  00 0a 7e 7f ff" + std::string(3 * 11 + 2, ' ') + " |..~..|\n"},
         {{"A", 0x100000000ULL}, "100000000  41" + gap + " |A|\n"}},
        [](auto const& in) { return HexDump(in.first, in.second); });
}

// Offset and count as dump reads them, the range within a buffer of 10 bytes ("begin-end"), or
// the error. Plain ranges are the script case dump's.
TEST(HexDump, ReadsTheRangeAsTheModuleDoes) {
    rows::Expect<std::pair<double, double>, std::string>(
        {{{0, 1e300}, "0-10"},
         {{20, 1}, "10-10"},
         {{2.9, 0.5}, "2-2"},
         {{-0.5, 2}, "0-2"},
         {{-1, 2}, "the offset -1 is negative"},
         {{0, -2}, "the count -2 is negative"},
         {{std::nan(""), 1}, "the offset nan is no number"}},
        [](std::pair<double, double> const& in) {
            unsigned long long offset = ~0ULL;
            unsigned long long count = ~0ULL;
            std::string error;
            if (!ReadDumpBound("offset", in.first, offset, error) ||
                !ReadDumpBound("count", in.second, count, error)) {
                return error;
            }
            ByteRange const range = DumpRange(10, offset, count);
            return std::to_string(range.begin) + "-" + std::to_string(range.end);
        });
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
