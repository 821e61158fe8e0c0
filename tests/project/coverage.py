#!/usr/bin/env python3
"""Says which lines and branches of the library its own tests do not reach; fails if there are any.

usage: coverage.py BUILD [--all]

BUILD was configured for coverage, and its tests have run with their profiles in BUILD/profiles.
Prints a table by folder, the places that are marked as unreachable, and each line and each side of
a branch that no test has taken (the first 40 of them without --all).

The counters are the compiler's own for source code (clang's), not those of the machine code: the
edges that the compiler makes for exceptions are none. A line or a side of a branch is reached when
it is in any instance of a template, and in any program. Functions that are in no program, because
only the compiler itself runs them, do not count; nor do branches that it makes itself: the way past
a switch without default (it refuses one that leaves out an enumerator), and those inside of
functions that are "= default", which clang 14 counts wrongly.

"// Unreachable: WHY" behind a line, or above it, takes that line out, and the block that it opens.
Where all of that is reached the mark is a failure, as are more than ten of them.
"""

import functools
import glob
import json
import os
import subprocess
import sys
from collections import defaultdict

FOLDERS = ["src/framework", "src/model", "src/common", "src/policy", "src/servicedevice"]
SHOWN = 40
MARK = "// Unreachable: "
MOST_MARKS = 10


def tool(name):
    """The newest of Debian's LLVM tools."""
    found = sorted(glob.glob(f"/usr/lib/llvm-*/bin/{name}"))
    return found[-1] if found else name


def objects(build):
    programs = sorted(glob.glob(f"{build}/bin/test_*")) + [f"{build}/bin/reference"]
    return programs + sorted(glob.glob(f"{build}/lib/*.so"))


def export(build, profile, *options):
    first, *others = objects(build)
    named = [word for other in others for word in ("-object", other)]
    return subprocess.run(
        [tool("llvm-cov"), "export", first, *named, f"-instr-profile={profile}", *options],
        check=True,
        stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL,  # says that other programs have other test cases
        text=True,
    ).stdout


def source(path):
    """The file in the source tree, which the floors see through links; None: not of the library."""
    name = os.path.relpath(os.path.realpath(path))
    return name if name.startswith(tuple(folder + "/" for folder in FOLDERS)) else None


def functions_in(text):
    """The functions of the library, each with its name, count, files, regions and branches."""
    for function in json.loads(text)["data"][0]["functions"]:
        files = [source(path) for path in function["filenames"]]
        if any(files):
            yield function, files


def symbols(build):
    """The mangled names of all functions that are in a program."""
    listed = subprocess.run(
        ["nm", "--defined-only", "--format=just-symbols", *objects(build)],
        check=True,
        stdout=subprocess.PIPE,
        text=True,
    ).stdout
    return set(listed.split())


def lines_in(text):
    """How often each line ran: {(file, line): count}."""
    counts = defaultdict(int)
    file = None
    for row in text.splitlines():
        if row.startswith("SF:"):
            file = source(row[3:])
        elif row.startswith("DA:") and file:
            line, count = row[3:].split(",")[:2]
            counts[file, int(line)] += int(count)
    return counts


def lines_of(function, files):
    """The lines that a function's text covers."""
    for begin, _, end, _, _, file, _, kind in function["regions"]:
        if files[file] and kind == 0:
            yield from ((files[file], line) for line in range(begin, end + 1))


def indentation(text):
    return len(text) - len(text.lstrip())


@functools.cache
def lines_of_file(file):
    with open(file, encoding="utf-8") as text:
        return text.read().splitlines()


def marked_in(file):
    """The marked places of a file, each as its first line, the reason and the lines it takes out."""
    texts = lines_of_file(file)
    for at, text in enumerate(texts):
        code, mark, reason = text.partition(MARK)
        if not mark:
            continue
        first = at if code.strip() else at + 1
        code = code if code.strip() else texts[first]
        last = first
        if code.rstrip().endswith("{"):
            last += 1
            while indentation(texts[last]) > indentation(texts[first]) or not texts[last].strip():
                last += 1
        yield first + 1, reason, range(first + 1, last + 2)


def of_compiler(file, line, column):
    """Whether a branch is the way past a switch without default, or in a function that is."""
    text = lines_of_file(file)[line - 1]
    return text[: column - 1].endswith("switch (") or text[:column].endswith("= default")


def behind_gaps(function, files):
    """The lines that run although clang 14 counts them as the gap before them, which does not: those
    behind what may not return, such as an assert."""
    for gap in function["regions"]:
        if gap[7] != 3 or not files[gap[5]]:
            continue
        end = gap[2], gap[3]
        around = [
            region
            for region in function["regions"]
            if region[7] == 0 and region[5] == gap[5]
            and tuple(region[:2]) <= end < tuple(region[2:4])
        ]
        if around and max(around, key=lambda region: region[:2])[4] > 0:
            yield files[gap[5]], gap[2]


def folder_of(file):
    return next(folder for folder in FOLDERS if file.startswith(folder + "/"))


def main():
    build = sys.argv[1]
    profile = f"{build}/profile"
    subprocess.run(
        [tool("llvm-profdata"), "merge", "-o", profile, *glob.glob(f"{build}/profiles/*.profraw")],
        check=True,
    )
    in_programs = symbols(build)
    branches = defaultdict(lambda: [0, 0])
    run, behind, compiled_only = set(), set(), set()
    for function, files in functions_in(export(build, profile)):
        if function["count"] == 0 and function["name"].split(":")[-1] not in in_programs:
            compiled_only.update(lines_of(function, files))
            continue
        run.update(lines_of(function, files))
        behind.update(behind_gaps(function, files))
        for line, column, _, _, true, false, file, *_ in function["branches"]:
            if files[file]:
                sides = branches[files[file], line, column]
                sides[0] += true
                sides[1] += false
    lines = {
        place: max(count, place in behind)
        for place, count in lines_in(export(build, profile, "-format=lcov")).items()
        if count > 0 or place in run or place not in compiled_only
    }

    branches = {place: sides for place, sides in branches.items() if not of_compiler(*place)}

    marks, failures = [], []
    for file in sorted({file for file, _ in lines}):
        for first, reason, covered in marked_in(file):
            marks.append(f"{file}:{first}: {reason}")
            ran = [lines.pop((file, line), 1) > 0 for line in covered]
            inside = [place for place in branches if place[0] == file and place[1] in covered]
            taken = [side > 0 for place in inside for side in branches.pop(place)]
            if all(ran) and all(taken):
                failures.append(f"{file}:{first}: is marked as unreachable, and is reached")
    if len(marks) > MOST_MARKS:
        failures.append(f"{len(marks)} places are marked as unreachable; {MOST_MARKS} may be")

    total = defaultdict(lambda: [0, 0, 0, 0])
    missed = []
    for (file, line), count in lines.items():
        for name in (folder_of(file), "all"):
            total[name][0] += 1
            total[name][1] += count > 0
        if count == 0:
            missed.append((file, line, 0, "never ran"))
    for (file, line, column), sides in branches.items():
        for name in (folder_of(file), "all"):
            total[name][2] += 2
            total[name][3] += sum(side > 0 for side in sides)
        for side, word in zip(sides, ("true", "false")):
            if side == 0 and lines.get((file, line), 1) > 0:
                missed.append((file, line, column, f"never {word}"))

    print(f"{'folder':<20} {'lines':>7} {'reached':>8}   {'branches':>8} {'reached':>8}")
    for name in [*FOLDERS, "all"]:
        l, lr, b, br = total[name]
        print(f"{name:<20} {l:>7} {100 * lr / max(l, 1):>7.2f}%   {b:>8} {100 * br / max(b, 1):>7.2f}%")
    print(f"\n{len(marks)} places are marked as unreachable:")
    for mark in marks:
        print(mark)
    missed.sort()
    shown = missed if "--all" in sys.argv else missed[:SHOWN]
    if missed:
        print("\nNot reached:")
    for file, line, column, what in shown:
        place = f"{file}:{line}:{column}" if column else f"{file}:{line}"
        print(f"{place}: {what}")
    if len(shown) < len(missed):
        print(f"and {len(missed) - len(shown)} more; --all shows them")
    for failure in failures:
        print(f"coverage: {failure}")
    return 1 if missed or failures else 0


sys.exit(main())
