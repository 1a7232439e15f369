#include "strings/Escape.h"

#include <cctype>
#include <cstddef>
#include <functional>
#include <utility>

#include "strings/Replace.h"

namespace Tavrel {

namespace {

// The digits of the hexadecimal form; exactly 16 bytes, lower case, with no NUL behind them.
constexpr char hexchars[16] = {'0', '1', '2', '3', '4', '5', '6', '7',
                               '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};

// The byte is given to isprint as an unsigned value, as isprint requires.
bool IsPrintable(char c) { return std::isprint(static_cast<unsigned char>(c)) != 0; }

void AppendHexForm(std::string& out, char c) {
    unsigned char const b = static_cast<unsigned char>(c);
    char const form[4] = {'\\', 'x', hexchars[b >> 4], hexchars[b & 0x0F]};
    out.append(form, sizeof form);
}

// Whether view looks into out's current contents; clearing out would then pull its bytes away.
bool LooksInto(std::string_view const& view, std::string const& out) {
    std::less<char const*> const before;
    return !view.empty() && !before(view.data(), out.data()) &&
           before(view.data(), out.data() + out.size());
}

// NOTE: out must not be the storage that text looks at. When it is anyway, the text is copied
// aside before out is cleared, so that nothing reads bytes that are being overwritten or freed.
template <class Fill>
void FillDetached(std::string_view const& text, std::string& out, Fill const& fill) {
    if (LooksInto(text, out)) {
        std::string const copy(text);
        out.clear();
        fill(std::string_view(copy), out);
        return;
    }
    out.clear();
    fill(text, out);
}

// Runs the form with out on a temporary and moves the result into text at the end.
template <class Fill>
void FillInPlace(std::string& text, Fill const& fill) {
    std::string result;
    fill(std::string_view(text), result);
    text = std::move(result);
}

}  // namespace

void Escape(std::string& text, char special, char escape) {
    // Escapes are doubled first, so that the escapes put in front of special stay single.
    ReplaceAll(text, std::string(1, escape), std::string(2, escape));
    ReplaceAll(text, std::string(1, special), std::string{escape, special});
}

void Unescape(std::string& text, char special, char escape) {
    ReplaceAll(text, std::string(2, escape), std::string(1, escape));
    ReplaceAll(text, std::string{escape, special}, std::string(1, special));
}

void RemoveNonPrint(std::string_view const& text, std::string& out, bool replace,
                    std::string_view const& replacement) {
    // The replacement may look into out as well; it is then held apart like the text.
    std::string const held =
        replace && LooksInto(replacement, out) ? std::string(replacement) : std::string();
    std::string_view const stand = held.empty() ? replacement : std::string_view(held);
    FillDetached(text, out, [&](std::string_view const& from, std::string& to) {
        for (char const c : from) {
            if (IsPrintable(c)) {
                to.push_back(c);
            } else if (replace) {
                to.append(stand);
            }
        }
    });
}

void RemoveNonPrint(std::string& text, bool replace, std::string_view const& replacement) {
    FillInPlace(text, [&](std::string_view const& from, std::string& to) {
        RemoveNonPrint(from, to, replace, replacement);
    });
}

void RemoveNonPrint(std::string_view const& text, std::string& out, char const& replacement) {
    char const stand = replacement;  // out may hold the char that replacement refers to
    FillDetached(text, out, [stand](std::string_view const& from, std::string& to) {
        to.resize(from.size());
        for (std::size_t i = 0; i < from.size(); ++i) {
            to[i] = IsPrintable(from[i]) ? from[i] : stand;
        }
    });
}

void RemoveNonPrint(std::string& text, char const& replacement) {
    FillInPlace(text, [&](std::string_view const& from, std::string& to) {
        RemoveNonPrint(from, to, replacement);
    });
}

void EscapeNonPrint(std::string_view const& text, std::string& out) {
    FillDetached(text, out, [](std::string_view const& from, std::string& to) {
        for (char const c : from) {
            if (IsPrintable(c)) {
                to.push_back(c);
            } else {
                AppendHexForm(to, c);
            }
        }
    });
}

void EscapeNonPrint(std::string& text) {
    FillInPlace(text,
                [](std::string_view const& from, std::string& to) { EscapeNonPrint(from, to); });
}

}  // namespace Tavrel
