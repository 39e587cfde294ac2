#!/usr/bin/env python3
"""Makes the hand-edited fixture reports from tests/findings/fixtures/healthy.txt:
states that Wine cannot take. Each edit changes lines of the body and makes the
checksum again, as someone editing a report on purpose would (the altered one
keeps the old checksum). Usage: edit-report.py FIXTURE_FOLDER"""
import re
import sys
from pathlib import Path


def checksum(body: str) -> int:
    value = 0x01020304
    units = body.encode("utf-16-le")
    for i in range(0, len(units), 2):
        value ^= units[i] << (8 * ((i // 2) % 4))
    return value


def read_body(path: Path) -> str:
    data = path.read_bytes()
    assert data[:2] == b"\xff\xfe"
    return data[2:-30].decode("utf-16-le")


def write_report(path: Path, body: str, stored=None) -> None:
    value = checksum(body) if stored is None else stored
    trailer = "\n--- \n%08x\n" % value
    path.write_bytes(b"\xff\xfe" + (body + trailer).encode("utf-16-le"))


def volume(body: str, below_threshold: bool) -> str:
    """The free space on C: just under 5 % of the volume, or at it."""
    total = int(re.search(r"total (\d+)K free", body).group(1))
    free = (total + 19) // 20 - (1 if below_threshold else 0)
    return re.sub(r"free \d+K \(user \d+K\)", "free %dK (user %dK)" % (free, free), body)


def main() -> None:
    folder = Path(sys.argv[1])
    healthy = read_body(folder / "healthy.txt")
    assert "launched as administrator\r\n" in healthy
    write_report(folder / "not-elevated-edited.txt", healthy.replace("launched as administrator\r\n", ""))
    write_report(folder / "low-disk-space-edited.txt", volume(healthy, True))
    write_report(folder / "low-disk-space-near-edited.txt", volume(healthy, False))
    # Every adapter down but loopback.
    write_report(folder / "no-adapter-up-edited.txt",
                 re.sub(r"(IfType: (?!24\r)\d+\r\n\tOperStatus: )1\r", "\\g<1>2\r", healthy))
    write_report(folder / "unrecognised-line-edited.txt",
                 healthy.replace("\tuser: ", "\tnote: all fine, says the customer\r\n\tuser: "))
    write_report(folder / "altered-edited.txt", healthy.replace("Core.dll", "Core.DLL"), checksum(healthy))


if __name__ == "__main__":
    main()
