#!/usr/bin/env python3
"""What the web gateway costs over CGI: the console's dashboard beside a bare Lua CGI of the same server.

    with_device.sh BUILD -- bench/web.py BUILD PACKAGES [ROUNDS]

One client, one request after the other, both kinds by turns; medians. `./dev bench web` runs it with lighttpd.
"""
import base64
import http.client
import json
import pathlib
import statistics
import sys
import time

SOURCE = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(SOURCE / "tools"))
import web_server  # noqa: E402

BARE = '#!/usr/bin/lua5.1\nio.write("Content-Type: text/plain\\r\\n\\r\\nok\\n")\n'
TABLES = ("devinfo", "portinfo", "route", "radsrv", "lldpifnei", "mstp_inst", "mbainststate", "igmpsnp_grp", "poeifinfo",
          "vrrp_ssconf", "sdsminfo", "ioctlinfo", "dhcpsnp", "lpdet_portinfo", "account")


def main():
    build, packages = sys.argv[1:3]
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 300
    server = web_server.Server("lighttpd", build, packages, {"ann": "secret"})
    bare = pathlib.Path("/srv/librpc-web/bare/librpc.cgi")
    bare.parent.mkdir()
    bare.write_text(BARE)
    bare.chmod(0o755)
    config = pathlib.Path("/srv/librpc-web/servers/lighttpd/librpc.conf")
    config.write_text(config.read_text().replace('"/metrics" =>', '"/bare" => "/srv/librpc-web/bare/librpc.cgi",\n'
                                                 '  "/metrics" =>'))
    server.start()
    headers = {"Authorization": "Basic " + base64.b64encode(b"ann:secret").decode(),
               "Content-Type": "application/json"}
    asked = {
        "bare": ("GET", "/bare", None),
        "health": ("GET", "/api/health", None),
        "all": ("POST", "/api/all", json.dumps({"calls": [{"api": f"oltmib_{table}_get_1"} for table in TABLES]})),
        "ports": ("POST", "/api/rows", json.dumps({"walks": [{"table": "portinfo"}]})),
        "tables": ("POST", "/api/rows", json.dumps({"walks": [{"table": table} for table in TABLES]})),
        "session": ("GET", "/api/session", None),
        "log": ("GET", "/api/log", None),
    }
    times = {name: [] for name in asked}
    try:
        connection = http.client.HTTPConnection("127.0.0.1", web_server.PORT)
        for number in range(rounds + 5):
            for name, (method, path, body) in asked.items():
                began = time.perf_counter()
                connection.request(method, path, body, headers)
                answer = connection.getresponse()
                text = answer.read()
                if answer.status != 200:
                    sys.exit(f"web: {path}: expected 200, found {answer.status}: {text[:200]!r}")
                if number >= 5:
                    times[name].append(time.perf_counter() - began)
    finally:
        server.stop()
    medians = {name: statistics.median(list_) * 1000 for name, list_ in times.items()}
    for name, median in medians.items():
        print(f"{name:8} {median:6.2f} ms  {median / medians['bare']:.2f} times the bare CGI")


main()
