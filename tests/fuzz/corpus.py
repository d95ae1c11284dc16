#!/usr/bin/env python3
"""Kept inputs, many in one text file, as files that a fuzzer reads, and back.

    corpus.py unpack FILE FOLDER
    corpus.py pack FOLDER FILE

A line is a name, a tab and the bytes, of which a backslash and what is not
printable ASCII stand as \\xNN. Names chosen by hand (edge_*) come first."""
import pathlib
import re
import sys


def fail(where, expected, found):
    sys.exit(f"corpus: {where}: expected {expected}, found {found}")


def escaped(content):
    return "".join(chr(byte) if 32 <= byte < 127 and byte != 92 else f"\\x{byte:02x}" for byte in content)


def bytes_of(text):
    return re.sub(rb"\\x([0-9a-f]{2})", lambda match: bytes([int(match[1], 16)]), text.encode())


def unpack(file, folder):
    folder.mkdir(parents=True, exist_ok=True)
    for number, line in enumerate(file.read_text().splitlines(), 1):
        name, tab, text = line.partition("\t")
        if not tab or not re.fullmatch(r"\w+", name):
            fail(f"{file}:{number}", "a name, a tab and bytes", line[:40])
        (folder / name).write_bytes(bytes_of(text))


def pack(folder, file):
    names = sorted((path.name for path in folder.iterdir()), key=lambda name: (not name.startswith("edge_"), name))
    if not names:
        fail(folder, "inputs", "none")
    file.write_text("".join(f"{name}\t{escaped((folder / name).read_bytes())}\n" for name in names))


if len(sys.argv) != 4 or sys.argv[1] not in ("pack", "unpack"):
    fail("arguments", "pack FOLDER FILE or unpack FILE FOLDER", " ".join(sys.argv[1:]))
{"pack": pack, "unpack": unpack}[sys.argv[1]](pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3]))
