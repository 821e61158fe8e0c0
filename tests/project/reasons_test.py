#!/usr/bin/env python3
"""usage: reasons_test.py SOURCE_DIR

The guide for the engineer on call has the reasons of the audit in the words of the program: each
reason in its table is one that the program gives, from its first word to its last, and each one
that the program gives for what is pending or as designed has its row. "…" stands for any text, in
the table for what is left out, in the program for what it fills in.
"""
import re
import sys
from pathlib import Path

source = Path(sys.argv[1])
literal = r'"(?:[^"\\]|\\.)*"'


def alternatives(expression):
    """What an expression is for both outcomes of a choice between two texts."""
    chosen = re.search(rf"[^,(]*\?\s*((?:{literal}\s*)+):\s*((?:{literal}\s*)+)", expression)
    if chosen is None:
        return [expression]
    rest = expression[: chosen.start()], expression[chosen.end() :]
    return [rest[0] + chosen[i] + rest[1] for i in (1, 2)]


def text(expression):
    """The texts of an expression, with "…" for what is no text."""
    found, last = "", 0
    for one in re.finditer(literal, expression):
        between = re.sub(r"concat\(|[\s,(){}]", "", expression[last : one.start()])
        found += "…" * bool(between) + one[0][1:-1].replace('\\"', '"')
        last = one.end()
    return found + "…" * bool(re.sub(r"[\s,(){};]", "", expression[last:]))


def reasons():
    for file in sorted((source / "src/host/audit").glob("*.cpp")):
        code = file.read_text()
        calls = re.findall(r"Kind::(?:pending|asDesigned),\s*(.*?)\);\n", code, re.DOTALL)
        tree = re.search(r"^std::string whyTree\(.*?^}", code, re.DOTALL | re.MULTILINE)
        if tree is not None:
            calls += re.findall(r"return (.*?);\n", tree[0], re.DOTALL)
        for call in calls:
            yield from (text(one) for one in alternatives(call) if '"' in one)


def matches(row, reason):
    pattern = ".*".join(map(re.escape, row.split("…")))
    return re.fullmatch(pattern, reason, re.DOTALL)


guide = (source / "docs/on-call.md").read_text()
table = re.search(r"^\| the reason \|.*?\n\n", guide, re.DOTALL | re.MULTILINE)[0]
rows = [row for line in table.strip().splitlines()[2:] for row in re.findall(r"`([^`]+)`", line.split("|")[1])]
given = [reason for reason in reasons() if reason]

failures = [f"the guide has a reason that the program does not give: {row}"
            for row in rows if not any(matches(row, reason) for reason in given)]
failures += [f"the guide has no row for: {reason}"
             for reason in given if not any(matches(row, reason) for row in rows)]
print(f"{len(rows)} in the guide, {len(given)} in the program", *failures, sep="\n")
sys.exit(bool(failures) or len(given) < 10)
