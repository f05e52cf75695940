"""sunny-day: a greeting card of cut paper. A morning landscape, a photo on a card, a title and a message."""

import math

import cairo

from kit import paint, samples, scene, sound, video
from kit.package import Template, photo_input, text_input

WIDTH, HEIGHT, FRAMES = 720, 1280, 300
INK, CORAL, SUN, CREAM, LEAF = "#24484f", "#f2775d", "#ffc55c", "#fff6e6", "#5fa58b"
LAST = FRAMES - 1


def build(root):
    template = Template(root, "sunny-day", 1100, ("Sunny Day", "晴天", "晴れの日"))
    template.inputs = [
        text_input("title", 18, 1, ("Title", "标题", "タイトル")),
        text_input("message", 48, 2, ("Your message", "祝福语", "メッセージ")),
        photo_input("photo", 4, 5, ("A photo", "照片", "写真")),
    ]
    landscape(template.file("res/morning.mp4"))
    pictures(template)
    sounds(template)
    template.scene("scene.plist", FRAMES, scene_file())
    paint.save_jpeg(samples.portrait(), template.file("sample/photo.jpg"))
    template.samples({"title": "Hello Sunshine", "message": "May today be bright,\nwarm and all yours", "photo": "photo.jpg"})
    template.write()


# The landscape ------------------------------------------------------------------------------------------------------

HILLS = (  # top, height of the waves, waves a width, phase, colour above, colour below, sway
    (760, 46, 1.1, 0.6, "#cfe3cf", "#b5d6c4", 10),
    (845, 54, 1.5, 2.4, "#a9d0b4", "#8fc2ab", 16),
    (945, 48, 1.2, 4.1, "#7fb99a", "#63a58e", 24),
    (1055, 44, 1.7, 0.2, "#4f9482", "#3b7f74", 34),
    (1165, 36, 1.3, 3.0, "#2f6d68", "#22555a", 46),
)
MARGIN = 60


def landscape(path):
    sky, rays, layers = sky_picture(), ray_picture(), [hill_layer(*hill[:6], index=i) for i, hill in enumerate(HILLS)]
    clouds = [cloud_layer(*where) for where in ((0, 1.0), (1, 0.72), (2, 1.25))]
    with video.Video(path, WIDTH, HEIGHT, quality=22) as out:
        for frame in range(FRAMES + 3):
            out.frame(landscape_frame(frame / FRAMES, sky, rays, clouds, layers))


def landscape_frame(turn, sky, rays, clouds, layers):
    """`turn` runs from 0 to 1 once in the loop; every motion closes with it."""
    surface, pen = paint.canvas(WIDTH, HEIGHT)
    wave = 2 * math.pi * turn
    pen.set_source_surface(sky)
    pen.paint()
    draw_sun(pen, 540, 372 + 8 * math.sin(wave), rays, turn)
    for i, cloud in enumerate(clouds):
        x = (150, 610, 330)[i] + (26, -34, 20)[i] * math.sin(wave + i)
        pen.set_source_surface(cloud, x - cloud.get_width() / 2, (170, 255, 700)[i] + 4 * math.sin(wave * 2 + i))
        pen.paint_with_alpha((0.95, 0.85, 0.7)[i])
    for layer, hill in zip(layers, HILLS):
        pen.set_source_surface(layer, -MARGIN + hill[6] * math.sin(wave + hill[3]), 4 * math.sin(wave * 2 + hill[3]))
        pen.paint()
    draw_motes(pen, turn)
    return surface


def sky_picture():
    surface, pen = paint.canvas(WIDTH, HEIGHT)
    pen.rectangle(0, 0, WIDTH, HEIGHT)
    paint.fill(pen, paint.linear((0, 0), (0, 900), ((0, "#9fd3e6"), (0.42, "#d8ecec"), (0.68, "#fff0d8"), (1, "#ffd9b5"))))
    return surface


def ray_picture():
    surface, pen = paint.canvas(1500, 1500)
    for i in range(18):
        pen.move_to(750, 750)
        angle = 2 * math.pi * i / 18
        pen.arc(750, 750, 740, angle, angle + math.pi / 18)
        pen.close_path()
    paint.fill(pen, paint.radial((750, 750), 740, ((0, "#fff3cf", 0.55), (0.35, "#fff3cf", 0.2), (1, "#fff3cf", 0))))
    return surface


def draw_sun(pen, x, y, rays, turn):
    pen.save()
    pen.translate(x, y)
    pen.rotate(2 * math.pi * turn / 9)
    pen.set_source_surface(rays, -750, -750)
    pen.paint()
    pen.restore()
    breath = 1 + 0.03 * math.sin(4 * math.pi * turn)
    for radius, alpha in ((250, 0.16), (205, 0.24), (165, 0.4)):
        paint.circle(pen, x, y, radius * breath)
        paint.fill(pen, paint.colour("#ffe3a1", alpha))
    paint.circle(pen, x, y, 126)
    paint.fill(pen, paint.radial((x - 30, y - 40), 180, ((0, "#ffdf8e"), (1, "#ffb648"))))


def cloud_layer(seed, size):
    surface, pen = paint.canvas(360 * size, 170 * size)
    pen.scale(size, size)
    random = paint.scattered(40 + seed)
    for i in range(6):
        paint.circle(pen, 75 + 40 * i, 92 - 18 * math.sin(math.pi * (i + 0.5) / 6) + random.uniform(-8, 8),
                     26 + 22 * math.sin(math.pi * (i + 0.5) / 6))
        pen.fill_preserve()
    paint.rounded(pen, 46, 84, 262, 44, 22)
    paint.fill(pen, paint.linear((0, 30), (0, 140), ((0, "#ffffff"), (1, "#f6ead8"))))
    body, top = paint.canvas(360 * size, 170 * size)
    top.set_source(paint.linear((0, 30 * size), (0, 140 * size), ((0, "#ffffff"), (1, "#fbeedd"))))
    top.mask_surface(surface)
    return paint.with_shadow(body, 12 * size, 0.16, "#7a6a5a", (0, int(9 * size)))


def ridge(x, top, rise, waves, phase):
    t = 2 * math.pi * waves * x / WIDTH + phase
    return top - rise * (0.62 * math.sin(t) + 0.28 * math.sin(1.9 * t + 1.3) + 0.1 * math.sin(4.3 * t))


def hill_layer(top, rise, waves, phase, light, dark, index):
    surface, pen = paint.canvas(WIDTH + 2 * MARGIN, HEIGHT + 20)
    if index in (1, 2, 3):
        plant_trees(pen, index, (top, rise, waves, phase), paint.mix(dark, "#1f4f50", 0.22 + 0.06 * index))
    pen.move_to(0, HEIGHT + 20)
    for x in range(0, WIDTH + 2 * MARGIN + 1, 4):
        pen.line_to(x, ridge(x, top, rise, waves, phase))
    pen.line_to(WIDTH + 2 * MARGIN, HEIGHT + 20)
    pen.close_path()
    paint.fill(pen, paint.linear((0, top - rise), (0, top + 330), ((0, light), (1, dark))))
    if index == len(HILLS) - 1:
        plant_meadow(pen, (top, rise, waves, phase))
    return paint.with_shadow(surface, 14, 0.27, "#16343a", (0, -5))


def plant_trees(pen, index, shape, tint):
    random = paint.scattered(100 + index)
    for _ in range(7 + 2 * index):
        x = random.uniform(0, WIDTH + 2 * MARGIN)
        if 210 < x < 600 and index == 1:
            continue
        y, size = ridge(x, *shape) + 8, random.uniform(0.7, 1.25) * (12 + 9 * index)
        shade = paint.mix(tint, random.choice(("#e9b872", "#ffffff", "#1f4f50")), random.uniform(0.0, 0.22))
        pen.rectangle(x - size * 0.06, y - size * 1.2, size * 0.12, size * 1.3)
        paint.fill(pen, paint.mix(shade, "#4a3a32", 0.55))
        paint.ellipse(pen, x, y - size * 1.6, size * 0.62, size * random.uniform(0.85, 1.15))
        paint.fill(pen, shade)


def plant_meadow(pen, shape):
    random = paint.scattered(77)
    for _ in range(26):
        x = random.uniform(0, WIDTH + 2 * MARGIN)
        y, high = ridge(x, *shape) + 10, random.uniform(16, 46)
        pen.move_to(x, y + 10)
        pen.curve_to(x, y - high * 0.4, x + 6, y - high * 0.7, x + random.uniform(-8, 8), y - high)
        end = pen.get_current_point()
        paint.stroke(pen, paint.mix("#2f6d68", "#9fd08b", random.uniform(0, 0.4)), 3)
        paint.petals(pen, *end, 5, random.uniform(8, 12), 4.5, random.uniform(0, 1))
        paint.fill(pen, random.choice(("#ffd9a0", "#ff9d83", "#fff3de", "#ffc55c")))
        paint.circle(pen, *end, 2.6)
        paint.fill(pen, "#c75b3f")


def draw_motes(pen, turn):
    """Soft lights that rise; each makes a whole number of rounds in the loop."""
    random = paint.scattered(5)
    for _ in range(26):
        x, start, radius = random.uniform(0, WIDTH), random.random(), random.uniform(3, 15)
        rounds, phase = random.choice((1, 1, 2)), random.uniform(0, 6.28)
        y = HEIGHT * (1.05 - ((start + rounds * turn) % 1.0) * 1.1)
        x += 30 * math.sin(2 * math.pi * turn * rounds + phase)
        alpha = random.uniform(0.12, 0.42) * math.sin(math.pi * ((start + rounds * turn) % 1.0))
        paint.circle(pen, x, y, radius)
        paint.fill(pen, paint.radial((x, y), radius, ((0, "#fffbe8", alpha), (0.6, "#fff6d8", alpha * 0.7), (1, "#fff6d8", 0))))


# Pictures -----------------------------------------------------------------------------------------------------------

CARD = (600, 740)
WINDOW = (60, 60, 480, 600)
RIBBON = (700, 244)


def pictures(template):
    paint.save_png(card_back(), template.file("res/card.png"))
    paint.save_png(card_front(), template.file("res/card-front.png"))
    paint.save_png(tape(CORAL), template.file("res/tape.png"))
    paint.save_png(banner(), template.file("res/banner.png"))
    paint.save_png(flourish(), template.file("res/flourish.png"))
    paint.save_png(flower("#ff9d83", "#f2775d"), template.file("res/flower-coral.png"))
    paint.save_png(flower("#ffdf8e", "#f9b548"), template.file("res/flower-yellow.png"))
    paint.save_png(heart_sticker(), template.file("res/heart.png"))
    paint.save_png(wing(), template.file("res/wing.png"))
    paint.save_png(body(), template.file("res/body.png"))
    for i, tint in enumerate((CORAL, SUN, "#7cc4b4", "#ffffff")):
        paint.save_png(confetto(tint, i), template.file(f"res/confetti-{i}.png"))


def card_back():
    """The card with its shadow, and in the window what shows while no photo is given."""
    width, height = CARD
    surface, pen = paint.canvas(width, height)
    paint.rounded(pen, 36, 36, width - 72, height - 72, 10)
    paint.fill(pen, paint.linear((0, 0), (0, height), ((0, "#fffdf8"), (1, "#fbf1e2"))))
    out = paint.with_shadow(surface, 15, 0.42, "#3a2c22", (0, 12))
    pen = cairo.Context(out)
    x, y, w, h = WINDOW
    pen.rectangle(x, y, w, h)
    paint.fill(pen, paint.linear((0, y), (0, y + h), ((0, "#cfe9ec"), (1, "#ffe7c8"))))
    paint.circle(pen, x + w / 2, y + h * 0.44, 92)
    paint.fill(pen, paint.colour("#ffffff", 0.55))
    paint.heart(pen, x + w / 2, y + h * 0.44, 46)
    paint.fill(pen, paint.colour(CORAL, 0.75))
    return out


def card_front():
    """An inner shadow over the edge of the photo, and a thin line around it."""
    surface, pen = paint.canvas(*CARD)
    x, y, w, h = WINDOW
    mask, cut = paint.canvas(*CARD, "#000000")
    cut.set_operator(cairo.OPERATOR_CLEAR)
    cut.rectangle(x, y, w, h)
    cut.fill()
    pen.rectangle(x, y, w, h)
    pen.clip()
    pen.set_source_surface(paint.shadow_of(mask, 10, 0.5, "#2c211a", (0, 5)))
    pen.paint()
    pen.reset_clip()
    pen.rectangle(x, y, w, h)
    paint.stroke(pen, paint.colour("#e9d8c0", 1.0), 3)
    return surface


def tape(tint):
    surface, pen = paint.canvas(190, 64)
    pen.move_to(12, 12)
    for i in range(11):
        pen.line_to(12 + 4 * (i % 2), 12 + 4 * i)
    for i in range(11):
        pen.line_to(178 - 4 * (i % 2), 52 - 4 * i)
    pen.close_path()
    paint.fill(pen, paint.colour(tint, 0.88))
    for i in range(7):
        paint.circle(pen, 34 + 20.5 * i, 32, 5)
        paint.fill(pen, paint.colour("#ffffff", 0.5))
    return paint.with_shadow(surface, 5, 0.28, "#3a2c22", (0, 4))


def banner():
    """The ribbon; inside its stitches there is room for 552 by 112 pixels, 16 above the middle."""
    surface, pen = paint.canvas(*RIBBON)
    for sign in (-1, 1):
        pen.save()
        pen.translate(350, 0)
        pen.scale(sign, 1)
        for x, y in ((250, 66), (336, 66), (308, 129), (336, 192), (250, 192)):
            pen.line_to(x, y)
        pen.close_path()
        paint.fill(pen, "#c9523c")
        for x, y in ((250, 192), (290, 192), (290, 178)):
            pen.line_to(x, y)
        pen.close_path()
        paint.fill(pen, "#8f3526")
        pen.restore()
    paint.rounded(pen, 58, 32, 584, 148, 10)
    paint.fill(pen, paint.linear((0, 32), (0, 180), ((0, "#fa8a6f"), (1, "#ee6b52"))))
    paint.rounded(pen, 66, 40, 568, 132, 7)
    pen.set_dash((7, 8))
    paint.stroke(pen, paint.colour("#ffe9dc", 0.75), 2.2)
    return paint.with_shadow(surface, 10, 0.4, "#3a1c16", (0, 9))


def flourish():
    surface, pen = paint.canvas(420, 56)
    for sign in (-1, 1):
        pen.save()
        pen.translate(210, 28)
        pen.scale(sign, 1)
        pen.move_to(30, 0)
        pen.curve_to(80, -26, 110, 24, 190, -2)
        paint.stroke(pen, paint.colour(CORAL), 4.5)
        paint.ellipse(pen, 118, -14, 15, 6, -0.5)
        paint.fill(pen, LEAF)
        paint.ellipse(pen, 150, 14, 13, 5, 0.5)
        paint.fill(pen, LEAF)
        pen.restore()
    paint.heart(pen, 210, 27, 14)
    paint.fill(pen, CORAL)
    return surface


def flower(light, dark):
    surface, pen = paint.canvas(200, 200)
    paint.petals(pen, 100, 100, 8, 86, 34)
    paint.fill(pen, paint.radial((100, 100), 88, ((0, dark), (0.5, light), (1, paint.mix(light, "#ffffff", 0.25)))))
    paint.petals(pen, 100, 100, 8, 56, 18, math.pi / 8)
    paint.fill(pen, paint.colour("#ffffff", 0.4))
    paint.circle(pen, 100, 100, 23)
    paint.fill(pen, paint.radial((93, 92), 30, ((0, "#fff1b8"), (1, "#e79a35"))))
    return paint.with_shadow(surface, 6, 0.36, "#3a2c22", (0, 5))


def heart_sticker():
    surface, pen = paint.canvas(150, 150)
    paint.heart(pen, 75, 75, 50)
    pen.set_line_join(cairo.LINE_JOIN_ROUND)
    pen.set_line_width(14)
    pen.set_source_rgb(1, 1, 1)
    pen.stroke_preserve()
    paint.fill(pen, paint.linear((40, 30), (100, 120), ((0, "#ff8f78"), (1, "#e5533f"))))
    pen.move_to(48, 62)
    pen.curve_to(50, 50, 58, 46, 64, 48)
    paint.stroke(pen, paint.colour("#ffffff", 0.8), 6)
    return paint.with_shadow(surface, 6, 0.4, "#3a2c22", (0, 5))


def wing():
    """The right half of a butterfly; the hinge is the left edge."""
    surface, pen = paint.canvas(128, 192)
    for points, tint in ((((0, 88), (40, 10), (112, 14), (118, 74), (60, 104)), "#ff9a6b"),
                         (((0, 94), (62, 98), (100, 130), (78, 178), (30, 150)), "#ffc55c")):
        paint.smooth(pen, points, closed=True)
        paint.fill(pen, paint.linear((0, 0), (128, 0), ((0, paint.mix(tint, "#b8452f", 0.55)), (1, tint))))
    for x, y, radius in ((92, 42, 10), (74, 68, 6), (70, 146, 8)):
        paint.circle(pen, x, y, radius)
        paint.fill(pen, paint.colour("#fff6e6", 0.9))
    return surface


def body():
    surface, pen = paint.canvas(64, 192)
    for sign in (-1, 1):
        pen.move_to(32, 44)
        pen.curve_to(32 + sign * 4, 26, 32 + sign * 12, 20, 32 + sign * 18, 10)
        paint.stroke(pen, "#4b2a25", 3)
    paint.ellipse(pen, 32, 92, 6.5, 52)
    paint.fill(pen, "#4b2a25")
    return surface


def confetto(tint, kind):
    surface, pen = paint.canvas(64, 64)
    if kind == 0:
        paint.rounded(pen, 14, 20, 36, 22, 4)
    elif kind == 1:
        paint.circle(pen, 32, 32, 15)
    elif kind == 2:
        paint.ellipse(pen, 32, 32, 20, 9, 0.6)
    else:
        paint.star(pen, 32, 32, 5, 8, 18)
    paint.fill(pen, tint)
    return paint.with_shadow(surface, 3, 0.25, "#3a2c22", (0, 3))


# Sound --------------------------------------------------------------------------------------------------------------

BAR = 2.5
CHORDS = (("C3", "E4 G4 C5 E5"), ("A2", "E4 A4 C5 E5"), ("F2", "F4 A4 C5 F5"), ("G2", "D4 G4 B4 D5"))
TUNE = (("E5", 0), ("G5", 1), ("C6", 1.5), ("B5", 2.5), ("A5", 3.25), ("C6", 4), ("B5", 5), ("A5", 5.5), ("E5", 6.5),
        ("F5", 8), ("A5", 9), ("C6", 9.5), ("D6", 10.5), ("C6", 11.25), ("B5", 12), ("D6", 13), ("G5", 13.5), ("B5", 14.5))


def sounds(template):
    music().save(template.file("bg-audio.mp3"))
    sound.save_effect(template.file("res/whoosh.mp3"), sound.whoosh(0.8))
    sound.save_effect(template.file("res/pop.mp3"), sound.pop())
    sound.save_effect(template.file("res/chime.mp3"), sound.chime(("C6", "E6", "G6", "C7")))


def music():
    """Four bars of ukulele, mallets, bass and a shaker: ten seconds that close into a loop."""
    mix = sound.Mix(4 * BAR, loop=True)
    beat = BAR / 4
    for bar, (root, notes) in enumerate(CHORDS):
        start = bar * BAR
        hertz = [sound.pitch(name) for name in notes.split()]
        for i, hz in enumerate(hertz[:3]):
            mix.add(sound.pad(hz / 2, BAR + 0.5), start, 0.05, (-0.5, 0, 0.5)[i])
        for at, length in ((0, 0.9), (1.5, 0.5), (2, 0.7), (3.5, 0.4)):
            mix.add(sound.bass(sound.pitch(root) * (2 if at == 3.5 else 1), length * beat * 1.6), start + at * beat, 0.26)
        strum(mix, hertz, start, beat)
    for name, at in TUNE:
        mix.add(sound.bell(sound.pitch(name), 1.6), at * beat, 0.1, 0.35)
        mix.add(sound.pluck(sound.pitch(name) / 2, 1.0), at * beat, 0.14, 0.1)
    for eighth in range(32):
        mix.add(sound.shaker(eighth), eighth * beat / 2, 0.055 if eighth % 2 else 0.028, -0.3)
    for bar in range(4):
        mix.add(sound.kick(), bar * BAR, 0.3)
        mix.add(sound.kick(), bar * BAR + 2.5 * beat, 0.18)
    return mix.room(1.5, 0.2)


def strum(mix, hertz, start, beat):
    for at, down in ((0, True), (1, True), (1.5, False), (2.5, False), (3, True), (3.5, False)):
        for i, hz in enumerate(hertz if down else reversed(hertz)):
            mix.add(sound.string(hz, 0.9, 0.993), start + at * beat + 0.013 * i, 0.085 if down else 0.055, -0.35)


# The scene ----------------------------------------------------------------------------------------------------------

def scene_file():
    clock = scene.video_clock("res/morning.mp4", FRAMES, (WIDTH, HEIGHT), name="morning")
    nodes = [card(), *title(), *message(), *stickers(), butterfly(), *confetti()]
    return {"Camera": scene.orthographic(WIDTH, HEIGHT), "TimeSource": clock, "object3D": nodes}


def card():
    # The first frame shows it whole, a little above its place: many players stand on that frame.
    motion = scene.Motion(0, (0, 190, 0), 0.96, -13).hold(9)
    motion.to(46, at=(0, 2, 0), scale=1.0, rotate=-3, ease=scene.BACK_OUT)
    frame = lambda name, picture: scene.quad(scene.image(picture), scene.box(*CARD), scene.span(0, LAST), name)
    strip = scene.quad(scene.image("res/tape.png"), scene.box(190, 64), scene.span(0, LAST), "tape",
                       TransformArray=scene.still(0, (0, 330, 0), 1.0, 4))
    photo = scene.quad(scene.user_image("photo"), scene.box(480, 600, 2, at=(0, 10, 0)), scene.span(0, LAST), "photo")
    return scene.group(
        scene.span(0, LAST, 80), [frame("card", "res/card.png"), photo, frame("card front", "res/card-front.png"), strip],
        "card", TransformArray=motion.items(),
        MutableTransformArray=scene.swing("rotate", 47, LAST, 70, (0, 0, 0), (0, 0, 1.6)),
        ComponentsInfo=[scene.sound("res/whoosh.mp3", 8, 38, "whoosh", 0.35)])


def title():
    motion = scene.Motion(52, (0, 436, 0), 0.8).to(80, at=(0, 496, 0), scale=1.0, ease=scene.BACK_OUT)
    words = scene.faded(scene.words("title", 88, 640, 124, INK), scene.box(640, 124, 1), scene.span(52, LAST, 60), "title",
                        [scene.fade(52, 68, 0, 1, scene.SINE_OUT)], TransformArray=motion.items(),
                        ComponentsInfo=[scene.sound("res/chime.mp3", 56, 136, "chime", 0.28)])
    line = scene.faded(scene.image("res/flourish.png"), scene.box(420, 56), scene.span(70, LAST, 60), "flourish",
                       [scene.fade(70, 80, 0, 1)],
                       TransformArray=scene.Motion(70, (0, 412, 0), (0.05, 1, 1)).to(100, scale=1.0).items())
    return [words, line]


def message():
    motion = scene.Motion(92, (0, -490, 0), (0.02, 0.9, 1)).to(118, scale=1.0, ease=scene.BACK_OUT)
    ribbon = scene.quad(scene.image("res/banner.png"), scene.box(*RIBBON), scene.span(92, LAST, 50), "banner",
                        TransformArray=motion.items())
    words = scene.faded(scene.words("message", 38, 536, 104, "#fffaf2"), scene.box(536, 104, 1), scene.span(108, LAST, 40),
                        "message", [scene.fade(108, 128, 0, 1, scene.SINE_OUT)],
                        TransformArray=scene.Motion(108, (0, -462, 0)).to(130, at=(0, -474, 0)).items())
    return [ribbon, words]


STICKERS = (  # picture, size, first frame, place, degrees a second
    ("flower-coral", 150, 60, (-262, 296), 9),
    ("flower-yellow", 112, 66, (-196, 366), -14),
    ("flower-yellow", 140, 72, (272, -300), -10),
    ("flower-coral", 96, 78, (206, -348), 16),
    ("heart", 116, 86, (-266, -322), 0),
)


def stickers():
    return [sticker(*entry) for entry in STICKERS]


def sticker(picture, size, first, place, speed):
    spot = (*place, 0)
    motion = scene.Motion(first, spot, 0.001).to(first + 34, scale=1.0, ease=scene.ELASTIC_OUT)
    inner = scene.quad(
        scene.image(f"res/{picture}.png"), scene.box(size, size), scene.span(first, LAST),
        MutableTransformArray=[scene.glide("rotate", first, LAST, (0, 0, 0), (0, 0, speed * (LAST - first) / 30))]
        if speed else scene.swing("scale", first + 36, LAST, 14, (1, 1, 1), (1.12, 1.12, 1)))
    return scene.group(scene.span(first, LAST, 30), [inner], picture, TransformArray=motion.items(),
                       ComponentsInfo=[scene.sound("res/pop.mp3", first, first + 12, f"pop{first}", 0.2)])


def butterfly():
    """It comes along a path, rests on the card, and leaves."""
    paths = [scene.path(30001, ((-430, -260), (-340, 60), (-40, -330), (160, -80), (120, 110), (206, 250))),
             scene.path(30002, ((206, 250), (330, 420), (60, 520), (-180, 400), (-300, 620), (-480, 700)))]
    motion = scene.Motion(120, (-430, -260, 0), 0.62, -38)
    motion.along(196, 30001, (206, 250, 0), scene.SINE_IN_OUT).hold(236).along(292, 30002, (-480, 700, 0), scene.CUBIC_IN)
    wings = []
    for sign in (1, -1):
        flap = scene.swing("rotate", 120, LAST, 4, (0, sign * 8, 0), (0, sign * 68, 0))
        wings.append(scene.quad(scene.image("res/wing.png"), scene.box(128, 192, at=(64, 0, 0)), scene.span(120, LAST),
                                "wing", TransformArray=scene.still(120, scale=(sign, 1, 1)), MutableTransformArray=flap))
    torso = scene.quad(scene.image("res/body.png"), scene.box(64, 192), scene.span(120, LAST), "body")
    return scene.group(scene.span(120, LAST, 65), [*wings, torso], "butterfly", BezierArray=paths,
                       TransformArray=motion.items())


def confetti():
    random = paint.scattered(12)
    return [confetto_fall(random, i) for i in range(16)]


def confetto_fall(random, i):
    first, length = 56 + 9 * i, random.randint(96, 140)
    last = min(LAST, first + length)
    x, size = random.uniform(-340, 340), random.uniform(38, 64)
    spin = (random.uniform(300, 700), random.uniform(-500, 500), random.uniform(-240, 240))
    fall = scene.glide("translate", first, last, (x, 690, 0), (x + random.uniform(-120, 120), -690, 0), scene.QUAD_IN
                       if i % 3 == 0 else scene.LINEAR)
    turn = scene.glide("rotate", first, last, (0, 0, 0), spin)
    return scene.quad(scene.image(f"res/confetti-{i % 4}.png"), scene.box(size, size), scene.span(first, last, 85),
                      "confetti", MutableTransformArray=[fall, turn])
