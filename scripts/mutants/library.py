"""The library on this PC: a shared object that a program of all tests loads, so that a mutant takes
the compilation of what it changes and a small link. What each test reaches in the library is found
out once; a mutant meets the tests that reach it, the most telling first."""
import collections
import hashlib
import json
import os
import pathlib
import re
import shutil
import subprocess

from mutants.run import batches, compiled, must, run_tests, within
from mutants.source import Source

ROOMS = ("api", "chip", "display", "motion", "report", "setup", "text")
FLAGS = [
    "-std=c++17", "-O0", "-fPIC", "-w", "-fno-exceptions", "-fno-rtti",
    "-fno-threadsafe-statics", "-fasynchronous-unwind-tables", "-fvisibility-inlines-hidden",
]  # fmt: skip
LINK = ["g++", "-shared", "-fuse-ld=lld", "-Wl,-soname,libvexo_library.so"]
FIRST_BATCHES = (8, 40, 200)


class Library:
    def __init__(self, root, build, folder, seconds, say):
        self.root, self.build, self.folder, self.limit, self.say = root, build, folder, seconds, say
        self.env = {**os.environ, "LC_ALL": "C"}
        self.sources = sorted(
            str(path.relative_to(root)) for room in ROOMS for path in (root / "src" / room).glob("*.cpp")
        )
        self.program = folder / "tests"
        folder.mkdir(parents=True, exist_ok=True)
        stamp = folder / "stamp"
        now = self._state()
        if not stamp.exists() or stamp.read_text() != now:
            stamp.unlink(missing_ok=True)
            self._build_library()
            self._build_program()
            self._find_reached()
            stamp.write_text(now)
        self._read_included()
        self._read_reached()

    @staticmethod
    def covers(path):
        return path.startswith("src/") and not path.startswith("src/platform/ce/")

    # ---- Once ----

    def _state(self):
        """What all below is made of."""
        state = hashlib.sha256(str((self.build / "tests" / "vexo_tests").stat().st_mtime).encode())
        here = pathlib.Path(__file__)
        for path in [here, here.parent / "recorder.cpp", *sorted((self.root / "src").rglob("*"))]:
            if path.suffix in (".cpp", ".h", ".inc", ".py"):
                state.update(path.read_bytes())
        return state.hexdigest()

    def _includes(self, top):
        return [f"-I{top}/{each}" for each in ("include", "src", "sim/platform")]

    def _object(self, path):
        return self.folder / "objects" / (path.replace("/", "_") + ".o")

    def _build_library(self):
        (self.folder / "objects").mkdir(exist_ok=True)
        for path in self.sources:
            must(
                ["g++", *FLAGS, *self._includes("."), "-MMD", "-c", path, "-o", str(self._object(path))],
                cwd=self.root,
            )  # fmt: skip
        self._read_included()
        # A header's constants stay the library's own: the tests' program has them too, unchanged.
        own = [
            definition.name
            for path, text in self.texts.items()
            if not path.endswith(".cpp")
            for source in [Source(path, text)]
            for definition in source.definitions
            if definition.kind == "variable" and not source.is_(definition.first, "extern")
        ]
        (self.folder / "own.map").write_text("{ local: " + " ".join(f"{name};" for name in own) + " };\n")
        self._link({}, self.folder / "libvexo_library.so")

    def _read_included(self):
        self.included = {}
        for path in self.sources:
            words = self._object(path).with_suffix(".d").read_text().replace("\\\n", " ").split()[1:]
            self.included[path] = {os.path.normpath(word) for word in words}
        mine = {each for some in self.included.values() for each in some if each.startswith("src/")}
        self.texts = {each: (self.root / each).read_text() for each in sorted(mine)}

    def _link(self, instead, made):
        objects = [str(instead.get(path, self._object(path))) for path in self.sources]
        compiled([*LINK, f"-Wl,--version-script={self.folder}/own.map", "-o", str(made), *objects])

    def _build_program(self):
        """Links the tests' program of the build anew, with the library as a shared object."""
        command = must(["ninja", "-t", "commands", "vexo_tests"], cwd=self.build).splitlines()[-1]
        command = command.replace("src/libvexo_library.a", str(self.folder / "libvexo_library.so"))
        recorder = self.folder / "recorder.o"
        here = pathlib.Path(__file__).parent
        must(["g++", "-std=c++20", "-c", str(here / "recorder.cpp"), "-o", str(recorder)])
        exported = self.folder / "exported.map"
        exported.write_text("{ __sanitizer_cov_*; };\n")
        options = f" -o {self.program} {recorder} -fuse-ld=lld -Wl,--dynamic-list={exported}"
        # Behind the link the build asks the program for its tests.
        command = command.removeprefix(": && ").split(" && ")[0]
        must(re.sub(r" -o \S+", options, command), shell=True, cwd=self.build)

    def _rooms_tests(self):
        listing = self.folder / "tests.json"
        must(
            [str(self.program), "--gtest_list_tests", f"--gtest_output=json:{listing}"],
            env={**self.env, "LD_LIBRARY_PATH": str(self.folder)},
        )  # fmt: skip
        tests = []
        for suite in json.loads(listing.read_text())["testsuites"]:
            for test in suite["testsuite"]:
                place = test["file"].split("/tests/")[-1]
                if place.split("/")[0] in ROOMS or "/" not in place or place.startswith("sim/platform"):
                    name = f"{suite['name']}.{test['name']}"
                    if "DISABLED_" not in name:
                        tests.append(name)
        return tests

    def _find_reached(self):
        marked = self.folder / "marked"
        marked.mkdir(exist_ok=True)
        objects = []
        for path in self.sources:
            objects.append(str(marked / self._object(path).name))
            must(
                ["clang++", *FLAGS, "-g1", "-fsanitize-coverage=inline-bool-flag,pc-table",
                 *self._includes("."), "-c", path, "-o", objects[-1]],
                cwd=self.root,
            )  # fmt: skip
        shared = marked / "libvexo_library.so"
        must([*LINK, "-o", str(shared), *objects])
        tests = self._rooms_tests()
        reached = self.folder / "reached.txt"
        self.say(f"What do {len(tests)} tests reach?")
        reached.unlink(missing_ok=True)
        for some, _ in batches(tests, (), collections.Counter()):
            part = self.folder / "part.txt"
            must(
                [str(self.program), "--gtest_brief=1", "--gtest_filter=" + ":".join(some)],
                env={**self.env, "LD_LIBRARY_PATH": str(marked), "VEXO_REACHED": str(part)},
                cwd=self.root,
            )  # fmt: skip
            with reached.open("a") as out:
                out.write(part.read_text())

    def _read_reached(self):
        reached = self.folder / "reached.txt"
        shared = self.folder / "marked" / "libvexo_library.so"
        addresses, self.blocks_of, self.seconds = {}, {}, {}
        for line in reached.read_text().splitlines():
            word, first, *rest = line.split(" ")
            if word == "block":
                addresses[first] = None
            else:
                self.seconds[first] = int(rest[0]) / 1e6
                self.blocks_of[first] = [int(number) for number in rest[1:]]
        names = list(addresses)
        places = subprocess.run(
            ["llvm-symbolizer", f"--obj={shared}", "--no-inlines", "--output-style=GNU", "--no-demangle"],
            input="\n".join(hex(int(each)) for each in names), capture_output=True, text=True, check=True,
        ).stdout.split("\n")  # fmt: skip
        self.at_load = [test for test in self.seconds if "AtLoad" in test]
        self.place = []
        for at in range(len(names)):
            path, _, line = places[2 * at + 1].rpartition(":")
            path = os.path.relpath(path, self.root) if os.path.isabs(path) else os.path.normpath(path)
            line = re.match(r"\d+", line)
            self.place.append((path, int(line.group()) if line else 0))
        self.tests_at = collections.defaultdict(set)
        for test, blocks in self.blocks_of.items():
            for block in blocks:
                self.tests_at[self.place[block]].add(test)
        self.lines_of = collections.defaultdict(list)
        for path, line in sorted(set(self.place)):
            self.lines_of[path].append(line)

    # ---- Each mutant ----

    def job(self, number):
        folder = self.folder / f"job{number}"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        return folder

    def users(self, mutant, sources):
        """Which of the library's files use what a header's change concerns, by name: the changed
        definition, those of headers that mention it, and so on."""
        if mutant.path.endswith(".cpp"):
            return {mutant.path}, set()
        names = {mutant.definition.name.split("::")[-1]}
        if mutant.definition.kind == "type":
            names |= self._members(mutant, sources)
        headers = [path for path in self.texts if not path.endswith(".cpp")]
        names = self._mentioning(names, headers, sources)
        including = {path for path, some in self.included.items() if mutant.path in some}
        pattern = re.compile(r"\b(" + "|".join(map(re.escape, names)) + r")\b")
        return {path for path in including if pattern.search(self.texts[path])}, names

    def _members(self, mutant, sources):
        """A type is used through its variables too: those of the same headers."""
        name, found = mutant.definition.name, set()
        for path in self.texts:
            found |= set(re.findall(rf"\b{name}\b[ &*>]+(\w+)", self.texts[path]))
        return found

    @staticmethod
    def _mentioning(names, paths, sources, kinds=None):
        """With the definitions of these files, of all kinds or of some, that mention one of the
        names, and so on."""
        names, grown = set(names), True
        while grown:
            grown = False
            for source in map(sources, paths):
                for each in source.definitions:
                    if each.name in names or (kinds and each.kind not in kinds):
                        continue
                    if names & {source.tokens[i].text for i in range(each.first, each.end)}:
                        names.add(each.name)
                        grown = True
        return names

    def make(self, folder, mutant, text, users):
        """Whether the compiler makes something else of it."""
        overlay = folder / "overlay"
        shutil.rmtree(overlay, ignore_errors=True)
        changed = overlay / mutant.path
        changed.parent.mkdir(parents=True)
        changed.write_text(text)
        instead = {}
        for path in sorted(users):
            copy = overlay / path
            if path != mutant.path:
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(self.root / path, copy)
            instead[path] = folder / (str(len(instead)) + ".o")
            compiled(
                ["g++", *FLAGS, *self._includes(overlay), *self._includes("."), "-c", str(copy),
                 "-o", str(instead[path])],
                cwd=self.root,
            )  # fmt: skip
        if all(made.read_bytes() == self._object(path).read_bytes() for path, made in instead.items()):
            return False
        self._link(instead, folder / "libvexo_library.so")
        return True

    def order(self, mutant, source, users, names, sources):
        """Tests that may notice, the most telling first: quick ones that reach little, and rather
        those that reach the line than those that reach its function."""
        near, far = set(), set()
        whole = source.tokens[mutant.definition.first].line, source.tokens[mutant.definition.end - 1].line
        if mutant.definition.kind == "function":
            lines = [line for line in self.lines_of[mutant.path] if whole[0] <= line <= whole[1]]
            before = [line for line in lines if line <= mutant.line]
            for line in lines:
                far |= self.tests_at[mutant.path, line]
            if before:
                near = set(self.tests_at[mutant.path, before[-1]])
        if not far:
            # No code of its own: the functions that use it, or a table that has it.
            names = self._mentioning(names or {mutant.definition.name}, users, sources, ["variable"])
            for path in users | {i for i in self.texts if not i.endswith(".cpp")}:
                for definition in sources(path).definitions:
                    tokens = sources(path).tokens[definition.first : definition.end]
                    used = [token.line for token in tokens if token.text in names]
                    if definition.kind != "function" or not used:
                        continue
                    lines = [
                        line for line in self.lines_of[path]
                        if tokens[0].line <= line <= tokens[-1].line
                    ]  # fmt: skip
                    for line in lines:
                        far |= self.tests_at[path, line]
                    for line in used:
                        before = [each for each in lines if each <= line]
                        if before:
                            near |= self.tests_at[path, before[-1]]
        if not far:
            for path in users:
                for line in self.lines_of[path]:
                    far |= self.tests_at[path, line]

        def cost(test):
            return (self.seconds[test] * 1000 + len(self.blocks_of[test]) / 20) * (1 if test in near else 4)

        # What a record begins with has tests of its own, which reach nothing.
        first = [] if mutant.definition.kind == "function" else self.at_load
        return first + sorted((near | far).difference(first), key=cost)

    def try_(self, folder, mutant, text, sources):
        users, names = self.users(mutant, sources)
        if not users:
            return None
        if not self.make(folder, mutant, text, users):
            return "same code", ""
        tests = within(self.order(mutant, sources(mutant.path), users, names, sources), self.seconds, self.limit)
        env = {**self.env, "LD_LIBRARY_PATH": str(folder)}
        for some, seconds in batches(tests, FIRST_BATCHES, self.seconds):
            verdict = run_tests(str(self.program), some, seconds, env, self.root)
            if verdict.killed:
                break
        else:
            return f"survived {len(tests)} tests", ""
        return "killed", verdict.by
