#!/usr/bin/python3
"""Checks the unpacked package with tools that did not make its files: package/check.py FOLDER TIME, the
time that its libraries say they were built at, in seconds since 1970.

Programs and libraries are read by pefile, pages by Python's own parser; every link has its page, its
place on it, its picture.
"""
import html.parser
import pathlib
import re
import sys
import time
import urllib.parse

import pefile

ARM, THUMB, X86_64, I386 = 0x1C0, 0x1C2, 0x8664, 0x14C
CE, CONSOLE, WINDOWS = 9, 3, 2
EXPORTS = ["CommandProc", "GetVersion", "Initialize", "SetEnableDebug", "SetEnableOutputMsg", "TextCommandProc",
           "Uninitialize"]
# What any Windows, or any device of this kind, has by itself.
SYSTEM = {"kernel32.dll", "user32.dll", "gdi32.dll", "advapi32.dll", "version.dll", "msvcrt.dll", "ws2_32.dll",
          "mswsock.dll", "shell32.dll", "bcrypt.dll"}
wrong = []


def expect(what, wanted, found):
    if wanted != found:
        wrong.append(f"{what}: wanted {wanted}, found {found}")


# ---- Programs and libraries ------------------------------------------------------------------------


def exports_of(pe):
    return [symbol.name.decode() for symbol in pe.DIRECTORY_ENTRY_EXPORT.symbols if symbol.name]


def imports_of(pe):
    """File, in small letters, and name or #ordinal of each."""
    return {(entry.dll.decode().lower(), symbol.name.decode() if symbol.name else f"#{symbol.ordinal}")
            for entry in getattr(pe, "DIRECTORY_ENTRY_IMPORT", []) for symbol in entry.imports}


def version_of(pe):
    fixed = pe.VS_FIXEDFILEINFO[0]
    numbers = (fixed.FileVersionMS >> 16, fixed.FileVersionMS & 0xFFFF, fixed.FileVersionLS >> 16,
               fixed.FileVersionLS & 0xFFFF)
    return ".".join(map(str, numbers))


def read_image(path, machine, subsystem):
    pe = pefile.PE(path)
    pe.parse_data_directories()
    # A library that only forwards has no entry, and little else.
    forwards = pe.OPTIONAL_HEADER.AddressOfEntryPoint == 0
    expect(f"{path}: warnings", [], [warning for warning in pe.get_warnings()
                                     if not forwards or not re.search("AddressOfEntryPoint|Byte 0x00", warning)])
    expect(f"{path}: machine", hex(machine), hex(pe.FILE_HEADER.Machine))
    expect(f"{path}: subsystem", subsystem, pe.OPTIONAL_HEADER.Subsystem)
    expect(f"{path}: time of its link", 0, pe.FILE_HEADER.TimeDateStamp)
    if pe.OPTIONAL_HEADER.CheckSum != 0:
        expect(f"{path}: check sum", pe.generate_checksum(), pe.OPTIONAL_HEADER.CheckSum)
    for section in pe.sections:
        expect(f"{path}: {section.Name} lies in the file", True,
               section.PointerToRawData + section.SizeOfRawData <= path.stat().st_size)
    return pe


def check_library(path, machine, subsystem, motion, version, banner):
    pe = read_image(path, machine, subsystem)
    expect(f"{path}: exports", sorted([motion] + ["VEXOAPI_" + name for name in EXPORTS]), sorted(exports_of(pe)))
    expect(f"{path}: version", version, version_of(pe))
    expect(f"{path}: the time of its build", [banner.encode()],
           re.findall(rb">> build : ([A-Z][^\r]*)\r\n", path.read_bytes()))
    return pe


def check_program(path, machine, version):
    pe = read_image(path, machine, CE)
    expect(f"{path}: a program, not a library", False, pe.is_dll())
    expect(f"{path}: exports", False, hasattr(pe, "DIRECTORY_ENTRY_EXPORT"))
    expect(f"{path}: what it needs", {"coredll.dll"}, {file for file, _ in imports_of(pe)})
    expect(f"{path}: version", version, version_of(pe))


def check_device(folder, version, banner):
    images = {}
    for name, machine in (("arm", ARM), ("thumb", THUMB)):
        path = folder / "device" / name / "VexoCtrlSDK.DLL"
        pe = check_library(path, machine, CE, "?VEXOAPI_SetMotionInfo@@YAHEEPAE@Z", version, banner)
        files = {file for file, _ in imports_of(pe)}
        expect(f"{path}: what it needs", {"coredll.dll", "ceddk.dll", "extrtcnvramctl.dll"}, files)
        definition = (path.parent / "VexoCtrlSDK.def").read_text().split()
        expect(f"{path}: its .def", ["LIBRARY", "VexoCtrlSDK.DLL", "EXPORTS"] + exports_of(pe), definition)
        for program in ("VexoCheck.exe", "recorder.exe"):
            check_program(path.parent / program, machine, version)
        # The map is this image's: it has each exported function where the image has it.
        linker_map = (path.parent / "VexoCtrlSDK.map").read_text()
        for symbol in pe.DIRECTORY_ENTRY_EXPORT.symbols:
            function = "Export_SetMotionInfo" if symbol.name.startswith(b"?") else symbol.name.decode()
            address = pe.OPTIONAL_HEADER.ImageBase + symbol.address
            expect(f"{path}: {function} in its map", [f"{address:#010x}"],
                   re.findall(rf"^ +(0x\w+) +{function}$", linker_map, re.M))
        images[name] = path.read_bytes()
    differ = [(a, b) for a, b in zip(images["arm"], images["thumb"]) if a != b]
    expect("the two images differ in the machine number alone", [(ARM & 0xFF, THUMB & 0xFF)], differ)


def check_kit(folder, processor, version, banner):
    here = folder / "windows" / processor
    machine, pointer = (X86_64, "PE") if processor == "x86_64" else (I386, "P")
    kit = {"vexoctrlsdk.dll": check_library(here / "VexoCtrlSDK.dll", machine, CONSOLE,
                                            f"?VEXOAPI_SetMotionInfo@@YAHEE{pointer}AE@Z", version, banner)}
    for name in ("CEDDK.dll", "ExtRtcNVramCtl.dll"):
        kit[name.lower()] = read_image(here / name, machine, CONSOLE)
    programs = [read_image(here / "VexoRun.exe", machine, CONSOLE), read_image(here / "VexoLine.exe", machine, CONSOLE),
                read_image(here / "recorder.exe", machine, WINDOWS)]
    exports = {name: set(exports_of(pe)) | {f"#{symbol.ordinal}" for symbol in pe.DIRECTORY_ENTRY_EXPORT.symbols}
               for name, pe in kit.items()}
    for pe in [*kit.values(), *programs]:
        for file, name in imports_of(pe):
            if file in exports:
                expect(f"{processor}: {file} exports {name}", True, name in exports[file])
            else:
                expect(f"{processor}: a file of Windows", True, file in SYSTEM or (file, "is not one"))


def check_plans(folder):
    boards = {"4": "chips 1", "8": "chips 2", "16": "chips 4"}
    for path in sorted(folder.glob("device/plans/*/VexoCheck.plan")):
        channels, cameras = path.parent.name.split("-")
        lines = path.read_text(encoding="ascii").splitlines()
        expect(f"{path}: begin and end", ["vexoplan 1", "end"], [lines[0], lines[-1]])
        expect(f"{path}: its chips", f'board "board {boards[channels]}"', lines[1])
        # NTSC is what a board has unless something else is said.
        expect(f"{path}: its cameras", cameras == "pal", 'board "camera all pal"' in lines)


# ---- Pages -----------------------------------------------------------------------------------------


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.path, self.ids, self.links, self.needs = path, set(), [], []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        expect(f"{self.path}: script", False, tag == "script" or any(name.startswith("on") for name in values))
        if "id" in values:
            expect(f"{self.path}: id {values['id']} is there once", False, values["id"] in self.ids)
            self.ids.add(values["id"])
        if tag == "a":
            self.links.append(values.get("href", ""))
        elif tag == "link":
            self.needs.append(values["href"])
        elif tag == "img":
            expect(f"{self.path}: words for {values['src']}", True, bool(values.get("alt")))
            self.needs.append(values["src"])


def check_pages(folder):
    pages = {path: Page(path) for path in sorted(folder.rglob("*.html"))}
    for path, page in pages.items():
        for link in page.needs + page.links:
            url = urllib.parse.urlsplit(link)
            if url.scheme and link in page.links:
                continue
            expect(f"{path}: {link} is in the package", "", url.scheme + url.netloc)
            target = (path.parent / urllib.parse.unquote(url.path)).resolve() if url.path else path
            inside = target.is_relative_to(folder) and target.is_file()
            expect(f"{path}: {link} is there", True, inside)
            if url.fragment and inside:
                expect(f"{path}: {link} has its place", True, url.fragment in pages[target].ids)
    for style in folder.rglob("*.css"):
        expect(f"{style}: nothing from elsewhere", [], re.findall(r"url\(|@import", style.read_text()))
    # Each page is reached from the first one.
    seen, todo = set(), [folder / "README.html"]
    while todo:
        path = todo.pop()
        if path in pages and path not in seen:
            seen.add(path)
            todo += [(path.parent / link.split("#")[0]).resolve() for link in pages[path].links]
    expect("pages that no link leads to", set(), set(pages) - seen)
    return len(pages)


def main():
    folder = pathlib.Path(sys.argv[1]).resolve()
    banner = time.strftime("%b %e %Y %H:%M:%S", time.gmtime(int(sys.argv[2])))
    version = (folder / "VERSION").read_text().strip()
    check_device(folder, version, banner)
    for processor in ("x86_64", "i686"):
        check_kit(folder, processor, version, banner)
    check_plans(folder)
    pages = check_pages(folder)
    for text in wrong:
        print(text)
    if wrong:
        sys.exit(1)
    print(f"Libraries, programs and {pages} pages are as wanted.")


main()
