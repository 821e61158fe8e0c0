#!/usr/bin/env python3
"""usage: determinism.py REFERENCE VPM VPM...

The same input gives the same bytes, whatever vpm was built with: what vpm prints of version 2, the
text trace, and the binary trace. The input is the examples, and change lines at
random. Prints how much was compared.
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

reference, *programs = sys.argv[1:]
examples = Path(__file__).resolve().parents[2] / "examples"


def binaryTrace(folder):
    """The bytes of a trace; but which process wrote it stands in it, too."""
    metadata = (folder / "metadata").read_text()
    same = re.sub(r'uuid = "[^"]*"|process_id = [0-9]+', "", metadata).encode()
    for segment in sorted(folder.glob("segment-*")):
        content = segment.read_bytes()
        same += content[:4] + content[20:]  # between them lies the number of the trace
    return same


def outcome(vpm, folder, arguments):
    """What is printed, and both traces, as bytes by name."""
    text, binary = folder / "text", folder / "binary"
    traces = ["--trace", text, "--trace-file", binary, "--trace-size", "2M"]
    done = subprocess.run([vpm, *arguments, "--time", "1700000000", *traces], capture_output=True)
    if done.returncode not in (0, 1):
        sys.exit(f"{vpm}: {done.stderr.decode()}")
    return {"version 2": done.stdout, "text trace": text.read_bytes(),
            "binary trace": binaryTrace(binary)}


def inputs(folder):
    """Name and arguments of each run."""
    documents = sorted(examples.glob("*.json"))
    for document in documents:
        yield document.name, ["translate", document]
    yield "changes.log", ["replay", "--config", examples / "firewall.json",
                          examples / "changes.log"]
    for seed in range(1, 11):
        lines = folder / f"lines-{seed}"
        with lines.open("wb") as file:
            subprocess.run([reference, "lines", str(seed), "1000"], stdout=file, check=True)
        yield f"change lines of seed {seed}", ["replay", "--no-start", lines]


compared = {}
with tempfile.TemporaryDirectory() as name:
    for run, (what, arguments) in enumerate(inputs(Path(name))):
        outcomes = []
        for number, vpm in enumerate(programs):
            folder = Path(name) / f"{run}-{number}"
            folder.mkdir()
            outcomes.append(outcome(vpm, folder, arguments))
        for of, first in outcomes[0].items():
            compared[of] = compared.get(of, 0) + len(first)
            for vpm, other in zip(programs[1:], outcomes[1:]):
                if other[of] != first:
                    sys.exit(f"{what}: the {of} of {vpm} differs from that of {programs[0]}")
print(f"{len(programs)} programs, {run + 1} inputs, the same bytes: "
      + ", ".join(f"{size} of {of}" for of, size in compared.items()))
