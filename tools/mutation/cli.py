"""The command line of tools/mutate: options, the run from copy to report, progress output."""

import argparse
import fcntl
import os
import subprocess
import sys
import time
from pathlib import Path

from . import report
from .operators import OPERATORS
from .run import Runner, BaselineError
from .sites import all_mutants, candidate_files, sample
from .workspace import Workspace


def parse(argv):
    p = argparse.ArgumentParser(
        prog="tools/mutate",
        description="Plants one fault at a time in a copy of the sources, rebuilds it and runs "
                    "the tests; prints the kill rate and writes the survivors to a report.")
    p.add_argument("--seed", type=int, default=1, help="seed of the sample (default 1)")
    p.add_argument("--count", type=int, default=300,
                   help="mutants in the sample, 0 for all (default 300)")
    p.add_argument("--path", action="append", default=[], metavar="PREFIX",
                   help="only files under this path, e.g. strings/ (repeatable)")
    p.add_argument("--operator", action="append", default=[], choices=OPERATORS,
                   help="only mutants of this operator (repeatable)")
    p.add_argument("--rerun", type=Path, metavar="RESULTS",
                   help="judge again only the sample's mutants that RESULTS (the results.tsv of "
                        "an earlier run on the same sources) lists as killed")
    p.add_argument("--killed-by", metavar="REGEX",
                   help="with --rerun: only those that a test matching REGEX killed")
    p.add_argument("--resume", type=Path, metavar="RESULTS",
                   help="go on with an interrupted run: the sample's mutants that RESULTS (its "
                        "results.tsv, written after every mutant) judged are taken from it")
    p.add_argument("--list", action="store_true",
                   help="print the sample (and the totals per operator), build nothing")
    p.add_argument("--timeout", type=int, default=0,
                   help="seconds for one mutant's test run, also each test's limit "
                        "(default: 10 times the unmutated run, at least 60)")
    p.add_argument("--keep-going", action="store_true",
                   help="run every test on each mutant, to record all that kill it "
                        "(default: stop at the first failure)")
    p.add_argument("--exclude", metavar="REGEX", help="tests to leave out (ctest -E)")
    p.add_argument("--jobs", type=int, default=os.cpu_count() or 1,
                   help="parallel build and test jobs (default: the number of cores)")
    p.add_argument("--nice", type=int, default=19, help="niceness of builds and tests (19)")
    p.add_argument("--work", type=Path, help="scratch folder (default: build/mutate)")
    p.add_argument("--report", type=Path,
                   help="survivors report (default: <work>/survivors.txt)")
    return p.parse_args(argv)


def main(argv=None):
    args = parse(argv)
    root = Path(__file__).resolve().parents[2]
    work = (args.work or root / "build" / "mutate").resolve()
    ws = Workspace(root, work, args.jobs, args.nice)
    work.mkdir(parents=True, exist_ok=True)
    lock = hold_lock(work)  # noqa: F841 (held until the process ends)
    ws.sync()
    if not ws.configure(work / "configure.log"):
        sys.exit(f"configure failed: {work / 'configure.log'}")
    compiled = [source for source, _ in ws.compiled_sources()]
    files = candidate_files(ws.src, compiled)
    population = all_mutants(ws.src, files, args.path, args.operator)
    chosen = sample(population, args.seed, args.count)
    if args.rerun:
        chosen = report.killed_again(chosen, args.rerun, args.killed_by)
    if args.list:
        print_list(population, chosen)
        return 0
    if not chosen:
        sys.exit("no mutant matches")
    return measure(args, ws, commit_of(root), population, chosen)


def hold_lock(work):
    """Keeps a second run off the same scratch folder: its sync would undo a planted fault."""
    lock = open(work / "lock", "w")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        sys.exit(f"another tools/mutate is using {work}; give this one --work DIR")
    return lock


def print_list(population, chosen):
    for m in chosen:
        print(f"{report.place(m)}  {m.operator}  {m.change()}")
    totals = {op: sum(m.operator == op for m in population) for op in OPERATORS}
    print(f"{len(chosen)} of {len(population)} mutants; all by operator: " +
          ", ".join(f"{op} {n}" for op, n in totals.items() if n), file=sys.stderr)


def measure(args, ws, commit, population, chosen):
    carried, chosen = (report.carried_over(chosen, args.resume) if args.resume
                       else ([], chosen))
    runner = Runner(ws, args.timeout or 60, args.keep_going, args.exclude)
    print(f"building the unmutated copy in {ws.build} and running its tests ...", flush=True)
    try:
        seconds = runner.check_baseline()
    except BaselineError as error:
        sys.exit(str(error))
    runner.timeout = args.timeout or max(60, int(10 * seconds))
    print(f"tests of the unmutated copy: {seconds:.1f} s; time limit per mutant "
          f"{runner.timeout} s; {len(chosen)} of {len(population)} mutants, seed {args.seed}" +
          (f"; {len(carried)} judged before, taken from {args.resume}" if carried else ""),
          flush=True)
    results = list(carried)
    started = time.monotonic()
    _, partial = report_paths(args, ws)

    def on_result(done, result):
        results.append(result)
        # NOTE: rewritten after every mutant, so that a run cut short (a session that ends,
        # a machine that reboots) goes on with --resume instead of starting again.
        report.write_results(partial, results)
        tests = ",".join(result.failed_tests[:3]) + (" (time limit)" if result.timed_out else "")
        print(f"[{done}/{len(chosen)}] {result.outcome:12} {report.place(result.mutant)} "
              f"{result.mutant.operator} {result.mutant.change()}  (build "
              f"{result.build_seconds:.0f} s, tests {result.test_seconds:.0f} s) {tests}",
              flush=True)

    try:
        runner.run(chosen, on_result)
    except KeyboardInterrupt:
        print("interrupted: the report covers the mutants judged so far", flush=True)
    elapsed = time.monotonic() - started
    finish(args, ws, commit, results, len(population), elapsed, len(carried))
    return 0


def report_paths(args, ws):
    """The survivors report and, beside it, results.tsv."""
    survivors = args.report or ws.work / "survivors.txt"
    return survivors, survivors.with_name("results.tsv")


def finish(args, ws, commit, results, population, elapsed, carried):
    # NOTE: the pace counts only the mutants judged in this run, not those taken over by
    # --resume.
    judged = len(results) - carried
    pace = f"{elapsed / 60:.1f} min, {elapsed / max(judged, 1):.0f} s per mutant"
    header = [f"tools/mutate --seed {args.seed} --count {args.count}" +
              (f" --rerun {args.rerun}" if args.rerun else "") +
              (f" --resume {args.resume}" if args.resume else "") +
              (f" --killed-by '{args.killed_by}'" if args.killed_by else "") +
              "".join(f" --path {p}" for p in args.path) +
              "".join(f" --operator {o}" for o in args.operator),
              f"commit {commit}; {len(results)} mutants judged of {population}" +
              (f" ({carried} of them in an earlier run)" if carried else "") + f"; {pace}"]
    path, results_path = report_paths(args, ws)
    report.write_report(path, header, results, ws.src)
    report.write_results(results_path, results)
    print(report.counts_table(results))
    print(f"survivors: {path}; every mutant: {results_path}")
    print(pace)
    print(report.kill_line(results))


def commit_of(root):
    head = subprocess.run(["git", "rev-parse", "--short", "HEAD"], cwd=root,
                          capture_output=True, text=True).stdout.strip()
    dirty = subprocess.run(["git", "status", "--porcelain", "--untracked-files=no"], cwd=root,
                           capture_output=True, text=True).stdout.strip()
    return head + (" with uncommitted changes" if dirty else "")
