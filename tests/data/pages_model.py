"""Pages of rectangles, and what they look like by the formulas of PDF transparency in real numbers.

A page is a list of elements on a grid of cells, 10 points each, counted from the lower left corner. An element writes
itself as operators (`write`) and says what it is at a point (`at`): colour, shape and opacity. `composite` puts elements
together as the standard's general formula for groups does, without a thought to how a renderer might go about it.
"""
import math
import zlib

CELL = 10


# ----- the formulas

def soft_light(b, s):
    if s <= 0.5:
        return b - (1 - 2 * s) * b * (1 - b)
    d = ((16 * b - 12) * b + 4) * b if b <= 0.25 else b ** 0.5
    return b + (2 * s - 1) * (d - b)


def hard_light(b, s):
    return 2 * s * b if s <= 0.5 else b + (2 * s - 1) - b * (2 * s - 1)


MODES = {
    "Normal": lambda b, s: s,
    "Multiply": lambda b, s: b * s,
    "Screen": lambda b, s: b + s - b * s,
    "Overlay": lambda b, s: hard_light(s, b),
    "Darken": min,
    "Lighten": max,
    "ColorDodge": lambda b, s: min(1, b / (1 - s)) if s < 1 else 1,
    "ColorBurn": lambda b, s: 1 - min(1, (1 - b) / s) if s > 0 else 0,
    "HardLight": hard_light,
    "SoftLight": soft_light,
    "Difference": lambda b, s: abs(b - s),
    "Exclusion": lambda b, s: b + s - 2 * b * s,
}


def union(a, b):
    return a + b - a * b


in_bytes = False  # whether `composite` keeps all that it computes in bytes, as a renderer does


def keep(value):
    return math.floor(value * 255 + 1e-9) / 255 if in_bytes else value


def composite(elements, point, backdrop, isolated=False, knockout=False):
    """Colour, shape and opacity of a group at a point. A backdrop is a colour and its alpha."""
    start, start_alpha = ((0, 0, 0), 0) if isolated else backdrop
    color, alpha, group_alpha, group_shape = start, start_alpha, 0, 0
    for element in elements:
        below, below_alpha, below_group = (start, start_alpha, 0) if knockout else (color, alpha, group_alpha)
        source = element.at(point, (below, below_alpha))
        if source is None:
            continue
        own, shape, opacity = source
        if in_bytes:
            own = [keep(s + 0.5 / 255) for s in own]
        blend = MODES[element.mode]
        group_shape = union(group_shape, shape)
        group_alpha = (1 - shape) * group_alpha + (shape - opacity) * below_group + opacity
        after = union(start_alpha, group_alpha)
        if after > 0:
            mixed = [keep((1 - below_alpha) * s) + keep(below_alpha * keep(blend(keep(b), s))) for b, s in zip(below, own)]
            after, group_alpha = keep(after), keep(group_alpha)
            color = tuple(min((keep((1 - shape) * alpha * c + (shape - opacity) * below_alpha * b) + keep(opacity * m)) /
                              max(after, 1e-9), 1) for c, b, m in zip(color, below, mixed))
        alpha = after
    if group_alpha > 0:
        take_out = start_alpha * (1 - group_alpha) / group_alpha
        color = tuple(c + (c - s) * take_out for c, s in zip(color, start))
    return color, group_shape, group_alpha


def luminosity(color):
    return 0.3 * color[0] + 0.59 * color[1] + 0.11 * color[2]


# ----- the file

def decimal(value):
    """A number without an exponent, which PDF has not."""
    digits = f"{value:.10f}".rstrip("0")
    return digits + "0" if abs(value) > 1e9 else digits.rstrip(".")


def text(value):
    """A Python value as PDF writes it; strings are written as they are."""
    if isinstance(value, bool):
        return str(value).lower()
    if isinstance(value, dict):
        return "<<" + " ".join(f"/{key} {text(item)}" for key, item in value.items()) + ">>"
    if isinstance(value, (list, tuple)):
        return "[" + " ".join(map(text, value)) + "]"
    return decimal(value) if isinstance(value, float) else str(value)


class File:
    """Numbered objects, and how they become a PDF file. The first is the catalogue, the second the list of pages."""

    def __init__(self):
        self.objects = [b"", b""]

    def add(self, value):
        self.objects.append(text(value).encode("latin-1"))
        return f"{len(self.objects)} 0 R"

    def stream(self, dictionary, data, compress=False):
        data = data.encode("latin-1") if isinstance(data, str) else data
        if compress:
            data, dictionary = zlib.compress(data, 9), {**dictionary, "Filter": "/FlateDecode"}
        head = text({**dictionary, "Length": len(data)}).encode("latin-1")
        self.objects.append(head + b"\nstream\n" + data + b"\nendstream")
        return f"{len(self.objects)} 0 R"

    def bytes(self, page, catalog=None):
        number = self.add({"Type": "/Page", "Parent": "2 0 R", **page})
        self.objects[0] = text({"Type": "/Catalog", "Pages": "2 0 R", **(catalog or {})}).encode()
        self.objects[1] = text({"Type": "/Pages", "Kids": [number], "Count": 1}).encode()
        out, places = b"%PDF-1.7\n", []
        for i, body in enumerate(self.objects):
            places.append(len(out))
            out += b"%d 0 obj\n%s\nendobj\n" % (i + 1, body)
        table = b"".join(b"%010d 00000 n \n" % place for place in places)
        count = len(self.objects) + 1
        end = f"trailer {text({'Size': count, 'Root': '1 0 R'})}\nstartxref\n{len(out)}\n%%EOF\n"
        return out + b"xref\n0 %d\n0000000000 65535 f \n" % count + table + end.encode()


class Content:
    """Operators, and the resources that they name."""

    def __init__(self, file):
        self.file, self.operators, self.resources = file, [], {}

    def name(self, kind, value):
        named = self.resources.setdefault(kind, {})
        name = f"{kind[0]}{len(named)}"
        named[name] = value
        return "/" + name

    def write(self, operators):
        self.operators.append(operators)

    def text(self):
        return "\n".join(self.operators)

    def form(self, elements, extra, box=(-1000, -1000, 1000, 1000)):
        inner = Content(self.file)
        for element in elements:
            element.write(inner)
        return self.file.stream({"Type": "/XObject", "Subtype": "/Form", "BBox": [CELL * x for x in box],
                                 "Resources": inner.resources, **extra}, inner.text())


# ----- the elements

class Element:
    """What all elements have: a mode, an alpha, a soft mask and whether these are shape (AIS) or opacity."""

    def __init__(self, mode="Normal", alpha=1.0, mask=None, alpha_is_shape=False, state=None):
        self.mode, self.alpha, self.mask, self.alpha_is_shape = mode, alpha, mask, alpha_is_shape
        self.state = state or {}  # more entries for its ExtGState

    def write(self, content):
        state = {"BM": "/" + self.mode, "ca": self.alpha, "CA": self.alpha, "AIS": self.alpha_is_shape, **self.state}
        if self.mask:
            state["SMask"] = self.mask.dictionary(content)
        content.write(f"q {content.name('ExtGState', state)} gs")
        self.paint(content)
        content.write("Q")

    def at(self, point, backdrop):
        found = self.look(point, backdrop)
        if found is None:
            return None
        color, shape, opacity = found
        factor = self.alpha * (self.mask.at(point) if self.mask else 1)
        return color, shape * (factor if self.alpha_is_shape else 1), opacity * factor


class Rect(Element):
    def __init__(self, x0, y0, x1, y1, color, **others):
        super().__init__(**others)
        self.box, self.color = (x0, y0, x1, y1), color

    def paint(self, content):
        x0, y0, x1, y1 = (CELL * edge for edge in self.box)
        content.write(f"{text(self.color)[1:-1]} rg {x0:g} {y0:g} {x1 - x0:g} {y1 - y0:g} re f")

    def look(self, point, _):
        x0, y0, x1, y1 = self.box
        return (self.color, 1, 1) if x0 < point[0] < x1 and y0 < point[1] < y1 else None


class Group(Element):
    def __init__(self, elements, isolated=False, knockout=False, **others):
        super().__init__(**others)
        self.elements, self.isolated, self.knockout = elements, isolated, knockout

    def paint(self, content):
        group = {"S": "/Transparency", "I": self.isolated, "K": self.knockout}
        content.write(content.name("XObject", content.form(self.elements, {"Group": group})) + " Do")

    def look(self, point, backdrop):
        return composite(self.elements, point, backdrop, self.isolated, self.knockout)


class Raw(Element):
    """Operators as they are, and a function that tells the colour at a point, or colour and opacity, or None."""

    def __init__(self, operators, color_at, **others):
        super().__init__(**others)
        self.operators, self.color_at = operators, color_at

    def paint(self, content):
        content.write(self.operators(content) if callable(self.operators) else self.operators)

    def look(self, point, _):
        found = self.color_at(*point)
        if found is None:
            return None
        return (found[0], 1, found[1]) if isinstance(found[0], tuple) else (found, 1, 1)


class SoftMask:
    def __init__(self, kind, elements, box, backdrop=None, transfer=None):
        self.kind, self.elements, self.box, self.backdrop = kind, elements, box, backdrop
        self.transfer = transfer  # the program of a function and the same as a Python function

    def dictionary(self, content):
        group = {"S": "/Transparency", "CS": "/DeviceRGB", "I": True}
        mask = {"S": "/" + self.kind, "G": content.form(self.elements, {"Group": group}, self.box)}
        if self.backdrop:
            mask["BC"] = list(self.backdrop)
        if self.transfer:
            mask["TR"] = content.file.stream({"FunctionType": 4, "Domain": [0, 1], "Range": [0, 1]}, self.transfer[0])
        return mask

    def at(self, point):
        x0, y0, x1, y1 = self.box
        inside = x0 < point[0] < x1 and y0 < point[1] < y1
        color, _, alpha = composite(self.elements if inside else [], point, ((0, 0, 0), 0), isolated=True)
        if self.kind == "Luminosity":
            back = self.backdrop or (0, 0, 0)
            alpha = luminosity([alpha * c + (1 - alpha) * b for c, b in zip(color, back)])
        return self.transfer[1](alpha) if self.transfer else alpha


def page_bytes(width, height, elements, page=None, catalog=None, file=None):
    """A PDF file of one page of `width` by `height` cells."""
    file = file or File()
    content = Content(file)
    for element in elements:
        element.write(content)
    body = file.stream({}, content.text())
    return file.bytes({"MediaBox": [0, 0, width * CELL, height * CELL], "Resources": content.resources,
                       "Contents": body, **(page or {})}, catalog)


def shown_rows(width, height, elements, knockout):
    """What the middles of the cells show on white paper, as rrggbb, rows from the top."""
    rows = []
    for y in reversed(range(height)):
        row = []
        for x in range(width):
            color, _, alpha = composite(elements, (x + 0.5, y + 0.5), ((1, 1, 1), 1), True, knockout)
            row.append("".join(f"{round(255 * (alpha * c + 1 - alpha)):02x}" for c in color))
        rows.append(row)
    return rows


def expected_rows(width, height, elements, knockout=False):
    """The cells of each row: the colour by the formulas in real numbers and, after a stroke, by the same formulas with
    every step cut off to a byte, where that is another. A channel is kept multiplied by its alpha, so a cut is more of the
    colour the smaller the alpha; ColorBurn and ColorDodge divide what has been cut by the source."""
    global in_bytes
    real = shown_rows(width, height, elements, knockout)
    in_bytes = True
    cut_off = shown_rows(width, height, elements, knockout)
    in_bytes = False
    return [" ".join(r if r == c else f"{r}/{c}" for r, c in zip(*rows)) for rows in zip(real, cut_off)]
