#!/usr/bin/env python3
"""Prints the table of the benchmark suite from Google Benchmark's JSON output.

Each row sets a figure of the module against its baseline from the same run: the medians of
the repetitions, in CPU time of the process (user and system, so that page faults count).
With the instruction counts of bench/instructions.sh as a second file, their row follows the
timing row of Size. Exit status: 0 when every target is met, 1 when one is not, 2 when a
benchmark is missing or failed. With --smoke only the last check is made and no table is
printed.
"""
import json
import sys

MIB = "1048576"
MIB64 = "67108864"

# (figure, its benchmark, baseline, its benchmark, kind, target)
#   kind "throughput": ratio = baseline time / figure time (the same bytes on both sides),
#                      met when at least the target
#   kind "time":       ratio = figure time / baseline time, met when at most the target
#   kind "info":       ratio as for throughput, shown without a target
ROWS = [
    ("Size through the entry", "BM_Size_Entry",
     "hand-written entry, same shared object", "BM_Size_HandWritten", "time", 1.1),
]
# The roads that read a range into a new string or buffer zero it before their one Read, so
# that the result holds exactly what the Read wrote: 0.6 at 1 MiB, 0.8 at 64 MiB. ToDataRef
# and the whole Copy do not read through Read: 0.8 at both sizes. Each baseline copy lives as
# long as the figure's result: ToString's string is dropped at once (the host passes no
# variant), a buffer lives in its variant until the next call replaces it.
for size, label, read_target in ((MIB, "1 MiB", 0.6), (MIB64, "64 MiB", 0.8)):
    dropped = ("std::string copy, freed at once, " + label, "BM_StringCopy/" + size)
    kept = ("std::string copy, kept until the next, " + label, "BM_StringCopyKept/" + size)
    for figure, name, baseline, target in (
            ("ToDataRef", "BM_ToDataRef", kept, 0.8),
            ("ToString", "BM_ToString", dropped, read_target),
            ("Binary.Copy whole", "BM_CopyWhole", kept, 0.8),
            ("Binary.Copy range", "BM_CopyRange", kept, read_target),
            ("Binary.Append", "BM_Append", kept, read_target),
            ("Binary.Slice", "BM_Slice", kept, read_target)):
        ROWS.append(("%s, %s" % (figure, label), "%s/%s" % (name, size), baseline[0],
                     baseline[1], "throughput", target))
ROWS += [
    ("Data compare, other exposes bytes, 1 MiB", "BM_CompareExposed",
     "memcmp, 1 MiB", "BM_Memcmp", "throughput", 0.9),
    ("Data compare through Read, 1 MiB", "BM_CompareThroughRead",
     "memcmp, 1 MiB", "BM_Memcmp", "throughput", 0.5),
]
# The validators against memchr looking for a byte that is not there.
for figure, name, target in (
        ("ValidUTF8, ASCII lines", "BM_ValidUTF8_Ascii", 0.9),
        ("ValidUTF8, mixed 1-4 byte text", "BM_ValidUTF8_Mixed", 0.3),
        ("ValidUTF8, dense 2-4 byte text", "BM_ValidUTF8_Dense", 0.3),
        ("ValidASCII", "BM_ValidASCII", 0.9),
        ("ValidPrintableASCII", "BM_ValidPrintableASCII", 0.9)):
    ROWS.append((figure + ", 1 MiB", name, "memchr absent byte, 1 MiB", "BM_MemchrAbsent",
                 "throughput", target))
# The needle at the end of 1 MiB of prose, searched in upper case.
for needle in ("1", "3", "8", "32"):
    ROWS.append(("FindCaseInsensitive, %s-byte needle at end, 1 MiB" % needle,
                 "BM_FindCaseInsensitive/needle%s/%s" % (needle, MIB),
                 "strcasestr, same text", "BM_Strcasestr/needle" + needle, "throughput", 5.0))
ROWS.append(("FindCaseInsensitive, 4 MiB", "BM_FindCaseInsensitive/needle8/4194304",
             "FindCaseInsensitive, 1 MiB", "BM_FindCaseInsensitive/needle8/" + MIB, "time",
             4.5))
# ReplaceAll against the one-pass loop on the same text: dense is an occurrence every 10 bytes,
# sparse one every 1000 bytes. The shapes without a target are shown for what a user may bring:
# kind "info" rows give the ratio and take no part in the verdict.
for shape, label, target in (
        ("1to3_dense", "1 byte to 3, dense", 1.5),
        ("2equal_dense", "2 equal bytes to 3, dense", 1.5),
        ("2diff_dense", "2 different bytes to 3, dense", 1.5),
        ("8to1_dense", "8 bytes to 1, dense", 1.5),
        ("3to0_dense", "3 bytes to nothing, dense", 1.5),
        ("32to32_sparse", "32 bytes to 32, sparse", 1.5),
        ("3to0_sparse", "3 bytes to nothing, sparse", 1.5),
        ("32to32_sparse4k", "32 bytes to 32, one every 4096 bytes", None),
        ("3to0_sparse4k", "3 bytes to nothing, one every 4096 bytes", None),
        ("1to0_sparse", "1 byte to nothing, sparse", None),
        ("8to0_sparse", "8 bytes to nothing, sparse", None),
        ("16to0_sparse", "16 bytes to nothing, sparse", None),
        ("8to1_sparse", "8 bytes to 1, sparse", None),
        ("1to3_sparse", "1 byte to 3, sparse", None),
        ("2equal_sparse", "2 equal bytes to 3, sparse", None),
        ("2diff_sparse", "2 different bytes to 3, sparse", None),
        ("3to0_random100", "3 bytes to nothing, ~every 100 bytes at random", None),
        ("1to3_random100", "1 byte to 3, ~every 100 bytes at random", None),
        ("3to0_random10", "3 bytes to nothing, ~every 10 bytes at random", None)):
    ROWS.append(("ReplaceAll, %s, 1 MiB" % label, "BM_ReplaceAll/%s/%s" % (shape, MIB),
                 "one-pass find + append loop", "BM_OnePassReplace/%s/%s" % (shape, MIB),
                 "throughput" if target else "info", target or 0))
# What any in-place deletion has to do on the sparse text: move the bytes behind the first
# occurrence down once (memmove), against the same loop.
ROWS.append(("memmove of the text behind the first <b>, sparse, 1 MiB",
             "BM_MoveBehindFirst/3to0_sparse/" + MIB, "one-pass find + append loop",
             "BM_OnePassReplace/3to0_sparse/" + MIB, "info", 0))
ROWS += [
    ("ReplaceAll, 16 MiB", "BM_ReplaceAll/2diff_dense/16777216",
     "ReplaceAll, 1 MiB", "BM_ReplaceAll/2diff_dense/" + MIB, "time", 20.0),
    ("MapFile + Size + 4 KiB Slice, 1 GiB sparse", "BM_MapFileSlice_Sparse1GiB",
     "the same, 1 MiB file", "BM_MapFileSlice_1MiB", "time", 2.0),
]

# The instructions of one call of the Size entry against the hand-written entry in the same
# shared object (bench/instructions.sh), shown below the timing row of Size.
INSTRUCTION_TARGET = 1.05

UNIT_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def load(path):
    """Median CPU time in ns per benchmark, and the names of those that failed."""
    with open(path, encoding="utf-8") as stream:
        report = json.load(stream)
    medians, runs, failed = {}, {}, set()
    for entry in report["benchmarks"]:
        name = entry.get("run_name", entry["name"])
        if entry.get("error_occurred"):
            failed.add(name + ": " + entry.get("error_message", "failed"))
            continue
        ns = entry["cpu_time"] * UNIT_NS[entry.get("time_unit", "ns")]
        if entry.get("run_type") == "aggregate":
            if entry.get("aggregate_name") == "median":
                medians[name] = ns
        else:
            runs.setdefault(name, []).append(ns)
    for name, times in runs.items():
        if name not in medians:
            times.sort()
            medians[name] = times[len(times) // 2]
    return medians, failed


def report_context(path):
    """The instruction-set path of the string library that the run used, if it says."""
    with open(path, encoding="utf-8") as stream:
        return json.load(stream).get("context", {}).get("strings path", "")


def show_time(ns):
    for unit, scale in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if ns >= scale:
            return "%.3g %s" % (ns / scale, unit)
    return "%.3g ns" % ns


def main(argv):
    smoke = "--smoke" in argv
    paths = [a for a in argv[1:] if a != "--smoke"]
    if len(paths) not in (1, 2):
        print("usage: table.py [--smoke] results.json [instructions.json]", file=sys.stderr)
        return 2
    medians, failed = load(paths[0])
    instructions = None
    if len(paths) == 2:
        with open(paths[1], encoding="utf-8") as stream:
            instructions = json.load(stream)
    needed = {name for row in ROWS for name in (row[1], row[3])}
    missing = sorted(needed - set(medians))
    for problem in sorted(failed) + ["missing: " + name for name in missing]:
        print("benchmark " + problem, file=sys.stderr)
    if failed or missing:
        return 2
    if smoke:
        print("all %d benchmarks ran" % len(needed))
        return 0
    header = ("Figure", "Time", "Baseline", "Time", "Ratio", "Target", "Result")
    lines = []
    all_met = True
    for figure, name, baseline, base_name, kind, target in ROWS:
        mine, theirs = medians[name], medians[base_name]
        if kind == "info":
            lines.append((figure, show_time(mine), baseline, show_time(theirs),
                          "%.2f" % (theirs / mine), "none", "shown"))
            continue
        if kind == "throughput":
            ratio, met, goal = theirs / mine, theirs / mine >= target, ">= %g" % target
        else:
            ratio, met, goal = mine / theirs, mine / theirs <= target, "<= %g" % target
        all_met = all_met and met
        lines.append((figure, show_time(mine), baseline, show_time(theirs), "%.2f" % ratio,
                      goal, "met" if met else "NOT met"))
        if name == "BM_Size_Entry" and instructions:
            ratio = instructions["entry"] / instructions["hand"]
            met = ratio <= INSTRUCTION_TARGET
            all_met = all_met and met
            lines.append(("Size through the entry, instructions (callgrind)",
                          "%g" % instructions["entry"], "hand-written entry, same shared object",
                          "%g" % instructions["hand"], "%.3f" % ratio,
                          "<= %g" % INSTRUCTION_TARGET, "met" if met else "NOT met"))
    widths = [max(len(row[i]) for row in [header] + lines) for i in range(len(header))]
    print("| " + " | ".join(h.ljust(w) for h, w in zip(header, widths)) + " |")
    print("|" + "|".join("-" * (w + 2) for w in widths) + "|")
    for line in lines:
        print("| " + " | ".join(c.ljust(w) for c, w in zip(line, widths)) + " |")
    print()
    print("Medians of the repetitions, CPU time of the process (user and system). Throughput "
          "rows: ratio = baseline time / figure time; time rows: figure time / baseline time. "
          "Rows with target none are shown, not judged.")
    context = report_context(paths[0])
    if context:
        print("String library path: " + context)
    return 0 if all_met else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv))
