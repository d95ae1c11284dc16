"""The tests as witnesses of a fault. Each runs without one first: that it passes, and
how long it takes, is what its verdict and its time limit come from.

A GoogleTest program whose cases need no process of their own is one witness
(PROGRAMS); every other test that ctest knows is one, by its name."""
import concurrent.futures
import contextlib
import json
import os
import pathlib
import re
import resource
import signal
import subprocess
import tempfile
import threading
import time
from dataclasses import dataclass, field, replace

PROGRAMS = {
    "unit_test": "tests/unit", "services_test": "tests/services", "golden_test": "tests/golden",
    "calls_test": "tests/calls", "exports_test": "tests/unit", "differential_test": "tests/differential",
}
LEAST_LIMIT = 10  # seconds: a machine that others use stands still for some
FACTOR = 4  # over what a test takes without a fault
MOST_MEMORY, MOST_OUTPUT = 4 << 30, 64 << 20  # a fault may make a loop of anything
SKIPPED = 77
FAILED_CASE = re.compile(rb"^\[  FAILED  \] ([\w./]+)", re.MULTILINE)


@dataclass
class Witness:
    name: str
    command: list
    folder: str
    environment: dict = field(default_factory=dict)
    labels: list = field(default_factory=list)
    skips: str = ""  # what its output has when it is skipped
    most_addresses: int = MOST_MEMORY
    seconds: float = 0.0  # without a fault
    catches: int = 0


def listed(build, is_sanitized):
    """Every witness that the build folder has."""
    done = subprocess.run(["ctest", "--test-dir", str(build), "--show-only=json-v1"], stdout=subprocess.PIPE, check=True)
    found = []
    for test in json.loads(done.stdout)["tests"]:
        command = test.get("command", [""])
        if pathlib.Path(command[0]).name in PROGRAMS:
            continue
        values = {one["name"]: one["value"] for one in test["properties"]}
        environment = dict(one.split("=", 1) for one in values.get("ENVIRONMENT", []))
        found.append(Witness(test["name"], command, values["WORKING_DIRECTORY"], environment, values.get("LABELS", []),
                             "|".join(values.get("SKIP_REGULAR_EXPRESSION", []))))
    for name, folder in PROGRAMS.items():
        program = build / folder / name
        if program.exists():
            found.append(Witness(name, [str(program), "--gtest_fail_fast", "--gtest_brief=1"], str(program.parent)))
    for witness in found:
        if is_sanitized or "web" in witness.labels:  # these, and browsers, reserve more addresses than there is memory
            witness.most_addresses = resource.RLIM_INFINITY
        if is_sanitized:
            witness.environment["ASAN_OPTIONS"] = f"detect_leaks=0:hard_rss_limit_mb={MOST_MEMORY >> 20}"
    return found


def limit_process(most_addresses):
    resource.setrlimit(resource.RLIMIT_AS, (most_addresses, most_addresses))
    resource.setrlimit(resource.RLIMIT_FSIZE, (MOST_OUTPUT, MOST_OUTPUT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


class Bench:
    """Runs witnesses, several at once, until one has seen the fault."""

    def __init__(self, jobs):
        self.jobs = jobs
        self.lock = threading.Lock()
        self.running = set()
        self.is_over = False

    def run(self, witness, limit):
        """("passed" | "skipped" | "failed" | "timed out" | "stopped", the case that failed)."""
        with tempfile.TemporaryFile() as output:
            with self.lock:
                if self.is_over:
                    return "stopped", witness.name
                process = subprocess.Popen(witness.command, cwd=witness.folder, env={**os.environ, **witness.environment},
                                           stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                                           start_new_session=True, preexec_fn=lambda: limit_process(witness.most_addresses))
                self.running.add(process)
            try:
                status = process.wait(limit)
            except subprocess.TimeoutExpired:
                status = None
            with self.lock:
                self.running.discard(process)
            self.kill(process)
            if self.is_over:
                return "stopped", witness.name
            if status is None:
                return "timed out", witness.name
            output.seek(0)
            text = output.read()
        if status == SKIPPED or witness.skips and re.search(witness.skips.encode(), text):
            return "skipped", witness.name
        case = FAILED_CASE.search(text)
        name = f"{witness.name}:{case[1].decode()}" if case and witness.name in PROGRAMS else witness.name
        return ("passed" if status == 0 else "failed"), name

    @staticmethod
    def kill(process):
        """With what it left behind."""
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
        process.wait()

    def stop(self):
        with self.lock:
            self.is_over = True
            for process in self.running:
                with contextlib.suppress(ProcessLookupError):
                    os.killpg(process.pid, signal.SIGKILL)

    def at_once(self, witnesses, work):
        self.is_over = False
        with concurrent.futures.ThreadPoolExecutor(self.jobs) as pool:
            try:
                return list(pool.map(work, witnesses))
            except BaseException:
                self.stop()
                raise

    def measure(self, witnesses):
        """Those that pass without a fault and know how long it takes, and the names of those that do not pass."""
        def work(witness):
            for _ in range(2):
                begun = time.monotonic()
                result, _ = self.run(witness, 600)
                witness.seconds = time.monotonic() - begun
                if result != "failed":
                    break
            return result
        results = self.at_once(witnesses, work)
        return ([one for one, result in zip(witnesses, results) if result == "passed"],
                [one.name for one, result in zip(witnesses, results) if result in ("failed", "timed out")])

    def verdict(self, witnesses):
        """"caught by TEST", "timed out in TEST" or None. What fails once only has not seen the fault: the
        machine's other users can do that, too. Those that caught others come first, then the quick ones."""
        found = []

        def work(witness):
            limit = max(LEAST_LIMIT, FACTOR * witness.seconds)
            first, name = self.run(witness, limit)
            if first not in ("failed", "timed out"):
                return
            again = witness
            if ":" in name:  # the case alone
                again = replace(witness, command=[*witness.command, f"--gtest_filter={name.split(':')[1]}"])
            second, name = self.run(again, limit)
            if second in ("failed", "timed out"):
                with self.lock:
                    found.append(f"{'caught by' if second == 'failed' else 'timed out in'} {name}")
                    witness.catches += 1
                self.stop()
        self.at_once(sorted(witnesses, key=lambda one: (-one.catches, one.seconds)), work)
        return found[0] if found else None
