"""A small C++ tokenizer for the mutation operators.

It turns a source file into identifiers, numbers, punctuators and literals, each with its
offset, line and column. Comments are dropped. String and character literals (raw strings and
encoding prefixes included) become single tokens of kind "str" or "chr", so that nothing inside
them is ever taken for an operator. Preprocessor lines (#include <...>, #define bodies, with
their continuation lines) yield no tokens at all; what they include is reported separately.

It does not preprocess: macros are not expanded. It follows #if/#ifdef only to drop the
regions that the Linux build never compiles (conditions on the platform macros below), because
a fault planted there could never be caught; any other condition counts as compiled.
"""

import re
from dataclasses import dataclass

# Macros that the Linux build never defines: a region that needs one of them is not compiled.
UNDEFINED_MACROS = frozenset({"_WIN32", "_WIN64", "_MSC_VER", "__APPLE__", "__MINGW32__"})

# Longest first, so that "<<=" is one token and never "<" followed by "<=".
PUNCTUATORS = sorted(
    """<<= >>= <=> ->* ... :: -> ++ -- << >> <= >= == != && || += -= *= /= %= &= |= ^= .* ##
       { } [ ] ( ) ; : ? . + - * / % ^ & | ~ ! = < > , #""".split(),
    key=len, reverse=True)

_IDENT = re.compile(r"[A-Za-z_][A-Za-z_0-9]*")
# A pp-number: digits with letters, dots, digit separators and signed exponents.
_NUMBER = re.compile(r"\.?[0-9](?:[eEpP][+-]|'[0-9A-Za-z_]|[0-9A-Za-z_.])*")
_ENCODING_PREFIX = re.compile(r"(?:u8|u|U|L)?")


@dataclass(frozen=True)
class Token:
    kind: str      # "id", "num", "punct", "str" or "chr"
    text: str
    start: int     # offset of the first character in the file
    end: int       # offset one past the last character
    line: int      # 1-based
    col: int       # 1-based


@dataclass
class Scan:
    tokens: list
    includes: list  # the "quoted" includes of compiled regions, as written


class _Conditionals:
    """The #if stack: whether the current region is compiled, as far as can be told."""

    def __init__(self):
        self._frames = []  # per #if: [this branch live, some branch was surely taken]

    def active(self):
        return all(live for live, _ in self._frames)

    def directive(self, name, condition):
        if name in ("if", "ifdef", "ifndef"):
            value = _evaluate(name, condition)
            self._frames.append([value is not False, value is True])
        elif name == "elif" and self._frames:
            frame = self._frames[-1]
            value = _evaluate("if", condition)
            frame[0] = not frame[1] and value is not False
            frame[1] = frame[1] or value is True
        elif name == "else" and self._frames:
            frame = self._frames[-1]
            frame[0] = not frame[1]
        elif name == "endif" and self._frames:
            self._frames.pop()


def _evaluate(name, condition):
    """True or False for a condition on the platform macros alone, None for anything else."""
    text = condition.strip()
    if name == "ifdef":
        return False if text in UNDEFINED_MACROS else None
    if name == "ifndef":
        return True if text in UNDEFINED_MACROS else None
    match = re.fullmatch(r"(!?)\s*(?:defined\s*\(\s*(\w+)\s*\)|defined\s+(\w+)|(\w+))", text)
    if not match:
        return None
    macro = match.group(2) or match.group(3) or match.group(4)
    if macro not in UNDEFINED_MACROS:
        return None
    return bool(match.group(1))


def tokenize(source):
    """Scans source text into tokens and the quoted includes of its compiled regions."""
    return _Scanner(source).run()


class _Scanner:
    def __init__(self, source):
        self.src = source
        self.pos = 0
        self.line = 1
        self.line_start = 0
        self.conditionals = _Conditionals()
        self.tokens = []
        self.includes = []

    def run(self):
        at_line_start = True
        while self.pos < len(self.src):
            c = self.src[self.pos]
            if c == "\n":
                self._advance(1)
                at_line_start = True
            elif c in " \t\r\f\v" or self.src.startswith("\\\n", self.pos):
                self._advance(1)
            elif self.src.startswith("//", self.pos):
                self._skip_line_comment()
            elif self.src.startswith("/*", self.pos):
                self._skip_block_comment()
            elif c == "#" and at_line_start:
                self._directive()
            else:
                at_line_start = False
                self._token()
        return Scan(self.tokens, self.includes)

    def _advance(self, count):
        for _ in range(count):
            if self.src[self.pos] == "\n":
                self.line += 1
                self.line_start = self.pos + 1
            self.pos += 1

    def _skip_line_comment(self):
        while self.pos < len(self.src) and self.src[self.pos] != "\n":
            self._advance(2 if self.src.startswith("\\\n", self.pos) else 1)

    def _skip_block_comment(self):
        close = self.src.find("*/", self.pos + 2)
        self._advance((len(self.src) if close < 0 else close + 2) - self.pos)

    def _directive(self):
        """A preprocessor line and its continuations: read for #if and #include, no tokens."""
        begin = self.pos
        text = []
        while self.pos < len(self.src) and self.src[self.pos] != "\n":
            if self.src.startswith("\\\n", self.pos):
                self._advance(2)
            elif self.src.startswith("/*", self.pos):
                self._skip_block_comment()
                text.append(" ")
            elif self.src.startswith("//", self.pos):
                self._skip_line_comment()
            else:
                text.append(self.src[self.pos])
                self._advance(1)
        match = re.match(r"#\s*(\w+)\s*(.*)", "".join(text))
        if not match or begin < 0:
            return
        name, rest = match.group(1), match.group(2)
        self.conditionals.directive(name, rest)
        include = re.match(r'"([^"]+)"', rest)
        if name == "include" and include and self.conditionals.active():
            self.includes.append(include.group(1))

    def _token(self):
        begin, line, col = self.pos, self.line, self.pos - self.line_start + 1
        kind = self._read_token()
        if self.conditionals.active():
            self.tokens.append(Token(kind, self.src[begin:self.pos], begin, self.pos, line, col))

    def _read_token(self):
        src, pos = self.src, self.pos
        prefix = _ENCODING_PREFIX.match(src, pos).end()
        if src.startswith('R"', prefix):
            self._advance(prefix - pos)
            self._raw_string()
            return "str"
        if prefix < len(src) and src[prefix] in "\"'":
            self._advance(prefix - pos)
            return self._quoted(src[prefix])
        for pattern, kind in ((_IDENT, "id"), (_NUMBER, "num")):
            match = pattern.match(src, pos)
            if match:
                self._advance(match.end() - pos)
                return kind
        for punct in PUNCTUATORS:
            if src.startswith(punct, pos):
                self._advance(len(punct))
                return "punct"
        self._advance(1)  # a stray character (e.g. '@', '$'): a token that nothing mutates
        return "punct"

    def _quoted(self, quote):
        self._advance(1)
        while self.pos < len(self.src) and self.src[self.pos] not in (quote, "\n"):
            self._advance(2 if self.src[self.pos] == "\\" else 1)
        if self.pos < len(self.src) and self.src[self.pos] == quote:
            self._advance(1)
        return "str" if quote == '"' else "chr"

    def _raw_string(self):
        open_paren = self.src.find("(", self.pos + 2)
        delimiter = self.src[self.pos + 2:open_paren]
        close = self.src.find(")" + delimiter + '"', open_paren)
        end = len(self.src) if close < 0 else close + len(delimiter) + 2
        self._advance(end - self.pos)
