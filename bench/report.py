#!/usr/bin/env python3
"""Runs the benchmark programs, sets every measure beside its floor, and says which goals are met.

usage: report.py BUILD [quick]

BUILD holds bin/bench_* and bin/vpm. Prints one table, and writes BUILD/summary.json and plots of
cost against size, BUILD/*.svg. All figures are medians over repetitions that take turns with each
other; quick takes one process of each, and a smaller document.
"""

import contextlib
import glob
import json
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time

import lttng
from goals import GOALS, PLOTS
from plot import plot
from scale import document, prefix, rule, write

PROGRAMS = ["bench_framework", "bench_mirror", "bench_document"]
HEAPS = {"jemalloc": "libjemalloc.so*", "mimalloc": "libmimalloc.so*"}
UNITS = {"MB/s": "MB/s", "in MiB": "MiB", "bytes per entry": "B"}


def run(program, environment, options):
    """The figures of one run: {(measure, who): [figure, ...]}, in nanoseconds unless the measure
    says otherwise."""
    with tempfile.NamedTemporaryFile("r") as out:
        child = subprocess.run(
            [program, f"--benchmark_out={out.name}", "--benchmark_out_format=json", *options],
            env={**os.environ, **environment},
            stdout=subprocess.DEVNULL,
            stderr=subprocess.PIPE,
            text=True,
        )
        if child.returncode != 0:
            sys.exit(f"{program} failed:\n{child.stderr}")
        rows = json.load(out)["benchmarks"]
    figures = {}
    for row in rows:
        if row["run_type"] != "iteration":
            continue
        if row.get("error_occurred"):
            sys.exit(f"{row['name']}: {row['error_message']}")
        name = re.sub(r"/(iterations:\d+|manual_time|repeats:\d+)", "", row["name"])
        measure, who = re.fullmatch(r"(.*)/([^/]*)", name).groups()
        figure = row["cpu_time"]
        if "value" in row:
            figure = row["value"]
        elif "items_per_second" in row:
            figure = 1e9 / row["items_per_second"]
        figures.setdefault((measure, who), []).append(figure)
    return figures


def heaps():
    """The heaps to compare the slab with, by preloading them."""
    for name, pattern in HEAPS.items():
        found = sorted(glob.glob(f"/usr/lib/*/{pattern}"))
        if found:
            yield name, found[-1]
        else:
            print(f"{name} is not installed: left out")


def lttng_of(build):
    """A session for bench_lttng, if that could be built."""
    if os.path.exists(f"{build}/bin/bench_lttng"):
        return lttng.session()
    print("LTTng-UST is not installed: left out")
    return contextlib.nullcontext()


def translation(vpm, path):
    """Seconds and peak memory in MiB of one `vpm translate`."""
    start = time.perf_counter()
    with subprocess.Popen([vpm, "translate", path, "--quiet"], stdout=subprocess.DEVNULL) as child:
        _, status, usage = os.wait4(child.pid, 0)
        child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        sys.exit(f"vpm translate {path} failed with {child.returncode}")
    return time.perf_counter() - start, usage.ru_maxrss / 1024


def large_document(entries):
    """Rules with 100 prefixes each."""
    rules = [
        rule(10000 + r, [prefix(100 * r + i) for i in range(100)]) for r in range(entries // 100)
    ]
    return document({"fw": {"red": rules}})


def measure_all(build, rounds, repetitions, entries):
    options = [
        f"--benchmark_repetitions={repetitions}",
        "--benchmark_enable_random_interleaving=true",
        # Long enough that one interruption is not taken for the cost of an iteration.
        "--benchmark_min_time=0.05",
    ]
    figures = {}

    def add(some):
        for key, values in some.items():
            figures.setdefault(key, []).extend(values)

    others = list(heaps())
    with tempfile.NamedTemporaryFile("w", suffix=".json") as file, lttng_of(build) as session:
        write(large_document, entries, file)
        environment = {"BENCH_DOCUMENT": file.name}
        for _ in range(rounds):
            for program in PROGRAMS:
                add(run(f"{build}/bin/{program}", environment, options))
            for name, library in others:
                only = [*options, "--benchmark_filter=^object.*/floor"]
                some = run(f"{build}/bin/bench_framework", {"LD_PRELOAD": library}, only)
                add({(measure, name): values for (measure, _), values in some.items()})
            if session is not None:
                add(run(f"{build}/bin/bench_lttng", session, options))
            seconds, peak = translation(f"{build}/bin/vpm", file.name)
            add({("vpm translate, seconds", "ours"): [seconds]})
            add({("vpm translate, peak memory in MiB", "ours"): [peak]})
    return {key: statistics.median(values) for key, values in figures.items()}


def unit_of(measure):
    return next((unit for text, unit in UNITS.items() if text in measure), "ns")


def summary(figures):
    """One row per goal that could be measured. `of` says what goal and moonshot limit: the ratio,
    or our own figure."""
    rows = []
    for goal in GOALS:
        ours = figures.get((goal["measure"], goal.get("who", "ours")))
        floor = figures.get((goal.get("against", goal["measure"]), goal.get("floor", "floor")))
        if ours is None or (floor is None and goal["of"] == "ratio"):
            print(f"{goal['name']}: left out, {goal.get('floor', 'floor')} was not measured")
            continue
        ratio = ours / floor if floor else None
        limited = ratio if goal["of"] == "ratio" else ours
        least = goal.get("least", False)
        met = limited >= goal["goal"] if least else limited <= goal["goal"]
        rows.append(
            {
                "name": goal["name"],
                "ours": round(ours, 3),
                "floor": None if floor is None else round(floor, 3),
                "unit": unit_of(goal["measure"]),
                "ratio": None if ratio is None else round(ratio, 3),
                "of": goal["of"],
                "goal": goal["goal"],
                "moonshot": goal.get("moonshot"),
                "met": met,
            }
        )
    return rows


def three(number):
    """With three digits that matter."""
    if number is None:
        return "-"
    return f"{number:.0f}" if number >= 100 else f"{number:.3g}"


def limit(row, which):
    if row[which] is None:
        return "-"
    sign = "x" if row["of"] == "ratio" else " " + row["unit"]
    return f"{row[which]:g}{sign}"


def print_table(rows):
    width = max(len(row["name"]) for row in rows)
    print(
        f"\n{'measure':<{width}} {'ours':>8} {'floor':>8} unit {'ratio':>7} "
        f"{'goal':>9} {'met':<4}{'moonshot':>9}"
    )
    for row in rows:
        print(
            f"{row['name']:<{width}} {three(row['ours']):>8} {three(row['floor']):>8} "
            f"{row['unit']:<4} {three(row['ratio']):>7} {limit(row, 'goal'):>9} "
            f"{'yes' if row['met'] else 'NO':<4}{limit(row, 'moonshot'):>9}"
        )
    print(f"\n{sum(row['met'] for row in rows)} of {len(rows)} goals are met.")


def print_peers(figures):
    """Everybody's figures, for those measures that have somebody beside us and the floor."""
    measures = {}
    for (measure, who), figure in figures.items():
        measures.setdefault(measure, {})[who] = figure
    print("\nEverybody:")
    for measure, everybody in measures.items():
        if len(everybody) > 2 or (len(everybody) == 2 and "floor" not in everybody):
            line = ", ".join(f"{who} {three(figure)}" for who, figure in everybody.items())
            print(f"  {measure} ({unit_of(measure)}): {line}")


def main():
    if len(sys.argv) not in (2, 3) or sys.argv[2:] not in ([], ["quick"]):
        sys.exit(__doc__)
    build, quick = sys.argv[1], len(sys.argv) == 3
    rounds, repetitions, entries = (1, 3, 100_000) if quick else (3, 3, 1_000_000)
    figures = measure_all(build, rounds, repetitions, entries)
    rows = summary(figures)
    print_peers(figures)
    print_table(rows)
    with open(f"{build}/summary.json", "w") as file:
        json.dump(rows, file, indent=1)
        file.write("\n")
    for name, title, pattern, axis in PLOTS:
        plot(f"{build}/{name}.svg", title, axis, series(figures, pattern))


def series(figures, pattern):
    """{who: [(size, figure), ...]} of the measures in which `pattern` finds a size."""
    lines = {}
    for (measure, who), figure in figures.items():
        found = re.fullmatch(pattern, measure)
        if found:
            lines.setdefault(who, []).append((int(found.group(1)), figure))
    return {who: sorted(points) for who, points in lines.items()}


if __name__ == "__main__":
    main()
