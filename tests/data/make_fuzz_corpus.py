#!/usr/bin/env python3
"""Makes fuzz/corpus: the inputs that fuzzing starts from and that the tests replay.

Pictures are 9x7 pixels of examples/data/chelsea.png (CC0), written by ImageMagick, netpbm and libjpeg's tools with the
commands of make_codec_fixtures.py and those below; damaged ones are such files cut or with a few bytes changed. What a
maker has no tool for (records, texts, choices) is spelled here. Gives the same bytes again with the versions that
README.md names.
"""
import pathlib
import random
import shutil
import struct
import tempfile
import zlib

import make_codec_fixtures as codec

OUT = codec.HERE.parent.parent / "fuzz/corpus"
CROP = "-crop 9x7+140+100 +repage"

PNG = {
    "grey2interlaced": "-colorspace Gray -colors 4 -depth 2 -interlace PNG -define png:color-type=0 -define png:bit-depth=2",
    "grey4interlaced": "-colorspace Gray -interlace PNG -define png:color-type=0 -define png:bit-depth=4",
    "grey16interlaced": "-colorspace Gray -interlace PNG -define png:color-type=0 -define png:bit-depth=16",
    "palette2": "-colors 4 -define png:color-type=3 -define png:bit-depth=2",
    "palette8": "-colors 60 -define png:color-type=3 -define png:bit-depth=8",
    "rgb16interlaced": "-interlace PNG -define png:color-type=2 -define png:bit-depth=16",
    "rgba8interlaced": "-alpha set -interlace PNG -define png:color-type=6 -define png:bit-depth=8",
    "greyalpha8interlaced": "-colorspace Gray -alpha set -interlace PNG -define png:color-type=4 -define png:bit-depth=8",
    "chunks": "-gamma 0.7 -set comment hello -set Title title -density 72 -background red -define png:color-type=2"
              " -define png:exclude-chunk=date,time",
    **{f"filter{i}": f"-define png:compression-filter={i} -define png:color-type=2" for i in range(5)},
    "stored": "-define png:compression-level=0 -define png:color-type=2",
}
JPEG = {
    "arithmetic": "cjpeg -quality 85 -arithmetic source.ppm",
    "arithmeticprogressive": "cjpeg -quality 85 -arithmetic -progressive source.ppm",
    "progressivegrey": "cjpeg -quality 85 -progressive -grayscale source.ppm",
    "progressiverestart": "cjpeg -quality 85 -progressive -restart 1B source.ppm",
    "optimized": "cjpeg -quality 30 -optimize -sample 2x2 source.ppm",
    "sampled21": "cjpeg -quality 85 -sample 2x1 source.ppm",
    "sampled12": "cjpeg -quality 85 -sample 1x2 source.ppm",
    "sampled41": "cjpeg -quality 85 -sample 4x1,1x1,2x1 source.ppm",
    "sampled11": "cjpeg -quality 100 -sample 1x1 source.ppm",
    "coarse": "cjpeg -quality 1 -baseline source.ppm",
    "comment": "cjpeg -quality 85 source.ppm | wrjpgcom -comment hello",
    "density": "convert source.ppm -units PixelsPerInch -density 300 -sampling-factor 4:2:0 jpeg:-",
}
BMP = {
    "bits1os2": "convert source.ppm -monochrome -type palette bmp2:-",
    "bits8os2": "convert source.ppm -colors 60 bmp2:-",
    "bits24os2": "convert source.ppm -type truecolor bmp2:-",
    "bits24v3": "convert source.ppm -type truecolor bmp3:-",
    "bits24v4": "convert source.ppm -type truecolor bmp:-",
    "bits8v4": "convert source.ppm -colors 60 -compress none bmp:-",
    "bits8rlev4": "convert source.ppm -colors 60 -compress RLE bmp:-",
    "bits16fields555": "convert source.ppm -define bmp:subtype=RGB555 bmp:-",
    "bits16fields4444": "convert source.ppm -alpha set -define bmp:subtype=ARGB4444 bmp:-",
    "bits8grey": "convert source.ppm -colorspace Gray bmp3:-",
}


def patched(data, *changes):
    """`data` with each (position, struct format, values...) written over it."""
    data = bytearray(data)
    for at, layout, *values in changes:
        struct.pack_into(layout, data, at, *values)
    return bytes(data)


def bitmaps(files):
    """Bitmaps that say what is not so, or seldom is."""
    bits8, bits24, bits32 = files["bits8.bmp"], files["bits24.bmp"], files["bits32.bmp"]
    height = struct.unpack_from("<i", bits24, 22)[0]
    return {
        "topdown24.bmp": patched(bits24, (22, "<i", -height)),
        "topdown8.bmp": patched(bits8, (22, "<i", -height)),
        "size31.bmp": patched(bits32, (18, "<II", 0x7FFFFFFF, 0x7FFFFFFF)),
        "size32.bmp": patched(bits32, (18, "<II", 0xFFFFFFFF, 0x80000000)),
        "size16.bmp": patched(bits8, (18, "<II", 65536, 65537)),
        "widthwraps.bmp": patched(bits24, (18, "<II", 0xAAAAAAAB, 1)),
        "empty.bmp": patched(bits24, (18, "<II", 0, 0)),
        "nowidth.bmp": patched(bits8, (18, "<II", 0, 0x7FFFFFFF)),
        "noheight.bmp": patched(bits8, (18, "<II", 0x7FFFFFFF, 0)),
        "palette65535.bmp": patched(bits8, (46, "<I", 0xFFFFFFFF)),
        "palette2.bmp": patched(bits8, (46, "<I", 2)),
        "palette24.bmp": patched(bits24, (46, "<I", 5)),
        "offset0.bmp": patched(bits8, (10, "<I", 0)),
        "offsetfar.bmp": patched(bits8, (10, "<I", 0xFFFFFFF0)),
        "offsetearly.bmp": patched(bits8, (10, "<I", 3)),
        "bits0.bmp": patched(bits8, (28, "<H", 0)),
        "bits2.bmp": patched(bits8, (28, "<H", 2)),
        "headeronly.bmp": bits24[:54],
        "nofileheader.bmp": bits8[14:],
        "cutpalette.bmp": bits8[:70],
    }


def chunk(kind, body):
    return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))


def with_header(png, width, height, depth, colour, interlaced=0):
    return png[:8] + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, depth, colour, 0, 0, interlaced)) + png[33:]


def pngs(files):
    rgb8 = files["rgb8.png"]
    return {
        "size31.png": with_header(rgb8, 0x7FFFFFFF, 0x7FFFFFFF, 8, 2),
        "size1000000.png": with_header(rgb8, 1000000, 1000000, 1, 0),
        "wide.png": with_header(rgb8, 1000000, 1, 1, 0),
        "empty.png": with_header(rgb8, 0, 7, 8, 2),
        "otherdepth.png": with_header(rgb8, 9, 7, 8, 6),
        "otherinterlace.png": with_header(rgb8, 9, 7, 8, 2, 1),
        "badcrc.png": patched(rgb8, (29, ">I", 0)),
        "twoheaders.png": rgb8[:33] + rgb8[8:],
        "nodata.png": rgb8[:33] + chunk(b"IEND", b""),
        "bomb.png": with_header(rgb8, 2000, 2000, 1, 0)[:33] +
                    chunk(b"IDAT", zlib.compress(bytes(2000 * 251), 9)) + chunk(b"IEND", b""),
    }


def jpegs(files):
    baseline, progressive = files["baseline.jpg"], files["progressive.jpg"]
    frame = baseline.index(b"\xff\xc0")
    frame2 = progressive.index(b"\xff\xc2")
    return {
        "size65500.jpg": patched(baseline, (frame + 5, ">HH", 65500, 65500)),
        "size65535.jpg": patched(baseline, (frame + 5, ">HH", 65535, 65535)),
        "noheight.jpg": patched(baseline, (frame + 5, ">HH", 0, 9)),
        "larger.jpg": patched(baseline, (frame + 5, ">HH", 160, 160)),
        "largerprogressive.jpg": patched(progressive, (frame2 + 5, ">HH", 150, 150)),
        "bits12.jpg": patched(baseline, (frame + 4, ">B", 12)),
        "lossless.jpg": patched(baseline, (frame, ">H", 0xFFC3)),
        "twoframes.jpg": baseline[:-2] + baseline[2:],
        "longsegment.jpg": patched(baseline, (4, ">H", 0xFFFF)),
        "headeronly.jpg": baseline[:frame],
    }


def pictures(folder):
    """All pictures, by file name."""
    files = {}
    for name, arguments in (codec.PNG | PNG).items():
        strip = "" if name == "chunks" else "-strip"
        files[f"{name}.png"] = codec.run(f"convert source.ppm {arguments} {strip} png:-", folder)
    for name, command in (codec.JPEG | JPEG).items():
        files[f"{name}.jpg"] = codec.run(command, folder)
    for name, command in (codec.BMP | BMP).items():
        files[f"{name}.bmp"] = codec.run(command, folder) if isinstance(command, str) else codec.bitmap(command, folder)
    whole = dict(files)
    for make in (bitmaps, pngs, jpegs):
        files |= make(whole)
    for name in ("bits24.bmp", "rgb8.png", "grey1interlaced.png", "baseline.jpg", "progressive.jpg", "restart.jpg"):
        stem, kind = name.split(".")
        data = whole[name]
        for part, size in (("third", len(data) // 3), ("half", len(data) // 2), ("allbutone", len(data) - 1)):
            files[f"{stem}cut{part}.{kind}"] = data[:size]
    return files


def records():
    """The function that is there before (0 to 3), then a record: tag, payload."""
    doubles = struct.pack("<3d", 0.25, 0.75, 2.0)
    text = b"{ 1 exch sub }"
    odd = struct.pack("<3d", float("nan"), float("-inf"), 5e-324)
    yield from {
        "identityalpha": b"\0\x00", "identityluminosity": b"\0\x80",
        "exponential": b"\0\x02" + doubles, "exponentialluminosity": b"\1\x82" + doubles,
        "exponentialodd": b"\0\x82" + odd, "exponentialshort": b"\3\x02" + doubles[:-1],
        "postscript": b"\0\x84" + struct.pack("<I", len(text)) + text, "postscriptempty": b"\2\x04\0\0\0\0",
        "postscriptlong": b"\0\x04\xff\xff\xff\xff" + text, "postscriptshort": b"\1\x04\x0f\0\0",
        "sampled": b"\1\x01", "stitching": b"\2\x83", "newer": b"\2\x7f" + doubles, "newernothing": b"\0\x85",
        "newertext": b"\3\xff" + struct.pack("<I", len(text)) + text, "nothing": b"\3",
    }.items()


TEXTS = ["{ 1 exch sub }", "{ 0.5 exch sub }", "{1 exch sub}", "{ 1 EXCH Sub } pop", "\n{\t007 exch\r\nsub\n}", "{ }", "",
         "{ -1.5e3 exch sub }", "{ 1e999 exch sub }", "{ 0x10 exch sub }", "{ 1 exch sub", "{ exch 1 sub }", "{ 1 2 sub }",
         "{{ 1 exch sub }}", "{ nan exch sub }", "{ 1 exch sub }}", "{ 1 exch\0 sub }", "{ .5 exch sub }", "{ 1 exch add }"]


def main():
    shutil.rmtree(OUT, ignore_errors=True)

    def put(target, name, data):
        (OUT / target).mkdir(parents=True, exist_ok=True)
        (OUT / target / name).write_bytes(data)

    with tempfile.TemporaryDirectory() as folder:
        codec.run(f"convert {codec.SOURCE} {CROP} -depth 8 -strip source.ppm", folder)
        for name, data in pictures(folder).items():
            put({"png": "png", "jpg": "jpeg", "bmp": "dib"}[name[-3:]], name, data)
    for name, record in records():
        put("transfer", name, record)
    for i, text in enumerate(TEXTS):
        put("postscript", f"text{i:02}", text.encode())
    for i in range(12):  # choices of the target: any bytes will do
        numbers = random.Random(i)
        put("coverage", f"choices{i:02}", numbers.randbytes(30 + 20 * i))
        put("blend", f"choices{i:02}", numbers.randbytes(120 + 40 * i))
        put("painter", f"choices{i:02}", numbers.randbytes(80 + 40 * i))


if __name__ == "__main__":
    main()
