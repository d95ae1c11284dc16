#!/usr/bin/env python3
"""Runs one host of `hosts` below under load, with the library in it and the simulated device beside it.

    with_device.sh BUILD -- run.py BUILD NAME     ends with 77 where Debian's packages lack the host
    run.py --names                                the hosts
    run.py --table BUILD                          what the latest runs gave

The load comes in phases: undisturbed, while the host restarts, while a call waits, while the daemons restart, while
they are away, and undisturbed again. Every answer is checked (load.cpp). To add a host, add a line to `hosts` and its
configuration to examples/hosts.
"""
import dataclasses
import glob
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
EXAMPLES = HERE.parent.parent / "examples" / "hosts"
SKIPPED = 77
MODULES = {  # without which these programs run no Lua, or not as Debian packs them
    "nginx": "usr/lib/nginx/modules/ngx_http_lua_module.so",
    "apache2": "usr/lib/apache2/modules/mod_lua.so",
    "lighttpd": "usr/lib/lighttpd/mod_magnet.so",
}
DAEMONS = ("nsminfo", "auth")  # of the tables that the page shows
CRASH = re.compile(r"exited on signal|exit signal|Segmentation|SIGSEGV|SIGABRT|core dumped|PANIC|panic|"
                   r"was killed|stack smashing|double free|malloc|corrupted", re.I)


@dataclasses.dataclass
class Host:
    name: str
    program: str  # what must be there
    lua: str  # the version that the host links
    command: str  # starts it in the foreground; {root} is where its package's files are, "" for the system's
    path: str = "/row"  # of its page; None for a program that reads lines
    reload: signal.Signals = None  # what an administrator sends after a change; None: the host is ended and started
    breaks: bool = False  # a restart may refuse and break connections
    requests: int = 10000  # while nothing happens
    disturbed: int = 10000  # while something restarts
    together: int = 64  # requests at a time
    waits: bool = True  # bears a call that waits
    keeps_to: int = 0  # memory: KiB that each process may grow by from the first 1,000 requests to the 7,000th


NGINX = "nginx -p {root}/usr/share/nginx -g 'daemon off;' -c /srv/librpc/nginx/"
APACHE = "apache2 -DFOREGROUND -d {root}/usr/lib/apache2 -f /srv/librpc/apache/"
HAPROXY = "haproxy -W -f /srv/librpc/haproxy/{}.cfg -f /srv/librpc/haproxy/pages.cfg"
LIGHTTPD = "lighttpd -D -m {root}/usr/lib/lighttpd -f "

hosts = [
    Host("nginx_one_worker", "nginx", "5.1", NGINX + "one_worker.conf", reload=signal.SIGHUP),
    Host("nginx_threads", "nginx", "5.1", NGINX + "threads.conf", reload=signal.SIGHUP),
    Host("apache_event_thread", "apache2", "5.3", APACHE + "event.conf -C 'Define SCOPE thread'",
         reload=signal.SIGUSR1),
    Host("apache_event_request", "apache2", "5.3", APACHE + "event.conf -C 'Define SCOPE request'",
         reload=signal.SIGUSR1),
    Host("apache_event_once", "apache2", "5.3", APACHE + "event.conf -C 'Define SCOPE once'",
         reload=signal.SIGUSR1, keeps_to=1024),
    Host("apache_event_server", "apache2", "5.3", APACHE + "event.conf -C 'Define SCOPE \"server 1 8\"'",
         reload=signal.SIGUSR1),
    Host("apache_prefork", "apache2", "5.3", APACHE + "prefork.conf", reload=signal.SIGUSR1),
    Host("haproxy_shared", "haproxy", "5.3", HAPROXY.format("shared"), reload=signal.SIGUSR2),
    # not meant to be copied: where a call waits, the threads that want the state spin until HAProxy ends itself
    Host("haproxy_shared_4_threads", "haproxy", "5.3", "env THREADS=4 " + HAPROXY.format("shared"),
         reload=signal.SIGUSR2, waits=False),
    Host("haproxy_per_thread", "haproxy", "5.3", HAPROXY.format("per_thread"), reload=signal.SIGUSR2),
    Host("lighttpd_magnet", "lighttpd", "5.4", LIGHTTPD + "/srv/librpc/lighttpd/magnet.conf", reload=signal.SIGUSR1),
    Host("lighttpd_cgi", "lighttpd", "5.1", LIGHTTPD + "/run/cgi_with_library.conf", "/cgi-bin/row.cgi",
         reload=signal.SIGUSR1, disturbed=2000),
    Host("busybox_cgi", "busybox", "5.1", "/srv/librpc/busybox/serve.sh", "/cgi-bin/row.cgi",
         breaks=True, disturbed=2000, together=8),  # it keeps no more than nine connections waiting
    Host("threads_2", "hosts_workers", "5.1", "hosts_workers 2", None, requests=100000),
    Host("threads_8", "hosts_workers", "5.1", "hosts_workers 8", None, requests=100000),
    Host("threads_8_new_states", "hosts_workers", "5.1", "hosts_workers 8 500", None, requests=100000),
]


class Failed(Exception):
    def __init__(self, where, expected, found):
        super().__init__(f"run: {where}: expected {expected}, found {found}")


def tell_device(command):
    subprocess.run([os.environ["SIM_DEVICE"], "--tell", os.environ["SIM_CONTROL"], command],
                   check=True, stdout=subprocess.DEVNULL)


class Run:
    def __init__(self, build, host):
        self.build, self.host = build, host
        self.programs = build / "tests" / "hosts"
        self.process, self.faults, self.crashes = None, [], 0
        self.counts = dict.fromkeys(("requests", "right", "failed", "dropped", "wrong", "stalls", "longest"), 0)
        self.log = open("/run/host.log", "w+b")
        self.prepare()

    def prepare(self):
        """Finds the host and gives it what a device would have, in file systems that nobody else sees."""
        root = self.build / "hosts" / "packages"
        environment = os.environ.copy()
        folders = [str(self.programs), f"{root}/usr/sbin", f"{root}/usr/bin", f"{root}/bin", environment["PATH"]]
        environment["PATH"] = ":".join(folders)
        found = shutil.which(self.host.program, path=environment["PATH"])
        if not found:
            print(f"run: {self.host.name}: expected {self.host.program}, found none: skipped")
            sys.exit(SKIPPED)
        is_unpacked = found.startswith(f"{root}/")
        module = MODULES.get(self.host.program)
        if module and not ((root if is_unpacked else pathlib.Path("/")) / module).exists():
            print(f"run: {self.host.name}: expected {module} beside {self.host.program}, found none: skipped")
            sys.exit(SKIPPED)
        library = self.build / ("librpc.so" if self.host.lua == "5.1" else f"lua{self.host.lua}/librpc.so")
        if not library.exists():
            raise Failed(self.host.name, f"the library for Lua {self.host.lua} as {library}", "none")
        for folder in ("/srv", "/var/lib"):  # the latter: nginx keeps large requests there
            subprocess.run(["mount", "-t", "tmpfs", "none", folder], check=True)
        os.mkdir("/var/lib/nginx")
        shutil.copytree(EXAMPLES, "/srv/librpc")
        os.mkdir("/srv/librpc/lib")
        shutil.copy(library, "/srv/librpc/lib/librpc.so")
        subprocess.run(["chmod", "-R", "a+rX", "/srv"], check=True)  # hosts give up root
        environment["LUA_CPATH"] = "/srv/librpc/lib/?.so;;"
        if is_unpacked:
            environment["LD_LIBRARY_PATH"] = ":".join(glob.glob(f"{root}/usr/lib/*-linux-gnu"))
            environment["LUA_PATH"] = f"{root}/usr/share/lua/5.1/?.lua;;"
        # lighttpd hands a CGI program no environment but its own
        pathlib.Path("/run/cgi_with_library.conf").write_text(
            'include "/srv/librpc/lighttpd/cgi.conf"\nserver.modules += ("mod_setenv")\n'
            f'setenv.add-environment = ("LUA_CPATH" => "{environment["LUA_CPATH"]}")\n')
        self.environment = environment
        self.command = self.host.command.format(root=root if is_unpacked else "")

    def start(self):
        self.process = subprocess.Popen(["bash", "-c", f"exec {self.command}"], env=self.environment, cwd="/",
                                        stdin=subprocess.DEVNULL, stdout=self.log, stderr=self.log,
                                        start_new_session=True)

    def is_gone(self):
        """The host with every process that it started, which may have its socket still."""
        try:
            os.killpg(self.process.pid, 0)
            return False
        except ProcessLookupError:
            return True

    def stop(self):
        if self.host.reload:
            self.process.terminate()
        else:  # it has no way of its own to end with its children
            os.killpg(self.process.pid, signal.SIGTERM)
        try:
            status = self.process.wait(30)
        except subprocess.TimeoutExpired:
            os.killpg(self.process.pid, signal.SIGKILL)
            status = self.process.wait()
        for _ in range(100):
            if self.is_gone():
                break
            time.sleep(0.1)
        # lighttpd ends with 1 now and then after a graceful restart, with any page
        if (status < 0 and status != -signal.SIGTERM) or status > 128 + signal.SIGTERM:
            self.crashes += 1
            self.faults.append(Failed(self.host.name, "an end by SIGTERM", f"status {status}"))

    def reload(self):
        if self.process.poll() is not None:
            raise Failed(self.host.name, "a host that runs", f"status {self.process.returncode}")
        if self.host.reload:
            self.process.send_signal(self.host.reload)
        else:
            self.stop()
            self.start()

    def load(self, phase, requests, *options, at_third=None):
        """One phase: asks, and does at_third when a third of the answers are there."""
        command = [self.programs / "hosts_load", "--requests", str(requests),
                   "--together", str(self.host.together), *options]
        command += [self.host.path] if self.host.path else ["--", "bash", "-c", f"exec {self.command}"]
        environment = self.environment if not self.host.path else None
        line = "none"
        with subprocess.Popen(command, stdout=subprocess.PIPE, env=environment, text=True) as load:
            for line in load.stdout:
                if line == "third\n":
                    if at_third:
                        at_third()
                    continue
                print(f"{phase}: {line}", end="", flush=True)
                words = line.split()
                for name, value in zip(words[::2], words[1::2]):
                    self.counts[name] = (max if name == "longest" else int.__add__)(self.counts[name], int(value))
        if load.returncode != 0:
            self.faults.append(Failed(f"{self.host.name}: {phase}", "no answers but right ones" if not options
                                      else "no answers but these may be: " + " ".join(options), line.strip()))

    def let_a_call_wait(self):
        """For longer than a host may take for a thread that hangs."""
        tell_device("fault oltmib_portinfo_get_1 count=1 delay 4000")

    def restart_daemons(self):
        for daemon in DAEMONS:
            tell_device(f"restart {daemon}")

    def log_lines(self):
        self.log.seek(0)
        return self.log.read().decode(errors="replace").splitlines()

    def memory(self):
        """KiB of each child of the host's first process, by its id."""
        sizes = {}
        for status in glob.glob("/proc/[0-9]*/status"):
            try:
                text = pathlib.Path(status).read_text()
            except OSError:
                continue
            fields = dict(re.findall(r"^(\w+):\s+(\d+)", text, re.M))
            if fields.get("PPid") == str(self.process.pid):
                sizes[fields["Pid"]] = int(fields["VmRSS"])
        return sizes

    def check_memory(self):
        self.load("first 1,000", 1000)
        before = self.memory()
        self.load("6,000 more", 6000)
        after = self.memory()
        growth = max(after.get(pid, 0) - size for pid, size in before.items())
        print(f"memory: {growth} KiB more after 6,000 requests, at most {self.host.keeps_to}")
        if growth > self.host.keeps_to or set(before) != set(after):
            self.faults.append(Failed(f"{self.host.name}: memory", f"at most {self.host.keeps_to} KiB more in the same "
                                      "processes", f"{before} before and {after} after 6,000 requests"))

    def web(self):
        host = self.host
        self.start()
        if host.keeps_to:
            self.check_memory()
        self.load("undisturbed", host.requests)
        breaks = ("--may", "drop") if host.breaks else ()
        self.load("while the host restarts", host.disturbed, *breaks, at_third=self.reload)
        if host.waits:
            self.load("while a call waits", 1000, at_third=self.let_a_call_wait)
            self.load("while the daemons restart", host.disturbed, "--may", "fail", at_third=self.restart_daemons)
        for daemon in DAEMONS:
            tell_device(f"stop {daemon}")
        self.load("while the daemons are away", 100, "--must", "fail")
        for daemon in DAEMONS:
            tell_device(f"start {daemon}")
        self.load("undisturbed again", 1000)
        self.stop()
        for line in self.log_lines():
            if CRASH.search(line):
                self.crashes += 1
                self.faults.append(Failed(host.name, "no crash", line))

    def program(self):
        self.load("undisturbed", self.host.requests)
        self.load("while the daemons restart", 20000, "--may", "fail", at_third=self.restart_daemons)

    def run(self):
        began = time.monotonic()
        try:
            if self.host.path:
                self.web()
            else:
                self.program()
        except Failed as fault:
            self.faults.append(fault)
        finally:
            if self.process and self.process.poll() is None:
                os.killpg(self.process.pid, signal.SIGKILL)
            subprocess.run(["umount", "-l", "/srv", "/var/lib"], check=False)
        counts = self.counts
        results = self.build / "hosts" / "results"
        results.mkdir(parents=True, exist_ok=True)
        (results / self.host.name).write_text(
            f"{counts['requests']} {counts['right']} {counts['failed']} {counts['dropped']} {counts['wrong']} "
            f"{self.crashes} {counts['stalls']} {time.monotonic() - began:.0f}\n")
        if self.faults:
            lines = [line for line in self.log_lines() if not line.endswith("RPC: Program not registered")]
            sys.stderr.write("\n".join(lines[-40:]) + "\n")
        for fault in self.faults:
            print(fault, file=sys.stderr)
        return 1 if self.faults else 0


def print_table(build):
    print("| host | requests | right | reported failures | broken off | wrong | crashes | stalls | s |")
    print("|---|---|---|---|---|---|---|---|---|")
    for host in hosts:
        result = build / "hosts" / "results" / host.name
        cells = result.read_text().split() if result.exists() else ["not run"] + [""] * 7
        print(f"| {host.name} | {' | '.join(cells)} |")
    cost = build / "hosts" / "results" / "state_cost"
    if cost.exists():
        print(f"\n{cost.read_text()}", end="")


def main(arguments):
    if arguments == ["--names"]:
        print(";".join(host.name for host in hosts))
        return 0
    if len(arguments) != 2:
        raise Failed("arguments", "BUILD NAME, --names or --table BUILD", " ".join(arguments) or "none")
    if arguments[0] == "--table":
        print_table(pathlib.Path(arguments[1]).resolve())
        return 0
    build, name = pathlib.Path(arguments[0]).resolve(), arguments[1]
    chosen = [host for host in hosts if host.name == name]
    if not chosen:
        raise Failed("arguments", "a name of --names", f"'{name}'")
    return Run(build, chosen[0]).run()


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1:]))
    except Failed as fault:
        print(fault, file=sys.stderr)
        sys.exit(2)
