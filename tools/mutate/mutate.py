#!/usr/bin/env python3
"""Plants faults, one at a time, and shows those that no test catches.

    ./dev mutate [OPTION]... [PATH]...

PATHs are files and folders of the library (rpc, common, services) and of the Lua
programs (lua, web); all of them without any. Everything happens in a copy under
build-mutate/: a fault is planted, what it changes is built, and the tests run from
fast to slow until one fails. Faults that no test can catch stand in equivalent.txt
with the reason."""
import argparse
import collections
import pathlib
import re
import shutil
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).parent))
from faults import faults_of  # noqa: E402

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "build-mutate"
TREE, BUILD = WORK / "tree", WORK / "build"
EQUIVALENT = pathlib.Path(__file__).parent / "equivalent.txt"

# What is built and run for a file, from fast to slow. The simulated device is built
# once, before there is any fault. Tests of derived files are no witnesses:
# whoever changes the library makes them anew.
LIBRARY = (
    (("unit_test", "services_test", "golden_test", "calls_test"), "^(unit|services|golden)[.]|^calls[.](group|patient_mapper)"),
    (("rpc", "host_test"), r"^(host|calls\.lua5\.1|lua\.lua5\.1|e2e\.lua5\.1)"),
    (("all_but_device",), r"^(system_calls|memory|differential|fuzz|e2e)"),
)
MODULES = (((), r"^lua\.lua5\.1|^calls\.lua5\.1"), ((), "^(examples|generated)"))
COMMAND_LINE = (((), "rpcctl|output"), ((), r"^lua\.lua5\.1|examples"))
WEB = (((), r"^web\."),)
STAGES = (("lua/rpcctl", COMMAND_LINE), ("bin", COMMAND_LINE), ("lua", MODULES), ("web", WEB), ("", LIBRARY))

Planted = collections.namedtuple("Planted", "path line fault source")


def fail(where, expected, found):
    sys.exit(f"mutate: {where}: expected {expected}, found {found}")


def run(*command, cwd=ROOT, check=True, seconds=None):
    try:
        done = subprocess.run(command, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              timeout=seconds, errors="replace")
    except subprocess.TimeoutExpired:
        return None
    if check and done.returncode != 0:
        fail(" ".join(map(str, command[:3])), "success", done.stdout[-3000:])
    return done


def language_of(path):
    if path.suffix in (".cpp", ".h"):
        return "cpp"
    return "lua" if path.suffix in (".lua", ".cgi") or path.parts[0] in ("lua", "bin") else None


def files(paths):
    listed = run("git", "ls-files", "--", *paths).stdout.split()
    if not listed:
        fail(" ".join(paths), "files of this repository", "none")
    return [path for path in map(pathlib.Path, listed) if language_of(path)]


def changed_lines(reference, path):
    """The lines that the working tree has and the reference has not."""
    lines = set()
    for first, count in re.findall(r"^@@ [^+]*\+(\d+)(?:,(\d+))?", run(
            "git", "diff", "-U0", reference, "--", str(path)).stdout, re.MULTILINE):
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


def copy_tree():
    """The tree as it is; what has not changed keeps its time, so that little is built again."""
    wanted = {pathlib.Path(name) for name in run("git", "ls-files", "-co", "--exclude-standard").stdout.split()}
    for path in wanted:
        new, old = ROOT / path, TREE / path
        if not old.exists() or old.read_bytes() != new.read_bytes():
            old.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(new, old)
    for old in TREE.rglob("*"):
        if old.is_file() and old.relative_to(TREE) not in wanted:
            old.unlink()


def prepare():
    """A copy of the tree, built once."""
    copy_tree()
    run("cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
        "-DLIBRPC_TESTS=ON", "-DLIBRPC_WERROR=OFF")
    run("cmake", "--build", BUILD)


def test_targets():
    """Every target that a test wants but the device, which is to stay as it was."""
    listed = run("cmake", "--build", BUILD, "--target", "help").stdout
    return [name for name in re.findall(r"^([a-z]\w*): phony", listed, re.MULTILINE)
            if re.fullmatch(r"\w+_test|fuzz_\w+|e2e_\w+|calls_host|rpc\w*|failing|refuse|many_states|own_names", name)]


def tests(pattern, slow, jobs):
    command = ["ctest", "--test-dir", str(BUILD), "-R", pattern, "--stop-on-failure", "--timeout", "90", "-j", str(jobs)]
    return run(*command, *([] if slow else ["-LE", "slow"]), check=False)


def stages_of(path):
    return next(stages for prefix, stages in STAGES if path.as_posix().startswith(prefix))


def outcome(planted, options):
    """"caught by TEST", "does not compile" or "survived"."""
    for targets, pattern in stages_of(planted.path):
        if targets:
            wanted = test_targets() if targets == ("all_but_device",) else targets
            built = run("cmake", "--build", BUILD, "--target", *wanted, check=False, seconds=600)
            if built is None or built.returncode != 0:
                return "does not compile"
        done = tests(pattern, options.slow, options.jobs)
        failed = re.search(r"\d+ - (\S+) \((?:Failed|Timeout|SEGFAULT|Subprocess aborted|Child aborted|.*?)\)$",
                           done.stdout, re.MULTILINE)
        if done.returncode != 0:
            return f"caught by {failed[1] if failed else 'a test'}"
    return "survived"


def plant(planted, options):
    place = TREE / planted.path
    fault = planted.fault
    try:
        place.write_text(planted.source[:fault.start] + fault.text + planted.source[fault.end:])
        return outcome(planted, options)
    finally:
        place.write_text(planted.source)


def sample(faults, count, offset):
    """So many of them, evenly spread."""
    if not count or count >= len(faults):
        return faults
    return [faults[(i * len(faults) // count + offset) % len(faults)] for i in range(count)]


def main():
    parser = argparse.ArgumentParser(prog="./dev mutate", description=__doc__.split("\n\n")[0])
    parser.add_argument("paths", nargs="*", metavar="PATH")
    parser.add_argument("--changed", metavar="REF", help="only in lines that REF does not have")
    parser.add_argument("--sample", type=int, metavar="N", help="N of the faults, evenly spread")
    parser.add_argument("--offset", type=int, default=0, metavar="N", help="other ones: shifted by so many faults")
    parser.add_argument("--slow", action="store_true", help="also the tests that wait for deadlines")
    parser.add_argument("--list", action="store_true", help="only show the faults")
    parser.add_argument("--report", action="store_true", help="end well even with survivors")
    parser.add_argument("--jobs", type=int, default=4, metavar="N", help="tests at once")
    options = parser.parse_args()

    known = equivalents()
    paths = options.paths or ["rpc", "common", "services", "lua", "bin", "web"]
    found = [one for one in all_faults([path for path in paths if (ROOT / path).exists()], options.changed)
             if (one.path.as_posix(), one.fault.what, text_of(one)) not in known]
    chosen = sample(found, options.sample, options.offset)
    if options.list:
        for one in chosen:
            print(f"{one.path}:{one.line}: {one.fault.what}: {text_of(one)}")
    if options.list or not chosen:
        print(f"mutate: {len(chosen)} faults of {len(found)}")
        return 0

    print(f"mutate: {len(chosen)} faults of {len(found)}; building", flush=True)
    prepare()
    for pattern in {pattern for one in chosen for _, pattern in stages_of(one.path)}:
        done = tests(pattern, options.slow, options.jobs)
        if done.returncode != 0:
            fail("the tests without a fault", "success", done.stdout[-2000:])
    counts = collections.Counter()
    for number, one in enumerate(chosen, 1):
        result = plant(one, options)
        counts[result.split(" by ")[0]] += 1
        print(f"[{number}/{len(chosen)}] {one.path}:{one.line}: {one.fault.what}: {text_of(one)}\n    {result}", flush=True)
    matter = counts["caught"] + counts["survived"]
    share = 100 * counts["caught"] / matter if matter else 100
    print(f"mutate: {matter} faults planted, {counts['caught']} caught ({share:.0f}%), {counts['survived']} survived; "
          f"{counts['does not compile']} do not compile")
    return 1 if counts["survived"] and not options.report else 0


if __name__ == "__main__":
    sys.exit(main())
