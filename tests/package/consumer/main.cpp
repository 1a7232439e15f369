// Uses each installed library once, through the include paths a user writes, and says which
// use gave a wrong answer. Exit status 0 when all are right.
#include <cstdio>
#include <string>
#include <string_view>

#include "host/ErrorNames.h"
#include "host/IContext.h"
#include "object/AutoRefPtr.h"
#include "object/Data.h"
#include "path/FSPath.h"
#include "strings/Case.h"

namespace {

int gFailures = 0;

void Expect(bool ok, char const* what) {
    std::printf("%s: %s\n", ok ? "ok" : "WRONG", what);
    gFailures += ok ? 0 : 1;
}

}  // namespace

int main() {
    Tavrel::FSPath path("/usr//lib/../share/./man");
    Expect(path.CorrectAbsolutePath() && path.GetPathStr() == "/usr/share/man",
           "path: FSPath::CorrectAbsolutePath");

    Expect(Tavrel::ToUpper(std::string_view("tavrel")) == "TAVREL", "strings: ToUpper");

    Tavrel::AutoRefPtr<Tavrel::Data> data(new Tavrel::Data(std::string_view("hello, world")));
    char bytes[5] = {};
    Expect(data->GetSize() == 12 && data->Read(bytes, 5, 7) == 5 &&
               std::string_view(bytes, 5) == "world",
           "object: Data");

    // IContext.h, included, compiles with the installed headers alone.
    Expect(std::string(Tavrel::TavrelError::InvalidUsage()) == "Error.Tavrel.InvalidUsage",
           "host: ErrorNames");

    return gFailures == 0 ? 0 : 1;
}
