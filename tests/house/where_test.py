#!/usr/bin/env python3
"""./dev where and an editor's "go to definition" land on the rows.

    where_test.py SOURCE BUILD where|ctags|clangd SERVICE...

The names come from the golden model and its vectors, which know nothing of the
library's sources."""
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SOURCE, BUILD = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
MODEL = SOURCE / "tests" / "golden" / "model"
sys.path.insert(0, str(MODEL))
sys.dont_write_bytecode = True
from services import SERVICES  # noqa: E402

SKIPPED = 77


def fail(where, expected, found):
    sys.exit(f"where_test: {where}: expected {expected}, found {found}")


def names_of(service):
    """What is looked for, and what the line that is found has to begin with."""
    row = next(line.split() for line in (SOURCE / "tests/golden/apis.txt").read_text().splitlines()
               if line.startswith(str(service.program)) and len(line.split()) == 7 and "str2arg_" in line)
    _, api, _, record, _, parser, _ = row
    table = parser.replace("str2arg_", "")
    fields = next(one for one in service.records.values() if one.name == record).fields
    found = {api: rf"API(_RECORD_TEXT)?\({api},", record: rf"(struct|RECORD\(|typedef) ?{record}\b",
             "xdr_" + record: rf"RECORD\({record},", parser: rf"(TABLE\w*|\w*PARSER|\w*CONVERTERS)\({table}\b", table: rf"TABLE\w*\({table},",
             f"{table}.{fields[0].name.split('.')[0]}": rf"\w+ .*\b{fields[0].name.split('.')[0]}\b"}
    traced = re.search(r"^trc (\[(\w+): (\d+)\].*)", (SOURCE / f"tests/golden/vectors/{service.program}.txt").read_text(),
                       re.MULTILINE)
    if traced:
        found[traced[1]] = rf".*\b{traced[3]}\b"
    return found


def test_where(service):
    names = names_of(service)
    done = subprocess.run([SOURCE / "tools/where.py", *names], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    lines = done.stdout.splitlines()
    for name, wanted in names.items():
        if done.returncode != 0 or not any(
                re.match(rf"services/{service.name}/\S+:\d+: (?:{wanted})", line) for line in lines):
            fail(name, f"a line of services/{service.name}/ that begins with {wanted}", done.stdout + done.stderr)
    print(f"{service.name}: {len(names)} names found")
    if done.stderr:
        fail("where", "nothing but lines", done.stderr)
    if service.name == "nsminfo":  # what a file of names calls a field
        named = subprocess.run([SOURCE / "tools/where.py", "portinfo.link"], stdout=subprocess.PIPE, text=True).stdout
        if not re.fullmatch(r'sim/names\.lua:\d+: field5 = \{ name = "link",.*\n', named):
            fail("portinfo.link", "its line of sim/names.lua", named)


def test_ctags(service):
    """The tags file that an editor reads."""
    with tempfile.NamedTemporaryFile() as tags:
        subprocess.run(["ctags", "-R", "--options=.ctags.d/librpc.ctags", "-f", tags.name, "services"], cwd=SOURCE, check=True)
        lines = pathlib.Path(tags.name).read_text().splitlines()
    for name, wanted in names_of(service).items():
        if not re.fullmatch(r"\w+", name):
            continue
        rows = [line for line in lines if line.startswith(name + "\t")]
        if not any(re.search(rf"\tservices/{service.name}/\S+\t/\^\s*(?:{wanted})", row) for row in rows):
            fail(name, f"a tag in services/{service.name}/ that begins with {wanted}", rows)


class Editor:
    """clangd, spoken to as an editor does (the Language Server Protocol)."""

    def __init__(self, folder):
        self.server = subprocess.Popen(["clangd", f"--compile-commands-dir={folder}", "--background-index=false",
                                        "--log=error"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.number = 0
        self.ask("initialize", {"processId": None, "rootUri": SOURCE.as_uri(), "capabilities": {}})
        self.tell("initialized", {})

    def send(self, message):
        body = json.dumps({"jsonrpc": "2.0", **message}).encode()
        self.server.stdin.write(b"Content-Length: %d\r\n\r\n" % len(body) + body)
        self.server.stdin.flush()

    def tell(self, method, parameters):
        self.send({"method": method, "params": parameters})

    def ask(self, method, parameters):
        self.number += 1
        self.send({"id": self.number, "method": method, "params": parameters})
        while True:
            size = 0
            for line in iter(self.server.stdout.readline, b"\r\n"):
                if not line:
                    fail("clangd", "an answer", "an end")
                if line.startswith(b"Content-Length:"):
                    size = int(line.split(b":")[1])
            answer = json.loads(self.server.stdout.read(size))
            if answer.get("id") == self.number and "method" not in answer:
                return answer.get("result")

    def definitions(self, path, text, names):
        """For each name: the lines that "go to definition" on its last place in the text leads to."""
        self.tell("textDocument/didOpen", {"textDocument": {"uri": path.as_uri(), "languageId": "cpp", "version": 1,
                                                            "text": text}})
        lines = text.split("\n")
        for name in names:
            line = max(i for i, one in enumerate(lines) if re.search(rf"\b{name}\b", one))
            place = {"line": line, "character": lines[line].rindex(name) + 1}
            found = self.ask("textDocument/definition",
                             {"textDocument": {"uri": path.as_uri()}, "position": place}) or []
            yield name, [self.line_of(one) for one in found]

    @staticmethod
    def line_of(place):
        file = pathlib.Path(place["uri"].removeprefix("file://"))
        return file.relative_to(SOURCE), file.read_text().splitlines()[place["range"]["start"]["line"]].strip()

    def close(self):
        self.server.kill()
        self.server.wait()


def use_of(name, wanted):
    if wanted.startswith("TABLE"):
        return f"extern tables::{name} table_used;"
    if wanted.startswith("(struct"):
        return f"extern {name} record_used;"
    return f"const void* const use_of_{name} = reinterpret_cast<const void*>(&{name});"


def test_clangd(service):
    """A person who reads a service's service.cpp, and writes lines that use its names."""
    path = SOURCE / "services" / service.name / "service.cpp"
    names = {name: wanted for name, wanted in names_of(service).items() if re.fullmatch(r"\w+", name)}
    text = path.read_text() + "\n".join(use_of(name, wanted) for name, wanted in names.items()) + "\n"
    editor = Editor(BUILD)
    try:
        for name, found in editor.definitions(path, text, names):
            if not any(str(file).startswith(f"services/{service.name}/") and re.match(names[name], line)
                       for file, line in found):
                fail(name, f"a line of services/{service.name}/ that begins with {names[name]}", found)
    finally:
        editor.close()


def main():
    what, *names = sys.argv[3:]
    program = {"where": "ctags"}.get(what, what)
    if not shutil.which(program):
        print(f"where_test: {program}: expected an installed program, found none")
        sys.exit(SKIPPED)
    for service in SERVICES:
        if service.name in names:
            {"where": test_where, "ctags": test_ctags, "clangd": test_clangd}[what](service)


main()
