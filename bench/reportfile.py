"""What the bench scripts that make reports share: the body of a real report
(made by the program under Wine) and a report file written whole with its
checksum."""
from array import array


def read_body(source):
    """The text of a saved report between its byte-order mark and its
    checksum trailer ("\\n--- \\n" and eight digits and "\\n": 30 bytes)."""
    return open(source, 'rb').read()[2:-30].decode('utf-16-le')


def checksum(text):
    """The report's checksum: four lanes, starting at 4, 3, 2, 1, each the XOR
    of the low bytes of every fourth UTF-16 unit. Taken 8 bytes at a time:
    the low bytes read as 64-bit words put lane j in bytes j and j + 4 of
    every word."""
    low = text.encode('utf-16-le')[0::2]
    low += bytes(-len(low) % 8)
    folded = 0
    for word in array('Q', low):
        folded ^= word
    folded ^= folded >> 32
    return (folded & 0xFFFFFFFF) ^ 0x01020304


def write_report(path, text):
    """TEXT saved as the program saves a report: UTF-16 with its mark, then
    the checksum trailer."""
    with open(path, 'wb') as f:
        f.write(b'\xff\xfe' + text.encode('utf-16-le') + ('\n--- \n%08x\n' % checksum(text)).encode('utf-16-le'))
