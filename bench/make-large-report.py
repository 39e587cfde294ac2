#!/usr/bin/env python3
"""make-large-report.py SOURCE OUT MEGABYTES [LATER]: a real report (SOURCE,
made by the program under Wine) grown to about MEGABYTES MB by entries added
to its current directory, written whole with its checksum. With LATER, the
same report a week later: every 1000th entry with another version and size,
for diff to find."""
import sys

from reportfile import read_body, write_report


def main():
    source, out, megabytes = sys.argv[1], sys.argv[2], int(sys.argv[3])
    later = len(sys.argv) > 4
    body = read_body(source)
    anchor = '* Standard installation directory'
    at = body.index(anchor)
    entry = '\t00000020 %10d\t22/11/2026  14:33:22\t22/11/2026  14:33:22\tzz%07d.dll\t%s\r\n'
    count = megabytes * 1024 * 1024 // (2 * len(entry % (0, 0, '9.3.1.1042')))
    added = []
    for n in range(count):
        changed = later and n % 1000 == 0
        added.append(entry % (4753 + (7 if changed else 0), n, '9.4.0.0' if changed else '9.3.1.1042'))
    write_report(out, body[:at] + ''.join(added) + body[at:])


if __name__ == '__main__':
    main()
