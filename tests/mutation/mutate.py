#!/usr/bin/python3
"""Changes the state machines in every small way that is a fault, and says which changes no test notices.

usage: mutate.py make BUILD
       mutate.py run BUILD [FOLDER | FILE[:LINE]]...

make  writes into BUILD a copy of the project in which the sources of FOLDERS hold all their mutants
      at once (mutants.py), and which is then built like the project itself
run   runs the tests of that build against each mutant, prints what survived, and fails when less
      than 95 % were noticed, or when survivors.txt explains one that was

Each mutant has the tests that come by its place, as seen in one run without mutants: first the dozen
that come by the fewest places, then all others, until one fails, is killed by a signal, or takes ten
times the time of the processor that it takes without a mutant.
A mutant whose place no test comes by has survived.
"""

import os
import pickle
import signal
import subprocess
import sys
import tempfile
import threading
import time
from collections import Counter, defaultdict
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass

HERE = os.path.dirname(os.path.abspath(__file__))
FOLDERS = ("src/common/", "src/policy/", "src/servicedevice/")
MODEL = "reference"
MODEL_RUNS = [["worlds", "2"], ["random", "1-40", "1000", "10"]]
PROGRAMS = ["test_common", "test_policy", "test_servicedevice", "test_contract", MODEL]
LEAST = 95


def write(path, text):
    """Leaves a file alone that has this text already, so that it is not compiled again."""
    if os.path.exists(path):
        with open(path, encoding="utf-8") as file:
            if file.read() == text:
                return
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


def link(path, target):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    if not os.path.lexists(path):
        os.symlink(os.path.abspath(target), path)


def make(build):
    import mutants  # only this needs libclang

    for name in os.listdir("."):
        if name not in ("src", "build", ".git"):
            link(f"{build}/{name}", name)
    link(f"{build}/src/common/Mutation.h", f"{HERE}/Mutation.h")
    for name in os.listdir("src"):
        if f"src/{name}/" not in FOLDERS:
            link(f"{build}/src/{name}", f"src/{name}")
    sources = mutants.find("build/debug/compile_commands.json", FOLDERS)
    everything = {}
    names = sorted(folder + name for folder in FOLDERS for name in os.listdir(folder))
    # Each file has a thousand numbers of its own: one that is changed leaves the others alone.
    for first, name in enumerate(names, 1):
        source = sources.get(name) or mutants.Source(name)
        text = source.mutated(1000 * first)
        write(f"{build}/{name}", f'#include "common/Mutation.h"\n#line 1\n{text}')
        for number, mutant in enumerate(source.mutants, 1000 * first):
            everything[number] = mutant.file, mutant.line, mutant.code, mutant.change
    with open(f"{build}/mutants", "wb") as file:
        pickle.dump(everything, file)
    print(f"{len(everything)} mutants in {build}")


@dataclass
class Trial:
    """One test, or one run of the reference model; without mutants it came by these places."""

    program: str
    words: list  # of its command line
    seconds: float = 0
    reached: frozenset = frozenset()


class Runner:
    def __init__(self, build, mutants):
        self.programs = os.path.abspath(f"{build}/build/debug/bin")
        self.notes = f"{build}/trials"
        self.mutants = mutants
        self.trials = []

    def run(self, program, words, environment, seconds):
        """How it ended, "", "failed" or "late", and the processor's time that it took."""
        limits = ["prlimit", f"--cpu={seconds}", "--core=0", f"--as={4 << 30}"]
        with tempfile.TemporaryDirectory() as folder:
            process = subprocess.Popen(
                [*limits, f"{self.programs}/{program}", *words], cwd=folder,
                env={**os.environ, "TMPDIR": folder, **environment}, start_new_session=True,
                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            # For what stands still. What runs on is ended by the limit, however busy the machine is.
            guard = threading.Timer(100 * seconds, os.killpg, (process.pid, signal.SIGKILL))
            guard.start()
            _, status, usage = os.wait4(process.pid, 0)
            guard.cancel()
            process.returncode = status
        late = os.WIFSIGNALED(status) and os.WTERMSIG(status) in (signal.SIGXCPU, signal.SIGKILL)
        how = "" if status == 0 else "late" if late else "failed"
        return how, usage.ru_utime + usage.ru_stime

    def run_all(self, trials, number):
        """How the trials end with this mutant, each program once."""
        by_program = defaultdict(list)
        for trial in trials:
            by_program[trial.program if trial.program != MODEL else str(trial.words)].append(trial)
        for group in sorted(by_program.values(), key=lambda group: sum(t.seconds for t in group)):
            words = group[0].words
            if group[0].program != MODEL:
                names = sorted(group, key=lambda trial: trial.seconds)
                words = ["--gtest_fail_fast", "--gtest_brief=1",
                         "--gtest_filter=" + ":".join(trial.words[0] for trial in names)]
            seconds = int(10 * sum(trial.seconds for trial in group)) + 2
            how, _ = self.run(group[0].program, words, {"MUTANT": str(number)}, seconds)
            if how:
                return how
        return ""

    def fate(self, number):
        """How the mutant was noticed, or ""."""
        trials = [trial for trial in self.trials if number in trial.reached]
        # Who comes by the fewest places most likely came for this one.
        trials.sort(key=lambda trial: len(trial.reached) * (1 + 100 * trial.seconds))
        return self.run_all(trials[:12], number) or self.run_all(trials[12:], number)

    def look(self, workers):
        """Makes every trial without a mutant, unless that was done with the very same program."""
        known = {}
        if os.path.exists(self.notes):
            with open(self.notes, "rb") as file:
                known = pickle.load(file)
        for program in PROGRAMS:
            built = os.stat(f"{self.programs}/{program}").st_mtime_ns
            if program not in known or known[program][0] != built:
                known[program] = built, list(workers.map(self.tried, trials_of(
                    f"{self.programs}/{program}", program)))
            trials = known[program][1]
            self.trials += trials
            reached = frozenset().union(*(trial.reached for trial in trials))
            print(f"{program}: {len(trials)} tests, {sum(t.seconds for t in trials):.1f} s, "
                  f"come by {len(reached)} of {len(self.mutants)} mutants", flush=True)
        with open(self.notes, "wb") as file:
            pickle.dump(known, file)

    def tried(self, trial):
        words = trial.words
        if trial.program != MODEL:
            words = ["--gtest_filter=" + words[0]]
        with tempfile.NamedTemporaryFile() as notes:
            notes.truncate(max(self.mutants) + 1)
            how, seconds = self.run(trial.program, words, {"MUTANTS_REACHED": notes.name}, 600)
            if how:
                sys.exit(f"{trial.program} {' '.join(words)} fails without any mutant")
            notes.seek(0)
            reached = frozenset(number for number, byte in enumerate(notes.read()) if byte)
        return Trial(trial.program, trial.words, seconds, reached)


def trials_of(path, program):
    if program == MODEL:
        return [Trial(program, words) for words in MODEL_RUNS]
    listed = subprocess.run([path, "--gtest_list_tests"], check=True, stdout=subprocess.PIPE,
                            text=True).stdout
    trials, suite = [], ""
    for line in listed.splitlines():
        name = line.split("#")[0].strip()
        if not line.startswith(" "):
            suite = name
        else:
            trials.append(Trial(program, [suite + name]))
    return trials


def explained():
    """The mutants of survivors.txt, as often as they stand there: FILE @ CODE @ CHANGE."""
    with open(f"{HERE}/survivors.txt", encoding="utf-8") as file:
        lines = [line.strip() for line in file if line.startswith(FOLDERS)]
    return Counter(tuple(part.strip() for part in line.split(" @ ")) for line in lines)


def chosen(mutants, names):
    """The numbers of the mutants in these files, folders or lines; of all without any."""
    for number, (file, line, _, _) in mutants.items():
        if not names or any(name in (file, f"{file}:{line}") or
                            file.startswith(name.rstrip("/") + "/") for name in names):
            yield number


def report(mutants, fates, known, complete):
    """Prints what came of the mutants; whether it is good enough."""
    rows = defaultdict(Counter)
    survivors = []
    for number, fate in sorted(fates.items()):
        file, line, code, change = mutants[number]
        for name in (file, "all"):
            rows[name]["mutants"] += 1
            rows[name][fate or "survived"] += 1
        if not fate:
            survivors.append((f"{file}:{line}", (file, code, change)))
    print(f"\n{'file':<58} {'mutants':>7} {'failed':>7} {'late':>5} {'survived':>8} {'noticed':>8}")
    for name, row in sorted(rows.items(), key=lambda item: (item[0] == "all", item[0])):
        share = 100 * (1 - row["survived"] / row["mutants"])
        print(f"{name:<58} {row['mutants']:>7} {row['failed']:>7} {row['late']:>5} "
              f"{row['survived']:>8} {share:>7.2f}%")
    left = known.copy()
    unexplained = []
    for place, key in survivors:
        if left[key] > 0:
            left[key] -= 1
        else:
            unexplained.append((place, key))
    print(f"\n{len(survivors) - len(unexplained)} of the survivors are explained in survivors.txt.")
    for place, (_, code, change) in unexplained:
        print(f"{place}: {change}\n    in: {code}")
    stale = [" @ ".join(key) for key, count in left.items() if count > 0 and complete]
    for line in stale:
        print(f"explained, but no survivor: {line}")
    return share >= LEAST and not stale


def run(build, names):
    with open(f"{build}/mutants", "rb") as file:
        mutants = pickle.load(file)
    numbers = list(chosen(mutants, names))
    if not numbers:
        sys.exit(f"no mutants in {' '.join(names)}")
    runner = Runner(build, mutants)
    with ThreadPoolExecutor(os.cpu_count()) as workers:
        runner.look(workers)
        start = time.monotonic()
        fates = {}
        for number, fate in zip(numbers, workers.map(runner.fate, numbers)):
            fates[number] = fate
            if not fate:
                file, line, _, change = mutants[number]
                print(f"after {len(fates)}: survived {file}:{line}: {change}", flush=True)
    good = report(mutants, fates, explained(), not names)
    print(f"{len(fates)} mutants in {time.monotonic() - start:.0f} s")
    return 0 if good else 1


if __name__ == "__main__":
    if len(sys.argv) == 3 and sys.argv[1] == "make":
        make(sys.argv[2])
    elif len(sys.argv) > 2 and sys.argv[1] == "run":
        sys.exit(run(sys.argv[2], sys.argv[3:]))
    else:
        sys.exit(__doc__)
