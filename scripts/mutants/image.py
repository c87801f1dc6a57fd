"""The board's own binary: what only the device has, changed in the image and tried by the image's
tests on the emulated device."""
import json
import os
import pathlib
import re
import shlex
import shutil

from mutants.run import batches, compiled, must, run_tests

TARGET = "VexoCtrlSDK.DLL"
LINKED = "VexoCtrlSDK.elf"
# For desktop Windows alone; its tests are the kit's, under Wine.
ELSEWHERE = ("src/platform/ce/desktop.cpp",)
FIRST_BATCHES = (40,)


class Image:
    def __init__(self, root, build, device, folder, say):
        self.root, self.device, self.folder = root, device, folder
        self.program = str(build / "tests" / "device" / "image" / "image_tests")
        self.env = {**os.environ, "LC_ALL": "C"}
        commands = must(["ninja", "-t", "commands", TARGET], cwd=device).splitlines()
        # The link, and what makes the image of it.
        self.finish = [each for each in commands if f"-o {LINKED} " in each or f"--output {TARGET} " in each]
        self.compile_of = {}
        for command in commands:
            match = re.search(r"-c (\S+\.cpp)$", command)
            if match:
                path = os.path.relpath(match.group(1), root)
                self.compile_of[path] = re.sub(r"^\S*ccache ", "", command)
        self._read_included()
        self._find_times(say)

    @staticmethod
    def covers(path):
        here = path.startswith(("src/platform/ce/", "device/library/"))
        return here and path not in ELSEWHERE

    def _read_included(self):
        self.included, path = {}, ""
        for line in must(["ninja", "-t", "deps"], cwd=self.device).splitlines():
            if line.startswith(" "):
                here = os.path.relpath((self.device / line.strip()).resolve(), self.root)
                # The first is what is compiled.
                path = path or here
                self.included.setdefault(path, set()).add(here)
            else:
                path = ""

    def _find_times(self, say):
        """What each test takes. It also shows that all is well without a mutant."""
        self.folder.mkdir(parents=True, exist_ok=True)
        listing = self.folder / "tests.json"
        made = max(path.stat().st_mtime for path in (self.device / TARGET, pathlib.Path(self.program)))
        if not listing.exists() or listing.stat().st_mtime < made:
            say("How long do the image's tests take?")
            fresh = listing.with_suffix(".new")
            must(
                [self.program, "--gtest_brief=1", f"--gtest_output=json:{fresh}"], cwd=self.root,
                env={**self.env, "VEXO_IMAGE": str(self.device / TARGET)},
            )  # fmt: skip
            fresh.rename(listing)
        self.seconds = {}
        for suite in json.loads(listing.read_text())["testsuites"]:
            for test in suite["testsuite"]:
                self.seconds[f"{suite['name']}.{test['name']}"] = float(test["time"].rstrip("s"))
        self.tests = sorted(self.seconds, key=self.seconds.get)

    def job(self, number):
        folder = self.folder / f"job{number}"
        shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(self.device, folder)
        return folder

    def users(self, path):
        return [each for each in self.compile_of if path in self.included[each]]

    def try_(self, folder, mutant, text, sources):
        overlay = folder / "overlay"
        shutil.rmtree(overlay, ignore_errors=True)
        changed = overlay / mutant.path
        changed.parent.mkdir(parents=True)
        changed.write_text(text)
        users = self.users(mutant.path)
        if not users:
            return None
        kept = []
        try:
            for path in users:
                copy = overlay / path
                copy.parent.mkdir(parents=True, exist_ok=True)
                if path != mutant.path:
                    shutil.copy(self.root / path, copy)
                command = self.compile_of[path]
                made = folder / re.search(r" -o (\S+)", command).group(1)
                kept.append(made)
                command = command.replace(f"-c {self.root}/{path}", f"-w -c {shlex.quote(str(copy))}")
                # Before the original's folders, so that a header is the changed one.
                first = " ".join(f"-I{overlay}/{each}" for each in ("src", "src/platform/ce"))
                compiled(command.replace(" -I", f" {first} -I", 1), cwd=folder)
            for command in self.finish:
                compiled(command.replace(str(self.device), str(folder)), cwd=folder)
            if (folder / TARGET).read_bytes() == (self.device / TARGET).read_bytes():
                return "same code", ""
            env = {**self.env, "VEXO_IMAGE": str(folder / TARGET)}
            for some, seconds in batches(self.tests, FIRST_BATCHES, self.seconds):
                verdict = run_tests(self.program, some, seconds, env, self.root)
                if verdict.killed:
                    return "killed", verdict.by
            return f"survived {len(self.tests)} tests", ""
        finally:
            for made in kept:
                shutil.copy(self.device / made.relative_to(folder), made)
