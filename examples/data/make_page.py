#!/usr/bin/env python3
"""Makes examples/data/page.pdf: one page that asks a host for all of PDF's transparency. Needs no packages."""
import pathlib
import struct
import zlib

HERE = pathlib.Path(__file__).resolve().parent
MODES = ["Normal", "Multiply", "Screen", "Overlay", "Darken", "Lighten", "ColorDodge", "ColorBurn", "HardLight",
         "SoftLight", "Difference", "Exclusion"]
WIDTH, HEIGHT, CELL_WIDTH, CELL_HEIGHT = 612, 668, 132, 92


class File:
    """Objects that are numbered as they are added; the catalogue is the first."""

    def __init__(self):
        self.objects = [b"", b""]

    def add(self, text):
        self.objects.append(text.encode())
        return f"{len(self.objects)} 0 R"

    def stream(self, entries, data, compress=True):
        if isinstance(data, str):
            data = data.encode()
        if compress:
            entries, data = entries + " /Filter /FlateDecode", zlib.compress(data, 9)
        self.objects.append(f"<< {entries} /Length {len(data)} >>\nstream\n".encode() + data + b"\nendstream")
        return f"{len(self.objects)} 0 R"

    def form(self, box, content, resources="<< >>", group=None):
        entries = f"/Type /XObject /Subtype /Form /BBox [{box}] /Resources {resources}"
        if group is not None:
            entries += f" /Group << /S /Transparency /CS /DeviceRGB {group} >>"
        return self.stream(entries, content)

    def write(self, path, page):
        self.objects[0] = b"<< /Type /Catalog /Pages 2 0 R >>"
        self.objects[1] = f"<< /Type /Pages /Kids [{page}] /Count 1 >>".encode()
        out = bytearray(b"%PDF-1.7\n")
        places = []
        for number, body in enumerate(self.objects, 1):
            places.append(len(out))
            out += f"{number} 0 obj\n".encode() + body + b"\nendobj\n"
        start = len(out)
        out += f"xref\n0 {len(places) + 1}\n0000000000 65535 f \n".encode()
        out += b"".join(f"{place:010} 00000 n \n".encode() for place in places)
        out += f"trailer << /Size {len(places) + 1} /Root 1 0 R >>\nstartxref\n{start}\n%%EOF\n".encode()
        path.write_bytes(out)


def photograph(file):
    data = (HERE / "rocket.jpg").read_bytes()
    place = data.index(b"\xff\xc0")  # of the frame header: height and width stand 5 bytes on
    height, width = struct.unpack(">HH", data[place + 5:place + 9])
    return file.stream(f"/Type /XObject /Subtype /Image /Width {width} /Height {height} /ColorSpace /DeviceRGB "
                       "/BitsPerComponent 8 /Filter /DCTDecode", data, compress=False)


def discs(mode, alpha):
    """Four overlapping discs; a path of four curves each."""
    def disc(x, y, r, color):
        k = 0.5523 * r
        return (f"{color} rg {x + r} {y} m {x + r} {y + k} {x + k} {y + r} {x} {y + r} c "
                f"{x - k} {y + r} {x - r} {y + k} {x - r} {y} c {x - r} {y - k} {x - k} {y - r} {x} {y - r} c "
                f"{x + k} {y - r} {x + r} {y - k} {x + r} {y} c f\n")
    places = [(52, 32, ".9 .4 .3"), (80, 32, ".3 .7 .4"), (52, 58, ".3 .5 .9"), (80, 58, ".9 .8 .3")]
    return "/G gs\n" + "".join(disc(x, y, 24, color) for x, y, color in places), \
        f"<< /ExtGState << /G << /BM /{mode} /ca {alpha} >> >> >>"


def main():
    file = File()
    font = file.add("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>")
    bold = file.add("<< /Type /Font /Subtype /Type1 /BaseFont /Times-BoldItalic /Encoding /WinAnsiEncoding >>")
    photo = photograph(file)
    ramp = file.add("<< /FunctionType 2 /Domain [0 1] /C0 [.15 .25 .5] /C1 [1 .85 .6] /N 1 >>")
    grey = file.add("<< /FunctionType 2 /Domain [0 1] /C0 [1] /C1 [0] /N 1 >>")
    across = file.add(f"<< /ShadingType 2 /ColorSpace /DeviceRGB /Coords [0 0 {CELL_WIDTH} 0] /Function {ramp} >>")
    round_ = file.add(f"<< /ShadingType 3 /ColorSpace /DeviceGray /Coords [66 46 10 66 46 66] /Function {grey} "
                      "/Extend [true true] >>")
    box = f"0 0 {CELL_WIDTH} {CELL_HEIGHT}"
    vignette = file.form(box, "/S sh", f"<< /Shading << /S {round_} >> >>", "/I true")
    word = file.form(box, "BT /B 40 Tf 8 34 Td (Alpha) Tj ET", f"<< /Font << /B {bold} >> >>", "/I true")
    tile = file.stream("/PatternType 1 /PaintType 1 /TilingType 1 /BBox [0 0 12 12] /XStep 12 /YStep 12 "
                       "/Resources << >>", ".9 .5 .2 rg 0 0 6 6 re f .2 .5 .6 rg 6 6 6 6 re f")

    resources = {"Font": {"F": font, "B": bold}, "XObject": {"P": photo}, "Shading": {"S": across},
                 "Pattern": {"T": tile}, "ExtGState": {
                     "V": f"<< /SMask << /S /Luminosity /G {vignette} >> >>",
                     "W": f"<< /SMask << /S /Alpha /G {word} >> >>",
                     "H": "<< /ca .5 /CA .5 >>"}}
    background = f"q 0 0 {CELL_WIDTH} {CELL_HEIGHT} re W n /S sh Q\n"
    picture = f"q {CELL_WIDTH - 24} 0 0 {CELL_HEIGHT - 16} 12 8 cm /P Do Q\n"
    cells = []
    for mode in MODES:
        resources["ExtGState"][mode] = f"<< /BM /{mode} >>"
        cells.append((mode, background + f"/{mode} gs\n" + picture))
    for name, group in [("isolated", "/I true"), ("isolated, knockout", "/I true /K true"), ("not isolated", ""),
                        ("not isolated, knockout", "/K true")]:
        content, inside = discs("Multiply", 0.8)
        key = "G" + str(len(cells))
        resources["XObject"][key] = file.form(box, content, inside, group)
        cells.append((name, background + f"/{key} Do"))
    cells.append(("soft mask by luminosity", background + "/V gs\n" + picture))
    cells.append(("soft mask by alpha", background + "/W gs\n" + picture))
    cells.append(("tiles, clipped by text", "q BT /B 40 Tf 14 34 Td 7 Tr (Tiles) Tj ET /Pattern cs /T scn "
                  f"{box} re f Q"))
    cells.append(("fill and stroke, one object", background + "/H gs 1 .2 .2 rg .1 .1 .6 RG 14 w 1 j "
                  "30 20 m 102 20 l 66 72 l b"))

    content = ["BT /F 15 Tf 24 638 Td (Blend modes, groups, soft masks) Tj ET"]
    for number, (name, cell) in enumerate(cells):
        x = 24 + number % 4 * (CELL_WIDTH + 12)
        y = 520 - number // 4 * (CELL_HEIGHT + 32)
        content.append(f"q 1 0 0 1 {x} {y} cm q\n{cell}\nQ BT /F 9 Tf 0 {CELL_HEIGHT + 5} Td ({name}) Tj ET Q")
    entries = " ".join(f"/{kind} << " + " ".join(f"/{key} {value}" for key, value in members.items()) + " >>"
                       for kind, members in resources.items())
    contents = file.stream("", "\n".join(content))
    page = file.add(f"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 {WIDTH} {HEIGHT}] /Contents {contents} "
                    f"/Resources << {entries} >> >>")
    file.write(HERE / "page.pdf", page)


if __name__ == "__main__":
    main()
