#include "strings/Validate.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "strings/Kernels.h"

namespace Tavrel {

namespace {

using kernels::IsContinuation;
using kernels::Kernels;
using kernels::SequenceLength;

// Where a UTF-8 text first fails: the index of the byte that cannot begin a sequence
// (length 0), or of the lead byte of a faulty or cut-off sequence of the given length.
struct Utf8Fault {
    std::size_t lead = 0;
    std::size_t length = 0;
};

// Walks the text sequence by sequence from from, which must be the start of a sequence, and
// stores the first fault. Runs of ASCII are skipped a block at a time.
bool FindFaultFrom(Kernels const& kernels, char const* bytes, std::size_t size, std::size_t from,
                   Utf8Fault& fault) {
    std::size_t i = from;
    while (i < size) {
        i += kernels.asciiRun(bytes + i, size - i);
        if (i == size) {
            break;
        }
        std::size_t const length = SequenceLength(bytes[i]);
        if (length == 0) {
            fault = {i, 0};
            return true;
        }
        bool const complete =
            length <= size - i && std::all_of(bytes + i + 1, bytes + i + length, IsContinuation);
        if (!complete) {
            fault = {i, length};
            return true;
        }
        i += length;
    }
    return false;
}

// The block check of the path in use clears the longest prefix it can; the walk by sequences
// then finds the exact fault behind it, or checks the rest.
bool FindFault(char const* bytes, std::size_t size, Utf8Fault& fault) {
    Kernels const& kernels = kernels::ActiveKernels();
    return FindFaultFrom(kernels, bytes, size, kernels.utf8CheckedPrefix(bytes, size), fault);
}

// NOTE: the line number and the place on the line are only needed for a failure, so they are
// computed from the bytes before the fault instead of being counted along the way. No byte of a
// multi-byte sequence is a line feed, so only ASCII bytes can end a line.
void ReportFault(std::string_view const& text, Utf8Fault const& fault, std::string& message,
                 std::size_t* position) {
    std::string_view const before = text.substr(0, fault.lead);
    std::size_t const lastFeed = before.rfind('\n');
    std::size_t const lineStart = lastFeed == std::string_view::npos ? 0 : lastFeed + 1;
    std::size_t const line =
        1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
    // A faulty sequence is reported at the place behind it, not at the byte at fault.
    std::size_t const place = fault.lead - lineStart + 1 + fault.length;
    message = "Sign: " + std::to_string(place) + " in column: " + std::to_string(line) +
              " is not utf-8 conform.";
    if (position != nullptr) {
        *position = fault.length == 0 ? fault.lead : fault.lead + fault.length - 1;
    }
}

// Stores index in position when the run of good bytes ended before the end of text.
bool PassesWholeText(std::size_t run, std::size_t size, std::size_t* position) {
    if (run == size) {
        return true;
    }
    if (position != nullptr) {
        *position = run;
    }
    return false;
}

}  // namespace

bool ValidUTF8(std::string_view const& text, std::string& message, std::size_t* position) {
    Utf8Fault fault;
    if (!FindFault(text.data(), text.size(), fault)) {
        return true;
    }
    ReportFault(text, fault, message, position);
    return false;
}

bool ValidASCII(std::string_view const& text, std::size_t* position) {
    std::size_t const run = kernels::ActiveKernels().asciiRun(text.data(), text.size());
    return PassesWholeText(run, text.size(), position);
}

bool ValidPrintableASCII(std::string_view const& text, std::size_t* position) {
    std::size_t const run = kernels::ActiveKernels().printableRun(text.data(), text.size());
    return PassesWholeText(run, text.size(), position);
}

}  // namespace Tavrel
