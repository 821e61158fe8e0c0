#!/usr/bin/env python3
"""usage: trace_kill_test.py VPM [KILLS [SEED]]

Kills a replay with SIGKILL at random instants, KILLS times (10), while it writes both traces and
its ring wraps; each kill must leave a trace that babeltrace2 reads without an error and that
vpm trace prints as the end of the text trace: no record torn, lost or out of order, up to the last
one. A record is written before its line of text, so one more of them is allowed, and of its line
as much as the kill has left.
"""

import json
import pathlib
import random
import subprocess
import sys
import tempfile
import time

MATCH = (
    "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']"
    "/rule[priority='20000']/origin[name='web']/match"
)
CONFIG = {
    "vela-policy-monitor:status": {
        "device-policy-list": [
            {
                "device-name": "fw1",
                "net-vrf-name-by-vrf": [{"vrf-name": "red", "net-vrf-name": "net-red"}],
            }
        ]
    }
}


def change(number):
    """A change line whose trace names the number, as a prefix."""
    prefix = f"10.{number >> 16 & 255}.{number >> 8 & 255}.{number & 255}/32"
    path = f"{MATCH}/dst-ip[.='{prefix}']"
    return json.dumps({"update": [{"path": path}]}) + "\n"


def run_until_killed(vpm, folder, changes, delay):
    """Feeds a replay with `changes` lines as fast as it takes them, and kills it at once after."""
    command = [vpm, "replay", "--config", folder / "config.json", "--trace", folder / "text"]
    command += ["--trace-file", folder / "trace", "--trace-size", "32K"]
    with subprocess.Popen(
        command, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, text=True
    ) as replay:
        for number in range(changes):
            replay.stdin.write(change(number))
        replay.stdin.flush()  # what the pipe holds is still to be done
        time.sleep(delay)
        replay.kill()
        replay.stdin.close()


def lines_of(command):
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    if done.returncode != 0 or done.stderr:
        sys.exit(f"{command} failed with exit code {done.returncode}: {done.stderr}")
    return done.stdout.splitlines()


def check(vpm, folder):
    """Returns how many records there are, and how often the ring had wrapped."""
    trace = folder / "trace"
    shown = lines_of([vpm, "trace", trace])
    whole, _, torn = (folder / "text").read_text().rpartition("\n")
    text = whole.splitlines()
    ahead = 0 if shown == text[-len(shown) :] else 1
    if shown[: len(shown) - ahead] != text[-(len(shown) - ahead) :]:
        sys.exit(f"the trace ends with {shown[-3:]}, the text with {text[-3:]}")
    if not (shown[-1].startswith(torn) if ahead else torn == ""):
        sys.exit(f"the trace ends with {shown[-1]}, the text with the torn line {torn}")
    field = lines_of(["babeltrace2", trace])
    if len(field) != len(shown):
        sys.exit(f"babeltrace2 reads {len(field)} records, vpm trace {len(shown)}")
    stats = json.loads(lines_of([vpm, "trace", trace, "--stats", "--json"])[0])
    return len(shown), stats["segments-overwritten"] // stats["segments"], ahead


def main():
    vpm = pathlib.Path(sys.argv[1]).resolve()
    kills = int(sys.argv[2]) if len(sys.argv) > 2 else 10
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else random.randrange(1 << 32)
    print(f"seed {seed}")
    source = random.Random(seed)
    seen = []
    for _ in range(kills):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            (folder / "config.json").write_text(json.dumps(CONFIG))
            run_until_killed(vpm, folder, source.randrange(1000, 4000), source.uniform(0, 0.002))
            seen.append(check(vpm, folder))
    wraps = [wraps for _, wraps, _ in seen]
    print(
        f"{kills} kills, {sum(records for records, _, _ in seen)} records read, "
        f"{min(wraps)} to {max(wraps)} wraps, {sum(ahead for _, _, ahead in seen)} times the last "
        "record had no whole line of text yet"
    )
    if max(wraps) == 0:
        sys.exit("no ring has wrapped: nothing was tested")


main()
