"""What stands in vectors: arguments and replies of three sorts.

    plain    short values that a reader can check by hand: 3, eth0/3
    edges    the first and last values of each sort, flaws, texts too long;
             which of them stands where goes round from API to API
    random   anything, from dice

An argument's positions and a reply's fields are each made by their sort, which
is their class in positions.py. A new sort has its line in SORTS.
"""
import random
from fractions import Fraction

import positions
from texts import INT_MAX, INT_MIN
from wire import double_units, int64_units

WORDS = ["eth0/3", "uplink", "10.0.0.1", "public", "lan 20", "static", "note"]

# Beyond an int hosts agree on numbers whose low 32 bits are an int's first or
# last. The two that they do not agree on are golden_test.cpp's to tell apart:
# they stand as whole positions that are read as numbers, nowhere else.
APART = ["2147483648", "4294967295"]
NUMBERS = [str(INT_MIN), "007", "6442450943", "", "+9", "-", APART[0], " 12", "12abc", "-6442450944", "1.9", "- 3",
           str(INT_MAX), "abc", "-0", "0x10", APART[1], "1e3", "\t7", "--5", "\n\v\f\r-8", "+-5", "9 9", "\xa05"]
INTS = [INT_MIN, 0, INT_MAX, -1, 65536, 128]
INTS_OF_64_BITS = [-1, 2**32 + 2, -(2**63), 2**63 - 1, 2**32 - 1, 10**18, 2**32, 0, INT_MIN, INT_MAX + 1]
REALS = ["2.5", "-0", "1e3", "12.345x", "abc", ".5", "5.", "1e400", "-1e-400", "-3.75", "-inf", "0x1p4", " \t1.5", "1e",
         "+.25e-2", "123456789.987654321", "--1", "1,5"]
DOUBLES = [-0.0, 0.005, -1e-9, 123456789.987654321, 1e15 / 3, float("inf"), -3.75, 99.995, -1e22, 5e-324]
MACS = ["00:11:22:aa:bb:cc", "00-11-22-AA-BB-CC", "0011.22aa.bbcc", "001122AABBCC", "", "zz", "00:11:22",
        "0011.22aa.bb", "1:2:3:4:5:6", "00:11:22:33:44:55:66", "a0:11:22-33:44:55", "a0-11:22-33-44-55", "0:1:2.3",
        "  00: 11:22:33:44:55", "+1:-2:3:4:5:6", "00:11:22:33:44:5g", "00112233445", "not an address",
        "AaBb.CcDd.EeFf", "\xff\xff", "00-11-22-33-44-5",
        "1 2 3 4 5 6", "00:11:22:33:44 :55", "0011.2233"]
DIGITS = ["0a0b0c", "", "0", "0a0b0", "f0" * 33, "zz11", "11zz22", " 12", "1 2 3 4 ", "-5+7", "ffFFffFF",
          "8000001122334455", "01" * 9, "\xff1", "12  ", "1" * 63]
LENGTHS = [33, 0, 50, 51, -1, 32, 49, 1000, INT_MIN, 3, INT_MAX]


class Dice:
    """Random values: the same for a seed on every host."""

    def __init__(self, seed):
        self.next = random.Random(seed).random  # the one method that promises it

    def below(self, number):
        return int(self.next() * number)

    def between(self, low, high):
        return low + self.below(high - low + 1)

    def one_of(self, values):
        return values[self.below(len(values))]

    def percent(self, number):
        return self.below(100) < number


def filled(size):
    """Characters that tell their place."""
    return ("abcdefghijklmnopqrstuvwxyz" * (size // 26 + 1))[:size]


def characters(text, size):
    return [ord(character) for character in text.ljust(size, "\0")]


def high(turn, size):
    """Some of the bytes from 128 on, others each turn."""
    return [128 + (16 * turn + number) % 128 for number in range(min(size, 16))]


class Numbers:
    edges = NUMBERS
    scarce = False  # whether so few tables have the sort that a service shows all of its edges

    def plain(self, position, number):
        return str(number)

    def random(self, position, dice):
        if dice.percent(20):
            return dice.one_of(self.edges)
        return str(dice.below(100) if dice.percent(50) else dice.between(INT_MIN, INT_MAX))

    def edge(self, position, turn):
        return self.edges[turn % len(self.edges)]

    # of a reply: a field's units
    def plain_units(self, field, number):
        return [number] * field.count

    def edge_units(self, field, turn):
        return [INTS[(turn + number) % len(INTS)] for number in range(field.count)]

    def random_units(self, field, dice):
        return [dice.below(100) if dice.percent(50) else dice.between(INT_MIN, INT_MAX) for _ in range(field.count)]


class Wide(Numbers):
    def plain_units(self, field, number):
        return [number, 0]

    def edge_units(self, field, turn):
        return int64_units(INTS_OF_64_BITS[turn % len(INTS_OF_64_BITS)])

    def random_units(self, field, dice):
        return [dice.between(INT_MIN, INT_MAX), dice.between(INT_MIN, INT_MAX) if dice.percent(60) else 0]


class Reals(Numbers):
    edges = REALS
    scarce = True

    def plain(self, position, number):
        return "%d.5" % number

    def random(self, position, dice):
        return dice.one_of(REALS) if dice.percent(30) else repr(self.value(dice))

    def value(self, dice):
        """A number of which two decimals are no tie."""
        while True:
            value = (dice.next() - 0.5) * 10 ** dice.between(-3, 9)
            if Fraction(value) * 200 % 2 != 1:
                return value

    def plain_units(self, field, number):
        return double_units(number + 0.5)

    def edge_units(self, field, turn):
        return double_units(DOUBLES[turn % len(DOUBLES)])

    def random_units(self, field, dice):
        return double_units(self.value(dice))


class Texts:
    scarce = False

    def plain(self, position, number):
        return WORDS[number % len(WORDS)][: position.field.count - 1]

    def edge(self, position, turn):
        size = position.field.count
        edges = [filled(size), "", filled(size - 1), "".join(map(chr, high(turn, 40))), '"\\\'%s%n%', filled(size + 9),
                 "\x01\t\r\n\x1b\x7f", "  a  ", "Z\xc3\xbcrich", "-1", "3" * (size // 4), "0"]
        return edges[turn % len(edges)]

    def length(self, size, dice):
        if dice.percent(70):
            return dice.below(13)
        return dice.below(size + 5 if size <= 80 or dice.percent(10) else 80)

    def random(self, position, dice):
        length = self.length(position.field.count, dice)
        return "".join(self.character(dice) for _ in range(length)).replace("&", "+")

    def character(self, dice):
        return chr(dice.between(97, 122) if dice.percent(70) else dice.between(1, 255))

    def plain_units(self, field, number):
        return characters(WORDS[number % len(WORDS)][: field.count], field.count)

    def edge_units(self, field, turn):
        size = field.count
        edges = [characters(filled(size), size),  # no NUL
                 characters("\0AB", size), characters(filled(size - 1), size), high(turn, size),
                 [unit - 256 for unit in high(turn, size)],
                 [117, 112, 256, 120],  # of a character's unit counts the low byte
                 [0x141, -191, 0x7FFFFF42], characters("\x01\t\r\n\x1b\x7f", size), characters('"\\\'%s&%n$', size), []]
        return (edges[turn % len(edges)] + [0] * size)[:size]

    def random_units(self, field, dice):
        text = [ord(self.character(dice)) for _ in range(self.length(field.count, dice))]
        text = [unit - 256 if unit > 127 and dice.percent(50) else unit for unit in text]
        if dice.percent(30):  # what stands behind the NUL is nobody's
            text += [0] + [dice.between(-128, 255) for _ in range(dice.below(4))]
        return (text + [0] * field.count)[: field.count]


class Octets(Texts):
    """Bytes that are shown otherwise than as a text."""

    def plain_units(self, field, number):
        return [(17 * place + number) % 256 for place in range(field.count)]

    def edge_units(self, field, turn):
        edges = [[-1], [256, 255, -128, 128, 0x1AB, 10], [0, 17, 34, -86, -69, -52], [0]]
        return (edges[turn % len(edges)] * field.count)[: field.count]

    def random_units(self, field, dice):
        return [dice.between(-128, 255) for _ in range(field.count)]


class Macs(Octets):
    scarce = True

    def plain(self, position, number):
        return "00-11-22-33-44-%02X" % number

    def edge(self, position, turn):
        return MACS[turn % len(MACS)]

    def random(self, position, dice):
        if dice.percent(30):
            return dice.one_of(MACS)
        form = dice.one_of(["%02x:%02x:%02x:%02x:%02x:%02x", "%02X-%02X-%02X-%02X-%02X-%02X",
                            "%02x%02x.%02X%02x.%02x%02x", "%02X%02x%02x%02x%02x%02X", "%x:%x:%x:%x:%x:%x"])
        return form % tuple(dice.below(256) for _ in range(6))


class Digits(Octets):
    scarce = True

    def plain(self, position, number):
        return "0a0b%02x" % number

    def edge(self, position, turn):
        return DIGITS[turn % len(DIGITS)]

    def random(self, position, dice):
        if dice.percent(30):
            return dice.one_of(DIGITS)
        length = dice.below(2 * position.field.count + 9)
        return "".join(dice.one_of("0123456789abcdefABCDEF") for _ in range(length))


class Lists(Texts):
    def items(self, position):
        """What stands between the commas. A byte of 128 or more is shown as the
        host's char has it: only where no trace shows it may it stand."""
        return ["5", "63", "", "127", "x", "256", " 5", "300", "0", "7x"] + (
            [] if position.traced else ["255", "-1", str(INT_MIN), "200"])

    def plain(self, position, number):
        return "1,2,%d" % number

    def edge(self, position, turn):
        items = self.items(position)
        edges = ["", items, items * (position.field.count // 8), ["1"], ["00063"] * 64, [""] * 9,
                 [str(number) for number in range(position.field.count + 2)]]
        return ",".join(edges[turn % len(edges)])

    def random(self, position, dice):
        items = self.items(position)
        return ",".join(dice.one_of(items) for _ in range(dice.below(position.field.count + 3)))

    def plain_units(self, field, number):
        return [number + place for place in range(field.count)]

    def edge_units(self, field, turn):
        if field.kind == "char":
            return [(turn + 5 * place) % 128 for place in range(field.count)]
        return Numbers().edge_units(field, turn)

    def random_units(self, field, dice):
        if field.kind == "char":
            return [dice.below(128) for _ in range(field.count)]
        return Numbers().random_units(field, dice)


class Lengths(Numbers):
    """A count of bytes, which is no position of its own."""

    scarce = True

    def plain_units(self, field, number):
        return [3]

    def edge_units(self, field, turn):
        return [LENGTHS[turn % len(LENGTHS)]]

    def random_units(self, field, dice):
        return [dice.between(-1, 60)]


SORTS = {positions.Decimal: Numbers(), positions.Unsigned: Numbers(), positions.Signed64: Numbers(),
         positions.Real: Reals(), positions.Text: Texts(), positions.Mac: Macs(), positions.Hex: Digits(),
         positions.Counted: Digits(), positions.List: Lists()}
SORT_OF_KIND = {"int": Numbers(), "u_int": Numbers(), "char": Texts(), "int64": Wide(), "double": Reals()}
