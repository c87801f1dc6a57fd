#!/usr/bin/python3
"""Checks the import library and the .def beside the image, with other tools than the one that made
them: device/check_import_library.py DIRECTORY arm|thumb

Its members must be those that llvm-dlltool makes of the .def, but for two things that it cannot do:
the machine number, for which it has that of a later system, and where the loader looks first.
"""
import pathlib
import re
import struct
import subprocess
import sys
import tempfile

MACHINES = {"arm": 0x1C0, "thumb": 0x1C2}
MAGIC = b"!<arch>\n"


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def members_of(path):
    """Contents by position, in order."""
    data = path.read_bytes()
    assert data.startswith(MAGIC), f"{path} is no archive"
    members, at = {}, len(MAGIC)
    while at < len(data):
        size = int(data[at + 48 : at + 58])
        members[at] = data[at + 60 : at + 60 + size]
        at += 60 + size + size % 2
    return members


def texts(data, count):
    parts = data.split(b"\0")
    assert len(parts) == count + 1 and not parts[-1], "texts behind a directory's end"
    return [part.decode("ascii") for part in parts[:-1]]


def first_directory(data):
    (count,) = struct.unpack_from(">I", data)
    positions = struct.unpack_from(f">{count}I", data, 4)
    return list(zip(texts(data[4 + 4 * count :], count), positions))


def second_directory(data):
    (members,) = struct.unpack_from("<I", data)
    positions = struct.unpack_from(f"<{members}I", data, 4)
    at = 4 + 4 * members
    (count,) = struct.unpack_from("<I", data, at)
    numbers = struct.unpack_from(f"<{count}H", data, at + 4)
    names = texts(data[at + 4 + 2 * count :], count)
    assert names == sorted(names), "the second directory is not in the order of the names"
    return positions, [(name, positions[number - 1]) for name, number in zip(names, numbers)]


def with_machine(member, machine, hint):
    if member[:4] != b"\0\0\xff\xff":
        return struct.pack("<H", machine) + member[2:]
    return member[:6] + struct.pack("<H", machine) + member[8:16] + struct.pack("<H", hint) + member[18:]


def main():
    folder, machine = pathlib.Path(sys.argv[1]), MACHINES[sys.argv[2]]
    library, definition = folder / "VexoCtrlSDK.lib", folder / "VexoCtrlSDK.def"

    # The image's own names, as LLVM reads them out of it.
    exports = re.findall(r"Name: (\S+)\n\s*RVA", output("llvm-readobj", "--coff-exports", folder / "VexoCtrlSDK.DLL"))
    assert len(exports) == 8, exports
    wanted = ["__IMPORT_DESCRIPTOR_VexoCtrlSDK", "__NULL_IMPORT_DESCRIPTOR", "\x7fVexoCtrlSDK_NULL_THUNK_DATA"]
    for name in exports:
        wanted += ["__imp_" + name, name]

    # GNU's tools read the first directory, LLVM's the second.
    for tool in (["nm", "-s"], ["llvm-nm", "--print-armap"]):
        found = re.findall(r"^(\S+) in VexoCtrlSDK.DLL$", output(*tool, library), re.M)
        assert sorted(found) == sorted(wanted), (tool, found)
    assert output("llvm-ar", "t", library).split() == ["VexoCtrlSDK.DLL"] * (3 + len(exports))

    with tempfile.TemporaryDirectory() as scratch:
        reference = pathlib.Path(scratch) / "reference.lib"
        subprocess.run(["llvm-dlltool", "-m", "arm", "-d", definition, "-l", reference], check=True)
        (_, *made) = members_of(reference).values()
    (first, second, *rest) = members_of(library).values()
    assert len(made) == len(rest) == 3 + len(exports)
    for i, (ours, theirs) in enumerate(zip(rest, made)):
        theirs = with_machine(theirs, machine, i - 3)
        assert ours == theirs, f"member {i} is {ours}, and llvm-dlltool's is {theirs}"

    contents = members_of(library)
    positions, by_name = second_directory(second)
    assert list(positions) == list(contents)[2:], "the second directory's members"
    assert sorted(first_directory(first)) == by_name, "the two directories differ"
    assert sorted(wanted) == [name for name, _ in by_name], by_name
    for name, position in by_name:
        assert name.removeprefix("__imp_").encode() + b"\0" in contents[position], f"{name} is not at {position}"

    print(f"VexoCtrlSDK.lib ({sys.argv[2]}): {len(wanted)} symbols, its members as llvm-dlltool makes them.")


main()
