#!/usr/bin/env python3
"""A daemon that answers a call with replies to other calls, again and again.

    chattering_daemon.py PROGRAM FILE

Registers the program with the port mapper and writes FILE when a call came and some
of those replies are out.
"""
import itertools
import random
import socket
import struct
import sys
import time

PORT_MAPPER = ("127.0.0.1", 111)
REPLY_HEADER = struct.Struct(">6I")


def register(program, port):
    """PMAPPROC_SET of RFC 1833, from a reserved port."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as asking:
        asking.bind(("127.0.0.1", random.randrange(700, 1000)))
        asking.settimeout(5)
        call = struct.pack(">14I", 1, 0, 2, 100000, 2, 1, 0, 0, 0, 0, program, 1, socket.IPPROTO_UDP, port)
        asking.sendto(call, PORT_MAPPER)
        answer = asking.recv(100)
        if answer[-4:] != b"\0\0\0\1":
            sys.exit(f"chattering_daemon.py: {program}: expected a registration, found {answer!r}")


def main():
    program, file = int(sys.argv[1]), sys.argv[2]
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as daemon:
        daemon.bind(("127.0.0.1", 0))
        register(program, daemon.getsockname()[1])
        call, caller = daemon.recvfrom(10000)
        xid = struct.unpack(">I", call[:4])[0]
        for number in itertools.count(1):
            daemon.sendto(REPLY_HEADER.pack((xid + number) % 2**32, 1, 0, 0, 0, 0), caller)
            if number == 40:
                with open(file, "w", encoding="ascii") as told:
                    told.write("called, and answered\n")
            time.sleep(0.005)


main()
