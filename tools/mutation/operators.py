"""The mutation operators: every place in one source file where a fault can be planted.

Each operator looks at one token (or one statement) with the cautious context of context.py
and proposes a replacement text for a span of the file:

  relational  ==/!= swapped; < to <=, <= to <, > to >=, >= to > (comparisons only, never
              template brackets, `<<`, `>>`, `->` or `<=>`)
  arithmetic  binary + and - swapped, / to * (and * to / where it is surely a product, not a
              pointer declarator); += with -=, *= with /=
  logical     && with || (`&&` only where it is surely not an rvalue reference)
  negation    a unary ! dropped
  constant    an integer literal made one larger, and one smaller when it is above zero
  boolean     true with false
  return      the value of `return <expr>;` replaced by `{}`, the type's default
  call        a statement that only calls a function (`f(x);`, `a.b(c);`) deleted

Nothing is planted in comments, literals, preprocessor lines, operator names, template
parameter lists, unevaluated operands (sizeof, decltype, noexcept, static_assert, ...), or
pure-virtual `= 0`. Increments (++/--) are left alone: swapping them mostly turns a loop into
one that never ends, which costs the whole time limit and tells little.
"""

import re
from dataclasses import dataclass

from .context import Context, ends_value, NON_VALUE_WORDS
from .tokens import tokenize

OPERATORS = ("relational", "arithmetic", "logical", "negation", "constant", "boolean",
             "return", "call")

_SWAPS = {
    "relational": {"==": "!=", "!=": "==", "<=": "<", ">=": ">"},
    "arithmetic": {"+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "/": "*"},
    "logical": {"||": "&&"},
    "boolean": {"true": "false", "false": "true"},
}
_INTEGER = re.compile(r"(0[xX][0-9a-fA-F']+|0[bB][01']+|[0-9][0-9']*)([uUlLzZ]*)")
# Return values that already are the type's default: replacing them changes nothing.
_DEFAULT_VALUES = frozenset({"{}", "0", "false", "nullptr", '""', "0u", "0U"})


@dataclass(frozen=True)
class Mutant:
    path: str          # relative to the source root, with forward slashes
    start: int         # the replaced span, as offsets into the file's text
    end: int
    original: str
    replacement: str
    operator: str
    line: int
    col: int

    def key(self):
        return (self.path, self.start, self.end, self.replacement)

    def change(self):
        """The change in words, for reports: "`<` -> `<=`"."""
        before = " ".join(self.original.split())
        if len(before) > 60:
            before = before[:57] + "..."
        if not self.replacement:
            return f"`{before}` deleted"
        return f"`{before}` -> `{self.replacement}`"

    def apply(self, text):
        assert text[self.start:self.end] == self.original, "the source changed under the mutant"
        return text[:self.start] + self.replacement + text[self.end:]


def mutants_of(path, source):
    """All mutants of one file's text, in the order of their place in the file."""
    ctx = Context(tokenize(source).tokens)
    found = []
    for i, token in enumerate(ctx.tokens):
        if i in ctx.skipped:
            continue
        for operator, start, end, replacement in _token_mutants(ctx, i):
            first = ctx.tokens[i]
            found.append(Mutant(path, start, end, source[start:end], replacement, operator,
                                first.line, first.col))
    return found


def _token_mutants(ctx, i):
    """(operator, start, end, replacement) for every mutant planted at token i."""
    token = ctx.tokens[i]
    yield from _swaps(ctx, i, token)
    if token.kind == "num":
        yield from _constants(ctx, i, token)
    elif token.text == "return":
        yield from _return_default(ctx, i)
    elif token.kind == "id" and ctx.statement_start(i):
        yield from _call_deleted(ctx, i)


def _swaps(ctx, i, token):
    text = token.text
    for operator, table in _SWAPS.items():
        if text in table and _binary_ok(ctx, i, operator):
            yield operator, token.start, token.end, table[text]
    if text in ("<", ">") and ctx.is_comparison(i):
        yield "relational", token.start, token.end, text + "="
    elif text in ("+", "-") and ends_value(ctx.tokens[i - 1]):
        yield "arithmetic", token.start, token.end, "-" if text == "+" else "+"
    elif text == "*" and _surely_product(ctx, i):
        yield "arithmetic", token.start, token.end, "/"
    elif text == "&&" and (ctx.text(i - 1) == ")" or ctx.in_expression(i)):
        yield "logical", token.start, token.end, "||"
    elif text == "!":
        yield "negation", token.start, token.end, ""


def _binary_ok(ctx, i, operator):
    """A binary operator needs a value on its left (`/` after a value, not in `= 0;`)."""
    return operator not in ("arithmetic", "relational", "logical") or i > 0 and \
        ends_value(ctx.tokens[i - 1])


def _surely_product(ctx, i):
    """`*` between operands, and not the declarator of `T* name = ...` or `T* name;`."""
    before, after = ctx.tokens[i - 1], ctx.tokens[i + 1]
    if not ends_value(before):
        return False
    if before.kind == "num" or before.text in (")", "]") or after.kind == "num":
        return True
    if ctx.has_evidence(i):
        return True
    declarator = after.kind == "id" and ctx.text(i + 2) in ("=", ";", ",", ")", "{", "[", ":")
    return not declarator and ctx.in_condition(i)


def _constants(ctx, i, token):
    match = _INTEGER.fullmatch(token.text)
    if not match or _pure_virtual(ctx, i):
        return
    digits, suffix = match.group(1), match.group(2)
    value = int(digits.replace("'", ""), 0) if not _octal(digits) else int(digits, 8)
    for changed in (value + 1, value - 1):
        if changed >= 0:
            yield "constant", token.start, token.end, _format_like(digits, changed) + suffix


def _octal(digits):
    return len(digits) > 1 and digits[0] == "0" and digits[1].isdigit()


def _format_like(digits, value):
    if digits[:2] in ("0x", "0X"):
        return digits[:2] + format(value, "x")
    if digits[:2] in ("0b", "0B"):
        return digits[:2] + format(value, "b")
    return "0" + format(value, "o") if _octal(digits) else str(value)


def _pure_virtual(ctx, i):
    return ctx.text(i - 1) == "=" and ctx.text(i - 2) in (")", "const", "override", "noexcept")


def _return_default(ctx, i):
    end = next(ctx.scan(i, +1, {";"}), None)
    last = None
    for last in ctx.scan(i, +1, {";"}):
        pass
    if end is None or ctx.text(last + 1) != ";":
        return
    start_token, last_token = ctx.tokens[end], ctx.tokens[last]
    value = "".join(t.text for t in ctx.tokens[end:last + 1])
    if value not in _DEFAULT_VALUES and not _literal(ctx.tokens[end:last + 1]):
        yield "return", start_token.start, last_token.end, "{}"


def _literal(tokens):
    """A number or truth value, which the constant and boolean operators already change."""
    texts = [t.text for t in tokens]
    if texts and texts[0] == "-":
        texts = texts[1:]
    return len(texts) == 1 and (tokens[-1].kind == "num" or texts[0] in ("true", "false"))


def _call_deleted(ctx, i):
    """`name(args);`, `a::b(args);`, `a.b(args).c(args);`, `p->f(args);` deleted whole."""
    j = i
    calls = 0
    while True:
        if ctx.tokens[j].kind != "id" or ctx.text(j) in NON_VALUE_WORDS:
            return
        while ctx.text(j + 1) in ("::", ".", "->") and ctx.tokens[j + 2].kind == "id":
            j += 2
        if ctx.text(j + 1) != "(":
            return
        j = ctx.match.get(j + 1, -1)
        calls += 1
        if j < 0:
            return
        if ctx.text(j + 1) in (".", "->"):
            j += 2
            continue
        break
    if ctx.text(j + 1) == ";" and calls:
        yield "call", ctx.tokens[i].start, ctx.tokens[j + 1].end, ""
