#include "testing/TrickyPaths.h"

namespace tavrel_testing {

std::vector<std::string> const& TrickyPaths() {
    using namespace std::string_literals;
    static std::vector<std::string> const texts = {
        "",       ".",       "..",     "...",   "/",     "//",    "\\",   "\\/",
        "/\\/",   "a",       "a/",     "a//",   "/a",    "\\a",   "a/b",  "a\\b",
        "a\\b/c", "/a/../b", "/../a",  "//..",  "./a",   "a/.",   "a/..", ".a",
        "a.",     "a.b/c.d", "/a//b/", "C:\\x", "a\0b"s, "/\0/"s, "\0"s};
    return texts;
}

}  // namespace tavrel_testing
