"""Changes: what they do to the device, who else saw the row, which page they come from and with which token, and the
log that tells of them."""
import concurrent.futures
import json
import os
import pathlib
import re
import socket

from harness import LOG, ORIGIN, SITE, check, check_in, only, tell, test, web_server


@test
def every_change_is_what_record_changes(gateway):
    token = gateway.token("root")
    changes = gateway.expected("changes")
    check("changes of many tables", len({one["table"] for one in changes}) > 90, True)
    secrets = set(gateway.expected("secrets"))
    for one in changes:
        name = f"{one['table']}: {one['changes']}"
        body = {"table": one["table"], "key": one["key"] or {}, "changes": one["changes"]}
        if any(f"{one['table']}.{field}" in secrets for field in one["key"] or {}):
            continue
        answer = gateway.change(body, token=token)
        if "code" in one:
            check(name, answer.code[1], one["code"])
            continue
        expected = {field: {"secret": True} if f"{one['table']}.{field}" in secrets else change
                    for field, change in one["changed"].items()} if one["changed"] else {}
        check(name, (answer.status, answer.json.get("changed")), (200, expected))
        if any(f"{one['table']}.{field}" in secrets for field in one["changes"]):
            continue  # nobody can put it back
        field = next(iter(one["changes"]))
        check(name + ": in the device", gateway.expected("get", one["table"], json.dumps(one["key"] or {}), field),
              [one["changes"][field]])
        back = gateway.change({**body, "changes": one["back"]}, token=token)
        check(name + ": back", back.status, 200)


@test
def two_people_at_one_row_notice(gateway):
    row = gateway.post("/api/all", {"calls": [{"table": "vlaninfo", "key": {"vlan": 10}}]}).json["results"][0]["row"]
    body = {"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "phones"}, "read": row}
    check("the first", gateway.change(body, user="olga").status, 200)
    answer = gateway.change({**body, "changes": {"name": "telephones"}})
    check("the second", (answer.code, answer.json["error"]["field"], answer.json["error"]["row"]["name"]),
          ((409, "changed_meanwhile"), "name", "phones"))
    check("another field counts as well", gateway.change({**body, "changes": {"tagged": "ge5"}}).code,
          (409, "changed_meanwhile"))
    check("what was seen again", gateway.change({**body, "read": answer.json["error"]["row"],
                                                "changes": {"name": "telephones"}}).status, 200)
    port = gateway.post("/api/all", {"calls": [{"table": "portstat", "key": {"port": 1}}]}).json["results"][0]["row"]
    check("counters move", gateway.change({"table": "portstat", "key": {"port": 1}, "changes": {"errors_in": 2},
                                           "read": port}).status, 200)
    for table in [table for table in gateway.get("/api/schema").json["tables"] if "set" in table["operations"]]:
        if not {"get", "getn"} & set(table["operations"]):
            continue
        rows = gateway.post("/api/rows", {"walks": [{"table": table["table"]}]}).json["results"][0]["rows"]
        keys = [field["name"] for field in table["fields"] if field["key"]]
        if not rows or any(rows[0][name] is None for name in keys):
            continue
        answer = gateway.change({"table": table["table"], "key": {name: rows[0][name] for name in keys},
                                 "changes": {}, "read": rows[0]})
        check(f"{table['table']}: a row as it was read is no other", answer.code[1] if answer.status != 200 else None,
              "not_carried" if answer.status == 400 else None)
    exists = gateway.change({"table": "vlaninfo", "key": {"vlan": 20}, "changes": {"name": "x"}, "add": True})
    check("a row that is there is not added", (exists.code, exists.json["error"]["row"]["name"]),
          ((409, "row_exists"), "video"))


@test
def wrong_fields_are_all_told_and_nothing_is_sent(gateway):
    before = tell("count oltmib_vlaninfo_set_1")
    answer = gateway.change({"table": "vlaninfo", "key": {"vlan": 10}, "changes": {
        "name": "a&b", "untagged": "x" * 2000, "active": "maybe", "nane": "x"}})
    error = answer.json["error"]
    check("all of them", ({name: one["code"] for name, one in error["wrong"].items()}, error["field"], answer.status),
          ({"name": "separator", "untagged": "too_long", "active": "bad_number", "nane": "unknown_field"}, "active",
           400))
    check("words", error["wrong"]["active"]["limits"]["words"], ["off", "on"])
    for what, body, code in (
        ("a wrong key", {"table": "vlaninfo", "key": {"vlan": "ten"}, "changes": {"name": "x"}}, (400, "bad_number")),
        ("no key", {"table": "mstp_if", "key": {}, "changes": {"cost": 5}}, (400, "no_key")),
        ("no such row", {"table": "vlaninfo", "key": {"vlan": 77}, "changes": {"name": "x"}}, (404, "no_row")),
        ("no such table", {"table": "vlans", "key": {}, "changes": {}}, (404, "unknown_api")),
        ("no set", {"table": "devinfo2", "key": {}}, (404, "unknown_api")),
        ("a table that is only read", {"table": "portrate", "key": {"port": 1}, "changes": {}}, (400, "no_operation")),
        ("an API that reads", {"api": "oltmib_vlaninfo_get_1", "fields": {}}, (400, "no_operation")),
        ("an API's wrong fields", {"api": "oltmib_vlaninfo_set_1", "fields": {"vlan": 1e99}}, (400, "out_of_range")),
        ("both", {"api": "oltmib_vlaninfo_set_1", "table": "vlaninfo"}, (400, "bad_body")),
        ("neither", {}, (404, "unknown_api")),
    ):
        check(what, gateway.change(body).code, code)
    check("sets", tell("count oltmib_vlaninfo_set_1"), before)


def check_that_foreign_changes_are_refused(gateway, body, token):
    for what, headers in {
        "no origin": {"Origin": None},
        "another origin": {"Origin": "http://evil.example"},
        "another port": {"Origin": "http://127.0.0.1:8081"},
        "another scheme": {"Origin": ORIGIN.replace("http:", "https:")},
        "no origin at all": {"Origin": "null"},
        "a longer name": {"Origin": ORIGIN + ".evil.example"},
        "a user before the name": {"Origin": ORIGIN.replace("//", "//x@")},
        "another site": {"Sec-Fetch-Site": "cross-site"},
        "a neighbour's": {"Sec-Fetch-Site": "same-site"},
        "an address that was typed": {"Sec-Fetch-Site": "none"},
        "another site without origin": {"Origin": None, "Sec-Fetch-Site": "cross-site"},
    }.items():
        if what == "another scheme" and gateway.name == "busybox":  # which tells none
            continue
        check(what, gateway.change(body, token=token, headers=headers).code, (403, "not_same_origin"))
    for what, declared in {"a form": "application/x-www-form-urlencoded", "a text": "text/plain",
                           "a file": "multipart/form-data", "JSON's neighbour": "application/json-patch",
                           "an empty one": "", "two": "text/plain, application/json"}.items():
        check(what, gateway.change(body, token=token, headers={"Content-Type": declared}).code,
              (415, "bad_content_type"))
    for what, wrong in {"no token": "", "a wrong one": "0" * 48, "somebody else's": gateway.token("olga"),
                        "a part": token[:-1], "more": token + "0", "a long one": "0" * 4000}.items():
        check(what, gateway.change(body, token="x", headers={"X-Librpc-Token": wrong}).code, (403, "bad_token"))
    check("nothing was changed", gateway.expected("get", "vlaninfo", '{"vlan":10}', "name"), ["voice"])


def check_that_foreign_reads_are_refused(gateway):
    for path, sent in ("/api/all", {"calls": []}), ("/api/rows", {"walks": []}), ("/api/check", {"table": "svi"}):
        check(f"{path} by another site", gateway.post(path, sent, headers={"Sec-Fetch-Site": "cross-site"}).code,
              (403, "not_same_origin"))
        check(f"{path} by a form", gateway.post(path, sent, headers={"Content-Type": "text/plain"}).code,
              (415, "bad_content_type"))
    check("what is read by another site", gateway.get("/api/session", headers={"Sec-Fetch-Site": "cross-site"}).code,
          (403, "not_same_origin"))
    check("an address that was typed", gateway.get("/api/health", headers={"Sec-Fetch-Site": "none"}).status, 200)
    check("a question before a foreign request", gateway.send("OPTIONS", "/api/change", headers={
        "Origin": "http://evil.example", "Access-Control-Request-Method": "POST"}).status in (200, 204), False)


@test
def a_change_comes_from_the_gateways_own_page(gateway):
    token = gateway.token("root")
    body = {"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "mine"}}
    check_that_foreign_changes_are_refused(gateway, body, token)
    for what, headers in {"an origin": {}, "in capitals": {"Origin": ORIGIN.replace("127.0.0.1", "LOCALHOST"),
                                                           "Host": f"localhost:{web_server.PORT}"},
                          "a browser's word": {"Origin": None, "Sec-Fetch-Site": "same-origin"},
                          "with a charset": {"Content-Type": "Application/JSON; charset=utf-8"}}.items():
        check(what, gateway.change(body, token=token, headers=headers).status, 200)
    check_that_foreign_reads_are_refused(gateway)
    gateway.configure(SITE.replace("metrics", 'origins = { "https://olt.example" }, metrics'))
    check("an origin of the configuration's", gateway.change(body, headers={"Origin": "https://olt.example"}).status,
          200)
    check("and no other", gateway.change(body).code, (403, "not_same_origin"))


@test
@only("lighttpd", "nginx", "apache", listen="tls")
def over_tls_a_page_of_the_plain_address_is_another(gateway):
    body = {"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "safe"}}
    check("its own", gateway.change(body, headers={"Origin": "https://localhost"}).status, 200)
    for origin in "http://localhost", "http://localhost:443", "https://localhost:8443":
        check(origin, gateway.change(body, headers={"Origin": origin}).code, (403, "not_same_origin"))
    check("a page of the console's", gateway.get("/index.html").status, 200)


@test
def tokens_are_a_users_own_and_last_a_day(gateway):
    first, second = gateway.token("root"), gateway.token("olga")
    check("one each", (len(first), first == second, first == gateway.token("root")), (48, False, True))
    folder = pathlib.Path("/run/librpc-web")
    files = {path.name: path for path in folder.glob("*.[0-9]*")}
    check("their files", {path.stat().st_mode & 0o777 for path in files.values()}, {0o600})
    body = {"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "a"}}
    name = next(name for name in files if name.startswith("root".encode().hex()))
    stem, day = name.split(".")
    files[name].rename(folder / f"{stem}.{int(day) - 1}")
    check("yesterday's counts", gateway.change(body, token=first).status, 200)
    check("today's is another", gateway.token("root") == first, False)
    (folder / f"{stem}.{int(day) - 1}").rename(folder / f"{stem}.{int(day) - 2}")
    check("older ones do not", gateway.change(body, token=first).code, (403, "bad_token"))
    for user, path in ("root", "/api/session"), ("ann", "/api/session"):
        with concurrent.futures.ThreadPoolExecutor(16) as pool:
            for old in folder.glob("*.[0-9]*"):
                old.unlink()
            tokens = {answer.json["token"] for answer in pool.map(lambda _: gateway.get(path, user=user), range(32))}
        check(f"{user}: many that ask at once get the same", len(tokens), 1)
    os.chmod(folder, 0o500)
    for old in folder.glob("*.[0-9]*"):
        old.unlink()
    answer = gateway.get("/api/session")
    check("a folder that cannot be written", answer.code, (500, "no_token"))
    check_in("the server's log tells", "/run/librpc-web", gateway.server.log_text())


@test
def a_change_is_logged_or_not_made(gateway):
    body = {"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": 'a "quoted" \\ text'}}
    check("made", gateway.change(body).status, 200)
    check("refused by the device", gateway.change({**body, "key": {"vlan": 77}}).code, (404, "no_row"))
    tell("fault oltmib_vlaninfo_set_1 count=1 error system_err")
    check("failed on the way", gateway.change(body).code, (502, "rejected"))
    tell("clear")
    check("added", gateway.change({"table": "vlaninfo", "key": {"vlan": 30}, "changes": {"name": "new"}, "add": True})
          .json.get("changed"), {"name": {"after": "new"}})
    lines = [json.loads(line) for line in pathlib.Path(LOG).read_text(encoding="utf-8").splitlines()]
    check("lines", [(line["user"], line["table"], line["key"], line["fields"], line["result"], line.get("add"))
                    for line in lines], [
        ("root", "vlaninfo", {"vlan": 10}, {"name": {"before": "voice", "after": 'a "quoted" \\ text'}}, 0, None),
        ("root", "vlaninfo", {"vlan": 10}, {"name": {"after": 'a "quoted" \\ text'}}, "rejected", None),
        ("root", "vlaninfo", {"vlan": 30}, {"name": {"after": "new"}}, 0, True)])
    check("when", all(re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", line["time"]) for line in lines), True)
    check("the newest first", [one["key"]["vlan"] for one in gateway.get("/api/log").json["changes"]], [30, 10, 10])
    check("a line that is none", (pathlib.Path(LOG).open("a", encoding="utf-8").write("{\nnull\n[1]\n\n") > 0,
                                  len(gateway.get("/api/log").json["changes"])), (True, 3))
    gateway.configure(SITE.replace(LOG, "/nowhere/changes.log"))
    check("no log, no change", gateway.change({**body, "changes": {"name": "b"}}).code, (500, "no_log"))
    check("the device is as it was", gateway.expected("get", "vlaninfo", '{"vlan":10}', "name"),
          ['a "quoted" \\ text'])
    check("a log that is not there", gateway.get("/api/log").json, {"changes": [], "kept": True})


@test
def syslog_gets_what_a_file_gets(gateway):
    lines = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
    lines.settimeout(60)
    body = {"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "phones"}}
    with web_server.private_folder("/dev"):
        gateway.configure(SITE.replace(f'"{LOG}"', '"syslog"'))
        check("no syslog, no change", gateway.change(body).code, (500, "no_log"))
        lines.bind("/dev/log")
        os.chmod("/dev/log", 0o666)
        answer = gateway.change(body)
        check("a change", (answer.status, answer.json.get("logged")), (200, True))
        check_in("its line", '"fields":{"name":{"after":"phones","before":"voice"}}', lines.recv(4096).decode())
        texts = {"changes": {"content": "x" * 511}}, {"changes": {"content": "y" * 511}}
        for text in texts:
            check("a long change", gateway.change({"table": "sdsminfo", "key": {}, **text}).status, 200)
        lines.recv(8192)
        check("its line is whole", json.loads(re.sub(rb"^[^{]*", b"", lines.recv(8192)))["fields"]["content"],
              {"before": "x" * 511, "after": "y" * 511})
        check("which cannot be shown", gateway.get("/api/log").json, {"changes": [], "kept": False})


@test
@only("lighttpd")
def a_new_row_has_the_keys_and_the_changes_by_either_name(gateway):
    answer = gateway.change({"table": "vlaninfo", "key": {"field1": 31}, "add": True,
                             "changes": {"field3": "guests", "active": "on", "tagged": "ge1"}})
    check("added", (answer.status, answer.json.get("changed")),
          (200, {"field3": {"after": "guests"}, "active": {"after": "on"}, "tagged": {"after": "ge1"}}))
    for field, value in {"name": "guests", "active": "on", "tagged": "ge1", "untagged": ""}.items():
        check(field, gateway.expected("get", "vlaninfo", '{"vlan":31}', field), [value])
    sets = tell("count oltmib_vlaninfo_set_1")
    wrong = gateway.change({"table": "vlaninfo", "key": {"vlan": 32, "nane": 1}, "changes": {"name": "x"}, "add": True})
    check("a field that is none", (wrong.code, list(wrong.json["error"]["wrong"])), ((400, "unknown_field"), ["nane"]))
    check("a key that is none", gateway.change({"table": "vlaninfo", "key": {"vlan": "x"}, "changes": {"name": "x"},
                                                "add": True}).code, (400, "bad_number"))
    for key in {}, {"instance": "x"}:
        check(f"a part of a key: {key}", gateway.change({"table": "mstp_if", "key": key, "changes": {"cost": 5},
                                                         "add": True}).code, (400, "no_key"))
    tell("fault oltmib_vlaninfo_get_1 count=1 error system_err")
    failed = gateway.change({"table": "vlaninfo", "key": {"vlan": 32}, "changes": {"name": "x"}, "add": True})
    check("nobody knows whether it is there", failed.code, (502, "rejected"))
    check("nothing was sent", tell("count oltmib_vlaninfo_set_1"), sets)
    # tables without getn, and without get: the row that is there is told all the same
    for table, key, field in ("telnet", {}, "tcp_port"), ("pminfo", {"session": 1}, "to_port"):
        there = gateway.expected("get", table, json.dumps(key), field)[0]
        body = {"table": table, "key": key, "changes": {field: there}}
        answer = gateway.change({**body, "add": True})
        check(f"{table}: is there", (answer.code, answer.json["error"]["row"][field]), ((409, "row_exists"), there))
        answer = gateway.change({**body, "read": {field: 4711}})
        check(f"{table}: changed", (answer.code, answer.json["error"]["field"], answer.json["error"]["row"][field]),
              ((409, "changed_meanwhile"), field, there))


@test
@only("lighttpd")
def what_cannot_be_changed_is_told_in_a_sentence_and_not_logged(gateway):
    for what, body, code, message in (
        ("no row", {"table": "vlaninfo", "key": {"vlan": 77}, "changes": {"name": "x"}}, (404, "no_row"),
         "oltmib_vlaninfo_get_1: res: expected 0, of a row that is there, found 1"),
        ("a table that is never read", {"table": "vlanbitmapinfo", "key": {"vlan": 1}, "changes": {"bitmap": "x"}},
         (400, "no_operation"), 'vlanbitmapinfo: expected set, found "get"'),
        ("an API that walks", {"api": "oltmib_vlaninfo_getn_1"}, (400, "no_operation"),
         "oltmib_vlaninfo_getn_1: expected an API that changes something, found one that reads"),
        ("no such API", {"api": "oltmib_vlan_set_1"}, (404, "unknown_api"), None),
        ("wrong fields of an API", {"api": "oltmib_vlaninfo_set_1", "fields": {"vlan": "x", "name": "a&b"}},
         (400, "separator"), None),
    ):
        answer = gateway.change(body)
        check(what, answer.code, code)
        if message:
            check(what, answer.json["error"]["message"], message)
    check("all wrong ones", set(answer.json["error"]["wrong"]), {"name", "vlan"})
    check("the log", pathlib.Path(LOG).exists(), False)
    check("who may not", gateway.change({"table": "telnet", "key": {}, "changes": {"tcp_port": 1}}, user="olga")
          .json["error"]["message"], "telnet: expected a table that the user may change, found another")


@test
@only("lighttpd")
def a_change_whose_line_is_lost_says_so(gateway):
    answer = gateway.change({"api": "oltmib_dyinggasp_support_1"})
    check("what is no set", (answer.status, answer.json.get("status", "none"), "row" in answer.json,
                             answer.json["logged"]), (200, None, True, True))
    line = json.loads(pathlib.Path(LOG).read_text(encoding="utf-8"))
    check("its line", (line["result"], line["fields"], line["api"], line["from"]),
          (0, {}, "oltmib_dyinggasp_support_1", "127.0.0.1"))
    check("no complaint", "expected the line" in gateway.server.log_text(), False)
    gateway.configure(SITE.replace(LOG, "/dev/full"))
    answer = gateway.change({"table": "vlaninfo", "key": {"vlan": 10}, "changes": {"name": "phones"}})
    check("a full disk", (answer.status, answer.json.get("logged")), (200, False))
    check("the change is made", gateway.expected("get", "vlaninfo", '{"vlan":10}', "name"), ["phones"])
    check_in("the server's log has the line", "librpc.web: log: expected the line of a change to be written, found "
             'that it was not: {"fields":{"name":{"after":"phones","before":"voice"}}', gateway.server.log_text())
