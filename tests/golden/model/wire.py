"""Records on the wire: fields of five kinds, one behind the other.

Everything travels in units of 32 bits. The notation of a record is its fields
in wire order, between commas:

    ifx                 an int, one unit
    name[32]            a text or bytes, one unit a character
    err: u_int          an unsigned int, one unit
    count: int64        a 64-bit number, the unit of its low half first
    real1: double       two units, the high half first
    list1: int[8]       eight ints
    value1..value3      value1, value2 and value3; the same with [32] or a kind
"""
import re
import struct
from collections import namedtuple

from texts import signed

Field = namedtuple("Field", "name kind count")
UNITS = {"int": 1, "u_int": 1, "char": 1, "int64": 2, "double": 2}


def int64_units(value):
    """The units of a 64-bit number.

    >>> int64_units(2**32 + 2), int64_units(-1)
    ([2, 1], [-1, -1])
    """
    return [signed(value, 32), signed(value >> 32, 32)]


def double_units(value):
    """The units of a double.

    >>> double_units(2.5), double_units(-0.0)
    ([1074003968, 0], [-2147483648, 0])
    """
    return list(struct.unpack(">ii", struct.pack(">d", value)))


def numbered(name):
    """The names of a range.

    >>> numbered("value9..value11"), numbered("oper")
    (['value9', 'value10', 'value11'], ['oper'])
    """
    found = re.fullmatch(r"(\w*?)(\d+)\.\.(\w*?)(\d+)", name)
    if not found:
        return [name]
    if found.group(1) != found.group(3):
        raise ValueError("%s: expected one name with two numbers" % name)
    return [found.group(1) + str(number) for number in range(int(found.group(2)), int(found.group(4)) + 1)]


def fields_of(notation):
    """The fields that a record's notation tells.

    >>> fields_of("ifx, name[32], rate0..rate1: int64, list1: int[8]")[2:]
    [Field(name='rate0', kind='int64', count=1), Field(name='rate1', kind='int64', count=1), \
Field(name='list1', kind='int', count=8)]
    """
    fields = []
    for word in notation.split(","):
        found = re.fullmatch(r"\s*([\w.]+)(?:\[(\d+)\]|:\s*(\w+)(?:\[(\d+)\])?)?\s*", word)
        if not found or (found.group(3) or "int") not in UNITS:
            raise ValueError("%r: expected a field" % word)
        name, length, kind, count = found.groups()
        for each in numbered(name):
            fields.append(Field(each, "char", int(length)) if length else Field(each, kind or "int", int(count or 1)))
    return fields


class Record:
    """A record: its name, its fields, and the way between values and units.

    A value is an int (of ints and 64-bit numbers, signed), a float, a string
    of bytes, or a list of ints; to encode, a string may also be its units.

    >>> record = Record("example", "ifx, name[4], count: int64, real: double")
    >>> record.units
    9
    >>> record.encode({"ifx": -1, "name": "\\xa9", "count": 2**32 + 2, "real": 2.5})
    [-1, -87, 0, 0, 0, 2, 1, 1074003968, 0]
    >>> record.encode({"real": -0.0})[7:]
    [-2147483648, 0]
    >>> record.decode([3, 0x141, 169, -87, 256, -1, -1, 1074003968, 0])
    {'ifx': 3, 'name': 'A\\xa9\\xa9\\x00', 'count': -1, 'real': 2.5}
    """

    def __init__(self, name, notation):
        self.name = name
        self.fields = fields_of(notation)
        self.kind = {field.name: field for field in self.fields}
        self.units = sum(map(self.size_of, self.fields))

    @staticmethod
    def size_of(field):
        return UNITS[field.kind] * field.count

    def encode(self, values):
        """Units of values; what is not given is zero. A character's unit is
        that of a host whose char is signed."""
        units = []
        for field in self.fields:
            value = values.get(field.name)
            if field.kind == "char":
                characters = value if isinstance(value, list) else [signed(ord(byte), 8) for byte in value or ""]
                units += characters + [0] * (field.count - len(characters))
            elif field.kind == "double":
                units += double_units(0.0 if value is None else value)  # a negative zero is false too
            elif field.kind == "int64":
                units += int64_units(value or 0)
            elif field.count > 1:
                units += value or [0] * field.count
            else:
                units.append(signed(value or 0, 32))
        if len(units) != self.units:
            raise ValueError("%s: expected values of %d units, found %d" % (self.name, self.units, len(units)))
        return units

    def decode(self, units):
        """Values of units; of a character's unit counts the low byte."""
        if len(units) != self.units:
            raise ValueError("%s: expected %d units, found %d" % (self.name, self.units, len(units)))
        values, place = {}, 0
        for field in self.fields:
            part = units[place : place + self.size_of(field)]
            place += len(part)
            if field.kind == "char":
                values[field.name] = "".join(chr(unit & 0xFF) for unit in part)
            elif field.kind == "double":
                values[field.name] = struct.unpack(">d", struct.pack(">II", *(unit & 0xFFFFFFFF for unit in part)))[0]
            elif field.kind == "int64":
                values[field.name] = signed((part[1] << 32) | (part[0] & 0xFFFFFFFF), 64)
            else:
                numbers = [signed(unit, 32) for unit in part]
                values[field.name] = numbers if field.count > 1 else numbers[0]
        return values

    def octets_from(self, name, values):
        """The bytes of an array and of the arrays right behind it."""
        behind = self.fields[[field.name for field in self.fields].index(name) :]
        octets = []
        for field in behind:
            if field.kind != "char":
                break
            octets += map(ord, values[field.name])
        return octets
