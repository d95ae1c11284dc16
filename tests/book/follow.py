"""Follows a document that says how something is added, in a copy of the tree.

    follow.py TREE DOCUMENT[:SECTION]...

Blocks of code are taken from the documents as they stand. An `sh` block is run
in TREE, each command once, when all else is done. Any other goes to the file
that is named first, between backticks, in the paragraph before it: a `diff`
block to where its context and its "-" lines stand, every other to the end.
"""
import pathlib
import re
import subprocess
import sys


def fail(where, expected, found):
    sys.exit(f"follow: {where}: expected {expected}, found {found}")


class Block:
    """One block of code, with its place in the document and the file it is for."""

    def __init__(self, where, language, file):
        self.where, self.language, self.file, self.lines = where, language, file, []


def blocks_of(document, section):
    """The blocks of a section ("## SECTION" up to the next heading), or of all."""
    blocks, block, paragraph, ended, indent = [], None, "", True, 0
    inside = not section
    for number, line in enumerate(document.read_text().splitlines(), 1):
        where = f"{document.name}:{number}"
        fence = re.fullmatch(r"( *)```(\w*)", line)
        if block:
            if fence and not fence[2]:
                blocks.append(block)
                block, ended = None, True
            else:
                if line[:indent].strip():
                    fail(where, f"{indent} blanks before the block's lines", f"'{line}'")
                block.lines.append(line[indent:])
        elif line.startswith("## ") and section:
            inside = line[3:] == section
        elif not inside:
            continue
        elif fence:
            indent = len(fence[1])
            named = re.search(r"`([\w.-]+(?:/[\w.-]+)+)`", paragraph)
            block = Block(where, fence[2], named and named[1])
        elif line.strip():
            paragraph = line if ended else f"{paragraph} {line}"
            ended = False
        else:
            ended = True
    if not blocks:
        fail(document.name, f"blocks in the section '{section}'", "none")
    return blocks


def patched(block, text):
    """The text with a diff block's change."""
    old, new = [], []
    for line in block.lines:
        sign, rest = line[:1], line[1:]
        if sign not in " -+":
            fail(block.where, "lines that begin with a blank, - or +", f"'{line}'")
        if sign != "+":
            old.append(rest + "\n")
        if sign != "-":
            new.append(rest + "\n")
    count = ("\n" + text).count("\n" + "".join(old))
    if count != 1:
        fail(block.where, f"its lines without + once in {block.file}", f"them {count} times")
    return ("\n" + text).replace("\n" + "".join(old), "\n" + "".join(new))[1:]


def apply(tree, block):
    if not block.file:
        fail(block.where, "a file named in the paragraph before the block", "none")
    file = tree / block.file
    text = file.read_text() if file.exists() else ""
    if block.language == "diff":
        text = patched(block, text)
    else:
        text += "".join(line + "\n" for line in block.lines)
    file.parent.mkdir(exist_ok=True)
    file.write_text(text)
    print(f"follow: {block.where}: {block.file}", flush=True)


def main():
    tree = pathlib.Path(sys.argv[1])
    commands = []
    for argument in sys.argv[2:]:
        name, _, section = argument.partition(":")
        for block in blocks_of(tree / name, section):
            if block.language == "sh":
                commands += [line for line in block.lines if line not in commands]
            else:
                apply(tree, block)
    for command in commands:
        print(f"follow: {command}", flush=True)
        if subprocess.run(command, shell=True, cwd=tree).returncode != 0:
            fail(command, "success", "a failure")


main()
