"""Reading memory that may be broken."""

import gdb


class Broken(Exception):
    """Memory that does not hold what it should; says what was found."""


def bare(kind):
    """The type without aliases, qualifiers and reference."""
    kind = kind.strip_typedefs()
    if kind.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
        kind = kind.target().strip_typedefs()
    return kind.unqualified()


def address_of(symbol):
    """Where the variable of this name lies; None when there is none."""
    try:
        return int(gdb.parse_and_eval(f"(unsigned long)&'{symbol}'"))
    except gdb.error:
        return None


def named(name):
    """The type of this name."""
    try:
        return gdb.lookup_type(name)
    except gdb.error as error:
        why = f"The library is not here, or has no debug information: {error}"
        raise gdb.GdbError(why) from error


def at(address, kind):
    """The object at this address, of a type that may be given by its name."""
    if isinstance(kind, str):
        kind = named(kind)
    return gdb.Value(address).cast(kind.strip_typedefs().pointer()).dereference()


def storage(anchor):
    """The address of what a collection owns, 0 when it is empty. While a walk is under way, the one
    word of the collection leads to that walk, marked by its lowest bit, and the walk knows."""
    word = int(anchor["word_"])
    return int(at(word - 1, "Kel::Walk")["storage_"]) if word & 1 else word


def elements(vector):
    """How many elements a std::vector has, and a walk over them."""
    first, last = (vector["_M_impl"][name] for name in ("_M_start", "_M_finish"))
    size, rest = divmod(int(last) - int(first), first.dereference().type.sizeof)
    if size < 0 or rest != 0:
        raise Broken(f"broken: a vector from {int(first):#x} to {int(last):#x}")
    return size, ((first + index).dereference() for index in range(size))


class Printer:
    """What all printers are. None of them ever raises: that would hide all around the break."""

    hint = None

    def __init__(self, value):
        self.value = value

    def to_string(self):
        try:
            return self.text()
        except Exception as error:  # pylint: disable=broad-except
            return f"<{error}>"

    def display_hint(self):
        return self.hint

    def text(self):
        """What stands before the children; may raise."""
        return None


class Parent(Printer):
    """Of what has children. `parts` yields tuples of names and values in turn; where the hint is
    "map", those of a key, then those of its value. What cannot be read ends them, and says why."""

    def children(self):
        try:
            for part in self.parts():
                for value in part[1::2]:
                    if isinstance(value, gdb.Value):
                        value.fetch_lazy()
                yield from zip(part[::2], part[1::2])
        except Exception as error:  # pylint: disable=broad-except
            if self.hint == "map":
                yield ("", "<unreadable>")
            yield ("<unreadable>", f"<{error}>")

    def parts(self):
        """May raise at any time."""
        return iter(())
