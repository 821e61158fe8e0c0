"""How gdb shows the objects of the library, in a stopped process and in a core file alike.

Nothing here calls a function of the process: a core has none to call, and one that was stopped in
the middle of a change is left as it is. All is read from memory, as the debug information describes
it. A new attribute of an entity needs no line here: the names come from the type's descriptor.
"""

import gdb
import gdb.printing

from . import commands, containers, objects, reading, trace, values

_PRINTERS = {**values.PRINTERS, **containers.PRINTERS}


class _Printers(gdb.printing.PrettyPrinter):
    def __call__(self, value):
        """What gdb asks for every value: who prints it, or None."""
        alias = value.type.unqualified().name  # before it is looked through
        if alias in values.ALIASES:
            return values.ALIASES[alias](value)
        kind = reading.bare(value.type)
        if kind.name is None:
            return None
        if kind.code == gdb.TYPE_CODE_ENUM:
            return values.Enumerator(value) if values.is_named(kind) else None
        if kind.code != gdb.TYPE_CODE_STRUCT:
            return None
        template = kind.name.partition("<")[0]
        if template in _PRINTERS:
            return _PRINTERS[template](value)
        return objects.Object(value) if objects.is_object(kind) else None


def register():
    """Makes printers and commands known. Again and again does no harm: each of the libraries of a
    process may ask for it."""
    gdb.printing.register_pretty_printer(None, _Printers("vela"), replace=True)
    commands.register()
    trace.register()
