// FSPath: one file-system path held as a byte text, and the edits on that text: joining,
// separator conversion and trimming, absolute and simplified forms, leaf, root and
// extension, comparing, prefix tests, stripping and sub-directory search.
//
// What it does not do:
// - It never touches the file system. No file is opened, checked or looked up, no link is
//   followed; the one question put to the system is the current directory (GetCurrDir).
//   A "directory path" is simply a text that ends in a separator.
// - It knows no drive letters, shares or device names: "C:/x" is a relative path whose
//   first component is "C:", on Windows too. Windows gives the current directory with a
//   drive ("C:\Users\u"), so there GetFullPath of a relative path joins it to that text in
//   slash form ("a" => "C:/Users/u/a") but cannot make it absolute and gives false; a path
//   that begins with a separator resolves as anywhere else.
// - It decodes no character set: positions and lengths count bytes, and a NUL byte is an
//   ordinary byte of the text.
//
// Separators: the slash and the backslash both count as separators everywhere, whatever
// EPathSepType a test is given by default. The native separator is the slash. Texts given
// to the constructors, SetPath and AppendPath are stored in slash form; operator= from text,
// Replace, Erase and AppendExt store their text as it comes, so every test copes with both
// separators in one text.
//
// Errors: there is no invalid path. Results say false, npos or empty; only Replace and
// Erase report through an error text. Other allocation failures pass through as exceptions.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <list>
#include <set>
#include <string>
#include <string_view>

#include "strings/Search.h"

namespace Tavrel {

class FSPath {
public:
    // Which bytes a separator test accepts, and which form a conversion produces.
    enum EPathSepType : unsigned char {
        kUnixPathSep = 0,     // the slash only; converting turns backslashes into slashes
        kWindowsPathSep = 1,  // the backslash only; converting turns slashes into backslashes
        kAnyPathSep = 2,      // either byte; converting gives the native (slash) form
    };

    // ---- Construction, assignment, reading -------------------------------------------

    // The empty path. Reads no other static object, so it is safe during load.
    FSPath();
    // The text with every backslash turned into a slash.
    //   "a\b/c" => "a/b/c";  "\" => "/";  "" => ""
    explicit FSPath(std::string_view const& path);
    // path joined with more as by AppendPath(more, false), then in slash form.
    //   ("a", "b") => "a/b";  ("a/", "/b") => "a//b";  ("a", "") => "a";  ("", "b") => "b"
    FSPath(std::string_view const& path, std::string_view const& more);
    // A byte-for-byte copy; separators are not converted.
    FSPath(FSPath const& other);
    // The text of path (unconverted) joined with more as by AppendPath(more, false), then
    // in slash form.
    FSPath(FSPath const& path, FSPath const& more);
    // Not virtual: FSPath is a value class and is not meant to be derived from.
    ~FSPath();

    // A byte-for-byte copy, no conversion; assigning the object to itself changes nothing.
    FSPath& operator=(FSPath const& other);
    // Stores text as it comes. NOTE: unlike SetPath, backslashes are kept.
    //   p = "a\b"  =>  GetPathStr() == "a\b"
    FSPath& operator=(std::string_view const& text);

    // Stores the text of path (nothing to copy if it is this object), in slash form.
    FSPath& SetPath(FSPath const& path);
    // Stores text in slash form.  "a\b" => "a/b"
    FSPath& SetPath(std::string_view const& path);
    // Stores path joined with more as by AppendPath(more, false), in slash form.
    FSPath& SetPath(std::string_view const& path, std::string_view const& more);
    // Stores path joined with more as by AppendPath(more, false), in slash form. Either
    // argument may be this object; each counts with the value it had on entry.
    //   this "x": (kEmptyFSPath, *this) => "x";  (FSPath("a"), *this) => "a/x";
    //             (*this, *this) => "x/x"
    FSPath& SetPath(FSPath const& path, FSPath const& more);

    // The stored text, as it is.
    std::string const& GetPathStr() const;
    // Converts the stored text to type first (kAnyPathSep: no conversion), then returns it.
    // NOTE: the conversion stays in the object.
    //   "a/b", kWindowsPathSep => "a\b", and GetPathStr() is "a\b" afterwards
    std::string const& GetPathStr(EPathSepType type);
    // Copies the stored text into out.
    void GetPathStr(std::string& out) const;

    // Whether the text has no bytes.
    bool IsEmpty() const;
    // The size of the text in bytes; NUL bytes count.
    std::size_t Length() const;
    // Makes the text empty.
    FSPath& Clear();

    // ---- Separators ------------------------------------------------------------------

    // The native separator, "/".
    static std::string const& GetNativePathSeparator();
    // Whether c is a separator of that kind.
    //   '/' => true for kUnixPathSep and kAnyPathSep;  '\' => true for kWindowsPathSep and
    //   kAnyPathSep;  '\0', '.' => false
    static bool IsPathSeparator(char c, EPathSepType type = kAnyPathSep);

    // Rewrites every separator into the form of type; kAnyPathSep means the native form.
    // Default: kUnixPathSep.
    //   "a\b/c", kUnixPathSep => "a/b/c";  "a/b\c", kWindowsPathSep => "a\b\c";  "" => ""
    FSPath& ConvertPathSep(EPathSepType type = kUnixPathSep);
    // Whether the last byte is a separator of that kind; false for the empty path.
    //   "a/" => true;  "/" => true;  "a" => false;  "" => false
    bool EndsWithPathSep(EPathSepType type = kAnyPathSep) const;
    // Whether the first byte is a separator of that kind; false for the empty path.
    bool StartsWithPathSep(EPathSepType type = kAnyPathSep) const;
    // Removes every separator of that kind from the end.
    //   "a/\/" => "a" (any), "a/\" (unix), "a/\/" (windows);  "//" => ""
    FSPath& RemPathSepsAtEnd(EPathSepType type = kAnyPathSep);
    // Removes every separator of that kind from the start.
    //   "/\a" => "a" (any), "\a" (unix);  "\/" => ""
    FSPath& RemPathSepsAtStart(EPathSepType type = kAnyPathSep);
    // The index of the first separator of that kind, or npos.
    // NOTE: kAnyPathSep looks for a slash first and takes a backslash only when the text
    // holds no slash at all.
    //   "a\b/c" => 3 (any), 1 (windows);  "abc" => npos;  "" => npos
    std::size_t FindFirstPathSep(EPathSepType type = kAnyPathSep) const;
    // The index of the last separator of that kind, or npos; kAnyPathSep prefers slashes
    // as FindFirstPathSep does.
    //   "a/b\c" => 1 (any), 3 (windows);  "a\b\c" => 3 (any)
    std::size_t FindLastPathSep(EPathSepType type = kAnyPathSep) const;
    // Whether the text ends in a separator.  "/" => true;  "a" => false;  "" => false
    bool IsDirPath() const;
    // Not IsDirPath().  "" => true;  "a/" => false
    bool IsFilePath() const;
    // dir true: adds "/" unless the text already ends in a separator (a run stays a run).
    // dir false: removes every separator from the end. Default: true.
    //   "", true => "/";  "a//", true => "a//";  "a//", false => "a";  "//", false => ""
    FSPath& MakeDirPath(bool dir = true);
    // MakeDirPath(!file). Default: true.  "a/", true => "a";  "", false => "/"
    FSPath& MakeFilePath(bool file = true);

    // ---- Building on the text --------------------------------------------------------

    // Joins path as a further component: a "/" goes between when neither side brings a
    // separator (and both are non-empty); dir adds a trailing "/" when path has none of its
    // own. No merging: separators that meet both stay. The result is in slash form.
    // Default: dir = false.
    //   "a" + "b" => "a/b";  "a/" + "/b" => "a//b";  "" + "b" => "b";  "a" + "" => "a";
    //   "a" + "", dir => "a/";  "" + "", dir => "/";  "/a" + "b\c" => "/a/b/c"
    FSPath& AppendPath(FSPath const& path, bool dir = false);
    // The same with a path built from text.
    FSPath& AppendPath(std::string_view const& path, bool dir = false);
    // Continues the last component: removes trailing separators, adds text unchanged, and
    // puts one "/" back only when keepDir is set and the path was a directory path.
    // Default: keepDir = false.
    //   "a/b/" + "c" => "a/bc" (keepDir "a/bc/");  "/" + "x" => "x";  "//" + "" => "";
    //   "a" + "\b" => "a\b"
    FSPath& AppendString(std::string_view const& text, bool keepDir = false);
    // Adds text unchanged (it brings its own dot), after removing trailing separators when
    // trim is set. No conversion. Default: trim = false.
    //   "a/b/" + "c" => "a/b/c" (trim "a/bc");  "/" + "x", trim => "x"
    FSPath& AppendExt(std::string_view const& text, bool trim = false);
    // Replaces up to len bytes from pos by the text of with; no conversion. len is cut at
    // the end; pos == Length() appends. pos > Length(), or a failed allocation, leaves the
    // text as it was, writes "Replace failed" into *error (when error is not null) and
    // gives false.
    //   "a/b", 1, 1, "\" => "a\b";  "a/b", 1, 100, "c" => "ac";  "a/b", 3, 0, "c" => "a/bc";
    //   "a/b", 4, 0, "c" => false, "a/b"
    bool Replace(std::size_t pos, std::size_t len, FSPath const& with,
                 std::string* error = nullptr);
    // The same with a plain string, used as it comes.
    bool Replace(std::size_t pos, std::size_t len, std::string const& with,
                 std::string* error = nullptr);
    // Removes up to len bytes from pos; len is cut at the end. pos > Length() leaves the
    // text, writes "Erase failed" into *error (when error is not null) and gives false.
    //   "a/b", 1, 100 => "a";  "a/b", 3, 1 => "a/b" (true);  "a/b", 4, 1 => false
    bool Erase(std::size_t pos, std::size_t len, std::string* error = nullptr);

    // ---- Absolute and simplified forms -----------------------------------------------

    // Whether the first byte is a slash or a backslash. This is the whole test.
    //   "/a" => true;  "\a" => true;  "C:/x" => false;  "" => false
    bool IsAbsolute() const;
    // The current directory of the process, or "" when the system does not give it (also
    // when it is longer than 1023 bytes).
    static std::string GetCurrDir();
    // Prefixes a relative path with the current directory, then CorrectAbsolutePath().
    // With no current directory: false and the text unchanged. An absolute path does not
    // ask for the current directory. With current directory "/home/u":
    //   "" => "/home/u";  "a/../b/" => "/home/u/b";  "../.." => "/";
    //   "../../.." => false, "";  "../../../a" => true, "a"
    bool GetFullPath();
    // Resolves "." and ".." components of an absolute path and merges separators; the
    // result is in slash form, without a trailing separator unless it is "/".
    // A relative or empty path: false, text unchanged. NOTE: a ".." directly behind the
    // root removes the root itself, so the result may be relative; a climb that leaves
    // nothing gives false and an empty text.
    //   "//" => "/";  "/a//../b" => "/a/b";  "/../a" => "a";  "/.." => false, "";
    //   "/.../a" => "/.../a";  "\a\..\b" => "/b"
    bool CorrectAbsolutePath();
    // A text filter, not a resolver: deletes every "./" and "../" (either separator) and
    // two dots at the very end, wherever they stand, without looking at component
    // boundaries and without climbing. A text that becomes empty is ".".
    //   "" => "";  ".." => ".";  "a/../b" => "a/b";  "a/b/.." => "a/b/";  "a/." => "a/.";
    //   "a./b" => "ab";  ".../a" => ".a";  "a..b" => "a..b"
    FSPath& SimplifyPath();
    // Whether the text holds "../" or "..\" anywhere.
    //   "a../" => true;  "a/.." => false;  ".." => false;  "" => false
    bool ContainsTraversal() const;

    // ---- Leaf, root and extension ----------------------------------------------------

    // The leaf is what follows the last separator once trailing separators are ignored;
    // a bare name has none. Reads backslashes as slashes. On false, out is empty.
    //   "a/b//" => "b";  "/a" => "a";  "a", "a/", "/", "" => false
    bool ExtractLeaf(std::string& out) const;
    // Removes trailing separators (they stay removed in every case), then moves the leaf
    // into leaf (in slash form) and keeps the separator in front of it. On false, leaf is
    // empty. With leaf this object, the object becomes its own leaf.
    //   "a//b" => true, "b", object "a//";  "/a/" => true, "a", object "/";
    //   "a/" => false, "", object "a"
    bool ExtractAndEraseLeaf(FSPath& leaf);
    // The same with a plain string as the destination.
    bool ExtractAndEraseLeaf(std::string& leaf);
    // Removes trailing separators, then the leaf; keepSep keeps the one separator in
    // front of it. A bare name stays. Default: keepSep = false.
    //   "/a/b", keepSep => "/a/", else "/a";  "a//b" => "a//" or "a/";  "a/" => "a"
    FSPath& EraseLeaf(bool keepSep = false);
    // EraseLeaf(true), then AppendPath(leaf). A bare name gets the leaf added behind it.
    //   "x/a" + "b" => "x/b";  "/a/" + "b" => "/b";  "a" + "b" => "a/b";  "/" + "b" => "b";
    //   "x/a" + "/b" => "x//b"
    FSPath& ReplaceLeaf(FSPath const& leaf);
    // The same with a path built from text.
    FSPath& ReplaceLeaf(std::string_view const& leaf);
    // The root: "/" when the text starts with a separator, else what stands in front of the
    // first separator, once trailing separators are ignored. On false, out is empty.
    //   "/a" => "/";  "a/b" => "a";  "\a" => "/";  "/", "a/", "" => false
    bool ExtractRoot(std::string& out) const;
    // What follows the last dot of the leaf (the whole text when there is no leaf), or ""
    // when there is no dot, the dot ends the text, or the path ends in a separator.
    //   "a.tar.gz" => "gz";  ".bashrc" => "bashrc";  "a." => "";  "dir.d/a" => "";
    //   "a.txt/" => ""
    static std::string GetExtension(std::string_view const& path);
    // Cuts the leaf (or the whole text) at its last dot, the dot included; true when a dot
    // was found. On true the path comes back in slash form; on false it is left exactly.
    // NOTE: unlike GetExtension, a dot at the very end is removed.
    //   "a.tar.gz" => "a.tar";  "a." => "a";  ".." => ".";  "dir/.bashrc" => "dir/";
    //   "a\b.c" => "a/b";  "x\y" => false, "x\y";  "a.txt/" => false
    static bool RemoveExtension(std::string& path);

    // ---- Comparing, searching and stripping ------------------------------------------

    // Equal texts once both sides are in slash form, after removing trailing separators
    // when ignoreEndSeps is set, and after folding a-z to A-Z when caseSensitive is false.
    // Defaults: ignoreEndSeps = false, caseSensitive = true.
    //   "a\b" == "a/b";  "a/b" vs "a/b/" => only with ignoreEndSeps;  "" vs "/" => likewise
    bool IsEqual(FSPath const& other, bool ignoreEndSeps = false, bool caseSensitive = true) const;
    // The same with a path built from text.
    bool IsEqual(std::string_view const& other, bool ignoreEndSeps = false,
                 bool caseSensitive = true) const;
    // IsEqual(other, false, true).
    bool operator==(FSPath const& other) const;
    bool operator==(std::string_view const& other) const;
    // Not IsEqual(other, false, true).
    bool operator!=(FSPath const& other) const;
    bool operator!=(std::string_view const& other) const;
    // Orders by the raw bytes of the texts, with no conversion. NOTE: "a/b" and "a\b" are
    // equal for operator== and still ordered here; std::set<FSPath> keeps both.
    bool operator<(FSPath const& other) const;

    // Plain prefix test on the stored text, with text as it comes (no conversion). False
    // when either side is empty; bytes behind a NUL that both share are not compared.
    //   "/ab" starts with "/a";  "/a\b" starts with "/a\";  "/a" with "" => false
    bool StartsWith(std::string_view const& text) const;
    // The same with the text of other; true for this object itself, even when empty.
    bool StartsWith(FSPath const& other) const;
    // A prefix that ends at a component boundary. With strict, other itself must end in a
    // separator; otherwise a separator in this path right behind the prefix is enough.
    // True for this object itself; false when either side is empty. Default: strict = false.
    //   "/a/b" vs "/a" => true (strict false);  "/a/b" vs "/a/" => true;  "/ab" vs "/a" =>
    //   false;  "/a" vs "/a" => true;  "/a/" vs "/a", strict => false
    bool StartsWithPath(FSPath const& other, bool strict = false) const;
    // The same with a path built from text.
    bool StartsWithPath(std::string_view const& other, bool strict = false) const;
    // Plain suffix test: text is first put in slash form; this path is not. With
    // ignoreEndSeps, trailing separators go on both sides first. No component boundary is
    // required. False when either side is empty at that point. Default: ignoreEndSeps = false.
    //   "a/xb" ends with "b";  "a/b/" with "b" => false (ignoreEndSeps: true);
    //   "/" with "/", ignoreEndSeps => false
    bool EndsWith(std::string_view const& text, bool ignoreEndSeps = false) const;
    // The same with the text of other; true for this object itself.
    bool EndsWith(FSPath const& other, bool ignoreEndSeps = false) const;

    // Removes other from the front when StartsWith(other), then leading separators when
    // trim is set. True also when nothing was removed; false only when Erase fails (error
    // is handed on to it). With this object itself, the path becomes empty.
    // Defaults: trim = false, error = nullptr.
    //   "/a/b" - "/a" => "/b" (trim "b");  "/ab" - "/a" => "b";  "/a/b" - "/x" => "/a/b"
    bool Strip(FSPath const& other, bool trim = false, std::string* error = nullptr);
    // The same with a path built from text.
    bool Strip(std::string_view const& other, bool trim = false, std::string* error = nullptr);
    // As Strip, with StartsWithPath(other, strict) as the test.
    // Defaults: trim = false, strict = false, error = nullptr.
    //   "/a/b" - "/a" => "/b" (strict: unchanged);  "/ab" - "/a" => "/ab"
    bool StripPath(FSPath const& other, bool trim = false, bool strict = false,
                   std::string* error = nullptr);
    // The same with a path built from text.
    bool StripPath(std::string_view const& other, bool trim = false, bool strict = false,
                   std::string* error = nullptr);

    // The index of sub (with its own leading and trailing separators removed) as whole
    // components inside this path, with a separator on both sides, searching from start;
    // npos when not found. NOTE: a match at index 0 ends the search with npos even if a
    // later match exists, and the last component needs a separator behind it. With this
    // object itself: 1 when the text starts with a separator, else 0. Default: start = 0.
    //   "/a/b/c/" + "b" => 3;  "/a/b/c/" + "a/b" => 1;  "/a/b/c" + "c" => npos;
    //   "a/b/a/" + "a" => npos;  "/a/b/" + "/" => npos;  "" + "a" => npos
    std::size_t FindSubDir(FSPath const& sub, std::size_t start = 0);
    // The same with a path built from text.
    std::size_t FindSubDir(std::string_view const& sub, std::size_t start = 0);
    // FindSubDir(sub, start) != npos; always true for this object itself.
    bool ContainsSubDir(FSPath const& sub, std::size_t start = 0);
    // The same with a path built from text.
    bool ContainsSubDir(std::string_view const& sub, std::size_t start = 0);

private:
    std::string mPath;
};

// Writes the stored text as the stream writes a std::string (width and fill apply).
std::ostream& operator<<(std::ostream& stream, FSPath const& path);

// Empty constants with internal linkage: every source file that includes this header has
// its own copies, built first in that file.
static const FSPath kEmptyFSPath;
static const std::list<FSPath> kEmptyFSPathList;
static const std::set<FSPath> kEmptyFSPathSet;

}  // namespace Tavrel
