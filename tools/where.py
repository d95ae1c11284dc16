#!/usr/bin/env python3
"""Prints where something stands, a line each: FILE:LINE: TEXT.

    ./dev where NAME...

A NAME is an API (oltmib_devinfo_get_1), a converter (str2arg_devinfo), a record
(oltmib_DevInfoEntry), an XDR routine (xdr_oltmib_DevInfoEntry), a table (devinfo), a
field (hostname; devinfo.hostname or oltmib_DevInfoEntry.hostname for one), the name
that a file of names gives a field (portinfo.link), a trace line as it is printed
("[str2arg_devinfo: 28]"), or any function, type or constant of the sources. Editors find the same by `ctags -R`, whose patterns are
.ctags.d/librpc.ctags."""
import difflib
import json
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]


def fail(where, expected, found):
    sys.exit(f"where: {where}: expected {expected}, found {found}")


def tags():
    """All that ctags finds in the sources that the repository knows."""
    files = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "rpc", "common", "services", "sim", "tools",
                            "lua", "bin", "web", "bench"], cwd=ROOT, stdout=subprocess.PIPE, text=True, check=True).stdout
    files = "\n".join(name for name in files.split("\n") if (ROOT / name).is_file() and "/vendor/" not in name)
    made = subprocess.run(["ctags", "--options=.ctags.d/librpc.ctags", "--output-format=json", "-L", "-", "-f", "-"],
                          cwd=ROOT, input=files, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
    if made.returncode != 0:  # it warns of names that it cannot write, which nobody asks for
        fail("ctags", "success", f"status {made.returncode}: {made.stderr}")
    return [tag for tag in map(json.loads, made.stdout.splitlines()) if tag["_type"] == "tag"]


def line_of(tag):
    return (ROOT / tag["path"]).read_text().splitlines()[tag["line"] - 1].strip()


def record_of(table, known):
    """The record that a table is of: the second word of its row."""
    for tag in known:
        if tag["kind"] == "table" and tag["name"] == table:
            return re.match(r"\w+\(\w+, *(\w+)", line_of(tag))[1]
    return table


def table_around(tag):
    """The table of a file of names that a line of it belongs to."""
    lines = (ROOT / tag["path"]).read_text().splitlines()[:tag["line"]]
    return next((found[1] for found in map(re.compile(r"  (\w+) = \{").match, reversed(lines)) if found), None)


def members(owner, field, known):
    record = record_of(owner, known)
    named = [tag for tag in known if tag["name"] == field]
    return [tag for tag in named if tag["kind"] == "member" and tag.get("scope", "").split("::")[-1] == record
            or tag["kind"] == "fieldname" and table_around(tag) == owner]


def trace_lines(function, number, known):
    found = [tag for tag in known if tag["name"] == f"{function}: {number}"]
    if found:
        return found
    paths = {tag["path"] for tag in known if tag["name"] == function}
    return [tag for tag in known if tag["name"] == f": {number}" and tag["path"] in paths]


def find(name, known):
    trace = re.fullmatch(r"\[?(\w+): ?(\d+)\]?.*", name)
    if trace:
        return trace_lines(trace[1], trace[2], known)
    owned = re.fullmatch(r"(\w+)(?:\.|::)(\w+)", name)
    if owned:
        return members(owned[1], owned[2], known)
    return [tag for tag in known if tag["name"] == name]


def main():
    if len(sys.argv) < 2 or sys.argv[1].startswith("-"):
        fail("arguments", "NAME...", " ".join(sys.argv[1:]) or "none")
    known = tags()
    for name in sys.argv[1:]:
        found = {(tag["path"], tag["line"]): line_of(tag) for tag in find(name, known)}
        if not found:
            near = difflib.get_close_matches(name, {tag["name"] for tag in known}, 3)
            fail(name, "a name of the sources" + (f" (did you mean {', '.join(near)}?)" if near else ""), "none")
        for (path, line), text in sorted(found.items()):
            print(f"{path}:{line}: {text}")


if __name__ == "__main__":
    main()
