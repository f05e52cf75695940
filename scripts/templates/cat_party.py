"""cat-party: a furry cat, filmed before green, dances in front of the user's photo."""

import math

import cairo

from kit import paint, samples, scene, sound, video
from kit.music import Song
from kit.package import Template, photo_input, text_input

WIDTH, HEIGHT, FRAMES = 720, 1280, 180
LAST = FRAMES - 1
GREEN, PINK, YELLOW = "#00c832", "#ff5d8f", "#ffd166"
# Grey keys cleanly: a hair that the backdrop shines through holds no hue but the backdrop's.
SILVER = {"light": "#e4e6ec", "fur": "#c3c7d1", "dark": "#b4b8c4", "stripe": "#80859a", "eye": "#ffcf5c", "rim": "#c9741c"}
CW, CH = 540, 720


def build(root):
    template = Template(root, "cat-party", 1500, ("Cat Party", "猫咪派对", "ねこパーティー"))
    template.inputs = [text_input("title", 18, 1, ("Title", "标题", "タイトル")),
                       text_input("message", 40, 1, ("Your message", "祝福语", "メッセージ")),
                       photo_input("photo", 1, 1, ("A photo", "照片", "写真"))]
    cat_video(template.file("res/cat.mp4"))
    pictures(template)
    sounds(template)
    template.scene("scene.plist", FRAMES, scene_file())
    paint.save_jpeg(samples.portrait(900, 900), template.file("sample/photo.jpg"))
    template.samples({"title": "Party time!", "message": "Saturday, 8 pm, bring snacks", "photo": "photo.jpg"})
    template.write()


# The dancer ---------------------------------------------------------------------------------------------------------

BEATS = 12  # in the loop of 180 frames: two a second


def cat_video(path):
    fur = [fur_ring(seed) for seed in (1, 2)]
    with video.Video(path, CW, CH, quality=20) as out:
        for frame in range(FRAMES + 3):
            out.frame(cat_frame(frame / FRAMES, fur))


def cat_frame(turn, fur):
    surface, pen = paint.canvas(CW, CH, GREEN)
    beat = turn * BEATS
    bounce = abs(math.sin(math.pi * beat))
    lean = math.sin(math.pi * beat)
    squash = 1 - 0.05 * (1 - bounce) ** 3
    pen.translate(CW / 2, CH - 10)
    pen.scale(0.9 / squash, 0.9 * squash)
    tail(pen, lean)
    body(pen, fur[1], bounce)
    arm(pen, -1, 0.5 + 0.25 * lean)
    arm(pen, 1, 2.2 + 0.45 * math.sin(2 * math.pi * beat))
    head(pen, fur[0], lean, bounce)
    return surface


def fur_ring(seed):
    """Hairs around a circle: angle, length, width, tint, opacity."""
    random = paint.scattered(seed)
    return [(2 * math.pi * i / 420 + random.uniform(-0.01, 0.01), random.uniform(14, 38), random.uniform(1.0, 2.6),
             random.choice(("#c9ccd6", "#b4b8c4", "#e4e6ec", "#a3a8b6")), random.uniform(0.55, 1.0)) for i in range(420)]


def hairs(pen, ring, x, y, width, height, sway):
    """Hairs that stand off an ellipse and are thin at their ends."""
    for angle, length, thick, tint, alpha in ring:
        edge = (x + 0.97 * width * math.cos(angle), y + 0.97 * height * math.sin(angle))
        tip = angle + 0.12 * math.sin(angle * 5) + sway
        end = (edge[0] + length * math.cos(tip), edge[1] + length * math.sin(tip) + length * 0.15)
        nx, ny = -math.sin(angle) * thick, math.cos(angle) * thick
        pen.move_to(edge[0] + nx, edge[1] + ny)
        pen.line_to(*end)
        pen.line_to(edge[0] - nx, edge[1] - ny)
        pen.close_path()
        paint.fill(pen, paint.colour(tint, alpha))


def tail(pen, lean):
    pen.move_to(110, -60)
    pen.curve_to(230, -70, 220 + 40 * lean, -210, 190 + 70 * lean, -290)
    paint.stroke(pen, "#aeb3c0", 44)
    paint.circle(pen, 190 + 70 * lean, -290, 22)
    paint.fill(pen, "#fbfbfd")


def body(pen, ring, bounce):
    hairs(pen, ring, 0, -130, 148, 150 + 8 * bounce, 0)
    paint.ellipse(pen, 0, -130, 150, 152 + 8 * bounce)
    paint.fill(pen, paint.radial((-30, -180), 240, ((0, "#d9dbe3"), (1, "#aeb3c0"))))
    paint.ellipse(pen, 0, -110, 88, 108)
    paint.fill(pen, "#fbfbfd")
    for side in (-1, 1):
        paint.ellipse(pen, side * 82, -20, 62, 32)
        paint.fill(pen, "#c9ccd6")


def arm(pen, side, lift):
    """`lift` is the angle from hanging down, outwards."""
    pen.save()
    pen.translate(side * 118, -205)
    pen.rotate(-side * lift)
    pen.move_to(0, 0)
    pen.line_to(0, 118)
    paint.stroke(pen, "#b9bdc8", 58)
    paint.circle(pen, 0, 126, 34)
    paint.fill(pen, "#fbfbfd")
    for x in (-14, 0, 14):
        paint.ellipse(pen, x, 148, 6, 8)
        paint.fill(pen, "#f3a6a0")
    pen.restore()


def head(pen, ring, lean, bounce):
    pen.save()
    pen.translate(0, -372 - 14 * bounce)
    pen.rotate(0.1 * lean)
    hairs(pen, ring, 0, 6, 180, 152, 0.05 * lean)
    pen.scale(0.68, 0.68)
    pen.translate(-450, -430)
    samples.cat_head(pen, SILVER)
    hat(pen)
    pen.restore()


def hat(pen):
    pen.save()
    pen.translate(470, 232)
    pen.rotate(0.16)
    pen.move_to(-86, 10)
    pen.line_to(0, -200)
    pen.line_to(86, 10)
    pen.curve_to(40, 34, -40, 34, -86, 10)
    pen.close_path()
    pen.set_source_rgb(*paint.colour(PINK)[:3])
    pen.fill_preserve()
    pen.clip()
    for i in range(4):
        pen.move_to(-100, -20 - 56 * i)
        pen.line_to(100, -60 - 56 * i)
        paint.stroke(pen, YELLOW, 16)
    pen.reset_clip()
    paint.star(pen, 0, -206, 9, 18, 40)
    paint.fill(pen, "#ffffff")
    pen.restore()


# Pictures -----------------------------------------------------------------------------------------------------------

def pictures(template):
    for name, picture in (("wall", wall()), ("rays", rays()), ("bunting", bunting()), ("disc", disc()), ("ring", ring()),
                          ("empty", empty()), ("floor", floor()), ("plate", plate()), ("light", light())):
        paint.save_png(picture, template.file(f"res/{name}.png"))
    for i, tint in enumerate((PINK, YELLOW, "#4cc9f0")):
        paint.save_png(balloon(tint), template.file(f"res/balloon-{i}.png"))
        paint.save_png(streamer(tint, i), template.file(f"res/paper-{i}.png"))


def wall():
    surface, pen = paint.canvas(360, 640)
    pen.rectangle(0, 0, 360, 640)
    paint.fill(pen, paint.radial((180, 230), 470, ((0, "#9b4dca"), (0.5, "#6a2f9c"), (1, "#32155c"))))
    pen.rectangle(0, 560, 360, 80)
    paint.fill(pen, paint.linear((0, 560), (0, 640), ((0, "#2a1150"), (1, "#431d73"))))
    return surface


def rays():
    """Drawn with additive blending: bright on black."""
    surface, pen = paint.canvas(1024, 1024)
    for i in range(12):
        pen.move_to(512, 512)
        pen.arc(512, 512, 512, math.pi * i / 6, math.pi * i / 6 + math.pi / 12)
        pen.close_path()
    paint.fill(pen, paint.radial((512, 512), 512, ((0, "#ff9de0", 0.9), (0.6, "#c86bff", 0.35), (1, "#c86bff", 0))))
    return surface


def bunting():
    surface, pen = paint.canvas(760, 190)
    sag = lambda x: 26 + 66 * (1 - ((x - 380) / 380) ** 2)
    for i in range(11):
        x = 24 + 71 * i
        pen.move_to(x - 29, sag(x - 29))
        pen.line_to(x + 29, sag(x + 29))
        pen.line_to(x, sag(x) + 76)
        pen.close_path()
        paint.fill(pen, (PINK, YELLOW, "#4cc9f0", "#ffffff")[i % 4])
    pen.move_to(0, sag(0))
    for x in range(0, 761, 10):
        pen.line_to(x, sag(x))
    paint.stroke(pen, "#ffffff", 4)
    return paint.with_shadow(surface, 5, 0.35, "#1a0733", (0, 5))


def disc():
    surface, pen = paint.canvas(512, 512, "#000000")
    paint.circle(pen, 256, 256, 254)
    paint.fill(pen, "#ffffff")
    return surface


def ring():
    surface, pen = paint.canvas(640, 640)
    paint.circle(pen, 320, 320, 268)
    paint.stroke(pen, "#ffffff", 26)
    for i in range(28):
        angle = 2 * math.pi * i / 28
        paint.circle(pen, 320 + 268 * math.cos(angle), 320 + 268 * math.sin(angle), 7)
        paint.fill(pen, (PINK, "#4cc9f0")[i % 2])
    return paint.with_shadow(surface, 12, 0.45, "#1a0733", (0, 8))


def empty():
    surface, pen = paint.canvas(512, 512)
    paint.circle(pen, 256, 256, 254)
    paint.fill(pen, paint.linear((0, 0), (0, 512), ((0, "#ffb3cf"), (1, "#ffd9a0"))))
    paint.star(pen, 256, 256, 5, 60, 130)
    paint.fill(pen, paint.colour("#ffffff", 0.85))
    return surface


def floor():
    surface, pen = paint.canvas(512, 128)
    pen.save()
    pen.scale(1, 0.25)
    paint.circle(pen, 256, 256, 250)
    paint.fill(pen, paint.radial((256, 256), 250, ((0, "#12051f", 0.6), (0.5, "#12051f", 0.35), (1, "#12051f", 0))))
    pen.restore()
    return surface


def plate():
    surface, pen = paint.canvas(660, 110)
    paint.rounded(pen, 14, 12, 632, 80, 40)
    paint.fill(pen, paint.linear((0, 12), (0, 92), ((0, "#ff7aa5"), (1, "#f03c78"))))
    return paint.with_shadow(surface, 8, 0.4, "#1a0733", (0, 6))


def light():
    surface, pen = paint.canvas(256, 512)
    pen.move_to(128, 0)
    pen.line_to(250, 512)
    pen.line_to(6, 512)
    pen.close_path()
    paint.fill(pen, paint.linear((0, 0), (0, 512), ((0, "#fff3c4", 0.8), (0.7, "#fff3c4", 0.2), (1, "#fff3c4", 0))))
    return paint.blur_surface(surface, 7)


def balloon(tint):
    surface, pen = paint.canvas(160, 400)
    pen.move_to(80, 214)
    pen.curve_to(60, 270, 100, 320, 78, 390)
    paint.stroke(pen, paint.colour("#ffffff", 0.7), 2.5)
    pen.move_to(80, 196)
    pen.line_to(92, 216)
    pen.line_to(68, 216)
    pen.close_path()
    paint.fill(pen, paint.mix(tint, "#000000", 0.25))
    paint.ellipse(pen, 80, 104, 72, 96)
    paint.fill(pen, paint.radial((54, 66), 140, ((0, paint.mix(tint, "#ffffff", 0.55)), (0.4, tint), (1, paint.mix(tint, "#3a0a4a", 0.4)))))
    paint.ellipse(pen, 52, 62, 11, 24, 0.5)
    paint.fill(pen, paint.colour("#ffffff", 0.6))
    return surface


def streamer(tint, kind):
    surface, pen = paint.canvas(64, 64)
    if kind == 2:
        pen.move_to(12, 50)
        pen.curve_to(10, 10, 40, 56, 52, 14)
        paint.stroke(pen, tint, 9)
    else:
        paint.rounded(pen, 16, 22, 32, 20, 3 + 7 * kind)
        paint.fill(pen, tint)
    return surface


# The scene ----------------------------------------------------------------------------------------------------------

def scene_file():
    clock = {"type": "QVChromaKeyVideoBgObject",
             "VideoInfo": {"msaterVideoPath": scene.ROOT + "res/cat.mp4", "videoFps": 30}, "name": "cat",
             "ChromaKeyInfo": {"ChromaKeyColor": scene.vector(*paint.colour(GREEN)), "maxEclosion": 0.55},
             "FpsInfo": scene.span(0, LAST, 40), "QuadInfo": scene.box(560, 747),
             "TransformArray": scene.Motion(0, (0, -600, 0)).hold(11).to(40, at=(0, -262, 0)).to(52, at=(0, -272, 0), ease=scene.SINE_IN_OUT).items()}
    return {"Camera": scene.orthographic(WIDTH, HEIGHT), "TimeSource": clock,
            "object3D": [*stage(), photo(), *balloons(), *captions(), *burst()]}


def stage():
    fps = lambda depth: scene.span(0, LAST, depth)
    back = scene.quad(scene.image("res/wall.png"), scene.box(WIDTH, HEIGHT), fps(300), "wall")
    shine = scene.node("QVQuadBlendObject3D", fps(290), "rays", TextureInfo=scene.image("res/rays.png"),
                       QuadInfo=scene.box(1700, 1700), BlendInfo={"srcBlend": 770, "decBlend": 1},
                       AnimationInfo=[scene.fade(0, 40, 0.2, 0.32)],
                       MutableTransformArray=[scene.glide("translate", 0, LAST, (0, 160, 0), (0, 160, 0)),
                                              scene.glide("rotate", 0, LAST, (0, 0, 0), (0, 0, 60))])
    flags = scene.quad(scene.image("res/bunting.png"), scene.box(760, 190), fps(100), "bunting",
                       TransformArray=scene.Motion(0, (0, 606, 0)).to(30, at=(0, 586, 0), ease=scene.BOUNCE_OUT).items())
    ground = scene.faded(scene.image("res/floor.png"), scene.box(560, 110), scene.span(24, LAST, 60), "shadow",
                         [scene.fade(24, 48, 0, 1)], TransformArray=scene.still(24, (0, -604, 0)))
    return [back, shine, *(spot(side) for side in (-1, 1)), flags, ground]


def spot(side):
    """A beam that swings about its upper end."""
    beam = scene.node("QVQuadBlendObject3D", scene.span(0, LAST), "beam", TextureInfo=scene.image("res/light.png"),
                      QuadInfo=scene.box(420, 1300, at=(0, -650, 0)), BlendInfo={"srcBlend": 770, "decBlend": 1},
                      AnimationInfo=[scene.fade(0, 30, 0.1, 0.3)],
                      MutableTransformArray=scene.swing("rotate", 0, LAST, 44, (0, 0, side * 8), (0, 0, side * 40)))
    return scene.group(scene.span(0, LAST, 200), [beam], TransformArray=scene.still(0, (side * 300, 690, 0)))


def photo():
    # It is there from the first frame on, as many players stand on that one.
    motion = scene.Motion(0, (0, 160, 0), 0.86, 12).hold(7).to(48, scale=1.0, rotate=0, ease=scene.ELASTIC_OUT)
    fps, size = scene.span(0, LAST), scene.box(400, 400)
    blank = scene.quad(scene.image("res/empty.png"), size, fps, "empty")
    picture = scene.node("QVQuadMaskObject3D", fps, "photo", TextureInfo=scene.user_image("photo"), QuadInfo=size,
                         MaskInfo=scene.image("res/disc.png"))
    rim = scene.quad(scene.image("res/ring.png"), scene.box(502, 502), fps, "ring",
                     MutableTransformArray=[scene.glide("rotate", 0, LAST, (0, 0, 0), (0, 0, -70))])
    return scene.group(scene.span(0, LAST, 120), [blank, picture, rim], "photo frame", TransformArray=motion.items(),
                       ComponentsInfo=[scene.sound("res/pop.mp3", 10, 30, "pop", 0.6)])


def balloons():
    places = ((-270, 2, 0), (286, 1, 26), (-300, 0, 58), (250, 2, 84), (-200, 1, 112))
    return [rising(*place) for place in places]


def rising(x, kind, first):
    """Each balloon takes its own winding path upwards."""
    curve = scene.path(30001, ((x, -900), (x + 90, -420), (x - 110, 60), (x + 60, 520), (x - 20, 940)))
    last = min(LAST, first + 120)
    motion = scene.Motion(first, (x, -900, 0)).along(last, 30001, (x - 20, 940, 0))
    return scene.quad(scene.image(f"res/balloon-{kind}.png"), scene.box(130, 325), scene.span(first, last, 80), "balloon",
                      BezierArray=[curve], TransformArray=motion.items())


def captions():
    title = scene.faded(scene.words("title", 92, 630, 124, "#ffffff"), scene.box(630, 124, 1), scene.span(52, LAST, 20), "title",
                        [scene.fade(52, 60, 0, 1)], TransformArray=scene.Motion(52, (0, 450, 0), 1.5, -6).to(
                            74, scale=1.0, rotate=-3, ease=scene.BACK_OUT).items(),
                        ComponentsInfo=[scene.sound("res/horn.mp3", 54, 110, "horn", 0.5)])
    rise = lambda first, y: scene.Motion(first, (0, y - 200, 0)).to(first + 28, at=(0, y, 0), ease=scene.BACK_OUT).items()
    label = scene.quad(scene.image("res/plate.png"), scene.box(660, 110), scene.span(72, LAST, 30), "plate",
                       TransformArray=rise(72, -566))
    message = scene.faded(scene.words("message", 38, 570, 60, "#ffffff", "Noto Sans"), scene.box(570, 60, 1),
                          scene.span(72, LAST, 20), "message", TransformArray=rise(72, -563))
    return [title, label, message]


def burst():
    """Paper shot out of two corners: up quickly, down slowly."""
    random = paint.scattered(17)
    return [shot(random, i) for i in range(26)]


def shot(random, i):
    side, first = (-1, 1)[i % 2], 54 + i // 2
    top = (side * random.uniform(-60, 260), random.uniform(300, 640), 0)
    rise, last = first + 24, min(LAST, first + random.randint(90, 120))
    spin = (random.uniform(500, 1100), random.uniform(-700, 700), random.uniform(-360, 360))
    fall = (top[0] - side * random.uniform(0, 160), -700, 0)
    size = random.uniform(36, 60)
    moves = [scene.glide("translate", first, rise, (side * 380, -200, 0), top, scene.CUBIC_OUT),
             scene.glide("translate", rise + 1, last, top, fall, scene.SINE_IN),
             scene.glide("rotate", first, last, (0, 0, 0), spin)]
    return scene.quad(scene.image(f"res/paper-{i % 3}.png"), scene.box(size, size), scene.span(first, last, 125), "paper",
                      MutableTransformArray=moves)


def sounds(template):
    song = Song(("C3: E4 G4 C5", "A2: E4 A4 C5", "F2: F4 A4 C5", "G2: F4 G4 B4"), 120)
    song.bass(((0, 0.7), (0.75, 0.5), (1.5, 0.7), (2.5, 0.5), (3, 0.7)), 0.28).strums(((0.5, True), (1.5, True), (2.5, True), (3.5, True)), 0.06)
    song.arpeggio(sound.pluck, 4, 0.07, (0, 2, 1, 2), 2).drums((0, 1, 2, 3), (1, 3), 2)
    song.tune("G5@0 E5@0.75 G5@1.5 C6@2 A5@4 C6@4.75 A5@5.5 E5@6 F5@8 A5@8.75 C6@9.5 A5@10 B5@12 D6@12.75 G6@13.5 D6@14",
              lambda hz: sound.lead(hz, 0.4), 0.11)
    song.save(template.file("bg-audio.mp3"), 1.0, 0.12)
    sound.save_effect(template.file("res/pop.mp3"), sound.pop(380))
    horn = sound.Mix(1.6)
    for i, name in enumerate(("C5", "E5", "G5", "C6")):
        horn.add(sound.lead(sound.pitch(name), 1.2 - 0.1 * i), 0.09 * i, 0.4, -0.3 + 0.2 * i)
    sound.save_effect(template.file("res/horn.mp3"), horn.room(1.2, 0.3))
