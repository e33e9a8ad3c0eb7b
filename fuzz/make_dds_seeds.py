#!/usr/bin/env python3
"""Writes the seed corpus of the DDS image-list target: small cube and plain
files of every pixel format the reader knows, with and without mipmaps."""
import os
import struct
import sys

OUT = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "corpus", "dds")

FOURCC, RGB, ALPHA, LUMINANCE = 0x4, 0x40, 0x1, 0x20000
MIPMAPCOUNT = 0x20000
CUBE = 0x200 | 0xFC00


def header(width, height, levels, pf_flags, fourcc=0, bits=0, masks=(0, 0, 0, 0), cube=False):
    flags = 0x1 | 0x2 | 0x4 | 0x1000 | (MIPMAPCOUNT if levels > 1 else 0)
    words = [0x20534444, 124, flags, height, width, 0, 0, levels] + [0] * 11
    words += [32, pf_flags, fourcc, bits, *masks, 0x1000, CUBE if cube else 0, 0, 0, 0]
    return struct.pack("<32I", *words)


def level_bytes(width, height, block, pixel):
    if block:
        return ((width + 3) // 4) * ((height + 3) // 4) * block
    return width * height * pixel


def body(width, height, levels, faces, block=0, pixel=0):
    data = bytearray()
    for face in range(faces):
        w, h = width, height
        for _ in range(levels):
            data += bytes((face * 40 + i) % 256 for i in range(level_bytes(w, h, block, pixel)))
            w, h = max(1, w // 2), max(1, h // 2)
    return bytes(data)


SEEDS = {
    "bgra-cube-mips.dds": (header(4, 4, 3, RGB | ALPHA, 0, 32, (0xFF0000, 0xFF00, 0xFF, 0xFF000000), True),
                           body(4, 4, 3, 6, pixel=4)),
    "rgb-plain.dds": (header(3, 2, 1, RGB, 0, 24, (0xFF, 0xFF00, 0xFF0000, 0)), body(3, 2, 1, 1, pixel=3)),
    "luminance.dds": (header(4, 2, 2, LUMINANCE, 0, 8), body(4, 2, 2, 1, pixel=1)),
    "dxt1-mips.dds": (header(8, 8, 4, FOURCC, 0x31545844), body(8, 8, 4, 1, block=8)),
    "dxt5-cube.dds": (header(4, 4, 1, FOURCC, 0x35545844, cube=True), body(4, 4, 1, 6, block=16)),
    "half-cube.dds": (header(2, 2, 2, FOURCC, 113, cube=True), body(2, 2, 2, 6, pixel=8)),
    "float-plain.dds": (header(2, 1, 1, FOURCC, 116), body(2, 1, 1, 1, pixel=16)),
}

os.makedirs(OUT, exist_ok=True)
for name, (head, data) in SEEDS.items():
    with open(os.path.join(OUT, name), "wb") as f:
        f.write(head + data)
