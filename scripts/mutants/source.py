"""C++ as far as a mutation needs it: tokens, definitions, statements. It relies on the sources being
formatted: an operator of two operands stands between blanks, a template's bracket does not."""
import dataclasses
import re

TOKEN = re.compile(
    r"""(?P<blank>\s+|//[^\n]*|/\*.*?\*/)
      | (?P<directive>(?<![^\n])\#(?:\\\n|[^\n])*)
      | (?P<text>(?:u8|[uUL])?"(?:\\.|[^"\\])*")
      | (?P<character>(?:[uUL])?'(?:\\.|[^'\\])+')
      | (?P<number>\.?\d(?:[\w.]|'\d)*)
      | (?P<name>[A-Za-z_]\w*)
      | (?P<sign><<=|>>=|\.\.\.|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|::|.)""",
    re.VERBOSE | re.DOTALL,
)
OPENING = {"(": ")", "{": "}", "[": "]"}
DECLARING = {
    "alignas", "auto", "bool", "char", "const", "constexpr", "int", "static", "struct", "typedef",
    "unsigned", "using", "enum", "class",
}  # fmt: skip


@dataclasses.dataclass
class Token:
    kind: str
    text: str
    start: int
    end: int
    line: int
    spaced: bool  # between blanks


@dataclasses.dataclass
class Definition:
    """A function, a variable, a type: what stands at a file's outermost level."""

    name: str
    kind: str  # function, variable, type
    first: int  # tokens, past the end
    end: int
    body: int = -1  # of a function: its opening brace


@dataclasses.dataclass
class Statement:
    kind: str  # call, declaration, return, jump, if, other
    first: int
    end: int


class Source:
    def __init__(self, path, text):
        self.path, self.text = path, text
        self.tokens = []
        line = 1
        for match in TOKEN.finditer(text):
            if match.lastgroup not in ("blank", "directive"):
                around = text[max(match.start() - 1, 0)], text[match.end() : match.end() + 1]
                spaced = all(side in " \n" for side in around)
                self.tokens.append(
                    Token(match.lastgroup, match.group(), match.start(), match.end(), line, spaced)
                )
            line += match.group().count("\n")
        self.partner = self._pair()
        self.definitions = []
        self._define(0, len(self.tokens))

    def between(self, first, end):
        """The text of tokens, as it stands."""
        return self.text[self.tokens[first].start : self.tokens[end - 1].end]

    def is_(self, at, *texts):
        return at < len(self.tokens) and self.tokens[at].text in texts

    def _pair(self):
        partner, open_ones = {}, []
        for at, token in enumerate(self.tokens):
            if token.kind != "sign":
                continue
            if token.text in OPENING:
                open_ones.append(at)
            elif open_ones and token.text == OPENING[self.tokens[open_ones[-1]].text]:
                partner[open_ones[-1]] = at
                partner[at] = open_ones.pop()
        return partner

    def _define(self, at, end):
        while at < end:
            if self.is_(at, "namespace") or (self.is_(at, "extern") and self.tokens[at + 1].kind == "text"):
                brace = at
                while brace < end and not self.is_(brace, "{", ";"):
                    brace += 1
                if not self.is_(brace, "{") or brace - at > 3:
                    at = self._one(at, end)
                    continue
                self._define(brace + 1, self.partner[brace])
                at = self.partner[brace] + 1
            else:
                at = self._one(at, end)

    def _one(self, at, end):
        first, brace, paren, equals, name = at, -1, -1, -1, ""
        while at < end:
            token = self.tokens[at]
            if token.text == ";":
                at += 1
                break
            if token.text == "=" and equals < 0 and paren < 0:
                equals = at
            if token.text in OPENING and at in self.partner:
                if token.text == "(" and paren < 0 and equals < 0 and not self.is_(at - 1, "alignas", "__attribute__"):
                    paren = at
                if token.text == "{" and brace < 0 and (paren >= 0 or equals < 0):
                    brace = at
                at = self.partner[at]
                # A row of a table of macros ends without a semicolon, as a function's body does.
                row = at + 1 < end and paren == first + 1 and self.tokens[first].text == "REGISTER"
                body = token.text == "{" and equals < 0 and paren >= 0
                if row or body:
                    at += 1
                    break
            at += 1
        words = [self.tokens[i].text for i in range(first, at)]
        head = words[: (paren if paren >= 0 else len(words) + first) - first]
        if words and words[0] == "REGISTER":
            kind, name = "variable", self.tokens[first + 2].text
        elif words and words[0] in ("using", "static_assert", "typedef", ";") or not words:
            return at
        elif equals < 0 and {"struct", "class", "enum"} & set(head) and paren < 0 and brace >= 0:
            kind = "type"
            keyword = next(i for i in range(first, at) if self.is_(i, "struct", "class", "enum"))
            keyword += self.is_(keyword + 1, "class")
            name = self.tokens[keyword + 1].text
            # `Type name{...}` with a keyword in front would be a variable; there are none.
        elif paren >= 0 and equals < 0:
            kind, name = "function", self.tokens[paren - 1].text
            if self.is_(paren - 2, "::"):
                name = self.tokens[paren - 3].text + "::" + name
            elif self.is_(paren - 2, "operator"):
                name = "operator" + name
        else:
            kind = "variable"
            stop = equals if equals >= 0 else brace if brace >= 0 else at - 1
            while stop > first and self.is_(stop - 1, "]"):
                stop = self.partner[stop - 1]
            name = self.tokens[stop - 1].text
        body = brace if kind == "function" else -1
        if kind != "function" or body >= 0:
            self.definitions.append(Definition(name, kind, first, at, body))
        return at

    def blocks(self, definition):
        """The statements of each block of a function, block by block."""
        if definition.body < 0:
            return
        for at in range(definition.body, definition.end):
            if self.is_(at, "{") and self._is_block(at, definition):
                yield self._statements(at + 1, self.partner[at])

    def _is_block(self, at, definition):
        return at == definition.body or self.is_(at - 1, ")", "else", "do", "{", "}", ";", ":")

    def _statements(self, at, end):
        found = []
        while at < end:
            statement = self._statement(at, end)
            found.append(statement)
            at = statement.end
        return found

    def single_statements(self, definition):
        """Statements alone under an if, a loop or an else, with no block of their own."""
        if definition.body < 0:
            return
        for at in range(definition.body, definition.end):
            if self.is_(at, "if", "for", "while") and self.is_(at + 1, "(", "constexpr"):
                paren = at + 1 + self.is_(at + 1, "constexpr")
                inner = self.partner[paren] + 1
            elif self.is_(at, "else"):
                inner = at + 1
            else:
                continue
            if not self.is_(inner, "{", ";", "if", "for", "while"):
                yield self._statement(inner, definition.end)

    def _statement(self, at, end):
        first = at
        if self.is_(at, "{"):
            return Statement("other", first, self.partner[at] + 1)
        if self.is_(at, "if", "for", "while", "switch"):
            kind = "if" if self.is_(at, "if") else "other"
            paren = at + 1 + self.is_(at + 1, "constexpr")
            at = self._statement(self.partner[paren] + 1, end).end
            if kind == "if" and self.is_(at, "else"):
                at = self._statement(at + 1, end).end
            return Statement(kind, first, at)
        if self.is_(at, "do"):
            at = self._statement(at + 1, end).end
            while not self.is_(at, ";"):
                at += 1
            return Statement("other", first, at + 1)
        if self.is_(at, "case", "default"):
            while at < end and not self.is_(at, ":"):
                at += 1
            return Statement("other", first, at + 1)
        while at < end and not self.is_(at, ";"):
            at = self.partner[at] + 1 if at in self.partner and self.tokens[at].text in OPENING else at + 1
        return Statement(self._kind(first, at), first, min(at + 1, end))

    def _kind(self, first, end):
        word = self.tokens[first]
        if word.text == "return":
            return "return"
        if word.text in ("break", "continue"):
            return "jump"
        if word.text in DECLARING:
            return "declaration"
        if word.kind != "name":
            return "call"
        at = first + 1
        while self.is_(at, "::") and at + 1 < end:
            at += 2
        if self.is_(at, "<") and not self.tokens[at].spaced:
            while at < end and not self.is_(at, ">"):
                at += 1
            at += 1
        while self.is_(at, "*", "&", "const") and not self.tokens[at].spaced:
            at += 1
        return "declaration" if at < end and self.tokens[at].kind == "name" else "call"
