#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "minihost/host/MemoryBuffer.h"
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
    EXPECT_EQ(QuoteBytes("a\"b\\c\nd\te\r"), "\"a\\\"b\\\\c\\nd\\te\\x0d\"");
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
    struct Row {
        std::string name;
        Variant value;
        std::string text;
    };
    Row const rows[] = {
        {"empty buffer", Variant::DataRef(Tavrel::AutoRefPtr<Tavrel::IDataRef>(new Tavrel::Data())),
         "DATAREF(0) \"\""},
        {"long buffer shows 48 bytes",
         Variant::DataRef(Tavrel::AutoRefPtr<Tavrel::IDataRef>(new Tavrel::Data(long60))),
         "DATAREF(60) \"" + long60.substr(0, 48) + "\"..."},
        // A host buffer need not expose its bytes; the preview reads them.
        {"hidden bytes", Variant::DataRef(Host("abc", {false, 0})), "DATAREF(3) \"abc\""},
        {"short reads", Variant::DataRef(Host("abcdef", {false, 4})), "DATAREF(6) \"abcd\""},
        {"null buffer", Variant::DataRef({}), "null"},
        {"nothing", Variant(), "nothing"},
        {"user-defined", Variant::UserDefined(21, {}), "user-defined value (type 21)"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(FormatValue(row.value), row.text) << "row " << row.name;
    }
}

}  // namespace
}  // namespace minihost
