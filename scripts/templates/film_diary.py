"""film-diary: a photo comes into focus, a strip of film on a light table, a print that develops; light leaks join them."""

import math

from kit import paint, samples, scene, sound
from kit.music import Song
from kit.package import Template, entry, entry_with_transition, photo_input, text_input

WIDTH, HEIGHT, CHANGE = 720, 1280, 20
COVER, STRIP, PRINTS = 100, 132, 124
INK, CREAM, AMBER = "#3a2c22", "#fbf5e9", "#ff9a3d"
SERIF, ITALIC, MONO = "Noto Serif Display Bold", "Noto Serif Display Italic", "Noto Sans Mono Bold"
FRAME = (520, 390)  # of the strip
STEP = 440  # from one of its frames to the next


def build(root):
    template = Template(root, "film-diary", 2100, ("Film Diary", "胶片日记", "フィルム日記"))
    template.inputs = [
        text_input("title", 20, 2, ("Title", "标题", "タイトル")),
        text_input("date", 14, 1, ("Date", "日期", "日付")),
        text_input("caption", 32, 2, ("Words on the print", "照片上的话", "写真のことば")),
        photo_input("cover", 9, 16, ("Cover photo", "封面照片", "表紙の写真")),
        photo_input("first", 4, 3, ("First photo", "第一张照片", "写真 1")),
        photo_input("second", 4, 3, ("Second photo", "第二张照片", "写真 2")),
        photo_input("third", 4, 3, ("Third photo", "第三张照片", "写真 3")),
        photo_input("last", 1, 1, ("Photo of the print", "拍立得照片", "プリントの写真")),
    ]
    pictures(template)
    sounds(template)
    cover = template.scene("scene.plist", COVER, cover_scene())
    strip = template.scene("strip.plist", STRIP, strip_scene(), ("Film Diary: strip", "胶片日记：胶卷", "フィルム日記：ネガ"))
    prints = template.scene("prints.plist", PRINTS, prints_scene(), ("Film Diary: prints", "胶片日记：相片", "フィルム日記：プリント"))
    burn = template.scene("burn.plist", CHANGE, burn_scene(), ("Burn", "过曝", "露光"))
    template.group = [entry_with_transition(cover, "~cover", burn, CHANGE), entry_with_transition(strip, "~strip", burn, CHANGE),
                      entry(prints, "~prints")]
    sample_inputs(template)
    music(template)
    template.write()


def sample_inputs(template):
    for name, picture in (("cover", cover_photo()), ("first", samples.mountains()), ("second", samples.beach()),
                          ("third", samples.cat()), ("last", samples.couple(960, 1200))):
        paint.save_jpeg(picture, template.file(f"sample/{name}.jpg"))
    template.samples({"title": "One summer,\none film", "date": "'26 08 14", "caption": "the two of us,\nlast light", "cover": "cover.jpg",
                      "first": "first.jpg", "second": "second.jpg", "third": "third.jpg", "last": "last.jpg"})


def cover_photo():
    surface, pen = paint.canvas(900, 1600, "#7fc3d8")
    pen.set_source_surface(samples.portrait(1040, 1300), -70, 300)
    pen.paint()
    return surface


# Pictures -----------------------------------------------------------------------------------------------------------

def pictures(template):
    for name, picture in (("finder", finder()), ("focus", focus()), ("veil", veil()), ("table", light_table()), ("strip", strip()),
                          ("empty", empty()), ("shadow", shadow()), ("sprig", sprig())):
        paint.save_png(picture, template.file(f"res/{name}.png"))
    paint.save_jpeg(linen(), template.file("res/linen.jpg"))


def finder():
    """What a viewfinder shows: brackets in its corners."""
    surface, pen = paint.canvas(720, 1280)
    for x, sideways in ((60, 1), (660, -1)):
        for y, down in ((90, 1), (1190, -1)):
            pen.move_to(x + 74 * sideways, y)
            pen.line_to(x, y)
            pen.line_to(x, y + 74 * down)
            paint.stroke(pen, paint.colour("#ffffff", 0.9), 4)
    return surface


def focus():
    surface, pen = paint.canvas(256, 256)
    for radius, width, alpha in ((112, 4, 0.9), (84, 2, 0.55)):
        paint.circle(pen, 128, 128, radius)
        paint.stroke(pen, paint.colour("#ffffff", alpha), width)
    for turn in range(4):
        angle = math.pi * turn / 2
        pen.move_to(128 + 96 * math.cos(angle), 128 + 96 * math.sin(angle))
        pen.line_to(128 + 122 * math.cos(angle), 128 + 122 * math.sin(angle))
        paint.stroke(pen, paint.colour("#ffffff", 0.9), 4)
    return surface


def veil():
    surface, pen = paint.canvas(64, 512)
    pen.rectangle(0, 0, 64, 512)
    paint.fill(pen, paint.linear((0, 0), (0, 512), ((0, "#1c0f08", 0), (0.5, "#1c0f08", 0.35), (1, "#1c0f08", 0.75))))
    return surface


def light_table():
    surface, pen = paint.canvas(360, 640, "#e8e2d3")
    pen.rectangle(0, 0, 360, 640)
    paint.fill(pen, paint.radial((180, 320), 420, ((0, "#fffef8"), (0.55, "#fbf6e8"), (1, "#d9cfb8"))))
    return surface


def strip():
    """Three frames of film; where the photos lie it is dark, as unexposed film is."""
    width, height = 660, 3 * STEP
    surface, pen = paint.canvas(width, height)
    pen.rectangle(0, 0, width, height)
    paint.fill(pen, paint.linear((0, 0), (width, 0), ((0, "#2a1a12"), (0.5, "#1d120c"), (1, "#2a1a12"))))
    for side in (22, width - 22):
        for i in range(3 * 8):
            paint.rounded(pen, side - 13, i * STEP / 8 + 14, 26, 30, 7)
            paint.fill(pen, "#fdf9ee")
    pen.select_font_face("Noto Sans Mono")
    pen.set_font_size(19)
    for number in range(3):
        pen.save()
        pen.translate(58, number * STEP + 250)
        pen.rotate(-math.pi / 2)
        pen.set_source_rgba(*paint.colour(AMBER, 0.85))
        pen.show_text(f"{number + 21}  ▸  {number + 21}A")
        pen.restore()
        x, y = (width - FRAME[0]) / 2, number * STEP + (STEP - FRAME[1]) / 2
        paint.rounded(pen, x - 3, y - 3, FRAME[0] + 6, FRAME[1] + 6, 12)
        paint.fill(pen, "#0f0906")
    return surface


def empty():
    """Lies under a photo and shows while there is none."""
    surface, pen = paint.canvas(512, 384)
    pen.rectangle(0, 0, 512, 384)
    paint.fill(pen, paint.linear((0, 0), (0, 384), ((0, "#cfc3ae"), (1, "#a99a82"))))
    pen.move_to(60, 320)
    for x, y in ((190, 150), (260, 250), (330, 180), (452, 320)):
        pen.line_to(x, y)
    pen.close_path()
    paint.fill(pen, paint.colour("#ffffff", 0.4))
    return surface


def linen():
    """A table cloth, woven."""
    surface, pen = paint.canvas(720, 1280, "#b9a78c")
    random = paint.scattered(9)
    for i in range(900):
        across = i % 2 == 0
        at, light = random.uniform(0, 1280 if across else 720), random.uniform(-1, 1)
        tint = paint.colour("#fff3dc" if light > 0 else "#6e5a42", 0.05 + 0.1 * abs(light))
        pen.move_to(0 if across else at, at if across else 0)
        pen.line_to(720 if across else at + random.uniform(-4, 4), at + random.uniform(-4, 4) if across else 1280)
        paint.stroke(pen, tint, random.uniform(0.8, 2))
    pen.rectangle(0, 0, 720, 1280)
    paint.fill(pen, paint.radial((260, 420), 1000, ((0, "#fff1d4", 0.45), (0.6, "#8a6f4d", 0.0), (1, "#33210f", 0.55))))
    return paint.grain(surface, 5)


def shadow():
    surface, pen = paint.canvas(256, 256)
    paint.rounded(pen, 34, 34, 188, 188, 6)
    pen.fill()
    return paint.shadow_of(surface, 14, 0.55, "#20140a")


def sprig():
    """A dried stalk that lies on the cloth."""
    surface, pen = paint.canvas(300, 620)
    paint.smooth(pen, [(150, 610), (140, 470), (158, 320), (142, 170), (160, 30)])
    paint.stroke(pen, "#6f6a3f", 5)
    for i in range(11):
        y, side = 540 - 47 * i, 1 if i % 2 else -1
        x = 149 + 7 * math.sin(i)
        size = 74 - 4.4 * i
        paint.petals(pen, x, y, 1, size, size * 0.28, -math.pi / 2 + side * 0.85)
        paint.fill(pen, paint.mix("#8b8a4e", "#5c5f34", (i % 3) / 2))
        pen.move_to(x, y)
        pen.line_to(x + side * size * 0.66, y - size * 0.6)
        paint.stroke(pen, paint.colour("#4b4d29", 0.5), 1.5)
    return paint.with_shadow(surface, 7, 0.4, "#20140a", (6, 9))


# Scenes -------------------------------------------------------------------------------------------------------------

def whole(length, nodes):
    return {"Camera": scene.orthographic(WIDTH, HEIGHT), "TimeSource": scene.null_clock(length), "object3D": nodes}


def still_picture(name, last, depth, size=(WIDTH, HEIGHT), **parts):
    return scene.quad(scene.image(f"res/{name}.png"), scene.box(*size), scene.span(0, last, depth), name, **parts)


def line(key, size, width, height, tint, at, first, last, font, rise=26, seen=0, depth=20, **more):
    """A text that comes up while it fades in; `seen` is its first opacity."""
    x, y = at
    motion = scene.Motion(first, (x, y - rise, 0)).to(first + 28, at=(x, y, 0), ease=scene.QUINT_OUT)
    return scene.faded(scene.words(key, size, width, height, tint, font, **more), scene.box(width, height, 1),
                       scene.span(first, last, depth), key, [scene.fade(first, first + 18, seen, 1, scene.SINE_OUT)],
                       TransformArray=motion.items())


def cover_scene():
    last = COVER - 1
    film = [scene.filtered("blur", scene.moved("radius", 0, 9, 0.012, 0.03), scene.moved("radius", 10, 26, 0.03, 0.004, scene.CUBIC_IN_OUT),
                           scene.moved("radius", 27, 34, 0.004, 0.0, scene.SINE_OUT), radius=0.012),
            scene.filtered("film", look="goldenHour"),
            scene.filtered("glow", radius=0.035, amount=0.35),
            scene.filtered("lightLeak", scene.moved("phase", 0, last, 0.0, 0.45), scene.moved("strength", 0, 40, 0.5, 1.0),
                           scene.moved("strength", 41, last, 1.0, 0.6), size=0.62, warmColor="1,0.52,0.12,0.95", glowColor="1,0.25,0.4,0.55"),
            scene.filtered("vignette", start=0.5, softness=0.6, shadeColor="0.12,0.05,0.02,0.7"),
            scene.filtered("grain", amount=0.3, size=0.0028)]
    zoom = [scene.glide("scale", 0, last, (1.0, 1.0, 1), (1.07, 1.07, 1), scene.SINE_OUT)]
    photo = scene.frame(scene.user_image("cover"), scene.box(WIDTH, HEIGHT, 2), scene.span(0, last, 200), "cover", film,
                        MutableTransformArray=zoom)
    brackets = scene.faded(scene.image("res/finder.png"), scene.box(WIDTH, HEIGHT), scene.span(0, 48, 60), "finder",
                           [scene.fade(34, 48, 0.95, 0)])
    ring = scene.faded(scene.image("res/focus.png"), scene.box(230, 230), scene.span(0, 46, 55), "focus",
                       [scene.fade(0, 33, 0.9, 1), scene.fade(34, 45, 1, 0)],
                       TransformArray=scene.Motion(0, (0, 70, 0), 1.25, 0).to(32, scale=0.82, rotate=-42, ease=scene.CUBIC_IN_OUT).items())
    shade = scene.quad(scene.image("res/veil.png"), scene.box(WIDTH, 640), scene.span(0, last, 100), "veil",
                       TransformArray=scene.still(0, (0, -320, 0)))
    click = scene.group(scene.span(0, last, 1), [], "shutter",
                        ComponentsInfo=[scene.sound("res/shutter.mp3", 34, 60, "shutter", 0.7)])
    return whole(COVER, [photo, shade, brackets, ring, click,
                         line("title", 82, 620, 240, "#fff7ea", (0, -318), 36, last, SERIF),
                         line("date", 40, 330, 62, AMBER, (108, -478), 0, last, MONO, rise=0, seen=0.9, textAlignment=2)])


def film_frame(number, key, look, focus_from=STRIP, focus_to=STRIP):
    """A frame of the strip: dim and grey until the loupe is over it, and again afterwards."""
    last = STRIP - 1
    y = (1 - number) * STEP
    dims, lights = [], []
    if focus_from < last:
        dims.append(scene.moved("strength", focus_from, focus_from + 16, 1, 0, scene.SINE_OUT))
        lights.append(scene.moved("brightness", focus_from, focus_from + 16, -0.3, 0.02, scene.SINE_OUT))
    if focus_to < last:
        dims.append(scene.moved("strength", focus_to, focus_to + 14, 0, 1))
        lights.append(scene.moved("brightness", focus_to, focus_to + 14, 0.02, -0.3))
    filters = [scene.filtered("film", look=look), scene.filtered("sharpen", amount=0.7), scene.filtered("grey", *dims),
               scene.filtered("adjust", *lights, brightness=-0.3), scene.filtered("vignette", start=0.55, shadeColor="0,0,0,0.5"),
               scene.filtered("grain", amount=0.28, size=0.005)]
    blank = scene.quad(scene.image("res/empty.png"), scene.box(FRAME[0] - 16, FRAME[1] - 16, at=(0, y, 0)), scene.span(0, last, 40), "empty")
    photo = scene.frame(scene.user_image(key), scene.box(*FRAME, at=(0, y, 0)), scene.span(0, last, 30), key, filters, radius=0.03)
    return [blank, photo]


def strip_scene():
    last = STRIP - 1
    frames = [node for number, (key, look, start, end) in enumerate((
        ("first", "tealAndOrange", 8, 46), ("second", "pastel", 48, 88), ("third", "goldenHour", 90, last))) for node in film_frame(number, key, look, start, end)]
    # What lies before and behind the three: the roll goes on.
    more = [node for key, look, place in (("third", "goldenHour", -1), ("first", "tealAndOrange", 3)) for node in film_frame(place, key, look)]
    film = scene.quad(scene.image("res/strip.png"), scene.box(660, 3 * STEP), scene.span(0, last, 60), "film")
    ends = [scene.quad(scene.image("res/strip.png"), scene.box(660, 3 * STEP, at=(0, side * 3 * STEP, 0)), scene.span(0, last, 62), "film")
            for side in (-1, 1)]
    run = scene.Motion(0, (0, -STEP - 90, 0)).to(24, at=(0, -STEP, 0), ease=scene.QUINT_OUT).hold(42)
    run.to(64, at=(0, 0, 0), ease=scene.BACK_OUT).hold(84).to(106, at=(0, STEP, 0), ease=scene.BACK_OUT)
    reel = scene.group(scene.span(0, last, 50), [*ends, film, *frames, *more], "reel", TransformArray=run.items())
    lean = [scene.glide("scale", 0, last, (1.06, 1.06, 1), (1.13, 1.13, 1))]
    tilted = scene.group(scene.span(0, last, 50), [reel], "strip", TransformArray=scene.still(0, rotate=-3), MutableTransformArray=lean)
    clicks = scene.group(scene.span(0, last, 1), [], "advance",
                         ComponentsInfo=[scene.sound("res/advance.mp3", at, at + 24, f"advance{at}", 0.55) for at in (43, 85)])
    return whole(STRIP, [still_picture("table", last, 300), tilted, clicks])


def print_of(key, photo, size, at, first, come_from, tilt, filters, depth, words=()):
    """An instant print: white, broader at its foot."""
    last = PRINTS - 1
    width, height = photo
    margin, foot = size
    card = (width + 2 * margin, height + margin + foot)
    lift = (foot - margin) / 2
    parts = [scene.quad(scene.image("res/shadow.png"), scene.box(card[0] * 1.36, card[1] * 1.36, at=(8, -12, 0)), scene.span(first, last, 50), "shadow"),
             scene.card("#fbf8f0", scene.box(*card), scene.span(first, last, 40), "paper", 0.018),
             scene.card("#1d1a18", scene.box(width, height, at=(0, lift, 0)), scene.span(first, last, 30), "emulsion", 0.01),
             scene.frame(scene.user_image(key), scene.box(width, height, at=(0, lift, 0)), scene.span(first, last, 20), key, filters, radius=0.01),
             *words]
    motion = scene.Motion(first, (at[0] + come_from[0], at[1] + come_from[1], 0), 1.12, tilt * 3)
    motion.to(first + 26, at=(*at, 0), scale=1.0, rotate=tilt, ease=scene.QUINT_OUT)
    return scene.group(scene.span(first, last, depth), parts, key + " print", TransformArray=motion.items())


def prints_scene():
    last = PRINTS - 1
    old = [scene.filtered("film", look="fadedPrint"), scene.filtered("vignette", start=0.6, shadeColor="0.2,0.1,0,0.4"),
           scene.filtered("grain", amount=0.2, size=0.004)]
    develop = 24, 86
    fresh = [scene.filtered("blur", scene.moved("radius", 24, 70, 0.02, 0, scene.SINE_OUT), radius=0.02),
             scene.filtered("adjust", scene.moved("contrast", *develop, -0.62, 0), scene.moved("saturation", *develop, -0.9, 0, scene.QUAD_IN),
                            scene.moved("brightness", *develop, 0.05, 0), contrast=-0.62, saturation=-0.9, brightness=0.05),
             scene.filtered("temperature", scene.moved("tint", *develop, -0.8, 0), scene.moved("warmth", *develop, 0.2, 0.12), tint=-0.8, warmth=0.2),
             scene.filtered("film", look="goldenHour"),
             scene.filtered("vignette", start=0.6, shadeColor="0.15,0.05,0,0.5"),
             scene.filtered("grain", amount=0.2, size=0.003)]
    words = [line("caption", 46, 440, 126, INK, (0, -250), 62, last, ITALIC, rise=10, depth=10)]
    front = print_of("last", (470, 470), (30, 170), (0, 40), 6, (60, -700), -2.5, fresh, 20, words)
    left = print_of("first", (312, 234), (20, 62), (-150, 428), 0, (-200, 120), -8, old, 60)
    right = print_of("second", (312, 234), (20, 62), (172, -476), 0, (200, -100), 7, old, 50)
    stalk = still_picture("sprig", last, 100, (220, 455), TransformArray=scene.Motion(0, (252, 330, 0), 1.0, -24).to(
        last, rotate=-20, ease=scene.SINE_OUT).items())
    return whole(PRINTS, [scene.quad(scene.image("res/linen.jpg"), scene.box(WIDTH, HEIGHT), scene.span(0, last, 300), "linen"), left, right, stalk, front])


def burn_scene():
    """The end of a roll: light floods one scene and lets go of the next."""
    last, half = CHANGE - 1, CHANGE // 2
    size = scene.box(WIDTH, HEIGHT)
    out = [scene.filtered("blur", scene.moved("radius", 0, half, 0, 0.03), radius=0),
           scene.filtered("lightLeak", scene.moved("strength", 0, half - 2, 0, 1), scene.moved("strength", half - 1, last, 1, 1), strength=0.0,
                          size=1.6, warmColor="1,0.55,0.15,1", glowColor="1,0.3,0.3,1"),
           scene.filtered("adjust", scene.moved("brightness", 0, half + 2, 0, 1, scene.QUAD_IN))]
    come = [scene.filtered("adjust", scene.moved("brightness", half - 4, last, 0.9, 0, scene.QUAD_OUT), brightness=0.9),
            scene.filtered("lightLeak", scene.moved("strength", half - 4, last, 1, 0), size=1.6, warmColor="1,0.55,0.15,1", glowColor="1,0.3,0.3,1")]
    under = scene.frame({"textureType": "nextSceneRenderTexture"}, size, scene.span(0, last, 100), "next", come)
    over = scene.frame({"textureType": "currentSceneRenderTexture"}, size, scene.span(0, last, 50), "current", out,
                       [scene.fade(half - 3, half + 3, 1, 0)])
    return {"Camera": scene.orthographic(WIDTH, HEIGHT), "TimeSource": scene.null_clock(CHANGE), "object3D": [under, over]}


# Sound --------------------------------------------------------------------------------------------------------------

def sounds(template):
    shutter = sound.noise_hit(0.5, 0.035, 900, 7000, 4)
    late = int(0.12 * 44100)
    shutter[late:] += 0.8 * sound.noise_hit(0.5, 0.05, 500, 5000, 8)[:len(shutter) - late]
    sound.save_effect(template.file("res/shutter.mp3"), shutter, 0.6)
    advance = sum(_late(sound.noise_hit(0.7, 0.02, 1500, 8000, i), int((0.03 + 0.055 * i) * 44100)) * (0.5 + 0.06 * i) for i in range(8))
    sound.save_effect(template.file("res/advance.mp3"), advance, 0.45)


def _late(signal, samples_later):
    out = signal * 0
    out[samples_later:] = signal[:len(signal) - samples_later]
    return out


def music(template):
    song = Song(("C3: E4 G4 B4", "A2: C4 E4 G4", "F2: A3 C4 E4", "G2: B3 D4 F4"), 92)
    song.pads(0.05).bass(level=0.22).arpeggio(division=2, level=0.1, octave=2).strums(level=0.06).drums(claps=(3,), level=0.6)
    song.tune("E5@0 G5@1.5 B5@3 A5@4 G5@5.5 E5@6.5 C6@8 A5@9.5 G5@11 F5@12 G5@13.5 B5@14.5", level=0.09)
    song.save(template.file("bg-audio.mp3"))
