#!/usr/bin/env python3
"""Draw the artwork of Orvane Diagnostics (stdlib only, written byte by byte).

Creates, relative to the repository root:
  res/bitmaps/SystemReport{Normal,Pressed,Focused,Disabled,Hot}.bmp
      28x28 24-bit BMPs of the "System report" image button; background is
      magenta RGB(255,0,255), which the program uses as transparent key.
  res/OrvaneDiagnostics.ico
      application icon, 16/32/48 px, 32-bit BGRA with alpha plus AND mask.

The symbol (a report sheet under a magnifying glass) is drawn with a tiny
vector rasterizer: shapes are "inside" tests sampled SSxSS times per pixel,
which gives anti-aliased edges without any imaging library.
"""
import math
import os
import struct

SS = 4  # supersampling per axis: 16 samples per pixel is plenty at these sizes

# --- shapes: (bounding box, inside(x, y)) in pixel units, pixel i spans [i, i+1)

def rect(x0, y0, x1, y1):
    return (x0, y0, x1, y1), lambda x, y: x0 <= x < x1 and y0 <= y < y1

def rrect(x0, y0, x1, y1, r):
    def inside(x, y):
        if not (x0 <= x < x1 and y0 <= y < y1):
            return False
        dx = max(x0 + r - x, 0, x - (x1 - r))
        dy = max(y0 + r - y, 0, y - (y1 - r))
        return dx * dx + dy * dy <= r * r
    return (x0, y0, x1, y1), inside

def disc(cx, cy, r):
    return (cx - r, cy - r, cx + r, cy + r), \
        lambda x, y: (x - cx) ** 2 + (y - cy) ** 2 <= r * r

def ring(cx, cy, r_out, r_in):
    return minus(disc(cx, cy, r_out), disc(cx, cy, r_in))

def seg(x0, y0, x1, y1, w):
    """Line segment of width w with round caps (a capsule)."""
    h = w / 2
    dx, dy = x1 - x0, y1 - y0
    ll = dx * dx + dy * dy or 1e-9
    def inside(x, y):
        t = max(0.0, min(1.0, ((x - x0) * dx + (y - y0) * dy) / ll))
        px, py = x0 + t * dx - x, y0 + t * dy - y
        return px * px + py * py <= h * h
    return (min(x0, x1) - h, min(y0, y1) - h, max(x0, x1) + h, max(y0, y1) + h), inside

def polyline(pts, w):
    return union(*[seg(*a, *b, w) for a, b in zip(pts, pts[1:])])

def poly(pts):
    """Filled polygon, even-odd rule."""
    xs, ys = [p[0] for p in pts], [p[1] for p in pts]
    def inside(x, y):
        c = False
        for (ax, ay), (bx, by) in zip(pts, pts[-1:] + pts[:-1]):
            if (ay > y) != (by > y) and x < ax + (y - ay) * (bx - ax) / (by - ay):
                c = not c
        return c
    return (min(xs), min(ys), max(xs), max(ys)), inside

def union(*shapes):
    bb = [s[0] for s in shapes]
    return (min(b[0] for b in bb), min(b[1] for b in bb),
            max(b[2] for b in bb), max(b[3] for b in bb)), \
        lambda x, y: any(s[1](x, y) for s in shapes)

def minus(a, b):
    return a[0], lambda x, y: a[1](x, y) and not b[1](x, y)

def clip(a, b):
    (a0, a1, a2, a3), (b0, b1, b2, b3) = a[0], b[0]
    return (max(a0, b0), max(a1, b1), min(a2, b2), min(a3, b3)), \
        lambda x, y: a[1](x, y) and b[1](x, y)

class Canvas:
    """RGBA canvas, premultiplied floats (0..1) so that 'over' is one line."""

    def __init__(self, w, h):
        self.w, self.h = w, h
        self.px = [[0.0, 0.0, 0.0, 0.0] for _ in range(w * h)]

    def fill(self, shape, rgb, alpha=1.0):
        (x0, y0, x1, y1), inside = shape
        r, g, b = (v / 255 for v in rgb)
        offs = [(i + 0.5) / SS for i in range(SS)]
        for y in range(max(0, math.floor(y0)), min(self.h, math.ceil(y1))):
            for x in range(max(0, math.floor(x0)), min(self.w, math.ceil(x1))):
                n = sum(inside(x + ox, y + oy) for oy in offs for ox in offs)
                if n:
                    a = alpha * n / (SS * SS)
                    p = self.px[y * self.w + x]
                    p[0] = r * a + p[0] * (1 - a)
                    p[1] = g * a + p[1] * (1 - a)
                    p[2] = b * a + p[2] * (1 - a)
                    p[3] = a + p[3] * (1 - a)

    def rgba(self):
        """Straight (non-premultiplied) 8-bit RGBA rows, top row first."""
        out = []
        for y in range(self.h):
            row = []
            for p in self.px[y * self.w:(y + 1) * self.w]:
                a = p[3]
                c = [round(255 * min(1, v / a)) if a > 0 else 0 for v in p[:3]]
                row.append((*c, round(255 * a)))
            out.append(row)
        return out


# --- the symbol -----------------------------------------------------------

BLUE = (0, 90, 170)          # the maker's blue
PAPER = (255, 255, 255)
FOLD = (208, 222, 238)       # back of the folded corner
GLASS = (150, 205, 250)

def report(c, L, ink, text, handle, dx=0, dy=0):
    """Report sheet with dog-ear, text lines and a magnifier, per layout L.

    Layouts are in whole pixels per size so that straight edges stay crisp
    instead of being smeared by scaling one design."""
    x0, y0, x1, y1 = (v + d for v, d in zip(L['sheet'], (dx, dy, dx, dy)))
    f, bw = L['fold'], L['border']
    # Outline = outer pentagon, paper = the same pentagon inset by bw
    # (the diagonal edge moves by bw*sqrt(2) along each axis to stay parallel).
    k = bw * (math.sqrt(2) - 1)
    c.fill(poly([(x0, y0), (x1 - f, y0), (x1, y0 + f), (x1, y1), (x0, y1)]), ink)
    c.fill(poly([(x0 + bw, y0 + bw), (x1 - f - k, y0 + bw), (x1 - bw, y0 + f + k),
                 (x1 - bw, y1 - bw), (x0 + bw, y1 - bw)]), PAPER)
    # Dog-ear: the folded-over triangle, edged like the sheet.
    c.fill(poly([(x1 - f, y0), (x1 - f, y0 + f), (x1, y0 + f)]), ink)
    c.fill(poly([(x1 - f + bw, y0 + bw + k), (x1 - f + bw, y0 + f - bw),
                 (x1 - bw - k, y0 + f - bw)]), FOLD)
    # Title line in blue, then grey text lines of varying length.
    tx, ty, tw, th = L['title']
    c.fill(rect(tx + dx, ty + dy, tx + tw + dx, ty + th + dy), BLUE)
    for lx, ly, lw, lh in L['lines']:
        c.fill(rect(lx + dx, ly + dy, lx + lw + dx, ly + lh + dy), text)
    # Magnifier: tinted glass over the text, optional pulse line seen through
    # it (the "diagnostics" hint), the rim, then the handle.
    cx, cy, r, rim = L['lens']
    cx, cy = cx + dx, cy + dy
    glass = disc(cx, cy, r - rim / 2)
    c.fill(glass, PAPER, 0.55)
    c.fill(glass, GLASS, 0.45)
    if L.get('pulse'):
        pts = [(cx + u * r, cy + v * r) for u, v in L['pulse']]
        c.fill(clip(polyline(pts, L['pulse_w']), glass), (220, 40, 50))
    c.fill(ring(cx, cy, r, r - rim), BLUE)
    hx0, hy0, hx1, hy1, hw = L['handle']
    c.fill(seg(hx0 + dx, hy0 + dy, hx1 + dx, hy1 + dy, hw), handle)


# Heartbeat trace seen through the lens, in lens radii from its centre.
PULSE = [(-1, 0.08), (-0.42, 0.08), (-0.25, -0.58), (0.08, 0.58), (0.25, 0.08), (1, 0.08)]

# Button image, 28x28: the symbol spans pixels 2..25, clear of the dotted
# focus frame on rows/columns 1 and 26.
BUTTON = dict(
    sheet=(4, 2, 20, 25), fold=5, border=1,
    title=(7, 6, 7, 2),
    lines=[(7, 10, 10, 1), (7, 13, 9, 1), (7, 16, 5, 1), (7, 19, 4, 1), (7, 22, 4, 1)],
    lens=(16, 16, 6, 2.0), pulse=PULSE, pulse_w=1.2,
    handle=(20.6, 20.6, 24.3, 24.3, 2.8),
)

# Icon layouts per size (16, 32, 48).
ICON = {
    16: dict(sheet=(2, 0, 12, 15), fold=3, border=1,
             title=(4, 3, 4, 1),
             lines=[(4, 5, 6, 1), (4, 7, 3, 1), (4, 9, 2, 1), (4, 11, 2, 1)],
             lens=(10, 10, 4, 1.5),
             handle=(12.6, 12.6, 14.6, 14.6, 2.0)),
    32: dict(sheet=(4, 1, 24, 30), fold=6, border=1,
             title=(7, 5, 9, 2),
             lines=[(7, 9, 14, 1), (7, 12, 12, 1), (7, 15, 5, 1), (7, 18, 4, 1),
                    (7, 21, 4, 1), (7, 24, 4, 1)],
             lens=(20, 20, 8, 2.0),
             pulse=PULSE, pulse_w=1.6,
             handle=(25.3, 25.3, 29.5, 29.5, 3.4)),
    48: dict(sheet=(6, 2, 36, 45), fold=9, border=2,
             title=(11, 8, 13, 3),
             lines=[(11, 14, 20, 2), (11, 19, 17, 2), (11, 24, 8, 2), (11, 29, 6, 2),
                    (11, 34, 6, 2), (11, 39, 6, 2)],
             lens=(30, 30, 11, 3.0),
             pulse=PULSE, pulse_w=2.2,
             handle=(38, 38, 44.2, 44.2, 5.0)),
}


# --- button states --------------------------------------------------------

KEY = (255, 0, 255)       # transparent colour key of the button images
FACE = (240, 240, 240)    # dialog face, used to flatten anti-aliased edges

def button_state(state):
    # The tile and the symbol are drawn apart so that the state's colour
    # change (darker, brighter, grey) touches the symbol only.
    tile = Canvas(28, 28)
    if state == 'hot':         # light blue tile: the usual "mouse over" look
        tile.fill(rrect(1, 1, 27, 27, 4), (140, 190, 238))
        tile.fill(rrect(2, 2, 26, 26, 3), (225, 240, 255))
    if state == 'pressed':     # deeper tile, symbol pushed in by 1 px
        tile.fill(rrect(1, 1, 27, 27, 4), (95, 150, 210))
        tile.fill(rrect(2, 2, 26, 26, 3), (200, 222, 245))
    sym = Canvas(28, 28)
    d = 1 if state == 'pressed' else 0
    report(sym, BUTTON, (56, 72, 98), (150, 160, 178), (64, 70, 84), d, d)
    rows = []
    for trow, srow in zip(tile.rgba(), sym.rgba()):
        out = []
        for (tr, tg, tb, ta), (r, g, b, a) in zip(trow, srow):
            if state == 'pressed':
                r, g, b = (v * 0.85 for v in (r, g, b))
            elif state == 'hot':
                r, g, b = (min(255, v * 1.05 + 8) for v in (r, g, b))
            elif state == 'disabled':
                # greyscale, squeezed into a light range so it reads as faded
                r = g = b = 150 + 0.36 * (0.299 * r + 0.587 * g + 0.114 * b)
            # symbol over tile, then a hard edge against the key (no pink
            # fringe): soft edge pixels are flattened onto the dialog face.
            s, t = a / 255, ta / 255
            cover = s + t * (1 - s)
            if cover < 0.5:
                out.append(KEY)
                continue
            px = [v * s + w * t * (1 - s) + f * (1 - cover)
                  for v, w, f in zip((r, g, b), (tr, tg, tb), FACE)]
            out.append(tuple(round(v) for v in px))
        rows.append(out)
    if state == 'focused':
        # dotted frame one pixel inside the edge, like a Windows focus rect
        for i in range(1, 27):
            for x, y in ((i, 1), (i, 26), (1, i), (26, i)):
                if (x + y) % 2 == 0:
                    rows[y][x] = (0, 90, 170)
    return rows


# --- file writers ---------------------------------------------------------

def write_bmp(path, rows):
    """24-bit BI_RGB BMP: bottom-up BGR rows, each padded to 4 bytes."""
    w, h = len(rows[0]), len(rows)
    stride = (w * 3 + 3) & ~3
    data = b''.join(bytes(v for r, g, b in row for v in (b, g, r)).ljust(stride, b'\0')
                    for row in reversed(rows))
    info = struct.pack('<IiiHHIIiiII', 40, w, h, 1, 24, 0, len(data), 2835, 2835, 0, 0)
    head = struct.pack('<2sIHHI', b'BM', 14 + 40 + len(data), 0, 0, 14 + 40)
    with open(path, 'wb') as f:
        f.write(head + info + data)

def icon_image(rows):
    """One ICO entry: BITMAPINFOHEADER (height doubled), BGRA, AND mask."""
    w, h = len(rows[0]), len(rows)
    xor = b''.join(bytes((b, g, r, a)) for row in reversed(rows) for r, g, b, a in row)
    stride = ((w + 31) // 32) * 4
    mask = b''
    for row in reversed(rows):  # bit set = transparent, for alpha-less renderers
        bits = 0
        for r, g, b, a in row:
            bits = bits << 1 | (a < 128)
        mask += (bits << (stride * 8 - w)).to_bytes(stride, 'big')
    info = struct.pack('<IiiHHIIiiII', 40, w, 2 * h, 1, 32, 0, len(xor) + len(mask), 0, 0, 0, 0)
    return info + xor + mask

def write_ico(path, images):
    head = struct.pack('<HHH', 0, 1, len(images))
    offset = 6 + 16 * len(images)
    entries, blobs = b'', b''
    for size, blob in images:
        entries += struct.pack('<BBBBHHII', size % 256, size % 256, 0, 0, 1, 32, len(blob), offset)
        offset += len(blob)
        blobs += blob
    with open(path, 'wb') as f:
        f.write(head + entries + blobs)


def main():
    root = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..')
    bmp_dir = os.path.join(root, 'res', 'bitmaps')
    os.makedirs(bmp_dir, exist_ok=True)
    for state in ('normal', 'pressed', 'focused', 'disabled', 'hot'):
        write_bmp(os.path.join(bmp_dir, 'SystemReport%s.bmp' % state.capitalize()),
                  button_state(state))
    images = []
    for size, layout in sorted(ICON.items()):
        c = Canvas(size, size)
        report(c, layout, BLUE, (150, 178, 210), (45, 55, 70))
        images.append((size, icon_image(c.rgba())))
    write_ico(os.path.join(root, 'res', 'OrvaneDiagnostics.ico'), images)

if __name__ == '__main__':
    main()
