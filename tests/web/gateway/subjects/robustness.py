"""What the gateway withstands: bodies of every shape, of which docs/openapi.json says which are taken, any bytes from
clients and from the device, many clients at once, daemons that are silent or were started anew."""
import concurrent.futures
import json
import os
import pathlib
import random
import re
import resource
import signal
import subprocess
import time

from harness import (LOG, ORIGIN, PATIENT, SERVICES, SITE, SOURCE, check, check_in, in_parts, module_of, only,
                     run_program, stopped_device, tell, test)

WRONG_BODIES = (
    b"", b" ", b"null", b"true", b"5", b'"x"', b"[]x", b"[1]", b"{", b'{"calls":', b'{"calls":[}', b"{'calls':[]}",
    b'{"calls":[],}', b'{"calls":[]}{}', b"\xef\xbb\xbf{}", b'{"calls":"x"}', b'{"calls":5}', b'{"calls":{"a":1}}',
    b'{"calls":[5]}', b'{"calls":["x"]}', b'{"calls":[[]],"x":1}', b'{"calls":[{"table":5}]}', b'{"calls":[{"x":1}]}',
    b'{"calls":[{"table":"portinfo","key":5}]}', b'{"calls":[{"table":"portinfo","key":[1]}]}',
    b'{"calls":[{"table":"portinfo","key":{"port":true}}]}', b'{"calls":[{"table":"portinfo","key":{"port":null}}]}',
    b'{"calls":[{"table":"portinfo","key":{"port":{}}}],"x":1}', b'{"calls":[{"table":"portinfo","key":{"port":[[1]]}}]}',
    b'{"calls":[],"seconds":"1"}', b'{"calls":[],"seconds":0}', b'{"calls":[],"seconds":-1}', b'{"calls":[],"seconds":NaN}',
    b'{"calls":[],"seconds":Infinity}', b'{"calls":[],"seconds":1e999}', b'{"calls":[],"seconds":0x10}',
    b'{"calls":[{"table":"\xff"}]}', b'{"calls":[{"table":"\xc0\x80"}]}', b'{"calls":[{"table":"\xed\xa0\x80"}]}',
    b'{"calls":[{"table":"\\ud800"}]}', b'{"calls":[{"table":"a\x00b"}]}',
    b"[" * 20000, b'{"a":' * 9 + b"1" + b"}" * 9, b'{"calls":' + b"[" * 30 + b"]" * 30 + b"}", b'{"":1}',
    b'{"walks":[]}', b'{"calls":[],"calls":5}',
)


# Wrong ones, and what is said of them.
WHOLE = "expected a whole number from 1, found"
TOLD = (
    ("/api/rows", b'{"walks":[{"table":"svi","limit":0}]}', f"body: walks: item 1: limit: {WHOLE} 0"),
    ("/api/rows", b'{"walks":[{"table":"svi","limit":1.5}]}', f"body: walks: item 1: limit: {WHOLE} 1.5"),
    ("/api/rows", b'{"walks":[{"table":"svi","limit":"1"}]}', f'body: walks: item 1: limit: {WHOLE} "1"'),
    ("/api/rows", b'{"walks":[{"table":"svi","limit":1e999}]}', f"body: walks: item 1: limit: {WHOLE} inf"),
    ("/api/rows", b'{"walks":[{},{"table":"svi","after":5}]}', "body: walks: item 2: after: expected an object of fields, found 5"),
    ("/api/rows", b'{"walks":[{"table":"svi","after":{"vlan":true}}]}',
     'body: walks: item 1: after: expected a text, a number or an array of them as field "vlan", found true'),
    ("/api/rows", b'{"walks":[],"seconds":0}', "body: seconds: expected a number above 0, found 0"),
    ("/api/rows", b'{"walks":[],"seconds":false}', "body: seconds: expected a number above 0, found false"),
    ("/api/rows", b'{"calls":[]}', 'body: expected one of seconds, walks, found "calls"'),
    ("/api/rows", b'{"seconds":1}', "body: walks: expected an array, found none"),
    ("/api/all", b'{"calls":{"a":1}}', "body: calls: expected an array, found an object"),
    ("/api/all", b'{"calls":[[1]]}', "body: calls: item 1: expected an object, found an array"),
    ("/api/all", b'[1]', "body: expected an object, found an array"),
    ("/api/check", b'{"table":"svi","fields":[1]}', "body: fields: expected an object of fields, found an array"),
    ("/api/check", b'{"table":"svi","fields":{"a":{"b":1}}}',
     'body: fields: expected a text, a number or an array of them as field "a", found an object'),
    ("/api/check", b'{"table":"svi","fields":{"a":[1,[2]]}}',
     'body: fields: expected a text, a number or an array of them as field "a", found an array'),
    ("/api/check", b'{"table":5}', "body: table: expected a text, found 5"),
    ("/api/check", b'{"tabel":"svi"}', 'body: expected one of api, fields, table (did you mean table?), found "tabel"'),
    ("/api/check", b'{"table":"svi","api":"oltmib_svi_set_1"}', "body: expected api, or table, found both"),
)


@test
def bodies_of_every_wrong_shape_are_refused(gateway):
    for body in WRONG_BODIES:
        answer = gateway.post("/api/all", body)
        check(f"{body[:60]!r}", answer.code, (400, "bad_body"))
        check("with a sentence", answer.json["error"]["message"].startswith("body"), True)
    for path, body, message in TOLD:
        answer = gateway.post(path, body)
        check(f"{path} {body!r}", (*answer.code, answer.json.get("error", {}).get("message")), (400, "bad_body", message))
    for body in b"[" * 20000, b'{"a":' * 9 + b"1" + b"}" * 9:
        check_in("too deep", "nested", gateway.post("/api/all", body).json["error"]["message"])
    many = {"calls": [{"table": "telnet"}] * 64}
    check("as many as the limit", gateway.post("/api/all", many).status, 200)
    check("more", gateway.post("/api/all", {"calls": many["calls"] * 2}).code, (400, "too_many"))
    check("more walks", gateway.post("/api/rows", {"walks": [{"table": "telnet"}] * 65}).code, (400, "too_many"))
    whole = {size: b'{"calls":[]' + b" " * (size - 12) + b"}" for size in (65536, 65537)}
    check("as many bytes as the limit", gateway.post("/api/all", whole[65536]).json, {"results": []})
    check("one more", gateway.post("/api/all", whole[65537]).code, (413, "too_large"))
    check("a large one", gateway.post("/api/all", b'{"calls":[]' + b" " * 65530 + b"}").code, (413, "too_large"))
    check("a larger one", gateway.post("/api/all", b" " * 120000).status, 413)
    for method in "PUT", "DELETE", "PATCH":
        check(method, gateway.send(method, "/api/all", b"{}").status in (400, 403, 405, 501), True)
    for path, allowed in ("/api/all", "POST"), ("/api/session", "GET, HEAD"):
        answer = gateway.send("GET" if allowed == "POST" else "POST", path, None if allowed == "POST" else {})
        check(f"{path} in another way", (answer.code, answer.headers.get("allow")), ((405, "bad_method"), allowed))
    for path in "/api/nothing", "/api/all/more", "/api/../api/x", "/api/%00":
        check(path, gateway.post(path, {"calls": []}).status in (400, 404), True)
    check("a limit that is none", gateway.get("/api/log?limit=x").code, (400, "bad_body"))
    check("afterwards", gateway.post("/api/all", {"calls": [{"table": "telnet"}]}).status, 200)


@test
def any_bytes_as_body_get_an_answer_with_a_code(gateway):
    seed = int(os.environ.get("LIBRPC_TEST_SEED") or random.SystemRandom().randrange(1 << 32))
    chance = random.Random(seed)
    began, rounds = time.monotonic(), 0
    seeds = [json.dumps(body).encode() for body in (
        {"calls": [{"table": "portinfo", "key": {"port": 3}}, {"api": "oltmib_svi_get_1", "fields": {"vlan": 1}}]},
        {"walks": [{"table": "vlaninfo", "after": {"vlan": 1}, "limit": 2}], "seconds": 0.5},
        {"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "ä\u2028 \u0000"}, "read": {"name": "voice"}},
        {"api": "oltmib_class_set_1", "fields": {"map": [1, 2, 3]}, "table": "x"})]
    words = [b"null", b"true", b"-1", b"1e308", b"[]", b"{}", b'""', b"\\u0000", b"\xff", b"&", b'"table"', b"[" * 40,
             b"portinfo", b"4294967296", b"$", b"\r\n", b"%s%n", b"\x00"]
    token = gateway.token("root")
    while time.monotonic() - began < 12:
        body = bytearray(chance.choice(seeds))
        for _ in range(chance.randrange(1, 6)):
            place = chance.randrange(len(body) + 1)
            kind = chance.randrange(4)
            if kind == 0:
                body[place:place + chance.randrange(4)] = b""
            elif kind == 1:
                body[place:place] = chance.choice(words)
            elif kind == 2:
                body[place:place + 1] = bytes([chance.randrange(256)])
            else:
                body[place:place] = bytes(body[chance.randrange(len(body) + 1):])[:40]
        path = chance.choice(("/api/all", "/api/rows", "/api/check", "/api/change"))
        sent = {"Origin": ORIGIN, "X-Librpc-Token": token}
        answer = gateway.post(path, bytes(body), user="root", headers=sent)
        right = answer.status == 200 or 400 <= answer.status < 500 or answer.status in (502, 503, 504)
        try:
            right = right and (answer.status == 200) == ("error" not in answer.json)
        except ValueError:
            right = False
        if not right:
            check(f"seed {seed}, round {rounds}: {path} {bytes(body)!r}", answer.code, "an answer, or a refusal")
            return
        rounds += 1
    check("rounds", rounds > 50, True)
    check("afterwards", gateway.get("/api/health").json["well"], True)
    print(f"{rounds} bodies, seed {seed}")


class Description:
    """docs/openapi.json, and what is asked and answered beside it."""

    def __init__(self, gateway):
        self.gateway, self.jsonschema = gateway, module_of(gateway, "python3-jsonschema", "jsonschema")
        document = json.loads((SOURCE / "docs" / "openapi.json").read_text(encoding="utf-8"))
        self.components = document["components"]
        self.operations = {f"{method.upper()} {path}": operation for path, methods in document["paths"].items()
                           for method, operation in methods.items()}

    def mistake(self, part, value):
        """What is wrong with a value by the schema of a request or an answer; None where nothing is."""
        schema = part["content"]["application/json"]["schema"]["$ref"]
        validator = self.jsonschema.Draft202012Validator({"$ref": schema, "components": self.components})
        return next((f"{list(error.absolute_path)}: {error.message[:300]}" for error in validator.iter_errors(value)),
                    None)

    def ask(self, operation, body=None, **options):
        method, path = operation.split()
        told = self.operations[operation]
        answer = self.gateway.send(method, path, body, **options)
        given = told["responses"].get(str(answer.status), told["responses"]["default"])
        check(f"{operation} {str(body)[:200]}: the answer {answer.text[:300]!r}", self.mistake(given, answer.json),
              None)
        if body is not None:
            is_refused = answer.code == (400, "bad_body") and answer.json["error"]["message"].startswith("body")
            check(f"{operation} {str(body)[:300]}: refused", is_refused,
                  self.mistake(told["requestBody"], body) is not None)


def read_everything(told):
    for operation in "GET /api/session", "GET /api/schema", "GET /api/health", "GET /api/log":
        told.ask(operation)
    schema = told.gateway.get("/api/schema").json
    for part in in_parts(schema["tables"]):
        told.ask("POST /api/rows", {"walks": [{"table": table["table"]} for table in part], "seconds": 20})
        told.ask("POST /api/all", {"calls": [{"table": table["table"]} for table in part], "seconds": 20})
    for part in in_parts([api["name"] for api in schema["apis"]]):
        told.ask("POST /api/all", {"calls": [{"api": name} for name in part], "seconds": 20})


def change_in_every_way(told):
    root = {"user": "root", "headers": {"Origin": ORIGIN, "X-Librpc-Token": told.gateway.token("root")}}
    for body in ({"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "a"}},
                 {"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "b"}, "read": {"name": "voice"}},
                 {"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "a&b"}},
                 {"table": "vlaninfo", "key": {"vlan": 20}, "changes": {"name": "c"}, "add": True},
                 {"table": "account", "key": {"user": "admin"}, "changes": {"password": "x"}},
                 {"table": "snmp_community", "key": {"community": "public"}, "changes": {"view": "all"}},
                 {"api": "oltmib_dyinggasp_support_1"}, {"api": "oltmib_telnet_set_1", "fields": {"tcp_port": 23}},
                 {"table": "queueweight", "changes": {"weights": [8, 7, 6, 5, 4, 3, 2, 1]}}, {"table": 5}, {"key": 1}):
        told.ask("POST /api/change", body, **root)


def send_wrong_bodies(told):
    for body in WRONG_BODIES:
        try:
            parsed = json.loads(body.decode())
            json.dumps(parsed, allow_nan=False, ensure_ascii=False).encode()  # half a character is none
        except (ValueError, RecursionError):
            continue
        for path in "/api/all", "/api/rows", "/api/check":
            told.ask("POST " + path, parsed)


@test
@only("lighttpd")
def openapi_says_what_the_gateway_takes_and_gives(gateway):
    told = Description(gateway)
    check("addresses", set(told.operations), set(gateway.expected("gateway")["addresses"]))
    for schema in told.components["schemas"].values():
        told.jsonschema.Draft202012Validator.check_schema(schema)
    read_everything(told)
    change_in_every_way(told)
    told.ask("GET /api/log")
    send_wrong_bodies(told)
    gateway.configure(SITE.replace(PATIENT, ""))
    tell("fault nsminfo drop")
    told.ask("POST /api/rows", {"walks": [{"table": "portinfo"}], "seconds": 0.2})
    told.ask("POST /api/all", {"calls": [{"table": "portinfo", "key": {"port": 1}}], "seconds": 0.2})
    with stopped_device():
        told.ask("GET /api/health")


@test
def texts_of_the_device_are_json_whatever_their_bytes(gateway):
    texts = {"markup": "<img src=x onerror=alert(1)>", "quotes": '"\\\'`', "controls": "\x01\x1f\x7f\t",
             "right to left": "\u202eabc\u202c", "separators": "\u2028\u2029", "four bytes": "\U0001f600",
             "an escape": "\\u003c/script\\u003e"}
    for what, text in texts.items():
        answer = gateway.change({"table": "portinfo", "key": {"port": 3}, "changes": {"description": text}})
        check(what, answer.status, 200)
        row = gateway.post("/api/all", {"calls": [{"table": "portinfo", "key": {"port": 3}}]}).json["results"][0]["row"]
        check(what + ": read", row["description"], text)
    text = "\u00e4\u00f6 \u20ac \ud55c \U0001f600 \U0010ffff!"
    answer = gateway.change(json.dumps({"table": "portinfo", "key": {"port": 3}, "changes": {"description": text}},
                                       ensure_ascii=False).encode())
    check("bytes beyond ASCII", (answer.status, answer.json["changed"]["description"]["after"]), (200, text))
    libraries = f"LUA_PATH={SOURCE}/lua/?.lua\\;\\; LUA_CPATH={gateway.build}/?.so\\;\\;"
    subprocess.run(["bash", "-c", libraries + " lua5.1 -e 'require \"librpc\" assert(librpc.callapi("
                    "\"oltmib_vlaninfo_set_1\", \"10&1&\\255a\\195(\\195\\164\\237\\160\\128&1\"))'"], check=True)
    answer = gateway.post("/api/all", {"calls": [{"table": "vlaninfo", "key": {"vlan": 10}}]})
    check("bytes that are no UTF-8", answer.text.decode("utf-8", "strict").count("\ufffd"), 5)
    row = answer.json["results"][0]["row"]
    check("are shown as such", row["name"], "\ufffda\ufffd(\u00e4\ufffd\ufffd\ufffd")
    check("and are no other row's", gateway.change({"table": "vlaninfo", "key": {"vlan": 10}, "changes": {
        "tagged": "ge5"}, "read": row}).status, 200)


@test
@only("lighttpd")
def the_program_is_a_cgi_program_to_any_server(gateway):
    ok, schema = "Status: 200 OK", run_program(gateway, "/api/schema")
    check("a method that is not told is GET", schema[0], ok)
    check("type", schema[1]["Content-Type"], "application/json")
    check("path behind the program", run_program(gateway, "/api", PATH_INFO="/schema", REQUEST_METHOD="GET"), schema)
    check("a program of its own address", run_program(gateway, "/x/librpc.cgi", PATH_INFO="/api/schema"), schema)
    check("HEAD", run_program(gateway, "/api/schema", REQUEST_METHOD="HEAD"), (*schema[:2], b""))
    same = run_program(gateway, "/api/schema", HTTP_IF_NONE_MATCH=schema[1]["ETag"])
    check("what has not changed", (same[0], same[2]), ("Status: 304 Not Modified", b""))
    check("the console where nobody else serves it", run_program(gateway, "/x/librpc.cgi", PATH_INFO="/")[0], ok)
    check("and not where the server does", run_program(gateway, "/")[0], "Status: 404 Not Found")
    for what, found, status in (
        ("a query", run_program(gateway, "/api/log", QUERY_STRING="limit=x"), "400 Bad Request"),
        ("no user", run_program(gateway, "/api/schema", REMOTE_USER=""), "403 Forbidden"),
        ("another page's", run_program(gateway, "/api/schema", HTTP_ORIGIN="http://x"), "403 Forbidden"),
        ("the same scheme", run_program(gateway, "/api/schema", HTTP_HOST="x", HTTP_ORIGIN="https://x", HTTPS="on"),
         "200 OK"),
        ("another scheme", run_program(gateway, "/api/schema", HTTP_HOST="x", HTTP_ORIGIN="http://x", HTTPS="on"),
         "403 Forbidden"),
        ("another method", run_program(gateway, "/api/schema", REQUEST_METHOD="POST"), "405 Method Not Allowed"),
        ("below the addresses", run_program(gateway, "/x/librpc.cgi", PATH_INFO="/api/nothing"), "404 Not Found"),
    ):
        check(what, found[0], f"Status: {status}")
    long = json.loads(run_program(gateway, "/api/schema", REQUEST_METHOD="A" * 30)[2])["error"]["message"]
    check("a long method", long, f"/api/schema: expected GET, HEAD, found {'A' * 20}")

    def sentence(length):
        """What is said of the body 5x, of which so many bytes are declared."""
        return json.loads(run_program(gateway, "/api/all", b"5x", REQUEST_METHOD="POST", CONTENT_LENGTH=length)[2])[
            "error"]["message"]
    check("a byte", sentence("1"), "body: expected an object, found 5")
    check("no byte, or none is said", [sentence(length).endswith("T_END at character 1") for length in ("0", "")],
          [True, True])
    calls = b'{"calls":[{"table":"svi","key":{"vlan":1}}]}'
    for what, told, status in (
        ("a body", {}, "200 OK"), ("a shorter length", {"CONTENT_LENGTH": "9"}, "400 Bad Request"),
        ("a longer one", {"CONTENT_LENGTH": "999"}, "200 OK"), ("none", {"CONTENT_LENGTH": ""}, "400 Bad Request"),
        ("a length below 0", {"CONTENT_LENGTH": "-1"}, "400 Bad Request"),
        ("as many as may be", {"CONTENT_LENGTH": "65536"}, "200 OK"),
        ("one more", {"CONTENT_LENGTH": "65537"}, "413 Content Too Large"),
        ("no number", {"CONTENT_LENGTH": "x"}, "413 Content Too Large"),
        ("another type", {"CONTENT_TYPE": "text/plain"}, "415 Unsupported Media Type"),
    ):
        check(what, run_program(gateway, "/api/all", calls, REQUEST_METHOD="POST", **told)[0], f"Status: {status}")


@test
@only("lighttpd")
def a_cgi_program_gives_every_status_its_reason(gateway):
    token = gateway.token("root")

    def change(body, **more):
        told = run_program(gateway, "/api/change", json.dumps(body).encode(), **more, REQUEST_METHOD="POST",
                           REMOTE_USER="root", HTTP_HOST="x", HTTP_ORIGIN="http://x", HTTP_X_LIBRPC_TOKEN=token)
        return told[0]
    body = {"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "b"}}
    check("conflict", change({**body, "read": {"name": "another"}}), "Status: 409 Conflict")
    tell("fault oltmib_vlaninfo_get_1 count=1 error system_err")
    check("a daemon's error", change(body), "Status: 502 Bad Gateway")
    tell("stop nsminfo")
    check("no daemon", change(body), "Status: 503 Service Unavailable")
    tell("start nsminfo")
    gateway.server.write("/srv/etc/web.lua", SITE.replace(PATIENT, "limits = { deadline = 0.2 },"))
    tell("fault oltmib_vlaninfo_get_1 count=1 drop")
    check("a silent daemon", change(body), "Status: 504 Gateway Timeout")
    gateway.server.write("/srv/etc/web.lua", SITE.replace(LOG, "/nowhere/changes.log"))
    complaint = b"librpc.web: log: expected a file that can be written, found /nowhere/changes.log: No such file or " \
                b"directory\n"
    check("no log", change(body, complaint=complaint), "Status: 500 Internal Server Error")


@test
@only("lighttpd")
def what_the_gateway_itself_gets_wrong_is_in_the_servers_log(gateway):
    check("names are checked once", gateway.get("/api/schema").status, 200)
    check("and that is kept", pathlib.Path("/run/librpc-web/names.checked").exists(), True)
    gateway.server.write("/srv/librpc-web/librpc/web/schema.lua", 'error "broken in two"')
    check("the client", gateway.get("/api/schema").json, {"error": {
        "code": "internal", "field": None, "status": 500,
        "message": "the gateway failed, and the server's log tells where"}})
    check_in("the log", "librpc.web: handler: expected an answer, found ", gateway.server.log_text())
    check_in("the log", "broken in two", gateway.server.log_text())


@test
@only("nginx", "apache")
def a_configuration_counts_when_the_server_is_started_anew(gateway):
    def rows():
        return {gateway.get("/api/session").json["limits"]["rows"] for _ in range(20)}
    check("before", rows(), {20000})
    gateway.server.write("/srv/etc/web.lua", "return { limits = { rows = 7 } }")
    check("processes keep what they have read", 20000 in rows(), True)
    gateway.server.restart()
    check("started anew", rows(), {7})


@test
@only("lighttpd")
def what_was_compiled_is_what_runs(gateway):
    for module in pathlib.Path("/srv/librpc-web/librpc/web").glob("health.lua"):
        module.unlink()  # whose source nobody needs
    check("well", gateway.get("/api/health").json["well"], True)


@test
@only("lighttpd")
def compiled_lua_of_another_kind_is_passed_over(gateway):
    compiled = pathlib.Path("/srv/librpc-web/librpc.luac")
    check("there is one", compiled.read_bytes()[:4], b"\x1bLua")
    for what, text in {"another machine's": b"\x1bLua\x51\x00\x00" + compiled.read_bytes()[7:],
                       "another version's": b"\x1bLua\x54" + compiled.read_bytes()[5:],
                       "a part": compiled.read_bytes()[:1000], "nothing": b"", "none": None}.items():
        if text is None:
            compiled.unlink()
        else:
            compiled.write_bytes(text)
        check(what, gateway.get("/api/health").json["well"], True)


@test
@only("lighttpd")
def what_cannot_be_compiled_is_told(gateway):
    folders = [str(SOURCE / "web"), str(SOURCE / "lua")]
    for arguments, told in {
        ("/run",): "arguments: expected OUTPUT FOLDER..., found 1",
        ("/nowhere/librpc.luac", *folders): "/nowhere/librpc.luac: expected a file that can be written, found "
                                            "/nowhere/librpc.luac: No such file or directory",
        ("/dev/full", *folders): "/dev/full: expected a file that can be written, found No space left on device",
        ("/run/librpc.luac", "/run"): "librpc.names: expected its source in /run, found none",
    }.items():
        made = subprocess.run(["lua5.1", SOURCE / "web" / "bundle.lua", *arguments], capture_output=True, text=True)
        check(" ".join(arguments), (made.returncode, made.stderr), (1, f"bundle: {told}\n"))
    broken = pathlib.Path("/run/broken/librpc")
    broken.mkdir(parents=True)
    (broken / "names.lua").write_text("return {", encoding="utf-8")
    output = pathlib.Path("/run/out.luac")

    def compiles(*lua_folders, bytes_=None):
        """The status and what is said; no more than so many bytes fit into a file."""
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            most = resource.getrlimit(resource.RLIMIT_FSIZE)[1]
            resource.setrlimit(resource.RLIMIT_FSIZE, (bytes_ or most, most))
        made = subprocess.run(["lua5.1", SOURCE / "web" / "bundle.lua", output, *lua_folders], capture_output=True,
                              text=True, preexec_fn=limit)
        return made.returncode, made.stderr
    status, said = compiles("/run/broken", *folders)
    check("no Lua", (status, said[:31]), (1, "bundle: modules: expected Lua, "))
    check("nothing is left of it", output.exists(), False)
    check("Lua", compiles(*folders), (0, ""))
    size = output.stat().st_size
    check("a file whose end does not fit", compiles(*folders, bytes_=size // 4096 * 4096),
          (1, f"bundle: {output}: expected a file that can be written, found File too large\n"))
    check("a file that fits", (compiles(*folders, bytes_=size), output.stat().st_size), ((0, ""), size))


@test
def fifty_clients_at_once_each_get_their_own(gateway):
    rounds = 6

    def client(number):
        port = number % 8 + 1
        wrong = []
        for _ in range(rounds):
            answer = gateway.post("/api/all", {"calls": [{"table": "portinfo", "key": {"port": port}},
                                                         {"table": "nothing"},
                                                         {"table": "portstat", "key": {"port": 9 - port}}],
                                               "seconds": 20}, timeout=120)
            found = answer.json["results"] if answer.status == 200 else answer.code
            if answer.status != 200 or (found[0].get("row", {}).get("name"), found[1]["failure"]["code"],
                                        found[2].get("row", {}).get("name")) != (f"ge{port}", "unknown_api",
                                                                                 f"ge{9 - port}"):
                wrong.append(found)
        return wrong
    # busybox keeps nine connections waiting; more are refused for some seconds
    clients = 8 if gateway.name == "busybox" else 50
    with concurrent.futures.ThreadPoolExecutor(clients) as pool:
        wrong = sum(pool.map(client, range(clients)), [])
    check("wrong answers", wrong[:3], [])


@test
def a_silent_daemon_costs_the_deadline_and_its_own_place(gateway):
    schema = gateway.get("/api/schema").json
    first = {}
    for table in schema["tables"]:
        if "get" in table["operations"] and table["key"] in (None, []):
            first.setdefault(table["service"], table["table"])
    calls = [{"api": f"oltmib_{table}_get_1"} for table in first.values()]
    check("services", sorted(first), sorted(SERVICES))
    gateway.configure(SITE.replace(PATIENT, ""))
    tell("fault nsminfo drop")
    spent = {}
    for what, ask in {
        "all": lambda: gateway.post("/api/all", {"calls": calls}).json["results"],
        "rows": lambda: gateway.post("/api/rows", {"walks": [{"table": table} for table in first.values()]})
            .json["results"],
    }.items():
        for _ in range(3):  # a machine that stood still for a moment is not the gateway
            began = time.monotonic()
            results = ask()
            spent[what] = min(spent.get(what, 99), time.monotonic() - began)
        failed = [service for service, one in zip(first, results) if "failure" in one]
        check(what, failed, ["nsminfo"])
    with stopped_device():  # which answers the question whether it is there whatever its faults
        began = time.monotonic()
        health = gateway.get("/api/health").json
        spent["health"] = time.monotonic() - began
    check("health", (health["well"], {one["state"] for one in health["services"]}), (False, {"stuck"}))
    for what, seconds in spent.items():
        check(f"{what}: {seconds:.2f} s of at most 1.2", 1.0 <= seconds <= 1.2, True)
    check("fewer seconds", gateway.post("/api/all", {"calls": [{"table": "portinfo", "key": {"port": 1}}],
                                                     "seconds": 0.2}).json["results"][0]["failure"]["code"],
          "timed_out")
    began = time.monotonic()
    check("a change", gateway.change({"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "x"}}).code,
          (504, "timed_out"))
    check("is given up as early", time.monotonic() - began < 5, True)
    tell("clear")
    tell("stop lpdet")
    services = {one["name"]: one for one in gateway.get("/api/health").json["services"]}
    check("absent", (services["lpdet"]["state"], services["lpdet"]["failure"]["code"]), ("absent", "no_daemon"))
    tell("start lpdet")
    check("back", gateway.get("/api/health").json["well"], True)


@test
def a_daemon_that_was_started_anew_costs_no_read(gateway):
    calls = {"calls": [{"api": "oltmib_lpdet_global_get_1"}, {"table": "portinfo", "key": {"port": 3}}]}
    walks = {"walks": [{"table": "lpdet_portinfo"}, {"table": "portinfo"}]}
    for round_, daemons in enumerate((["lpdet", "nsminfo"], ["nsminfo"], ["lpdet"], ["lpdet", "nsminfo"])):
        for _ in range(8):  # each process of a server's
            gateway.post("/api/all", calls)
            gateway.post("/api/rows", walks)
        for daemon in daemons:
            tell(f"restart {daemon}")
        for answer in gateway.post("/api/all", calls), gateway.post("/api/rows", walks):
            check(f"round {round_}", [one.get("failure") for one in answer.json["results"]], [None, None])
        check("health", gateway.get("/api/health").json["well"], True)


@test
@only("nginx", "apache")
def a_second_try_takes_no_longer_than_the_first_has_left(gateway):
    """One daemon refuses and is tried again; the other is silent and took all the time by then."""
    calls = {"calls": [{"api": "oltmib_lpdet_global_get_1"}, {"table": "portinfo", "key": {"port": 3}}], "seconds": 0.6}
    spent = []
    for _ in range(3):  # a machine that stood still for a moment is not the gateway
        for _ in range(8):
            gateway.post("/api/all", calls)
        tell("restart lpdet")
        tell("fault lpdet drop")
        tell("fault nsminfo drop")
        began = time.monotonic()
        results = gateway.post("/api/all", calls).json["results"]
        spent.append(time.monotonic() - began)
        check("both fail", ["failure" in one for one in results], [True, True])
        tell("clear")
    check(f"{spent}: a try of 0.6 s", 0.6 <= min(spent) < 1.1, True)


@test
@only("nginx")
def a_body_that_the_server_keeps_in_a_file_is_one_like_any(gateway):
    path = pathlib.Path("/srv/librpc-web/servers/nginx/librpc.conf")
    text = path.read_text(encoding="utf-8")
    small = re.sub(r"client_body_buffer_size \w+;", "client_body_buffer_size 1k;", text)
    check("a smaller buffer", small != text, True)
    gateway.server.write(path, small)
    gateway.server.restart()
    call = b'{"calls":[{"table":"portinfo","key":{"port":3}}]'
    for size, code in (2000, 200), (65536, 200), (65537, 413), (70000, 413):
        answer = gateway.post("/api/all", call + b" " * (size - len(call) - 1) + b"}")
        check(f"{size} bytes", answer.status, code)
        if code == 200:
            check("its row", answer.json["results"][0]["row"]["name"], "ge3")
