"""The gateway's ends: how far back the log is shown, how long a request may take and how many rows it shares, what a
user's name and a token may be, which status a code has, what a file is declared as."""
import json
import math
import os
import pathlib
import time

from harness import LOG, PATIENT, SITE, SOURCE, check, only, run_program, tell, test

# docs/gateway.md says in words which those are; of any other code the gateway itself is to blame.
STATUSES = {
    400: "bad_body too_many no_operation unknown_field unknown_option same_field read_only bad_type bad_number "
         "out_of_range bad_mac bad_hex bad_list too_long separator zero_byte empty_text no_key not_carried two_sets",
    403: "no_user bad_user not_allowed not_same_origin bad_token",
    404: "bad_address unknown_api no_row", 405: "bad_method", 409: "changed_meanwhile row_exists", 413: "too_large",
    415: "bad_content_type",
    502: "cut_reply bad_text other_row daemon_status repeated_row rejected bad_reply",
    503: "no_portmapper no_daemon no_client refused interrupted not_sent", 504: "timed_out deadline",
}


@test
@only("lighttpd")
def every_code_has_its_status(gateway):
    told = {code: status for status, codes in STATUSES.items() for code in codes.split()}
    found = gateway.expected("gateway")["statuses"]
    check("codes", set(found), set(gateway.get("/api/schema").json["codes"]))
    check("statuses", found, {code: told.get(code, 500) for code in found})
    check("no other code", set(told) - set(found), set())


@test
@only("lighttpd")
def the_logs_last_changes_are_shown_the_newest_first(gateway):
    def shown(count, query="", size=100, longer=0):
        """The numbers of the changes that are shown of so many, whose lines have so many bytes, the first some more."""
        lines = [json.dumps({"table": "vlaninfo", "number": number}) for number in range(count)]
        text = "".join(line[:-1] + "," + json.dumps("pad") + ":" + json.dumps("x" * (size - len(line) - 10)) + "}\n"
                       for line in lines)
        text = text.replace("xx", "xx" + "x" * longer, 1)
        check("bytes", len(text), count * size + longer)
        pathlib.Path(LOG).write_text(text, encoding="utf-8")
        return [one["number"] for one in gateway.get("/api/log" + query).json["changes"]]
    newest = list(range(299, -1, -1))
    check("none", shown(0), [])
    check("few", shown(3), [2, 1, 0])
    check("as many as nobody says", shown(300), newest[:20])
    for query, count in ("", 20), ("?limit=7", 7), ("?limit=0", 0), ("?limit=200", 200), ("?limit=201", 200):
        check(query, shown(300, query), newest[:count])
    # of long lines those that stand whole in the last 256 KiB
    check("long lines", shown(300, "?limit=200", 2000), newest[:math.floor(262144 / 2000)])
    check("as many bytes as are looked at", shown(128, "?limit=200", 2048), newest[-128:])
    check("one byte more", shown(128, "?limit=200", 2048, longer=1), newest[-128:-1])
    for wrong in "?limit=", "?limit=x", "?limit=-1", "?limit=5&x", "?x=5":
        check(wrong, gateway.get("/api/log" + wrong).code, (400, "bad_body"))


@test
@only("lighttpd")
def a_request_may_take_the_configurations_seconds_and_rows(gateway):
    gateway.configure(SITE.replace(PATIENT, "limits = { seconds = 0.5, deadline = 20, rows = 5 },"))
    tell("fault nsminfo drop")
    began = time.monotonic()
    for sent in {"seconds": 15}, {}:
        result = gateway.post("/api/all", {"calls": [{"table": "portinfo", "key": {"port": 1}}], **sent}).json
        check(f"{sent}", result["results"][0]["failure"]["code"], "timed_out")
    check("half a second", time.monotonic() - began < 10, True)
    tell("clear")
    gateway.configure(SITE.replace(PATIENT, "limits = { deadline = 20, rows = 5 },"))

    def counts(*limits):
        walks = [{"table": "portstat", **({"limit": limit} if limit else {})} for limit in limits]
        results = gateway.post("/api/rows", {"walks": walks}).json["results"]
        return [len(one["rows"]) for one in results]
    check("one walk's", counts(None), [5])
    check("no more for who asks for more", counts(100), [5])
    check("fewer for who asks for fewer", counts(2), [2])
    check("two share", counts(None, 9), [2, 2])
    check("each has one", counts(*[None] * 6), [1] * 6)


@test
@only("lighttpd")
def a_users_name_has_a_hundred_bytes_and_no_control_character(gateway):
    for name, status in (("a" * 100, "200 OK"), ("a" * 101, "403 Forbidden"), ("a\x01", "403 Forbidden"),
                         ("a\x7f", "403 Forbidden"), ("a b", "200 OK"), ("\u00e4", "200 OK")):
        check(repr(name), run_program(gateway, "/api/session", REMOTE_USER=name)[0], f"Status: {status}")


@test
@only("lighttpd")
def a_token_counts_for_its_day_and_goes_two_days_later(gateway):
    folder = pathlib.Path("/run/librpc-web")
    before, token, after = time.time(), gateway.token("root"), time.time()
    days = {int(path.name.split(".")[1]) for path in folder.glob("*.[0-9]*")}
    check("days since 1970", days <= {int(before // 86400), int(after // 86400)}, True)
    body = {"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "mine"}}
    other = "".join(chr(ord(one) + step) for one, step in zip(token[:2], (1, -1))) + token[2:]
    check("as far from it one way as the other", gateway.change(body, token=other).code, (403, "bad_token"))
    check("its own", gateway.change(body, token=token).status, 200)
    for name, hours in ("00.1", 49), ("00.2", 47):
        (folder / name).write_text("x", encoding="utf-8")
        os.utime(folder / name, (time.time() - hours * 3600,) * 2)
    (folder / "keep").write_text("x", encoding="utf-8")
    os.utime(folder / "keep", (0, 0))
    gateway.token("ann")
    check("those that are left", [(folder / name).exists() for name in ("00.1", "00.2", "keep")], [False, True, True])
    for length in 47, 49:
        for path in folder.glob("*.[0-9]*"):
            path.write_text("0" * length, encoding="utf-8")
        check(f"a file of {length} bytes", gateway.get("/api/session").code[0], 500 if length < 48 else 200)
        check(f"a part of one of {length}", gateway.change(body, token="0" * 47).code, (403, "bad_token"))


@test
@only("lighttpd")
def a_token_is_of_the_day_that_begins_at_midnight_and_of_all_its_bytes(gateway):
    gateway.lua("/run/librpc-web", source="""
        local tokens = require "librpc.web.tokens"
        for _, now in ipairs { 20000 * 86400 - 1, 20000 * 86400 } do
          os.time = function() return now end
          assert(tokens.of({ state = arg[1] }, "ann"))
        end""")
    folder = pathlib.Path("/run/librpc-web")
    check("days", sorted(path.name for path in folder.glob("*.[0-9]*")), ["616e6e.19999", "616e6e.20000"])
    token = gateway.token("root")
    body = {"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "mine"}}

    def next_to(one):
        return chr(ord(one) + 1)
    for what, other in {"the first byte": next_to(token[0]) + token[1:],
                        "the last byte": token[:-1] + next_to(token[-1]),
                        "one byte less, and one that differs": next_to(token[0]) + token[1:-1]}.items():
        check(what, gateway.change(body, token=other).code, (403, "bad_token"))
    for path in folder.glob("*.[0-9]*"):
        path.write_text(token + "0", encoding="utf-8")
    check("of a longer file what the session tells", gateway.change(body, token=gateway.token("root")).status, 200)


@test
@only("busybox")
def files_are_declared_as_what_they_are(gateway):
    console = SOURCE / "web" / "console"
    types = {".html": "text/html; charset=utf-8", ".js": "text/javascript; charset=utf-8",
             ".mjs": "text/javascript; charset=utf-8", ".css": "text/css; charset=utf-8", ".svg": "image/svg+xml"}
    seen = set()
    for path in console.rglob("*"):
        if path.suffix in types:
            seen.add(path.suffix)
            answer = gateway.get("/" + str(path.relative_to(console)))
            check(path.name, (answer.headers["content-type"], answer.headers["cache-control"]),
                  (types[path.suffix], "no-cache"))
    check("kinds", {".html", ".js", ".css"} <= seen, True)


@test
@only("lighttpd")
def times_are_seconds_and_milliseconds_of_calls(gateway):
    began = time.monotonic()
    services = gateway.get("/api/health").json["services"]
    spent = (time.monotonic() - began) * 1000
    for one in services:
        check(one["name"], 0 < one["ms"] < spent, True)
        check("hundredths", abs(one["ms"] * 100 - round(one["ms"] * 100)) < 1e-6, True)
    timed = [line for line in gateway.get("/metrics").text.decode().splitlines()
             if line.startswith(("librpc_service_seconds{", "librpc_table_seconds{"))]
    check("each service's and each table's", len(timed), len(services) + 4)
    for line in timed:
        check(line, 0 < float(line.split()[-1]) < 20, True)
