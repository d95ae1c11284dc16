"""Starts the web console and its gateway on one of the web servers, in the network and the file systems that
with_device.sh made: for ./dev web and tests/web. The servers' configurations are those of web/servers, as they are
but for the folders."""
import contextlib
import os
import pathlib
import re
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


@contextlib.contextmanager
def private_folder(path):
    """A copy of a folder of devices, whose new files nobody else sees."""
    kept = [f"{path}/{name}" for name in ("null", "zero", "full", "random", "urandom", "stderr", "stdout", "fd", "shm")]
    subprocess.run(["mount", "--rbind", path, "/mnt"], check=True)
    subprocess.run(["mount", "-t", "tmpfs", "none", path], check=True)
    try:
        for name in kept:
            inside = f"/mnt/{pathlib.Path(name).name}"
            if os.path.islink(inside):
                os.symlink(os.readlink(inside), name)
            elif os.path.isdir(inside):
                os.mkdir(name)
            else:
                pathlib.Path(name).touch()
                subprocess.run(["mount", "--bind", inside, name], check=True)
        yield
    finally:
        subprocess.run(["umount", "-lR", path, "/mnt"], check=False)


class Server:
    """One web server: `name` is that of a folder of web/servers, `packages` where Debian's packages are unpacked."""

    names = ("lighttpd", "nginx", "apache", "busybox")
    programs = {"lighttpd": "lighttpd", "nginx": "nginx", "apache": "apache2", "busybox": "busybox"}
    lua = {"lighttpd": "5.1", "nginx": "5.1", "apache": "5.3", "busybox": "5.1"}

    def __init__(self, name, build, packages, users, site="return {}", names=SOURCE / "sim" / "names.lua",
                 live=False, environment=None, listen="plain"):
        self.name, self.build, self.packages = name, pathlib.Path(build).resolve(), pathlib.Path(packages).resolve()
        self.names_file, self.process = names, None
        self.given, self.listen = environment or {}, listen
        self.port = 443 if listen == "tls" else PORT
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
        subprocess.run(["lua5.1", SOURCE / "web" / "bundle.lua", "/srv/librpc-web/librpc.luac", "/srv/librpc-web",
                        "/srv/lua"], check=True)
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
            if path.is_file() and path.suffix not in (".js", ".css", ".html", ".luac"):
                text = path.read_bytes()
                for installed, here in FOLDERS.items():
                    text = text.replace(installed.encode(), here.encode())
                path.write_bytes(text)
        subprocess.run(["chmod", "-R", "a+rX", "/srv"], check=True)  # servers give up root
        if live and (SOURCE / "web" / "console").exists():  # what is edited shows when the page is loaded again
            subprocess.run(["mount", "--bind", str(SOURCE / "web" / "console"), "/srv/librpc-web/console"], check=True)
        os.makedirs("/run/librpc-web", exist_ok=True)
        shutil.chown("/run/librpc-web", "www-data", "www-data")
        os.chmod("/run/librpc-web", 0o700)
        if self.listen == "tls":
            subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj",
                            "/CN=localhost", "-addext", "subjectAltName=DNS:localhost", "-keyout", "/srv/etc/web.key",
                            "-out", "/srv/etc/web.pem"], check=True, capture_output=True)
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
        self.write("/run/lighttpd.conf", 'include "/srv/librpc-web/servers/lighttpd/' + f'{self.listen}.conf"\n'
                   f"setenv.add-environment = ({lines})\n")
        self.command = [self.program, "-D", "-m", f"{self.root}/usr/lib/lighttpd", "-f", "/run/lighttpd.conf"]

    def prepare_nginx(self):
        text = pathlib.Path(f"/srv/librpc-web/servers/nginx/{self.listen}.conf").read_text(encoding="utf-8")
        folders = "".join(f"  {kind}_temp_path /run/nginx_{kind};\n"
                          for kind in ("client_body", "proxy", "fastcgi", "uwsgi", "scgi"))
        text = text.replace("http {\n", f"http {{\n{folders}", 1)
        self.write("/run/nginx.conf", "".join(f"env {name};\n" for name in self.given) + text)
        lua = next(self.packages.glob("usr/share/lua/5.1"), "")
        self.environment["LUA_PATH"] = f"{lua}/?.lua;" + self.environment["LUA_PATH"]
        self.command = [self.program, "-p", f"{self.root}/usr/share/nginx", "-g", "daemon off;", "-c",
                        "/run/nginx.conf"]

    def prepare_apache(self):
        self.command = [self.program, "-DFOREGROUND", "-d", f"{self.root}/usr/lib/apache2", "-f",
                        f"/srv/librpc-web/servers/apache/{self.listen}.conf"]

    def prepare_busybox(self):
        users = pathlib.Path("/srv/etc/web.users").read_text(encoding="utf-8").splitlines()
        self.write("/srv/etc/httpd.conf", "".join(f"/:{line}\n" for line in users))
        self.command = ["/srv/librpc-web/servers/busybox/serve.sh"]

    def start(self):
        self.process = subprocess.Popen(self.command, env=self.environment, cwd="/", stdin=subprocess.DEVNULL,
                                        stdout=self.log, stderr=self.log, start_new_session=True)
        for _ in range(500):
            with socket.socket() as probe:
                if probe.connect_ex(("127.0.0.1", self.port)) == 0:
                    return
            if self.process.poll() is not None:
                break
            time.sleep(0.02)
        raise Failed(self.name, f"a server on port {self.port}", self.log_text()[-2000:] or "none")

    def end(self):
        if self.process and self.process.poll() is None:
            os.killpg(self.process.pid, signal.SIGTERM)
            try:
                self.process.wait(10)
            except subprocess.TimeoutExpired:
                os.killpg(self.process.pid, signal.SIGKILL)
                self.process.wait()

    def restart(self):
        """Ends the server and starts it with what its files say now."""
        self.end()
        for _ in range(500):
            with socket.socket() as probe:
                probe.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
                try:
                    probe.bind(("127.0.0.1", self.port))
                    break
                except OSError:
                    time.sleep(0.02)
        self.start()

    def authenticates(self, is_on):
        """Takes the password out of the server's configuration, or leaves it there."""
        for path in [*pathlib.Path("/srv/librpc-web/servers").rglob("librpc.conf"), pathlib.Path("/srv/etc/httpd.conf")]:
            if path.exists() and not is_on:
                text = path.read_text(encoding="utf-8")
                text = re.sub(r"^(auth_basic|  set \$librpc_user|auth\.require|  Auth|  Require valid-user|/:).*\n", "", text, flags=re.M)
                text = text.replace("<Location />\n</Location>", "<Location />\n  Require all granted\n</Location>")
                self.write(path, text)
        self.restart()

    def stop(self):
        self.end()
        subprocess.run(["umount", "-lR", "/srv", "/var/lib"], check=False, stderr=subprocess.DEVNULL)

    def log_text(self):
        self.log.flush()
        return pathlib.Path("/run/web_server.log").read_text(errors="replace")
