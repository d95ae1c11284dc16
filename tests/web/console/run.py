#!/usr/bin/env python3
"""Runs one file of tests in Node beside the console on lighttpd and the simulated device:

    with_device.sh BUILD -- run.py BUILD FILE.test.mjs [OPTION OF NODE]...

as --test-name-pattern=PATTERN, for one test of the file.

The file finds in its environment where the console is (CONSOLE_URL), its users and their passwords (CONSOLE_USERS),
the packages of Node (CONSOLE_NODE), the browser (CONSOLE_BROWSER), and librpc for Lua. Where a part of that is not
there the test is skipped.
"""
import json
import os
import pathlib
import shutil
import subprocess
import sys

SOURCE = pathlib.Path(__file__).resolve().parents[3]
sys.path.insert(0, str(SOURCE / "tools"))
import web_server  # noqa: E402

SKIPPED = 77
USERS = {"ann": "a word of ann's", "ben": "a word of ben's", "guest": "a word of guest's"}
SITE = """return {
  users = { ann = { change = "*" }, ben = { change = "*" } },
  log = "/run/librpc-web/changes.log",
}
"""


def skip(expected, found):
    print(f"web.console: {expected[0]}: expected {expected[1]}, found {found}")
    sys.exit(SKIPPED)


def main():
    build, test, options = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2], sys.argv[3:]
    node, browser = shutil.which("node"), shutil.which("chromium")
    modules = build / "web" / "node"
    if not node:
        skip(("node", "Node (Debian: nodejs)"), "none")
    if not browser:
        skip(("browser", "chromium"), "none")
    if not (modules / "fetched").exists():
        skip((modules, "the packages of tests/web/package-lock.json (./dev test web)"), "none")
    try:
        server = web_server.Server("lighttpd", build, build / "web" / "packages", USERS, site=SITE)
    except FileNotFoundError as problem:
        skip(("lighttpd", "a web server"), problem)
    server.start()
    environment = {
        **os.environ, "CONSOLE_URL": f"http://127.0.0.1:{web_server.PORT}/", "CONSOLE_USERS": json.dumps(USERS),
        "CONSOLE_NODE": str(modules), "CONSOLE_BROWSER": browser, "CONSOLE_SOURCE": str(SOURCE),
        "LUA_PATH": f"{SOURCE}/lua/?.lua;;", "LUA_CPATH": f"{build}/?.so;;", "LIBRPC_NAMES": f"{SOURCE}/sim/names.lua",
        "HOME": "/run", "TZ": "UTC",
    }
    try:
        status = subprocess.run([node, "--test-reporter=tap", *options, test], env=environment, check=False).returncode
    finally:
        server.stop()
    if status:
        print(server.log_text()[-3000:])
    sys.exit(1 if status else 0)


main()
