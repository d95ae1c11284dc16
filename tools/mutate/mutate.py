#!/usr/bin/env python3
"""Plants faults, one at a time, and shows those that no test catches.

    ./dev mutate [OPTION]... [PATH]...

PATHs are files and folders of the library (rpc, common, services) and of the Lua
programs (lua, web); all of them without any. Everything happens in a copy under
build-mutate/: a fault is planted, what it changes is built, and the tests run from
fast to slow until one fails (witnesses.py). Faults that no test can catch stand in
equivalent.txt with the reason."""
import argparse
import collections
import pathlib
import re
import sys
import time

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent))
from faults import Fault, faults_of  # noqa: E402
from planting import Copy, fail, run  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parents[2]
EQUIVALENT = pathlib.Path(__file__).parent / "equivalent.txt"

Planted = collections.namedtuple("Planted", "path line fault source")


def language_of(path):
    if path.suffix in (".cpp", ".h"):
        return "cpp"
    return "lua" if path.suffix in (".lua", ".cgi") or path.parts[0] in ("lua", "bin") else None


def files(paths):
    listed = run("git", "ls-files", "--", *paths, cwd=ROOT).stdout.split()
    if not listed:
        fail(" ".join(paths), "files of this repository", "none")
    return [path for path in map(pathlib.Path, listed) if language_of(path)]


def changed_lines(reference, path):
    """The lines that the working tree has and the reference has not."""
    lines = set()
    for first, count in re.findall(r"^@@ [^+]*\+(\d+)(?:,(\d+))?", run(
            "git", "diff", "-U0", reference, "--", str(path), cwd=ROOT).stdout, re.MULTILINE):
        lines.update(range(int(first), int(first) + int(count or 1)))
    return lines


def all_faults(paths, reference):
    for path in files(paths):
        lines = changed_lines(reference, path) if reference else None
        source = (ROOT / path).read_text()
        for fault in faults_of(source, language_of(path)):
            line = source.count("\n", 0, fault.start) + 1
            if lines is None or line in lines:
                yield Planted(path, line, fault, source)


def text_of(planted):
    return planted.source.splitlines()[planted.line - 1].strip()


def equivalents():
    """{(path, what, line's text)} of equivalent.txt."""
    known = set()
    for number, line in enumerate(EQUIVALENT.read_text().splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        cells = [cell.strip() for cell in line.split(" | ")]
        if len(cells) != 4:
            fail(f"{EQUIVALENT.name}:{number}", "path | fault | line | reason", line)
        known.add((cells[0], cells[1], cells[2]))
    return known


def by_hand(path, paths):
    """Faults that somebody thought of: PATH | WHAT STANDS THERE, ONCE | WHAT STANDS THERE INSTEAD."""
    for number, line in enumerate(pathlib.Path(path).read_text().splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        name, old, new = (cell.strip() for cell in line.split(" | "))
        if not any(pathlib.Path(name).is_relative_to(one) for one in paths):
            continue
        source = (ROOT / name).read_text()
        if source.count(old) != 1:
            fail(f"{path}:{number}", f"'{old}' once in {name}", f"it {source.count(old)} times")
        start = source.index(old)
        yield Planted(pathlib.Path(name), source.count("\n", 0, start) + 1,
                      Fault(start, start + len(old), new, f"{old} -> {new}"), source)


def sample(faults, count, offset):
    """So many of them, evenly spread."""
    if not count or count >= len(faults):
        return faults
    return [faults[(i * len(faults) // count + offset) % len(faults)] for i in range(count)]


def plant_all(chosen, copy, end):
    """How many came to what."""
    counts = collections.Counter()
    for number, one in enumerate(chosen, 1):
        if time.monotonic() > end:
            print(f"mutate: the time is over, {len(chosen) - number + 1} faults were not planted")
            break
        begun = time.monotonic()
        result = copy.plant(one)
        counts[re.split(r" (?:by|in) ", result)[0]] += 1
        print(f"[{number}/{len(chosen)}] {one.path}:{one.line}: {one.fault.what}: {text_of(one)}\n"
              f"    {result} ({time.monotonic() - begun:.0f} s)", flush=True)
    return counts


def main():
    parser = argparse.ArgumentParser(prog="./dev mutate", description=__doc__.split("\n\n")[0])
    parser.add_argument("paths", nargs="*", metavar="PATH")
    parser.add_argument("--changed", metavar="REF", help="only in lines that REF does not have")
    parser.add_argument("--by-hand", metavar="FILE", help="the faults that the file has (by_hand.txt), no others")
    parser.add_argument("--sample", type=int, metavar="N", help="N of the faults, evenly spread")
    parser.add_argument("--offset", type=int, default=0, metavar="N", help="other ones: shifted by so many faults")
    parser.add_argument("--seconds", type=int, metavar="N", help="plant no other fault after so many, from the start")
    parser.add_argument("--stages", type=int, metavar="N", help="run the N quickest layers of the tests only")
    parser.add_argument("--slow", action="store_true", help="also the tests that wait for deadlines, and LuaJIT's")
    parser.add_argument("--list", action="store_true", help="only show the faults")
    parser.add_argument("--report", action="store_true", help="end well even with survivors")
    parser.add_argument("--copy", default=".", metavar="NAME", help="work in a copy of that name: two runs at once")
    parser.add_argument("--jobs", type=int, default=6, metavar="N", help="tests at once")
    options = parser.parse_args()
    end = time.monotonic() + (options.seconds or float("inf"))

    known = equivalents()
    paths = [path for path in options.paths or ["rpc", "common", "services", "lua", "bin", "web"] if (ROOT / path).exists()]
    found = list(by_hand(options.by_hand, paths) if options.by_hand else all_faults(paths, options.changed))
    found = [one for one in found if (one.path.as_posix(), one.fault.what, text_of(one)) not in known]
    chosen = sample(found, options.sample, options.offset)
    if options.list:
        for one in chosen:
            print(f"{one.path}:{one.line}: {one.fault.what}: {text_of(one)}")
    if options.list or not chosen:
        print(f"mutate: {len(chosen)} faults of {len(found)}")
        return 0

    print(f"mutate: {len(chosen)} faults of {len(found)}; building", flush=True)
    counts = plant_all(chosen, Copy(ROOT, options.copy, options.slow, options.jobs, options.stages), end)
    caught = counts["caught"] + counts["timed out"]
    matter = caught + counts["survived"]
    share = 100 * caught / matter if matter else 100
    print(f"mutate: {matter} faults planted, {caught} caught ({share:.0f}%), {counts['timed out']} of them by a time-out alone; "
          f"{counts['survived']} survived; {counts['does not compile']} do not compile")
    return 1 if counts["survived"] and not options.report else 0


if __name__ == "__main__":
    sys.exit(main())
