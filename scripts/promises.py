#!/usr/bin/python3
"""What the library promises, and the tests that hold it: scripts/promises.py [--update | --open]

Checks docs/promises.md, or makes it anew (--update), or lists the promises that no test holds and
every promise's place (--open). A promise is

  - in the public headers a sentence of a comment, a row of a table in one, or the comment beside a
    name; not the title of a paragraph (its first sentence, when that has three words or fewer or
    names the file), and not an example;
  - in the manual of the text commands a sentence or a row of a table; not a heading or an example;
  - in the quirks a row: its last cell names the tests.

A sentence of NOTES speaks of the page, not of the library, and promises nothing.

A test holds a promise by a mark above it, which names the section and quotes words that only this
promise of the section has:

    // Holds: VEXOAPI_GetVersion "null copies nothing"

Scripts of the script language and checks in shell have the same with a # before it, above an
`expect "NAME"` or anywhere else for the script as a whole.
"""
import collections
import difflib
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/promises.md"
HEADERS = ["include/VexoCtrlSDK.h", "include/VexoDesk.h"]
TEXTS = "docs/text-commands.md"
QUIRKS = "docs/quirks.md"
NOTES = re.compile(r"\bThis page\b|\bpatterns below\b|\bdocs/host-programs|\bvexosim\b")

SENTENCE_END = re.compile(r"(?<=[A-Za-z)>/\"`]\.)\s+(?=[\w(\"`])|(?<=\d\.)\s+(?=[A-Za-z_(\"`])")
COMMENT = re.compile(r"/\*.*?\*/", re.S)
MARK = re.compile(r"^\s*(?://|#) Holds: (.*)$")
QUOTING = re.compile(r'(.*?) "(.+)"$')
TEST = re.compile(r"TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\s*\)", re.S)
CHECK = re.compile(r'\s*expect "([^"]+)"')

Promise = collections.namedtuple("Promise", "source section text held")


def sentences(lines):
    text = " ".join(lines).strip()
    return [part for part in SENTENCE_END.split(text) if part and not NOTES.search(part)]


def cells(row):
    return [cell.strip() for cell in row.strip().strip("|").split("|")]


def words_of(comment):
    """The lines of a comment without its signs."""
    lines = comment[2:-2].split("\n")
    return [line.lstrip(" *").rstrip() for line in lines[:1]] + [
        re.sub(r"^\s*\*? ?", "", line, count=1).rstrip() if re.match(r"\s*\*", line) else line.strip()
        for line in lines[1:]
    ]


def is_title(sentence, file):
    return len(sentence.split()) <= 3 or sentence.startswith(f"{file}: ")


def promises_of_block(lines, file):
    """Sentences and rows of a comment that stands alone."""
    found, paragraph = [], []
    for line in lines + [""]:
        if line and not line.startswith(" "):
            paragraph.append(line)
            continue
        prose = sentences(paragraph)
        found += prose[1:] if prose and is_title(prose[0], file) else prose
        paragraph = []
        row = re.match(r"\s{2,}(\S+(?: \S+)*)\s{2,}(\S.*)$", line)
        if row:
            found.append(f"{row[1]}: {row[2]}")
    return found


DECLARED = re.compile(r"\ntypedef struct (\w+)|\ntypedef [\w* ]+\(\*(\w+)|\ntypedef .*?(\w+);|\n[\w* ]+?(\w+)\(")


def header_promises(source):
    text = (ROOT / source).read_text()
    file = pathlib.Path(source).stem
    section = f"{file}.h"
    beside, found = None, []
    for comment in COMMENT.finditer(text):
        line = text[text.rfind("\n", 0, comment.start()) + 1 : comment.start()]
        lines = words_of(comment[0])
        banner = re.match(r"\s*---- (.*?) -+$", lines[0])
        if banner:
            section, beside = banner[1], None
        elif line.isspace() and beside:  # the comment beside the last name goes on
            beside[1] += " " + " ".join(lines)
        elif not line.strip():
            declared = DECLARED.match(text[comment.end() :])
            place = next(filter(None, declared.groups())) if declared else section
            found += [[place, promise] for promise in promises_of_block(lines, file)]
        else:
            define = re.match(r"#define (\w+)", line)
            field = re.match(r"\s+[\w* ]+?(\w+)(?:\[\w+\])?;", line)
            words = " ".join(lines).strip()
            beside = None
            if define:
                beside = [section, f"{define[1]}: {words}"]
            elif field:
                record = re.findall(r"typedef struct (\w+) \{", text[: comment.start()])[-1]
                beside = [record, f"{field[1]}: {words}"]
            if beside and re.search("[A-Za-z]", words):  # more than an offset
                found.append(beside)
    return [Promise(source, place, " ".join(words.split()), []) for place, words in found]


def text_command_promises():
    found, prose = [], []
    chapter = section = ""
    lines = (ROOT / TEXTS).read_text().split("\n")
    for line, below in zip(lines, lines[1:] + [""]):
        if line and line[0] not in "#| ":
            prose.append(line)
            continue
        found += [(section, sentence) for sentence in sentences(prose)]
        prose = []
        if line.startswith("#"):
            level, _, title = line.partition(" ")
            section = title.replace("`", "")
            chapter = section if len(level) < 3 else chapter
        elif line.startswith("|") and not line.startswith("|---") and not below.startswith("|---"):
            number, meaning = cells(line)
            found.append((chapter, f"{number}: {meaning}"))
    return [Promise(TEXTS, *promise, []) for promise in found]


def quirk_promises():
    found, section = [], ""
    lines = (ROOT / QUIRKS).read_text().split("\n")
    for line, below in zip(lines, lines[1:] + [""]):
        if line.startswith("## "):
            section = line[3:]
        elif line.startswith("| ") and not below.startswith("|---"):
            what, _, _, tests = cells(line)
            held = re.findall(r'`[^`]+\.sh` "[^"]+"|`[^`]+`', tests)
            found.append(Promise(QUIRKS, section, what, held))
    return found


def marks():
    """(path, line number, words, name of the test) of each mark."""
    paths = [*ROOT.glob("tests/**/*.cpp"), *ROOT.glob("tests/**/*.vexo")]
    paths += [path for room in ("scripts", "device", "windows") for path in ROOT.glob(f"{room}/*.sh")]
    for path in sorted(paths):
        name = path.relative_to(ROOT).as_posix()
        lines = path.read_text().split("\n")
        for number, line in enumerate(lines):
            mark = MARK.match(line)
            if not mark:
                continue
            below = number + 1
            while below < len(lines) and MARK.match(lines[below]):
                below += 1
            what = "\n".join(lines[below : below + 3])
            held_by = None
            if path.suffix == ".cpp":
                test = TEST.match(what)
                if test:
                    held_by = f"`{test[1]}.{test[2]}`"
            else:
                check = CHECK.match(what)
                held_by = f'`{name}` "{check[1]}"' if check else f"`{name}`"
            yield name, number + 1, mark[1], held_by


def named(promises, words):
    """The promises that a mark's words name."""
    quoting = QUOTING.match(words)
    if not quoting:
        return []
    section, quote = quoting[1], quoting[2]
    return [
        promise
        for promise in promises
        if (promise.section + " ").startswith(section + " ") and quote in promise.text
    ]


def nearest(promises, words):
    texts = {f'{promise.section} "{promise.text}"': promise for promise in promises}
    close = difflib.get_close_matches(words, texts, 1, 0)
    return f" The nearest is: {close[0]}" if close else ""


def take_marks(promises):
    """Puts each test to the promises that it holds; returns what is wrong with the marks."""
    wrong = []
    for path, line, words, test in marks():
        found = named(promises, words)
        if test is None:
            wrong.append(f"{path}:{line}: the mark is not above a test: {words}")
        elif not found:
            wrong.append(f"{path}:{line}: there is no such promise: {words}.{nearest(promises, words)}")
        elif len(found) > 1:
            wrong.append(f"{path}:{line}: {len(found)} promises have these words: {words}")
        elif test not in found[0].held:
            found[0].held.append(test)
    return wrong


def page(promises):
    tests = {test for promise in promises for test in promise.held}
    lines = [
        "# Promises",
        "",
        f"{len(promises)} promises of the public headers, the text commands and the quirks, and the",
        f"{len(tests)} tests, scripts and checks that fail when one of them is broken. Made from them by",
        "`scripts/promises.py --update`, from the marks `Holds:` in the tests and the last column of the",
        "[quirks](quirks.md); its beginning says what counts as a promise. Without `--update` it fails where",
        "one has no test, where a mark names no promise, and where this page is not of today.",
    ]
    source = section = None
    for promise in promises:
        if promise.source != source:
            source, section = promise.source, None
            lines += ["", f"## `{source}`"]
        if promise.section != section:
            section = promise.section
            lines += ["", f"### {section}", "", "| Promise | Held by |", "|---|---|"]
        words = promise.text.replace("|", "\\|").replace("<", "&lt;")
        if source in HEADERS:
            words = words.replace("_", "\\_").replace("*", "\\*")
        lines.append(f"| {words} | {', '.join(promise.held)} |")
    return "\n".join(lines) + "\n"


def main():
    option = sys.argv[1] if len(sys.argv) > 1 else ""
    if option not in ("", "--update", "--open") or len(sys.argv) > 2:
        sys.exit("Usage: scripts/promises.py [--update | --open]")
    promises = [promise for source in HEADERS for promise in header_promises(source)]
    promises += text_command_promises() + quirk_promises()
    wrong = take_marks(promises)
    wrong += [
        f'{promise.source}: no test holds: {promise.section} "{promise.text}"'
        for promise in promises
        if not promise.held
    ]
    if option == "--open":
        for promise in promises:
            print(f"{len(promise.held)} {promise.section} | {promise.text}")
    elif option == "--update":
        PAGE.write_text(page(promises))
    elif PAGE.read_text() != page(promises):
        wrong.append("docs/promises.md is not of today: scripts/promises.py --update makes it.")
    for each in wrong:
        print(each)
    if not wrong and not option:
        print(f"{len(promises)} promises: each has its tests.")
    sys.exit(bool(wrong))


if __name__ == "__main__":
    main()
