"""Starts the web console and its gateway on one of the web servers, in the network and the file systems that
with_device.sh made: for ./dev web and tests/web. The servers' configurations are those of web/servers, as they are
but for the folders."""
import os
import pathlib
import shutil
import signal
import secrets
import socket
import subprocess
import time

SOURCE = pathlib.Path(__file__).resolve().parent.parent
PORT = 8080
FOLDERS = {  # of an installed package, and here
    "/usr/share/librpc-web": "/srv/librpc-web",
    "/etc/librpc": "/srv/etc",
}
PACKAGES = ("lighttpd", "nginx", "libnginx-mod-http-lua", "apache2-bin", "busybox", "lua-cjson")


class Failed(Exception):
    def __init__(self, where, expected, found):
        super().__init__(f"web_server: {where}: expected {expected}, found {found}")


def password_line(user, password):
    """A line of a file of users, which all servers read."""
    made = subprocess.run(["perl", "-e", "print crypt(<STDIN>, shift)", f"$6${secrets.token_hex(8)}$"],
                          input=password, capture_output=True, text=True, check=True).stdout
    return f"{user}:{made}\n"


class Server:
    """One web server: `name` is that of a folder of web/servers, `packages` where Debian's packages are unpacked."""

    names = ("lighttpd", "nginx", "apache", "busybox")
    programs = {"lighttpd": "lighttpd", "nginx": "nginx", "apache": "apache2", "busybox": "busybox"}
    lua = {"lighttpd": "5.1", "nginx": "5.1", "apache": "5.3", "busybox": "5.1"}

    def __init__(self, name, build, packages, users, site="return {}", names=SOURCE / "sim" / "names.lua",
                 live=False, environment=None):
        self.name, self.build, self.packages = name, pathlib.Path(build).resolve(), pathlib.Path(packages).resolve()
        self.names_file, self.process = names, None
        self.given = environment or {}
        self.log = open("/run/web_server.log", "w+b")
        folders = [f"{self.packages}/usr/sbin", f"{self.packages}/usr/bin", f"{self.packages}/bin", os.environ["PATH"]]
        self.path = ":".join(folders)
        self.program = shutil.which(self.programs[name], path=self.path)
        if not self.program:
            raise FileNotFoundError(f"web_server: {name}: expected {self.programs[name]}, found none")
        self.is_unpacked = self.program.startswith(f"{self.packages}/")
        self.prepare(users, site, live)

    def prepare(self, users, site, live):
        for folder in ("/srv", "/var/lib"):  # the latter: nginx keeps large requests there
            subprocess.run(["mount", "-t", "tmpfs", "none", folder], check=True)
        os.makedirs("/var/lib/nginx")
        os.mkdir("/srv/lib")
        shutil.copytree(SOURCE / "web", "/srv/librpc-web")
        shutil.copytree(SOURCE / "lua" / "librpc", "/srv/lua/librpc")
        shutil.copytree("/srv/lua", "/srv/librpc-web", dirs_exist_ok=True)
        lua = self.lua[self.name]
        library = self.build / ("librpc.so" if lua == "5.1" else f"lua{lua}/librpc.so")
        if not library.exists():
            raise Failed(self.name, f"the library for Lua {lua} as {library}", "none")
        shutil.copy(library, "/srv/lib/librpc.so")
        os.makedirs("/srv/etc/names")
        if self.names_file:
            shutil.copy(self.names_file, "/srv/etc/names/site.lua")
        self.write("/srv/etc/web.lua", site)
        self.write("/srv/etc/web.users", "".join(password_line(*user) for user in users.items()))
        for path in pathlib.Path("/srv/librpc-web").rglob("*"):
            if path.is_file() and path.suffix not in (".js", ".css", ".html"):
                text = path.read_bytes()
                for installed, here in FOLDERS.items():
                    text = text.replace(installed.encode(), here.encode())
                path.write_bytes(text)
        subprocess.run(["chmod", "-R", "a+rX", "/srv"], check=True)  # servers give up root
        if live:  # what is edited shows when the page is loaded again
            subprocess.run(["mount", "--bind", str(SOURCE / "web" / "console"), "/srv/librpc-web/console"], check=True)
        os.makedirs("/run/librpc-web", exist_ok=True)
        shutil.chown("/run/librpc-web", "www-data", "www-data")
        os.chmod("/run/librpc-web", 0o700)
        self.environment = {**os.environ, "PATH": self.path}
        self.given = {
            "LUA_PATH": "/srv/lua/?.lua;;", "LUA_CPATH": f"/srv/lib/?.so;{self.modules(lua)}/?.so;;",
            "LIBRPC_WEB": "/srv/etc/web.lua", "LIBRPC_NAMES": "/srv/etc/names/site.lua" if self.names_file else "",
            "LD_LIBRARY_PATH": str(next(self.packages.glob("usr/lib/*-linux-gnu"), "")), **self.given}
        self.environment.update(self.given)
        getattr(self, f"prepare_{self.name}")()

    def modules(self, lua):
        return next(self.packages.glob(f"usr/lib/*/lua/{lua}"), "")

    def write(self, path, text):
        pathlib.Path(path).write_text(text, encoding="utf-8")

    @property
    def root(self):
        return self.packages if self.is_unpacked else ""

    def prepare_lighttpd(self):
        # lighttpd hands a CGI program no environment but its own
        lines = ", ".join(f'"{name}" => "{value}"' for name, value in self.given.items())
        self.write("/run/lighttpd.conf", 'include "/srv/librpc-web/servers/lighttpd/plain.conf"\n'
                   f"setenv.add-environment = ({lines})\n")
        self.command = [self.program, "-D", "-m", f"{self.root}/usr/lib/lighttpd", "-f", "/run/lighttpd.conf"]

    def start(self):
        self.process = subprocess.Popen(self.command, env=self.environment, cwd="/", stdin=subprocess.DEVNULL,
                                        stdout=self.log, stderr=self.log, start_new_session=True)
        for _ in range(500):
            with socket.socket() as probe:
                if probe.connect_ex(("127.0.0.1", PORT)) == 0:
                    return
            if self.process.poll() is not None:
                break
            time.sleep(0.02)
        raise Failed(self.name, f"a server on port {PORT}", self.log_text()[-2000:] or "none")

    def stop(self):
        if self.process and self.process.poll() is None:
            os.killpg(self.process.pid, signal.SIGTERM)
            try:
                self.process.wait(10)
            except subprocess.TimeoutExpired:
                os.killpg(self.process.pid, signal.SIGKILL)
                self.process.wait()
        subprocess.run(["umount", "-lR", "/srv", "/var/lib"], check=False, stderr=subprocess.DEVNULL)

    def log_text(self):
        self.log.flush()
        return pathlib.Path("/run/web_server.log").read_text(errors="replace")
