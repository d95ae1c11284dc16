#!/usr/bin/env python3
"""The version of a release, in every file that cannot ask CMakeLists.txt for it.

    ./dev release check           every copy of the version is that of CMakeLists.txt
    ./dev release begin VERSION   what is worked on from here on is VERSION
    ./dev release finish [DATE]   VERSION is released, today or on DATE (2026-11-21)

RELEASE.md says when. Another copy gets a line in COPIES."""
import datetime
import pathlib
import re
import sys

SOURCE = pathlib.Path(__file__).resolve().parent.parent

# The file, and the text around its version.
MASTER = ("CMakeLists.txt", "project(librpc VERSION ", " LANGUAGES")
COPIES = (
    ("librpc-*.rockspec", '\nversion = "', '-1"\n'),
    ("librpc-*.rockspec", ', tag = "v', '" }\n'),
    ("contrib/openwrt/Makefile", "\nPKG_VERSION:=", "\n"),
    ("docs/openapi.json", '"title": "librpc gateway",\n  "version": "', '"'),
    ("docs/man/librpc.3", ' "librpc ', '" "'),
    ("docs/man/librpc.record.3", ' "librpc ', '" "'),
    ("docs/man/rpcctl.1", ' "librpc ', '" "'),
    ("CHANGELOG.md", "\n## ", " ("),
)
NUMBER = r"\d+\.\d+\.\d+"


def fail(where, expected, found):
    sys.exit(f"release: {where}: expected {expected}, found {found}")


def file_of(pattern):
    found = sorted(SOURCE.glob(pattern))
    if len(found) != 1:
        fail(pattern, "one file", [path.name for path in found])
    return found[0]


def version_in(copy):
    """The first version between the copy's two texts, and where it stands."""
    name, before, after = copy
    text = file_of(name).read_text(encoding="utf-8")
    found = re.search(re.escape(before) + f"({NUMBER})" + re.escape(after), text)
    if not found:
        fail(name, f"{before}VERSION{after}".strip(), "no such line")
    return found


def set_version(copy, version):
    found = version_in(copy)
    path = file_of(copy[0])
    path.write_text(found.string[:found.start(1)] + version + found.string[found.end(1):], encoding="utf-8")


def check():
    version = version_in(MASTER)[1]
    for copy in COPIES:
        found = version_in(copy)[1]
        if found != version:
            fail(copy[0], f"{version}, as in {MASTER[0]}", found)
    rockspec = file_of("librpc-*.rockspec").name
    if rockspec != f"librpc-{version}-1.rockspec":
        fail(rockspec, f"librpc-{version}-1.rockspec", "that name")
    return version


def newest_change():
    """The heading of CHANGELOG.md's first release: the text from it on, and where it is."""
    text = (SOURCE / "CHANGELOG.md").read_text(encoding="utf-8")
    return re.search(rf"^## ({NUMBER}) \((.*)\)$", text, re.MULTILINE)


def begin(version):
    if not re.fullmatch(NUMBER, version):
        fail("VERSION", "three numbers with dots between", f"'{version}'")
    old = check()
    if [int(part) for part in version.split(".")] <= [int(part) for part in old.split(".")]:
        fail("VERSION", f"a later one than {old}", version)
    change = newest_change()
    if change[2] == "not yet released":  # it gets another number
        set_version(COPIES[-1], version)
    else:
        text = change.string
        (SOURCE / "CHANGELOG.md").write_text(
            f"{text[:change.start()]}## {version} (not yet released)\n\n{text[change.start():]}", encoding="utf-8")
    for copy in (MASTER, *COPIES[:-1]):
        set_version(copy, version)
    file_of("librpc-*.rockspec").rename(SOURCE / f"librpc-{version}-1.rockspec")


def finish(date):
    try:
        datetime.date.fromisoformat(date)
    except ValueError:
        fail("DATE", "year-month-day", f"'{date}'")
    version = check()
    change = newest_change()
    if change[2] != "not yet released":
        fail("CHANGELOG.md", f"{version} (not yet released)", change[0])
    text = change.string
    if not re.match(r"\n+- ", text[change.end():]):
        fail("CHANGELOG.md", f"what is new in {version}", "nothing under its heading")
    (SOURCE / "CHANGELOG.md").write_text(f"{text[:change.start(2)]}{date}{text[change.end(2):]}", encoding="utf-8")


def main():
    command, arguments = (sys.argv[1:2] or [""])[0], sys.argv[2:]
    if command == "check" and not arguments:
        print(check())
    elif command == "begin" and len(arguments) == 1:
        begin(arguments[0])
    elif command == "finish" and len(arguments) <= 1:
        finish(arguments[0] if arguments else datetime.date.today().isoformat())
    else:
        fail("arguments", "check, begin VERSION or finish [DATE]", " ".join(sys.argv[1:]) or "none")


main()
