"""sea-postcard: the user's film on an instant picture, with its own sound, above a painted sea."""

import math

import numpy as np

from kit import paint, samples, scene, sound, video
from kit.music import Song
from kit.package import Template, text_input, video_input

WIDTH, HEIGHT, FRAMES = 720, 1280, 120
LAST = FRAMES - 1
FILM = (560, 700)
CARD = (700, 980)  # with its shadow
INK, SEA, DEEP, FOAM, SAND, CORAL = "#23404a", "#2a9d9a", "#0f5c6e", "#e8f7f3", "#f6e2b8", "#f2765b"


def build(root):
    template = Template(root, "sea-postcard", 1900, ("Postcard from the sea", "海边明信片", "海からのはがき"))
    template.inputs = [video_input("clip", 4, 5, ("A film of 4 seconds or more", "四秒以上的视频", "4秒以上の動画")),
                       text_input("title", 24, 1, ("Title", "标题", "タイトル")),
                       text_input("message", 60, 2, ("Your message", "祝福语", "メッセージ"))]
    for name, picture in (("shore", shore()), ("card", card()), ("empty", empty()), ("rim", rim()), ("tape", tape()),
                          ("starfish", starfish()), ("shell", shell()), ("wave-0", wave(0)), ("wave-1", wave(1))):
        paint.save_png(picture, template.file(f"res/{name}.png"))
    template.scene("scene.plist", FRAMES, scene_file())
    sample_film(template.file("sample/clip.mp4"))
    template.samples({"clip": "clip.mp4", "title": "Sun, salt & sail", "message": "Wish you were here!\nSee you on Sunday"})
    sounds(template)
    template.write()


# Pictures -----------------------------------------------------------------------------------------------------------

def shore():
    surface, pen = paint.canvas(WIDTH // 2, HEIGHT // 2)
    pen.scale(0.5, 0.5)
    pen.rectangle(0, 0, WIDTH, HEIGHT)
    paint.fill(pen, paint.linear((0, 0), (0, HEIGHT), ((0, "#8fd3d1"), (0.55, "#5bbcbb"), (0.8, SEA), (1, "#1f8288"))))
    samples.glow(pen, 600, 120, 460, "#fff6d8", 0.8)
    for i in range(9):
        y = 60 + 150 * i
        pen.move_to(-40, y)
        for x in range(-40, WIDTH + 41, 40):
            pen.line_to(x, y + 12 * math.sin(x / 70 + i))
        paint.stroke(pen, paint.colour("#ffffff", 0.1), 10)
    return surface


def card():
    surface, pen = paint.canvas(*CARD)
    paint.rounded(pen, 34, 28, 632, 912, 14)
    paint.fill(pen, paint.linear((0, 28), (0, 940), ((0, "#fffdf6"), (1, "#f6f1e4"))))
    return paint.with_shadow(surface, 14, 0.45, "#0b3540", (0, 10))


def empty():
    """Stands where no film is given."""
    surface, pen = paint.canvas(FILM[0] // 2, FILM[1] // 2)
    pen.rectangle(0, 0, *FILM)
    paint.fill(pen, paint.linear((0, 0), (0, FILM[1] / 2), ((0, "#bfe6e0"), (1, "#7cc6c2"))))
    x, y = FILM[0] / 4, FILM[1] / 4
    paint.circle(pen, x, y, 52)
    paint.fill(pen, paint.colour("#ffffff", 0.9))
    pen.move_to(x - 16, y - 25)
    pen.line_to(x + 28, y)
    pen.line_to(x - 16, y + 25)
    pen.close_path()
    paint.fill(pen, SEA)
    return surface


def rim():
    """The film lies a little below the paper."""
    surface, pen = paint.canvas(FILM[0] + 8, FILM[1] + 8)
    for inset, alpha in ((1.5, 0.5), (4.5, 0.22), (7.5, 0.1)):
        pen.rectangle(inset, inset, FILM[0] + 8 - 2 * inset, FILM[1] + 8 - 2 * inset)
        paint.stroke(pen, paint.colour(INK, alpha), 3)
    return surface


def tape():
    surface, pen = paint.canvas(230, 84)
    pen.rectangle(14, 14, 202, 56)
    paint.fill(pen, paint.colour(CORAL, 0.86))
    for i in range(7):
        pen.move_to(30 + 30 * i, 14)
        pen.line_to(14 + 30 * i, 70)
        paint.stroke(pen, paint.colour("#ffffff", 0.35), 6)
    return paint.with_shadow(surface, 4, 0.25, "#0b3540", (0, 4))


def starfish():
    surface, pen = paint.canvas(220, 220)
    tips = [(110 + r * math.cos(a), 110 + r * math.sin(a))
            for i in range(10) for a, r in ((-math.pi / 2 + math.pi * i / 5, 92 if i % 2 == 0 else 42),)]
    paint.smooth(pen, tips, closed=True)
    paint.fill(pen, paint.radial((96, 92), 120, ((0, "#ffb08f"), (0.6, CORAL), (1, "#d9563d"))))
    for i in range(5):
        angle = -math.pi / 2 + 2 * math.pi * i / 5
        for step in range(1, 6):
            paint.circle(pen, 110 + 14 * step * math.cos(angle), 110 + 14 * step * math.sin(angle), 5 - 0.6 * step)
            paint.fill(pen, paint.colour("#ffe3d3", 0.9))
    return paint.with_shadow(surface, 7, 0.4, "#0b3540", (0, 6))


def shell():
    surface, pen = paint.canvas(200, 200)
    for i in range(7):
        angle = math.pi * (0.12 + 0.76 * i / 6)
        pen.move_to(100, 168)
        pen.curve_to(100 - 100 * math.cos(angle - 0.1), 150 - 60 * math.sin(angle), 100 - 92 * math.cos(angle - 0.05),
                     150 - 120 * math.sin(angle), 100 - 84 * math.cos(angle), 160 - 128 * math.sin(angle))
        pen.curve_to(100 - 60 * math.cos(angle + 0.22), 160 - 132 * math.sin(angle + 0.1), 100 - 70 * math.cos(angle + 0.3),
                     150 - 80 * math.sin(angle), 100, 168)
        paint.fill(pen, paint.linear((100, 30), (100, 170), ((0, "#fff7ea"), (0.5, "#ffd9c0"), (1, "#f1a788"))))
    for side in (-1, 1):
        paint.ellipse(pen, 100 + 20 * side, 168, 22, 12, 0.3 * side)
        paint.fill(pen, "#f1a788")
    return paint.with_shadow(surface, 7, 0.4, "#0b3540", (0, 6))


def wave(kind):
    surface, pen = paint.canvas(1000, 190)
    crest = lambda x: 46 + 16 * math.sin(2 * math.pi * x / 250 + 2 * kind) + 7 * math.sin(2 * math.pi * x / 125)
    pen.move_to(0, 190)
    for x in range(0, 1001, 4):
        pen.line_to(x, crest(x))
    pen.line_to(1000, 190)
    pen.close_path()
    tint = ("#1c7f8c", DEEP)[kind]
    paint.fill(pen, paint.linear((0, 30), (0, 190), ((0, paint.mix(tint, "#ffffff", 0.12)), (1, tint))))
    pen.move_to(0, crest(0))
    for x in range(0, 1001, 4):
        pen.line_to(x, crest(x))
    paint.stroke(pen, paint.colour(FOAM, 0.85), 7)
    return surface


# The scene ----------------------------------------------------------------------------------------------------------

def scene_file():
    back = scene.quad(scene.image("res/shore.png"), scene.box(WIDTH, HEIGHT), scene.span(0, LAST, 300), "shore")
    return {"Camera": scene.orthographic(WIDTH, HEIGHT), "TimeSource": scene.null_clock(FRAMES),
            "object3D": [back, postcard(), *waves(), *finds(), message()]}


def postcard():
    """The film is there from the first frame on; the card sways about its tape."""
    fps = scene.span(0, LAST)
    part = lambda name, size, at: scene.quad(scene.image(f"res/{name}.png"), scene.box(*size, at=at), fps, name)
    place = (0, -421, 0)
    film = scene.quad(scene.user_video("clip", volume=0.8), scene.box(*FILM, at=place), fps, "film")
    title = scene.quad(scene.words("title", 62, 530, 110, INK, "Noto Serif Display Bold"),
                       scene.box(530, 110, 1, at=(0, -850, 0)), fps, "title")
    parts = [part("card", CARD, (0, -495, 0)), part("empty", FILM, place), film,
             part("rim", (FILM[0] + 8, FILM[1] + 8), place), title, part("tape", (230, 84), (0, -28, 0))]
    return scene.group(scene.span(0, LAST, 120), parts, "postcard", TransformArray=scene.still(0, (0, 590, 0)),
                       MutableTransformArray=scene.swing("rotate", 0, LAST, 49, (0, 0, -1.6), (0, 0, 1.4)))


def waves():
    """Two rows that drift against each other along the lower edge."""
    rows = ((0, -612, 60, -60, 90), (1, -646, -80, 60, 80))
    return [scene.quad(scene.image(f"res/wave-{kind}.png"), scene.box(1000, 190), scene.span(0, LAST, depth), f"wave {kind}",
                       MutableTransformArray=[scene.glide("translate", 0, LAST, (start, y, 0), (end, y, 0), scene.SINE_IN_OUT)])
            for kind, y, start, end, depth in rows]


def finds():
    """A starfish and a shell, thrown onto the picture one after the other."""
    out = []
    for name, at, first, turn, size in (("starfish", (-272, 560, 0), 18, -16, 150), ("shell", (292, -330, 0), 30, 14, 126)):
        motion = scene.Motion(first, at, 0.001, turn - 120).to(first + 20, scale=1.0, rotate=turn, ease=scene.BACK_OUT)
        out.append(scene.quad(scene.image(f"res/{name}.png"), scene.box(size, size), scene.span(first, LAST, 60), name,
                              TransformArray=motion.items(),
                              ComponentsInfo=[scene.sound("res/pop.mp3", first, first + 8, name, 0.35)]))
    return out


def message():
    text = scene.words("message", 46, 640, 130, "#ffffff", "Noto Sans")
    motion = scene.Motion(8, (0, -520, 0)).to(34, at=(0, -468, 0), ease=scene.CUBIC_OUT)
    return scene.faded(text, scene.box(640, 130, 1), scene.span(8, LAST, 40), "message", [scene.fade(8, 26, 0, 1)],
                       TransformArray=motion.items())


# The sample film ----------------------------------------------------------------------------------------------------

def sample_film(path):
    """Lying, at 25 frames a second and longer than its place, as a person's own film would be."""
    width, height, fps, frames = 640, 480, 25, 150
    with video.Video(path, width, height, fps, quality=27, sound=surf(frames / fps)) as out:
        for frame in range(frames):
            out.frame(sea_frame(width, height, frame / fps))


def sea_frame(width, height, t):
    surface, pen = paint.canvas(width, height)
    pen.rectangle(0, 0, width, height)
    paint.fill(pen, paint.linear((0, 0), (0, 290), ((0, "#5fb4e6"), (0.7, "#bfe4f2"), (1, "#fdf0d2"))))
    samples.glow(pen, 400, 120, 200, "#fff4c8", 0.9)
    paint.circle(pen, 400, 120, 36)
    paint.fill(pen, "#fff7d6")
    gulls(pen, t)
    for row in range(7):
        if row == 2:
            boat(pen, 250 + 22 * t, 288 + 5 * math.sin(1.9 * t), 0.05 * math.sin(1.4 * t))
        sea_row(pen, width, height, row, t)
    return surface


def sea_row(pen, width, height, row, t):
    base, tall = 268 + 8 * row + 4 * row * row, 2 + 2.2 * row
    crest = lambda x: base + tall * math.sin(x / (26 + 9 * row) + (1.6 - 0.1 * row) * t * (1 if row % 2 else -1) + row)
    pen.move_to(0, height)
    for x in range(0, width + 1, 4):
        pen.line_to(x, crest(x))
    pen.line_to(width, height)
    pen.close_path()
    tint = paint.mix("#4fb3c4", "#0d5f78", row / 6)
    paint.fill(pen, tint)
    pen.move_to(0, crest(0))
    for x in range(0, width + 1, 4):
        pen.line_to(x, crest(x))
    paint.stroke(pen, paint.colour("#ffffff", 0.16 + 0.06 * row), 1.5 + 0.4 * row)


def boat(pen, x, y, lean):
    pen.save()
    pen.translate(x, y)
    pen.rotate(lean)
    pen.move_to(4, -16)
    pen.curve_to(70, -40, 84, -110, 8, -190)
    pen.close_path()
    paint.fill(pen, "#ffffff")
    pen.move_to(-6, -18)
    pen.curve_to(-44, -40, -58, -90, -6, -168)
    pen.close_path()
    paint.fill(pen, CORAL)
    pen.move_to(0, 0)
    pen.line_to(0, -196)
    paint.stroke(pen, "#6b4a2f", 5)
    pen.move_to(-78, -10)
    pen.line_to(86, -10)
    pen.curve_to(72, 34, -56, 34, -78, -10)
    paint.fill(pen, "#8a3b2a")
    pen.move_to(-74, -2)
    pen.line_to(80, -2)
    paint.stroke(pen, "#f6e2b8", 5)
    pen.restore()


def gulls(pen, t):
    for x, y, phase in ((160, 96, 0), (206, 52, 1.3), (440, 190, 2.4)):
        flap = 9 * math.sin(6 * t + phase)
        px, py = x + 14 * t, y + 6 * math.sin(t + phase)
        pen.move_to(px - 22, py - flap)
        pen.curve_to(px - 12, py - 9, px - 4, py - 4, px, py)
        pen.curve_to(px + 4, py - 4, px + 12, py - 9, px + 22, py - flap)
        paint.stroke(pen, "#4b5a66", 3)


def surf(seconds):
    """Waves that roll in every two seconds, and a gull."""
    out = sound.Mix(seconds)
    t = sound.clock(seconds)
    for seed, pan in ((4, -0.6), (9, 0.6)):
        noise = np.random.default_rng(seed).normal(0, 1, len(t))
        swell = 0.25 + 0.75 * np.sin(np.pi * (t + 0.3 * pan) / 2.2) ** 4
        out.add(sound.band(noise, 120, 900) * swell + 0.5 * sound.band(noise, 1500, 6000) * swell ** 2, 0, 0.5, pan)
    for at in (1.1, 1.45, 4.0):
        length = sound.clock(0.28)
        cry = np.sin(2 * np.pi * (1500 * length - 900 * length ** 2)) + 0.4 * np.sin(4 * np.pi * (1500 * length - 900 * length ** 2))
        out.add(cry * sound.swell(length, 0.04, 0.12), at, 0.18, 0.3)
    return out.mastered(-18.0)


def sounds(template):
    song = Song(("C3: E4 G4 C5", "A2: E4 A4 C5", "F2: F4 A4 C5", "G2: D4 G4 B4"), 96)
    song.strums(((0, True), (1, False), (1.5, True), (2.5, False), (3, True)), 0.08).bass(((0, 1.2), (2, 0.9)), 0.2)
    song.tune("G5@0 E5@1 C5@2 D5@3 E5@4 C5@6 A5@8 G5@9 F5@10 E5@11 D5@12 B4@14", sound.pluck, 0.12)
    song.save(template.file("bg-audio.mp3"), 1.2, 0.16)
    sound.save_effect(template.file("res/pop.mp3"), sound.pop(440))
