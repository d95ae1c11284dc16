"""How a position of a text becomes a value and a value becomes a text.

Texts are strings whose characters are bytes, 0 to 255 (latin-1); an argument
ends at its first NUL before it comes here. Each function is what the pages'
convention asks of it, said once more in Python: none looks at the library.
"""
import re

BLANKS = " \t\n\v\f\r"
INT_MAX = 2**31 - 1
INT_MIN = -(2**31)
LONG_MAX = 2**63 - 1


class HostsDiffer(ValueError):
    """A text that C libraries read differently: no vector may hold it."""


def signed(value, bits):
    """The low bits of a number, as a signed number.

    >>> signed(2**31, 32), signed(-1, 32), signed(300, 8), signed(200, 8)
    (-2147483648, -1, 44, -56)
    """
    value &= (1 << bits) - 1
    return value - (1 << bits) if value >> (bits - 1) else value


def atoi(text):
    """A decimal number at the head of a text; 0 where there is none.

    >>> [atoi(text) for text in ("42", " 12", "+9", "-0", "007", "12abc", "1.9", "0x10")]
    [42, 12, 9, 0, 7, 12, 1, 0]
    >>> [atoi(text) for text in ("", "abc", "-", "- 3", "+-5")]
    [0, 0, 0, 0, 0]

    Beyond an int the number is read as a long of 64 bits and cut:

    >>> [atoi(text) for text in ("2147483648", "4294967295", "6442450943", "-6442450944")]
    [-2147483648, -1, 2147483647, -2147483648]
    >>> atoi("99999999999999999999"), atoi("-99999999999999999999")
    (-1, 0)
    """
    number = re.match(r"[+-]?[0-9]+", text.lstrip(BLANKS))
    value = int(number.group()) if number else 0
    return signed(max(-LONG_MAX - 1, min(LONG_MAX, value)), 32)


def atof(text):
    """A real number at the head of a text; 0 where there is none.

    >>> [atof(text) for text in ("2.5", " -3.75", "1e3", "12.345x", ".5", "5.", "1e", "0x1p4")]
    [2.5, -3.75, 1000.0, 12.345, 0.5, 5.0, 1.0, 16.0]
    >>> [atof(text) for text in ("", "abc", "-0", "1e400", "-INFinite")]
    [0.0, 0.0, -0.0, inf, -inf]
    """
    text = text.lstrip(BLANKS)
    number = re.match(r"[+-]?0x([0-9a-f]+\.?[0-9a-f]*|\.[0-9a-f]+)(p[+-]?[0-9]+)?", text, re.IGNORECASE)
    if number:
        return float.fromhex(number.group())
    number = re.match(r"[+-]?(([0-9]+\.?[0-9]*|\.[0-9]+)(e[+-]?[0-9]+)?|inf)", text, re.IGNORECASE)
    return float(number.group()) if number else 0.0


def two_decimals(value):
    """A real number with two decimals, rounded from its exact value.

    >>> [two_decimals(value) for value in (2.5, -0.0, -1e-9, 0.005, 1234.5678, float("inf"))]
    ['2.50', '-0.00', '-0.00', '0.01', '1234.57', 'inf']
    """
    return "%.2f" % value


def copy(text, size):
    """What an array of so many bytes keeps of a text: one less, and a NUL.

    >>> copy("eth0/3", 32), copy("eth0/3", 6), copy("", 6)
    ('eth0/3', 'eth0/', '')
    """
    return text[: size - 1]


def until_nul(array):
    """The text in an array, which may fill it without a NUL.

    >>> until_nul("up\\0\\0"), until_nul("up\\0x"), until_nul("down"), until_nul("\\0abc")
    ('up', 'up', 'down', '')
    """
    return array.split("\0")[0]


def split(text, separator):
    """The positions of a text: empty ones count, an empty text has one.

    >>> split("7&&x&", "&"), split("", "&")
    (['7', '', 'x', ''], [''])
    """
    return text.split(separator)


def split_runs(text, separators):
    """The positions of a text where runs of separators count as one: strtok.

    >>> split_runs("3&&$&$", "&$"), split_runs("&$3&$00-11&$$eth0", "&$"), split_runs("", "&$")
    (['3'], ['3', '00-11', 'eth0'], [])
    """
    return [part for part in re.split("[%s]" % re.escape(separators), text) if part]


def scan_hex(text, start):
    """One "%02x" of sscanf: its value and where it ended, or nothing.

    Blanks before it are passed over; a sign is one of its two characters.

    >>> scan_hex("1234", 0), scan_hex(" 12", 0), scan_hex("7", 0), scan_hex("f:", 0)
    ((18, 2), (18, 3), (7, 1), (15, 1))
    >>> scan_hex("-5", 0), scan_hex("+5", 0)
    ((251, 2), (5, 2))
    >>> scan_hex("zz", 0), scan_hex("", 0), scan_hex("--", 0), scan_hex("12", 2)
    (None, None, None, None)
    """
    while start < len(text) and text[start] in BLANKS:
        start += 1
    if re.match("[+-]?0x", text[start : start + 3], re.IGNORECASE):
        raise HostsDiffer("0x where two digits stand: " + repr(text))
    found = re.match(r"[0-9a-fA-F]{1,2}|[+-][0-9a-fA-F]", text[start:])
    return (int(found.group(), 16) & 0xFF, start + found.end()) if found else None


def read_mac(text):
    """The six bytes of a hardware address in one of its four notations.

    >>> read_mac("00:11:22:aa:bb:cc") == read_mac("0011.22aa.bbcc") == read_mac("001122AABBCC")
    True
    >>> read_mac("00-11-22-AA-BB-CC")
    [0, 17, 34, 170, 187, 204]

    What stands behind a flaw stays 0, and a dot decides before a colon does:

    >>> read_mac("00:11:zz:33"), read_mac("0011.22"), read_mac(""), read_mac("1:2:3.4:5:6")
    ([0, 17, 0, 0, 0, 0], [0, 17, 34, 0, 0, 0], [0, 0, 0, 0, 0, 0], [1, 0, 0, 0, 0, 0])
    >>> read_mac("1:2:3:4:5:6"), read_mac("00:11:22:33:44:55:66")
    ([1, 2, 3, 4, 5, 6], [0, 17, 34, 51, 68, 85])
    """
    notations = {".": " . . ", ":": ":::::", "-": "-----"}  # what stands behind each byte but the last
    between = next((notations[mark] for mark in notations if mark in text), "     ")
    octets, place = [], 0
    for number in range(6):
        if number and between[number - 1] != " ":
            if text[place : place + 1] != between[number - 1]:
                break
            place += 1
        found = scan_hex(text, place)
        if not found:
            break
        octets.append(found[0])
        place = found[1]
    return octets + [0] * (6 - len(octets))


def show_mac(octets):
    """A hardware address as the pages show it.

    >>> show_mac([0, 17, 34, 170, 187, 204])
    '00-11-22-AA-BB-CC'
    """
    return "-".join("%02X" % octet for octet in octets)


def read_hex(text, most):
    """Hexadecimal digits as bytes, at most so many.

    >>> read_hex("0a0B0c", 32), read_hex("0a0b0", 32), read_hex("0a0b0c", 2), read_hex("", 32)
    ([10, 11, 12], [10, 11], [10, 11], [])

    A pair that is none repeats the one before it, the first is then 0; each
    pair is looked for from its own place on, over blanks if there are any:

    >>> read_hex("0azz0c", 32), read_hex("zz11", 32), read_hex(" 12", 32)
    ([10, 10, 12], [0, 17], [18])
    """
    octets, last = [], 0
    for number in range(min(len(text) // 2, most)):
        found = scan_hex(text, 2 * number)
        last = found[0] if found else last
        octets.append(last)
    return octets


def show_hex(octets, room):
    """Bytes as hexadecimal digits, as far as room for a NUL remains.

    >>> show_hex([10, 11, 192], 100), show_hex([1, 2, 3], 5), show_hex([1, 2, 3], 6), show_hex([], 9)
    ('0a0bc0', '0102', '01020', '')
    """
    return "".join("%02x" % octet for octet in octets)[: room - 1]
