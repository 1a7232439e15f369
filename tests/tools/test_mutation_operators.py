"""Table-driven checks of tools/mutation's operators: a piece of C++ in, every mutant it
yields out (as the operator and the mutated text), including pieces that must yield none.
Run with: python3 tests/tools/test_mutation_operators.py"""

import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))

from mutation.operators import mutants_of  # noqa: E402
from mutation import report  # noqa: E402
from mutation.run import Result  # noqa: E402

# Each source sits inside a function body unless it opens one itself.
BODY = "void f() {\n%s\n}\n"

ROWS = [
    # comparisons, and the tokens that only look like them
    ("if (a < b) g();", [("relational", "if (a <= b) g();")]),
    ("x = a >= b;", [("relational", "x = a > b;")]),
    ("y = a != b;", [("relational", "y = a == b;")]),
    ("std::vector<int> v;", []),
    ("auto n = static_cast<long>(m);", []),
    ("std::map<int, std::vector<int>> m;", []),
    ("out << a; in >> b; p->q; c <=> d;", []),
    ("h(a < b, c > d);", [("call", "")]),  # could be a template argument list: kept
    ("x = x<<1 | x>>2;", [("constant", "x = x<<2 | x>>2;"), ("constant", "x = x<<0 | x>>2;"),
                          ("constant", "x = x<<1 | x>>3;"), ("constant", "x = x<<1 | x>>1;")]),
    # arithmetic and assignments; unary signs, pointer declarators and references are no operators
    ("x = a + b;", [("arithmetic", "x = a - b;")]),
    ("x = -a;", []),
    ("n -= k; n *= k;", [("arithmetic", "n += k; n *= k;"), ("arithmetic", "n -= k; n /= k;")]),
    ("x = a * b;", [("arithmetic", "x = a / b;")]),
    ("T* p = q; char const* s; if (Ctx* c = get()) {}", []),
    ("T&& r = t; void g(U&& u);", []),
    # logic
    ("if (a && !b) {}", [("logical", "if (a || !b) {}"), ("negation", "if (a && b) {}")]),
    ("ok = a || b;", [("logical", "ok = a && b;")]),
    # constants: decimal, hex with suffix, digit separators; never floats or pure virtuals
    ("x = 0x1Fu;", [("constant", "x = 0x20u;"), ("constant", "x = 0x1eu;")]),
    ("x = 1'000;", [("constant", "x = 1001;"), ("constant", "x = 999;")]),
    ("x = 0; y = 2.5;", [("constant", "x = 1; y = 2.5;")]),
    ("struct S { virtual void g() = 0; };", []),
    # truth values and returns; a return of a literal is left to the constant operators
    ("return ok;", [("return", "return {};")]),
    ("return true;", [("boolean", "return false;")]),
    ("return {}; return nullptr; return;", []),
    # statements that only call
    ("g(1);", [("call", ""), ("constant", "g(2);"), ("constant", "g(0);")]),
    ("a.b(c)->d();", [("call", "")]),
    ("std::string s(t); x = g(); if (c) g();", []),
    # what the tokenizer skips: comments, literals, preprocessor lines, unevaluated operands
    ('// a < b && c\n/* x = a + 1; */ s = "a < b || !c + 1";', []),
    ("c = '+'; r = R\"(a && b)\";", []),
    ("#include <vector>\n#define TWICE(x) ((x) + (x))\n#if A > 1\n#endif", []),
    ("static_assert(sizeof(T) == 8); using V = decltype(a + b);", []),
    ("#if defined(_WIN32)\nx = a + b;\n#else\ny = c - d;\n#endif",
     [("arithmetic", "#if defined(_WIN32)\nx = a + b;\n#else\ny = c + d;\n#endif")]),
]


def mutated(source):
    text = BODY % source if not source.startswith("struct") else source
    found = set()
    for m in mutants_of("x.cpp", text):
        body = m.apply(text)
        found.add((m.operator, body[len("void f() {\n"):-len("\n}\n")]
                   if not source.startswith("struct") else body))
    return found


class OperatorTable(unittest.TestCase):
    def test_rows(self):
        for source, expected in ROWS:
            with self.subTest(source=source):
                self.assertEqual(mutated(source), set(expected))


class Resume(unittest.TestCase):
    def test_results_carry_over(self):
        import tempfile
        text = BODY % "if (a < b && c) g(1);"
        ms = mutants_of("x.cpp", text)
        judged = [Result(ms[0], "killed", ["t1", "t2"], True, 1.5, 2.0),
                  Result(ms[1], "survived", [], False, 3.0, 4.0)]
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "results.tsv"
            report.write_results(path, judged)
            done, left = report.carried_over(ms, path)
        self.assertEqual([(r.mutant, r.outcome, r.failed_tests, r.timed_out) for r in done],
                         [(ms[0], "killed", ["t1", "t2"], True), (ms[1], "survived", [], False)])
        self.assertEqual(left, ms[2:])


if __name__ == "__main__":
    unittest.main()
