#!/usr/bin/env python3
"""make-large-report.py SOURCE OUT MEGABYTES [LATER]: a real report (SOURCE,
made by the program under Wine) grown to about MEGABYTES MB by entries added
to its current directory, written whole with its checksum. With LATER, the
same report a week later: every 1000th entry with another version and size,
for diff to find."""
import sys
from array import array


def checksum(text):
    """The report's checksum (bench/make-reports.py's), over 8 bytes at a
    time: the low byte of character i goes to lane i % 4, so the low bytes
    read as 64-bit words put lane j in bytes j and j + 4 of every word."""
    low = text.encode('utf-16-le')[0::2]
    low += bytes(-len(low) % 8)
    folded = 0
    for word in array('Q', low):
        folded ^= word
    folded ^= folded >> 32
    return (folded & 0xFFFFFFFF) ^ 0x01020304


def main():
    source, out, megabytes = sys.argv[1], sys.argv[2], int(sys.argv[3])
    later = len(sys.argv) > 4
    body = open(source, 'rb').read()[2:-30].decode('utf-16-le')
    anchor = '* Standard installation directory'
    at = body.index(anchor)
    entry = '\t00000020 %10d\t22/11/2026  14:33:22\t22/11/2026  14:33:22\tzz%07d.dll\t%s\r\n'
    count = megabytes * 1024 * 1024 // (2 * len(entry % (0, 0, '9.3.1.1042')))
    added = []
    for n in range(count):
        changed = later and n % 1000 == 0
        added.append(entry % (4753 + (7 if changed else 0), n, '9.4.0.0' if changed else '9.3.1.1042'))
    text = body[:at] + ''.join(added) + body[at:]
    with open(out, 'wb') as f:
        f.write(b'\xff\xfe' + text.encode('utf-16-le') + ('\n--- \n%08x\n' % checksum(text)).encode('utf-16-le'))


if __name__ == '__main__':
    main()
