"""What the tokens around a position say about it: value or not, expression or declaration,
template bracket or comparison, function body or not.

The answers are deliberately cautious: where C++ syntax is ambiguous without knowing which
names are types (`a < b > c`, `T * p`, `T && x`), the helpers answer "not an operator", so a
mutant is planted only where the token surely is one. A few real operators are missed that way;
none of the planted faults is a template bracket, a pointer declarator or a reference.
"""

# Words after which a token starts a value rather than continues one (`return -1`, `case +2`).
NON_VALUE_WORDS = frozenset("""
    return case throw else do co_return co_yield new delete operator template typename
    sizeof alignof decltype noexcept static_assert alignas const volatile constexpr static
    inline extern auto void bool char int long short signed unsigned float double
    class struct union enum namespace using typedef public private protected virtual
    explicit friend goto""".split())

# Words whose parenthesised operand is never evaluated, or must be a constant: a fault there is
# either the same program or one that does not compile.
UNEVALUATED_WORDS = frozenset({"static_assert", "decltype", "alignas", "noexcept", "sizeof",
                               "alignof", "requires"})

CONDITION_WORDS = frozenset({"if", "while", "for", "switch", "return"})
STATEMENT_STOPS = frozenset({";", "{", "}"})
OPENERS, CLOSERS = "([{", ")]}"


def ends_value(token):
    """Whether a binary operator may follow this token (an operand ends here)."""
    if token.kind in ("num", "str", "chr"):
        return True
    if token.kind == "id":
        return token.text not in NON_VALUE_WORDS
    return token.text in (")", "]")


def starts_value(token):
    """Whether this token may begin the right operand of a binary operator."""
    if token.kind in ("num", "str", "chr"):
        return True
    if token.kind == "id":
        return token.text not in NON_VALUE_WORDS - {"sizeof", "alignof", "new"}
    return token.text in ("(", "!", "-", "+", "~", "*", "&", "::")


class Context:
    """Precomputed facts about a token list: the matching brackets and skipped regions."""

    def __init__(self, tokens):
        self.tokens = tokens
        self.match, self.enclosing = _match_brackets(tokens)
        self.skipped = self._skipped_regions()
        self.block = self._block_braces()

    def text(self, i):
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def _skipped_regions(self):
        """Token indices in unevaluated operands, template parameter lists and operator names."""
        skipped = set()
        for i, token in enumerate(self.tokens):
            if token.text in UNEVALUATED_WORDS and self.text(i + 1) == "(":
                skipped.update(range(i + 1, self.match.get(i + 1, i + 1) + 1))
            elif token.text == "template" and self.text(i + 1) == "<":
                skipped.update(range(i + 1, self._angle_close(i + 1) + 1))
            elif token.text == "operator":
                skipped.update({i + 1, i + 2})
        return skipped

    def _angle_close(self, i):
        depth = 0
        for j in range(i, len(self.tokens)):
            text = self.tokens[j].text
            depth += {"<": 1, ">": -1, ">>": -2}.get(text, 0)
            if depth <= 0 or text in STATEMENT_STOPS:
                return j
        return len(self.tokens) - 1

    def _block_braces(self):
        """For each '{': whether it opens a block of statements (function body, if, loop)."""
        block = {}
        for i, token in enumerate(self.tokens):
            if token.text == "{":
                before = self.text(i - 1)
                block[i] = before in (")", "]", "else", "do", "try", "{", "}", ";") or \
                    before in ("const", "noexcept", "override", "final")
        return block

    def innermost_opener(self, i):
        """The index of the bracket that encloses token i, or -1 at file level."""
        return self.enclosing[i]

    def scan(self, i, step, stops):
        """Walks from token i in direction step over balanced brackets, yielding indices at the
        same nesting level, until a stop token, an unbalanced bracket or the end."""
        depth, j = 0, i + step
        opening, closing = (OPENERS, CLOSERS) if step > 0 else (CLOSERS, OPENERS)
        while 0 <= j < len(self.tokens):
            text = self.tokens[j].text
            if depth == 0 and text in stops:
                return
            if text in opening:
                depth += 1
            elif text in closing:
                if depth == 0:
                    return
                depth -= 1
            elif depth == 0:
                yield j
            j += step

    def is_comparison(self, i):
        """Whether '<' or '>' at i is surely a comparison, not a template bracket: operands on
        both sides, and no partner bracket within the same expression."""
        if not (ends_value(self.tokens[i - 1]) and starts_value(self.tokens[i + 1])):
            return False
        stops = {";", "&&", "||", "?", ":"}
        if self.text(i) == "<":
            partners = (">", ">>")
            seen = (self.text(j) for j in self.scan(i, +1, stops))
        else:
            partners = ("<", "template")
            seen = (self.text(j) for j in self.scan(i, -1, stops))
        return not any(text in partners for text in seen)

    def in_expression(self, i):
        """Whether token i surely sits in an expression (see has_evidence and in_condition)."""
        return self.has_evidence(i) or self.in_condition(i)

    def has_evidence(self, i):
        """Whether an assignment, a comparison or `return` comes before token i in its own
        statement and argument (default arguments `int a = 0, T* p` do not count)."""
        evidence = {"=", "==", "!=", "<=", ">=", "return", "||", "?", "+=", "-=", "*=", "/="}
        stops = STATEMENT_STOPS | {","}
        return any(self.text(j) in evidence for j in self.scan(i, -1, stops))

    def in_condition(self, i):
        """Whether token i sits inside the parentheses of if/while/for/switch/return."""
        opener = self.innermost_opener(i)
        while opener >= 0 and self.text(opener) == "(":
            if self.text(opener - 1) in CONDITION_WORDS:
                return True
            if self.text(opener - 1) not in ("(", "!", "&&", "||"):
                return False
            opener = self.innermost_opener(opener)
        return False

    def statement_start(self, i):
        """Whether token i begins a statement inside a block of statements."""
        if self.text(i - 1) not in ("", ";", "{", "}"):
            return False
        opener = self.innermost_opener(i)
        return opener >= 0 and self.block.get(opener, False)


def _match_brackets(tokens):
    """The partner of every bracket, and for every token the bracket that encloses it."""
    match, enclosing, stack = {}, [], []
    for i, token in enumerate(tokens):
        if token.text in CLOSERS and stack:
            j = stack.pop()
            match[j], match[i] = i, j
        enclosing.append(stack[-1] if stack else -1)
        if token.text in OPENERS:
            stack.append(i)
    return match, enclosing
