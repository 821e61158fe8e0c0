"""What gdb gets beside the printers: objects by the name of their type."""

import gdb

from .reading import address_of, at, elements


def _slabs():
    """The memory of every type, sorted by the types' names (Kel/Slab.h)."""
    where = address_of("Kel::(anonymous namespace)::slabList()::all")
    if where is None:
        raise gdb.GdbError("The library is not here, or has no symbols.")
    where = int(at(where, "unsigned long"))  # what the reference refers to
    if where == 0:
        return []  # no object was ever made
    slabs = at(where, "Kel::(anonymous namespace)::SlabList")["slabs"]
    return [slab.dereference() for slab in elements(slabs)[1]]


def _live(slab):
    """How many objects there are."""
    return int(slab["peak_"]) - int(slab["belowPeak_"])


def _objects(slab):
    """The addresses of the objects in those pages of a slab that have room for more."""
    page = slab["open_"]
    while int(page) != 0:
        free = set()
        block = page["free"]
        while int(block) != 0 and int(block) not in free:
            free.add(int(block))
            block = block["next"]
        align = int(slab["align_"])
        first = int(page) + (page.dereference().type.sizeof + align - 1) // align * align
        for address in range(first, int(page["fresh"]), int(slab["blockSize_"])):
            if address not in free:
                yield address
        page = page["next"]


class ObjectOf(gdb.Function):
    """$vela("TYPE"): a pointer to the object of this type, such as the root of a tree:
p *$vela("VelaL3V2::VelaPolicySourceConfig"). Where there are several, it is one of them.
The names of the types are what vela-objects lists."""

    def __init__(self):
        super().__init__("vela")

    def invoke(self, name):
        name = name.string()
        slabs = [slab for slab in _slabs() if slab["typeName_"].string() == name]
        for slab in slabs:
            for address in _objects(slab):
                return at(address, name).address
        live = sum(_live(slab) for slab in slabs)
        raise gdb.GdbError(
            f"There are {live} objects of the type {name}, in memory that is full: find one from "
            "the object that owns it."
            if live
            else f"There is no object of the type {name}. vela-objects lists the types that have."
        )


class ListObjects(gdb.Command):
    """List the types of objects, with how many there are and how many there were at the most."""

    def __init__(self):
        super().__init__("vela-objects", gdb.COMMAND_DATA)

    def invoke(self, argument, from_tty):
        slabs = _slabs()
        gdb.write(f"{'live':>12}{'peak':>12}  type\n")
        for slab in slabs:
            numbers = f"{_live(slab):12}{int(slab['peak_']):12}"
            gdb.write(f"{numbers}  {slab['typeName_'].string()}\n")


def register():
    ObjectOf()
    ListObjects()
