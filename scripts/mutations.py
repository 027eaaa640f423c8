"""Finds the small changes ("mutations") that scripts/mutate makes to the sources.

A mutation replaces a piece of one line. Comments, texts, includes, macros and static assertions are left alone,
and so is code that runs in the compiler only.
"""
import hashlib
import re
from dataclasses import dataclass
from pathlib import Path


@dataclass(frozen=True)
class Mutation:
    path: str  # below the root of the project
    line: int  # from 0
    kind: str
    before: str  # the whole line
    after: str

    @property
    def name(self):
        """Does not depend on the line's number, so that a change elsewhere in the file keeps it."""
        return hashlib.sha256(f"{self.path}\0{self.before}\0{self.after}".encode()).hexdigest()[:8]


# What a pattern matches in the code of a line, and what stands there in the mutant. clang-format has put blanks
# around every operator, which tells a comparison from a template's bracket.
OPERATORS = [
    ("boundary", r" < ", [" <= "]),
    ("boundary", r" <= ", [" < "]),
    ("boundary", r" > ", [" >= "]),
    ("boundary", r" >= ", [" > "]),
    ("comparison", r" < ", [" >= "]),
    ("comparison", r" > ", [" <= "]),
    ("comparison", r" == ", [" != "]),
    ("comparison", r" != ", [" == "]),
    ("logic", r" && ", [" || "]),
    ("logic", r" \|\| ", [" && "]),
    ("arithmetic", r" \+ ", [" - "]),
    ("arithmetic", r" - ", [" + "]),
    ("arithmetic", r" \* ", [" + "]),
    ("arithmetic", r" / ", [" * "]),
    ("arithmetic", r" % ", [" / "]),
    ("arithmetic", r" \+= ", [" -= "]),
    ("arithmetic", r" -= ", [" += "]),
    ("arithmetic", r"\+\+(?=[\w*(])|(?<=[\w)\]])\+\+", ["--"]),
    ("arithmetic", r"--(?=[\w*(])|(?<=[\w)\]])--", ["++"]),
    ("bits", r" & ", [" | "]),
    ("bits", r" \| ", [" & "]),
    ("bits", r" << ", [" >> "]),
    ("bits", r" >> ", [" << "]),
    ("negation", r"(?<=[( ])!(?=[\w(:])", [""]),
    ("constant", r"\btrue\b", ["false"]),
    ("constant", r"\bfalse\b", ["true"]),
]
NUMBER = re.compile(r"(?<![\w.'])(0x[0-9A-Fa-f]+|\d+)(?![\w.'])([uU]?[lL]*)")
BRANCH = re.compile(r"^(\s*(?:\} else )?(?:if|while) \((?:[^;]+; )?)(?!constexpr)([^;]+)(\)(?: \{| [^{]*;|))$")
RETURN = re.compile(r"^(.*\breturn )(?!\{\}|nullptr;|0;|true;|false;)([^;]+)(;.*)$")
# A call, an assignment to something that exists already, a step: statements that may be missing.
STATEMENT = re.compile(
    r"^(\s*)(?!return|case|default|using|delete|else|do|break|continue|throw|goto)"
    r"((?:::)?[\w:>.\-]+(?:<[^()]*>)?\(.*\)|\*?\(?[\w:>.\-\[\]()]+ (?:[-+*/|&^%]|<<|>>)?= .*"
    r"|(?:\+\+|--)[\w>.\-*()]+);$")
SKIPPED_LINE = re.compile(r"^\s*(#|static_assert\b|template\b|using\b|friend\b|namespace\b|consteval\b|\[\[)")


def code_of(text):
    """The lines of a source with every character of a comment or of a text replaced by a blank."""
    def blank(match):
        found = match.group(0)
        if found.startswith(("//", "/*")):
            return re.sub(r"[^\n]", " ", found)
        return found[0] + re.sub(r"[^\n]", "\x01", found[1:-1]) + found[-1]

    pattern = r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"|(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+'"
    return re.sub(pattern, blank, text, flags=re.S).split("\n")


def skipped_lines(code):
    """The numbers of lines that belong to directives, static assertions and functions of the compiler."""
    skipped, number = set(), 0
    while number < len(code):
        if SKIPPED_LINE.match(code[number]):
            first, depth = number, 0
            while True:
                skipped.add(number)
                line = code[number]
                depth += line.count("(") + line.count("{") - line.count(")") - line.count("}")
                more = line.endswith("\\") or depth > 0
                if code[first].lstrip().startswith(("namespace", "template", "[[")):
                    more = False
                if not more or number + 1 == len(code):
                    break
                number += 1
        number += 1
    return skipped


def changes_of(line, code):
    """Yields (kind, mutated line) for one line, whose code has blanks in place of texts and comments."""
    for kind, pattern, replacements in OPERATORS:
        for found in re.finditer(pattern, code):
            for replacement in replacements:
                yield kind, line[:found.start()] + replacement + line[found.end():]
    for found in NUMBER.finditer(code):
        digits = found.group(1)
        value = int(digits, 0) if digits.startswith("0x") else int(digits)
        for changed in (value + 1, value - 1):
            if changed >= 0:
                written = hex(changed) if digits.startswith("0x") else str(changed)
                yield "constant", line[:found.start(1)] + written + line[found.end(1):]
    if found := BRANCH.match(code):
        if balanced(found.group(2)):
            yield "branch", f"{line[:found.end(1)]}!({line[found.start(2):found.end(2)]}){line[found.end(2):]}"
    if found := RETURN.match(code):
        yield "return", line[:found.end(1)] + "{}" + line[found.end(2):]
    if (found := STATEMENT.match(code)) and balanced(found.group(2)):
        yield "statement", found.group(1) + ";"


def balanced(text):
    depth = 0
    for character in text:
        depth += (character == "(") - (character == ")")
        if depth < 0:
            return False
    return depth == 0


def opens_statement(code, number):
    """Whether the line before ends a statement or a block, so that a statement begins on this one."""
    for previous in reversed(code[:number]):
        if previous.strip():
            return previous.rstrip().endswith((";", "{", "}", ":", ")", "else", "do"))
    return True


def mutations_of(root, path):
    """All mutations of the file at path, which is given below root."""
    text = (Path(root) / path).read_text()
    lines, code = text.split("\n"), code_of(text)
    skipped = skipped_lines(code)
    found = []
    for number, (line, clean) in enumerate(zip(lines, code)):
        if number in skipped or not clean.strip():
            continue
        for kind, after in changes_of(line, clean.rstrip()):
            if kind == "statement" and not opens_statement(code, number):
                continue
            found.append(Mutation(path, number, kind, line, after))
    return found
