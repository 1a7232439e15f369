"""Which files can carry a fault, every mutant in them, and the seeded sample.

A file is a candidate when it lies in one of the product folders and the Linux build compiles
it: a source file of compile_commands.json, or a header that such a file includes (through
"quoted" includes outside the regions the build never compiles). Windows-only files are left
out that way, since no test here could catch a fault in them.

The list of all mutants is ordered by file and place, so the same sources give the same list,
and the same seed then gives the same sample.
"""

import random
from pathlib import Path, PurePosixPath

from .operators import mutants_of
from .tokens import tokenize
from .workspace import SOURCE_FOLDERS


def in_product(name):
    return PurePosixPath(name).parts[0] in SOURCE_FOLDERS and name.endswith((".cpp", ".h"))


def candidate_files(src, compiled):
    """The product sources the build compiles, with the product headers they reach."""
    src = Path(src)
    seen, todo = set(), sorted(set(compiled))
    while todo:
        name = todo.pop()
        if name in seen or not (src / name).is_file():
            continue
        seen.add(name)
        for include in tokenize((src / name).read_text(errors="replace")).includes:
            for base in (PurePosixPath(name).parent, PurePosixPath()):
                target = (base / include).as_posix()
                if (src / target).is_file():
                    todo.append(target)
                    break
    return sorted(name for name in seen if in_product(name))


def all_mutants(src, files, prefixes=(), operators=()):
    """Every mutant of the files, optionally only under some path prefixes or of some kinds."""
    found = []
    for name in files:
        if prefixes and not name.startswith(tuple(prefixes)):
            continue
        text = (Path(src) / name).read_text()
        found.extend(m for m in mutants_of(name, text) if not operators or m.operator in operators)
    return found


def sample(mutants, seed, count):
    """count mutants drawn with the seed (all of them when count is 0 or larger than the list),
    in the order of the full list."""
    if count <= 0 or count >= len(mutants):
        return list(mutants)
    chosen = random.Random(seed).sample(range(len(mutants)), count)
    return [mutants[i] for i in sorted(chosen)]
