"""The scratch copy of the source tree and its build folder, where mutants are built.

The copy holds the files git knows in the working tree (tracked, and untracked ones that are
not ignored), so that uncommitted work is measured too. It is brought up to date by content:
a file is rewritten only when its bytes differ, so that the build folder, configured once,
rebuilds only what changed since the last run. The working tree itself is only ever read.

This module does not choose mutants or judge them; see run.py.
"""

import hashlib
import json
import os
import shlex
import shutil
import subprocess
import tempfile
from pathlib import Path

SOURCE_FOLDERS = ("module", "object", "strings", "path", "minihost")


def git_files(root):
    """The working tree's files that git tracks or would track, relative to root."""
    out = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                         cwd=root, check=True, capture_output=True).stdout
    names = sorted(set(n for n in out.decode().split("\0") if n))
    return [n for n in names if (root / n).is_file()]


def build_env():
    """The environment of every build: without CI, which would make warnings errors."""
    env = dict(os.environ)
    env.pop("CI", None)
    return env


class Workspace:
    def __init__(self, root, work, jobs, nice):
        self.root = Path(root)
        self.work = Path(work)
        self.src = self.work / "src"
        self.build = self.work / "build"
        self.jobs = jobs
        self.nice = nice

    def command(self, args):
        return ["nice", "-n", str(self.nice), *args] if self.nice else list(args)

    def sync(self):
        """Makes the copy equal to the working tree, touching only files that differ."""
        wanted = git_files(self.root)
        for name in wanted:
            source, copy = self.root / name, self.src / name
            data = source.read_bytes()
            if not copy.is_file() or copy.read_bytes() != data:
                copy.parent.mkdir(parents=True, exist_ok=True)
                copy.write_bytes(data)
                shutil.copymode(source, copy)
        keep = set(wanted)
        for path in sorted(self.src.rglob("*")):
            if path.is_file() and path.relative_to(self.src).as_posix() not in keep:
                path.unlink()

    def configure(self, log):
        """Configures the build folder once, with the default preset's generator and cache
        variables; warnings stay warnings (a deleted call may leave a variable unused)."""
        if (self.build / "CMakeCache.txt").is_file():
            return True
        generator, variables = default_preset(self.src / "CMakePresets.json")
        variables["TAVREL_WERROR"] = "OFF"
        args = ["cmake", "-S", str(self.src), "-B", str(self.build)]
        args += ["-G", generator] if generator else []
        args += [f"-D{k}={v}" for k, v in sorted(variables.items())]
        return run_logged(self.command(args), log, None) == 0

    def compiled_sources(self):
        """(source, object) pairs of the build, relative to the copy and the build folder."""
        entries = json.loads((self.build / "compile_commands.json").read_text())
        pairs = []
        for entry in entries:
            source = Path(entry["file"]).resolve().relative_to(self.src.resolve()).as_posix()
            words = shlex.split(entry["command"]) if "command" in entry else entry["arguments"]
            output = Path(entry["directory"], words[words.index("-o") + 1]).resolve()
            pairs.append((source, output))
        return sorted(set(pairs))

    def build_all(self, log, timeout):
        args = ["cmake", "--build", str(self.build), "--", f"-j{self.jobs}"]
        return run_logged(self.command(args), log, timeout) == 0

    def run_tests(self, log, timeout, keep_going, exclude):
        """Runs ctest; returns (passed, timed out, names of the tests that failed)."""
        failed_list = self.build / "Testing" / "Temporary" / "LastTestsFailed.log"
        if failed_list.exists():
            failed_list.unlink()
        args = ["ctest", "--test-dir", str(self.build), "-j", str(self.jobs),
                "--timeout", str(timeout), "--no-tests=error"]
        args += [] if keep_going else ["--stop-on-failure"]
        args += ["-E", exclude] if exclude else []
        status = run_logged(self.command(args), log, timeout + 30)
        failed = []
        if failed_list.exists():
            failed = [line.split(":", 1)[-1] for line in failed_list.read_text().split()]
        timed_out = status is None or b"***Timeout" in Path(log).read_bytes()
        return status == 0, timed_out, failed


def default_preset(presets_file):
    """The generator and cache variables of the configure preset "default", inherits applied."""
    presets = {p["name"]: p for p in json.loads(presets_file.read_text())["configurePresets"]}

    def resolve(name):
        preset = presets[name]
        generator, variables = None, {}
        parents = preset.get("inherits", [])
        for parent in [parents] if isinstance(parents, str) else reversed(parents):
            parent_generator, parent_variables = resolve(parent)
            generator = parent_generator or generator
            variables.update(parent_variables)
        for key, value in preset.get("cacheVariables", {}).items():
            variables[key] = value["value"] if isinstance(value, dict) else value
        return preset.get("generator", generator), variables

    return resolve("default")


def run_logged(args, log, timeout):
    """Runs a command in its own process group with its output in log; returns its exit
    status, or None when it ran out of time (the whole group is then killed)."""
    with open(log, "wb") as out:
        process = subprocess.Popen(args, stdout=out, stderr=subprocess.STDOUT, env=build_env(),
                                   start_new_session=True)
        try:
            return process.wait(timeout=timeout)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, 9)
            process.wait()
            return None
        except BaseException:
            os.killpg(process.pid, 9)
            process.wait()
            raise


def code_hash(obj):
    """A hash of an object file without its debug sections: two objects with the same hash
    run the same, even when the debug information's line and column numbers differ."""
    if not obj.is_file():
        return None
    with tempfile.NamedTemporaryFile(suffix=".o") as stripped:
        result = subprocess.run(["objcopy", "--strip-debug", str(obj), stripped.name],
                                capture_output=True)
        data = Path(stripped.name).read_bytes() if result.returncode == 0 else obj.read_bytes()
    return hashlib.sha256(data).hexdigest()
