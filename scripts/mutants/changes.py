"""The changes that are tried on a source file."""
import collections
import dataclasses
import re

COMPARISONS = {
    "<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"), "==": ("!=",),
    "!=": ("==",),
}  # fmt: skip
OPERATORS = {
    **COMPARISONS, "&&": ("||",), "||": ("&&",), "+": ("-",), "-": ("+",), "*": ("+",), "/": ("*",),
    "%": ("*",), "<<": (">>",), ">>": ("<<",), "&": ("|",), "|": ("&",), "^": ("&",), "+=": ("-=",),
    "-=": ("+=",), "|=": ("&=",), "&=": ("|=",), "<<=": (">>=",), ">>=": ("<<=",),
}  # fmt: skip
STEPS = {"++": "--", "--": "++"}
TABLE = 8  # a variable with so many numbers is a table
SHORT = 240  # characters of two statements that change places


@dataclasses.dataclass
class Mutant:
    path: str
    definition: object
    line: int
    start: int
    end: int
    text: str  # what stands there instead
    old: str  # the lines concerned, for people and for the list
    new: str
    occurrence: int = 1

    @property
    def key(self):
        return self.path, self.definition.name, self.old, self.new, self.occurrence

    def apply(self, whole):
        return whole[: self.start] + self.text + whole[self.end :]

    def told(self):
        again = f" #{self.occurrence}" if self.occurrence > 1 else ""
        return f"{self.path} {self.definition.name}{again}\n- {self.old}\n+ {self.new}"


def squeeze(text):
    """On one line, without the comments at lines' ends."""
    return re.sub(r"\s+", " ", re.sub(r"\s//.*", "", text)).strip()


def number_by(literal, step):
    """The number, more or less by one, written as it was."""
    match = re.fullmatch(r"(0[xX](?=[0-9A-Fa-f'])|(?=[\d']+[uUlL]*$))([0-9A-Fa-f']+?)([uUlL]*)", literal)
    if not match:
        return None
    prefix, digits, suffix = match.groups()
    value = int(digits.replace("'", ""), 16 if prefix else 10) + step
    if value < 0:
        return None
    if prefix:
        if len(digits) in (2, 4, 8) and value >> (4 * len(digits)):
            return None
        return f"0x{value:0{len(digits)}X}{suffix}"
    return f"{value}{suffix}"


def changed_text(literal):
    """A text with its first letter another one, if it has one outside of escapes and formats."""
    bare = re.sub(r"\\.|%[0-9]*[a-zA-Z]", lambda match: "\0" * len(match.group()), literal)
    begin = literal.index('"')
    match = re.search(r"[A-Za-z]", bare[begin:])
    if not match:
        return None
    at = begin + match.start()
    return literal[:at] + ("q" if literal[at] != "q" else "z") + literal[at + 1 :]


class Changes:
    def __init__(self, source):
        self.source = source
        self.mutants = []
        for definition in source.definitions:
            self.definition = definition
            self._expressions()
            if definition.kind == "function":
                self._statements()
        seen, times, kept = set(), collections.Counter(), []
        for mutant in sorted(self.mutants, key=lambda m: (m.start, m.end, m.text)):
            place = mutant.start, mutant.end, mutant.text
            if place in seen:
                continue
            seen.add(place)
            times[mutant.key] += 1
            mutant.occurrence = times[mutant.path, mutant.definition.name, mutant.old, mutant.new, 1]
            kept.append(mutant)
        self.mutants = kept

    def _add(self, start, end, text, old=None, new=None):
        whole = self.source.text
        first = whole.rfind("\n", 0, start) + 1
        last = whole.find("\n", end)
        last = len(whole) if last < 0 else last
        old = squeeze(whole[first:last]) if old is None else old
        new = squeeze(whole[first:start] + text + whole[end:last]) if new is None else new
        line = whole.count("\n", 0, start) + 1
        self.mutants.append(Mutant(self.source.path, self.definition, line, start, end, text, old, new))

    def _expressions(self):
        source, definition = self.source, self.definition
        tokens = source.tokens
        table = definition.kind == "variable" and TABLE <= sum(
            tokens[i].kind == "number" for i in range(definition.first, definition.end)
        )
        for at in range(definition.first, definition.end):
            token = tokens[at]
            if token.kind == "number":
                steps = (1,) if table and number_by(token.text, 1) else (-1,) if table else (1, -1)
                for step in steps:
                    other = number_by(token.text, step)
                    if other is not None:
                        self._add(token.start, token.end, other)
            elif token.kind == "text" and source.path.endswith(".cpp"):
                other = changed_text(token.text)
                if other is not None:
                    self._add(token.start, token.end, other)
            elif token.kind == "character":
                other = "'z'" if token.text[-2] != "z" else "'q'"
                self._add(token.start, token.end, token.text[: token.text.index("'")] + other)
            elif token.text in ("true", "false"):
                self._add(token.start, token.end, "false" if token.text == "true" else "true")
            elif token.text in OPERATORS and token.spaced:
                for other in OPERATORS[token.text]:
                    self._add(token.start, token.end, other)
            elif token.text in STEPS:
                self._add(token.start, token.end, STEPS[token.text])
            elif token.text in ("!", "~") and token.kind == "sign":
                self._add(token.start, token.end, "")
            elif token.text == "?":
                self._add(token.start, token.end, "&& false ?")
                self._add(token.start, token.end, "|| true ?")
            elif token.text in ("if", "while") and source.is_(at + 1, "("):
                self._condition(token.text, at + 2, source.partner[at + 1])
            elif token.text == "for" and source.is_(at + 1, "("):
                parts = [i for i in range(at + 2, source.partner[at + 1]) if source.is_(i, ";")]
                if len(parts) == 2 and parts[1] > parts[0] + 1:
                    self._replace(parts[0] + 1, parts[1], "false")

    def _replace(self, first, end, text):
        tokens = self.source.tokens
        self._add(tokens[first].start, tokens[end - 1].end, text)

    def _condition(self, keyword, first, end):
        self._replace(first, end, "false")
        if keyword == "if":
            self._replace(first, end, "true")
        words = {self.source.tokens[i].text for i in range(first, end)}
        if not words & {"!", "&&", "||", *COMPARISONS}:
            self._replace(first, end, f"!({self.source.between(first, end)})")

    def _statements(self):
        for statements in self.source.blocks(self.definition):
            for statement in statements:
                self._delete(statement)
            for one, other in zip(statements, statements[1:]):
                self._swap(one, other)
        for statement in self.source.single_statements(self.definition):
            self._delete(statement)

    def _delete(self, statement):
        source = self.source
        whole = source.between(statement.first, statement.end)
        start = source.tokens[statement.first].start
        end = source.tokens[statement.end - 1].end
        if statement.kind in ("call", "jump") or whole == "return;":
            self._add(start, end, ";", squeeze(whole), "(nothing)")
        elif statement.kind == "return":
            value = whole[len("return") : -1].strip()
            if not re.fullmatch(r"\d+|true|false|nullptr|{}", value):
                self._add(start, end, "return {};", squeeze(whole), "return {};")

    def _swap(self, one, other):
        source = self.source
        kinds = {one.kind, other.kind}
        if not kinds <= {"call", "declaration", "if"} or kinds == {"declaration"}:
            return
        first, second = (source.between(each.first, each.end) for each in (one, other))
        if one.kind == "declaration":
            # What it declares is the name before its value.
            names = [
                source.tokens[i].text
                for i in range(one.first, one.end - 1)
                if source.tokens[i].kind == "name" and source.is_(i + 1, "=", ";", "{", "[", "(")
            ]
            if "(" not in first or any(re.search(rf"\b{name}\b", second) for name in names[:1]):
                return
        if other.kind == "declaration" and "(" not in second:
            return
        if len(first) + len(second) > SHORT or first == second:
            return
        between = source.text[source.tokens[one.end - 1].end : source.tokens[other.first].start]
        self._add(
            source.tokens[one.first].start,
            source.tokens[other.end - 1].end,
            second + between + first,
            squeeze(first + " " + second),
            squeeze(second + " " + first),
        )
