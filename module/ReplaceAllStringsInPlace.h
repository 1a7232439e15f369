// The replacement that turns the raw definition text into its final form.
#pragma once

#include <string>

namespace Tavrel {

// Replaces every occurrence of from in text, left to right; the search goes on behind the
// inserted text, so what a replacement produces is not searched again.
// "a,,,b", ",,", "," => "a,,b";  "x", "x", "xx" => "xx" (ends).
// NOTE: an empty from would match everywhere; it leaves text unchanged.
void ReplaceAllStringsInPlace(std::string& text, std::string const& from, std::string const& to);

}  // namespace Tavrel
