#!/usr/bin/env python3
"""usage: replay_test.py REFERENCE VPM

What the reference model does as operations, vpm replays as change lines: no line is refused, and
the trace is the model's, line by line.
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

reference, vpm = sys.argv[1:]
line_form = re.compile(r"^[0-9.]+ VelaPolicyMonitor ([0-9]) \S+ \S+: (.*)$")

with tempfile.TemporaryDirectory() as name:
    folder = Path(name)
    for seed in range(1, 11):
        lines = subprocess.run([reference, "lines", str(seed), "1000", folder / "expected"],
                               check=True, capture_output=True).stdout
        replay = [vpm, "replay", "--no-start", "--quiet", "--trace", folder / "trace"]
        subprocess.run(replay, input=lines, stdout=subprocess.DEVNULL, check=True)
        expected = (folder / "expected").read_text().splitlines()
        trace = (folder / "trace").read_text().splitlines()
        got = [" ".join(line_form.match(line).groups()) for line in trace]
        if len(expected) < 1000 or got != expected:
            at = next((at for at, pair in enumerate(zip(got, expected)) if pair[0] != pair[1]),
                      min(len(got), len(expected)))
            sys.exit(f"seed {seed}, line {at + 1} of {len(expected)} of the trace\n"
                     f"  expected {expected[at:at + 1]}\n  got      {got[at:at + 1]}")
