#!/usr/bin/env python3
"""usage: draw.py [--check]

Draws the pictures of docs/state-machines.md. Those of the two trees are made from the lists that
the tests hold against the library (tests/contract/schema.txt and wiring.txt), that of a machine's
life from life.dot. --check draws nothing and needs no graphviz: it fails when a picture was made
from something else than what there is now.
"""
import hashlib
import re
import subprocess
import sys
from pathlib import Path

here = Path(__file__).resolve().parent
contract = here.parent.parent / "tests/contract"
HEAD = """digraph tree {
  graph [rankdir=LR, fontname="Helvetica", ranksep=0.9, nodesep=0.25, bgcolor="white"]
  node [fontname="Helvetica", fontsize=11, shape=plaintext]
  edge [fontname="Helvetica", fontsize=9, color="#555555", fontcolor="#555555"]
"""


def machines():
    """Of each machine, by its name: its attributes and its inputs with their reactions."""
    found, name = {}, None
    for line in (contract / "schema.txt").read_text().splitlines():
        if not line.startswith(" "):
            name = line.split("::")[-1]
        elif row := re.match(r"  \d+ (\w+) (input|object|children|single)\b.* of [\w:]*?(\w+::\w+)$", line):
            if name.endswith("Sm"):
                found.setdefault(name, {"rows": [], "reactions": {}})["rows"].append(row.groups())
    for line in (contract / "wiring.txt").read_text().splitlines():
        if not line.startswith(" "):
            name = line.split("::")[-1]
        elif row := re.match(r"    \d+ (\w+) -> (\w+)", line):
            found[name]["reactions"][attribute].append(row.groups())
        else:
            attribute = line.split()[0]
            found[name]["reactions"][attribute] = []
    return found


def entity(name, title, rows, colour):
    # Children stand in the middle, so that their arrow leaves there.
    cells = "".join(
        f'<tr><td align="{"center" if row.endswith("Sm") else "left"}" port="{row}">{row}</td></tr>'
        for row in rows
    )
    return (
        f'  "{name}" [label=<<table border="0" cellborder="1" cellspacing="0" cellpadding="4" '
        f'color="{colour}"><tr><td bgcolor="{colour}22"><b>{title}</b></td></tr>{cells}</table>>]\n'
    )


def tree(root):
    """The tree below a root: version 1 left, the machines in the middle, version 2 right."""
    found, text, names = machines(), HEAD, [root]
    for name in names:
        machine, handlers, children = found[name], [], []
        for attribute, kind, target in machine["rows"]:
            if kind == "input":
                watched = [row for row in machine["reactions"][attribute] if row[1] != "nothing"]
                source = f"{name}.{attribute}"
                title = target.replace("VelaPolicyMonitor::", "monitor ")
                text += entity(source, title, [row[0] for row in watched], "#7a5c1e")
                for watchedAttribute, handler in watched:
                    handlers += [handler] if handler not in handlers else []
                    text += f'  "{source}":"{watchedAttribute}" -> "{name}":"{handler}"\n'
            elif attribute.endswith("V2"):
                text += entity(target, target, [], "#2f6b36")
                text += f'  "{name}" -> "{target}" [label="writes"]\n'
            elif kind in ("children", "single"):
                below = target.split("::")[-1]
                names.append(below)
                children.append(attribute)
                text += f'  "{name}":"{attribute}":s -> "{below}":n [style=bold, constraint=false]\n'
        text += entity(name, name, handlers + children, "#33567f")
    return text + "}\n"


def pictures():
    yield "life", (here / "life.dot").read_text()
    yield "policy", tree("PolicyTranslateRootSm")
    yield "service-device", tree("ServiceDeviceTranslateRootSm")


for name, source in pictures():
    picture = here / f"{name}.svg"
    stamp = f"<!-- made by draw.py from {hashlib.sha256(source.encode()).hexdigest()} -->\n"
    if "--check" in sys.argv:
        if not picture.exists() or stamp not in picture.read_text():
            sys.exit(f"{picture} is out of date: ./dev docs draws it anew")
    elif not picture.exists() or stamp not in picture.read_text():
        done = subprocess.run(["dot", "-Tsvg"], input=source, capture_output=True, text=True, check=True)
        picture.write_text(done.stdout + stamp)
