#!/usr/bin/env python3
"""Writes one small RGBA PNG of a plain shape, for icon fixtures at 1x, 2x and 3x.

    python3 tests/data/make_png.py OUT SIZE SHAPE COLOR [BACKGROUND]

SHAPE is disc, ring or square (a rounded square); COLOR and BACKGROUND are #RRGGBB or
#RRGGBBAA (BACKGROUND defaults to fully transparent). Edges are antialiased by 4x4
supersampling, so the same shape at 2x and 3x looks the same on a screen of that ratio.
Uses only the standard library (zlib), so the output is the same on every machine.
"""
import struct
import sys
import zlib


def parse_color(text):
    text = text.lstrip("#")
    if len(text) == 6:
        text += "ff"
    return tuple(int(text[i:i + 2], 16) for i in range(0, 8, 2))


def inside(shape, x, y, size):
    c = size / 2.0
    dx, dy = x - c, y - c
    r = size * 0.42
    if shape == "disc":
        return dx * dx + dy * dy <= r * r
    if shape == "ring":
        d = dx * dx + dy * dy
        return (r * 0.62) ** 2 <= d <= r * r
    if shape == "square":
        half, corner = size * 0.40, size * 0.12
        ax, ay = abs(dx), abs(dy)
        if ax > half or ay > half:
            return False
        qx, qy = ax - (half - corner), ay - (half - corner)
        return qx <= 0 or qy <= 0 or qx * qx + qy * qy <= corner * corner
    raise SystemExit("unknown shape " + shape)


def render(size, shape, fg, bg):
    rows = []
    for py in range(size):
        row = bytearray([0])  # filter type None
        for px in range(size):
            hits = sum(inside(shape, px + (sx + 0.5) / 4, py + (sy + 0.5) / 4, size)
                       for sx in range(4) for sy in range(4))
            t = hits / 16.0
            a = fg[3] * t + bg[3] * (1 - t)
            if a == 0:
                row += bytes(4)
                continue
            rgb = [(fg[i] * fg[3] * t + bg[i] * bg[3] * (1 - t)) / a for i in range(3)]
            row += bytes(int(round(v)) for v in rgb) + bytes([int(round(a))])
        rows.append(bytes(row))
    return b"".join(rows)


def chunk(kind, data):
    body = kind + data
    return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)


def main():
    if len(sys.argv) not in (5, 6):
        raise SystemExit(__doc__)
    out, size, shape, fg = sys.argv[1], int(sys.argv[2]), sys.argv[3], parse_color(sys.argv[4])
    bg = parse_color(sys.argv[5]) if len(sys.argv) == 6 else (0, 0, 0, 0)
    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)  # 8-bit RGBA
    png = (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
           chunk(b"IDAT", zlib.compress(render(size, shape, fg, bg), 9)) + chunk(b"IEND", b""))
    with open(out, "wb") as f:
        f.write(png)


if __name__ == "__main__":
    main()
