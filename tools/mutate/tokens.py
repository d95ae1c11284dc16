"""Cuts C++ and Lua into tokens, for the places where a fault can be planted."""
import re
from dataclasses import dataclass

LANGUAGES = {
    "cpp": re.compile(r"""
        (?P<skip>//[^\n]* | /\*.*?\*/ | ^[ \t]*\#(?:[^\n\\]|\\.|\\\n)* | \s+)
      | (?P<string>R"\((?:.*?)\)" | "(?:[^"\\\n]|\\.)*" | '(?:[^'\\\n]|\\.)+')
      | (?P<number>0[xX][0-9a-fA-F]+[uUlL]* | \d+\.\d*(?:[eE][-+]?\d+)? | \d+(?:[eE][-+]?\d+)?[uUlL]*)
      | (?P<name>[A-Za-z_]\w*)
      | (?P<operator>->|\+\+|--|<<=|>>=|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|::|\.\.\.|.)
    """, re.VERBOSE | re.DOTALL | re.MULTILINE),
    "lua": re.compile(r"""
        (?P<skip>--\[(?P<level>=*)\[.*?\](?P=level)\] | --[^\n]* | ^\#![^\n]* | \s+)
      | (?P<string>\[(?P<equals>=*)\[.*?\](?P=equals)\] | "(?:[^"\\\n]|\\.)*" | '(?:[^'\\\n]|\\.)*')
      | (?P<number>0[xX][0-9a-fA-F]+ | \d+\.?\d*(?:[eE][-+]?\d+)?)
      | (?P<name>[A-Za-z_]\w*)
      | (?P<operator>\.\.\.|\.\.|==|~=|<=|>=|.)
    """, re.VERBOSE | re.DOTALL | re.MULTILINE),
}


@dataclass
class Token:
    kind: str
    text: str
    start: int

    @property
    def end(self):
        return self.start + len(self.text)


def tokens_of(source, language):
    found = []
    for match in LANGUAGES[language].finditer(source):
        kind = next(kind for kind in ("skip", "string", "number", "name", "operator") if match[kind] is not None)
        if kind != "skip":
            found.append(Token(kind, match[0], match.start()))
    return found


def closing(tokens, i):
    """The place of the bracket that closes the one at i, or None."""
    pairs, depth = {"(": ")", "[": "]", "{": "}"}, 0
    opened, closed = tokens[i].text, pairs[tokens[i].text]
    for j in range(i, len(tokens)):
        depth += (tokens[j].text == opened) - (tokens[j].text == closed)
        if depth == 0:
            return j
    return None
