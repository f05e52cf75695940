"""birthday-cake: picture sequences, in PNG and in every uncompressed PVR format, on and around a cake."""

import math

from kit import paint, pvr, samples, scene, sound
from kit.music import Song
from kit.package import Template, photo_input, text_input

WIDTH, HEIGHT, FRAMES = 720, 1280, 180
LAST = FRAMES - 1
OUT = 132  # the candles go out here
PINK, CREAM, MINT, BERRY = "#f59bb6", "#fff3e4", "#8fd6c3", "#c2335f"


def build(root):
    template = Template(root, "birthday-cake", 1600, ("Birthday Cake", "生日蛋糕", "バースデーケーキ"))
    template.inputs = [text_input("title", 24, 2, ("Title", "标题", "タイトル")),
                       text_input("name", 16, 1, ("Name", "名字", "名前")),
                       photo_input("photo", 1, 1, ("A photo", "照片", "写真"))]
    pictures(template)
    sequences(template)
    template.scene("scene.plist", FRAMES, scene_file())
    paint.save_jpeg(samples.portrait(900, 900), template.file("sample/photo.jpg"))
    template.samples({"title": "Happy\nBirthday", "name": "Mira", "photo": "photo.jpg"})
    music(template)
    template.write()


# Pictures -----------------------------------------------------------------------------------------------------------

def pictures(template):
    for name, picture in (("cake", cake()), ("candle", candle()), ("rim", rim()), ("empty", empty()), ("garland", garland()),
                          ("disc", disc())):
        paint.save_png(picture, template.file(f"res/{name}.png"))
    pvr.write(template.file("res/wall0.pvr.gz"), wall(), "rgb565")
    pvr.write(template.file("res/table0.pvr.gz"), table(), "rgb888", levels=4)
    pvr.write(template.file("res/shade0.pvr"), shade(), "a8")
    pvr.write(template.file("res/glow0.pvr.gz"), glow("#ffb469"), "rgb888")
    pvr.write(template.file("res/haze0.pvr.gz"), glow("#ffffff"), "l8")
    pvr.write(template.file("res/star0.pvr"), star(), "la88")


def wall():
    surface, pen = paint.canvas(256, 512)
    pen.rectangle(0, 0, 256, 512)
    paint.fill(pen, paint.radial((128, 210), 360, ((0, "#5a4a86"), (0.55, "#3b2f66"), (1, "#1f1a40"))))
    return surface


def table():
    surface, pen = paint.canvas(512, 128)
    pen.rectangle(0, 0, 512, 128)
    paint.fill(pen, paint.linear((0, 0), (0, 128), ((0, "#8a5a4a"), (0.08, "#6d4238"), (1, "#3a2026"))))
    for y in (34, 62, 98):
        pen.move_to(0, y)
        pen.curve_to(160, y - 6, 330, y + 7, 512, y - 2)
        paint.stroke(pen, paint.colour("#2a1418", 0.35), 2)
    return surface


def shade():
    surface, pen = paint.canvas(256, 64)
    pen.save()
    pen.scale(1, 0.25)
    paint.circle(pen, 128, 128, 124)
    paint.fill(pen, paint.radial((128, 128), 124, ((0, "#000000", 0.75), (0.6, "#000000", 0.5), (1, "#000000", 0))))
    pen.restore()
    return surface


def glow(tint):
    """Light on black, to be added to what is there."""
    surface, pen = paint.canvas(256, 256, "#000000")
    samples.glow(pen, 128, 128, 128, tint, 1.0)
    return surface


def star():
    surface, pen = paint.canvas(64, 64)
    samples.glow(pen, 32, 32, 30, "#ffffff", 0.45)
    paint.star(pen, 32, 32, 4, 3.5, 27)
    paint.fill(pen, "#ffffff")
    return surface


def cake():
    surface, pen = paint.canvas(640, 520)
    paint.ellipse(pen, 320, 470, 300, 40)
    paint.fill(pen, "#d9e4ea")
    paint.ellipse(pen, 320, 460, 300, 38)
    paint.fill(pen, "#f7fbfd")
    layer(pen, 230, 330, 130, "#a35a3c", PINK, 11)
    layer(pen, 170, 190, 120, "#b8693f", CREAM, 9)
    for i in range(13):
        angle = math.pi * (i + 0.5) / 13
        paint.circle(pen, 320 - 206 * math.cos(angle), 330 + 34 * math.sin(angle), 15)
        paint.fill(pen, paint.radial((316 - 206 * math.cos(angle), 324 + 34 * math.sin(angle)), 17, ((0, "#ff7f9f"), (1, BERRY))))
    sprinkles(pen)
    return paint.with_shadow(surface, 8, 0.35, "#12081c", (0, 6))


def layer(pen, half, top, high, side, icing, drops):
    """One round of sponge with icing that runs down its side."""
    squash = 0.17
    body = paint.linear((320 - half, 0), (320 + half, 0), ((0, paint.mix(side, "#2a1010", 0.35)), (0.35, paint.mix(side, "#ffffff", 0.1)),
                                                          (1, paint.mix(side, "#2a1010", 0.45))))
    pen.rectangle(320 - half, top, 2 * half, high)
    paint.fill(pen, body)
    paint.ellipse(pen, 320, top + high, half, half * squash)
    paint.fill(pen, body)
    pen.rectangle(320 - half, top + high * 0.55, 2 * half, 12)
    paint.fill(pen, paint.colour(CREAM, 0.85))
    coat = paint.linear((320 - half, 0), (320 + half, 0), ((0, paint.mix(icing, "#5a2040", 0.2)), (0.35, paint.mix(icing, "#ffffff", 0.3)),
                                                          (1, paint.mix(icing, "#5a2040", 0.3))))
    for i in range(drops):
        x = 320 - half + 2 * half * (i + 0.5) / drops
        long = high * (0.34 + 0.2 * math.sin(i * 2.4)) + half * squash * math.sqrt(max(0, 1 - ((x - 320) / half) ** 2))
        paint.rounded(pen, x - half / drops - 1, top - 4, 2 * half / drops + 2, long, half / drops)
        paint.fill(pen, coat)
    paint.ellipse(pen, 320, top, half, half * squash)
    paint.fill(pen, paint.linear((0, top - 40), (0, top + 40), ((0, paint.mix(icing, "#ffffff", 0.55)), (1, icing))))


def sprinkles(pen):
    random = paint.scattered(9)
    for _ in range(60):
        angle, r = random.uniform(0, 6.28), math.sqrt(random.random())
        paint.ellipse(pen, 320 + 150 * r * math.cos(angle), 190 + 23 * r * math.sin(angle), 5, 1.8, random.uniform(0, 3))
        paint.fill(pen, random.choice((PINK, MINT, "#ffd166", BERRY)))


def candle():
    surface, pen = paint.canvas(64, 192)
    pen.rectangle(30, 0, 3, 24)
    paint.fill(pen, "#3a2a2a")
    paint.rounded(pen, 20, 18, 24, 170, 6)
    paint.fill(pen, paint.linear((20, 0), (44, 0), ((0, "#d8eef0"), (0.4, "#ffffff"), (1, "#a9cdd4"))))
    pen.rectangle(20, 24, 24, 160)
    pen.clip()
    for i in range(6):
        pen.move_to(14, 50 + 30 * i)
        pen.line_to(50, 30 + 30 * i)
        paint.stroke(pen, "#ff6f91", 9)
    return surface


def rim():
    surface, pen = paint.canvas(512, 512)
    paint.circle(pen, 256, 256, 226)
    paint.stroke(pen, "#ffe2a6", 12)
    paint.circle(pen, 256, 256, 240)
    paint.stroke(pen, paint.colour("#fff6df", 0.8), 3)
    return surface


def empty():
    surface, pen = paint.canvas(512, 512)
    paint.circle(pen, 256, 256, 222)
    paint.fill(pen, paint.linear((0, 0), (0, 512), ((0, "#f7b6c9"), (1, "#8fd6c3"))))
    paint.heart(pen, 256, 256, 84)
    paint.fill(pen, paint.colour("#ffffff", 0.85))
    return surface


def disc():
    """The mask of the photo: white shows."""
    surface, pen = paint.canvas(512, 512, "#000000")
    paint.circle(pen, 256, 256, 254)
    paint.fill(pen, "#ffffff")
    return surface


def garland():
    surface, pen = paint.canvas(760, 150)
    pen.move_to(0, 10)
    pen.curve_to(250, 120, 510, 120, 760, 10)
    paint.stroke(pen, paint.colour("#141026", 0.9), 4)
    for i in range(11):
        t = (i + 0.5) / 11
        x, y = 760 * t, 10 * (1 - t) ** 3 + 360 * t * (1 - t) ** 2 + 360 * t * t * (1 - t) + 10 * t ** 3
        samples.glow(pen, x, y + 16, 40, ("#ffd98c", "#ff9db8", "#9be8d8")[i % 3], 0.6)
        paint.ellipse(pen, x, y + 16, 9, 12)
        paint.fill(pen, ("#fff1c4", "#ffd3df", "#d9fff4")[i % 3])
    return surface


# Sequences ----------------------------------------------------------------------------------------------------------

def sequences(template):
    for i in range(12):
        pvr.write(template.file(f"res/flame/flame{i + 1:02d}.pvr.gz"), flame(i / 12), "rgba4444")
    for i in range(16):
        pvr.write(template.file(f"res/smoke/smoke{i}.pvr.gz"), smoke(i / 16), "rgba8888")
    for i in range(10):
        paint.save_png(fountain(i), template.file(f"res/spark/spark{i + 1}.png"))
    for i in range(8):
        pvr.write(template.file(f"res/present/present{i}.pvr.gz"), present(i / 7), "bgra8888")
    for i in range(6):
        pvr.write(template.file(f"res/bit/bit{i}.pvr"), bit(i), "rgba5551")


def flame(turn):
    """A flame that bends; the sequence closes."""
    surface, pen = paint.canvas(64, 128)
    wave = 2 * math.pi * turn
    lean, high = 5 * math.sin(wave), 1 + 0.1 * math.sin(2 * wave + 1)
    for size, tint, alpha in ((1.0, "#ff8a2b", 0.85), (0.74, "#ffc042", 0.95), (0.45, "#fff4c2", 1.0)):
        tip = 112 - 96 * high * size
        pen.move_to(32, 116)
        pen.curve_to(32 - 30 * size, 100, 32 - 22 * size, 70, 32 + lean * size, tip)
        pen.curve_to(32 + 20 * size + lean, 66, 32 + 30 * size, 100, 32, 116)
        pen.close_path()
        paint.fill(pen, paint.colour(tint, alpha))
    paint.ellipse(pen, 32, 108, 6, 9)
    paint.fill(pen, paint.colour("#6fa8ff", 0.55))
    return paint.blur_surface(surface, 1.8)


def smoke(age):
    surface, pen = paint.canvas(96, 192)
    for i in range(16):
        t = i / 15
        y = 186 - 170 * t * (0.25 + 0.75 * age) - 20 * age
        x = 48 + 22 * math.sin(t * 5 + age * 5) * t
        radius = 5 + 20 * t * (0.4 + age)
        samples.glow(pen, x, y, radius, "#e9e4f4", 0.3 * (1 - age) * (1 - 0.5 * t))
    return surface


def fountain(index):
    """Sparks that fly higher from picture to picture; played to and fro."""
    surface, pen = paint.canvas(192, 256)
    random = paint.scattered(3)
    reach = 0.55 + 0.45 * index / 9
    for i in range(46):
        angle = random.uniform(-0.6, 0.6)
        t = (random.random() + index * 0.13) % 1.0
        length = 190 * reach * t * random.uniform(0.6, 1.05)
        x, y = 96 + length * math.sin(angle), 240 - length * math.cos(angle) + 50 * t * t
        samples.glow(pen, x, y, 9, "#ffd66b", 0.85 * (1 - t))
        paint.circle(pen, x, y, 1.8 * (1.2 - t))
        paint.fill(pen, paint.colour("#fffbe6", 1 - 0.7 * t))
    return surface


def present(open_):
    """A box whose lid lifts."""
    surface, pen = paint.canvas(160, 192)
    paint.rounded(pen, 24, 92, 112, 92, 6)
    paint.fill(pen, paint.linear((24, 0), (136, 0), ((0, "#4bb5a2"), (1, "#2f8a82"))))
    pen.rectangle(70, 92, 20, 92)
    paint.fill(pen, "#ffd166")
    if open_ > 0.3:
        samples.glow(pen, 80, 90, 70 * open_, "#fff3b0", 0.8 * open_)
    pen.translate(20, 92)
    pen.rotate(-0.5 * open_)
    pen.translate(0, -14 - 18 * open_)
    paint.rounded(pen, -4, -14, 128, 28, 5)
    paint.fill(pen, "#5fcbb6")
    pen.rectangle(50, -14, 20, 28)
    paint.fill(pen, "#ffd166")
    for side in (-1, 1):
        paint.ellipse(pen, 60 + side * 20, -26, 20, 11, side * -0.4)
        paint.stroke(pen, "#ffd166", 7)
    return surface


def bit(index):
    """One turn of a square of paper."""
    surface, pen = paint.canvas(64, 64)
    angle = math.pi * index / 6
    pen.translate(32, 32)
    pen.rotate(0.6 + angle)
    pen.rectangle(-20, -20 * abs(math.cos(angle)) - 2, 40, 40 * abs(math.cos(angle)) + 4)
    paint.fill(pen, paint.mix("#ff7aa2", "#ffe08a", abs(math.cos(angle))))
    return surface


# The scene ----------------------------------------------------------------------------------------------------------

def series(name, first, last, extension, each, kind=0, to_and_fro=False, zero=False):
    return {"textureType": "textureSerial", "imageType": kind, "animationName": scene.ROOT + name, "animationStart": first,
            "animationEnd": last, "animationFps": float(each), "animationExtension": extension, "isFristZero": zero,
            "isLastLoop": to_and_fro}


def still_pvr(name, extension="pvr.gz"):
    return series(f"res/{name}", 0, 0, extension, FRAMES, kind=2)


CANDLES = ((-92, 0), (-46, 10), (0, 14), (46, 10), (92, 0))
CAKE = (0, -298)


def scene_file():
    nodes = [*room(), photo(), *captions(), whole_cake(), *gifts(), *stars(), *papers()]
    return {"Camera": scene.orthographic(WIDTH, HEIGHT), "TimeSource": scene.null_clock(FRAMES), "object3D": nodes}


def room():
    fps = lambda depth: scene.span(0, LAST, depth)
    back = scene.quad(still_pvr("wall"), scene.box(WIDTH, HEIGHT), fps(300), "wall")
    board = scene.quad(still_pvr("table"), scene.box(WIDTH, 190, at=(0, -545, 0)), fps(290), "table")
    lights = scene.quad(scene.image("res/garland.png"), scene.box(760, 150), fps(200), "garland",
                        TransformArray=scene.Motion(0, (0, 592, 0)).to(34, at=(0, 570, 0), ease=scene.BACK_OUT).items())
    haze = scene.node("QVQuadBlendObject3D", fps(285), "haze", TextureInfo=still_pvr("haze"),
                      QuadInfo=scene.box(1000, 1000, at=(0, 160, 0)), BlendInfo={"srcBlend": 770, "decBlend": 1},
                      AnimationInfo=[scene.fade(0, 40, 0.06, 0.14)])
    warm = scene.node("QVQuadBlendObject3D", scene.span(30, LAST, 280), "warm light", TextureInfo=still_pvr("glow"),
                      QuadInfo=scene.box(1100, 1100, at=(0, -140, 0)), BlendInfo={"srcBlend": 770, "decBlend": 1},
                      AnimationInfo=[scene.fade(30, 60, 0, 0.3), scene.fade(61, OUT - 1, 0.3, 0.34), scene.fade(OUT, OUT + 14, 0.34, 0.08)])
    return [back, board, lights, haze, warm]


def photo():
    motion = scene.Motion(0, (0, 148, 0), 0.84).to(44, scale=1.0, ease=scene.BACK_OUT)
    fps = scene.span(0, LAST)
    parts = [scene.quad(scene.image("res/empty.png"), scene.box(400, 400), fps, "empty"),
             scene.node("QVQuadMaskObject3D", fps, "photo", TextureInfo=scene.user_image("photo"), QuadInfo=scene.box(349, 349),
                        MaskInfo=scene.image("res/disc.png"), AnimationInfo=[
                            {"sartFps": 0, "endFps": 26, "ease": scene.SINE_OUT, "startMaskAlpha": 0.8, "endMaskAlpha": 1.0}]),
             scene.quad(scene.image("res/rim.png"), scene.box(400, 400), fps, "rim")]
    return scene.group(scene.span(0, LAST, 150), parts, "photo frame", TransformArray=motion.items(),
                       MutableTransformArray=scene.swing("translate", 45, LAST, 44, (0, 0, 0), (0, 12, 0)))


def captions():
    top = scene.faded(scene.words("title", 61, 560, 146, "#ffe2a6"), scene.box(560, 146, 1), scene.span(40, LAST, 20), "title",
                      [scene.fade(40, 56, 0, 1)], TransformArray=scene.Motion(40, (0, 446, 0), 0.7).to(
                          66, scale=1.0, ease=scene.BACK_OUT).items())
    name = scene.faded(scene.words("name", 56, 400, 80, "#ffffff"), scene.box(400, 80, 1), scene.span(60, LAST, 20), "name",
                       [scene.fade(60, 78, 0, 1)], TransformArray=scene.Motion(60, (0, -618, 0)).to(84, at=(0, -588, 0)).items())
    return [top, name]


def whole_cake():
    """Cake, candles and flames rise as one."""
    fps = scene.span(0, LAST)
    parts = [scene.quad(still_pvr("shade", "pvr"), scene.box(660, 110, at=(0, -218, 0)), fps, "shade"),
             scene.quad(scene.image("res/cake.png"), scene.box(600, 488), fps, "cake")]
    for i, (x, low) in enumerate(CANDLES):
        parts.append(scene.quad(scene.image("res/candle.png"), scene.box(36, 108, at=(x, 118 - low, 0)), fps, "candle"))
    for i, (x, low) in enumerate(CANDLES):
        parts += flames(i, x, 118 - low + 54)
    return scene.group(scene.span(0, LAST, 100), parts, "whole cake", TransformArray=scene.Motion(0, (0, -390, 0)).hold(7).to(
        44, at=(*CAKE, 0), ease=scene.BACK_OUT).items(),
        ComponentsInfo=[scene.sound("res/blow.mp3", OUT - 10, OUT + 20, "blow", 0.8)])


def flames(i, x, y):
    """A flame burns until it is blown out; then smoke rises. The first picture differs from candle to candle."""
    lit, out = 48 + 5 * i, OUT + 2 * i
    info = {"animationFps": 2.0, "animationStart": 1 + 2 * i, "animationEnd": 12, "animationName": scene.ROOT + "res/flame/flame",
            "animationExtension": "pvr.gz", "isFristZero": True, "isLastLoop": False}
    flame_node = scene.node("QVPvrTextureSerialQuadObject3D", scene.span(lit, out), "flame", PvrTextureSerialInfo=info,
                            QuadInfo=scene.box(36, 72, at=(x, y + 26, 0)))
    trail = scene.quad(series("res/smoke/smoke", 0, 15, "pvr.gz", 2.6, kind=2), scene.box(72, 144, at=(x, y + 64, 0)),
                       scene.span(out + 1, min(LAST, out + 41)), "smoke")
    halo = scene.node("QVQuadBlendObject3D", scene.span(lit, out), "halo", TextureInfo=still_pvr("glow"),
                      QuadInfo=scene.box(190, 190, at=(x, y + 24, 0)), BlendInfo={"srcBlend": 770, "decBlend": 1},
                      AnimationInfo=[scene.fade(lit, lit + 8, 0, 0.4), scene.fade(lit + 9, out, 0.4, 0.3)])
    return [halo, flame_node, trail]


def gifts():
    """Presents whose lids go up and down, and two fountains of sparks."""
    out = []
    for side, first in ((-1, 56), (1, 66)):
        box_ = scene.quad(series("res/present/present", 0, 7, "pvr.gz", 4, kind=2, to_and_fro=True), scene.box(150, 180),
                          scene.span(first, LAST, 90), "present",
                          TransformArray=scene.Motion(first, (side * 470, -500, 0)).to(first + 30, at=(side * 282, -510, 0),
                                                                                       ease=scene.BACK_OUT).items())
        spark = scene.quad(series("res/spark/spark", 1, 10, "png", 2, to_and_fro=True), scene.box(240, 320),
                           scene.span(first + 20, LAST, 95), "sparks", TransformArray=scene.still(first + 20, (side * 262, -310, 0)))
        out += [spark, box_]
    return out


def stars():
    random = paint.scattered(6)
    return [twinkle(random, 4 * i) for i in range(14)]


def twinkle(random, first):
    # Beside the title and the photo, not behind them.
    spot = (random.choice((-1, 1)) * random.uniform(215, 345), random.uniform(-40, 345), 0)
    size = random.uniform(24, 60)
    blink = scene.swing("scale", first, LAST, random.randint(10, 22), (0.2, 0.2, 1), (1, 1, 1))
    inner = scene.quad(still_pvr("star", "pvr"), scene.box(size, size), scene.span(first, LAST), "star", MutableTransformArray=blink)
    return scene.group(scene.span(first, LAST, 250), [inner], TransformArray=scene.still(first, spot))


def papers():
    random = paint.scattered(15)
    return [paper(random, i) for i in range(20)]


def paper(random, i):
    first = OUT + 4 + i
    last = LAST
    x, size = random.uniform(-340, 340), random.uniform(30, 52)
    fall = scene.glide("translate", first, last, (x, 700, 0), (x + random.uniform(-120, 120), random.uniform(-400, 200), 0), scene.SINE_IN)
    return scene.quad(series("res/bit/bit", 0, 5, "pvr", random.choice((2, 3)), kind=2), scene.box(size, size),
                      scene.span(first, last, 160), "paper", MutableTransformArray=[fall])


def music(template):
    song = Song(("C3: G4 C5 E5", "G2: G4 B4 D5", "A2: A4 C5 E5", "F2: A4 C5 F5"), 112)
    song.bass(((0, 1.2), (2, 1.2)), 0.24).arpeggio(sound.pluck, 2, 0.13, (0, 2, 1, 2)).drums((0, 2), (3,), 2, 0.8).pads(0.035)
    song.tune("G5@0 A5@0.75 G5@1.5 C6@2.5 B5@4 G5@5.5 D6@6.5 C6@8 E6@9.5 C6@10.5 A5@12 C6@13 F6@13.5 E6@15", level=0.13)
    song.save(template.file("bg-audio.mp3"), 1.6, 0.2)
    sound.save_effect(template.file("res/blow.mp3"), sound.whoosh(0.9, 200, 2600))
