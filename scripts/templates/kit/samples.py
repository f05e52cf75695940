"""Painted pictures that stand in for a user's photos in demonstrations."""

import math

import cairo
import numpy as np

from . import paint


def portrait(width=800, height=1000):
    """A woman before hills and a morning sun."""
    surface, pen = paint.canvas(width, height)
    pen.scale(width / 800, height / 1000)
    pen.rectangle(0, 0, 800, 1000)
    paint.fill(pen, paint.linear((0, 0), (0, 1000), ((0, "#7fc3d8"), (0.6, "#ffe2bd"), (1, "#f6b38a"))))
    paint.circle(pen, 610, 250, 150)
    paint.fill(pen, paint.radial((610, 250), 150, ((0, "#fff6d6"), (1, "#ffd27a"))))
    for y, tint in ((700, "#8fc1a6"), (780, "#5f9f8b")):
        pen.move_to(0, 1000)
        for x in range(0, 801, 8):
            pen.line_to(x, y - 40 * math.sin(x / 130 + y) - 16 * math.sin(x / 47))
        pen.line_to(800, 1000)
        paint.fill(pen, tint)
    person(pen, 400, "#5a3428", "#37201b", "#f2775d", "#d9543f", long_hair=True)
    return surface


def couple(width=800, height=1000):
    """Two people under a garland of lights."""
    surface, pen = paint.canvas(width, height)
    pen.scale(width / 800, height / 1000)
    pen.rectangle(0, 0, 800, 1000)
    paint.fill(pen, paint.linear((0, 0), (0, 1000), ((0, "#3d4a6b"), (0.55, "#c98b8b"), (1, "#f3cfae"))))
    random = paint.scattered(31)
    for _ in range(70):
        glow(pen, random.uniform(0, 800), random.uniform(0, 620), random.uniform(8, 34), "#ffe3b0", random.uniform(0.08, 0.4))
    pen.move_to(0, 120)
    pen.curve_to(260, 260, 540, 260, 800, 90)
    paint.stroke(pen, paint.colour("#2c3350"), 4)
    for i in range(13):
        t = i / 12
        x, y = 800 * t, 120 * (1 - t) ** 3 + 780 * t * (1 - t) ** 2 + 780 * t * t * (1 - t) + 90 * t ** 3
        glow(pen, x, y + 14, 46, "#ffd98c", 0.7)
        paint.circle(pen, x, y + 14, 9)
        paint.fill(pen, "#fff3cf")
    for x, size, look in ((255, 0.82, ("#2b2220", "#1c1513", "#39455f", "#28324a", False)),
                          (560, 0.8, ("#8a5a3c", "#6b422a", "#fbf4ea", "#e7d8c6", True))):
        pen.save()
        pen.translate(x - 400 * size, 1000 - 1000 * size)
        pen.scale(size, size)
        person(pen, 400, *look[:4], long_hair=look[4])
        pen.restore()
    return surface


def glow(pen, x, y, radius, tint, alpha):
    paint.circle(pen, x, y, radius)
    paint.fill(pen, paint.radial((x, y), radius, ((0, tint, alpha), (0.4, tint, alpha * 0.45), (1, tint, 0))))


def person(pen, x, hair, hair_dark, cloth, cloth_dark, long_hair):
    """Head and shoulders, smiling; drawn for a picture of 800 by 1000."""
    pen.save()
    pen.translate(x - 400, 0)
    back = ((205, 560), (190, 330), (300, 190), (430, 180), (560, 270), (585, 480), (610, 680), (400, 760), (190, 700))
    if not long_hair:
        back = ((262, 480), (248, 340), (310, 240), (430, 220), (530, 280), (552, 400), (540, 490), (400, 560))
    paint.smooth(pen, back, closed=True)
    paint.fill(pen, paint.linear((200, 180), (600, 740), ((0, hair), (1, hair_dark))))
    paint.rounded(pen, 345, 560, 110, 180, 50)
    paint.fill(pen, "#e0a284")
    paint.smooth(pen, ((60, 1010), (110, 830), (270, 740), (400, 770), (530, 740), (690, 830), (740, 1010)), closed=True)
    paint.fill(pen, paint.linear((0, 740), (0, 1000), ((0, cloth), (1, cloth_dark))))
    paint.smooth(pen, ((300, 752), (400, 832), (500, 752), (455, 715), (345, 715)), closed=True)
    paint.fill(pen, "#e0a284")
    paint.ellipse(pen, 400, 470, 136, 172)
    paint.fill(pen, paint.linear((270, 300), (540, 640), ((0, "#f8c9a8"), (1, "#ecae8e"))))
    paint.smooth(pen, ((262, 470), (262, 340), (350, 250), (470, 250), (545, 350), (538, 450), (500, 350), (400, 330),
                       (300, 370)), closed=True)
    paint.fill(pen, paint.mix(hair, hair_dark, 0.4))
    face(pen)
    pen.restore()


def face(pen):
    for x in (345, 455):
        pen.move_to(x - 26, 470)
        pen.curve_to(x - 14, 452, x + 14, 452, x + 26, 470)
        paint.stroke(pen, "#3a211c", 7)
        paint.circle(pen, x + (-30 if x < 400 else 30), 535, 28)
        paint.fill(pen, paint.colour("#f08b74", 0.42))
    pen.move_to(352, 548)
    pen.curve_to(376, 592, 424, 592, 448, 548)
    pen.close_path()
    paint.fill(pen, "#b8453c")
    pen.move_to(396, 480)
    pen.curve_to(390, 510, 392, 520, 408, 520)
    paint.stroke(pen, paint.colour("#c98a6c"), 5)


def rough_line(width, seed, octaves=7, start=2):
    """Heights from -1 to 1 of a mountain range."""
    rng = np.random.default_rng(seed)
    x = np.arange(width) / width
    line = np.zeros(width)
    for k in range(octaves):
        knots = rng.uniform(-1, 1, start * 2 ** k + 2)
        line += np.interp(x * start * 2 ** k, np.arange(len(knots)), knots) / 1.9 ** k
    return line / np.max(np.abs(line))


def mountains(width=1200, height=800):
    """Misty ranges above a lake at dawn."""
    surface, pen = paint.canvas(width, height)
    pen.rectangle(0, 0, width, height)
    paint.fill(pen, paint.linear((0, 0), (0, height * 0.66), ((0, "#5d86a8"), (0.5, "#f3c9a5"), (1, "#fbe6cf"))))
    glow(pen, width * 0.63, height * 0.36, height * 0.5, "#fff2d2", 0.9)
    paint.circle(pen, width * 0.63, height * 0.36, height * 0.055)
    paint.fill(pen, "#fffaf0")
    for i in range(5):
        far = i / 4
        tint = paint.mix("#c7a9a0", "#1e3a4c", far)
        line = height * (0.42 + 0.062 * i) - height * (0.15 - 0.018 * i) * rough_line(width, 200 + i)
        pen.move_to(0, height)
        for x in range(0, width, 2):
            pen.line_to(x, line[x])
        pen.line_to(width, height)
        paint.fill(pen, paint.linear((0, height * (0.3 + 0.06 * i)), (0, height * 0.74),
                                     ((0, tint), (1, paint.mix(tint, "#fbe6cf", 0.55 - 0.3 * far)))))
    water(surface, int(height * 0.7))
    return surface


def water(surface, shore):
    """Mirrors what lies above the shore, darker and rippled."""
    data = paint.pixels(surface)
    height = data.shape[0]
    for y in range(shore, height):
        depth = (y - shore) / (height - shore)
        source = shore - 1 - int((y - shore) * 1.25)
        row = np.roll(data[max(0, source)], int(6 * depth * math.sin(y * 0.9) + 3 * math.sin(y * 0.23)), 0)
        data[y, :, :3] = row[:, :3] * (0.82 - 0.25 * depth) + np.array([52, 40, 26]) * (0.18 + 0.1 * depth)
    surface.mark_dirty()


def beach(width=1000, height=1000):
    """Sea, sand, a parasol."""
    surface, pen = paint.canvas(width, height)
    pen.scale(width / 1000, height / 1000)
    pen.rectangle(0, 0, 1000, 1000)
    paint.fill(pen, paint.linear((0, 0), (0, 430), ((0, "#58b7e0"), (1, "#d9f1f2"))))
    for x, y, size in ((210, 140, 1.0), (720, 220, 0.7), (560, 90, 0.5)):
        for i in range(5):
            paint.circle(pen, x + 46 * size * (i - 2), y - 16 * size * math.sin(math.pi * i / 4), 40 * size)
            paint.fill(pen, "#f7fdff")
    pen.rectangle(0, 420, 1000, 300)
    paint.fill(pen, paint.linear((0, 420), (0, 720), ((0, "#1f8fb3"), (0.6, "#3fc0c4"), (1, "#a6e6d8"))))
    for i, tint in enumerate(("#e8fbf6", "#f7e3bb", "#efd3a0")):
        pen.move_to(0, 1000)
        for x in range(0, 1001, 10):
            pen.line_to(x, 668 + 22 * i + 14 * math.sin(x / 110 + i) + 6 * math.sin(x / 37))
        pen.line_to(1000, 1000)
        paint.fill(pen, tint)
    parasol(pen, 640, 800)
    return surface


def parasol(pen, x, y):
    paint.ellipse(pen, x + 30, y + 62, 210, 26)
    paint.fill(pen, paint.colour("#8a6a3c", 0.3))
    pen.save()
    pen.translate(x, y + 60)
    pen.rotate(0.2)
    pen.rectangle(-6, -430, 12, 430)
    paint.fill(pen, "#f4efe6")
    for i in range(6):
        pen.move_to(0, -470)
        left, right = -220 + 440 * i / 6, -220 + 440 * (i + 1) / 6
        pen.curve_to(left * 0.6, -460, left, -400, left, -300)
        pen.curve_to(left, -276, right, -276, right, -300)
        pen.curve_to(right, -400, right * 0.6, -460, 0, -470)
        paint.fill(pen, "#ef5b4c" if i % 2 == 0 else "#fff6ea")
    pen.restore()


def city(width=900, height=1200):
    """A skyline at night, its windows lit."""
    surface, pen = paint.canvas(width, height)
    pen.scale(width / 900, height / 1200)
    pen.rectangle(0, 0, 900, 1200)
    paint.fill(pen, paint.linear((0, 0), (0, 1200), ((0, "#0e1638"), (0.55, "#4b2f6b"), (0.85, "#c65b7c"), (1, "#f2a07b"))))
    paint.circle(pen, 660, 240, 72)
    paint.fill(pen, "#fdf3d4")
    glow(pen, 660, 240, 240, "#fdf3d4", 0.3)
    random = paint.scattered(8)
    for _ in range(90):
        paint.circle(pen, random.uniform(0, 900), random.uniform(0, 600), random.uniform(0.8, 2.2))
        paint.fill(pen, paint.colour("#ffffff", random.uniform(0.3, 0.9)))
    for layer, (base, tint) in enumerate(((520, "#3a2a5e"), (640, "#241d4a"), (790, "#120f2c"))):
        x = -20
        while x < 900:
            wide, top = random.uniform(60, 130), base + random.uniform(-150, 130)
            pen.rectangle(x, top, wide, 1200 - top)
            paint.fill(pen, tint)
            windows(pen, random, x, top, wide, layer)
            x += wide + random.uniform(-4, 14)
    return surface


def windows(pen, random, x, top, wide, layer):
    size = 6 + 2 * layer
    for row in range(int((1190 - top) / (size * 2.4))):
        for column in range(int((wide - size) / (size * 2))):
            if random.random() < 0.42:
                pen.rectangle(x + size + column * size * 2, top + size + row * size * 2.4, size, size * 1.3)
                tint = random.choice(("#ffd98c", "#ffe9b8", "#8fd3ff"))
                paint.fill(pen, paint.colour(tint, random.uniform(0.35, 0.6 + 0.15 * layer)))


def cat(width=900, height=900):
    """A ginger cat that looks at you."""
    surface, pen = paint.canvas(width, height)
    pen.scale(width / 900, height / 900)
    pen.rectangle(0, 0, 900, 900)
    paint.fill(pen, paint.radial((450, 400), 700, ((0, "#bfe5dc"), (1, "#5aa9a0"))))
    paint.smooth(pen, ((170, 910), (220, 660), (450, 600), (680, 660), (730, 910)), closed=True)
    paint.fill(pen, "#e88f45")
    cat_head(pen)
    return surface


GINGER = {"light": "#f8b368", "fur": "#ee9a4f", "dark": "#e88f45", "stripe": "#c76f2e", "eye": "#b6d96a", "rim": "#5f9440"}


def cat_head(pen, look=GINGER):
    """A head 540 wide around (450, 430)."""
    for side in (-1, 1):
        for points, tint in ((((-70, -150), (-232, -330), (-250, -60)), look["fur"]),
                             (((-110, -170), (-208, -278), (-222, -100)), "#f6bda0")):
            pen.new_path()
            for px, py in points:
                pen.line_to(450 + side * px, 430 + py)
            pen.close_path()
            paint.fill(pen, tint)
    paint.ellipse(pen, 450, 440, 268, 228)
    paint.fill(pen, paint.radial((420, 360), 340, ((0, look["light"]), (1, look["dark"]))))
    for x in (-60, 0, 60):
        paint.ellipse(pen, 450 + x, 262 + abs(x) * 0.15, 15, 52)
        paint.fill(pen, look["stripe"])
    for side in (-1, 1):
        cat_side(pen, side, look)
    paint.ellipse(pen, 450, 520, 24, 16)
    paint.fill(pen, "#d9606a")


def cat_side(pen, side, look):
    paint.ellipse(pen, 450 + side * 46, 556, 66, 52)
    paint.fill(pen, "#fff3e2")
    paint.ellipse(pen, 450 + side * 108, 420, 54, 60)
    paint.fill(pen, "#ffffff")
    paint.ellipse(pen, 450 + side * 102, 424, 42, 50)
    paint.fill(pen, paint.radial((450 + side * 102, 436), 54, ((0, look["eye"]), (1, look["rim"]))))
    paint.ellipse(pen, 450 + side * 100, 424, 17, 42)
    paint.fill(pen, "#1d1a16")
    paint.circle(pen, 450 + side * 100 - 14, 402, 12)
    paint.fill(pen, "#ffffff")
    for y in (-10, 12, 34):
        pen.move_to(450 + side * 90, 556 + y)
        pen.curve_to(450 + side * 200, 540 + y, 450 + side * 260, 540 + y * 1.6, 450 + side * 320, 540 + y * 2.4)
        paint.stroke(pen, paint.colour("#fffaf0", 0.9), 3.5)


def headphones(width=1000, height=1000):
    """A product picture: headphones on a warm studio ground."""
    surface, pen = paint.canvas(width, height)
    pen.scale(width / 1000, height / 1000)
    pen.rectangle(0, 0, 1000, 1000)
    paint.fill(pen, paint.radial((500, 420), 760, ((0, "#ffb98a"), (0.6, "#f0805f"), (1, "#a8405a"))))
    paint.ellipse(pen, 500, 868, 300, 34)
    paint.fill(pen, paint.radial((500, 868), 300, ((0, "#4a1630", 0.6), (1, "#4a1630", 0))))
    for width_, tint in ((60, "#20212b"), (44, "#343643"), (10, "#6d7086")):
        pen.new_sub_path()
        pen.arc(500, 520, 300, math.pi, 2 * math.pi)
        paint.stroke(pen, tint, width_)
    for side in (-1, 1):
        ear_cup(pen, side)
    return surface


def ear_cup(pen, side):
    pen.save()
    pen.translate(500 + side * 296, 640)
    pen.scale(side, 1)
    paint.rounded(pen, -112, -150, 100, 300, 50)
    paint.fill(pen, paint.linear((-112, 0), (-12, 0), ((0, "#15161d"), (1, "#2e303c"))))
    paint.rounded(pen, -40, -170, 130, 340, 62)
    paint.fill(pen, paint.linear((-40, -170), (90, 170), ((0, "#fdf3e8"), (0.5, "#e7d9cb"), (1, "#a89a90"))))
    paint.ellipse(pen, 30, 0, 40, 104)
    paint.fill(pen, paint.linear((-10, -104), (70, 104), ((0, "#e9694f"), (1, "#a5343f"))))
    paint.ellipse(pen, 18, -40, 10, 40)
    paint.fill(pen, paint.colour("#ffffff", 0.35))
    pen.restore()


def dark_rim(surface, strength=0.35):
    """Darkens the corners, as a lens does."""
    pen = cairo.Context(surface)
    width, height = surface.get_width(), surface.get_height()
    pen.rectangle(0, 0, width, height)
    paint.fill(pen, paint.radial((width / 2, height / 2), math.hypot(width, height) / 2,
                                 ((0, "#000000", 0), (0.55, "#000000", 0), (1, "#000000", strength))))
    return surface
