#!/usr/bin/env python3
"""How many change lines a second an agent applies, and whether that depends on the size of the tree.

  bench/agent_rate.py build/release/bin/vpm [LINES]

For trees of 1,000 and of 1,000,000 prefixes: starts an agent, sends LINES (100,000) changes of one
leaf each through one connection without waiting for answers, and prints lines a second, the time of
a line and of it the time that the agent itself was at work; once more with --state, where each answer
means that the line is on disk.
"""
import json
import os
import random
import socket
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

PREFIXES = 100  # of each rule


def document(rules):
    origins = [
        {"name": "o", "match": {"dst-ip": [f"{10 + r // 10000}.{r // 256 % 256}.{r % 256}.{p}/32"
                                           for p in range(PREFIXES)]}}
        for r in range(rules)
    ]
    return {
        "vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [{
            "vrf-name": "red",
            "rule": [{"priority": 10001 + r, "origin": [o]} for r, o in enumerate(origins)]}]}]},
        "vela-policy-monitor:status": {"device-policy-list": [{
            "device-name": "fw1",
            "net-vrf-name-by-vrf": [{"vrf-name": "red", "net-vrf-name": "net-red"}]}]},
    }


def connect(path):
    while True:
        try:
            client = socket.socket(socket.AF_UNIX)
            client.connect(path)
            return client
        except OSError:
            client.close()
            time.sleep(0.01)


def work_time(process):
    """Seconds that it has spent in the program and in the system."""
    fields = Path(f"/proc/{process}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def lines(count, rules):
    path = ("/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']"
            "/rule[priority='%d']/origin[name='o']/tags")
    draw = random.Random(1)
    return "".join(
        '{"update":[{"path":"%s","value":"t%d"}]}\n' % (path % (10001 + draw.randrange(rules)), i)
        for i in range(count)).encode()


def rate(vpm, folder, rules, count, options):
    config, path = folder / "c.json", str(folder / "s")
    config.write_text(json.dumps(document(rules)))
    agent = subprocess.Popen([vpm, "agent", "--config", config, "--listen", path, *options],
                             stderr=subprocess.DEVNULL)
    try:
        client = connect(path)
        answers = client.makefile("rb")
        client.sendall(b"{}\n")
        answers.readline()
        text = lines(count, rules)
        worked = work_time(agent.pid)
        start = time.monotonic()
        threading.Thread(target=client.sendall, args=(text,)).start()
        for i in range(count):
            answer = answers.readline()
            if b"error" in answer:
                sys.exit(answer.decode())
        seconds = time.monotonic() - start
        worked = work_time(agent.pid) - worked
        client.sendall(b'{"request":"stats"}\n')
        resident = json.loads(answers.readline())["stats"]["resident"]
        return seconds, worked, resident
    finally:
        agent.terminate()
        agent.wait()


def main():
    vpm = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 100_000
    for name, options in (("in memory", []), ("on disk", ["--state"])):
        for rules in (10, 10_000):
            with tempfile.TemporaryDirectory() as folder:
                state = [str(Path(folder) / "state")] if options else []
                seconds, worked, resident = rate(vpm, Path(folder), rules, count, options + state)
                print(f"{name:9}  {rules * PREFIXES:9,} prefixes  {count / seconds:9,.0f} lines/s  "
                      f"{1e6 * seconds / count:6.2f} us each, {1e6 * worked / count:6.2f} us at work  "
                      f"{resident >> 20:5} MiB", flush=True)


if __name__ == "__main__":
    main()
