"""The positions of a text: how each is read into a record and shown from one.

The notation of a text is its positions in order, between commas:

    ifx                 the field, read and shown as its kind on the wire asks
    mac as mac          as a hardware address
    bytes1 as hex       all of its bytes as hexadecimal digits
    alarm as counted    hexadecimal digits; the field before it counts the bytes
    map as list         numbers between commas, a byte each
    int1 as unsigned    shown unsigned
    field8 + field9     one position that fills two fields and shows the first
    value1..value3      three positions; the same with an `as`

64-bit numbers are only ever shown: in an argument their position is passed over.

A way of reading and showing is a class here, with its name in WAYS.
"""
import re

import texts
from wire import numbered


class Position:
    """One position, and the fields that it fills. `shown` is what a reply
    tells, `read` puts what an argument tells into a record's values."""

    def __init__(self, record, names):
        self.record = record
        self.names = names
        self.field = record.kind[names[0]]

    def read(self, text, values):
        for name in self.names:
            values[name] = self.value(text)

    def value(self, text):
        raise NotImplementedError

    def shown(self, values):
        raise NotImplementedError


class Decimal(Position):
    def value(self, text):
        return texts.atoi(text)

    def shown(self, values):
        return "%d" % values[self.field.name]


class Unsigned(Decimal):
    def shown(self, values):
        return "%d" % (values[self.field.name] & (2**64 - 1 if self.field.kind == "int64" else 2**32 - 1))

    def read(self, text, values):
        if self.field.kind != "int64":
            super().read(text, values)


class Signed64(Decimal):
    def read(self, text, values):
        pass


class Text(Position):
    def value(self, text):
        return texts.copy(text, self.field.count)

    def shown(self, values):
        return texts.until_nul(values[self.field.name])


class Real(Position):
    def value(self, text):
        return texts.atof(text)

    def shown(self, values):
        return texts.two_decimals(values[self.field.name])


class Mac(Position):
    def value(self, text):
        return "".join(map(chr, texts.read_mac(text)))

    def shown(self, values):
        return texts.show_mac(map(ord, values[self.field.name]))


class Hex(Position):
    def value(self, text):
        return "".join(map(chr, texts.read_hex(text, self.field.count)))

    def shown(self, values):
        return texts.show_hex(map(ord, values[self.field.name]), 2 * self.field.count + 1)


class Counted(Hex):
    """Hexadecimal digits of as many bytes as the field before says. A count
    beyond the array goes on into the arrays behind it, for 99 characters."""

    room = 100

    def __init__(self, record, names):
        super().__init__(record, names)
        self.count = record.fields[record.fields.index(self.field) - 1].name

    def read(self, text, values):
        super().read(text, values)
        values[self.count] = len(values[self.field.name])

    def shown(self, values):
        octets = self.record.octets_from(self.field.name, values)
        return texts.show_hex(octets[: max(0, values[self.count])], self.room)


class List(Position):
    """Numbers between commas: of an argument's 255 characters the first ones,
    of a reply all. A byte is shown as a host shows it whose char is signed."""

    traced = False  # whether trace lines show the elements

    def items(self, text):
        return texts.split(texts.copy(text, 256), ",")[: self.field.count]

    def value(self, text):
        numbers = [texts.atoi(item) for item in self.items(text)]
        if self.field.kind == "char":
            return "".join(chr(number & 0xFF) for number in numbers)
        return numbers + [0] * (self.field.count - len(numbers))

    def elements(self, values):
        value = values[self.field.name]
        return [texts.signed(ord(byte), 8) for byte in value] if isinstance(value, str) else value

    def shown(self, values):
        return ",".join(map(str, self.elements(values)))


WAYS = {"mac": Mac, "hex": Hex, "counted": Counted, "list": List, "unsigned": Unsigned}
WAY_OF_KIND = {"int": Decimal, "u_int": Decimal, "char": Text, "int64": Signed64, "double": Real}


def positions_of(record, notation):
    """The positions that a text's notation tells of a record."""
    positions = []
    for word in notation.split(","):
        found = re.fullmatch(r"\s*([\w.]+(?:\s*\+\s*\w+)*)(?:\s+as\s+(\w+))?\s*", word)
        names = re.split(r"\s*\+\s*", found.group(1)) if found else []
        for group in [names] if len(names) > 1 else [[name] for name in numbered("".join(names))]:
            unknown = [name for name in group if name not in record.kind]
            if not found or unknown or (found.group(2) or "list") not in WAYS:
                raise ValueError("%s: %r: expected fields of the record and a way to show them" % (record.name, word))
            field = record.kind[group[0]]
            usual = List if field.kind == "int" and field.count > 1 else WAY_OF_KIND[field.kind]
            way = WAYS.get(found.group(2), usual)
            positions.append(way(record, group))
    return positions
