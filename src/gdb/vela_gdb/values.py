"""Value types, as the program itself writes them."""

import ipaddress
import math

import gdb

from .reading import Broken, Printer, bare


class String(Printer):
    """Text that knows its length; the bytes lie behind the head that the one word leads to."""

    def __init__(self, value):
        super().__init__(value)
        try:
            head = value["text_"]
            self.content = ""
            if int(head) != 0:
                letters = (head + 1).cast(gdb.lookup_type("char").pointer())
                self.content = letters.lazy_string(length=int(head["size"]))
            self.hint = "string"
        except Exception as error:  # pylint: disable=broad-except
            self.content = f"<{error}>"

    def text(self):
        return self.content


class Name(String):
    """A name that wraps such a text."""

    def __init__(self, value):
        super().__init__(value["name_"])


def address_text(address):
    """Of a Norv::IpGenAddr."""
    family = int(address["family_"])
    octets = address["bytes_"]["_M_elems"]
    if family == 0:
        return str(ipaddress.IPv4Address(bytes(int(octets[i]) for i in range(4))))
    if family != 1:
        raise Broken(f"broken: an address of the family {family}")
    whole = ipaddress.IPv6Address(bytes(int(octets[i]) for i in range(16)))
    return f"::ffff:{whole.ipv4_mapped}" if whole.ipv4_mapped is not None else str(whole)


class Address(Printer):
    def text(self):
        return address_text(self.value)


class Prefix(Printer):
    def text(self):
        return f"{address_text(self.value['address_'])}/{int(self.value['length_'])}"


class AddressRange(Printer):
    def text(self):
        return f"{address_text(self.value['first'])}-{address_text(self.value['last'])}"


class Number(Printer):
    """Of a type that wraps a number, as its member value_."""

    def text(self):
        return str(int(self.value["value_"]))


class App(Printer):
    def text(self):
        return f"{int(self.value['port'])}/{int(self.value['protocol'])}"


class AppRange(Printer):
    def text(self):
        first, last, protocol = (int(self.value[name]) for name in ("first", "last", "protocol"))
        return f"{first}-{last}/{protocol}"


class Inspection(Printer):
    hint = "string"

    def text(self):
        bits = int(self.value["value"])
        return " ".join(name for bit, name in ((1, "local"), (2, "unified")) if bits & bit)


class Seconds(Printer):
    def text(self):
        time = float(self.value)
        return "never" if time == 0 and math.copysign(1, time) < 0 else f"{time:.6f}"


def is_named(enumeration):
    """Whether the enumerators are names of the model."""
    return enumeration.name.partition("::")[0] in ("VelaL3", "VelaL3V2")


class Enumerator(Printer):
    """The bare name; the number when there is none."""

    def text(self):
        ordinal = int(self.value)
        names = [field.name for field in bare(self.value.type).fields() if field.enumval == ordinal]
        return names[0].rpartition("::")[2] if names else str(ordinal)


ALIASES = {"Kel::Seconds": Seconds}

PRINTERS = {
    "Brix::String": String,
    "L3::VrfName": Name,
    "Vela::DeviceName": Name,
    "Vela::TrafficInspection": Inspection,
    "Norv::IpGenAddr": Address,
    "Norv::IpGenPrefix": Prefix,
    "Norv::IpProto": Number,
}
for _generation in ("VelaL3", "VelaL3V2"):
    PRINTERS[f"{_generation}::VelaPriority"] = Number
    PRINTERS[f"{_generation}::VelaIpRange"] = AddressRange
    PRINTERS[f"{_generation}::VelaL4App"] = App
    PRINTERS[f"{_generation}::VelaL4AppRange"] = AppRange
