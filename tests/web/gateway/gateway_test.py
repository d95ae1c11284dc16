#!/usr/bin/env python3
"""The gateway on real web servers, beside the simulated device; each test starts its server.

    with_device.sh BUILD -- gateway_test.py BUILD PACKAGES SERVER TEST     ends with 77 where the server is not there
    gateway_test.py --names                                                SERVER.TEST, for CMake

A test is a function with `@test` in a file of subjects/, named by what holds; `@only` names its servers where they
are not all. A new file is found there. harness.py has what tests are made of.
"""
import importlib
import pathlib
import sys

sys.dont_write_bytecode = True  # whoever builds finds nothing new in the source tree
import harness  # noqa: E402

for subject in sorted((harness.HERE / "subjects").glob("*.py")):
    importlib.import_module(f"subjects.{subject.stem}")


def main(arguments):
    if arguments == ["--names"]:
        print(";".join(f"{server}.{test.__name__}" for test in harness.tests for server in test.servers))
        return 0
    build, packages, server, name = arguments
    test = next(test for test in harness.tests if test.__name__ == name)
    try:
        gateway = harness.Gateway(server, pathlib.Path(build).resolve(), packages, listen=test.listen)
    except FileNotFoundError as missing:
        print(f"{missing}: skipped")
        return harness.SKIPPED
    with gateway:
        test(gateway)
    return 1 if harness.failures else 0


sys.exit(main(sys.argv[1:]))
