#!/usr/bin/env python3
"""Shows that the cost of a translation is the sum of its entries.

usage: scale.py VPM [LARGEST]

Makes documents of three shapes (one match with n prefixes; n rules in policies of at most 20,001;
n/1000 devices) at three sizes, each ten times the one before, translates each with VPM, and prints
seconds and peak memory. The last column is the time per entry relative to the smallest size of the
shape: about 1 or below when the cost is linear.
"""

import json
import os
import subprocess
import sys
import tempfile
import time

RULES_PER_POLICY = 20001


def record(device, vrfs):
    return {
        "device-name": device,
        "net-vrf-name-by-vrf": [
            {"vrf-name": vrf, "net-vrf-name": f"net-{device}-{vrf}"} for vrf in vrfs
        ],
    }


def prefix(number):
    return f"{10 + (number >> 24)}.{number >> 16 & 255}.{number >> 8 & 255}.{number & 255}/32"


def rule(priority, prefixes):
    match = {"dst-ip": prefixes}
    return {"priority": priority, "origin": [{"name": "o", "action": "drop", "match": match}]}


def document(devices):
    """devices: name -> {vrf: [rule]}"""
    return {
        "vela-l3:policy-source": {
            "policy-set": [
                {
                    "device-name": device,
                    "policy": [{"vrf-name": vrf, "rule": rules} for vrf, rules in vrfs.items()],
                }
                for device, vrfs in devices.items()
            ]
        },
        "vela-policy-monitor:status": {
            "device-policy-list": [record(device, vrfs) for device, vrfs in devices.items()]
        },
    }


def one_set(n):
    return document({"fw": {"red": [rule(20000, [prefix(i) for i in range(n)])]}})


def many_rules(n):
    vrfs = {}
    for i in range(n):
        # Ascending, which is against the order in which rules are kept.
        policy, at = divmod(i, RULES_PER_POLICY)
        vrfs.setdefault(f"vrf{policy}", []).append(rule(10000 + at, [prefix(i)]))
    return document({"fw": vrfs})


def many_devices(n):
    count = max(1, n // 1000)
    share = n // count
    return document(
        {
            f"fw{d}": {"red": [rule(20000, [prefix(d * share + i) for i in range(share)])]}
            for d in range(count)
        }
    )


SHAPES = [
    ("one set of n prefixes", one_set),
    ("n rules, 20,001 a policy", many_rules),
    ("n/1000 devices", many_devices),
]


def write(make, n, file):
    """In a process of its own: a child starts with the peak memory of its parent, so the one that
    measures has to stay small."""
    child = os.fork()
    if child == 0:
        json.dump(make(n), file)
        file.flush()
        os._exit(0)
    _, status = os.waitpid(child, 0)
    if status != 0:
        sys.exit("the document could not be written")


def measure(vpm, path):
    """Seconds (best of three) and peak memory in MiB."""
    best = None
    for _ in range(3):
        with tempfile.TemporaryFile() as out:
            start = time.perf_counter()
            with subprocess.Popen([vpm, "translate", path, "--quiet"], stdout=out) as run:
                _, status, usage = os.wait4(run.pid, 0)
                run.returncode = os.waitstatus_to_exitcode(status)
            seconds = time.perf_counter() - start
            if run.returncode != 0:
                sys.exit(f"{vpm} translate {path} failed with {run.returncode}")
        best = seconds if best is None else min(best, seconds)
    return best, usage.ru_maxrss / 1024


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    vpm = sys.argv[1]
    largest = int(sys.argv[2]) if len(sys.argv) == 3 else 1_000_000
    print(f"{'shape':<26}{'n':>10}{'document':>12}{'seconds':>10}{'peak':>10}{'per entry':>11}")
    for name, make in SHAPES:
        first = None
        for n in (largest // 100, largest // 10, largest):
            with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
                write(make, n, file)
                seconds, peak = measure(vpm, file.name)
                size = os.path.getsize(file.name)
            per_entry = seconds / n
            first = first or per_entry
            print(
                f"{name:<26}{n:>10,}{size / 1e6:>9.1f} MB{seconds:>10.3f}{peak:>6.0f} MiB"
                f"{per_entry / first:>10.2f}x"
            )


if __name__ == "__main__":
    main()
