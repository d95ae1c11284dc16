"""A vector: what an API sends for an argument, and the text it makes of a
reply; and how one is written down. ../golden_file.h tells the file's form."""
import struct
from collections import namedtuple

from texts import signed

Vector = namedtuple("Vector", "api argument request reply text traces")


def vector_of(api, argument, reply):
    """Everything that follows from an argument and a reply's units."""
    request = api.table.read(argument)
    sent = api.request.encode(request.values) if api.request else []
    if api.reply:
        text, traces = api.table.show(api.reply.decode(reply))
    elif api.through_record:
        text, traces = status_through_record(api.table, reply[0])
    else:
        text, traces = "%d" % signed(reply[0], 32), []
    return Vector(api, argument, sent, reply, text, request.traces + traces)


def status_through_record(table, status):
    """A status that a record's formatter shows: it lies at the head of a
    record of zeroes. Where a text stands there its bytes are the host's, so
    that only a status with the same bytes from either end has one text."""
    units = [0] * table.record.units
    units[0] = status
    if table.record.fields[0].kind == "char":
        octets = struct.pack(">I", status & 0xFFFFFFFF)
        if octets != octets[::-1]:
            return None, []
        units[: len(octets)] = octets
    return table.show(table.record.decode(units))


def escaped(text, quotes=""):
    """Text of a vector file; `quotes` where a quote would end it.

    >>> print(escaped('a"\\\\\\xa9\\n b '), escaped('a"', '"'))
    a"\\x5c\\xa9\\x0a b\\x20 a\\x22
    """
    shown = "".join(c if " " <= c <= "~" and c not in "\\" + quotes else "\\x%02x" % ord(c) for c in text)
    return shown[:-1] + "\\x20" if shown.endswith(" ") else shown


def characters_written(units):
    """Characters as units: runs that can be printed between quotes.

    >>> print(*characters_written([117, 112, 0, 0, 0, -87, 256, 32]))
    "up" 0*3 -87 256 " "
    """
    words, place = [], 0
    while place < len(units):
        start = place
        if not units[place]:
            while place < len(units) and not units[place]:
                place += 1
            words.append("0" if place == start + 1 else "0*%d" % (place - start))
        elif 32 <= units[place] < 127:
            while place < len(units) and 32 <= units[place] < 127:
                place += 1
            words.append('"%s"' % "".join(chr(u) if u not in (34, 92) else "\\x%02x" % u for u in units[start:place]))
        else:
            place += 1
            words.append(str(signed(units[start], 32)))
    return words


def units_written(record, units):
    """Units, each field by itself; zeroes of several numbers together.

    >>> from wire import Record
    >>> print(units_written(Record("example", "a, name[8], b, c, d"), [1, 117, 112, 0, 0, 0, 0, 0, 0, 0, 0, 7]))
    1 "up" 0*6 0*2 7
    """
    if record is None:
        return " ".join(str(signed(unit, 32)) for unit in units)
    words, place, numbers = [], 0, []
    for field in record.fields + [None]:
        if field and field.kind != "char":
            size = record.size_of(field)
            numbers += units[place : place + size]
            place += size
            continue
        while numbers:
            zeroes = next((number for number, unit in enumerate(numbers) if unit), len(numbers))
            words.append(str(signed(numbers[0], 32)) if zeroes < 2 else "0*%d" % zeroes)
            del numbers[: max(1, zeroes)]
        if field:
            words += characters_written(units[place : place + field.count])
            place += field.count
    return " ".join(words)


def written(vector):
    """A vector's block, as lines."""
    lines = [("api", vector.api.name), ("arg", escaped(vector.argument)),
             ("req", units_written(vector.api.request, vector.request)),
             ("rep", units_written(vector.api.reply, vector.reply))]
    if vector.text is not None:
        lines.append(("txt", escaped(vector.text)))
    lines += [("trc", escaped(trace)) for trace in vector.traces]
    return ["%s %s" % line if line[1] else line[0] for line in lines]
