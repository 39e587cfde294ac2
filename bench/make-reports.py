#!/usr/bin/env python3
"""make-reports.py COUNT ROOT SOURCE [FIRST]: COUNT copies of a real report
(SOURCE, made by the program under Wine) with variations: another host name,
free space and program directory in each, every one a whole report with its
own checksum, spread over folders of 500 under ROOT. FIRST numbers the first
copy (0), so that a later call adds reports beside the earlier ones."""
import os
import re
import sys

from reportfile import read_body, write_report


def main():
    count, root, source = int(sys.argv[1]), sys.argv[2], sys.argv[3]
    first = int(sys.argv[4]) if len(sys.argv) > 4 else 0
    body = read_body(source)
    for n in range(first, first + count):
        text = (body.replace('(WORKGROUP\\VM)', '(WORKGROUP\\PC%05d)' % n)
                    .replace('in Z:\\work', 'in Z:\\w%05d' % n))
        text = re.sub(r'free [0-9]+K', 'free %dK' % (1000000 + 7 * n), text)
        folder = os.path.join(root, 'batch%03d' % (n // 500))
        os.makedirs(folder, exist_ok=True)
        write_report(os.path.join(folder, 'pc%05d.txt' % n), text)


if __name__ == '__main__':
    main()
