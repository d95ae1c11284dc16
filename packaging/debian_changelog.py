#!/usr/bin/env python3
"""Writes debian/changelog, made of CHANGELOG.md.

    debian_changelog.py SOURCE TIME

A release there opens with `## VERSION (DATE)`; one that is not yet released gets
the date TIME, in seconds since 1970. The newest must be the version of the
project in CMakeLists.txt, which is the only place where that is set.
"""
import datetime
import email.utils
import pathlib
import re
import sys
import textwrap


def fail(where, expected, found):
    sys.exit(f"debian_changelog: {where}: expected {expected}, found {found}")


source, time = pathlib.Path(sys.argv[1]), int(sys.argv[2])
cmake = (source / "CMakeLists.txt").read_text(encoding="utf-8")
version = re.search(r"^project\(librpc VERSION (\S+)", cmake, re.MULTILINE).group(1)
control = (source / "packaging/debian/control").read_text(encoding="utf-8")
maintainer = re.search(r"^Maintainer: (.*)$", control, re.MULTILINE).group(1)

releases = re.split(r"^## ", (source / "CHANGELOG.md").read_text(encoding="utf-8"), flags=re.MULTILINE)[1:]
for number, release in enumerate(releases):
    heading, _, body = release.partition("\n")
    match = re.fullmatch(r"(\S+) \((.*)\)", heading)
    if not match:
        fail("CHANGELOG.md", "`## VERSION (DATE)`", f"'## {heading}'")
    if number == 0 and match[1] != version:
        fail("CHANGELOG.md", f"{version} first, as in CMakeLists.txt", match[1])
    seconds = time
    if re.fullmatch(r"\d{4}-\d\d-\d\d", match[2]):
        seconds = datetime.datetime.fromisoformat(match[2]).replace(tzinfo=datetime.timezone.utc).timestamp()
    elif number:
        fail("CHANGELOG.md", f"{match[1]} (YEAR-MONTH-DAY)", f"'{heading}'")
    print(f"librpc ({match[1]}-1) unstable; urgency=medium\n")
    for entry in re.findall(r"^- (.*(?:\n  .*)*)", body, re.MULTILINE):
        print(textwrap.fill(" ".join(entry.split()), 78, initial_indent="  * ", subsequent_indent="    ",
                            break_long_words=False, break_on_hyphens=False))
    print(f"\n -- {maintainer}  {email.utils.formatdate(seconds)}\n")
