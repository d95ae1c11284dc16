"""The faults that are planted, one at a time: each a place in a file and what
stands there instead.

To plant faults of another kind: a function that yields Fault, and its name in
KINDS of its language."""
from dataclasses import dataclass

from tokens import closing, tokens_of

SWAPS = {
    "cpp": {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&", "+": "-",
            "-": "+", "*": "+", "++": "--", "--": "++", "+=": "-=", "-=": "+=", "true": "false", "false": "true"},
    "lua": {"==": "~=", "~=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "and": "or", "or": "and", "+": "-",
            "-": "+", "*": "+", "true": "false", "false": "true"},
}
BINARY = {"<", "<=", ">", ">=", "+", "-", "*"}  # with a blank on both sides: not a sign, a template or a pointer
# Between the brackets of these no fault means anything: what the compiler alone sees, and
# hints of how much room to make.
UNSEEN = {"static_assert", "lua_createtable"}
CONTROL = {"if", "for", "while", "switch", "return", "sizeof", "static_assert", "function", "alignas", "decltype"}


@dataclass
class Fault:
    start: int
    end: int
    text: str  # what stands there instead
    what: str  # for people: "< -> <="


def swapped(source, tokens, language):
    for token in tokens:
        other = SWAPS[language].get(token.text) if token.kind in ("operator", "name") else None
        if not other or (token.text in BINARY and source[token.start - 1] + source[token.end:token.end + 1] != "  "):
            continue
        yield Fault(token.start, token.end, other, f"{token.text} -> {other}")


def counted_wrong(source, tokens, language):
    for token in tokens:
        digits = token.text.rstrip("uUlL")
        if token.kind == "number" and digits.isdigit():
            other = str(int(digits) + 1)
            yield Fault(token.start, token.end, other + token.text[len(digits):], f"{digits} -> {other}")


def negated(source, tokens, language):
    for i, token in enumerate(tokens):
        if language == "cpp" and token.text == "if" and tokens[i + 1].text == "(":
            end = closing(tokens, i + 1)
            condition = source[tokens[i + 1].end:tokens[end].start]
            if ";" not in condition:
                yield Fault(tokens[i + 1].end, tokens[end].start, f"!({condition})", "condition negated")
        elif language == "lua" and token.text in ("if", "elseif"):
            end = next(j for j in range(i, len(tokens)) if tokens[j].text == "then")
            condition = source[token.end:tokens[end].start]
            yield Fault(token.end, tokens[end].start, f" not ({condition.strip()}) ", "condition negated")
        elif (token.text, language) in (("!", "cpp"), ("not", "lua")):
            end = tokens[i + 1].start if language == "lua" else token.end
            yield Fault(token.start, end, "", f"{token.text} removed")


def statement_end(tokens, i):
    """The place of the semicolon that ends the statement at i, or None where it is a block."""
    while i < len(tokens) and tokens[i].text != ";":
        if tokens[i].text == "{" or tokens[i].text == "}":
            return None
        i = (closing(tokens, i) if tokens[i].text in "([" else i)
        if i is None:
            return None
        i += 1
    return i if i < len(tokens) else None


def removed_cpp(source, tokens):
    for i in range(1, len(tokens) - 2):
        token, before = tokens[i], tokens[i - 1].text
        if before not in (";", "{", "}", ")", "else"):
            continue
        if token.text == "if" and tokens[i + 1].text == "(":
            end = closing(tokens, i + 1) + 1
            last = statement_end(tokens, end)
            if tokens[end].text in ("return", "continue", "break") and last and tokens[last + 1].text != "else":
                yield Fault(token.start, tokens[last].end, ";", "early end skipped")
        elif token.kind == "name" and token.text not in CONTROL and tokens[i + 1].kind == "operator":
            last = statement_end(tokens, i)
            is_declaration = tokens[i + 1].text in ("::", "<", "&", "*", ":") or token.text in ("case", "default")
            if last and not is_declaration and tokens[last - 1].text != ")" or (
                    last and not is_declaration and tokens[i + 1].text in ("(", ".", "->", "[")):
                yield Fault(token.start, tokens[last].end, ";", "statement removed")


def removed_lua(source, tokens):
    """Statements that are a line of their own: calls and assignments."""
    starts = {token.start: i for i, token in enumerate(tokens)}
    at = 0
    for line in source.splitlines(keepends=True):
        text = line.strip()
        i = starts.get(at + len(line) - len(line.lstrip()))
        at += len(line)
        if i is None or tokens[i].kind != "name" or i + 1 >= len(tokens):
            continue
        is_call = text.endswith(")") and tokens[i + 1].text in ("(", ".", ":")
        is_assignment = tokens[i + 1].text in ("=", ".", "[", ",") and " = " in text and not text.endswith(
            ("{", ",", "function()", "(", "and", "or", "..", "="))
        balanced = all(text.count(one) == text.count(other) for one, other in ("()", "{}", "[]"))
        words = set(text.replace("(", " ").split())
        if (is_call or is_assignment) and balanced and not words & {"function", "local", "return", "if", "for", "end"}:
            start = tokens[i].start
            yield Fault(start, start + len(text), "", "statement removed")


def removed(source, tokens, language):
    return removed_cpp(source, tokens) if language == "cpp" else removed_lua(source, tokens)


def arguments_swapped(source, tokens, language):
    for i in range(len(tokens) - 6):
        name, bracket, one, comma, other, end = tokens[i:i + 6]
        declares = i > 0 and tokens[i - 1].text in ("function", ":", "int", "void", "bool")
        if (name.kind == "name" and name.text not in CONTROL and (bracket.text, comma.text, end.text) == ("(", ",", ")")
                and one.kind in ("name", "number") and other.kind in ("name", "number") and one.text != other.text
                and not declares):
            yield Fault(one.start, other.end, f"{other.text}, {one.text}", "arguments swapped")


KINDS = (swapped, counted_wrong, negated, removed, arguments_swapped)


def faults_of(source, language):
    tokens = tokens_of(source, language)
    unseen = [(tokens[i + 1].start, tokens[closing(tokens, i + 1)].end) for i in range(len(tokens) - 1)
              if tokens[i].text in UNSEEN and tokens[i + 1].text == "("]
    for kind in KINDS:
        for fault in kind(source, tokens, language):
            if not any(start < fault.start < end for start, end in unseen):
                yield fault
