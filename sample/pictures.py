"""Small pictures without an imaging library: a palette canvas that is saved as PNG, BMP or JPEG."""

import math
import struct
import zlib

# Palette entries of every canvas.
COLOURS = {
    "black": (12, 16, 22), "panel": (24, 32, 44), "grid": (52, 66, 84), "text": (226, 232, 240),
    "dim": (140, 154, 174), "accent": (56, 148, 232), "good": (64, 190, 110), "bad": (232, 84, 76),
    "amber": (240, 176, 60), "white": (255, 255, 255), "paper": (247, 249, 252), "ink": (40, 52, 70),
}
_INDEX = {name: index for index, name in enumerate(COLOURS)}
# The grey steps of camera pictures follow the named colours.
_GREYS = 64
_PALETTE = list(COLOURS.values()) + [(g * 255 // (_GREYS - 1),) * 3 for g in range(_GREYS)]

# A glyph has seven rows of five pixels. Each row is one digit of base 32; the top row is the first.
_GLYPHS = {
    "A": "EHHVHHH", "B": "UHHUHHU", "C": "EHGGGHE", "D": "UHHHHHU", "E": "VGGUGGV", "F": "VGGUGGG", "G": "EHGNHHE",
    "H": "HHHVHHH", "I": "E44444E", "J": "72222IC", "K": "HIKOKIH", "L": "GGGGGGV", "M": "HRLLHHH", "N": "HPPLJJH",
    "O": "EHHHHHE", "P": "UHHUGGG", "Q": "EHHHLID", "R": "UHHUKIH", "S": "FGGE11U", "T": "V444444", "U": "HHHHHHE",
    "V": "HHHHHA4", "W": "HHHLLLA", "X": "HHA4AHH", "Y": "HHA4444", "Z": "V1248GV", "0": "EHJLPHE", "1": "4C4444E",
    "2": "EH1248V", "3": "V2421HE", "4": "26AIV22", "5": "VGU11HE", "6": "68GUHHE", "7": "V124888", "8": "EHHEHHE",
    "9": "EHHF12C", ".": "00000CC", ":": "0CC0CC0", "-": "000V000", "/": "01248G0", "%": "OP248J3", "(": "2488842",
    ")": "8422248", "+": "044V440", "_": "000000V", ",": "0000C48", "=": "00V0V00", " ": "0000000",
}


class Canvas:
    def __init__(self, width, height, colour="black"):
        self.width, self.height = width, height
        self.rows = [bytearray([_INDEX[colour]]) * width for _ in range(height)]

    def fill(self, x, y, width, height, colour):
        for row in self.rows[max(y, 0):y + height]:
            row[max(x, 0):x + width] = bytes([_INDEX[colour]]) * (min(x + width, self.width) - max(x, 0))

    def dot(self, x, y, colour):
        if 0 <= x < self.width and 0 <= y < self.height:
            self.rows[y][x] = _INDEX[colour]

    def grey(self, x, y, level):
        """Sets a pixel to a brightness from 0 to 1."""
        if 0 <= x < self.width and 0 <= y < self.height:
            self.rows[y][x] = len(COLOURS) + round(min(max(level, 0), 1) * (_GREYS - 1))

    def line(self, points, colour):
        """Draws a line through the points, two pixels thick."""
        for (x0, y0), (x1, y1) in zip(points, points[1:]):
            steps = max(abs(x1 - x0), abs(y1 - y0), 1)
            for step in range(steps + 1):
                x, y = x0 + (x1 - x0) * step // steps, y0 + (y1 - y0) * step // steps
                self.dot(x, y, colour)
                self.dot(x, y + 1, colour)

    def text(self, x, y, text, colour="text", scale=1):
        for char in text.upper():
            for row, digit in enumerate(_GLYPHS.get(char, "VHHHHHV")):
                bits = int(digit, 32)
                for column in range(5):
                    if bits >> (4 - column) & 1:
                        self.fill(x + column * scale, y + row * scale, scale, scale, colour)
            x += 6 * scale

    def png(self):
        def chunk(kind, data):
            return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
        return (b"\x89PNG\r\n\x1a\n"
                + chunk(b"IHDR", struct.pack(">IIBBBBB", self.width, self.height, 8, 3, 0, 0, 0))
                + chunk(b"PLTE", b"".join(map(bytes, _PALETTE)))
                + chunk(b"IDAT", zlib.compress(b"".join(b"\0" + bytes(row) for row in self.rows), 9))
                + chunk(b"IEND", b""))

    def bmp(self):
        pad = bytes(-self.width % 4)
        pixels = b"".join(bytes(row) + pad for row in reversed(self.rows))
        palette = b"".join(bytes((b, g, r, 0)) for r, g, b in _PALETTE)
        start = 14 + 40 + len(palette)
        return (struct.pack("<2sIHHI", b"BM", start + len(pixels), 0, 0, start)
                + struct.pack("<IiiHHIIiiII", 40, self.width, self.height, 1, 8, 0, len(pixels), 2835, 2835,
                              len(_PALETTE), 0) + palette + pixels)

    def jpeg(self):
        """A grey baseline JPEG; sides must be multiples of 8. The Huffman codes all have one length, so that no table
        has to be carried: 4 bits for the 12 sizes of the mean, 8 bits for the other symbols."""
        def segment(marker, data):
            return struct.pack(">BBH", 0xFF, marker, len(data) + 2) + data
        step = 12
        symbols = [run << 4 | size for run in range(16) for size in range(1, 11)] + [0x00, 0xF0]
        code = {symbol: index for index, symbol in enumerate(symbols)}
        bits = []

        def put(value, size):
            bits.append(format(value, "0%db" % size) if size else "")

        def put_number(value, size):
            put(value if value > 0 else value + (1 << size) - 1, size)

        previous = 0
        for block in self._blocks():
            levels = [round(value / step) for value in block]
            difference, previous = levels[0] - previous, levels[0]
            size = abs(difference).bit_length()
            put(size, 4)
            put_number(difference, size)
            run = 0
            for value in levels[1:]:
                if value == 0:
                    run += 1
                    continue
                while run > 15:
                    put(code[0xF0], 8)
                    run -= 16
                size = abs(value).bit_length()
                put(code[run << 4 | size], 8)
                put_number(value, size)
                run = 0
            if run:
                put(code[0x00], 8)
        stream = "".join(bits)
        stream += "1" * (-len(stream) % 8)
        data = int(stream, 2).to_bytes(len(stream) // 8, "big").replace(b"\xff", b"\xff\0")
        return (b"\xff\xd8" + segment(0xE0, b"JFIF\0\1\1\0\0\1\0\1\0\0") + segment(0xDB, b"\0" + bytes([step]) * 64)
                + segment(0xC0, struct.pack(">BHHBBBB", 8, self.height, self.width, 1, 1, 0x11, 0))
                + segment(0xC4, b"\x00" + bytes([0, 0, 0, 12] + [0] * 12) + bytes(range(12)))
                + segment(0xC4, b"\x10" + bytes([0] * 7 + [len(symbols)] + [0] * 8) + bytes(symbols))
                + segment(0xDA, b"\1\1\0\0\x3f\0") + data + b"\xff\xd9")

    def _blocks(self):
        """The cosine transform of each block of 8 by 8 pixels, in the zigzag order of the file format."""
        cosine = [[math.cos((2 * x + 1) * u * math.pi / 16) * (math.sqrt(0.125) if u == 0 else 0.5) for x in range(8)]
                  for u in range(8)]
        zigzag = sorted(((u, v) for u in range(8) for v in range(8)),
                        key=lambda p: (p[0] + p[1], p[0] if (p[0] + p[1]) % 2 else p[1]))
        luma = [(299 * r + 587 * g + 114 * b) / 1000 - 128 for r, g, b in _PALETTE]
        for top in range(0, self.height, 8):
            for left in range(0, self.width, 8):
                pixels = [[luma[p] for p in row[left:left + 8]] for row in self.rows[top:top + 8]]
                rows = [[sum(c * p for c, p in zip(cos, row)) for cos in cosine] for row in pixels]
                yield [sum(cosine[u][y] * rows[y][v] for y in range(8)) for u, v in zigzag]


def instrument_screen(title, rows, curve, passed):
    """A photograph-like copy of the instrument's display: title bar, a table of (name, value), a curve of 0..1."""
    screen = Canvas(480, 320)
    screen.fill(0, 0, 480, 34, "accent")
    screen.text(12, 10, title, "white", 2)
    screen.fill(0, 34, 480, 24, "panel")
    for index, tab in enumerate(("Setup", "Result", "Events", "Graph")):
        if index == 3:
            screen.fill(10 + index * 78, 36, 70, 22, "grid")
        screen.text(20 + index * 78, 43, tab, "text" if index == 3 else "dim")
    screen.fill(398, 38, 72, 16, "good" if passed else "bad")
    screen.text(422, 43, "PASS" if passed else "FAIL", "white")
    for index, (name, value) in enumerate(rows[:7]):
        y = 72 + index * 30
        screen.fill(10, y - 6, 190, 24, "panel")
        screen.text(16, y, name, "dim")
        screen.text(194 - 6 * len(value), y, value, "text")
    screen.fill(214, 66, 256, 208, "panel")
    for step in range(9):
        screen.fill(214 + step * 32, 66, 1, 208, "grid")
        screen.fill(214, 66 + step * 26, 256, 1, "grid")
    points = [(215 + round(index * 253 / (len(curve) - 1)), 268 - round(value * 196))
              for index, value in enumerate(curve)]
    screen.line(points, "amber")
    screen.fill(0, 288, 480, 32, "panel")
    for index, key in enumerate(("F1 Start", "F2 Save", "F3 Print", "F4 Back")):
        screen.fill(8 + index * 118, 292, 110, 24, "grid")
        screen.text(28 + index * 118, 300, key)
    return screen


def fiber_end(rng, size=200):
    """Draws the picture of a fiber scope: cladding, core and a few specks."""
    picture = Canvas(size, size)
    middle = size / 2
    specks = [(rng.uniform(0.2, 0.8) * size, rng.uniform(0.2, 0.8) * size, rng.uniform(1, 4)) for _ in range(9)]
    for y in range(size):
        for x in range(size):
            radius = math.hypot(x - middle, y - middle) / middle
            level = 0.16 if radius > 0.86 else 0.62 - 0.18 * radius
            if radius < 0.09:
                level = 0.92
            if any((x - a) ** 2 + (y - b) ** 2 < r * r for a, b, r in specks):
                level *= 0.35
            picture.grey(x, y, level)
    return picture


def bar_chart(series, unit, width=560, height=240):
    """Vertical bars of (label, value)."""
    chart = Canvas(width, height, "paper")
    chart.text(10, 8, unit, "ink")
    top = max(value for _, value in series) or 1
    pitch = (width - 40) // len(series)
    for step in range(5):
        chart.fill(20, 30 + step * 44, width - 40, 1, "dim")
    for index, (label, value) in enumerate(series):
        x, tall = 20 + index * pitch + pitch // 5, round(176 * value / top)
        chart.fill(x, 206 - tall, pitch * 3 // 5, tall, "accent")
        chart.text(x, 216, label[:pitch // 6], "ink")
    return chart
