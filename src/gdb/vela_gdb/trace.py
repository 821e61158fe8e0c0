"""The command that prints the end of the binary trace."""

import os
import pathlib
import shutil
import subprocess
import tempfile

import gdb

from .reading import at, named


def _pointee(unique_ptr, kind):
    """What a std::unique_ptr owns, which is all that it consists of."""
    return at(int(at(int(unique_ptr.address), "unsigned long")), kind)


def _ring():
    """The segments of the trace that the process writes (Lumo/Segments.h)."""
    symbol = gdb.lookup_global_symbol("Lumo::Impl::defaultFile")
    if symbol is None:
        raise gdb.GdbError("The library is not here, or has no debug information.")
    file = int(at(int(symbol.value().address), "unsigned long"))
    if file == 0:
        raise gdb.GdbError("The process writes no binary trace.")
    return _pointee(at(file, "Lumo::TraceFile")["segments_"], "Lumo::Segments")


def _save(ring, folder):
    """Writes the trace into a folder as the process would have."""
    memory = gdb.selected_inferior()
    metadata = ring["metadata_"]
    kept = memory.read_memory(metadata["_M_ptr"], metadata["_M_extent"]["_M_extent_value"])
    (folder / "metadata").write_bytes(kept[named("Lumo::MetadataHeader").sizeof :])
    size = int(ring["size_"])
    for index in range(int(ring["count_"])):
        segment = memory.read_memory(ring["memory_"] + index * size, size)
        (folder / f"segment-{index:04}").write_bytes(segment)


def _program():
    """The path of vpm: the one that is debugged, the one beside the library, or any."""
    beside = [
        os.path.join(os.path.dirname(objfile.filename), "..", "bin", "vpm")
        for objfile in gdb.objfiles()
        if "libvelapolicytranslate" in (objfile.filename or "")
    ]
    debugged = gdb.current_progspace().filename or ""
    known = [debugged] if os.path.basename(debugged) == "vpm" else []
    for path in known + beside:
        if os.access(path, os.X_OK):
            return path
    return shutil.which("vpm")


class ShowTrace(gdb.Command):
    """Print the last lines of the binary trace: vela-trace [N [OPTION...]], 10 lines if not told.
The options are those of vpm trace, which prints them from the memory of the process or the core:
vela-trace 20 --level 6 --vrf red."""

    def __init__(self):
        super().__init__("vela-trace", gdb.COMMAND_DATA)

    def invoke(self, argument, from_tty):
        count, *options = gdb.string_to_argv(argument) or ["10"]
        ring = _ring()
        program = _program()
        if program is None:
            raise gdb.GdbError("vpm, which prints the trace, is neither installed nor on the PATH.")
        with tempfile.TemporaryDirectory() as name:
            try:
                _save(ring, pathlib.Path(name))
            except gdb.MemoryError as error:
                raise gdb.GdbError(
                    f"The trace is not in this core ({error}): it was in files, which have it "
                    "still. vpm trace FOLDER prints it."
                ) from error
            done = subprocess.run(
                [program, "trace", name, "--last", count, *options],
                capture_output=True,
                text=True,
                check=False,
            )
        gdb.write(done.stdout)
        if done.returncode != 0:
            raise gdb.GdbError(done.stderr.strip())


def register():
    ShowTrace()
