"""The copy in which faults are planted, and the stages in which one is looked for.

A stage is built and its tests measured without a fault when the first fault comes
that far."""
import pathlib
import re
import shutil
import subprocess
import sys
from dataclasses import dataclass, field

from witnesses import Bench, listed

# Every target that a test wants but the device, which stays as it was before any fault.
TEST_TARGET = re.compile(r"\w+_test|fuzz_\w+|e2e_\w+|calls_host|rpc\w*(_lua[\d.]+)?|failing|refuse|many_states|own_names")


@dataclass
class Stage:
    tests: str  # names, a regular expression
    targets: tuple = ()  # that a fault may change; none: all, which Lua's does not
    every_target: bool = False
    is_sanitized: bool = False  # in a build folder of its own
    witnesses: list = field(default_factory=list)


# From fast to slow. Tests of derived files, and those of the tests' own model, are no
# witnesses of the library: whoever changes it makes the files anew.
LIBRARY = (
    Stage(r"^(unit|services|golden|calls)_test$", ("unit_test", "services_test", "golden_test", "calls_test")),
    Stage(r"^(host|(calls|e2e)\.lua5\.1)|^lua\.lua5\.1\.(at_once|calls|global|interrupt|schema|status)",
          ("rpc", "host_test", "e2e_process", "calls_host")),
    Stage(r"^(exports_test|differential_test)$|^golden[.](other_seeds|cases)|^(system_calls|memory|fuzz|e2e|calls|lua|compile_fail)",
          every_target=True),
    # reads that go wrong and change nothing that anybody sees
    Stage(r"^(unit|services|calls)_test$", ("unit_test", "services_test", "calls_test"), is_sanitized=True),
)
MODULES = (Stage(r"^lua\.lua5\.1|^calls\.lua5\.1"), Stage("^(examples|generated)"))
COMMAND_LINE = (Stage("rpcctl|(output|commands)_test"), Stage(r"^lua\.lua5\.1|examples"))
WEB = (Stage(r"^web\.lighttpd"), Stage(r"^web\.(nginx|apache|busybox)"), Stage(r"^web\."))
STAGES = (("lua/rpcctl", COMMAND_LINE), ("bin", COMMAND_LINE), ("lua", MODULES), ("web", WEB), ("", LIBRARY))


def stages_of(path):
    stages = next(stages for prefix, stages in STAGES if path.as_posix().startswith(prefix))
    if path.suffix == ".h":  # the library alone is built sooner than all tests that include it
        return (stages[1], stages[0], *stages[2:])
    return stages


def fail(where, expected, found):
    sys.exit(f"mutate: {where}: expected {expected}, found {found}")


def run(*command, cwd=None, check=True):
    done = subprocess.run(command, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace")
    if check and done.returncode != 0:
        fail(" ".join(map(str, command[:3])), "success", done.stdout[-3000:])
    return done


class Copy:
    def __init__(self, root, name, slow, jobs, stages):
        self.root, self.slow, self.stages = root, slow, stages
        self.folder = root / "build-mutate" / name
        self.tree = self.folder / "tree"
        self.bench = Bench(jobs)
        self.copy_tree()
        self.configure(self.build_of(None))
        servers = root / "build" / "web"  # what `./dev test web` unpacks; without it those tests are skipped
        if servers.exists() and not (self.build_of(None) / "web").exists():
            (self.build_of(None) / "web").symlink_to(servers)

    def build_of(self, stage):
        return self.folder / ("build-asan" if stage and stage.is_sanitized else "build")

    def configure(self, build, *options):
        run("cmake", "-S", self.tree, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
            "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DLIBRPC_TESTS=ON", "-DLIBRPC_WERROR=OFF", *options)

    def copy_tree(self):
        """The tree as it is; what has not changed keeps its time, so that little is built again."""
        names = run("git", "ls-files", "-co", "--exclude-standard", cwd=self.root).stdout.split()
        wanted = {pathlib.Path(name) for name in names if (self.root / name).exists()}
        for path in wanted:
            new, old = self.root / path, self.tree / path
            if not old.exists() or old.read_bytes() != new.read_bytes():
                old.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(new, old)
        for old in self.tree.rglob("*"):
            if old.is_file() and old.relative_to(self.tree) not in wanted:
                old.unlink()

    def make(self, stage, *more):
        targets = ["--target", *stage.targets, *more] if stage.targets else []
        return run("cmake", "--build", self.build_of(stage), *targets, check=False)

    def measure(self, stage):
        """Finds the stage's witnesses. With no fault planted."""
        build = self.build_of(stage)
        if stage.is_sanitized:
            self.configure(build, "-DLIBRPC_SANITIZE=address,undefined")
        if stage.every_target:
            names = re.findall(r"^([a-z][\w.]*): phony", run("cmake", "--build", build, "--target", "help").stdout, re.M)
            stage.targets = tuple(filter(TEST_TARGET.fullmatch, names))
        built = self.make(stage, "simulated_device")
        if built.returncode != 0:
            fail("a build without a fault", "success", built.stdout[-3000:])
        known = {one.name for stages in STAGES for other in stages[1] for one in other.witnesses}
        left_out = set() if self.slow else {"slow", "luajit"}
        asked = [one for one in listed(build, stage.is_sanitized) if re.search(stage.tests, one.name)
                 and (stage.is_sanitized or one.name not in known) and not left_out & set(one.labels)]
        stage.witnesses, failed = self.bench.measure(asked)
        if failed or not stage.witnesses:
            found = f"{len(failed)} that fail: {', '.join(failed[:9])}" if failed else "none that runs"
            fail("the tests without a fault", "success", found)

    def plant(self, planted):
        """"caught by TEST", "timed out in TEST", "does not compile" or "survived"."""
        place = self.tree / planted.path
        fault = planted.fault
        changed = planted.source[:fault.start] + fault.text + planted.source[fault.end:]
        try:
            for stage in stages_of(planted.path)[:self.stages]:
                if not stage.witnesses:
                    place.write_text(planted.source)
                    self.measure(stage)
                if place.read_text() != changed:
                    place.write_text(changed)
                if stage.targets and self.make(stage).returncode != 0:
                    return "does not compile"
                if verdict := self.bench.verdict(stage.witnesses):
                    return verdict
            return "survived"
        finally:
            place.write_text(planted.source)
