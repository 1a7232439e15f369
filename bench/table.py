#!/usr/bin/env python3
"""Prints the table of the benchmark suite from Google Benchmark's JSON output.

Each row sets a figure of the module against its baseline from the same run: the medians of
the repetitions, in CPU time of the process (user and system, so that page faults count).
Exit status: 0 when every target is met, 1 when one is not, 2 when a benchmark is missing or
failed. With --smoke only the last check is made and no table is printed.
"""
import json
import sys

MIB = "1048576"
MIB64 = "67108864"

# (figure, its benchmark, baseline, its benchmark, kind, target)
#   kind "throughput": ratio = baseline time / figure time (the same bytes on both sides),
#                      met when at least the target
#   kind "time":       ratio = figure time / baseline time, met when at most the target
ROWS = [
    ("Size through the entry", "BM_Size_Entry",
     "hand-written entry", "BM_Size_HandWritten", "time", 1.1),
]
# The roads that read a range into a new string or buffer zero it before their one Read, so
# that the result holds exactly what the Read wrote: 0.6 at 1 MiB, 0.8 at 64 MiB. ToDataRef
# and the whole Copy do not read through Read: 0.8 at both sizes.
for size, label, read_target in ((MIB, "1 MiB", 0.6), (MIB64, "64 MiB", 0.8)):
    copy = "BM_StringCopy/" + size
    baseline = "std::string copy, " + label
    ROWS += [
        ("ToDataRef, " + label, "BM_ToDataRef/" + size, baseline, copy, "throughput", 0.8),
        ("ToString, " + label, "BM_ToString/" + size, baseline, copy, "throughput",
         read_target),
        ("Binary.Copy whole, " + label, "BM_CopyWhole/" + size, baseline, copy, "throughput",
         0.8),
        ("Binary.Copy range, " + label, "BM_CopyRange/" + size, baseline, copy, "throughput",
         read_target),
        ("Binary.Append, " + label, "BM_Append/" + size, baseline, copy, "throughput",
         read_target),
        ("Binary.Slice, " + label, "BM_Slice/" + size, baseline, copy, "throughput",
         read_target),
    ]
ROWS += [
    ("Data compare, other exposes bytes, 1 MiB", "BM_CompareExposed",
     "memcmp, 1 MiB", "BM_Memcmp", "throughput", 0.9),
    ("Data compare through Read, 1 MiB", "BM_CompareThroughRead",
     "memcmp, 1 MiB", "BM_Memcmp", "throughput", 0.5),
    ("ValidUTF8, ASCII lines, 1 MiB", "BM_ValidUTF8_Ascii",
     "memchr absent byte, 1 MiB", "BM_MemchrAbsent", "throughput", 0.2),
    ("ValidUTF8, mixed 2-4 byte text, 1 MiB", "BM_ValidUTF8_Mixed",
     "memchr absent byte, 1 MiB", "BM_MemchrAbsent", "throughput", 0.05),
    ("FindCaseInsensitive, needle at end, 1 MiB", "BM_FindCaseInsensitive/" + MIB,
     "strcasestr, same text", "BM_Strcasestr", "throughput", 3.0),
    ("ReplaceAll, ~100,000 matches, 1 MiB", "BM_ReplaceAll/" + MIB,
     "absl::StrReplaceAll, same text", "BM_AbslStrReplaceAll", "throughput", 1.5),
    ("ReplaceAll, 4 MiB", "BM_ReplaceAll/4194304",
     "ReplaceAll, 1 MiB", "BM_ReplaceAll/" + MIB, "time", 4.5),
    ("FindCaseInsensitive, 4 MiB", "BM_FindCaseInsensitive/4194304",
     "FindCaseInsensitive, 1 MiB", "BM_FindCaseInsensitive/" + MIB, "time", 4.5),
    ("MapFile + Size + 4 KiB Slice, 1 GiB sparse", "BM_MapFileSlice_Sparse1GiB",
     "the same, 1 MiB file", "BM_MapFileSlice_1MiB", "time", 2.0),
]

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


def show_time(ns):
    for unit, scale in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if ns >= scale:
            return "%.3g %s" % (ns / scale, unit)
    return "%.3g ns" % ns


def main(argv):
    smoke = "--smoke" in argv
    paths = [a for a in argv[1:] if a != "--smoke"]
    if len(paths) != 1:
        print("usage: table.py [--smoke] results.json", file=sys.stderr)
        return 2
    medians, failed = load(paths[0])
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
        if kind == "throughput":
            ratio, met, goal = theirs / mine, theirs / mine >= target, ">= %g" % target
        else:
            ratio, met, goal = mine / theirs, mine / theirs <= target, "<= %g" % target
        all_met = all_met and met
        lines.append((figure, show_time(mine), baseline, show_time(theirs), "%.2f" % ratio,
                      goal, "met" if met else "NOT met"))
    widths = [max(len(row[i]) for row in [header] + lines) for i in range(len(header))]
    print("| " + " | ".join(h.ljust(w) for h, w in zip(header, widths)) + " |")
    print("|" + "|".join("-" * (w + 2) for w in widths) + "|")
    for line in lines:
        print("| " + " | ".join(c.ljust(w) for c, w in zip(line, widths)) + " |")
    print()
    print("Medians of the repetitions, CPU time of the process (user and system). Throughput "
          "rows: ratio = baseline time / figure time; time rows: figure time / baseline time.")
    return 0 if all_met else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv))
