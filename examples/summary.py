#!/usr/bin/env python3
"""Shows side by side what was in a version-1 document and what `vpm translate` made of it.

usage: summary.py DOCUMENT TRANSLATED [DEVICE VRF PRIORITY]

The last three name a rule to show leaf by leaf; without them it is the first of the document.
"""

import json
import sys


def records(document):
    return document["vela-policy-monitor:status"]["device-policy-list"]


def entries(document, module, source, collection):
    """The devices of one tree of one document, by name."""
    tree = document.get(f"{module}:{source}", {})
    return {device["device-name"]: device for device in tree.get(collection, [])}


# What version 2 calls otherwise.
RENAMED = {"log-enabled": "log"}


class Generation:
    """One generation of a document, with the names that its module gives to things."""

    def __init__(self, document, module, vrf_list, vrf_key):
        self.policy_sets = entries(document, module, "policy-source", "policy-set")
        self.devices = entries(document, module, "service-device-source", "service-device")
        self.vrf_list = vrf_list
        self.vrf_key = vrf_key

    def policies(self, device):
        return self.policy_sets.get(device, {}).get("policy", [])

    def counts(self, device):
        rules = [rule for policy in self.policies(device) for rule in policy.get("rule", [])]
        matches = [origin.get("match", {}) for rule in rules for origin in rule.get("origin", [])]
        vrfs = self.devices.get(device, {}).get(self.vrf_list, [])
        return (
            len(self.policies(device)),
            len(rules),
            sum(len(match.get(leaf, [])) for match in matches for leaf in ("src-ip", "dst-ip")),
            sum(len(intf.get("reachable-subnet", [])) for vrf in vrfs for intf in vrf["l3-intf"]),
        )

    def rule(self, device, vrf, priority):
        for policy in self.policies(device):
            if policy[self.vrf_key] == vrf:
                for rule in policy.get("rule", []):
                    if rule["priority"] == priority:
                        return rule
        return {}


def leaves(rule):
    """The leaves of the first origin of a rule, by path; values as JSON."""
    found = {}
    for origin in rule.get("origin", [])[:1]:
        for name, value in origin.items():
            if name == "match":
                found.update({f"match/{leaf}": items for leaf, items in value.items()})
            else:
                found[RENAMED.get(name, name)] = value
    return {path: json.dumps(value, separators=(",", ":")) for path, value in found.items()}


def print_counts(version1, version2):
    head = f"{'VRFs':>5}{'rules':>7}{'prefixes':>10}{'subnets':>9}"
    print(f"  {'version 1':>31}  | {'version 2':>31}  |")
    print(f"  {head}  | {head}  | device")
    for device in version1.policy_sets:
        rows = []
        for generation in (version1, version2):
            vrfs, rules, prefixes, subnets = generation.counts(device)
            rows.append(f"{vrfs:>5}{rules:>7}{prefixes:>10}{subnets:>9}")
        print(f"  {rows[0]}  | {rows[1]}  | {device}")


def print_rule(version1, version2, device, vrf, net_vrf, priority):
    before = leaves(version1.rule(device, vrf, priority))
    after = leaves(version2.rule(device, net_vrf, priority))
    width = max(len(value) for value in [f"version 1, VRF {vrf}", *before.values()])
    print(f"  rule {priority} of {device}")
    print(f"  {'':<24}{f'version 1, VRF {vrf}':<{width}}  version 2, network VRF {net_vrf}")
    for path in list(before) + [path for path in after if path not in before]:
        label = next((f"{old}, {new}" for new, old in RENAMED.items() if old == path), path)
        print(f"  {label:<24}{before.get(path, '-'):<{width}}  {after.get(path, '-')}")


def print_flags(translated):
    for record in records(translated):
        policy, service_device = (
            "converged" if record.get(flag) else "not converged"
            for flag in ("policy-converge", "service-device-converge")
        )
        print(f"  policies {policy}, VRFs {service_device}: record {record['device-name']}")


def network_vrf(version1, version2, device, vrf):
    """The name of a VRF in the network, as the service-device tree of version 2 has it."""
    for candidate in version2.devices.get(device, {}).get("net-vrf", []):
        if candidate["vrf-name"] == vrf:
            return candidate["net-vrf-name"]
    raise SystemExit(f"summary.py: version 2 has no network VRF for VRF {vrf} of {device}")


def main(arguments):
    if len(arguments) not in (2, 5):
        raise SystemExit(__doc__)
    with open(arguments[0], encoding="utf-8") as document:
        version1 = Generation(json.load(document), "vela-l3", "vrf", "vrf-name")
    with open(arguments[1], encoding="utf-8") as document:
        translated = json.load(document)
    version2 = Generation(translated, "vela-l3v2", "net-vrf", "net-vrf-name")
    if len(arguments) == 5:
        device, vrf, priority = arguments[2], arguments[3], int(arguments[4])
    else:
        device = next(iter(version1.policy_sets))
        policy = version1.policies(device)[0]
        vrf, priority = policy["vrf-name"], policy["rule"][0]["priority"]
    print_counts(version1, version2)
    print()
    print_rule(version1, version2, device, vrf, network_vrf(version1, version2, device, vrf), priority)
    print()
    print_flags(translated)


if __name__ == "__main__":
    main(sys.argv[1:])
