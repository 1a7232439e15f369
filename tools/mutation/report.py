"""The summary line, the counts per operator and the report file of survivors.

The report names the run (seed, sample size, commit), gives the counts per operator, then
every survivor with its place, the change and the source line, so that each can be sorted
into an equivalent mutant or a gap in the tests. A second file, results.tsv, holds one line
per mutant with its outcome and the tests that failed, for finding which test kills what.
"""

import re
from collections import Counter

from .operators import OPERATORS
from .run import KILLED, SURVIVED, NOT_COMPILED, SAME_CODE, Result

OUTCOMES = (KILLED, SURVIVED, NOT_COMPILED, SAME_CODE)


def kill_line(results):
    killed = sum(r.outcome == KILLED for r in results)
    judged = killed + sum(r.outcome == SURVIVED for r in results)
    rate = 100.0 * killed / judged if judged else 0.0
    return f"killed {killed} of {judged} mutants ({rate:.1f}%)"


def counts_table(results):
    counts = Counter((r.mutant.operator, r.outcome) for r in results)
    rows = [f"{'operator':12}" + "".join(f"{o:>14}" for o in OUTCOMES)]
    for operator in OPERATORS:
        if any(counts[(operator, o)] for o in OUTCOMES):
            rows.append(f"{operator:12}" + "".join(f"{counts[(operator, o)]:>14}"
                                                  for o in OUTCOMES))
    rows.append(f"{'all':12}" + "".join(f"{sum(r.outcome == o for r in results):>14}"
                                         for o in OUTCOMES))
    return "\n".join(rows)


def place(mutant):
    return f"{mutant.path}:{mutant.line}:{mutant.col}"


def source_line(src, mutant):
    return (src / mutant.path).read_text().splitlines()[mutant.line - 1].strip()


def write_report(path, header, results, src):
    survivors = sorted((r for r in results if r.outcome == SURVIVED), key=lambda r: r.mutant.key())
    lines = [*header, "", kill_line(results), "", counts_table(results), "",
             f"survivors ({len(survivors)}):"]
    for r in survivors:
        lines.append(f"{place(r.mutant)}  {r.mutant.operator}  {r.mutant.change()}")
        lines.append(f"    {source_line(src, r.mutant)}")
    path.write_text("\n".join(lines) + "\n")


def write_results(path, results):
    lines = ["outcome\tplace\toperator\tchange\tfailed tests\tbuild s\ttest s"]
    for r in sorted(results, key=lambda r: r.mutant.key()):
        tests = ",".join(r.failed_tests) + (" (time limit)" if r.timed_out else "")
        lines.append(f"{r.outcome}\t{place(r.mutant)}\t{r.mutant.operator}\t{r.mutant.change()}"
                     f"\t{tests}\t{r.build_seconds:.1f}\t{r.test_seconds:.1f}")
    path.write_text("\n".join(lines) + "\n")


def read_results(results_file):
    """The rows of a results.tsv as {(place, change): (outcome, failed tests, timed out, build s,
    test s)}."""
    rows = {}
    for line in results_file.read_text().splitlines()[1:]:
        outcome, where, _, change, tests, build, test = line.split("\t")[:7]
        names = [n for n in tests.replace(" (time limit)", "").split(",") if n]
        rows[(where, change)] = (outcome, names, tests.endswith(" (time limit)"),
                                 float(build), float(test))
    return rows


def carried_over(chosen, results_file):
    """The mutants of chosen that results_file already judged, as results, and the others."""
    rows = read_results(results_file)
    done, left = [], []
    for m in chosen:
        row = rows.get((place(m), m.change()))
        if row is None:
            left.append(m)
        else:
            outcome, tests, timed_out, build, test = row
            done.append(Result(m, outcome, tests, timed_out, build, test))
    return done, left


def killed_again(chosen, results_file, killed_by=None):
    """The mutants of chosen that results_file (a results.tsv) lists as killed, by a test that
    matches the regular expression killed_by when it is given. A mutant is known by its place
    and change, so results_file must come from the same sources."""
    pattern = re.compile(killed_by) if killed_by else None
    wanted = {key for key, (outcome, tests, *_) in read_results(results_file).items()
              if outcome == KILLED and (pattern is None or any(pattern.search(n) for n in tests))}
    return [m for m in chosen if (place(m), m.change()) in wanted]
