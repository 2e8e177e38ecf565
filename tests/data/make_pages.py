#!/usr/bin/env python3
"""Makes tests/data/pages: a PDF file for each feature of transparency, of colours and of pictures, what they show, and
damaged files. pages_model.py says how; expected.txt has for each page its name, size in cells and the colours of the
cells."""
import pathlib
import re
import struct
import zlib

from pages_model import CELL, MODES, Content, File, Group, Raw, Rect, SoftMask, decimal, expected_rows, page_bytes, text

OUT = pathlib.Path(__file__).resolve().parent / "pages"
FUZZ = OUT.parent.parent.parent / "fuzz/corpus/pdf"
RED, GREEN, BLUE, WHITE, BLACK = (1, 0, 0), (0, 1, 0), (0, 0, 1), (1, 1, 1), (0, 0, 0)
SAND, SKY, PLUM, LEAF = (0.9, 0.8, 0.4), (0.2, 0.6, 0.9), (0.6, 0.2, 0.5), (0.3, 0.7, 0.2)


def paper(width, height, color=SAND):
    return Rect(0, 0, width, height, color)


def three_rects(mode="Normal", alpha=1.0, **others):
    """Three that overlap each other, within 6 by 4 cells."""
    return [Rect(1, 0, 4, 3, SKY, mode=mode, alpha=alpha, **others), Rect(2, 1, 6, 4, PLUM, mode=mode, alpha=alpha),
            Rect(0, 1, 3, 2, LEAF, mode=mode, alpha=alpha)]


def stripes(width, height):
    return [Rect(0, y, width, y + 1, (0.3 + 0.6 * (y % 2), 0.2 + 0.2 * (y % 4), 0.8)) for y in range(height)]


# ----- transparency

def alpha():
    return 6, 4, [paper(6, 4)] + three_rects(alpha=0.5) + [Rect(4, 0, 6, 1, RED, alpha=0.25)]


def modes():
    elements = [Rect(0, y, 24, y + 1, color) for y, color in enumerate([SAND, SKY, PLUM, (0.5, 0.25, 0.75)])]
    for x, mode in enumerate(MODES):
        elements += [Rect(2 * x, 0, 2 * x + 1, 4, LEAF, mode=mode), Rect(2 * x + 1, 0, 2 * x + 2, 4, (0.8, 0.45, 0.1), mode=mode),
                     Rect(2 * x, 0, 2 * x + 2, 2, (0.7, 0.6, 0.2), mode=mode, alpha=0.6)]
    return 24, 4, elements


def modes_in_translucent_group():
    """Blend functions where the backdrop has an alpha of its own."""
    inside = [Rect(0, 1, 12, 3, SKY, alpha=0.5)]
    inside += [Rect(x, 0, x + 1, 2, (0.7, 0.6, 0.2), mode=mode, alpha=0.75) for x, mode in enumerate(MODES)]
    return 12, 3, [paper(12, 3), Group(inside, isolated=True)]


def mode_list():
    """Of a list of modes the first that is known counts; an unknown mode is Normal."""
    def with_mode(value, mode, x):
        return Rect(x, 0, x + 1, 2, PLUM, mode=mode, state={"BM": value})
    return 3, 2, [paper(3, 2), with_mode("[/Unheard /Multiply /Screen]", "Multiply", 0),
                  with_mode("/Unheard", "Normal", 1), with_mode("/Compatible", "Normal", 2)]


def group_kinds(knockouts, isolations, mode, opacity):
    elements, x = stripes(12, 4), 0
    for isolated in isolations:
        for knockout in knockouts:
            content = three_rects(mode, opacity)
            for rect in content:
                rect.box = tuple(edge + (x if i % 2 == 0 else 0) for i, edge in enumerate(rect.box))
            elements.append(Group(content, isolated, knockout))
            x += 6
    return 12, 4, elements


def isolated_groups():
    return group_kinds([False, True], [True], "Multiply", 0.6)


def non_isolated_groups():
    return group_kinds([False, True], [False], "Multiply", 0.6)


def opaque_blends_in_groups():
    return group_kinds([False, True], [False], "Screen", 1.0)


def nested_groups():
    inner = Group([Rect(1, 1, 4, 3, SKY, alpha=0.5), Rect(2, 0, 5, 2, PLUM, alpha=0.5)], knockout=True, alpha=0.8)
    middle = Group([Rect(0, 1, 3, 2, LEAF), inner], isolated=True, alpha=0.75, mode="Multiply")
    return 6, 4, stripes(6, 4) + [Group([middle, Rect(4, 0, 6, 4, RED, alpha=0.25)])]


def groups_in_knockout_group():
    """A group is one element: what it paints replaces what was there, as far as its shape goes."""
    one = Group([Rect(0, 0, 3, 3, SKY, alpha=0.5), Rect(1, 1, 4, 4, PLUM, alpha=0.5)])
    two = Group([Rect(2, 2, 5, 4, LEAF, alpha=0.5)], isolated=True, alpha=0.5)
    return 6, 4, stripes(6, 4) + [Group([one, two, Rect(3, 0, 6, 3, RED, alpha=0.25)], knockout=True)]


def group_in_isolated_knockout_group():
    """It starts on nothing, as the group around it did."""
    inner = Group([Rect(0, 0, 4, 3, SKY, mode="Difference"), Rect(1, 1, 6, 4, PLUM, alpha=0.8)], knockout=True)
    return 6, 4, stripes(6, 4) + [Group([paper(6, 4), inner], isolated=True, knockout=True)]


def group_alpha_and_mode():
    return 6, 4, stripes(6, 4) + [Group(three_rects(), isolated=True, alpha=0.6, mode="Multiply")]


def page_group():
    """A page that is a group is isolated, whatever it says: nothing blends with the paper."""
    return 6, 4, stripes(3, 2) + three_rects("Screen"), {"Group": {"S": "/Transparency", "I": False}}


def page_without_group():
    """Nor does it blend with the paper if the page says nothing."""
    return page_group()[:3]


def group_over_opaque_and_clear():
    """What lies below a group is opaque in some rows of the page."""
    return 6, 6, [paper(6, 2), Group(three_rects("Screen", 0.6), alpha=0.5)]


def page_knockout_group():
    """Each element of the page replaces those before it, also one of which nothing is seen."""
    clear = SoftMask("Luminosity", [Rect(3, 1, 4, 2, WHITE)], (0, 0, 6, 4))
    elements = stripes(3, 2) + three_rects("Difference", 0.5) + [Rect(4, 0, 5, 2, LEAF, alpha=0.0),
                                                                 Rect(2, 0, 4, 2, SKY, mask=clear)]
    return 6, 4, elements, {"Group": {"S": "/Transparency", "K": True}}


def luminosity_mask():
    light = SoftMask("Luminosity", [Rect(1, 1, 3, 3, WHITE), Rect(3, 1, 4, 3, (0.5, 0.25, 0.75)),
                                    Rect(1, 3, 4, 4, WHITE, alpha=0.5)], (1, 1, 5, 4))
    return 6, 5, [paper(6, 5), Rect(0, 0, 6, 5, PLUM, mask=light)]


def luminosity_mask_backdrop_transfer():
    """Outside the mask's group the mask is TR(luminosity of BC)."""
    turned = ("{ 1 exch sub }", lambda x: 1 - x)
    light = SoftMask("Luminosity", [Rect(1, 1, 3, 3, WHITE), Rect(3, 1, 4, 3, GREEN, alpha=0.5)], (1, 1, 5, 4),
                     (0.5, 0.25, 0.75), turned)
    return 6, 5, [paper(6, 5), Rect(0, 0, 6, 5, PLUM, mask=light)]


def alpha_mask_transfer():
    """A mask by alpha has no backdrop: outside its group it is TR(0). One without a group is none."""
    squared = ("{ 0.75 mul 0.25 add }", lambda x: 0.75 * x + 0.25)
    light = SoftMask("Alpha", [Rect(1, 1, 3, 3, BLACK), Rect(2, 2, 4, 4, WHITE, alpha=0.5)], (1, 1, 5, 4), WHITE,
                     squared)
    return 6, 5, [paper(6, 5), Rect(0, 0, 6, 5, PLUM, mask=light), Rect(5, 0, 6, 1, RED, state={"SMask": {"S": "/Alpha"}})]


def mask_in_mask():
    """The group of a soft mask may have soft masks inside, and groups and modes."""
    inner = SoftMask("Alpha", [Rect(0, 0, 3, 4, BLACK, alpha=0.5)], (0, 0, 6, 4))
    outer = SoftMask("Luminosity", [Rect(0, 0, 6, 3, WHITE, mask=inner),
                                    Group([Rect(2, 1, 5, 4, (0.5, 0.5, 0.5), mode="Screen")])], (0, 0, 6, 4))
    return 6, 4, [paper(6, 4), Rect(0, 0, 6, 4, PLUM, mask=outer)]


def masked_group():
    light = SoftMask("Luminosity", [Rect(0, 0, 3, 4, WHITE), Rect(3, 0, 5, 4, (0.4, 0.4, 0.4))], (0, 0, 6, 4))
    return 6, 4, stripes(6, 4) + [Group(three_rects("Multiply"), isolated=True, mask=light, mode="Screen")]


def mask_of_two_groups():
    """A soft mask serves all that is painted until Q, here groups at different places."""
    half = SoftMask("Luminosity", [Rect(0, 0, 6, 4, (0.5, 0.5, 0.5))], (0, 0, 6, 4))
    groups = [((0, 0, 2, 2), SKY), ((3, 1, 6, 4), PLUM)]

    def write(content):
        forms = [content.form([Rect(*box, color)], {"Group": {"S": "/Transparency", "I": True}}, box)
                 for box, color in groups]
        return " ".join(content.name("XObject", form) + " Do" for form in forms)

    def shown(x, y):
        inside = [color for (x0, y0, x1, y1), color in groups if x0 < x < x1 and y0 < y < y1]
        return inside[0] if inside else None
    return 6, 4, [paper(6, 4), Raw(write, shown, mask=half)]


def masked_element_of_knockout_group():
    """A soft mask is opacity: it knocks out also where it lets little through."""
    half = SoftMask("Luminosity", [Rect(0, 0, 3, 4, (0.5, 0.5, 0.5)), Rect(3, 0, 6, 4, WHITE)], (0, 0, 6, 4))
    return 6, 4, stripes(6, 4) + [Group([Rect(0, 0, 4, 3, SKY), Rect(1, 1, 6, 4, PLUM, mask=half)], knockout=True)]


def alpha_is_shape():
    """Where nothing is knocked out AIS makes no difference."""
    return 6, 4, stripes(6, 4) + [Group([Rect(0, 0, 4, 3, SKY), Rect(1, 1, 6, 4, PLUM, alpha=0.5, alpha_is_shape=True)],
                                        isolated=True)]


def fill_and_stroke():
    """B is one object: the stroke knocks out the fill below it."""
    def shown(x, y):
        if 1 < x < 7 and 1 < y < 5:
            return SKY if 2 < x < 6 and 2 < y < 4 else PLUM
        return None
    operators = f"{text(SKY)[1:-1]} rg {text(PLUM)[1:-1]} RG 10 w 15 15 50 30 re B"
    return 8, 6, [paper(8, 6), Raw(operators, shown, alpha=0.5)]


def crossing_stroke():
    """A line that crosses itself is one object."""
    def shown(x, y):
        return PLUM if (0 < x < 6 and 1 < y < 2) or (2 < x < 3 and 0 < y < 4) else None
    return 6, 4, [paper(6, 4), Raw("0.6 0.2 0.5 RG 10 w 0 15 m 60 15 l 25 0 m 25 40 l S", shown, alpha=0.5)]


def square_font(letter=97):
    """A TrueType font whose second glyph is a square of 2 em, its advance 1 em; a Mac code leads to it."""
    points = [(0, 0), (0, 2000), (2000, 2000), (2000, 0)]
    deltas = [(x - px, y - py) for (x, y), (px, py) in zip(points, [(0, 0), *points])]
    square = (struct.pack(">hhhhhHH", 1, 0, 0, 2000, 2000, 3, 0) + bytes([1] * 4) +
              b"".join(struct.pack(">h", d[axis]) for axis in (0, 1) for d in deltas))
    cmap = struct.pack(">HHHHIHHH", 0, 1, 1, 0, 12, 0, 262, 0) + bytes([code == letter for code in range(256)])
    tables = {
        b"cmap": cmap, b"glyf": square, b"hmtx": struct.pack(">hhhh", 1000, 0, 1000, 0),
        b"head": struct.pack(">IIIIHHQQhhhhHHhhh", 0x10000, 0, 0, 0x5F0F3CF5, 0, 1000, 0, 0, 0, 0, 2000, 2000, 0, 8, 2, 1, 0),
        b"hhea": struct.pack(">IhhhHhhhhhhhhhhhH", 0x10000, 2000, 0, 0, 1000, 0, 0, 2000, 1, 0, 0, 0, 0, 0, 0, 0, 2),
        b"loca": struct.pack(">III", 0, 0, len(square)), b"maxp": struct.pack(">IHHHHHHHHHHHHHH", 0x10000, 2, 4, 1, *[0] * 11),
    }
    head, body = struct.pack(">IHHHH", 0x10000, len(tables), 64, 2, 48), b""
    for tag, table in sorted(tables.items()):
        head += struct.pack(">4sIII", tag, 0, 12 + 16 * len(tables) + len(body), len(table))
        body += table + bytes(-len(table) % 4)
    return head + body


def text_knockout():
    """Glyphs of a text that overlap are one object, unless TK is false."""
    def operators(y):
        def write(content):
            file = content.file.stream({}, square_font(), compress=True)
            descriptor = {"Type": "/FontDescriptor", "FontName": "/Square", "Flags": 4, "FontFile2": file}
            font = content.file.add({"Type": "/Font", "Subtype": "/TrueType", "BaseFont": "/Square", "FirstChar": 97,
                                     "LastChar": 97, "Widths": [1000], "FontDescriptor": descriptor})
            return f"BT {content.name('Font', font)} 10 Tf 10 {y} Td 0.6 0.2 0.5 rg (a) Tj 10 0 Td [(a)] TJ (a) Tj ET"
        return write
    apart = at_place(1, 0, 4, 2, [[(PLUM, 0.5), (PLUM, 0.75), (PLUM, 0.75), (PLUM, 0.5)]])
    return 6, 5, [paper(6, 5), Raw(operators(30), at_place(1, 3, 4, 2, [[PLUM]]), alpha=0.5),
                  Raw(operators(0), apart, state={"ca": 0.5, "TK": False})]


def text_of_codes():
    """A character that has another code on a Mac, and vertical text of glyphs with metrics of their own."""
    def write(content):
        describe = lambda data, flags: {"Type": "/FontDescriptor", "FontName": "/Square", "Flags": flags,
                                        "FontFile2": content.file.stream({}, data, compress=True)}
        umlaut = content.file.add({"Type": "/Font", "Subtype": "/TrueType", "BaseFont": "/Square", "Encoding": "/WinAnsiEncoding",
                                   "FontDescriptor": describe(square_font(0x8A), 32)})
        glyphs = content.file.add({"Type": "/Font", "Subtype": "/CIDFontType2", "BaseFont": "/Square", "CIDToGIDMap": "/Identity",
                                   "W2": [1, 1, -2000, 500, 2000], "FontDescriptor": describe(square_font(), 4)})
        down = content.file.add({"Type": "/Font", "Subtype": "/Type0", "BaseFont": "/Square", "Encoding": "/Identity-V",
                                 "DescendantFonts": [glyphs]})
        return (f"0.6 0.2 0.5 rg BT {content.name('Font', umlaut)} 10 Tf <E4> Tj {content.name('Font', down)} 10 Tf "
                "35 40 Td <00010001> Tj ET")
    return 6, 4, [paper(6, 4), Raw(write, at_place(0, 0, 5, 4, [[None, None, None, PLUM, PLUM]] * 2 + [[PLUM, PLUM, None, PLUM, PLUM]] * 2))]


def text_of_pictures():
    """A font of type 3 whose glyphs have a colour or take the current one."""
    def write(content):
        plain = content.file.stream({}, "1000 0 0 0 1000 1000 d1 1 0 0 rg 0 0 1000 1000 re f")
        colored = content.file.stream({}, "2000 0 d0 0.2 0.6 0.9 rg 0 0 1000 2000 re f")
        font = content.file.add({"Type": "/Font", "Subtype": "/Type3", "FontBBox": [0, 0, 2000, 2000],
                                 "FontMatrix": [0.001, 0, 0, 0.001, 0, 0], "CharProcs": {"p": plain, "c": colored},
                                 "Encoding": {"Differences": [97, "/p", "/c"]}, "FirstChar": 97, "LastChar": 98,
                                 "Widths": [1000, 2000], "Resources": {}})
        return f"BT {content.name('Font', font)} 10 Tf 10 Ts 10 Tc 0 0 Td 0.6 0.2 0.5 rg [(ab) -1000 (a)] TJ ET"
    rows = [[None, None, SKY, None, None, None, None], [PLUM, None, SKY, None, None, None, PLUM]]
    return 8, 4, [paper(8, 4), Raw(write, at_place(0, 1, 7, 2, rows), alpha=0.5)]


# ----- pictures

def picture(content, width, height, samples, space="/DeviceRGB", bits=8, **others):
    return content.name("XObject", content.file.stream(
        {"Type": "/XObject", "Subtype": "/Image", "Width": width, "Height": height, "ColorSpace": space,
         "BitsPerComponent": bits, **others}, bytes(samples), compress="Filter" not in others))


def place(name, x, y, width, height):
    return f"q {width * CELL} 0 0 {height * CELL} {x * CELL} {y * CELL} cm {name} Do Q"


def at_place(x, y, width, height, rows):
    """A function of the point that gives the item of `rows`, from the top, stretched over a place."""
    def at(px, py):
        if not (x < px < x + width and y < py < y + height):
            return None
        row = rows[int((y + height - py) / height * len(rows))]
        return row[int((px - x) / width * len(row))]
    return at


def gray(value):
    return (value, value, value)


def soft_masked_pictures():
    """With a soft mask of another size, with Matte, and with both an alpha and a mode."""
    def plain(content):
        mask = content.file.stream({"Subtype": "/Image", "Width": 4, "Height": 1, "ColorSpace": "/DeviceGray",
                                    "BitsPerComponent": 8}, bytes([0, 51, 153, 255]))
        return place(picture(content, 1, 2, [255, 0, 0, 0, 0, 255], SMask=mask), 1, 1, 4, 2)

    def matte(content):
        mask = content.file.stream({"Subtype": "/Image", "Width": 2, "Height": 1, "ColorSpace": "/DeviceGray",
                                    "BitsPerComponent": 8, "Matte": [1, 1, 1]}, bytes([102, 204]))
        # c' = m + a (c - m) of (0.2, 0.6, 0.9)
        mixed = [round(255 * (1 + a * (c - 1))) for a in (0.4, 0.8) for c in SKY]
        return place(picture(content, 2, 1, mixed, SMask=mask), 6, 1, 2, 2)
    alphas = [0, 0.2, 0.6, 1]
    return 9, 4, [paper(9, 4),
                  Raw(plain, at_place(1, 1, 4, 2, [[(RED, a) for a in alphas], [(BLUE, a) for a in alphas]]),
                      alpha=0.5, mode="Multiply"),
                  Raw(matte, at_place(6, 1, 2, 2, [[(SKY, 0.4), (SKY, 0.8)]]))]


def masked_pictures():
    """By an explicit mask of another size, by colour keys, and stencils, one of them turned by Decode."""
    def explicit(content):
        mask = content.file.stream({"Subtype": "/Image", "Width": 2, "Height": 2, "ImageMask": True}, bytes([0x40, 0x80]))
        return place(picture(content, 1, 1, [51, 153, 230], Mask=mask), 0, 0, 2, 2)

    def keyed(content):
        return place(picture(content, 2, 1, [10, 20, 30, 200, 20, 30], Mask=[0, 50, 20, 20, 30, 30]), 3, 0, 2, 2)

    def stencil(decode):
        def write(content):
            name = content.name("XObject", content.file.stream(
                {"Subtype": "/Image", "Width": 2, "Height": 2, "ImageMask": True, "Decode": decode}, bytes([0x40, 0x80])))
            return "0.6 0.2 0.5 rg " + place(name, 6 + 3 * decode[0], 0, 2, 2)
        return write
    checks, turned = [[PLUM, None], [None, PLUM]], [[None, PLUM], [PLUM, None]]
    return 11, 2, [paper(11, 2), Raw(explicit, at_place(0, 0, 2, 2, [[SKY, None], [None, SKY]]), alpha=0.5),
                   Raw(keyed, at_place(3, 0, 2, 2, [[None, (200 / 255, 20 / 255, 30 / 255)]])),
                   Raw(stencil([0, 1]), at_place(6, 0, 2, 2, checks), alpha=0.5),
                   Raw(stencil([1, 0]), at_place(9, 0, 2, 2, turned), mode="Multiply")]


def sample_depths():
    """1, 2, 4, 8 and 16 bits; Decode; a palette; CMYK; mirrored and turned; filters of text; inline."""
    elements = [paper(12, 3, WHITE)]
    for x, (bits, data, values) in enumerate([(1, [0x40], [0, 1]), (2, [0x60], [1 / 3, 2 / 3]), (4, [0x3C], [0.2, 0.8]),
                                              (8, [51, 204], [0.2, 0.8]), (16, [0x33, 0x33, 0xCC, 0xCC], [0.2, 0.8])]):
        elements.append(Raw(lambda c, b=bits, d=data, x=x: place(picture(c, 2, 1, d, "/DeviceGray", b), 2 * x, 2, 2, 1),
                            at_place(2 * x, 2, 2, 1, [[gray(v) for v in values]])))
    turned = {"Decode": [1, 0, 0, 0.5, 0, 1]}
    palette = ["/Indexed", "/DeviceRGB", 3, "<ff000000ff000000ff336699>"]
    elements += [
        Raw(lambda c: place(picture(c, 1, 1, [51, 255, 153], **turned), 10, 2, 2, 1), at_place(10, 2, 2, 1, [[(0.8, 0.5, 0.6)]])),
        Raw(lambda c: place(picture(c, 4, 1, [0x1B], palette, 2), 0, 1, 4, 1),
            at_place(0, 1, 4, 1, [[RED, GREEN, BLUE, (0.2, 0.4, 0.6)]])),
        Raw(lambda c: place(picture(c, 1, 1, [51, 102, 0, 51], "/DeviceCMYK"), 4, 1, 1, 1), at_place(4, 1, 1, 1, [[(0.6, 0.4, 0.8)]])),
        Raw(lambda c: "q -20 0 0 10 70 10 cm " + picture(c, 2, 1, [0, 255], "/DeviceGray") + " Do Q",
            at_place(5, 1, 2, 1, [[WHITE, BLACK]])),
        Raw(lambda c: "q 0 20 -10 0 90 0 cm " + picture(c, 2, 1, [0, 255], "/DeviceGray") + " Do Q",
            at_place(8, 0, 1, 2, [[WHITE], [BLACK]])),
        Raw(lambda c: place(picture(c, 2, 1, b"00FF>", "/DeviceGray", Filter="/ASCIIHexDecode"), 9, 1, 2, 1),
            at_place(9, 1, 2, 1, [[BLACK, WHITE]])),
        Raw(lambda c: place(picture(c, 2, 1, b"\xff\x33\x80", "/DeviceGray", Filter="/RunLengthDecode"), 9, 0, 2, 1),
            at_place(9, 0, 2, 1, [[gray(0.2), gray(0.2)]])),
        Raw("q 20 0 0 10 0 0 cm BI /W 2 /H 1 /CS /RGB /BPC 8 /F /AHx ID FF000000FF00> EI Q", at_place(0, 0, 2, 1, [[RED, GREEN]])),
        Raw("q 10 0 0 10 20 0 cm BI /W 1 /H 1 /CS /G /BPC 8 /F /AHx ID 33> EI Q", at_place(2, 0, 1, 1, [[gray(0.2)]])),
        Raw(lambda c: place(picture(c, 400, 200, [90, 30] * 40000, "/DeviceGray"), 3, 0, 2, 1), at_place(3, 0, 2, 1, [[gray(60 / 255)]])),
    ]
    return 12, 3, elements


# ----- colours, shadings, patterns, forms

def steps(colors):
    """A function of type 3 that jumps from colour to colour."""
    parts = [{"FunctionType": 2, "Domain": [0, 1], "N": 1, "C0": c, "C1": c} for c in colors]
    return {"FunctionType": 3, "Domain": [0, 1], "Functions": parts, "Encode": [0, 1] * len(parts),
            "Bounds": [(i + 1) / len(parts) for i in range(len(parts) - 1)]}


def colour_spaces():
    """Functions of every type as tints; spaces on spaces; CMYK; one that paints nothing."""
    elements = [paper(9, 2, WHITE)]
    sampled = lambda c: c.file.stream({"FunctionType": 0, "Domain": [0, 1, 0, 1], "Range": [0, 1] * 3, "Size": [2, 2],
                                       "BitsPerSample": 8}, bytes([0, 0, 0, 255, 0, 0, 0, 255, 0, 255, 255, 0]))
    program = lambda c: c.file.stream({"FunctionType": 4, "Domain": [0, 1], "Range": [0, 1] * 3},
                                      "{ dup 0.5 gt { 1 exch sub dup 2 mul 0 } { 0 exch 1 exch } ifelse }")
    profile = lambda c: c.file.stream({"N": 3}, "no profile")
    spaces = [
        (lambda c: ["/Separation", "/Spot", "/DeviceRGB", {"FunctionType": 2, "Domain": [0, 1], "N": 2, "C0": WHITE, "C1": SKY}],
         "0.5", tuple(1 + 0.25 * (s - 1) for s in SKY)),
        (lambda c: ["/Separation", "/Spot", "/DeviceRGB", steps([RED, GREEN])], "0.7", GREEN),
        (lambda c: ["/DeviceN", ["/A", "/B"], "/DeviceRGB", sampled(c)], "0.5 0.25", (0.5, 0.25, 0)),
        (lambda c: ["/Separation", "/Spot", "/DeviceRGB", program(c)], "0.75", (0.25, 0.5, 0)),
        (lambda c: ["/ICCBased", profile(c)], "0.2 0.4 0.6", (0.2, 0.4, 0.6)),
        (lambda c: ["/CalRGB", {"WhitePoint": [0.95, 1, 1.09]}], "0.2 0.4 0.6", (0.2, 0.4, 0.6)),
        (lambda c: ["/Lab", {"WhitePoint": [0.9505, 1, 1.089]}], "100 0 0", WHITE),
        (lambda c: "/DeviceCMYK", "0.2 0.4 0.9 0.3", (0.5, 0.3, 0)),
        (lambda c: ["/Separation", "/None", "/DeviceRGB", steps([RED, GREEN])], "0.7", None),
    ]
    for x, (space, values, color) in enumerate(spaces):
        elements.append(Raw(lambda c, s=space, v=values, x=x: f"{c.name('ColorSpace', s(c))} cs {v} sc {x * CELL} 0 10 20 re f",
                            at_place(x, 0, 1, 2, [[color]])))
    return 9, 2, elements


def shadings():
    """Along an axis with and without extension, around a point, by a function; as operator and as pattern."""
    colors, axis = [RED, GREEN, BLUE], {"ColorSpace": "/DeviceRGB"}
    extended = {**axis, "ShadingType": 2, "Coords": [10, 0, 40, 0], "Function": steps(colors), "Extend": [True, False]}
    around = {**axis, "ShadingType": 3, "Coords": [90, 20, 0, 90, 20, 40], "Function": steps([RED, BLUE])}
    pattern = {"PatternType": 2, "Shading": {**extended, "Background": WHITE, "BBox": [0, 0, 100, 100]},
               "Matrix": [1, 0, 0, 1, 0, 0]}

    def by_place(content):
        function = content.file.stream({"FunctionType": 4, "Domain": [0, 1, 0, 1], "Range": [0, 1] * 3},
                                       "{ 0.5 gt { 1 } { 0 } ifelse exch 0.5 gt { 1 } { 0 } ifelse 0 }")
        return "q 60 0 20 20 re W n " + content.name("Shading", {**axis, "ShadingType": 1, "Function": function,
                                                                 "Matrix": [20, 0, 0, 20, 60, 0]}) + " sh Q"

    return 12, 4, [paper(12, 4),
                   Raw(lambda c: "q 0 20 60 20 re W n " + c.name("Shading", extended) + " sh Q",
                       at_place(0, 2, 6, 2, [[RED, RED, GREEN, BLUE, None, None]]), alpha=0.5),
                   Raw(lambda c: f"/Pattern cs {c.name('Pattern', pattern)} scn 0 0 60 20 re f",
                       at_place(0, 0, 6, 2, [[RED, RED, GREEN, BLUE, WHITE, WHITE]]), mode="Multiply"),
                   Raw(by_place, at_place(6, 0, 2, 2, [[RED, (1, 1, 0)], [BLACK, GREEN]])),
                   Raw(lambda c: "80 10 20 20 re 110 10 10 20 re W n " + c.name("Shading", around) + " sh",
                       at_place(8, 1, 4, 2, [[RED, RED, None, BLUE]]))]


def tilings():
    """Coloured and not; a step that is larger than the tile; with alpha, and transparent inside; in the place of the page
    whose colour a form paints with; without seams between pixels."""
    def tiles(paint, elements, step):
        def pattern(content):
            inner = Content(content.file)
            for element in elements:
                element.write(inner)
            return content.file.stream({"PatternType": 1, "PaintType": paint, "TilingType": 1, "BBox": [0, 0, 20, 20],
                                        "XStep": step, "YStep": 20, "Resources": inner.resources}, inner.text())
        return pattern
    colored = tiles(1, [Rect(0, 0, 1, 1, RED), Rect(1, 1, 2, 2, BLUE, alpha=0.5)], 20)
    plain = tiles(2, [Raw("0 0 10 20 re f", lambda x, y: None)], 30)
    def form(content):
        return content.name("XObject", content.file.stream(
            {"Subtype": "/Form", "BBox": [-10, 0, 50, 40], "Matrix": [1, 0, 0, 1, 10, 0]}, "-10 0 60 40 re f"))

    def full(content):
        return content.file.stream({"PatternType": 1, "PaintType": 1, "TilingType": 1, "BBox": [0, 0, 50.3, 50.3],
                                    "XStep": 50.3, "YStep": 50.3}, "0.2 0.6 0.9 rg 0 0 50.3 50.3 re f")
    return 18, 4, [paper(18, 4),
                   Raw(lambda c: f"/Pattern cs {c.name('Pattern', full(c))} scn 120 0 60 40 re f", at_place(12, 0, 6, 4, [[SKY]])),
                   Raw(lambda c: f"/Pattern cs {c.name('Pattern', colored(c))} scn {form(c)} Do",
                       at_place(0, 0, 6, 4, [[None, (BLUE, 0.5)] * 3, [RED, None] * 3] * 2), alpha=0.5),
                   Raw(lambda c: f"{c.name('ColorSpace', ['/Pattern', '/DeviceRGB'])} cs 0.6 0.2 0.5 "
                                 f"{c.name('Pattern', plain(c))} scn 60 0 60 40 re f",
                       at_place(6, 0, 6, 4, [[PLUM, None, None] * 2]), mode="Multiply")]


class Tiles(Group):
    """A group that writes itself as a tiling pattern: of its elements, which repeat, the first is the tile."""

    def paint(self, content):
        inner = Content(content.file)
        self.elements[0].write(inner)
        pattern = content.file.stream({"PatternType": 1, "PaintType": 1, "TilingType": 1, "BBox": [0, 0, 20, 40],
                                       "XStep": 20, "YStep": 40, "Resources": inner.resources}, inner.text())
        content.write(f"/Pattern cs {content.name('Pattern', pattern)} scn 0 0 60 40 re f")


def blending_tiles():
    """Tiles are a group that is not isolated."""
    return 6, 4, stripes(6, 4) + [Tiles([Rect(x, 1, x + 1, 3, SKY, mode="Multiply") for x in (0, 2, 4)], alpha=0.5)]


def disc(x, y, radius, color):
    k = 0.5523 * radius
    return (f"{text(color)[1:-1]} rg {x + radius} {y} m {x + radius} {y + k} {x + k} {y + radius} {x} {y + radius} c "
            f"{x - k} {y + radius} {x - radius} {y + k} {x - radius} {y} c {x - radius} {y - k} {x - k} {y - radius} {x} "
            f"{y - radius} c {x + k} {y - radius} {x + radius} {y - k} {x + radius} {y} c f")


def discs():
    """Groups of two discs that blend with each other and the page, which they end on with a mode."""
    elements = []
    for y, (ground, end) in enumerate([(WHITE, "Screen"), (SAND, "Screen"), (BLACK, "Multiply"), (SKY, "Multiply")]):
        elements.append(Rect(0, 4 * y, 48, 4 * y + 4, ground))
        for x, mode in enumerate(MODES):
            pair = [Raw(disc(40 * x + 20 + d, 40 * y + 20 + d, 12.3, color), None, mode=mode, alpha=alpha)
                    for d, color, alpha in [(-4, (0.9, 0.2, 0.4), 1.0), (4, (0.1, 0.5, 0.95), 0.5)]]
            elements.append(Group(pair, mode=end))
    return page_bytes(48, 16, elements)


def forms_and_clips():
    """A form's matrix and box; clips of both rules, clips in clips, and one without a path, which is none."""
    def form(content):
        inner = content.file.stream({"Subtype": "/Form", "BBox": [0, 0, 10, 10], "Matrix": [2, 0, 0, 1, 10, 10]},
                                    "0.2 0.6 0.9 rg -50 -50 100 100 re f")
        return content.name("XObject", inner) + " Do"
    ring = "W n 40 0 40 40 re 50 10 20 20 re W* n 40 0 30 40 re W n 0.6 0.2 0.5 rg 0 0 100 100 re f"
    rows = [[PLUM] * 3, [PLUM, None, None], [PLUM, None, None], [PLUM] * 3]
    return 9, 4, [paper(9, 4), Raw(form, at_place(1, 1, 2, 1, [[SKY]]), alpha=0.5), Raw(ring, at_place(4, 0, 3, 4, rows))]


def optional_content():
    """Layers that are off by default or for viewers, in the content and on a form; an appearance of an annotation."""
    file = File()
    off, on = (file.add({"Type": "/OCG", "Name": f"({name})"}) for name in ("off", "on"))
    printed = file.add({"Type": "/OCG", "Name": "(printed)", "Usage": {"View": {"ViewState": "/OFF"}}})

    def layers(content):
        hidden = content.file.stream({"Subtype": "/Form", "BBox": [0, 0, 99, 99], "OC": off}, "0 0 99 99 re f")
        members = [{"Type": "/OCMD", "OCGs": [off, on], "P": "/AllOn"}, {"Type": "/OCMD", "OCGs": off, "VE": ["/And", on, ["/Not", off]]}]
        names = [content.name("Properties", layer) for layer in (off, on, *map(content.file.add, members), printed)]
        return (f"/OC {names[0]} BDC 1 0 0 rg 0 0 20 20 re f EMC /OC {names[1]} BDC 0 0 1 rg 20 0 10 20 re f EMC "
                f"/OC {names[2]} BDC 0 0 20 20 re f EMC /OC {names[3]} BDC 30 0 10 20 re f EMC "
                f"/OC {names[4]} BDC 0 0 60 20 re f EMC "
                + content.name("XObject", hidden) + " Do")
    look = file.stream({"Subtype": "/Form", "BBox": [0, 0, 5, 5]}, "0 1 0 rg 0 0 5 5 re f")
    note = {"Type": "/Annot", "Subtype": "/Stamp", "Rect": [40, 10, 60, 20], "AP": {"N": look}}
    elements = [paper(6, 2), Raw(layers, at_place(2, 0, 2, 2, [[BLUE]])), Raw("", at_place(4, 1, 2, 1, [[GREEN]]))]
    usage = {"Event": "/View", "OCGs": [printed], "Category": ["/View"]}
    catalog = {"OCProperties": {"OCGs": [off, on, printed], "D": {"OFF": [off], "AS": [usage]}}}
    return 6, 2, elements, {"Annots": [note, {**note, "Rect": [0, 0, 60, 20], "F": 2}]}, catalog, file


def turned_page():
    """A page that is turned, cut by its crop box and twice as large as its unit says."""
    return 4, 3, stripes(4, 3)[:2] + three_rects(alpha=0.5), {"Rotate": 90, "CropBox": [10, 0, 40, 30], "UserUnit": 2.0}


PAGES = [alpha, modes, modes_in_translucent_group, mode_list, isolated_groups, non_isolated_groups,
         opaque_blends_in_groups, nested_groups, groups_in_knockout_group, group_in_isolated_knockout_group,
         group_alpha_and_mode, page_group, page_without_group, group_over_opaque_and_clear, page_knockout_group, luminosity_mask, luminosity_mask_backdrop_transfer, alpha_mask_transfer, mask_in_mask, masked_group, mask_of_two_groups,
         masked_element_of_knockout_group, alpha_is_shape, fill_and_stroke, crossing_stroke, text_knockout, text_of_codes, text_of_pictures,
         soft_masked_pictures, masked_pictures, sample_depths, colour_spaces, shadings, tilings, blending_tiles, forms_and_clips,
         optional_content, turned_page]


# ----- damaged and hostile files: a green cell stands at the lower left of each, and all else is trouble

def trouble(operators="", resources=None, page=None, file=None):
    file = file or File()
    operators = re.sub(r"\d+e-?\d+", lambda number: decimal(float(number[0])), operators)
    body = file.stream({}, "0 1 0 rg 0 0 10 10 re f 1 0 0 1 20 0 cm 0 0 20 20 re W n\n" + operators, compress=True)
    resources = {"Font": {"F0": HELVETICA}, **(resources or {})}
    return file.bytes({"MediaBox": [0, 0, 40, 20], "Resources": resources, "Contents": body, **(page or {})})


HELVETICA = {"Type": "/Font", "Subtype": "/Type1", "BaseFont": "/Helvetica"}
HUGE = 2 ** 31


def form(file, operators, resources, **others):
    return file.stream({"Subtype": "/Form", "BBox": [0, 0, 40, 20], "Resources": resources, **others}, operators)


def loop(kind, use, extra):
    """A stream that needs itself: objects are numbered from 3."""
    file = File()
    own = {kind: {"X0": "3 0 R"}}
    file.stream({"BBox": [0, 0, 40, 20], "Resources": own, **extra}, use)
    return trouble(use, own, file=file)


def bomb(levels=12, width=12):
    """Each form calls the one before a dozen times. What comes after in other rows must not depend on the threads."""
    file, inner = File(), None
    for _ in range(levels):
        inner = form(file, "0 0 1 1 re f " + "/X0 Do " * width, {"XObject": {"X0": inner}} if inner else {},
                     BBox=[0, 0, 2, 2], Group={"S": "/Transparency", "K": True})
    return trouble("/X0 Do 1 0 0 rg 0 15 20 5 re f", {"XObject": {"X0": inner}}, file=file)


def mask_loop():
    file = File()
    state = {"SMask": {"S": "/Luminosity", "G": "3 0 R"}}
    form(file, "/S0 gs 0 0 40 20 re f", {"ExtGState": {"S0": state}}, Group={"S": "/Transparency", "CS": "/DeviceRGB"})
    return trouble("/S0 gs 0 0 40 20 re f", {"ExtGState": {"S0": state}}, file=file)


def glyph_loop():
    file = File()
    font = file.add({"Type": "/Font", "Subtype": "/Type3", "FontBBox": [0, 0, 9, 9], "FontMatrix": [1, 0, 0, 1, 0, 0],
                     "CharProcs": {"a": "4 0 R"}, "Encoding": {"Differences": [97, "/a"]}, "FirstChar": 97, "LastChar": 97,
                     "Widths": [1], "Resources": {"Font": {"F0": "3 0 R"}}})
    file.stream({}, "1 0 d0 BT /F0 1 Tf (aaaaaaaaaaaa) Tj ET")
    return trouble("BT /F0 1 Tf (aaaaaaaaaaaa) Tj ET", {"Font": {"F0": font}}, file=file)


def function_loops():
    file = File()
    file.add({"FunctionType": 3, "Domain": [0, 1], "Bounds": [0.5], "Encode": [0, 1, 0, 1], "Functions": ["3 0 R", "3 0 R"]})
    file.add(["4 0 R"] * 8)
    space = ["/Separation", "/S", "/DeviceGray", "3 0 R"]
    file.add(["/Indexed", "5 0 R", 255, "(x)"])
    shading = {"ShadingType": 2, "ColorSpace": "/DeviceRGB", "Coords": [0, 0, 9, 9], "Function": "4 0 R"}
    return trouble("/C0 cs 1 sc 0 0 9 9 re f /C1 cs 1 sc 0 0 9 9 re f /S0 sh",
                   {"ColorSpace": {"C0": space, "C1": "5 0 R"}, "Shading": {"S0": shading}}, file=file)


def hostile_pictures():
    file, use, names = File(), "", {}
    def add(data=b"\x00\x40\x80\xc0" * 4, **entries):
        nonlocal use
        name = f"X{len(names)}"
        names[name] = file.stream({"Subtype": "/Image", "Width": 2, "Height": 2, "ColorSpace": "/DeviceRGB",
                                   "BitsPerComponent": 8, **entries}, data)
        use += f"q 10 0 0 10 0 0 cm /{name} Do Q "
    wide, tall = (file.stream({"Width": w, "Height": h, "BitsPerComponent": 1, "ColorSpace": "/DeviceGray"}, b"\x55")
                  for w, h in ((2 ** 25, 1), (1, 2 ** 25)))
    add(Width=HUGE - 1, Height=HUGE - 1)
    add(Width=HUGE, Height=-1)
    add(Width=60000, Height=1000, BitsPerComponent=16)
    add(Width=2 ** 25, Height=1, ColorSpace="/DeviceGray", BitsPerComponent=1, SMask=tall)
    add(SMask=wide)
    add(BitsPerComponent=3)
    add(b"")
    add(b"\xff\xd8\xff\xe0 no picture", Filter="/DCTDecode")
    add(b"no data", Filter=["/ASCII85Decode", "/FlateDecode", "/LZWDecode", "/DCTDecode"])
    add(b"no data", Filter="/JPXDecode")
    add(b"no data", Filter="/NoSuchDecode")
    add(zlib.compress(bytes(16))[:-6], Filter="/FlateDecode")
    add(ColorSpace=["/Indexed", "/DeviceRGB", 255, "<00>"])
    add(ColorSpace=["/Indexed", "/Pattern", HUGE, "/Name"])
    add(ColorSpace="/Nowhere", Decode=[HUGE, -HUGE], Mask=[1])
    add(ColorSpace=["/DeviceN", ["/A"] * 40, "/DeviceRGB", {"FunctionType": 2}])
    add(SMask="1 0 R", Mask="2 0 R")
    use += "q 1e-9 0 0 1e-9 0 0 cm /X0 Do Q q 1e9 1e9 -1e9 1e9 -5e8 -5e8 cm /X5 Do Q q 0 0 0 0 0 0 cm /X4 Do Q "
    use += "BI /W 9 /H 9 /BPC 8 /CS /G ID x EI BI /W 9 ID BI EI ID "
    return trouble(use, {"XObject": names}, file=file)


def hostile_shadings():
    file, names = File(), {}
    line = {"FunctionType": 2, "Domain": [0, 1], "N": -1, "C0": [0, 0, 0], "C1": WHITE}
    grid = file.stream({"FunctionType": 0, "Domain": [0, 1, 0, 1], "Range": [0, 1], "Size": [HUGE - 1, 2],
                        "BitsPerSample": 32}, b"x")
    program = file.stream({"FunctionType": 4, "Domain": [0, 1, 0, 1], "Range": [0, 1]}, "{ " * 200)
    for i, entries in enumerate([
            {"ShadingType": 2, "Coords": [5, 5, 5, 5]}, {"ShadingType": 2, "Coords": [0, 0, HUGE, 1e30], "BBox": [0, 0, HUGE, HUGE]},
            {"ShadingType": 3, "Coords": [0, 0, -1, 0, 0, -5]}, {"ShadingType": 3, "Coords": [0, 0, 5, 5, 0, 0], "Extend": [True, True]},
            {"ShadingType": 3, "Coords": [0, 0, HUGE, 1, 1, HUGE], "Domain": [1, 0]}, {"ShadingType": 2}, {"ShadingType": 9},
            {"ShadingType": 1, "Function": grid}, {"ShadingType": 1, "Function": program, "Matrix": [0] * 6},
            {"ShadingType": 2, "Coords": [0, 0, 9, 9], "Function": "/Nothing", "Background": [HUGE]}]):
        names[f"S{i}"] = {"ColorSpace": "/DeviceRGB", "Function": line, **entries}
    patterns = {f"P{i}": {"PatternType": 2, "Shading": shading} for i, shading in enumerate(names.values())}
    for i, step in enumerate([0, 1e-9, -1e-9, HUGE, 1e30]):
        patterns[f"T{i}"] = file.stream({"PatternType": 1, "PaintType": 1, "BBox": [0, 0, 9, 9], "XStep": step, "YStep": step,
                                         "Resources": {}}, "0 0 1 rg 0 0 1 1 re f")
    patterns["T9"] = file.stream({"PatternType": 1, "PaintType": 2, "BBox": [0, 0, HUGE, HUGE], "XStep": 1, "YStep": 1e-5}, "f")
    use = "".join(f"/{name} sh " for name in names)
    use += "/Pattern cs " + "".join(f"/{name} scn 0 0 10 10 re f " for name in patterns)
    return trouble(use, {"Shading": names, "Pattern": patterns}, file=file)


DAMAGED = {
    "form_loop": loop("XObject", "/X0 Do /X0 Do", {"Subtype": "/Form"}),
    "pattern_loop": loop("Pattern", "/Pattern cs /X0 scn 0 0 40 20 re f",
                         {"PatternType": 1, "PaintType": 1, "XStep": 3, "YStep": 3}),
    "mask_loop": mask_loop(),
    "glyph_loop": glyph_loop(),
    "function_loops": function_loops(),
    "form_bomb": bomb(),
    "operator_bomb": trouble("0 0 m " * 5_000_000),
    "state_bomb": trouble("q /A BMC BT " * 200_000),
    "path_bomb": trouble("0 0 m " + "20 10 l 0 3 l " * 200_000 + "S"),
    "huge_numbers": trouble(
        f"{HUGE} w -{HUGE} -{HUGE} {2 * HUGE} {2 * HUGE} re S 0 0 m {HUGE} {HUGE} {HUGE} -{HUGE} -{HUGE} 5 c B* "
        "1e38 0 0 1e15 0 0 cm 1e15 0 0 1e15 1e15 1e15 cm 5 w 1 1 m 2 2 l S 0 0 1e38 1e38 re W n BT /F0 1e38 Tf (x) Tj ET"),
    "huge_dashes": trouble(
        f"[1e-9 1e-9] 0 d 0 0 m 40 20 l S [0] 0 d 0 0 m 9 9 l S [{HUGE} 1] -{HUGE} d 0 0 m 9 9 l S [0.001] 1e30 d 1 J 1 j "
        f"0 0 m {HUGE} 1 l -{HUGE} 2 l s [-1 -2] 0 d 0 0 m 9 9 l S [" + "1 " * 1000 + "] 0 d 0 0 m 40 0 l S"),
    "flat_matrices": trouble("q 0 0 0 0 0 0 cm 0 0 9 9 re B Q q 1 0 1 0 0 0 cm 0 0 9 9 re B BT /F0 9 Tf (x) Tj ET Q "
                             "BT /F0 0 Tf 0 Tz (x) Tj 0 0 0 0 0 0 Tm 7 Tr (x) Tj ET 0 0 40 20 re f"),
    "operands": trouble("re f l S c B Tj cm 1 0 cm gs Do sh scn SCN /Nothing scn cs /Nothing cs (x) w [] 1 d [(x)] d "
                        "/Nothing Do /Nothing gs /Nothing sh BT Tf /F0 Tf (x) Tf Tj [[] () /x 1] TJ ' \" ET ET "
                        "Q Q Q EMC EMC BDC /OC BDC /OC /x BDC W W* f* EI ID <<>> [ ( < 99999999999999999999 0 R ] >> } {"),
    "pictures": hostile_pictures(),
    "shadings": hostile_shadings(),
    "page_entries": trouble("0 0 9 9 re f", page={"Annots": [1, "/x", {"AP": {"N": "1 0 R"}}, {"AP": {"N": "2 0 R"}, "Rect": [0, 0, 0, 0]}],
                                                "Group": [1], "Rotate": 45, "UserUnit": -1, "CropBox": [5]}),
}


def files_broken_off():
    """Parts of a file; a length that is wrong; a page of no size and one of too much."""
    whole = DAMAGED["pictures"]
    plain = page_bytes(*alpha()[:2], alpha()[2])
    yield "cut_in_content", plain[:len(plain) // 2]
    yield "cut_at_end", whole[:-200]
    yield "wrong_lengths", whole.replace(b"/Length 1", b"/Length 9")
    yield "no_file", b"%PDF-1.7\n"
    yield "huge_page", trouble(page={"MediaBox": [0, 0, HUGE, HUGE]})
    yield "flat_page", trouble(page={"MediaBox": [5, 5, 5, 5]})


# ----- for fuzzing: a page without content whose resources have something of every kind, and contents that use them

CONTENTS = {
    "paths": "q 2 w 1 J 1 j [3 1] 1 d 1 0 0 RG 0 0 1 rg 2 2 m 20 4 l 9 3 4 9 20 20 c 5 5 9 9 v 3 4 5 6 y h B* 3 3 9 9 re W* n Q",
    "colours": "/C0 cs 0.5 scn 0 0 9 9 re f /C1 CS 1 SC 5 5 m 20 20 l S /C2 cs 50 9 -9 sc f 0.1 0.2 0.3 0.4 k 0 0 5 5 re f 0.5 g",
    "patterns": "/Pattern cs /P0 scn 0 0 30 30 re f /P2 scn 9 9 9 9 re B /C4 cs 1 0 0 /P1 scn 0 0 30 30 re f /S0 sh /S1 sh /S2 sh",
    "groups": "/X0 Do q 0.5 0 0 0.5 9 9 cm /X1 Do /G1 gs /X2 Do Q /G2 gs /X1 Do /G3 gs 0 0 30 30 re f /G0 gs /X6 Do",
    "pictures": "q 20 0 0 20 2 2 cm /X3 Do Q q 9 3 -3 9 9 9 cm /X4 Do Q q 30 0 0 -9 0 20 cm /X5 Do Q /G1 gs q 5 0 0 5 0 0 cm /X4 Do Q",
    "inline": "q 9 0 0 9 0 0 cm BI /W 2 /H 2 /BPC 8 /CS /G ID abcd EI Q BI /IM true /W 8 /H 1 /D [1 0] /F /AHx ID 5A> EI",
    "text": "BT /F0 9 Tf 2 9 Td 3 TL 1 Tc 2 Tw 90 Tz 1 Ts (aba) Tj T* [(a) -200 (b)] TJ /F1 8 Tf 1 Tr (ab) ' 7 Tr /F2 9 Tf 1 2 (c) \" ET",
    "layers": "/OC /L0 BDC 0 0 9 9 re f EMC /Span BMC /G4 gs 3 3 9 9 re S EMC BX /G5 gs EX 1 0 0 1 3 3 cm 3 w 1 i 0 0 m 9 9 l s",
}


def fuzz_page():
    file = File()
    half = {"FunctionType": 2, "Domain": [0, 1], "N": 1, "C0": RED, "C1": BLUE}
    axial = {"ShadingType": 2, "ColorSpace": "/DeviceRGB", "Coords": [0, 0, 30, 30], "Function": half, "Extend": [True, False]}
    radial = {"ShadingType": 3, "ColorSpace": "/DeviceRGB", "Coords": [9, 9, 2, 20, 20, 9], "Function": half, "BBox": [0, 0, 25, 25]}
    place_function = file.stream({"FunctionType": 4, "Domain": [0, 30, 0, 30], "Range": [0, 1]}, "{ add 60 div }")
    by_place = {"ShadingType": 1, "ColorSpace": "/DeviceGray", "Domain": [0, 30, 0, 30], "Function": place_function}
    group = {"S": "/Transparency"}
    dots = form(file, "0.3 0.6 0.9 rg 4 4 12 12 re f /G1 gs 9 9 15 15 re f",
                {"ExtGState": {"G1": {"BM": "/Multiply", "ca": 0.5}}}, Group={**group, "I": True, "CS": "/DeviceRGB"})
    knockout = form(file, "/X1 Do 1 0 0 rg 0 0 9 20 re f", {"XObject": {"X1": dots}}, Group={**group, "K": True})
    opacity = file.stream({"Subtype": "/Image", "Width": 3, "Height": 1, "ColorSpace": "/DeviceGray", "BitsPerComponent": 8}, b"\x00\x80\xff")
    picture_of = lambda data, **others: file.stream({"Subtype": "/Image", "Width": 2, "Height": 2, "BitsPerComponent": 8,
                                                     "ColorSpace": "/DeviceRGB", **others}, data)
    square = {"Type": "/FontDescriptor", "FontName": "/Square", "Flags": 4, "FontFile2": file.stream({}, square_font())}
    turned = file.stream({"FunctionType": 4, "Domain": [0, 1], "Range": [0, 1]}, "{ 1 exch sub }")
    glyphs = {"a": file.stream({}, "9 0 0 0 9 9 d1 0 0 9 9 re f"), "b": file.stream({}, "9 0 d0 1 0 0 rg 0 0 5 5 re f")}
    layer = file.add({"Type": "/OCG", "Name": "(off)"})
    spot = ["/Separation", "/Spot", "/DeviceRGB", half]
    resources = {
        "ExtGState": {"G0": {"SMask": "/None", "BM": "/Normal", "ca": 1, "CA": 1},
                      "G1": {"BM": ["/Nothing", "/Screen"], "ca": 0.5, "CA": 0.25},
                      "G2": {"SMask": {"S": "/Luminosity", "G": dots, "BC": [0.2, 0.4, 0.6], "TR": turned}},
                      "G3": {"SMask": {"S": "/Alpha", "G": knockout}, "BM": "/SoftLight", "AIS": True},
                      "G4": {"LW": 3, "LC": 2, "LJ": 1, "ML": 2, "D": [[2, 1], 1], "TK": False}, "G5": {"Font": [HELVETICA, 7]}},
        "XObject": {"X0": form(file, "0 1 0 rg 0 0 9 9 re f", {}, Matrix=[1, 0.5, 0, 1, 3, 3]), "X1": dots, "X2": knockout,
                    "X3": picture_of(bytes(range(12)), SMask=opacity, Decode=[0, 1, 1, 0, 0, 0.5]),
                    "X4": file.stream({"Subtype": "/Image", "Width": 8, "Height": 2, "ImageMask": True}, b"\x5a\x33"),
                    "X5": picture_of(b"\x00\x01\x02\x03", ColorSpace=["/Indexed", "/DeviceCMYK", 1, "<00ff00ff336699cc>"], Mask=[2, 3]),
                    "X6": form(file, "/G3 gs 0 0 20 20 re f", {"ExtGState": {"G3": {"SMask": {"S": "/Luminosity", "G": dots}}}},
                               OC=layer)},
        "Pattern": {"P0": file.stream({"PatternType": 1, "PaintType": 1, "BBox": [0, 0, 5, 5], "XStep": 6, "YStep": 5, "Resources": {}},
                                      "0 1 0 rg 0 0 3 3 re f"),
                    "P1": file.stream({"PatternType": 1, "PaintType": 2, "BBox": [0, 0, 9, 9], "XStep": 9, "YStep": 9,
                                       "Matrix": [0.5, 0.2, -0.2, 0.5, 0, 0], "Resources": {}}, "0 0 5 9 re f"),
                    "P2": {"PatternType": 2, "Shading": {**axial, "Background": GREEN}}},
        "Shading": {"S0": axial, "S1": radial, "S2": by_place},
        "ColorSpace": {"C0": spot, "C1": ["/Indexed", "/DeviceRGB", 1, "<ff000000ff00>"], "C2": ["/Lab", {"Range": [-50, 50, -50, 50]}],
                       "C4": ["/Pattern", "/DeviceRGB"]},
        "Font": {"F0": {"Subtype": "/TrueType", "FirstChar": 97, "LastChar": 98, "Widths": [500, 600], "FontDescriptor": square},
                 "F1": {"Subtype": "/Type3", "FontBBox": [0, 0, 9, 9], "FontMatrix": [0.1, 0, 0, 0.1, 0, 0], "CharProcs": glyphs,
                        "Encoding": {"Differences": [97, "/a", "/b"]}, "FirstChar": 97, "LastChar": 98, "Widths": [9, 9]},
                 "F2": HELVETICA},
        "Properties": {"L0": layer}}
    return file.bytes({"MediaBox": [0, 0, 32, 32], "Resources": resources}, {"OCProperties": {"OCGs": [layer], "D": {"OFF": [layer]}}})


def main():
    OUT.mkdir(exist_ok=True)
    lines = []
    for make in PAGES:
        width, height, elements, *others = make()
        name = make.__name__
        (OUT / f"{name}.pdf").write_bytes(page_bytes(width, height, elements, *others))
        knockout = bool(others) and others[0].get("Group", {}).get("K", False)
        rows = expected_rows(width, height, elements, knockout)
        if make is turned_page:  # clockwise: the left column from below becomes the upper row
            cells = [row.split()[1:] for row in rows]
            rows = [" ".join(row[x] for row in reversed(cells)) for x in range(len(cells[0]))]
            width = height = 3
        lines += [f"{name} {width} {height}", *rows]
    FUZZ.mkdir(exist_ok=True)
    (OUT / "fuzz").mkdir(exist_ok=True)
    (OUT / "fuzz/page.pdf").write_bytes(fuzz_page())
    for name, content in CONTENTS.items():
        (FUZZ / name).write_text(content + "\n")
    (OUT / "round").mkdir(exist_ok=True)
    (OUT / "round/discs.pdf").write_bytes(discs())
    (OUT / "damaged").mkdir(exist_ok=True)
    (OUT / "broken_off").mkdir(exist_ok=True)
    for name, data in DAMAGED.items():
        (OUT / "damaged" / f"{name}.pdf").write_bytes(data)
    for name, data in files_broken_off():
        (OUT / "broken_off" / f"{name}.pdf").write_bytes(data)
    (OUT / "expected.txt").write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
