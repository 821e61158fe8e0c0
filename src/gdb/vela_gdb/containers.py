"""The pointer, and the collections, as they lie in memory (Kel/Table.h, Kel/SortedChunks.h)."""

import gdb

from . import objects
from .reading import Broken, Parent, at, bare, elements, storage

# An index has 2 to the power of so many words, which are narrow up to here.
_NARROW = 7
_LARGEST = 1 << 26


def _slots(table):
    """How many slots a Kel::Table has, and a walk over them."""
    block = storage(table["anchor_"])
    if block == 0:
        return 0, iter(())
    size, shape = (int(at(block + offset, "unsigned int")) for offset in (0, 4))
    capacity, bits = shape & (1 << 27) - 1, shape >> 27
    if not 0 < capacity <= _LARGEST or size > capacity:
        raise Broken(f"broken: {size} entries in a table for {capacity} at {block:#x}")
    index = (2 if bits <= _NARROW else 4) << bits if bits else 0
    kind = bare(table.type).template_argument(0)
    first = block + 8 + index
    return size, (at(first + position * kind.sizeof, kind) for position in range(size))


def _packed(pointer):
    """The object of a Kel::PackedPointer."""
    low, high = (int(pointer["words_"]["_M_elems"][index]) for index in range(2))
    return at(low | high << 32, bare(pointer.type).template_argument(0))


class _Collection(Parent):
    """What all have in common; `contents` says how many there are, and walks over them."""

    def text(self):
        size, _ = self.contents()
        return f"{size} entries" if size != 1 else "1 entry"

    def children(self):
        try:
            self.contents()
        except Exception:  # pylint: disable=broad-except
            return iter(())  # the text has said why
        return super().children()


class Set(_Collection):
    hint = "array"

    def contents(self):
        return _slots(self.value["table_"])

    def parts(self):
        _, keys = self.contents()
        for position, key in enumerate(keys):
            yield f"[{position}]", key


class _Map(_Collection):
    hint = "map"

    def parts(self):
        _, entries = self.contents()
        for position, (key, value) in enumerate(entries):
            yield f"[{position}]", key, f"[{position}]", value


class EntryMap(_Map):
    """Entries know their own key: it is the first of their attributes."""

    def contents(self):
        size, slots = _slots(self.value["table_"])
        return size, (_keyed(slot["entry"]) for slot in slots)


def _keyed(packed):
    entry = _packed(packed)
    return objects.key_of(entry), entry


class OrderedMap(_Map):
    def contents(self):
        chunks = storage(self.value["anchor_"])
        if chunks == 0:
            return 0, iter(())
        chunks = at(chunks, f"{bare(self.value.type).name}::Chunks")
        return int(chunks["size_"]), self._walk(chunks)

    @staticmethod
    def _walk(chunks):
        for chunk in elements(chunks["chunks_"])[1]:
            for slot in elements(chunk["slots"])[1]:
                yield slot["key"], _packed(slot["entry"])


class ValueMap(_Map):
    def contents(self):
        pairs = storage(self.value["anchor_"])
        if pairs == 0:
            return 0, iter(())
        size, walk = elements(at(pairs, f"{bare(self.value.type).name}::Entries"))
        return size, ((pair["first"], pair["second"]) for pair in walk)


class Ptr(Parent):
    """As the object itself."""

    def text(self):
        if int(self.value["object_"]) == 0:
            return "null"
        target = self._target()
        return target.to_string() if target is not None else self.value["object_"]

    def parts(self):
        target = None if int(self.value["object_"]) == 0 else self._target()
        yield from ((name, child) for name, child in target.children()) if target else ()

    def _target(self):
        return gdb.default_visualizer(self.value["object_"].dereference())


PRINTERS = {
    "Brix::Ptr": Ptr,
    "Kel::Set": Set,
    "Kel::EntryMap": EntryMap,
    "Kel::OrderedMap": OrderedMap,
    "Kel::ValueMap": ValueMap,
}
