#!/usr/bin/env python3
"""usage: model_test.py SOURCE_DIR MODEL_LINES

Holds the YANG modules against the model: both must have the same nodes with the same keys and
types, configuration and state alike, and the same names for enumerators and bits. MODEL_LINES is
the program that prints the model's side.
"""

import pathlib
import re
import subprocess
import sys

# How the modules call a type of the model. Text is a `name` where it is a key, else a `string`.
YANG_TYPES = {
    "bool": "boolean",
    "uint8_t": "uint8",
    "uint16_t": "uint16",
    "Kel::Seconds": "seconds",
    "Kel::String": "string",
    "L3::VrfName": "vrf-name",
    "Norv::IpGenAddr": "inet:ip-address-no-zone",
    "Norv::IpGenPrefix": "inet:ip-prefix",
    "Norv::IpProto": "uint8",
    "Vela::DeviceName": "name",
    "Vela::TrafficInspection": "traffic-inspection",
    "VelaAction": "action",
    "VelaPolicyModifier": "policy-modifier",
    "VelaPriority": "priority",
}
GENERATION = re.compile(r"^VelaL3(V2)?::")


def yang_nodes(directory, module):
    """The nodes of a module, from the tree diagram of yanglint: path to (access, kind, keys, type)."""
    command = ["yanglint", "-f", "tree", "-p", str(directory), str(directory / f"{module}.yang")]
    tree = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    nodes, path = {}, []
    line_form = re.compile(r"^([ |]*)\+--(r[ow]) ([\w-]+)([*!?]?)(?: \[([\w -]+)\])?(?: +(\S+))?$")
    for line in tree.splitlines()[1:]:
        found = line_form.match(line)
        if not found:
            sys.exit(f"FAILED: not a line of a tree diagram: {line}")
        indent, access, name, mark, keys, yang_type = found.groups()
        depth = (len(indent) - 2) // 3
        path[depth:] = [f"{module}:{name}" if depth == 0 else name]
        if mark == "*":
            kind = "list" if yang_type is None else "leaf-list"
        elif mark == "!":
            kind = "presence"
        else:
            kind = "container" if yang_type is None else "leaf"
        nodes["/" + "/".join(path)] = (access, kind, (keys or "").split(), yang_type)
    return nodes


def model_nodes(lines):
    """The same from the model's side."""
    nodes = {}
    for line in lines:
        path, access, kind, *rest = line.split()
        more = dict(word.split("=", 1) for word in rest)
        keys = more["key"].split(",") if "key" in more else []
        nodes[path] = (access, kind, keys, more.get("type"))
    return nodes


def wanted_type(path, nodes):
    """The type that a node of the model has to have in the modules."""
    model_type = nodes[path][3]
    if model_type is None:
        return None
    above, name = path.rsplit("/", 1)
    if model_type == "Kel::String" and name in nodes[above][2]:
        return "name"
    return YANG_TYPES.get(GENERATION.sub("", model_type), f"a name for {model_type}")


def yang_texts(directory, typedef):
    """What the ordinals 0 to 3 of an enumeration or of a set of bits are called."""
    text = (directory / "vela-l3.yang").read_text(encoding="utf-8")
    body = text[text.index(f"typedef {typedef} {{") :]
    body = body[: body.index("\n  }\n")]
    enumerators = {int(value): name for name, value in re.findall(r"enum ([\w-]+) \{\s*value (\d+)", body)}
    bits = {int(value): name for name, value in re.findall(r"bit ([\w-]+) \{\s*position (\d+)", body)}
    if bits:
        return [" ".join(bits[bit] for bit in sorted(bits) if ordinal >> bit & 1) for ordinal in range(4)]
    return [enumerators.get(ordinal, str(ordinal)) for ordinal in range(4)]


def main(source, model_lines):
    directory = pathlib.Path(source) / "yang"
    modules = sorted(file.stem for file in directory.glob("*.yang"))
    yang = {}
    for module in modules:
        yang.update(yang_nodes(directory, module))
    printed = subprocess.run([model_lines], check=True, capture_output=True, text=True).stdout
    model = model_nodes(line for line in printed.splitlines() if line.startswith("/"))
    named = [line for line in printed.splitlines() if not line.startswith("/")]

    faults = [f"only in the modules: {path}" for path in sorted(yang.keys() - model.keys())]
    faults += [f"only in the model: {path}" for path in sorted(model.keys() - yang.keys())]
    for path in sorted(yang.keys() & model.keys()):
        if yang[path][:3] != model[path][:3]:
            faults.append(f"{path}: {yang[path][:3]} in the modules, {model[path][:3]} in the model")
        yang_type = re.sub(r"^vl3:", "", yang[path][3]) if yang[path][3] else None
        if yang_type != wanted_type(path, model):
            faults.append(f"{path}: type {yang_type} in the modules, {model[path][3]} in the model")
    for line in named:
        name = line.split()[0]
        texts = re.findall(r"\d='([^']*)'", line)
        wanted = yang_texts(directory, YANG_TYPES[GENERATION.sub("", name)])
        if texts != wanted:
            faults.append(f"{name}: {texts} in the model, {wanted} in the modules")
    if len(modules) != 3 or not named:
        faults.append(f"too little to compare: modules {modules}, named types {named}")
    for fault in faults:
        print("FAILED:", fault)
    print(f"compared {len(yang.keys() & model.keys())} nodes and {len(named)} types with named values")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
