"""Entities and state machines, by the rows of their descriptors (Kel/TypeDescriptor.h)."""

import collections

import gdb

from .reading import Broken, Parent, address_of, at, bare

Row = collections.namedtuple("Row", "name kind")

# What a member that is not the attribute itself keeps it in.
_WRAPPERS = {"Reactor": "entity_", "Children": "map_", "SingleChild": "child_"}


def is_object(kind, base="Kel::PtrInterface"):
    """Whether a type is derived from `base`, at any distance."""
    return kind.name == base or any(
        field.is_base_class and is_object(bare(field.type), base) for field in kind.fields()
    )


def _rows(name):
    """The attributes of the type with this name. Raises Broken when it has no descriptor."""
    address = address_of(f"Kel::describe<{name}>()::type")
    if address is None:
        raise Broken(f"{name} has no descriptor")
    span = at(address, "Kel::TypeDescriptor")["rows"]
    first = span["_M_ptr"]
    count = int(span["_M_extent"]["_M_extent_value"])
    rows = ((first + index).dereference() for index in range(count))
    return [Row(row["name"].string(), str(row["kind"]).rpartition("::")[2]) for row in rows]


def _known(value):
    """The object with the type that it was made with."""
    kind = value.dynamic_type
    return value.cast(kind) if kind != value.type else value


def _member(value, row):
    member = value[f"{row.name}_"]
    wrapper = bare(member.type).name.partition("<")[0].rpartition("::")[2]
    return member[_WRAPPERS[wrapper]] if wrapper in _WRAPPERS else member


def key_of(value):
    """What tells an object from its siblings: its first attribute, if that is a constant. None for
    one that has no siblings."""
    value = _known(value)
    first = _rows(bare(value.type).name)[0]
    return _member(value, first) if first.kind == "constant" else None


def _mention(pointer):
    """An object that somebody else owns, in one line; whole, if there is nothing below it."""
    if int(pointer) == 0:
        return "null"
    value = _known(pointer.dereference())
    if all(row.kind == "constant" for row in _rows(bare(value.type).name)):
        return value
    key = key_of(value)
    text = bare(value.type).name + (f"[{key.format_string()}]" if key is not None else "")
    return f"{text} at {int(pointer):#x}" if gdb.parameter("print address") else text


class Object(Parent):
    """The attributes in the order of their ids. What the object owns is shown whole, what it only
    knows is mentioned. A state machine tells first what it is doing."""

    def text(self):
        return bare(_known(self.value).type).name

    def parts(self):
        value = _known(self.value)
        if is_object(bare(value.type), "VelaPolicyMonitor::TranslateSm"):
            yield "flags", self._flags(value)
        for row in _rows(bare(value.type).name):
            member = _member(value, row)
            is_mention = row.kind in ("object", "input")
            yield row.name, _mention(member["object_"]) if is_mention else member

    @staticmethod
    def _flags(value):
        flags = ["listening" if value["notificationActive_"] else "silent"]
        if int(value["depth_"]) != 0:
            flags.append(f"busy {int(value['depth_'])} deep")
        for name, word in (
            ("attention_", "something postponed"),
            ("catchingUp_", "catching up"),
            ("retired_", "at its end"),
            ("markedForDeletion_", "marked for deletion"),
        ):
            if value[name]:
                flags.append(word)
        return ", ".join(flags)
