"""What the tests of subjects/ are made of: what registers and checks, a web server with the gateway and what its
clients send, the simulated device, the lists that a test compares with."""
import base64
import contextlib
import http.client
import importlib
import json
import os
import pathlib
import re
import signal
import ssl
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parent.parent.parent
sys.path.insert(0, str(SOURCE / "tools"))
import web_server  # noqa: E402

SKIPPED = 77
LOG = "/run/librpc-web/changes.log"
USERS = {"ann": "reads", "olga": "operates", "root": "may all"}
PATIENT = "limits = { deadline = 20 },"  # seconds of a read: how busy this machine is, is no test's subject
SITE = f"""return {{
  {PATIENT}
  users = {{ root = {{ change = "*" }} }},
  groups = {{ operators = {{ members = {{ "olga" }}, change = {{ "vlaninfo", "portinfo" }} }} }},
  log = "{LOG}",
  metrics = {{ "portstat", "lldpifstat", "mbaserialstatis", "snmp_community" }},
}}
"""
REASONS = {413: "Content Too Large"}  # RFC 9110, section 15.5.14: newer than Python's
ORIGIN = f"http://127.0.0.1:{web_server.PORT}"
failures = []
tests = []


def test(function):
    """Makes a function one of the tests, by its name, on all servers."""
    function.servers = getattr(function, "servers", web_server.Server.names)
    function.listen = getattr(function, "listen", "plain")
    tests.append(function)
    return function


def only(*servers, listen="plain"):
    """Names a test's servers where they are not all, and how they listen: a configuration of web/servers."""
    def mark(function):
        function.servers, function.listen = servers, listen
        return function
    return mark


def check(what, found, expected):
    if found != expected:
        failures.append(what)
        print(f"{what}:\n  expected {str(expected)[:2000]}\n  found    {str(found)[:2000]}", file=sys.stderr)


def check_in(what, part, whole):
    if part not in whole:
        failures.append(what)
        print(f"{what}:\n  expected {part!r} somewhere\n  found    {str(whole)[:2000]}", file=sys.stderr)


def skip(where, expected):
    print(f"gateway_test: {where}: expected {expected}, found none: skipped")
    sys.exit(SKIPPED)


def tell(command):
    """Has the simulated device do something (simulated_device --help), and gives what it says."""
    return subprocess.run([os.environ["SIM_DEVICE"], "--tell", os.environ["SIM_CONTROL"], command],
                          check=True, capture_output=True, text=True).stdout.strip()


@contextlib.contextmanager
def stopped_device():
    """The simulated device stands still: none of its daemons answers anything."""
    network = os.readlink("/proc/self/ns/net")
    for link in pathlib.Path("/proc").glob("[0-9]*/exe"):
        try:
            if os.readlink(link) == os.environ["SIM_DEVICE"] and os.readlink(link.parent / "ns/net") == network:
                pid = int(link.parent.name)
        except OSError:
            continue
    os.kill(pid, signal.SIGSTOP)
    try:
        yield
    finally:
        os.kill(pid, signal.SIGCONT)


class Answer:
    def __init__(self, response):
        self.status, self.reason = response.status, response.reason
        self.headers = {k.lower(): v for k, v in response.getheaders()}
        self.text = response.read()

    @property
    def json(self):
        return json.loads(self.text.decode())

    @property
    def code(self):
        """The status with the code of an error of the gateway's; the whole text where it is none."""
        try:
            return self.status, self.json["error"]["code"]
        except (ValueError, KeyError, TypeError):
            return self.status, self.text[:300]


class Gateway:
    """A server with the gateway, and what its clients send."""

    def __init__(self, name, build, packages, site=SITE, **options):
        self.name, self.build, self.packages = name, build, packages
        self.base = "/cgi-bin/librpc.cgi" if name == "busybox" else ""
        self.server = web_server.Server(name, build, packages, USERS, site=site, **options)
        page = pathlib.Path("/srv/librpc-web/console/index.html")
        if not page.exists():
            page.parent.mkdir(exist_ok=True)
            page.write_text("<!DOCTYPE html>\n<title>Device</title>\n", encoding="utf-8")
        self.server.start()

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        if kind or failures:
            sys.stderr.write(self.server.log_text()[-4000:])
        self.server.stop()

    def configure(self, site, names=None):
        """Another configuration, which a server takes when it is started anew."""
        self.server.write("/srv/etc/web.lua", site)
        if names is not None:
            self.server.write("/srv/etc/names/site.lua", names)
        self.server.restart()

    def send(self, method, path, body=None, user="ann", headers=None, timeout=60):
        sent = {"Content-Type": "application/json"} if body is not None else {}
        if user:
            sent["Authorization"] = "Basic " + base64.b64encode(f"{user}:{USERS[user]}".encode()).decode()
        sent.update(headers or {})
        sent = {name: value for name, value in sent.items() if value is not None}
        if body is not None and not isinstance(body, bytes):
            body = json.dumps(body).encode()
        if self.server.listen == "tls":
            trusted = ssl.create_default_context(cafile="/srv/etc/web.pem")
            connection = http.client.HTTPSConnection("localhost", timeout=timeout, context=trusted)
        else:
            connection = http.client.HTTPConnection("127.0.0.1", web_server.PORT, timeout=timeout)
        connection.request(method, self.base + path, body, sent)
        answer = Answer(connection.getresponse())
        connection.close()
        if self.name == "busybox":  # which hands on what the CGI program says
            check(f"reason of {method} {path}", answer.reason, REASONS.get(answer.status) or
                  http.HTTPStatus(answer.status).phrase)
        return answer

    def get(self, path, **options):
        return self.send("GET", path, **options)

    def post(self, path, body, **options):
        return self.send("POST", path, body, **options)

    def token(self, user):
        return self.get("/api/session", user=user).json["token"]

    def change(self, body, user="root", headers=None, token=None):
        sent = {"Origin": ORIGIN, "X-Librpc-Token": token or self.token(user), **(headers or {})}
        return self.post("/api/change", body, user=user, headers=sent)

    def lua(self, *arguments, source=None):
        """What Lua prints that has the library and the gateway's modules; `source` is a program of its own."""
        libraries = next(pathlib.Path(self.packages).glob("usr/lib/*/lua/5.1"), "")
        environment = {**os.environ, "LUA_PATH": f"{SOURCE}/lua/?.lua;{SOURCE}/web/?.lua;;",
                       "LUA_CPATH": f"{self.build}/?.so;{libraries}/?.so;;",
                       "LD_LIBRARY_PATH": self.server.given["LD_LIBRARY_PATH"],
                       "LIBRPC_NAMES": f"{SOURCE}/sim/names.lua"}
        return subprocess.run(["lua5.1", *(["-"] if source else []), *arguments], env=environment, input=source,
                              check=True, stdout=subprocess.PIPE, text=True).stdout

    def expected(self, *arguments):
        """What librpc.record gives: see expected.lua."""
        return json.loads(self.lua(HERE / "expected.lua", *arguments))


def golden(name):
    """The entries of a list of tests/golden, which alone say how many APIs and services there are."""
    lines = (SOURCE / "tests" / "golden" / name).read_text(encoding="utf-8").splitlines()
    return [line.split() for line in lines if line and not line.startswith("#")]


APIS = [entry[1] for entry in golden("apis.txt")]
SERVICES = [entry[1] for entry in golden("services.txt")]
TABLES = {re.sub(r"^oltmib_|_(get|getn|set)?_?1$", "", name) for name in APIS}


def in_parts(items, size=64):
    return [items[i:i + size] for i in range(0, len(items), size)]


def blocks(document, language):
    """What a document of docs/ shows in a language."""
    text = (SOURCE / "docs" / document).read_text(encoding="utf-8")
    return re.findall(rf"^```{language}\n(.*?)^```\n", text, re.M | re.S)


def module_of(gateway, package, name):
    """A module of Python's, of a Debian package that `./dev test` unpacks."""
    sys.path.insert(0, str(pathlib.Path(gateway.packages) / "usr/lib/python3/dist-packages"))
    try:
        return importlib.import_module(name)
    except ImportError:
        return skip("packages", package)


def run_program(gateway, path, body=b"", complaint=b"", **told):
    """The CGI program without a server (RFC 3875): the status line, the headers, the text."""
    environment = {**os.environ, **gateway.server.given, "SCRIPT_NAME": path, "REMOTE_USER": "ann",
                   "CONTENT_TYPE": "application/json", "CONTENT_LENGTH": str(len(body)), **told}
    made = subprocess.run(["lua5.1", "/srv/librpc-web/librpc.cgi"], env=environment, input=body, capture_output=True)
    check(f"{path}: errors", (made.returncode, made.stderr), (0, complaint))
    head, _, text = made.stdout.partition(b"\r\n\r\n")
    status, *headers = head.decode().split("\r\n")
    return status, dict(header.split(": ", 1) for header in headers), text
