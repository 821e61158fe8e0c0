#!/usr/bin/env python3
"""usage: documents_test.py SOURCE_DIR VPM DOCUMENT

Holds a document against the project.

- In a console block a line "$ COMMAND" is run, and the lines below it are what it prints. A line
  "..." stands for any number of lines, and "..." in a line for any text. A command that ends in a
  backslash goes on in the next line. One that ends with & goes on to run, and is waited for until
  it has printed what stands below it, and for its end after a command "... stop". Commands must end with exit code 0; where another is meant,
  "; echo $?" shows it. A block "sh" is refused: nobody would see it go out of date.
- Commands run one after the other in a folder of their own that has examples/ and yang/, with the
  program in build/release/bin and in the PATH; the folder is also their home, and the control
  socket is there, where nobody else's is.
- A command of ./dev takes minutes and would run this test again, so that for these it is only
  checked that ./dev has them.
- Every line of a C++ block stands in one of the programs in examples/, which are tests themselves.
- What a link names is there.
"""
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

source, program, document = Path(sys.argv[1]), Path(sys.argv[2]).resolve(), sys.argv[3]
root = (source / document).parent
text = (source / document).read_text()
failures = 0


def fail(what):
    global failures
    failures += 1
    print("FAILED:", what)


def blocks(language):
    return re.findall(rf"^```{language}\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


def matches(printed, expected):
    pattern = ""
    for line in expected.strip("\n").splitlines():
        pattern += r"(.*\n)*" if line == "..." else ".*".join(map(re.escape, line.split("..."))) + r"\n"
    return re.fullmatch(pattern, printed.strip("\n") + "\n" if printed.strip("\n") else "")


def commands():
    """Pairs of a command and what it is expected to print."""
    for block in blocks("console"):
        if not block.startswith("$ "):
            fail(f"a console block begins with {block.splitlines()[0]!r}, not with a command")
            continue
        for one in re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]:
            lines = one.split("\n")
            end = next(i for i, line in enumerate(lines) if not line.endswith("\\"))
            yield "\n".join(lines[: end + 1]), "\n".join(lines[end + 1 :])


def run(command, expected, folder, environment, background):
    print(f"$ {command}")
    if command.startswith("./dev"):
        name = command.split()[1]
        usage = subprocess.run(["./dev", "help"], cwd=source, capture_output=True, text=True)
        if not re.search(rf"^  {name}\b", usage.stdout, re.MULTILINE):
            fail(f"./dev has no command {name}")
        return
    wants = dict(cwd=folder, env=environment, stdin=subprocess.DEVNULL, stderr=subprocess.STDOUT)
    if command.endswith("&"):
        output = folder / f"background-{len(background)}"
        with output.open("w") as file:
            shell = ["bash", "-c", "exec " + command.rstrip("& ")]
            background.append(subprocess.Popen(shell, stdout=file, **wants))
        for _ in range(300):
            if matches(output.read_text(), expected):
                return
            time.sleep(0.1)
        fail(f"it printed:\n{output.read_text()}\ninstead of:\n{expected}")
        return
    shell = ["bash", "-c", "set -o pipefail; " + command]
    done = subprocess.run(shell, stdout=subprocess.PIPE, text=True, timeout=120, **wants)
    if done.returncode != 0:
        fail(f"exit code {done.returncode}")
    if not matches(done.stdout, expected):
        fail(f"it printed:\n{done.stdout}\ninstead of:\n{expected}")
    if command.endswith(" stop"):
        for process in background:
            process.wait(timeout=20)


def runAll(folder):
    for name in ("examples", "yang"):
        shutil.copytree(source / name, folder / name)
    bin = folder / "build/release/bin"
    bin.mkdir(parents=True)
    (bin / "vpm").symlink_to(program)
    environment = dict(os.environ, PATH=f"{bin}:{os.environ['PATH']}", HOME=str(folder),
                       XDG_RUNTIME_DIR=str(folder))
    environment.pop("VPM_SOCKET", None)
    background = []
    try:
        for command, expected in commands():
            run(command, expected, folder, environment, background)
    finally:
        for process in background:
            process.send_signal(signal.SIGKILL)
            process.wait()


with tempfile.TemporaryDirectory() as folder:
    runAll(Path(folder))
if blocks("sh"):
    fail("a block of commands that is not run; make it a console block")

examples = "\n".join(file.read_text() for file in source.glob("examples/**/*.cpp"))
for line in "".join(blocks("cpp")).splitlines():
    if line.strip() not in examples:
        fail(f"in none of the programs in examples/: {line.strip()}")

for target in re.findall(r"\]\(([^)#:\s]+)(?:#[^)]*)?\)", text):
    if not (root / target).exists():
        fail(f"a link to {target}, which is not there")

sys.exit(failures > 0)
