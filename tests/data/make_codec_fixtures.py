#!/usr/bin/env python3
"""Makes tests/data/codec from examples/data/chelsea.png with ImageMagick, netpbm and libjpeg's tools.

expected.txt says what a loader must give: per file the size, bits per pixel and the CRC-32 of the rows from the top,
as the independent decoders named below see them.
"""
import pathlib
import struct
import subprocess
import zlib

HERE = pathlib.Path(__file__).resolve().parent
OUT = HERE / "codec"
SOURCE = HERE.parent.parent / "examples/data/chelsea.png"
CROP = "-crop 37x23+130+90 +repage"


def run(command, folder=OUT, **options):
    """What a shell command prints that runs in `folder`, where source.ppm is."""
    return subprocess.run(command, shell=True, check=True, stdout=subprocess.PIPE, cwd=folder, **options).stdout


def png_rows(data):
    """Bit depth times channels, size and packed rows of a PNG file, decoded by zlib and hand."""
    at, idat = 8, b""
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + size]
        if kind == b"IHDR":
            width, height, depth, colour, _, _, interlaced = struct.unpack(">IIBBBBB", body)
        idat += body if kind == b"IDAT" else b""
        at += size + 12
    bits = depth * {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}[colour]
    raw, at = zlib.decompress(idat), 0
    passes = [(0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2)]
    picture = [[0] * width for _ in range(height)]
    for x0, y0, dx, dy in passes if interlaced else [(0, 0, 1, 1)]:
        columns = range(x0, width, dx)
        stride, step = (len(columns) * bits + 7) // 8, max(1, bits // 8)
        prior = bytes(stride)
        for y in range(y0, height, dy) if columns else []:
            kind, row = raw[at], bytearray(raw[at + 1:at + 1 + stride])
            at += 1 + stride
            for i in range(stride):
                a, b, c = (row[i - step] if i >= step else 0), prior[i], (prior[i - step] if i >= step else 0)
                p = a + b - c
                paeth = min((abs(p - a), 0, a), (abs(p - b), 1, b), (abs(p - c), 2, c))[2]
                row[i] = row[i] + (0, a, b, (a + b) // 2, paeth)[kind] & 255
            prior = bytes(row)
            number = int.from_bytes(row, "big")
            for i, x in enumerate(columns):
                picture[y][x] = number >> (stride * 8 - (i + 1) * bits) & ((1 << bits) - 1)
    rows = []
    for line in picture:
        number = 0
        for pixel in line:
            number = number << bits | pixel
        packed = bytearray((number << -len(line) * bits % 8).to_bytes((width * bits + 7) // 8, "big"))
        if colour in (2, 6) and depth == 8:
            packed[0::bits // 8], packed[2::bits // 8] = packed[2::bits // 8], packed[0::bits // 8]
        rows.append(bytes(packed))
    return bits, width, height, b"".join(rows)


def bgr_rows(command):
    """The same from a binary PPM or PGM that `command` prints."""
    data = run(command)
    magic, width, height, _ = data.split(maxsplit=4)[:4]
    width, height, channels = int(width), int(height), 3 if magic == b"P6" else 1
    pixels = bytearray(data[len(data) - width * height * channels:])
    if channels == 1:
        pixels = bytearray(byte for byte in pixels for _ in range(3))
    pixels[0::3], pixels[2::3] = pixels[2::3], pixels[0::3]
    return 24, width, height, bytes(pixels)


def bitmap(bits, folder=OUT):
    """A bitmap of 16 (5-5-5) or 32 bits without compression, which the tools at hand do not write."""
    _, width, height, pixels = bgr_rows(f"cat {folder}/source.ppm")
    triples = zip(pixels[0::3], pixels[1::3], pixels[2::3])
    if bits == 16:
        words = [struct.pack("<H", r >> 3 << 10 | g >> 3 << 5 | b >> 3) for b, g, r in triples]
    else:
        words = [bytes((b, g, r, 255)) for b, g, r in triples]
    rows = [b"".join(words[y * width:(y + 1) * width]) for y in range(height)]
    body = b"".join(row + bytes(-len(row) % 4) for row in reversed(rows))
    head = struct.pack("<2sIIIIIIHHIIIIII", b"BM", 54 + len(body), 0, 54, 40, width, height, 1, bits, *[0] * 6)
    return head + body


PNG = {  # convert's arguments
    "grey1": "-colorspace Gray -monochrome -define png:color-type=0 -define png:bit-depth=1",
    "grey2": "-colorspace Gray -colors 4 -depth 2 -define png:color-type=0 -define png:bit-depth=2",
    "grey4": "-colorspace Gray -depth 4 -define png:color-type=0 -define png:bit-depth=4",
    "grey8": "-colorspace Gray -define png:color-type=0 -define png:bit-depth=8",
    "grey16": "-colorspace Gray -blur 0x1 -define png:color-type=0 -define png:bit-depth=16",
    "greyalpha8": "-colorspace Gray -alpha set -channel A -fx i/w +channel -define png:color-type=4 -define png:bit-depth=8",
    "greyalpha16": "-colorspace Gray -alpha set -channel A -fx i/w +channel -define png:color-type=4 -define png:bit-depth=16",
    "palette1": "-colors 2 -define png:color-type=3 -define png:bit-depth=1",
    "palette4": "-colors 16 -define png:color-type=3 -define png:bit-depth=4",
    "palette8trns": "-alpha set -channel A -threshold 40% +channel -colors 60 -define png:color-type=3",
    "rgb8": "-define png:color-type=2 -define png:bit-depth=8",
    "rgb16": "-blur 0x1 -define png:color-type=2 -define png:bit-depth=16",
    "rgba8": "-alpha set -channel A -fx i/w +channel -define png:color-type=6 -define png:bit-depth=8",
    "rgba16": "-alpha set -channel A -fx i/w +channel -define png:color-type=6 -define png:bit-depth=16",
    "rgb8interlaced": "-interlace PNG -define png:color-type=2 -define png:bit-depth=8",
    "grey1interlaced": "-colorspace Gray -monochrome -interlace PNG -define png:color-type=0 -define png:bit-depth=1",
    "palette4interlaced": "-colors 16 -interlace PNG -define png:color-type=3 -define png:bit-depth=4",
}
JPEG = {  # commands that print a JPEG file made of source.ppm
    "baseline": "cjpeg -quality 85 source.ppm",
    "progressive": "cjpeg -quality 85 -progressive source.ppm",
    "restart": "cjpeg -quality 85 -restart 1B source.ppm",
    "grey": "cjpeg -quality 85 -grayscale source.ppm",
    "rgb": "cjpeg -quality 85 -rgb source.ppm",
    "cmyk": "convert source.ppm -colorspace CMYK jpeg:-",
}
BMP = {  # commands that print a bitmap file, or its bits if no command does
    "bits1": "convert source.ppm -monochrome -type palette bmp3:-",
    "bits4": "pnmquant -quiet 16 source.ppm | ppmtobmp -quiet -bpp 4",
    "bits4os2": "pnmquant -quiet 16 source.ppm | ppmtobmp -quiet -os2",
    "bits8": "convert source.ppm -colors 60 -compress none bmp3:-",
    "bits8rle": "convert source.ppm -colors 60 -compress RLE bmp3:-",
    "bits16": 16,
    "bits16fields": "convert source.ppm -define bmp:subtype=RGB565 bmp:-",
    "bits24": "ppmtobmp -quiet -bpp 24 source.ppm",
    "bits32": 32,
    "bits32v5": "convert source.ppm -alpha set -channel A -fx i/w +channel bmp:-",
}
REFUSED = {"png": ("grey2", "rgb16", "rgba16"), "jpg": ("cmyk",),
           "bmp": ("bits4os2", "bits8rle", "bits16fields", "bits32v5")}

if __name__ == "__main__":
    OUT.mkdir(exist_ok=True)
    run(f"convert {SOURCE} {CROP} -depth 8 -strip source.ppm")
    lines = []
    for name, arguments in PNG.items():
        run(f"convert source.ppm {arguments} -strip png:{name}.png")
        expected = png_rows((OUT / f"{name}.png").read_bytes())
        if name.startswith("rgb8"):
            assert expected == bgr_rows(f"convert {name}.png ppm:-") == bgr_rows(f"pngtopnm {name}.png")
        lines.append((f"{name}.png", expected))
    for name, command in JPEG.items():
        (OUT / f"{name}.jpg").write_bytes(run(command))
        lines.append((f"{name}.jpg", (24, 37, 23, b"") if name == "cmyk" else bgr_rows(f"djpeg -pnm {name}.jpg")))
    for name, command in BMP.items():
        data = run(command) if isinstance(command, str) else bitmap(command)
        (OUT / f"{name}.bmp").write_bytes(data)
        bits = struct.unpack("<H", data[28:30])[0]
        if name == "bits16":  # tools round as they please; here a field is scaled by 255 / 31 and truncated
            rows = bytes((byte >> 3) * 255 // 31 for byte in bgr_rows("cat source.ppm")[3])
            lines.append((f"{name}.bmp", (bits, 37, 23, rows)))
            continue
        lines.append((f"{name}.bmp", (bits, *bgr_rows(f"convert {name}.bmp -alpha off -depth 8 ppm:-")[1:])))
    (OUT / "source.ppm").unlink()
    with open(OUT / "expected.txt", "w") as out:
        for file, (bits, width, height, rows) in lines:
            stem, kind = file.split(".")
            crc = "refused" if stem in REFUSED[kind] else f"{zlib.crc32(rows):08x}"
            out.write(f"{file} {width} {height} {bits} {crc}\n")
