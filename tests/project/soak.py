#!/usr/bin/env python3
"""usage: soak.py VPM SECONDS [SEED]

Puts a real agent with a state folder under load, kills it over and over, and looks whether it is
good for its word.

- Eight clients send random change lines as fast as they are answered, each for a device of its own,
  and keep a model of what was acknowledged. Others connect, do not read, or vanish in mid-line.
- For two thirds of the time the agent is killed (SIGKILL) at random moments and started again. Then
  each client compares version 1 with its model: nothing that was acknowledged may be missing. Of
  the lines that were on their way, the first few may be in. An audit must find nothing foreign and
  no defect.
- For the last third it lives. Every client must be served, and in a run of five minutes or more,
  which gives it time to settle, its memory must not grow by more than 1 percent from the second to
  the last quarter. What counts is the least of a quarter: what those who do not read make the agent
  hold comes and goes, and a leak stays.
- At last it is stopped in good order, and started once more.

Exit code 0: all of that was so.
"""

import json
import os
import random
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

CLIENTS = 8
VRFS = 3
RULES = 12
PREFIXES = 6
MOST_IN_A_BATCH = 40
PATIENCE = 60  # seconds; an agent that does not answer by then hangs


def fail(text):
    raise SystemExit(f"FAILED: {text}")


class Connection:
    """One connection to the agent; lines out, answers in."""

    def __init__(self, path):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(PATIENCE)
        self.socket.connect(path)
        self.answers = self.socket.makefile("rb")

    def send(self, lines):
        self.socket.sendall(b"".join(json.dumps(line).encode() + b"\n" for line in lines))

    def receive(self):
        line = self.answers.readline()
        if not line.endswith(b"\n"):
            raise ConnectionError("the agent is gone")
        return json.loads(line)

    def ask(self, **request):
        self.send([request])
        answer = self.receive()
        if "error" in answer:
            fail(f"{request}: {answer['error']}")
        return answer

    def close(self):
        self.answers.close()
        self.socket.close()


class Model:
    """What a client knows of its device: origins with their tags and prefixes, and mappings."""

    def __init__(self, device):
        self.device = device
        self.origins = {}  # (vrf, priority) -> [tags, set of prefixes]
        self.names = {}  # vrf -> network VRF name
        self.subnets = {}  # vrf -> set of prefixes

    def copy(self):
        other = Model(self.device)
        other.origins = {key: [value[0], set(value[1])] for key, value in self.origins.items()}
        other.names = dict(self.names)
        other.subnets = {vrf: set(subnets) for vrf, subnets in self.subnets.items()}
        return other

    def state(self):
        return (
            {key: (tags, frozenset(prefixes)) for key, (tags, prefixes) in self.origins.items()},
            self.names,
            {vrf: frozenset(subnets) for vrf, subnets in self.subnets.items()},
        )

    def rule(self, vrf, priority):
        return (
            f"/vela-l3:policy-source/policy-set[device-name='{self.device}']"
            f"/policy[vrf-name='{vrf}']/rule[priority='{priority}']"
        )

    def record(self):
        return f"/vela-policy-monitor:status/device-policy-list[device-name='{self.device}']"

    def interface(self, vrf):
        return (
            f"/vela-l3:service-device-source/service-device[device-name='{self.device}']"
            f"/vrf[vrf-name='{vrf}']/l3-intf[address='192.0.2.1']"
        )

    def change(self, dice):
        """A random change line, whether it will be accepted, and what it makes of the model."""
        vrf = f"vrf{dice.randrange(VRFS)}"
        priority = 10000 + dice.randrange(RULES)
        prefix = f"10.{dice.randrange(PREFIXES)}.0.0/16"
        rule, key = self.rule(vrf, priority), (vrf, priority)
        origin = rule + "/origin[name='o']"
        tags = str(dice.randrange(1000))
        what = dice.randrange(10)
        if what <= 2:
            value = {"tags": tags, "match": {"dst-ip": [prefix]}}
            kept = self.origins.get(key, ["", set()])[1] | {prefix}
            line = {"update": [{"path": origin, "value": value}]}
            return line, True, lambda: self.origins.update({key: [tags, kept]})
        if what == 3:
            value = {"origin": [{"name": "o", "tags": tags, "match": {"dst-ip": [prefix]}}]}
            line = {"replace": [{"path": rule, "value": value}]}
            return line, True, lambda: self.origins.update({key: [tags, {prefix}]})
        if what <= 5:
            line = {"delete": [rule], "show": ["stats"] if tags == "7" else []}
            return line, key in self.origins, lambda: self.origins.pop(key)
        if what == 6:
            line = {"delete": [f"{origin}/match/dst-ip[.='{prefix}']"], "signal": tags < "5"}
            good = prefix in self.origins.get(key, ["", set()])[1]
            return line, good, lambda: self.origins[key][1].remove(prefix)
        if what == 7:
            # No two VRFs ever share a name, which would be a difference of its own.
            name = f"net-{self.device}-{vrf}-{dice.randrange(2)}"
            path = self.record() + f"/net-vrf-name-by-vrf[vrf-name='{vrf}']"
            line = {"update": [{"path": path, "value": {"net-vrf-name": name}}]}
            return line, True, lambda: self.names.update({vrf: name})
        if what == 8:
            line = {"update": [{"path": f"{self.interface(vrf)}/reachable-subnet[.='{prefix}']"}]}
            return line, True, lambda: self.subnets.setdefault(vrf, set()).add(prefix)
        if dice.randrange(2):
            line = {"replace": [{"path": self.interface(vrf) + "/reachable-subnet", "value": []}]}
            return line, True, lambda: self.subnets.update({vrf: set()})
        return {"update": [{"path": "/no/such/path", "value": 1}]}, False, None

    @staticmethod
    def read(device, connection):
        """The model that the agent's answers make."""
        model = Model(device)

        def mine(container, name):
            path = f"/{container}/{name}[device-name='{device}']"
            data = connection.ask(request="show", path=path)["data"]
            return data.get(container, {}).get(name, [{}])[0]

        for policy in mine("vela-l3:policy-source", "policy-set").get("policy", []):
            for rule in policy.get("rule", []):
                (origin,) = rule["origin"]
                prefixes = origin.get("match", {}).get("dst-ip", [])
                key = (policy["vrf-name"], rule["priority"])
                model.origins[key] = [origin["tags"], set(prefixes)]
        record = mine("vela-policy-monitor:status", "device-policy-list")
        for pair in record.get("net-vrf-name-by-vrf", []):
            model.names[pair["vrf-name"]] = pair["net-vrf-name"]
        for vrf in mine("vela-l3:service-device-source", "service-device").get("vrf", []):
            (interface,) = vrf["l3-intf"]
            model.subnets[vrf["vrf-name"]] = set(interface.get("reachable-subnet", []))
        return model


class Client(threading.Thread):
    """Sends batches and keeps the model, for as long as the agent lives."""

    def __init__(self, path, model, dice):
        super().__init__()
        self.path, self.model, self.dice = path, model, dice
        self.acknowledged = 0
        self.slowest = 0.0
        self.possible = []  # what the agent may have after it was killed: in order
        self.stopping = False
        self.failure = None

    def run(self):
        try:
            self.work()
        except (ConnectionError, TimeoutError) as error:
            if isinstance(error, TimeoutError):
                self.failure = f"{self.model.device}: no answer for {PATIENCE} s"
        except BaseException as error:  # whatever it is, the run has failed
            self.failure = f"{self.model.device}: {error!r}"

    def work(self):
        self.possible = [self.model]
        connection = Connection(self.path)
        number = 0
        while not self.stopping:
            lines, expected = [], []
            ahead = self.model.copy()
            for _ in range(self.dice.randint(1, MOST_IN_A_BATCH)):
                line, good, apply = ahead.change(self.dice)
                if good:
                    apply()
                lines.append(line)
                expected.append((good, ahead.copy()))
            # From here on the agent may have any of these, up to the last.
            self.possible = [self.model] + [after for _, after in expected]
            begin = time.monotonic()
            connection.send(lines)
            for line, (good, after) in zip(lines, expected):
                answer = connection.receive()
                number += 1
                if answer["line"] != number or ("error" in answer) == good:
                    fail(f"line {number}, {line}: {answer}")
                self.model = after
                self.possible.pop(0)
                self.acknowledged += 1
            self.slowest = max(self.slowest, time.monotonic() - begin)
        connection.close()

    def check(self, connection):
        """The agent has what was acknowledged, and the model goes on from what it has."""
        found = Model.read(self.model.device, connection)
        if found.state() not in [model.state() for model in self.possible]:
            fail(
                f"{self.model.device}: after a restart the agent has\n{found.state()}\nbut what was "
                f"acknowledged is\n{self.possible[0].state()}\n({len(self.possible) - 1} lines were "
                "on their way)"
            )
        self.model = found


class Nuisance(threading.Thread):
    """Clients as they should not be."""

    def __init__(self, path, dice):
        super().__init__()
        self.path, self.dice = path, dice
        self.stopping = False

    def run(self):
        while not self.stopping:
            try:
                self.annoy()
            except (OSError, ValueError):
                time.sleep(0.05)

    def annoy(self):
        connection = Connection(self.path)
        connection.socket.settimeout(1)
        what = self.dice.randrange(4)
        if what == 0:  # reads nothing of all that it asks for
            connection.send([{"request": "show"}] * 9)
            time.sleep(self.dice.uniform(0, 0.5))
        elif what == 1:  # watches and does not look
            connection.send([{"request": "watch"}])
            time.sleep(self.dice.uniform(0, 1))
        elif what == 2:  # vanishes in the middle of a line
            connection.socket.sendall(b'{"update":[{"path":"/vela-l3:policy-source/policy-set[dev')
        else:  # sends one byte at a time
            for byte in b'{"request":"stats"}\n':
                connection.socket.sendall(bytes([byte]))
                time.sleep(0.01)
            connection.receive()
        connection.close()


class Agent:
    """The agent under test."""

    def __init__(self, vpm, folder):
        self.path = os.path.join(folder, "socket")
        self.said = os.path.join(folder, "said")
        self.arguments = [vpm, "agent", "--config", os.path.join(folder, "base.json")]
        self.arguments += ["--state", os.path.join(folder, "state"), "--listen", self.path]
        self.process = None
        self.slowest = 0.0

    def start(self):
        begin = time.monotonic()
        with open(self.said, "ab") as said:
            self.process = subprocess.Popen(self.arguments, stderr=said)
        while True:
            try:
                Connection(self.path).close()
                break
            except OSError:
                if self.process.poll() is not None:
                    with open(self.said, encoding="utf-8") as said:
                        fail(f"the agent did not start: {self.process.returncode}\n{said.read()}")
                if time.monotonic() - begin > PATIENCE:
                    fail("the agent does not listen")
                time.sleep(0.005)
        self.slowest = max(self.slowest, time.monotonic() - begin)

    def kill(self):
        self.process.send_signal(signal.SIGKILL)
        self.process.wait()

    def resident(self):
        with open(f"/proc/{self.process.pid}/statm", encoding="ascii") as statm:
            return int(statm.read().split()[1]) * os.sysconf("SC_PAGESIZE")


def audit(agent):
    connection = Connection(agent.path)
    found = connection.ask(request="audit")["audit"]["differences"]
    wrong = [each for each in found if each["class"] in ("foreign", "defect")]
    if wrong:
        fail(f"the audit finds {len(wrong)}: {json.dumps(wrong[:3])}")
    connection.close()


def check(agent, clients):
    connection = Connection(agent.path)
    for client in clients:
        client.check(connection)
    connection.close()
    audit(agent)


def work(agent, models, dices):
    clients = [Client(agent.path, model, dice) for model, dice in zip(models, dices)]
    for client in clients:
        client.start()
    return clients


def rest(clients):
    for client in clients:
        client.join()
        if client.failure:
            fail(client.failure)


def base_document(rules):
    """A device that nobody changes, so that there is something to load and to write."""
    policy = [{"priority": 10000 + i, "origin": [{"name": "o", "match": {"dst-ip": [
        f"10.{i // 256}.{i % 256}.0/24"]}}]} for i in range(rules)]
    return {
        "vela-l3:policy-source": {"policy-set": [
            {"device-name": "base", "policy": [{"vrf-name": "v", "rule": policy}]}]},
        "vela-policy-monitor:status": {"device-policy-list": [
            {"device-name": "base", "net-vrf-name-by-vrf": [
                {"vrf-name": "v", "net-vrf-name": "net-base"}]}]},
    }


def be_killed(agent, models, dices, dice, seconds):
    kills = lines = 0
    end = time.monotonic() + seconds
    while time.monotonic() < end or kills == 0:
        clients = work(agent, models, dices)
        time.sleep(dice.uniform(0.05, min(3, seconds / 10)))
        agent.kill()
        rest(clients)
        kills += 1
        if dice.randrange(5) == 0:  # once more, while it is loading or has just begun
            agent.process = subprocess.Popen(agent.arguments, stderr=subprocess.DEVNULL)
            time.sleep(dice.uniform(0, 0.3))
            agent.kill()
            kills += 1
        agent.start()
        check(agent, clients)
        models = [client.model for client in clients]
        lines += sum(client.acknowledged for client in clients)
    return models, kills, lines


def live(agent, models, dices, seconds):
    """Returns the clients, and the least memory in each quarter of the time, in bytes."""
    clients = work(agent, models, dices)
    begin = time.monotonic()
    samples = [[], [], [], []]
    while (passed := time.monotonic() - begin) < seconds:
        samples[int(4 * passed / seconds)].append(agent.resident())
        time.sleep(0.05)
    for client in clients:
        client.stopping = True
    rest(clients)
    for client in clients:
        client.possible = [client.model]
    check(agent, clients)
    return clients, [min(quarter) for quarter in samples]


def main():
    vpm, seconds = sys.argv[1], float(sys.argv[2])
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else random.SystemRandom().randrange(1 << 32)
    print(f"seed {seed}", flush=True)
    dice = random.Random(seed)
    with tempfile.TemporaryDirectory(prefix="vpm-soak-") as folder:
        with open(os.path.join(folder, "base.json"), "w", encoding="utf-8") as base:
            json.dump(base_document(500), base)
        agent = Agent(os.path.abspath(vpm), folder)
        agent.start()
        nuisances = [Nuisance(agent.path, random.Random(dice.random())) for _ in range(3)]
        for nuisance in nuisances:
            nuisance.start()
        try:
            soak(agent, dice, seconds, folder)
        finally:
            for nuisance in nuisances:
                nuisance.stopping = True
            for nuisance in nuisances:
                nuisance.join()
            agent.kill()


def soak(agent, dice, seconds, folder):
    models = [Model(f"fw{i}") for i in range(CLIENTS)]
    dices = [random.Random(dice.random()) for _ in range(CLIENTS)]
    models, kills, lines = be_killed(agent, models, dices, dice, 2 * seconds / 3)
    print(f"{kills} kills, {lines} lines acknowledged between them, none lost; "
          f"the slowest start took {agent.slowest:.2f} s", flush=True)

    clients, resident = live(agent, models, dices, seconds / 3)
    megabytes = ", ".join(f"{quarter / 1e6:.2f}" for quarter in resident)
    growth = 100 * (resident[3] - resident[1]) / resident[1]
    served = sorted(client.acknowledged for client in clients)
    print(f"{sum(served) / (seconds / 3):.0f} lines/s without kills, {served[0]} to {served[-1]} per "
          f"client; the slowest batch took {max(client.slowest for client in clients):.2f} s; "
          f"least resident of each quarter: {megabytes} MB; from the second to the last {growth:+.2f} %",
          flush=True)
    if served[0] == 0 or served[-1] > 20 * served[0]:
        fail(f"a client was not served: {served}")
    if seconds >= 300 and growth > 1:
        fail("the memory grows")

    agent.process.send_signal(signal.SIGTERM)
    if agent.process.wait(PATIENCE) != 0:
        fail(f"the agent ended with {agent.process.returncode}")
    agent.start()
    for client in clients:
        client.possible = [client.model]
    check(agent, clients)
    names = sorted(os.listdir(os.path.join(folder, "state")))
    print(f"in the state folder: {', '.join(names)}")


if __name__ == "__main__":
    main()
