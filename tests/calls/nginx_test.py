"""The nginx example, in real nginx with one worker, beside the simulated device:

    nginx_test.py ROOT EXAMPLE

ROOT is where nginx' packages are unpacked, EXAMPLE the folder of the example.
"""
import concurrent.futures
import http.client
import os
import subprocess
import sys
import time
import urllib.parse

root, example = sys.argv[1:]
VLAN = "oltmib_vlaninfo_get_1"
VLAN_10 = "10&1&voice&1&ge1,ge2&ge3,ge4&&0&0\n"
SLOW = 5  # seconds that the slow daemon takes
MANY = 50  # requests at once
AT_ONCE = 10  # of them are sent before the daemon has read them: its socket has room for some 30
failures = []


def equal(what, found, expected):
    if found != expected:
        failures.append(what)
        print(f"{what}: expected {expected!r}, found {found!r}", file=sys.stderr)


def tell(command):
    result = subprocess.run([os.environ["SIM_DEVICE"], "--tell", os.environ["SIM_CONTROL"], command],
                            capture_output=True, text=True, check=True)
    return result.stdout.strip()


def get(path):
    """The status, the text and the seconds of a request."""
    started = time.monotonic()
    connection = http.client.HTTPConnection("127.0.0.1", 8080, timeout=60)
    connection.request("GET", path)
    response = connection.getresponse()
    text = response.read().decode()
    connection.close()
    return response.status, text, time.monotonic() - started


def call(api, argument=""):
    return get("/call?" + urllib.parse.urlencode({"api": api, "argument": argument}))


def configuration():
    """The example's, with the folders that an installed nginx has elsewhere."""
    with open(example + "/nginx.conf", encoding="utf-8") as file:
        text = file.read()
    installed = "/usr/share/doc/librpc-doc/examples/calls/openresty.lua"
    equal("the handler of the example", text.count(installed), 1)
    text = text.replace(installed, example + "/openresty.lua")
    for kind in "client_body", "proxy", "fastcgi", "uwsgi", "scgi":
        text = text.replace("http {", f"http {{ {kind}_temp_path /run/nginx_{kind};")
    with open("/run/nginx.conf", "w", encoding="utf-8") as file:
        file.write(text)
    return file.name


def start():
    nginx = subprocess.Popen([root + "/usr/sbin/nginx", "-p", root + "/usr/share/nginx/", "-c", configuration(),
                              "-g", "daemon off; user root;"])
    for _ in range(3000):
        try:
            get("/page")
            return nginx
        except OSError:
            if nginx.poll() is not None:
                break
            time.sleep(0.02)
    sys.exit("nginx_test: nginx: expected one that answers, found none")


def one_by_one():
    equal("a call", call(VLAN, "10")[:2], (200, VLAN_10))
    equal("no such API", call("oltmib_nothing_get_1")[:2],
          (404, "unknown_api: oltmib_nothing_get_1: no API of that name is registered\n"))
    tell("fault nsminfo count=1 error system_err")
    status, text, _ = call(VLAN, "10")
    equal("a call that is rejected", (status, text.split(":")[0]), (503, "rejected"))
    equal("the next", call(VLAN, "10")[:2], (200, VLAN_10))
    tell("restart nsminfo")
    status, text, _ = call(VLAN, "10")
    equal("a daemon that was restarted", (status, text), (503, f"refused: {VLAN}: expected a reply, found none: "
                                                          "connection refused\n"))
    equal("the next call finds it", call(VLAN, "10")[:2], (200, VLAN_10))
    tell("fault nsminfo count=1 double")
    equal("a doubled reply", call(VLAN, "10")[:2], (200, VLAN_10))
    tell("stop lpdet")
    equal("no daemon", call("oltmib_lpdet_global_get_1")[1].split(":")[0], "no_daemon")


def beside_slow_ones():
    tell(f"fault nsminfo delay {SLOW * 1000}")
    before = int(tell("count nsminfo"))
    with concurrent.futures.ThreadPoolExecutor(MANY) as pool:
        slow = []
        while len(slow) < MANY:
            slow += [pool.submit(call, VLAN, "10") for _ in range(AT_ONCE)]
            while int(tell("count nsminfo")) < before + len(slow):
                if ended := [one.result()[:2] for one in slow if one.done()]:
                    sys.exit(f"nginx_test: {VLAN}: expected calls that wait {SLOW} s, found {ended[0]}")
                time.sleep(0.02)
        pages = [get("/page")[::2] for _ in range(100)]
        others = [call("oltmib_vrrp_ssstate_get_1", "1")[::2] for _ in range(100)]
        equal("slow calls that had ended while the pages were read", sum(one.done() for one in slow), 0)
        slow = [one.result() for one in slow]
    equal("other pages", {status for status, _ in pages + others}, {200})
    equal("slow pages", {one[:2] for one in slow}, {(200, VLAN_10)})
    equal("executions", int(tell("count nsminfo")), before + MANY)
    for what, times in ("pages without a call", pages), ("pages of another daemon", others):
        worst = sorted(seconds for _, seconds in times)
        print(f"{what} beside {MANY} calls of {SLOW} s: median {worst[50] * 1000:.1f} ms, "
              f"99 of 100 under {worst[98] * 1000:.1f} ms")
    print(f"the slow ones: {min(one[2] for one in slow):.2f} to {max(one[2] for one in slow):.2f} s")


nginx = start()
try:
    one_by_one()
    beside_slow_ones()
finally:
    nginx.terminate()
    nginx.wait()
sys.exit(1 if failures else 0)
