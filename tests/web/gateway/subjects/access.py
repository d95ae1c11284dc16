"""Who is let in and may do what: users, rights, secrets, what a browser is told of the answers, and the
configuration that says so."""
import base64
import json
import pathlib
import re
import subprocess

from harness import APIS, LOG, SITE, SOURCE, TABLES, blocks, check, check_in, in_parts, only, tell, test


@test
def rights_are_what_the_configuration_gives(gateway):
    rename = {"table": "vlaninfo", "key": {"vlan": 20}, "changes": {"name": "film"}}
    check("who may not change", gateway.change(rename, user="ann").code, (403, "not_allowed"))
    check("a group's member", gateway.change(rename, user="olga").status, 200)
    other = {"table": "telnet", "key": {}, "changes": {"tcp_port": 2323}}
    check("another table", gateway.change(other, user="olga").code, (403, "not_allowed"))
    check("by its API", gateway.change({"api": "oltmib_telnet_set_1", "fields": {"tcp_port": 2323}},
                                       user="olga").code, (403, "not_allowed"))
    check("by its API's name as a table", gateway.change({**other, "table": "oltmib_telnet_set_1"}, user="olga").code,
          (403, "not_allowed"))
    check("who may all", gateway.change(other).status, 200)
    check("nothing was changed by the others", gateway.expected("get", "vlaninfo", '{"vlan":20}', "name"), ["film"])
    gateway.configure('return { everybody = { read = { "portinfo" } }, users = { olga = { read = { "vlaninfo" }, '
                      'change = { "telnet", "vlaninfo" } }, root = { read = "*" } }, '
                      'metrics = { "portstat", "lldpifstat" }, log = "%s" }' % LOG)

    def codes(user):
        calls = [{"table": "portinfo", "key": {"port": 1}}, {"table": "vlaninfo", "key": {"vlan": 1}},
                 {"api": "oltmib_portstat_get_1", "fields": {"port": 1}}]
        results = gateway.post("/api/all", {"calls": calls}, user=user).json["results"]
        walks = gateway.post("/api/rows", {"walks": [{"table": "vlaninfo"}]}, user=user).json["results"]
        return [one.get("failure", {}).get("code") for one in results + walks]
    check("everybody's", codes("ann"), [None, "not_allowed", "not_allowed", "not_allowed"])
    check("a user's beyond", codes("olga"), [None, None, "not_allowed", None])
    check("all", codes("root"), [None] * 4)
    check("who may not read may not change", gateway.change(other, user="olga").code, (403, "not_allowed"))
    check("session", [gateway.get("/api/session", user=user).json["tables"]["vlaninfo"] for user in ("ann", "olga")],
          [{"read": False, "change": False}, {"read": True, "change": True}])
    check("metrics of tables", [len(re.findall(r"^librpc_(?:portstat|lldpifstat)_", gateway.get(
        "/metrics", user=user).text.decode(), re.M)) > 0 for user in ("ann", "root")], [False, True])
    logged = [one["table"] for one in gateway.get("/api/log", user="ann").json["changes"]]
    check("the log of tables", ("vlaninfo" in logged, "telnet" in logged), (False, False))


@test
def nobody_is_let_in_without_a_name(gateway):
    for path in "/index.html", "/api/session", "/api/health", "/metrics":
        check(path, gateway.get(path, user=None).status, 401)
    wrong = {"Authorization": "Basic " + base64.b64encode(b"root:wrong").decode()}
    check("a wrong password", gateway.get("/api/session", user=None, headers=wrong).status, 401)
    for header in "Remote-User", "X-Remote-User", "REMOTE_USER":
        check(header, gateway.get("/api/session", headers={header: "root"}).json["user"], "ann")
    gateway.server.authenticates(False)
    for headers in {}, {"Remote-User": "root"}, {"Authorization": "Basic " + base64.b64encode(b"root:x").decode()}:
        answer = gateway.get("/api/session", user=None, headers=headers)
        check(f"a server that asks nobody: {headers}", answer.code, (403, "no_user"))
    gateway.configure('return { without_user = { read = { "portinfo" } } }')
    session = gateway.get("/api/session", user=None).json
    check("unless the configuration says so", (session["user"], session["tables"]["portinfo"]["read"],
                                              session["tables"]["vlaninfo"]["read"]), (None, True, False))


class Attempts:
    """What is tried to get at secrets, each of which is a text that stands nowhere else, and every answer to it."""
    mark = "XyZZy7"

    def __init__(self, gateway):
        self.gateway, self.token, self.answers = gateway, gateway.token("root"), []

    def post(self, path, body):
        self.answers.append(self.gateway.post(path, body))
        return self.answers[-1]

    def change(self, body):
        self.answers.append(self.gateway.change(body, token=self.token))
        return self.answers[-1]

    def first_row(self, table):
        return self.gateway.post("/api/rows", {"walks": [{"table": table}]}).json["results"][0]["rows"][0]

    def wrong_fields(self, table, field):
        for api in f"oltmib_{table}_set_1", f"oltmib_{table}_get_1":
            self.post("/api/check", {"api": api, "fields": {field: self.mark + "&" + "x" * 400}})
        self.change({"api": f"oltmib_{table}_set_1", "fields": {field: self.mark + "&"}})

    def a_secret_key(self, table, field):
        secret = f"{table}.{field}"
        check(secret, self.change({"table": table, "key": {field: "public"}, "changes": {"view": "all"}}).status, 200)
        check(secret, self.change({"table": table, "key": {field: self.mark}, "changes": {"view": "all", "number": 7},
                                   "add": True}).status, 200)

    def a_secret_of_a_row(self, table, field):
        secret, mark, hidden = f"{table}.{field}", self.mark, {"secret": True}
        row = self.first_row(table)
        fields = next(one for one in self.gateway.get("/api/schema").json["tables"] if one["table"] == table)["fields"]
        key = {one["name"]: row[one["name"]] for one in fields if one["key"]}
        check(secret + " is not shown", row[field], None)
        answer = self.change({"table": table, "key": key, "changes": {field: mark}, "read": row})
        check(secret + " can be set", (answer.status, answer.json.get("changed")), (200, {field: hidden}))
        check(secret + " is set", self.gateway.expected("get", table, json.dumps(key), field), [mark])
        self.change({"table": table, "key": key, "changes": {field: mark + "2"}, "read": row})
        self.change({"table": table, "key": key, "changes": {field: mark}, "add": True})
        new = {name: f"new{len(self.answers)}" if isinstance(value, str) else 77 for name, value in key.items()}
        answer = self.change({"table": table, "key": new, "changes": {field: mark}, "add": True})
        check(secret + " can be added", (answer.status, answer.json.get("changed")), (200, {field: hidden}))
        answer = self.change({"api": f"oltmib_{table}_set_1", "fields": {**key, field: mark}})
        check(secret + " by its API", (answer.status, answer.json["changed"][field]), (200, hidden))
        self.change({"table": table, "key": {**key, field: mark}, "changes": {}})
        self.post("/api/all", {"calls": [{"table": table, "key": {**key, field: mark}},
                                         {"api": f"oltmib_{table}_get_1", "fields": {field: mark}},
                                         {"api": f"oltmib_{table}_getn_1"}]})
        self.post("/api/rows", {"walks": [{"table": table, "after": {**row, field: mark}}]})

    def another_row(self, table, field, key_field):
        key = {key_field: self.first_row(table)[key_field]}
        self.change({"table": table, "key": key, "changes": {field: self.mark}})
        answer = self.post("/api/all", {"calls": [{"table": table, "key": {**key, field: "a guess"}}]})
        check("another row", answer.json["results"][0]["failure"]["code"], "other_row")

    def daemons_that_fail(self, tables):
        """They answer with bytes of no record, or twice."""
        for fault in "truncate 60", "random 0", "random 400", "double", "error garbage_args":
            tell(f"fault * {fault}")
            self.post("/api/rows", {"walks": [{"table": table} for table in tables]})
            self.post("/api/all", {"calls": [{"api": f"oltmib_{table}_get_1"} for table in tables]})
            self.change({"table": "account", "key": {"user": "admin"}, "changes": {"level": 3}})
            tell("clear")

    def whatever_is_read(self):
        apis = [api["name"] for api in self.gateway.get("/api/schema").json["apis"] if "_get" in api["name"]]
        for part in in_parts(apis):
            self.post("/api/all", {"calls": [{"api": api} for api in part], "seconds": 20})
        self.gateway.configure(SITE.replace('metrics = {', 'metrics = { "snmp_community", "account", "radsrv",'))
        self.answers += [self.gateway.get(path, user="root") for path in (
            "/metrics", "/api/log?limit=200", "/api/schema", "/api/session", "/api/health")]


@test
def secrets_never_leave(gateway):
    secrets = [secret.split(".") for secret in gateway.expected("secrets")]
    check("secrets", len(secrets), 6)
    attempts = Attempts(gateway)
    for table, field in secrets:
        attempts.wrong_fields(table, field)
        if table == "snmp_community":
            attempts.a_secret_key(table, field)
        else:
            attempts.a_secret_of_a_row(table, field)
    for table, key_field in ("account", "user"), ("radsrv", "server"):
        attempts.another_row(table, dict(secrets)[table], key_field)
    attempts.daemons_that_fail([table for table, _ in secrets])
    attempts.whatever_is_read()
    names = (SOURCE / "sim" / "names.lua").read_text(encoding="utf-8")
    gateway.configure(SITE, names=names.replace('role = "port_name" }', 'role = "port_name", secret = true }'))
    metrics = gateway.get("/metrics").text.decode()
    check("no secret beside a counter", ('port="3"' in metrics, "ge3" in metrics), (True, False))
    for answer in attempts.answers:
        check("no secret in an answer", attempts.mark.encode() in answer.text, False)
    kept = pathlib.Path(LOG).read_text(encoding="utf-8") + gateway.server.log_text()
    check("no secret in a log", attempts.mark in kept, False)
    check("no secret in a log, cut", attempts.mark[:4] in kept, False)
    keys = [json.loads(line)["key"] for line in pathlib.Path(LOG).read_text(encoding="utf-8").splitlines()
            if '"table":"snmp_community"' in line and '"key"' in line]
    check("a secret key is logged as one", keys, [{"community": {"secret": True}}] * 2)
    check("changes were logged", kept.count('{"secret":true}') > 6, True)


@test
def every_answer_says_that_it_is_data_and_whose(gateway):
    nothing = gateway.get("/api/nothing")
    for answer in (gateway.get("/api/session"), nothing, gateway.post("/api/all", {}),
                   gateway.get("/metrics")):
        check("headers", {name: answer.headers.get(name) for name in (
            "cache-control", "x-content-type-options", "x-frame-options", "content-security-policy")}, {
            "cache-control": "no-store", "x-content-type-options": "nosniff", "x-frame-options": "DENY",
            "content-security-policy": "default-src 'none'; frame-ancestors 'none'"})
        if gateway.name == "nginx":  # which would send it in pieces
            check("length", answer.headers.get("content-length"), str(len(answer.text)))
        check("no CORS", [name for name in answer.headers if name.startswith("access-control")], [])
    check("an error, its members by name", nothing.text.decode().replace("\\/", "/"),
          '{"error":{"code":"bad_address","field":null,"message":"/api/nothing: expected an address of the '
          'gateway, found none","status":404}}')
    path = "/api/" + "x" * 300
    check("a long address", gateway.get(path).json["error"]["message"],
          path[:200] + ": expected an address of the gateway, found none")
    check("a code's own sentence", gateway.change({}, token="x").json["error"]["message"],
          "the token is not the user's, or older than a day")


@test
def the_consoles_files_come_with_a_policy_that_lets_nothing_else_run(gateway):
    files = [path for path in (SOURCE / "web" / "console").rglob("*") if path.is_file()]
    for path in [str(path.relative_to(SOURCE / "web" / "console")) for path in files] + ["index.html"]:
        if "LICENSE" in path or path.endswith((".md", ".txt")):
            continue
        answer = gateway.get("/" + path)
        policy = answer.headers.get("content-security-policy", "none")
        check(f"{path}: status", answer.status, 200)
        check(f"{path}: policy", sorted(policy.split("; ")), sorted([
            "default-src 'self'", "base-uri 'none'", "form-action 'self'", "frame-ancestors 'none'",
            "object-src 'none'"]))
        check(f"{path}: nosniff", answer.headers.get("x-content-type-options"), "nosniff")
        check(f"{path}: who does not say who it is", gateway.get("/" + path, user=None).status, 401)
    for path in ("/../etc/web.users", "/%2e%2e/etc/web.users", "/..%2fetc/web.lua", "//etc/passwd", "/.hidden.html",
                 "/../librpc.cgi", "/../site.lua"):
        answer = gateway.get(path)
        check(f"{path}: nothing of it", (answer.status in (400, 403, 404), b"$6$" in answer.text), (True, False))


@test
@only("lighttpd")
def examples_of_configurations_are_taken(gateway):
    example = (SOURCE / "web" / "servers" / "web.lua").read_text(encoding="utf-8")
    (shown,) = blocks("web.md", "lua")
    gateway.configure("return {}")
    plain = gateway.get("/api/session").json
    gateway.configure(example)
    check("the example is what holds without it", gateway.get("/api/session").json, plain)
    words = set(re.findall(r"^  (\w+) =", example, re.M))
    gateway.configure("return { nothing = 1 }")
    gateway.get("/api/session")
    known = re.search(r"expected one of (.*?), found", gateway.server.log_text())[1]
    check("every word is in it", words, set(known.split(", ")))
    text = (SOURCE / "docs" / "web.md").read_text(encoding="utf-8")
    for word in words:
        check_in("docs/web.md tells them", f"`{word}`", text)
    gateway.configure(shown)
    tables = gateway.get("/api/session", user="olga").json["tables"]
    check("what the document shows", [tables[name] for name in ("vlaninfo", "account")],
          [{"read": True, "change": True}, {"read": True, "change": False}])
    check("everybody", gateway.get("/api/session", user="root").json["tables"]["vlaninfo"],
          {"read": False, "change": False})


@test
def mistakes_of_the_configuration_are_told_and_nobody_is_let_in(gateway):
    for site, mistake in {
        "return {": "file: expected Lua that returns a table, found line 1",
        "return 5": "file: expected Lua that returns a table, found 5",
        "return { user = {} }": "file: expected one of everybody, groups, limits, log, metrics, origins, state, users, "
        'without_names, without_user (did you mean users?), found "user"',
        'return { everybody = "all" }': 'everybody: expected a table of change, read, found "all"',
        'return { everybody = { read = "all" } }': 'everybody: read: expected a list of tables, or "*" for all, found '
        '"all"',
        'return { everybody = { reed = "*" } }': "everybody: expected one of change, read (did you mean read?), "
        'found "reed"',
        'return { everybody = { read = { "portinf" } } }': "everybody: read: expected the name of a table (did you mean "
        'portinfo?), found "portinf"',
        'return { users = { ann = { write = "*" } } }': 'users: ann: expected one of change, read, found "write"',
        'return { users = { { read = "*" } } }': "users: expected rights by name, found 1",
        'return { groups = { a = { members = "ann" } } }': 'groups: a: members: expected a list of users, found "ann"',
        'return { without_user = true }': "without_user: expected a table of change, read, found true",
        'return { log = "changes.log" }': 'log: expected "syslog" or a path from / on, without quotes, found '
        '"changes.log"',
        "return { state = \"/run/a'b\" }": "state: expected a path from / on, without quotes, found \"/run/a'b\"",
        'return { limits = { rows = 0 } }': "limits: rows: expected a number above 0, found 0",
        'return { limits = { row = 5 } }': "limits: expected one of body, calls, deadline, rows, seconds "
        '(did you mean rows?), found "row"',
        'return { metrics = "portstat" }': 'metrics: expected a list of tables, or "*" for all, found "portstat"',
        'os.execute("true") return {}': "file: expected Lua that returns a table, found line 1: ",
    }.items():
        gateway.configure(site)
        answer = gateway.get("/api/session", user="root")
        check(site, answer.code, (500, "bad_configuration"))
        check_in(f"{site}: the server's log", mistake, gateway.server.log_text())
        check("the answer tells no path", "/srv" in answer.text.decode(), False)
    gateway.configure(SITE, names="return { account = { text64 = { sekret = true } } }")
    check("names with a mistake", gateway.get("/api/session").code, (500, "bad_configuration"))
    gateway.configure(SITE, names="return {}")
    check("no names, no secrets known", gateway.get("/api/session").code, (500, "no_names"))
    check("nothing is read", gateway.post("/api/all", {"calls": [{"table": "account"}]}).code, (500, "no_names"))
    gateway.configure(SITE.replace("metrics", "without_names = true, metrics"), names="return {}")
    check("unless the configuration says so", gateway.get("/api/session").status, 200)


# Files of a configuration, and what is said of each behind its path: nothing where it is right.
CONFIGURATIONS = {
    "return {}": (),
    "return { limits = { rows = 1 / 0 } }": ("limits: rows: expected a number above 0, found inf",),
    "return { limits = { rows = 0 } }": ("limits: rows: expected a number above 0, found 0",),
    "return { limits = { rows = 0 / 0 } }": ("limits: rows: expected a number above 0, found",),
    'return { limits = { rows = "5" } }': ('limits: rows: expected a number above 0, found "5"',),
    "return { limits = { seconds = 0.001 } }": (),
    "return { limits = 5 }": ("limits: expected a table of numbers, found 5",),
    "return { everybody = { read = { portinfo = true } } }":
        ('everybody: read: expected a list of tables, found the name "portinfo"',),
    "return { everybody = { change = { 5 } } }": ("everybody: change: expected the name of a table, found 5",),
    'return { users = 5, groups = "x" }': ('groups: expected rights by name, found "x"',
                                          "users: expected rights by name, found 5"),
    "return { groups = { a = { members = { 5 } } } }": ("groups: a: members: expected a list of users, found 5",),
    'return { groups = { a = { members = { "ann", "" } } } }': ('groups: a: members: expected a list of users, found ""',),
    'return { groups = { a = { members = { ann = "ann" } } } }':
        ('groups: a: members: expected a list of users, found "ann"',),
    'return { groups = { a = { members = { "ann", "olga" }, read = "*" } } }': (),
    'return { origins = "https://olt.example" }': ('origins: expected a list of origins, found "https://olt.example"',),
    'return { origins = { "https://olt.example" } }': (),
    'return { without_names = "yes" }': ('without_names: expected true or false, found "yes"',),
    "return { without_names = false, without_user = false }": (),
    "return { log = 5, state = false }": ('log: expected "syslog" or a path from / on, without quotes, found 5',
                                          "state: expected a path from / on, without quotes, found false"),
    'return { log = "syslog", state = "/run/x y" }': (),
    'return { state = "/run/a\\nb" }': ("state: expected a path from / on, without quotes, found",),
    "return { users = { ann = 5 }, log = 1, metrics = 2, state = 3 }": (
        'log: expected "syslog" or a path from / on, without quotes, found 1',
        'metrics: expected a list of tables, or "*" for all, found 2',
        "state: expected a path from / on, without quotes, found 3",
        "users: ann: expected a table of change, read, found 5"),
    "return setmetatable": ("file: expected Lua that returns a table, found nil",),
    "\x1bLua": ("file: expected Lua as text, found compiled Lua",),
    "\x1creturn {}": ("file: expected Lua that returns a table, found line 1: ",),
}


@test
@only("lighttpd")
def every_mistake_of_a_configuration_has_its_line(gateway):
    paths = [pathlib.Path(f"/run/site{number}.lua") for number in range(len(CONFIGURATIONS))]
    for path, text in zip(paths, CONFIGURATIONS):
        path.write_text(text, encoding="utf-8")
    told = {text: tuple(f"{path}: {line}" for line in lines)
            for path, (text, lines) in zip(paths, CONFIGURATIONS.items())}
    told["not there"] = ("/run/nowhere.lua: file: expected one that can be read, found No such file or directory",)
    told["a folder"] = ("/run: file: expected one that can be read, found none",)
    found = json.loads(gateway.lua(*paths, "/run/nowhere.lua", "/run", source="""
        local site, all = require "librpc.web.site", {}
        for i, path in ipairs(arg) do
          local read, mistakes = site.read(path)
          all[i] = read and "" or mistakes
        end
        print(require("cjson").encode(all))"""))
    for (text, lines), mistakes in zip(told.items(), found):
        check(f"{text}: lines", mistakes.count("\n") + 1 if mistakes else 0, len(lines))
        for line, mistake in zip(lines, mistakes.split("\n")):
            check(text, mistake[:len(line)], line)


@test
@only("lighttpd")
def a_configuration_is_needed_where_it_is_named(gateway):
    folder = pathlib.Path("/etc/librpc")
    if folder.exists():  # an installed package's, which only this test does not see
        subprocess.run(["mount", "-t", "tmpfs", "none", folder], check=True)
    usual = json.loads(gateway.lua(source="""
        local site = require("librpc.web.site").read()
        print(require("cjson").encode { site.log, site.state, site.everybody.read, site.limits.rows })"""))
    check("none where none is named", usual, ["syslog", "/run/librpc-web", "*", 20000])
    gateway.configure("return { limits = { row = 5 }, log = 5 }")
    gateway.get("/api/session")
    check_in("all mistakes in a line", "librpc.web: /srv/etc/web.lua: limits: expected one of body, calls, deadline, "
             'rows, seconds (did you mean rows?), found "row"; /srv/etc/web.lua: log: expected', gateway.server.log_text())
    pathlib.Path("/srv/etc/web.lua").unlink()
    check("named, and not there", gateway.get("/api/session").code, (500, "bad_configuration"))
    check_in("is told", "web.lua: file: expected one that can be read, found No such file", gateway.server.log_text())


@test
@only("lighttpd")
def rights_of_everybody_a_user_and_each_group_add_up(gateway):
    gateway.configure("""return {
      everybody = { read = { "portinfo" } },
      users = { olga = { read = { "svi" }, change = { "portinfo" } } },
      groups = {
        one = { members = { "ann", "olga" }, read = { "telnet" }, change = { "svi" } },
        two = { members = { "olga", "ann" }, read = { "ssh", "web" }, change = { "ssh" } },
        three = { read = "*", change = "*" },
        four = { members = { "root" }, read = "*", change = "*" },
      } }""")

    def of(user):
        session = gateway.get("/api/session", user=user).json["tables"]
        return [sorted(table for table, rights in session.items() if rights[word]) for word in ("read", "change")]
    check("ann", of("ann"), [["portinfo", "ssh", "telnet", "web"], ["ssh"]])
    check("olga", of("olga"), [["portinfo", "ssh", "svi", "telnet", "web"], ["portinfo", "ssh", "svi"]])
    # of what is neither get nor set, nobody says that it changes nothing
    changing = {re.sub("(_set)?_1$", "", name[len("oltmib_"):]) for name in APIS if not re.search("_getn?_1$", name)}
    check("root", of("root"), [sorted(TABLES), sorted(changing)])
