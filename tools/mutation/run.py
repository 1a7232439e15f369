"""Builds and judges mutants, one at a time, in the workspace's copy.

Each mutant is written into its file in the copy, the build folder is rebuilt incrementally
and the test suite runs with a time limit; then the file gets its original text back. Mutants
run grouped by file, so that a file's dependants are recompiled once for its original text
rather than after every mutant. A mutant is
  killed         the build succeeded and a test failed or ran out of time;
  survived       the build succeeded and every test passed;
  not compiled   the build failed (not counted in the kill rate);
  same code      every recompiled object file holds the same code as before (the fault sits
                 where the compiler drops it): the program is the one already tested, so no
                 test can tell, and it is not counted in the kill rate either.
"""

import time
from dataclasses import dataclass, field

from .workspace import code_hash

KILLED, SURVIVED, NOT_COMPILED, SAME_CODE = "killed", "survived", "not compiled", "same code"
BUILD_TIMEOUT = 3600


@dataclass
class Result:
    mutant: object
    outcome: str
    failed_tests: list = field(default_factory=list)
    timed_out: bool = False
    build_seconds: float = 0.0
    test_seconds: float = 0.0


class BaselineError(Exception):
    pass


class Runner:
    def __init__(self, workspace, timeout, keep_going=False, exclude=None, say=print):
        self.ws = workspace
        self.timeout = timeout
        self.keep_going = keep_going
        self.exclude = exclude
        self.say = say
        self.objects = [obj for _, obj in workspace.compiled_sources()]
        self.baseline = {}
        self.current = {}

    def check_baseline(self):
        """Builds the unmutated copy and runs the suite, which must pass; returns its time."""
        if not self.ws.build_all(self.ws.work / "build.log", BUILD_TIMEOUT):
            raise BaselineError(f"the unmutated copy does not build: {self.ws.work / 'build.log'}")
        self.baseline = {obj: code_hash(obj) for obj in self.objects}
        self.current = dict(self.baseline)
        started = time.monotonic()
        passed, _, failed = self.ws.run_tests(self.ws.work / "test.log", self.timeout,
                                              True, self.exclude)
        if not passed:
            raise BaselineError("the unmutated copy fails tests " + ", ".join(failed) +
                                f": {self.ws.work / 'test.log'}")
        return time.monotonic() - started

    def run(self, mutants, on_result):
        """Judges the mutants, calling on_result(index, result) after each."""
        order = sorted(range(len(mutants)), key=lambda i: mutants[i].key())
        for done, i in enumerate(order, 1):
            on_result(done, self.judge(mutants[i]))

    def judge(self, mutant):
        path = self.ws.src / mutant.path
        original = path.read_text()
        path.write_text(mutant.apply(original))
        try:
            return self._build_and_test(mutant)
        finally:
            path.write_text(original)

    def _build_and_test(self, mutant):
        started = time.time()
        built = self.ws.build_all(self.ws.work / "mutant-build.log", BUILD_TIMEOUT)
        build_seconds = time.time() - started
        self._rehash(started)
        if not built:
            return Result(mutant, NOT_COMPILED, build_seconds=build_seconds)
        if self.current == self.baseline:
            return Result(mutant, SAME_CODE, build_seconds=build_seconds)
        test_start = time.monotonic()
        passed, timed_out, failed = self.ws.run_tests(
            self.ws.work / "mutant-test.log", self.timeout, self.keep_going, self.exclude)
        outcome = SURVIVED if passed else KILLED
        return Result(mutant, outcome, failed, timed_out, build_seconds,
                      time.monotonic() - test_start)

    def _rehash(self, since):
        """Updates the code hashes of the objects written since the build started."""
        for obj in self.objects:
            try:
                fresh = obj.stat().st_mtime >= since - 1
            except FileNotFoundError:
                fresh = True
            if fresh:
                self.current[obj] = code_hash(obj)
