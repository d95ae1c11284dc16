#!/usr/bin/env python3
"""`./dev web`, without its building: the address that it prints is the machine's, and leads to the console.

    dev_web_test.py BUILD PACKAGES [--nginx|--apache|--busybox]     ends with 77 where there is no web server
"""
import base64
import http.client
import os
import pathlib
import re
import signal
import socket
import subprocess
import sys
import time

SOURCE = pathlib.Path(__file__).resolve().parent.parent.parent.parent
build, packages, *options = sys.argv[1:]
if not pathlib.Path(packages).exists():
    print(f"dev_web_test: packages: expected {packages}, found none: skipped")
    sys.exit(77)
failures = []


def check(what, found, expected):
    if found != expected:
        failures.append(what)
        print(f"{what}:\n  expected {expected!r}\n  found    {found!r}", file=sys.stderr)


def start(port):
    return subprocess.Popen([SOURCE / "tools" / "dev_web.py", build, packages, "--port", str(port), *options],
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, start_new_session=True)


def get(path, password=None):
    connection = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
    headers = {"Authorization": "Basic " + base64.b64encode(f"admin:{password}".encode()).decode()} if password else {}
    connection.request("GET", path, headers=headers)
    return connection.getresponse()


with socket.socket() as free:
    free.bind(("127.0.0.1", 0))
    port = free.getsockname()[1]
program = start(port)
try:
    text = program.stdout.readline() + program.stdout.readline()
    told = re.search(rf"(http://127\.0\.0\.1:{port}/)\n +user (\w+), password (\S+)\n", text)
    check("address, user, password", bool(told), True)
    if told:
        check("without a password", get("/api/session").status, 401)
        base = "/cgi-bin/librpc.cgi" if "--busybox" in options else ""
        session = get(f"{base}/api/session", told[3])
        check("with it", (session.status, b'"user":"admin"' in session.read()), (200, True))
        check("a large answer", len(get(f"{base}/api/schema", told[3]).read()) > 100000, True)
        other = start(port)
        check("a port that is taken", (other.wait(30), other.stderr.read()), (1, (
            f"web: 127.0.0.1:{port}: expected a free port (./dev web --port N takes another), found Address already in "
            "use\n")))
    os.killpg(program.pid, signal.SIGINT)  # Ctrl-C
    check("it ends", program.wait(30) in (0, 130), True)
    with socket.socket() as probe:
        check("nobody listens any more", probe.connect_ex(("127.0.0.1", port)) != 0, True)
finally:
    if program.poll() is None:
        os.killpg(program.pid, signal.SIGKILL)

# One that is ended takes what it started along.
program = start(port)
try:
    program.stdout.readline()
finally:
    program.terminate()
for _ in range(600):
    with socket.socket() as probe:
        listens = probe.connect_ex(("127.0.0.1", port)) == 0
    if not listens:
        break
    time.sleep(0.1)
check("nobody listens for one that was ended", listens, False)
sys.exit(1 if failures else 0)
