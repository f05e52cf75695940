"""wedding-invite: two cards in watercolour; colour runs over the first and leaves the second behind."""

import math

import numpy as np

from kit import paint, samples, scene, video, watercolour
from kit.music import Song
from kit.package import Template, entry, entry_with_transition, photo_input, text_input

WIDTH, HEIGHT = 720, 1280
FIRST, SECOND, FLOOD, COVERED = 96, 138, 52, 24
INK, GOLD, IVORY, BLUSH, SAGE = "#3d4a4a", "#b98d4f", "#fdf8f1", "#e79a9a", "#6f9a86"
SERIF = "Noto Serif Display Bold"


def build(root):
    template = Template(root, "wedding-invite", 1300, ("Wedding Invite", "婚礼请柬", "結婚式の招待状"))
    template.inputs = [
        text_input("names", 24, 2, ("Two names", "两位新人", "おふたりの名前")),
        text_input("line", 40, 2, ("A line", "一句话", "ひとこと")),
        text_input("date", 24, 1, ("Date", "日期", "日付")),
        text_input("place", 30, 1, ("Place", "地点", "場所")),
        photo_input("photo", 4, 5, ("Your photo", "照片", "写真")),
    ]
    pictures(template)
    flood_videos(template)
    names = template.scene("scene.plist", FIRST, names_scene())
    date = template.scene("date.plist", SECOND, date_scene(), ("Wedding Invite: date", "婚礼请柬：日期", "招待状：日付"))
    flood = template.scene("flood.plist", FLOOD, flood_scene(), ("Colour flood", "色彩流动", "色の流れ"))
    template.group = [entry_with_transition(names, "~names", flood, COVERED, overlay=True), entry(date, "~date")]
    paint.save_jpeg(samples.couple(), template.file("sample/photo.jpg"))
    template.samples({"names": "Anna\n& Leo", "line": "are getting married\nand want you there", "date": "12 September",
                      "place": "The Old Orchard", "photo": "photo.jpg"})
    music(template)
    template.write()


# Pictures -----------------------------------------------------------------------------------------------------------

def pictures(template):
    for name, picture in (("paper", paper()), ("corner", corner(3)), ("wreath", wreath()), ("frame", frame()), ("arch", arch()),
                          ("arch-line", arch_line()), ("arch-empty", arch_empty()), ("divider", divider()),
                          ("petal", petal(BLUSH)), ("petal-pale", petal("#f3c9bf"))):
        paint.save_png(picture, template.file(f"res/{name}.png"))


def paper():
    surface, pen = paint.canvas(360, 640, IVORY)
    rng = paint.scattered(2)
    for x, y, radius, tint in ((330, 60, 150, "#f3cdc4"), (30, 590, 160, "#f3cdc4"), (20, 250, 90, "#d5e6da"),
                               (350, 400, 100, "#d5e6da")):
        watercolour.wash(pen, watercolour.blob(x, y, radius, rng), tint, rng, 6, 0.42, 0.12)
    return surface


def corner(seed):
    surface, pen = paint.canvas(512, 512)
    rng = paint.scattered(seed)
    for turn, length, bend in ((0.1, 330, 0.4), (0.75, 250, -0.3), (1.45, 330, -0.4)):
        watercolour.spray(pen, 60, 60, turn, length, rng, SAGE, bend)
    for x, y, radius, tint in ((230, 92, 60, "#f3c9bf"), (92, 236, 66, BLUSH), (120, 110, 96, "#eeb0a4")):
        watercolour.rose(pen, x, y, radius, tint, rng)
    return surface


def wreath():
    surface, pen = paint.canvas(768, 320)
    rng = paint.scattered(14)
    for sign in (-1, 1):
        pen.save()
        pen.translate(384, 0)
        pen.scale(sign, 1)
        for turn, length, bend in ((0.15, 300, -0.5), (0.5, 230, -0.4), (-0.1, 220, 0.5)):
            watercolour.spray(pen, 30, 150, turn, length, rng, SAGE, bend)
        watercolour.rose(pen, 120, 165, 52, "#f3c9bf", rng)
        pen.restore()
    watercolour.rose(pen, 384, 160, 84, BLUSH, rng)
    return surface


def frame():
    """A thin double line of gold."""
    surface, pen = paint.canvas(640, 1180)
    for inset, width, alpha in ((6, 3, 1.0), (18, 1.4, 0.8)):
        paint.rounded(pen, inset, inset, 640 - 2 * inset, 1180 - 2 * inset, 26)
        paint.stroke(pen, paint.colour(GOLD, alpha), width)
    return surface


def arch_path(pen, inset):
    """An arch in a picture of 512 by 640."""
    radius = 256 - inset
    pen.new_sub_path()
    pen.arc(256, 256, radius, math.pi, 2 * math.pi)
    pen.line_to(512 - inset, 640 - inset)
    pen.line_to(inset, 640 - inset)
    pen.close_path()


def arch():
    """The mask of the photo: white shows."""
    surface, pen = paint.canvas(512, 640, "#000000")
    arch_path(pen, 10)
    paint.fill(pen, "#ffffff")
    return paint.blur_surface(surface, 2)


def arch_line():
    surface, pen = paint.canvas(512, 640)
    arch_path(pen, 4)
    paint.stroke(pen, GOLD, 3)
    arch_path(pen, 16)
    paint.stroke(pen, paint.colour("#ffffff", 0.9), 5)
    return surface


def arch_empty():
    surface, pen = paint.canvas(512, 640)
    arch_path(pen, 10)
    paint.fill(pen, paint.linear((0, 0), (0, 640), ((0, "#f6ddd4"), (1, "#dfe9df"))))
    paint.heart(pen, 256, 300, 60)
    paint.fill(pen, paint.colour("#ffffff", 0.8))
    return surface


def divider():
    surface, pen = paint.canvas(420, 48)
    for sign in (-1, 1):
        pen.move_to(210 + sign * 26, 24)
        pen.line_to(210 + sign * 200, 24)
        paint.stroke(pen, GOLD, 2)
    paint.heart(pen, 210, 24, 13)
    paint.fill(pen, GOLD)
    return surface


def petal(tint):
    surface, pen = paint.canvas(96, 96)
    watercolour.leaf(pen, 14, 48, 68, 26, 0, tint, paint.scattered(6))
    return surface


# The flood of colour ------------------------------------------------------------------------------------------------

FW, FH = 360, 640


def field(seed, cells):
    """Soft noise from 0 to 1 over the frame."""
    rng = np.random.default_rng(seed)
    total, weight = np.zeros((FH, FW)), 0.0
    for k in range(4):
        rows, columns = cells * 2 ** k * 16 // 9 + 2, cells * 2 ** k + 2
        grid = rng.uniform(0, 1, (rows, columns))
        y, x = np.linspace(0, rows - 1.001, FH), np.linspace(0, columns - 1.001, FW)
        yi, xi = y.astype(int), x.astype(int)
        fy, fx = (smooth(y - yi)[:, None], smooth(x - xi)[None, :])
        corners = [grid[np.ix_(yi + a, xi + b)] for a in (0, 1) for b in (0, 1)]
        level = (corners[0] * (1 - fx) + corners[1] * fx) * (1 - fy) + (corners[2] * (1 - fx) + corners[3] * fx) * fy
        total, weight = total + level / 1.8 ** k, weight + 1 / 1.8 ** k
    return total / weight


def smooth(t):
    return t * t * (3 - 2 * t)


def step(low, high, value):
    return smooth(np.clip((value - low) / (high - low), 0, 1))


def flood_videos(template):
    """The mask is white where the colour lies: it spreads from three drops, and dries away from two others."""
    grain, tone = field(4, 5), field(9, 3)
    spread = front(((0.2, 0.15), (0.85, 0.45), (0.3, 0.9)), grain)
    leave = front(((0.7, 0.1), (0.25, 0.6)), field(15, 5))
    with video.Video(template.file("res/flood.mp4"), FW, FH, quality=24) as colour, \
            video.Video(template.file("res/flood-mask.mp4"), FW, FH, quality=22) as mask:
        for index in range(FLOOD + 3):
            inside, outside = flood_edges(index, spread, leave)
            alpha = step(0, 0.035, inside) * step(0, 0.035, outside)
            mask.frame(paint.from_rgba(np.dstack([alpha, alpha, alpha, np.ones_like(alpha)])))
            colour.frame(flood_colour(index, np.minimum(inside, outside), tone, grain))


def front(drops, grain):
    """How early each place is reached, from 0 to 1."""
    y, x = np.mgrid[0:FH, 0:FW]
    distance = np.min([np.hypot(x / FW - dx, (y / FH - dy) * FH / FW) for dx, dy in drops], axis=0)
    reach = distance + 0.5 * grain
    return (reach - reach.min()) / (reach.max() - reach.min())


def flood_edges(index, spread, leave):
    """How far inside the spreading and the leaving edge a place is; negative outside."""
    grow = smooth(np.clip(index / (COVERED - 4), 0, 1)) * 1.06 - 0.02
    dry = smooth(np.clip((index - COVERED - 3) / (FLOOD - COVERED - 4), 0, 1)) * 1.08 - 0.05
    return grow - spread, leave - dry


def flood_colour(index, depth, tone, grain):
    """Blush and rose pigment that gathers at the edges."""
    low, high = np.array(paint.colour("#e88f8f")[:3]), np.array(paint.colour("#f6cdbd")[:3])
    share = index / FLOOD
    sway = (tone * (1 - share) + tone[::-1, ::-1] * share)[..., None]
    rgb = low + (high - low) * np.clip(1.6 * sway - 0.3, 0, 1)
    rgb = rgb * (0.9 + 0.16 * grain[..., None])
    rim = np.exp(-np.clip(depth, 0, 1) * 26)[..., None]
    rgb = rgb * (1 - 0.4 * rim) + np.array(paint.colour("#b2455c")[:3]) * 0.4 * rim
    return paint.from_rgba(np.dstack([np.clip(rgb, 0, 1), np.ones(rgb.shape[:2])]))


def flood_scene():
    return {"Camera": scene.orthographic(WIDTH, HEIGHT),
            "TimeSource": scene.video_clock("res/flood.mp4", FLOOD, (WIDTH, HEIGHT), mask="res/flood-mask.mp4", name="flood")}


# Scenes -------------------------------------------------------------------------------------------------------------

def line(key, size, width, height, y, first, last, tint=INK, font=SERIF):
    motion = scene.Motion(first, (0, y - 30, 0)).to(first + 34, at=(0, y, 0), ease=scene.QUINT_OUT)
    return scene.faded(scene.words(key, size, width, height, tint, font), scene.box(width, height, 1),
                       scene.span(first, last, 30), key, [scene.fade(first, first + 24, 0, 1, scene.SINE_OUT)],
                       TransformArray=motion.items())


def paper_node(last):
    return scene.quad(scene.image("res/paper.png"), scene.box(WIDTH, HEIGHT), scene.span(0, last, 200), "paper")


def corners(last):
    """Flowers that turn into two opposite corners and go on breathing."""
    out = []
    for x, y, turn in ((-158, 436, 0), (158, -436, 180)):
        motion = scene.Motion(0, (x * 1.15, y * 1.1, 0), 0.86, turn + 16).to(
            44, at=(x, y, 0), scale=1.0, rotate=turn, ease=scene.QUINT_OUT)
        bloom = scene.quad(scene.image("res/corner.png"), scene.box(470, 470), scene.span(0, last), "flowers",
                           MutableTransformArray=scene.swing("rotate", 0, last, 50, (0, 0, -1.5), (0, 0, 2)))
        out.append(scene.group(scene.span(0, last, 60), [bloom], "corner", TransformArray=motion.items()))
    return out


def names_scene():
    last = FIRST - 1
    rim = scene.faded(scene.image("res/frame.png"), scene.box(640, 1180), scene.span(0, last, 100), "frame",
                      [scene.fade(0, 30, 0.7, 1)])
    mark = scene.quad(scene.image("res/divider.png"), scene.box(420, 48), scene.span(26, last, 40), "divider",
                      TransformArray=scene.Motion(26, (0, -96, 0), (0.01, 1, 1)).to(60, scale=1.0, ease=scene.QUINT_OUT).items())
    # Names and flowers are there from the first frame on, as many players stand on it.
    names = scene.quad(scene.words("names", 98, 540, 310, GOLD, SERIF), scene.box(540, 310, 1), scene.span(0, last, 30), "names",
                       TransformArray=scene.Motion(0, (0, 96, 0), 0.92).to(40, at=(0, 110, 0), scale=1.0, ease=scene.QUINT_OUT).items())
    return {"Camera": scene.orthographic(WIDTH, HEIGHT), "TimeSource": scene.null_clock(FIRST),
            "object3D": [paper_node(last), rim, *corners(last), mark, names, line("line", 42, 540, 130, -190, 36, last)]}


def date_scene():
    last = SECOND - 1
    rise = scene.Motion(14, (0, 120, 0), 0.92).to(64, at=(0, 170, 0), scale=1.0, ease=scene.QUINT_OUT)
    fps = scene.span(14, last)
    size = scene.box(512, 640)
    blank = scene.faded(scene.image("res/arch-empty.png"), size, fps, "empty", [scene.fade(14, 30, 0, 1)])
    photo = scene.node("QVQuadMaskObject3D", fps, "photo", TextureInfo=scene.user_image("photo"), QuadInfo=size,
                       MaskInfo=scene.image("res/arch.png"),
                       AnimationInfo=[{"sartFps": 14, "endFps": 44, "ease": scene.SINE_OUT, "startMaskAlpha": 0.0,
                                       "endMaskAlpha": 1.0}])
    rim = scene.faded(scene.image("res/arch-line.png"), size, fps, "rim", [scene.fade(14, 44, 0, 1)])
    arch_group = scene.group(scene.span(14, last, 80), [blank, photo, rim], "arch", TransformArray=rise.items())
    bloom = scene.Motion(34, (0, -142, 0), 0.001, -10).to(74, scale=1.0, rotate=0, ease=scene.BACK_OUT)
    garland = scene.quad(scene.image("res/wreath.png"), scene.box(640, 266), scene.span(34, last, 50), "wreath",
                         TransformArray=bloom.items())
    return {"Camera": scene.orthographic(WIDTH, HEIGHT), "TimeSource": scene.null_clock(SECOND),
            "object3D": [paper_node(last), arch_group, garland, line("date", 76, 600, 120, -340, 44, last, GOLD),
                         line("place", 44, 600, 84, -448, 56, last), *petals(last)]}


def petals(last):
    rng = paint.scattered(21)
    return [petal_fall(rng, i, last) for i in range(14)]


def petal_fall(rng, i, last):
    first = 6 + 7 * i
    end = min(last, first + rng.randint(90, 120))
    x, size = rng.uniform(-330, 330), rng.uniform(34, 66)
    drift = scene.glide("translate", first, end, (x, 680, 0), (x + rng.uniform(-160, 160), -720, 0))
    spin = scene.glide("rotate", first, end, (0, 0, rng.uniform(0, 360)), (rng.uniform(200, 500), rng.uniform(-300, 300), 200))
    name = "petal" if i % 2 else "petal-pale"
    return scene.quad(scene.image(f"res/{name}.png"), scene.box(size, size), scene.span(first, end, 90), "petal",
                      MutableTransformArray=[drift, spin])


def music(template):
    song = Song(("G2: D4 G4 B4", "D2: D4 F#4 A4", "E2: E4 G4 B4", "C2: E4 G4 C5"), 122)
    song.pads(0.06, 3).arpeggio(division=2, level=0.15, pattern=(0, 1, 2, 1)).bass(((0, 3.0),), 0.16)
    song.tune("B5@0 D6@2 A5@4 F#5@6 G5@8 B5@9.5 D6@10.5 E6@12 D6@14 B5@15", level=0.1)
    song.save(template.file("bg-audio.mp3"), 2.2, 0.34)
