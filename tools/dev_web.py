#!/usr/bin/env python3
"""./dev web: the web console beside the simulated device, reachable on this machine.

    dev_web.py BUILD PACKAGES [--nginx|--apache|--busybox] [--port N]

The device and the web server run in a private network. The listening socket is made here, before that, and goes
along: a connection to it is carried to the web server inside.
"""
import argparse
import asyncio
import os
import pathlib
import secrets
import signal
import socket
import sys

sys.dont_write_bytecode = True
import web_server  # noqa: E402

SOURCE = pathlib.Path(__file__).resolve().parent.parent
INSIDE = "LIBRPC_WEB_LISTENER"  # the descriptor's number, for the half that runs inside
USER = "admin"
SITE = """-- What ./dev web lets its user do: everything.
return {
  everybody = { read = "*", change = "*" },
  log = "/run/librpc-web/changes.log",
  metrics = { "portstat", "lldpifstat", "mbaserialstatis", "mbainststatis" },
}
"""


def fail(where, expected, found):
    print(f"web: {where}: expected {expected}, found {found}", file=sys.stderr)
    sys.exit(1)


def parse():
    parser = argparse.ArgumentParser(prog="./dev web", allow_abbrev=False)
    servers = parser.add_mutually_exclusive_group()
    for server in web_server.Server.names:
        servers.add_argument(f"--{server}", dest="server", action="store_const", const=server, default="lighttpd",
                             help=f"serve by {server}" + (", as without any of these" if server == "lighttpd" else ""))
    parser.add_argument("--port", type=int, default=8080, metavar="N", help="on 127.0.0.1; 8080 if not given")
    parser.add_argument("build", help=argparse.SUPPRESS)
    parser.add_argument("packages", help=argparse.SUPPRESS)
    options = parser.parse_args()
    if not 0 < options.port < 65536:
        fail("--port", "a number from 1 to 65535", options.port)
    return options


def outside(options):
    listener = socket.socket()
    listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    try:
        listener.bind(("127.0.0.1", options.port))
    except OSError as problem:
        fail(f"127.0.0.1:{options.port}", "a free port (./dev web --port N takes another)", problem.strerror)
    listener.listen(128)
    os.set_inheritable(listener.fileno(), True)
    os.environ[INSIDE] = str(listener.fileno())
    with_device = str(SOURCE / "tools" / "with_device.sh")
    os.execv(with_device, [with_device, options.build, "--", sys.executable, *sys.argv])


async def carry(reader, writer):
    try:
        while data := await reader.read(65536):
            writer.write(data)
            await writer.drain()
        if writer.can_write_eof():
            writer.write_eof()
    except OSError:
        pass


async def forward(reader, writer):
    """One connection, both ways, until both ends have said all."""
    try:
        inner_reader, inner_writer = await asyncio.open_connection("127.0.0.1", 8080)
    except OSError:
        writer.close()
        return
    await asyncio.gather(carry(reader, inner_writer), carry(inner_reader, writer))
    inner_writer.close()
    writer.close()


async def serve(listener, server):
    over = asyncio.Event()
    for number in signal.SIGINT, signal.SIGTERM:
        asyncio.get_running_loop().add_signal_handler(number, over.set)
    forwarder = await asyncio.start_server(forward, sock=listener)
    parent = os.getppid()
    while not over.is_set() and os.getppid() == parent:  # who was killed is no parent any more
        if server.process.poll() is not None:
            fail(server.name, "a server that runs", f"an end with status {server.process.returncode}")
        try:
            await asyncio.wait_for(over.wait(), 0.5)
        except asyncio.TimeoutError:
            pass
    forwarder.close()


def inside(options):
    listener = socket.socket(fileno=int(os.environ.pop(INSIDE)))
    password = secrets.token_urlsafe(9)
    try:
        server = web_server.Server(options.server, options.build, options.packages, {USER: password}, site=SITE,
                                   live=True)
        server.start()
    except (web_server.Failed, FileNotFoundError) as problem:
        sys.exit(str(problem))
    try:
        print(f"web: {options.server} serves the console at http://127.0.0.1:{options.port}/\n"
              f"     user {USER}, password {password}\n"
              f"     device: {os.environ['SIM_DEVICE']} --tell {os.environ['SIM_CONTROL']} COMMAND (in its network)\n"
              "     Ctrl-C ends it", flush=True)
        asyncio.run(serve(listener, server))
    finally:
        server.stop()


def main():
    options = parse()
    if INSIDE in os.environ:
        inside(options)
    else:
        outside(options)


main()
