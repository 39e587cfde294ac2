#!/usr/bin/env python3
"""make-large-report.py SOURCE OUT MEGABYTES [later|every-entry|lf-breaks|one-character]:
a real report (SOURCE, made by the program under Wine) grown to about
MEGABYTES MB by entries added to its current directory, written whole with its
checksum. With later, the same report a week later: every 1000th entry with
another version and size, for diff to find; with every-entry, every one of
them (and its times too), the most a diff can find. With lf-breaks, the report as a
transfer in text mode leaves it: every CR LF made LF, its checksum no longer
the body's. With one-character, one character in its middle changed."""
import sys

from reportfile import read_body, write_report


def altered(path, how):
    """The report saved at PATH damaged as HOW says, in place."""
    data = bytearray(open(path, 'rb').read())
    if how == 'lf-breaks':
        data = data.replace(b'\r\x00\n\x00', b'\n\x00')
    else:
        middle = len(data) // 4 * 2
        data[middle] = ord('Y') if data[middle] == ord('X') else ord('X')
    open(path, 'wb').write(bytes(data))


def main():
    source, out, megabytes = sys.argv[1], sys.argv[2], int(sys.argv[3])
    how = sys.argv[4] if len(sys.argv) > 4 else ''
    every = {'later': 1000, 'every-entry': 1}.get(how)
    body = read_body(source)
    anchor = '* Standard installation directory'
    at = body.index(anchor)
    entry = '\t00000020 %10d\t22/11/2026  14:33:22\t22/11/2026  14:33:22\tzz%07d.dll\t%s\r\n'
    count = megabytes * 1024 * 1024 // (2 * len(entry % (0, 0, '9.3.1.1042')))
    added = []
    for n in range(count):
        changed = every is not None and n % every == 0
        line = entry % (4753 + (7 if changed else 0), n, '9.4.0.0' if changed else '9.3.1.1042')
        added.append(line.replace('14:33:22', '14:34:05') if changed and every == 1 else line)
    write_report(out, body[:at] + ''.join(added) + body[at:])
    if how in ('lf-breaks', 'one-character'):
        altered(out, how)


if __name__ == '__main__':
    main()
