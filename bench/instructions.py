#!/usr/bin/env python3
"""Counts the instructions of the hot paths, and compares them with bench/instructions.json.

usage: instructions.py BENCH_PATH [--accept]

Unlike time the count is exact, so that a change of more than 3 % is a change of the code: then the
check fails, until the new figures are recorded on purpose with --accept.
"""

import json
import pathlib
import re
import subprocess
import sys

RECORD = pathlib.Path(__file__).with_name("instructions.json")
TOLERANCE = 0.03
FEW, MANY = 1000, 5000
PATHS = [
    "notification of 8 subscribers",
    "insertion and deletion through a mirror",
    "insertion and deletion through a mirror, ring on",
    "trace record",
    "trace record outside of an event",
    "object creation and destruction",
    "set hit",
]


def instructions(program, path, times):
    tool = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"]
    run = subprocess.run([*tool, program, path, str(times)], capture_output=True, text=True)
    found = re.search(r"Collected : (\d+)", run.stderr)
    if run.returncode != 0 or found is None:
        sys.exit(f"callgrind failed on {path}:\n{run.stderr}")
    return int(found.group(1))


def main():
    if len(sys.argv) not in (2, 3) or sys.argv[2:] not in ([], ["--accept"]):
        sys.exit(__doc__)
    program, accept = sys.argv[1], len(sys.argv) == 3
    recorded = json.loads(RECORD.read_text()) if RECORD.exists() else {}
    counted, failed = {}, False
    for path in PATHS:
        # The difference of two runs: what start and end cost does not count.
        more = instructions(program, path, MANY) - instructions(program, path, FEW)
        counted[path] = more / (MANY - FEW)
        was = recorded.get(path)
        off = (counted[path] - was) / was if was else None
        wrong = off is None or abs(off) > TOLERANCE
        failed = failed or wrong
        print(
            f"{path:<50}{counted[path]:>9.1f}  recorded {was if was else '-':>8}"
            f"{'' if off is None else f'  {100 * off:+.1f} %'}{'  DIFFERS' if wrong else ''}"
        )
    if accept:
        RECORD.write_text(json.dumps({p: round(n, 1) for p, n in counted.items()}, indent=1) + "\n")
        print(f"Recorded in {RECORD}.")
    elif failed:
        sys.exit("The cost of a hot path has changed. If that is meant: ./dev bench instructions --accept")


main()
