"""The kept list of equivalent mutants."""
import re


def read(path):
    """Reasons by the mutants' keys. A bad line ends the program."""
    known, entry = {}, []

    def finish():
        if not entry:
            return
        match = re.fullmatch(r"(\S+) (.+?)(?: #(\d+))?", entry[0][1])
        signs = [line[1][:2] for line in entry[1:4]]
        if not match or signs != ["- ", "+ ", "= "]:
            raise SystemExit(f"{path}:{entry[0][0]}: this is no entry: file and definition, -, +, =.")
        file, definition, occurrence = match.groups()
        reason = " ".join([entry[3][1][2:]] + [line[1].strip() for line in entry[4:]])
        key = file, definition, entry[1][1][2:], entry[2][1][2:], int(occurrence or 1)
        if key in known:
            raise SystemExit(f"{path}:{entry[0][0]}: this entry stands twice.")
        known[key] = reason
        entry.clear()

    for number, line in enumerate(path.read_text().splitlines(), 1):
        if line.startswith("#"):
            continue
        if not line.strip():
            finish()
        else:
            entry.append((number, line))
    finish()
    return known
