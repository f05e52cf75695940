"""balloon-ride: a hot-air balloon carries a banner through the dusk; the photo is pinned to the banner by a track."""

import math

import cairo

from kit import paint, samples, scene, track, video
from kit.music import Song
from kit.package import Template, photo_input, text_input

WIDTH, HEIGHT, FRAMES = 720, 1280, 180
LAST = FRAMES - 1
BANNER = (460, 345)
SIZE = 0.88


def build(root):
    template = Template(root, "balloon-ride", 1400, ("Balloon Ride", "热气球之旅", "気球の旅"))
    template.inputs = [text_input("title", 20, 1, ("Title", "标题", "タイトル")),
                       text_input("message", 44, 2, ("Your message", "祝福语", "メッセージ")),
                       photo_input("photo", 4, 3, ("A photo", "照片", "写真"))]
    dusk_video(template.file("res/dusk.mp4"))
    places = [banner_corners(frame / FRAMES) for frame in range(FRAMES)]
    track.write(template.file("res/banner.track"), track.xml(places, WIDTH, HEIGHT))
    paint.save_png(cloth(), template.file("res/cloth.png"))
    paint.save_png(glimmer(), template.file("res/star.png"))
    template.scene("scene.plist", FRAMES, scene_file())
    paint.save_jpeg(samples.mountains(1000, 750), template.file("sample/photo.jpg"))
    template.samples({"title": "Up, up & away", "message": "Greetings from\nabove the clouds", "photo": "photo.jpg"})
    music(template)
    template.write()


# Where the balloon and its banner are --------------------------------------------------------------------------------

def balloon_place(turn):
    """Middle of the envelope, and its lean in radians; `turn` runs from 0 to 1."""
    wave = 2 * math.pi * turn
    return 360 + 46 * math.sin(wave), 386 + 24 * math.sin(wave * 2 + 0.6), 0.055 * math.sin(wave + 0.5)


def banner_matrix(turn):
    """From the banner's own pixels, origin in the middle of its upper edge, to the picture's."""
    x, y, lean = balloon_place(turn)
    wave = 2 * math.pi * turn
    matrix = cairo.Matrix(1, 0, 0, 1, x, y)
    matrix.rotate(lean)
    matrix.scale(SIZE, SIZE)
    matrix.translate(0, 436)
    matrix.rotate(0.075 * math.sin(wave * 2 - 0.9))
    # The wind leans the cloth; a lean keeps its edges parallel, as the quad that carries the photo needs it.
    return cairo.Matrix(1, 0, 0.07 * math.sin(wave * 3 + 1.0), 1 - 0.03 * math.cos(wave * 2), 0, 0).multiply(matrix)


def banner_corners(turn):
    w, h = BANNER
    matrix = banner_matrix(turn)
    return [matrix.transform_point(*corner) for corner in ((-w / 2, h), (w / 2, h), (w / 2, 0), (-w / 2, 0))]


# The video ----------------------------------------------------------------------------------------------------------

def dusk_video(path):
    sky, clouds, ranges, bank = sky_picture(), [cloud(0), cloud(1)], range_picture(), cloud_bank()
    with video.Video(path, WIDTH, HEIGHT, quality=23) as out:
        for frame in range(FRAMES + 3):
            out.frame(dusk_frame(frame / FRAMES, sky, clouds, ranges, bank))


def dusk_frame(turn, sky, clouds, ranges, bank):
    surface, pen = paint.canvas(WIDTH, HEIGHT)
    pen.set_source_surface(sky)
    pen.paint()
    drift(pen, clouds, turn, (210, 590))
    pen.set_source_surface(ranges, -60 + 26 * math.sin(2 * math.pi * turn), 0)
    pen.paint()
    draw_balloon(pen, turn)
    for picture, y, phase in zip(bank, (1092, 1128), (0.4, 2.6)):
        pen.set_source_surface(picture, -80 + 60 * math.sin(2 * math.pi * turn + phase), y)
        pen.paint()
    return surface


def sky_picture():
    surface, pen = paint.canvas(WIDTH, HEIGHT)
    pen.rectangle(0, 0, WIDTH, HEIGHT)
    paint.fill(pen, paint.linear((0, 0), (0, HEIGHT), ((0, "#2b2a5e"), (0.3, "#6a4c8c"), (0.55, "#d97f86"), (0.75, "#f7b98a"),
                                                      (1, "#fbdcae"))))
    random = paint.scattered(3)
    for _ in range(70):
        y = random.uniform(0, 420)
        paint.circle(pen, random.uniform(0, WIDTH), y, random.uniform(0.7, 1.9))
        paint.fill(pen, paint.colour("#ffffff", random.uniform(0.3, 0.85) * (1 - y / 480)))
    samples.glow(pen, 560, 880, 420, "#fff0c4", 0.75)
    paint.circle(pen, 560, 880, 70)
    paint.fill(pen, "#fff2cc")
    return surface


def range_picture():
    surface, pen = paint.canvas(WIDTH + 120, HEIGHT)
    for i, (tint, base) in enumerate((("#b5708a", 985), ("#7d4d7c", 1060), ("#4a3268", 1140))):
        line = base - (64 - 8 * i) * samples.rough_line(WIDTH + 120, 50 + i, 5)
        pen.move_to(0, HEIGHT)
        for x in range(0, WIDTH + 120, 3):
            pen.line_to(x, line[x])
        pen.line_to(WIDTH + 120, HEIGHT)
        paint.fill(pen, paint.linear((0, base - 60), (0, base + 190), ((0, tint), (1, paint.mix(tint, "#f7b98a", 0.42)))))
    return surface


def cloud(seed):
    return puffs(460, 150, 9, 60 + seed, "#ffd9cf", "#d88fa0")


def cloud_bank():
    """Two rows of cloud along the lower edge, wider than the frame; the message stands before them."""
    return [puffs(880, 300, 11, 70, "#f7c9b4", "#d98f92", flat=True), puffs(880, 280, 13, 71, "#fff0dc", "#f2bfa4", flat=True)]


def puffs(width, height, count, seed, light, dark, flat=False):
    surface, pen = paint.canvas(width, height)
    random = paint.scattered(seed)
    for i in range(count):
        t = (i + 0.5) / count
        hump = random.uniform(0.7, 1) if flat else math.sin(math.pi * t)
        x = width * (t if flat else 0.12 + 0.76 * t)
        paint.circle(pen, x, height * (0.5 if flat else 0.66) - height * 0.2 * hump,
                     height * (0.12 + 0.17 * hump + random.uniform(0, 0.05)))
        pen.fill()
    if flat:
        pen.rectangle(0, height * 0.42, width, height)
        pen.fill()
    body, brush = paint.canvas(width, height)
    brush.set_source(paint.linear((0, height * 0.05), (0, height), ((0, light), (1, dark))))
    brush.mask_surface(paint.blur_surface(surface, 3))
    return body


def drift(pen, clouds, turn, heights):
    """Clouds cross the frame once in the loop."""
    for i, (picture, y) in enumerate(zip(clouds, heights)):
        width = picture.get_width()
        x = ((turn + 0.37 * i + 0.2) % 1.0) * (WIDTH + width) - width
        pen.set_source_surface(picture, x, y)
        pen.paint_with_alpha(0.75)


def draw_balloon(pen, turn):
    x, y, lean = balloon_place(turn)
    draw_banner(pen, turn)
    pen.save()
    pen.translate(x, y)
    pen.rotate(lean)
    pen.scale(SIZE, SIZE)
    for knot in (-40, -22, 22, 40):
        pen.move_to(knot * 2.7, 190)
        pen.line_to(knot, 300)
        paint.stroke(pen, "#4c2f3c", 2.5)
    draw_envelope(pen)
    draw_basket(pen, turn)
    pen.restore()


def envelope_path(pen, share):
    """The outline, or a gore's edge when `share` is below 1."""
    pen.move_to(0, -232)
    pen.curve_to(250 * share, -232, 262 * share, 20, 106 * share, 196)
    pen.line_to(-106 * share, 196)
    pen.curve_to(-262 * share, 20, -250 * share, -232, 0, -232)
    pen.close_path()


def draw_envelope(pen):
    for share, tint in ((1.0, "#e5534b"), (0.8, "#f6c667"), (0.56, "#e5534b"), (0.3, "#f6c667"), (0.09, "#e5534b")):
        envelope_path(pen, share)
        paint.fill(pen, tint)
    envelope_path(pen, 1.0)
    paint.fill(pen, paint.radial((70, -70), 330, ((0, "#fff4d8", 0.5), (0.5, "#fff4d8", 0.05), (1, "#3a1a4a", 0.5))))
    paint.rounded(pen, -106, 186, 212, 16, 8)
    paint.fill(pen, "#a63a3c")


def draw_basket(pen, turn):
    flame = 0.8 + 0.2 * math.sin(2 * math.pi * turn * 15)
    samples.glow(pen, 0, 232, 80 * flame, "#ffe9a0", 0.7)
    paint.ellipse(pen, 0, 236, 8, 26 * flame)
    paint.fill(pen, "#fff1b0")
    paint.rounded(pen, -46, 298, 92, 72, 12)
    paint.fill(pen, paint.linear((-46, 0), (46, 0), ((0, "#7a4a2e"), (0.5, "#b97a48"), (1, "#6a3f28"))))
    for row in range(5):
        pen.move_to(-42, 312 + 12 * row)
        pen.line_to(42, 312 + 12 * row)
        paint.stroke(pen, paint.colour("#5a3520", 0.5), 2)
    paint.rounded(pen, -52, 290, 104, 14, 7)
    paint.fill(pen, "#d39a5c")


def draw_banner(pen, turn):
    x, y, lean = balloon_place(turn)
    w, h = BANNER
    hook = cairo.Matrix(1, 0, 0, 1, x, y)
    hook.rotate(lean)
    hook.scale(SIZE, SIZE)
    matrix = banner_matrix(turn)
    for side in (-1, 1):
        pen.move_to(*hook.transform_point(side * 34, 362))
        pen.line_to(*matrix.transform_point(side * w * 0.46, -4))
        paint.stroke(pen, "#4c2f3c", 3.5)
    pen.save()
    pen.transform(matrix)
    pen.rectangle(-w / 2, 0, w, h)
    paint.fill(pen, paint.linear((0, 0), (0, h), ((0, "#fff8ec"), (1, "#f2dfc6"))))
    paint.heart(pen, 0, h / 2, 60)
    paint.fill(pen, paint.colour("#e5534b", 0.5))
    paint.rounded(pen, -w / 2 - 16, -12, w + 32, 16, 8)
    paint.fill(pen, "#8a5a38")
    pen.restore()


# The scene ----------------------------------------------------------------------------------------------------------

def cloth():
    """Folds, a hem and its stitches: lies over the photo and follows the same track."""
    w, h = 512, 384
    surface, pen = paint.canvas(w, h)
    for i in range(5):
        x = w * (0.12 + 0.19 * i)
        pen.rectangle(x - 46, 0, 92, h)
        paint.fill(pen, paint.linear((x - 46, 0), (x + 46, 0), ((0, "#2a1030", 0), (0.42, "#2a1030", 0.16), (0.5, "#ffffff", 0.0),
                                                               (0.58, "#fff6e0", 0.2), (1, "#fff6e0", 0))))
    pen.rectangle(0, 0, w, 34)
    paint.fill(pen, paint.linear((0, 0), (0, 34), ((0, "#2a1030", 0.35), (1, "#2a1030", 0))))
    pen.rectangle(6, 6, w - 12, h - 12)
    paint.stroke(pen, "#fff8ec", 12)
    pen.rectangle(9, 9, w - 18, h - 18)
    pen.set_dash((9, 8))
    paint.stroke(pen, "#e5534b", 2.5)
    return surface


def glimmer():
    surface, pen = paint.canvas(128, 128)
    samples.glow(pen, 64, 64, 60, "#fff6d8", 0.5)
    paint.star(pen, 64, 64, 4, 6, 52)
    paint.fill(pen, "#fffaf0")
    return surface


def pinned(texture, depth, name):
    """A quad on the track; the track's unit square is scaled to the frame."""
    return scene.node("QVQuadTrackObject3D", scene.span(0, LAST, depth), name, TextureInfo=texture, QuadInfo=scene.box(1, 1),
                      TrackInfo={"trackFliePath": scene.ROOT + "res/banner.track"},
                      TransformArray=scene.still(0, scale=(WIDTH, HEIGHT, 1)))


def words(key, size, width, height, y, first, tint):
    motion = scene.Motion(first, (0, y - 40, 0), 0.9).to(first + 34, at=(0, y, 0), scale=1.0)
    return scene.faded(scene.words(key, size, width, height, tint), scene.box(width, height, 1), scene.span(first, LAST, 20),
                       key, [scene.fade(first, first + 18, 0, 1)], TransformArray=motion.items())


def stars():
    random = paint.scattered(4)
    return [star(random, 12 * i) for i in range(9)]


def star(random, first):
    # Beside the balloon, on either side.
    spot = (random.choice((-1, 1)) * random.uniform(235, 345), random.uniform(250, 500), 0)
    size = random.uniform(26, 54)
    twinkle = scene.swing("scale", first, LAST, random.randint(12, 20), (0.25, 0.25, 1), (1, 1, 1))
    inner = scene.quad(scene.image("res/star.png"), scene.box(size, size), scene.span(first, LAST), "star",
                       MutableTransformArray=twinkle)
    return scene.group(scene.span(first, LAST, 120), [inner], TransformArray=scene.still(first, spot, rotate=random.uniform(0, 45)))


def scene_file():
    return {"Camera": scene.orthographic(WIDTH, HEIGHT),
            "TimeSource": scene.video_clock("res/dusk.mp4", FRAMES, (WIDTH, HEIGHT), name="dusk"),
            "object3D": [pinned(scene.user_image("photo"), 60, "photo"), pinned(scene.image("res/cloth.png"), 50, "cloth"), *stars(),
                         words("title", 84, 640, 124, 560, 8, "#fff3dc"), words("message", 42, 620, 112, -570, 36, "#6a2f55")]}


def music(template):
    song = Song(("F2: A3 C4 E4 A4", "D2: A3 D4 F4 A4", "Bb2: Bb3 D4 F4 A4", "C3: G3 C4 E4 G4"), 76)
    song.pads(0.07, 3).bass(((0, 2.4), (2.5, 1.0)), 0.22).arpeggio(division=2, level=0.12, pattern=(0, 1, 2, 3, 2, 1))
    song.tune("C6@0 A5@1 E5@2.5 F5@4 A5@5.5 D6@6.5 C6@8 A5@9 F5@10.5 G5@12 E5@13.5 G5@15", level=0.1)
    song.drums(kicks=(0,), claps=(), level=0.7)
    song.save(template.file("bg-audio.mp3"), 2.4, 0.34)
