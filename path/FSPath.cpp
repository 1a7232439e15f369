#include "path/FSPath.h"

#if defined(_WIN32)
#include <direct.h>
#else
#include <unistd.h>
#endif

#include <algorithm>
#include <cstring>
#include <iterator>
#include <list>
#include <new>
#include <ostream>
#include <stdexcept>

#include "strings/Case.h"
#include "strings/Compare.h"
#include "strings/Replace.h"
#include "strings/Split.h"

namespace Tavrel {

namespace {

// Built at load right after this file's copies of the header's empty constants, in this
// order: kNativePathSeparator is copied from kUnixPathSeparator.
const std::string kUnixPathSeparator = "/";
const std::string kWindowsPathSeparator = "\\";
const std::string kNativePathSeparator = kUnixPathSeparator;
const std::string kDot = ".";
const std::string kDotDot = "..";

constexpr std::size_t kCurrDirBufferSize = 1024;

// The current directory into buffer, or null when it does not fit or the system has none.
char* CurrentDirectory(char* buffer, std::size_t size) {
#if defined(_WIN32)
    return _getcwd(buffer, static_cast<int>(size));
#else
    return getcwd(buffer, size);
#endif
}
constexpr char kBothSeparators[] = "/\\";

// Both are separators of kAnyPathSep; the other kinds accept one byte each.
bool IsSep(char c) { return FSPath::IsPathSeparator(c, FSPath::kAnyPathSep); }

// Writes the failure words into error when the caller asked for them; gives false.
bool Fail(std::string* error, char const* words) {
    if (error != nullptr) {
        *error = words;
    }
    return false;
}

// The view without the separators at its end.
std::string_view WithoutEndSeps(std::string_view text) {
    while (!text.empty() && IsSep(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

// Finds the byte c (first or last) for one separator kind.
std::size_t FindByte(std::string const& text, char c, bool last) {
    return last ? text.rfind(c) : text.find(c);
}

// Resolves "." and ".." in place, scanning once from the front. Everything in front of the
// iterator is an ordinary element, so the first special element met is exactly the one a
// restart from the front would find. Returns false when a ".." reaches the front of the
// list, which then is cleared.
bool ReduceComponents(std::list<std::string>& parts) {
    auto it = parts.begin();
    while (it != parts.end()) {
        if (*it == kDot) {
            it = parts.erase(it);
        } else if (*it != kDotDot) {
            ++it;
        } else if (it == parts.begin()) {
            parts.clear();
            return false;
        } else {
            it = parts.erase(std::prev(it), std::next(it));
        }
    }
    return true;
}

// Joins the non-empty components with slashes, behind a root slash when the first one is
// empty. Components hold no separators, so this equals AppendPath one by one.
std::string JoinComponents(std::list<std::string> const& parts) {
    std::string joined;
    if (parts.front().empty()) {
        joined = kUnixPathSeparator;
    }
    for (std::string const& part : parts) {
        if (part.empty()) {
            continue;
        }
        if (!joined.empty() && joined.back() != '/') {
            joined += kUnixPathSeparator;
        }
        joined += part;
    }
    return joined;
}

// How many bytes SimplifyPath drops at text[i], which is a dot: 2 for a dot and a
// separator or two dots that end the text, 3 for two dots and a separator, else 0.
std::size_t DotRunToDrop(std::string const& text, std::size_t i) {
    std::size_t const n = text.size();
    if (i + 1 >= n) {
        return 0;
    }
    if (IsSep(text[i + 1])) {
        return 2;
    }
    if (text[i + 1] != '.') {
        return 0;
    }
    if (i + 2 == n) {
        return 2;
    }
    return IsSep(text[i + 2]) ? 3 : 0;
}

// The leaf of a path without trailing separators, or the whole text when it has none.
// found tells which of the two it is.
std::string LeafOrWholeText(FSPath const& path, bool& found) {
    std::string leaf;
    found = path.ExtractLeaf(leaf);
    return found ? leaf : path.GetPathStr();
}

// Removes a prefix of length bytes that the caller found, then leading separators when
// trim is set. False only when the erase fails; the trimming is skipped then.
bool EraseMatchedPrefix(FSPath& path, std::size_t length, bool trim, std::string* error) {
    if (!path.Erase(0, length, error)) {
        return false;
    }
    if (trim) {
        path.RemPathSepsAtStart(FSPath::kAnyPathSep);
    }
    return true;
}

}  // namespace

// ---- Construction, assignment, reading ---------------------------------------------------

FSPath::FSPath() = default;

FSPath::FSPath(std::string_view const& path) : mPath(path) { ConvertPathSep(kUnixPathSep); }

FSPath::FSPath(std::string_view const& path, std::string_view const& more) : mPath(path) {
    if (!more.empty()) {
        AppendPath(more, false);
    }
    ConvertPathSep(kUnixPathSep);
}

FSPath::FSPath(FSPath const& other) = default;

FSPath::FSPath(FSPath const& path, FSPath const& more) : mPath(path.mPath) {
    if (!more.IsEmpty()) {
        AppendPath(more, false);
    }
    ConvertPathSep(kUnixPathSep);
}

FSPath::~FSPath() = default;

FSPath& FSPath::operator=(FSPath const& other) {
    if (&other != this) {
        mPath = other.mPath;
    }
    return *this;
}

FSPath& FSPath::operator=(std::string_view const& text) {
    mPath = text;
    return *this;
}

FSPath& FSPath::SetPath(FSPath const& path) {
    if (&path != this) {
        mPath = path.mPath;
    }
    return ConvertPathSep(kUnixPathSep);
}

FSPath& FSPath::SetPath(std::string_view const& path) {
    mPath = path;
    return ConvertPathSep(kUnixPathSep);
}

FSPath& FSPath::SetPath(std::string_view const& path, std::string_view const& more) {
    // NOTE: more may look into this object's text, so it is copied before the text changes.
    FSPath const tail(more);
    mPath = path;
    if (tail.IsEmpty()) {
        return ConvertPathSep(kUnixPathSep);
    }
    return AppendPath(tail, false);
}

FSPath& FSPath::SetPath(FSPath const& path, FSPath const& more) {
    if (&more == this) {
        // NOTE: the copy keeps more's value on entry while this object's text changes.
        FSPath const tail(more);  // NOLINT(performance-unnecessary-copy-initialization)
        return SetPath(path, tail);
    }
    if (&path != this) {
        mPath = path.mPath;
    }
    if (!more.IsEmpty()) {
        AppendPath(more, false);
    }
    return ConvertPathSep(kUnixPathSep);
}

std::string const& FSPath::GetPathStr() const { return mPath; }

std::string const& FSPath::GetPathStr(EPathSepType type) {
    if (type != kAnyPathSep) {
        ConvertPathSep(type);
    }
    return mPath;
}

void FSPath::GetPathStr(std::string& out) const { out = mPath; }

bool FSPath::IsEmpty() const { return mPath.empty(); }

std::size_t FSPath::Length() const { return mPath.size(); }

FSPath& FSPath::Clear() {
    mPath.clear();
    return *this;
}

std::ostream& operator<<(std::ostream& stream, FSPath const& path) {
    return stream << path.GetPathStr();
}

// ---- Separators ----------------------------------------------------------------------

std::string const& FSPath::GetNativePathSeparator() { return kNativePathSeparator; }

bool FSPath::IsPathSeparator(char c, EPathSepType type) {
    switch (type) {
        case kUnixPathSep:
            return c == '/';
        case kWindowsPathSep:
            return c == '\\';
        default:
            return c == '/' || c == '\\';
    }
}

FSPath& FSPath::ConvertPathSep(EPathSepType type) {
    // NOTE: the empty text returns before any separator string is read, so the empty
    // constants can be built before this file's strings exist.
    if (mPath.empty()) {
        return *this;
    }
    if (type == kWindowsPathSep) {
        ReplaceAll(mPath, kUnixPathSeparator, kWindowsPathSeparator);
    } else {
        ReplaceAll(mPath, kWindowsPathSeparator, kUnixPathSeparator);
    }
    return *this;
}

bool FSPath::EndsWithPathSep(EPathSepType type) const {
    return !mPath.empty() && IsPathSeparator(mPath.back(), type);
}

bool FSPath::StartsWithPathSep(EPathSepType type) const {
    return !mPath.empty() && IsPathSeparator(mPath.front(), type);
}

FSPath& FSPath::RemPathSepsAtEnd(EPathSepType type) {
    std::size_t end = mPath.size();
    while (end > 0 && IsPathSeparator(mPath[end - 1], type)) {
        --end;
    }
    mPath.resize(end);
    return *this;
}

FSPath& FSPath::RemPathSepsAtStart(EPathSepType type) {
    std::size_t begin = 0;
    while (begin < mPath.size() && IsPathSeparator(mPath[begin], type)) {
        ++begin;
    }
    mPath.erase(0, begin);
    return *this;
}

std::size_t FSPath::FindFirstPathSep(EPathSepType type) const {
    if (type == kWindowsPathSep) {
        return FindByte(mPath, '\\', false);
    }
    std::size_t const slash = FindByte(mPath, '/', false);
    if (type == kUnixPathSep || slash != npos) {
        return slash;
    }
    return FindByte(mPath, '\\', false);
}

std::size_t FSPath::FindLastPathSep(EPathSepType type) const {
    if (type == kWindowsPathSep) {
        return FindByte(mPath, '\\', true);
    }
    std::size_t const slash = FindByte(mPath, '/', true);
    if (type == kUnixPathSep || slash != npos) {
        return slash;
    }
    return FindByte(mPath, '\\', true);
}

bool FSPath::IsDirPath() const { return EndsWithPathSep(kAnyPathSep); }

bool FSPath::IsFilePath() const { return !IsDirPath(); }

FSPath& FSPath::MakeDirPath(bool dir) {
    if (!dir) {
        return RemPathSepsAtEnd(kAnyPathSep);
    }
    if (EndsWithPathSep(kAnyPathSep)) {
        return *this;
    }
    mPath += GetNativePathSeparator();
    return ConvertPathSep(kUnixPathSep);
}

FSPath& FSPath::MakeFilePath(bool file) { return MakeDirPath(!file); }

// ---- Building on the text ------------------------------------------------------------

FSPath& FSPath::AppendPath(FSPath const& path, bool dir) {
    if (&path == this) {
        // NOTE: the copy keeps the argument's value on entry while this object's text grows.
        FSPath const copy(path);  // NOLINT(performance-unnecessary-copy-initialization)
        return AppendPath(copy, dir);
    }
    if (!IsEmpty() && !EndsWithPathSep(kAnyPathSep) && !path.IsEmpty() &&
        !path.StartsWithPathSep(kAnyPathSep)) {
        mPath += GetNativePathSeparator();
    }
    mPath += path.mPath;
    // NOTE: looks at the argument alone, so "" + "" with dir gives "/".
    if (dir && !path.EndsWithPathSep(kAnyPathSep)) {
        mPath += GetNativePathSeparator();
    }
    return ConvertPathSep(kUnixPathSep);
}

FSPath& FSPath::AppendPath(std::string_view const& path, bool dir) {
    return AppendPath(FSPath(path), dir);
}

FSPath& FSPath::AppendString(std::string_view const& text, bool keepDir) {
    // text may look into this object's text, which the trimming below changes.
    std::string const tail(text);
    bool const wasDir = keepDir && EndsWithPathSep(kAnyPathSep);
    RemPathSepsAtEnd(kAnyPathSep);
    mPath += tail;
    return MakeDirPath(wasDir);
}

FSPath& FSPath::AppendExt(std::string_view const& text, bool trim) {
    std::string const tail(text);
    if (trim) {
        RemPathSepsAtEnd(kAnyPathSep);
    }
    mPath += tail;
    return *this;
}

bool FSPath::Replace(std::size_t pos, std::size_t len, FSPath const& with, std::string* error) {
    return Replace(pos, len, with.mPath, error);
}

bool FSPath::Replace(std::size_t pos, std::size_t len, std::string const& with,
                     std::string* error) {
    static char const kWords[] = "Replace failed";
    if (pos > mPath.size()) {
        return Fail(error, kWords);
    }
    std::size_t const cut = std::min(len, static_cast<std::size_t>(mPath.size()) - pos);
    // The result is built apart and swapped in, so a failed allocation leaves the text as it
    // was, and with may be this object's own text.
    try {
        std::string result;
        result.reserve(mPath.size() - cut + with.size());
        result.append(mPath, 0, pos).append(with).append(mPath, pos + cut);
        mPath.swap(result);
    } catch (std::bad_alloc const&) {
        return Fail(error, kWords);
    } catch (std::length_error const&) {
        return Fail(error, kWords);
    }
    return true;
}

bool FSPath::Erase(std::size_t pos, std::size_t len, std::string* error) {
    if (pos > mPath.size()) {
        return Fail(error, "Erase failed");
    }
    // Erasing within the text never allocates, so nothing can fail past this point.
    mPath.erase(pos, len);
    return true;
}

// ---- Absolute and simplified forms ---------------------------------------------------

bool FSPath::IsAbsolute() const { return !mPath.empty() && IsSep(mPath.front()); }

std::string FSPath::GetCurrDir() {
    char buffer[kCurrDirBufferSize];
    if (CurrentDirectory(buffer, kCurrDirBufferSize) == nullptr) {
        return std::string();
    }
    return std::string(buffer);
}

bool FSPath::GetFullPath() {
    if (!IsAbsolute()) {
        FSPath base(GetCurrDir());
        if (base.IsEmpty()) {
            return false;
        }
        base.AppendPath(std::string_view(mPath), false);
        SetPath(base);
    }
    return CorrectAbsolutePath();
}

bool FSPath::CorrectAbsolutePath() {
    if (!IsAbsolute()) {
        return false;
    }
    std::list<std::string> parts;
    SplitString(mPath, parts, std::string(kBothSeparators), true);
    bool const reduced = ReduceComponents(parts);
    Clear();
    if (!reduced || parts.empty()) {
        return false;
    }
    mPath = JoinComponents(parts);
    return true;
}

FSPath& FSPath::SimplifyPath() {
    if (mPath.empty()) {
        return *this;
    }
    // One pass with the result of deleting the dot runs one by one: a deletion at i never
    // changes the bytes in front of i, so each byte is decided once.
    std::string kept;
    kept.reserve(mPath.size());
    std::size_t i = 0;
    while (i < mPath.size()) {
        std::size_t const drop = mPath[i] == '.' ? DotRunToDrop(mPath, i) : 0;
        if (drop == 0) {
            kept += mPath[i];
        }
        i += drop == 0 ? 1 : drop;
    }
    mPath.swap(kept);
    if (mPath.empty()) {
        mPath = kDot;
    }
    return *this;
}

bool FSPath::ContainsTraversal() const {
    return mPath.find("../") != std::string::npos || mPath.find("..\\") != std::string::npos;
}

// ---- Leaf, root and extension --------------------------------------------------------

bool FSPath::ExtractLeaf(std::string& out) const {
    FSPath trimmed(mPath);
    trimmed.RemPathSepsAtEnd(kAnyPathSep);
    std::size_t const pos = trimmed.FindLastPathSep(kAnyPathSep);
    if (pos == npos) {
        out.clear();
        return false;
    }
    out = trimmed.mPath.substr(pos + 1);
    return true;
}

bool FSPath::ExtractAndEraseLeaf(FSPath& leaf) {
    RemPathSepsAtEnd(kAnyPathSep);
    std::size_t const pos = FindLastPathSep(kAnyPathSep);
    if (pos == npos) {
        leaf.Clear();
        return false;
    }
    std::string const tail = mPath.substr(pos + 1);
    leaf.SetPath(tail);
    if (&leaf != this) {
        mPath.erase(pos + 1);
    }
    return true;
}

bool FSPath::ExtractAndEraseLeaf(std::string& leaf) {
    FSPath found;
    bool const result = ExtractAndEraseLeaf(found);
    leaf = found.mPath;
    return result;
}

FSPath& FSPath::EraseLeaf(bool keepSep) {
    RemPathSepsAtEnd(kAnyPathSep);
    std::size_t const pos = FindLastPathSep(kAnyPathSep);
    if (pos != npos) {
        mPath.erase(keepSep ? pos + 1 : pos);
    }
    return *this;
}

FSPath& FSPath::ReplaceLeaf(FSPath const& leaf) {
    if (&leaf == this) {
        // NOTE: the copy keeps the leaf's value on entry while the leaf is erased.
        FSPath const copy(leaf);  // NOLINT(performance-unnecessary-copy-initialization)
        return ReplaceLeaf(copy);
    }
    EraseLeaf(true);
    return AppendPath(leaf, false);
}

FSPath& FSPath::ReplaceLeaf(std::string_view const& leaf) { return ReplaceLeaf(FSPath(leaf)); }

bool FSPath::ExtractRoot(std::string& out) const {
    FSPath trimmed(mPath);
    trimmed.RemPathSepsAtEnd(kAnyPathSep);
    std::size_t const pos = trimmed.FindFirstPathSep(kAnyPathSep);
    if (pos == npos) {
        out.clear();
        return false;
    }
    // A leading separator is the root itself.
    out = trimmed.mPath.substr(0, pos == 0 ? 1 : pos);
    return true;
}

std::string FSPath::GetExtension(std::string_view const& path) {
    if (path.empty()) {
        return std::string();
    }
    FSPath const converted(path);
    if (converted.EndsWithPathSep(kAnyPathSep)) {
        return std::string();
    }
    bool hasLeaf = false;
    std::string const name = LeafOrWholeText(converted, hasLeaf);
    std::size_t const dot = name.rfind('.');
    if (dot == std::string::npos || dot + 1 == name.size()) {
        return std::string();
    }
    return name.substr(dot + 1);
}

bool FSPath::RemoveExtension(std::string& path) {
    if (path.empty()) {
        return false;
    }
    FSPath converted(path);
    if (converted.EndsWithPathSep(kAnyPathSep)) {
        return false;
    }
    bool hasLeaf = false;
    std::string name = LeafOrWholeText(converted, hasLeaf);
    std::size_t const dot = name.rfind('.');
    if (dot == std::string::npos) {
        return false;
    }
    name.erase(dot);
    if (!hasLeaf) {
        path = name;
        return true;
    }
    converted.ReplaceLeaf(std::string_view(name));
    path = converted.mPath;
    return true;
}

// ---- Comparing, searching and stripping ----------------------------------------------

bool FSPath::IsEqual(FSPath const& other, bool ignoreEndSeps, bool caseSensitive) const {
    FSPath mine(*this);
    FSPath theirs(other);
    if (ignoreEndSeps) {
        mine.RemPathSepsAtEnd(kAnyPathSep);
        theirs.RemPathSepsAtEnd(kAnyPathSep);
    }
    mine.ConvertPathSep(kUnixPathSep);
    theirs.ConvertPathSep(kUnixPathSep);
    if (!caseSensitive) {
        ToUpper(mine.mPath);
        ToUpper(theirs.mPath);
    }
    return mine.mPath == theirs.mPath;
}

bool FSPath::IsEqual(std::string_view const& other, bool ignoreEndSeps, bool caseSensitive) const {
    return IsEqual(FSPath(other), ignoreEndSeps, caseSensitive);
}

bool FSPath::operator==(FSPath const& other) const { return IsEqual(other, false, true); }

bool FSPath::operator==(std::string_view const& other) const { return IsEqual(other, false, true); }

bool FSPath::operator!=(FSPath const& other) const { return !IsEqual(other, false, true); }

bool FSPath::operator!=(std::string_view const& other) const {
    return !IsEqual(other, false, true);
}

bool FSPath::operator<(FSPath const& other) const { return mPath.compare(other.mPath) < 0; }

bool FSPath::StartsWith(std::string_view const& text) const {
    return Tavrel::StartsWith(mPath, text);
}

bool FSPath::StartsWith(FSPath const& other) const {
    return &other == this || StartsWith(std::string_view(other.mPath));
}

bool FSPath::StartsWithPath(FSPath const& other, bool strict) const {
    if (&other == this) {
        return true;
    }
    std::size_t const n = Length();
    std::size_t const m = other.Length();
    if (n == 0 || m == 0 || n < m) {
        return false;
    }
    // NOTE: compared as C strings, so the comparison ends at a NUL byte both texts share.
    if (std::strncmp(mPath.c_str(), other.mPath.c_str(), m) != 0) {
        return false;
    }
    if (n == m) {
        return true;
    }
    if (other.EndsWithPathSep(kAnyPathSep)) {
        return true;
    }
    // NOTE: strict asks the prefix itself to end in a separator; this path's byte at m
    // does not count then.
    return !strict && IsSep(mPath[m]);
}

bool FSPath::StartsWithPath(std::string_view const& other, bool strict) const {
    return StartsWithPath(FSPath(other), strict);
}

bool FSPath::EndsWith(std::string_view const& text, bool ignoreEndSeps) const {
    FSPath const suffix(text);
    std::string_view mine(mPath);
    std::string_view theirs(suffix.mPath);
    if (ignoreEndSeps) {
        mine = WithoutEndSeps(mine);
        theirs = WithoutEndSeps(theirs);
    }
    return Tavrel::EndsWith(mine, theirs);
}

bool FSPath::EndsWith(FSPath const& other, bool ignoreEndSeps) const {
    return &other == this || EndsWith(std::string_view(other.mPath), ignoreEndSeps);
}

bool FSPath::Strip(FSPath const& other, bool trim, std::string* error) {
    if (&other == this) {
        Clear();
        return true;
    }
    return !StartsWith(other) || EraseMatchedPrefix(*this, other.Length(), trim, error);
}

bool FSPath::Strip(std::string_view const& other, bool trim, std::string* error) {
    return Strip(FSPath(other), trim, error);
}

bool FSPath::StripPath(FSPath const& other, bool trim, bool strict, std::string* error) {
    if (&other == this) {
        Clear();
        return true;
    }
    return !StartsWithPath(other, strict) || EraseMatchedPrefix(*this, other.Length(), trim, error);
}

bool FSPath::StripPath(std::string_view const& other, bool trim, bool strict, std::string* error) {
    return StripPath(FSPath(other), trim, strict, error);
}

std::size_t FSPath::FindSubDir(FSPath const& sub, std::size_t start) {
    if (&sub == this) {
        return StartsWithPathSep(kAnyPathSep) ? 1 : 0;
    }
    std::size_t const length = Length();
    if (start >= length) {
        return npos;
    }
    FSPath dir(sub);
    dir.RemPathSepsAtStart(kAnyPathSep).RemPathSepsAtEnd(kAnyPathSep);
    if (dir.IsEmpty()) {
        return npos;
    }
    std::size_t const size = dir.Length();
    for (std::size_t i = start; i < length; ++i) {
        i = mPath.find(dir.mPath, i);
        // NOTE: a match at index 0 has no separator in front and ends the search.
        if (i == std::string::npos || i == 0) {
            return npos;
        }
        if (IsSep(mPath[i - 1]) && i + size < length && IsSep(mPath[i + size])) {
            return i;
        }
    }
    return npos;
}

std::size_t FSPath::FindSubDir(std::string_view const& sub, std::size_t start) {
    return FindSubDir(FSPath(sub), start);
}

bool FSPath::ContainsSubDir(FSPath const& sub, std::size_t start) {
    return FindSubDir(sub, start) != npos;
}

bool FSPath::ContainsSubDir(std::string_view const& sub, std::size_t start) {
    return FindSubDir(sub, start) != npos;
}

}  // namespace Tavrel
