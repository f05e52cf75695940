"""kinetic-quote: three lines of the user's own, set in motion letter by letter; the last one stands there in solid letters."""

import math

from kit import paint, samples, scene, sound
from kit.music import Song
from kit.package import Template, text_input

WIDTH, HEIGHT, FRAMES, FOV = 720, 1280, 270, 46
LAST = FRAMES - 1
FAR = scene.distance_for(WIDTH, FOV)  # here a unit is a pixel
CORAL, EMBER, NIGHT, DUSK, CREAM, SUN, MINT = "#ff6250", "#e8323f", "#191a3d", "#35306f", "#fff3df", "#ffc53d", "#31d0b4"
SECOND, THIRD = 84, 166  # where the second and the third line take over
BOLD = "Noto Sans Display Bold"


def build(root):
    template = Template(root, "kinetic-quote", 2000, ("Kinetic Quote", "动感语录", "うごく名言"), (WIDTH, HEIGHT))
    template.inputs = [text_input("first", 28, 3, ("First line", "第一句", "一行目")),
                       text_input("second", 16, 1, ("Second line", "第二句", "二行目")),
                       text_input("third", 18, 2, ("Last line", "最后一句", "最後の行")),
                       text_input("author", 24, 1, ("Whose words", "出处", "だれの言葉"))]
    pictures(template)
    template.scene("scene.plist", FRAMES, scene_file())
    template.samples({"first": "Begin\nwith one\nstep", "second": "Dream wide", "third": "Keep\ngoing!", "author": "Mira, 31"})
    music(template)
    template.write()


# Pictures -----------------------------------------------------------------------------------------------------------

def pictures(template):
    for name, picture in (("dawn", backdrop(CORAL, EMBER)), ("rays", rays("#fff0c8", 0.2)), ("stars", stars()),
                          ("beams", rays(SUN, 0.34)), ("ball", ball()), ("shadow", shadow()), ("brush", brush()), ("rule", rule()),
                          ("disc-mint", disc(MINT)), ("disc-night", disc(NIGHT)), ("disc-sun", disc(SUN)), ("disc-cream", disc(CREAM)),
                          *((f"bit-{i}", bit(i)) for i in range(4))):
        paint.save_png(picture, template.file(f"res/{name}.png"))


def backdrop(light, dark):
    surface, pen = paint.canvas(360, 640)
    pen.rectangle(0, 0, 360, 640)
    paint.fill(pen, paint.radial((130, 200), 560, ((0, paint.mix(light, "#ffb070", 0.45)), (0.45, light), (1, dark))))
    return surface


def rays(tint, strength):
    """Beams from the middle, fading outwards."""
    surface, pen = paint.canvas(1024, 1024)
    for i in range(18):
        turn = 2 * math.pi * i / 18
        pen.move_to(512, 512)
        for side in (-1, 1):
            pen.line_to(512 + 520 * math.cos(turn + side * math.pi / 36), 512 + 520 * math.sin(turn + side * math.pi / 36))
        pen.close_path()
        paint.fill(pen, paint.radial((512, 512), 512, ((0, tint, 0.0), (0.25, tint, strength), (1, tint, 0.0))))
    return surface


def disc(tint):
    surface, pen = paint.canvas(1024, 1024)
    paint.circle(pen, 512, 512, 508)
    paint.fill(pen, tint)
    return surface


def stars():
    surface, pen = paint.canvas(720, 1280)
    random = paint.scattered(41)
    samples.glow(pen, 560, 240, 420, "#5b3fa8", 0.55)
    samples.glow(pen, 120, 1060, 460, "#1d6a8f", 0.5)
    for _ in range(110):
        x, y, size = random.uniform(0, 720), random.uniform(0, 1280), random.uniform(0.8, 2.6)
        samples.glow(pen, x, y, 4 * size, "#ffffff", 0.35)
        paint.circle(pen, x, y, size * 0.6)
        paint.fill(pen, paint.colour("#ffffff", random.uniform(0.4, 0.95)))
    return surface


def shadow():
    """On the ground under the solid letters."""
    surface, pen = paint.canvas(512, 128)
    paint.ellipse(pen, 256, 64, 214, 34)
    paint.fill(pen, paint.colour("#7a3b12", 0.75))
    return paint.blur_surface(surface, 16)


def ball():
    surface, pen = paint.canvas(640, 640)
    paint.circle(pen, 320, 320, 316)
    paint.fill(pen, paint.linear((0, 0), (0, 640), ((0, "#ffdc7a"), (1, "#ffb531"))))
    return surface


def brush():
    """A stroke under the first line, thin at its ends."""
    surface, pen = paint.canvas(640, 64)
    upper = [(10 + 620 * i / 30, 30 + 9 * math.sin(i / 4.6) - 13 * math.sin(math.pi * i / 30) ** 0.6) for i in range(31)]
    lower = [(10 + 620 * i / 30, 32 + 9 * math.sin(i / 4.6 + 0.25) + 9 * math.sin(math.pi * i / 30) ** 0.6) for i in range(30, -1, -1)]
    paint.smooth(pen, upper + lower, closed=True)
    paint.fill(pen, SUN)
    return surface


def rule():
    surface, pen = paint.canvas(128, 16)
    paint.rounded(pen, 2, 4, 124, 8, 4)
    paint.fill(pen, EMBER)
    return surface


def bit(number):
    """Confetti: a disc, a bar, a triangle, a wave."""
    surface, pen = paint.canvas(96, 96)
    tint = (CORAL, SUN, MINT, DUSK)[number]
    if number == 0:
        paint.circle(pen, 48, 48, 34)
        paint.fill(pen, tint)
    elif number == 1:
        paint.rounded(pen, 12, 32, 72, 32, 8)
        paint.fill(pen, tint)
    elif number == 2:
        for x, y in ((48, 10), (86, 80), (10, 80)):
            pen.line_to(x, y)
        pen.close_path()
        paint.fill(pen, tint)
    else:
        paint.smooth(pen, [(10 + 19 * i, 48 + (22 if i % 2 else -22)) for i in range(5)])
        paint.stroke(pen, tint, 16)
    return surface


# The scene ----------------------------------------------------------------------------------------------------------

def scene_file():
    return {"Camera": camera(), "LightSourceArray": lights(), "TimeSource": scene.null_clock(FRAMES),
            "object3D": [*first_line(), *second_line(), *third_line()]}


def camera():
    """Goes closer with each line, and steps back when the next one takes over."""
    def key(first, last, start, end, ease):
        return {"sartFps": first, "endFps": last, "ease": 0, "isMoveCameraPosition": True, "moveCameraPositionEase": ease,
                "startMoveCameraPosition": scene.vector(*start), "endMoveCameraPosition": scene.vector(*end),
                "isMoveTargetPoint": True, "moveTargetPointEase": ease, "startTargetPoint": scene.vector(0, 0, -FAR),
                "endTargetPoint": scene.vector(0, 0, -FAR)}
    return scene.perspective(FOV, WIDTH, HEIGHT, [
        key(0, SECOND - 1, (0, 0, 0), (0, 0, -34), scene.SINE_IN_OUT), key(SECOND, SECOND + 16, (0, 0, -34), (0, 0, 0), scene.CUBIC_OUT),
        key(SECOND + 17, THIRD + 4, (0, 0, 0), (0, 0, -28), scene.SINE_IN_OUT),
        key(THIRD + 5, THIRD + 40, (0, 0, -28), (-70, 36, 0), scene.SINE_IN_OUT),
        key(THIRD + 41, LAST, (-70, 36, 0), (84, 40, -36), scene.SINE_IN_OUT)])


def lights():
    return [{"lightSourceType": 1, "lightSourcePosition": "-420,620,160", "ambientMaterialColor": "0.5,0.47,0.47",
             "diffuseMaterialColor": "0.62,0.6,0.56", "specularMaterialColor": "0.55,0.5,0.4", "specularShininess": 26.0},
            {"lightSourceType": 1, "lightSourcePosition": "560,-160,-120", "ambientMaterialColor": "0,0,0",
             "diffuseMaterialColor": "0.2,0.14,0.26", "specularMaterialColor": "0.25,0.2,0.3", "specularShininess": 12.0}]


def letters(key, size, fps, name, box, at, motions=(), kind="QVGLFont2DTextureFontObject3D", tint=CREAM, font=BOLD, look=(), **parts):
    """A text in the scene that fits its box, however long it is."""
    info = {"textString": key, "fontName": font, "fontSize": float(size), "smallestFontSize": 24.0, "textColor": colour(tint),
            "textAlignment": 1, "lineLength": float(box[0]), "boxHeight": float(box[1]), "lineSpacing": 0.86, **dict(look)}
    place = parts.pop("TransformArray", None) or scene.still(fps["startFps"], at)
    return scene.node(kind, fps, name, TextureFontInfo=info, LetterAnimation=list(motions), TransformArray=place, **parts)


def colour(tint, alpha=1.0):
    return scene.vector(*(round(part, 4) for part in paint.colour(tint, alpha)))


def motion(unit, first, last, frames, ease, delay=None, order="forward", pivot=None, **ends):
    item = {"letterUnit": unit, "letterOrder": order, "sartFps": first, "endFps": last, "letterFps": float(frames), "ease": ease, **ends}
    if delay is not None:
        item["delayFps"] = float(delay)
    if pivot:
        item["pivot"] = scene.vector(*pivot)
    return item


SHADOW = {"isShowTextShadow": True, "shadowColor": "0.35,0.02,0.1,0.4", "shadowOffset": "0,9", "shadowBlurRadius": 12.0}


def first_line():
    """The words stand there as outlines; one after the other they are filled with a blow."""
    end = SECOND + 22
    box, at = (620, 620), (0, -110, -FAR)
    ground = scene.quad(scene.image("res/dawn.png"), scene.box(1180, 2100), scene.span(0, end, 900), "dawn",
                        TransformArray=scene.still(0, (0, 0, -FAR - 240)))
    beams = scene.quad(scene.image("res/rays.png"), scene.box(2300, 2300), scene.span(0, end, 890), "rays",
                       TransformArray=scene.still(0, (-150, 330, -FAR - 200)),
                       MutableTransformArray=[scene.glide("rotate", 0, end, (0, 0, 0), (0, 0, 34))])
    outlines = letters("first", 196, scene.span(0, end, 720), "outlines", box, at, tint=CREAM,
                       look={"textDrawingMode": 1, "strokeColor": colour(CREAM, 0.6), "strokeWidth": 4.0})
    words = letters("first", 196, scene.span(0, end, 710), "words", box, at, (
        motion("word", 2, 60, 13, scene.BACK_OUT, 11, startScale="2.1,2.1,1", startRenderAlpha=0.0, startRotate="0,0,-9"),
        motion("line", SECOND - 8, SECOND + 14, 16, scene.CUBIC_IN, 3, startTranslate="0,0,0", endTranslate="-760,0,0")), look=SHADOW,
        ComponentsInfo=[scene.sound("res/thump.mp3", 2 + 11 * i, 22 + 11 * i, f"blow{i}", 0.5) for i in range(3)])
    outlines["LetterAnimation"] = [motion("line", SECOND - 8, SECOND + 14, 16, scene.CUBIC_IN, 3, endTranslate="760,0,0")]
    stroke = scene.node("QVQuadTextureRenderSelectShaderObject3D", scene.span(44, end, 715), "stroke",
                        TextureInfo=scene.image("res/brush.png"), QuadInfo=scene.box(470, 47),
                        RenderInfo={"renderType": "QVAlphaGradualNoLight", "startAlpha": "0,0", "endAlpha": "1,0", "interpolation": 2,
                                    "AnimationInfo": [{"sartFps": 44, "endFps": 66, "ease": 0, "startStartAlpha": "0,0",
                                                       "endStartAlpha": "0.999,1", "startAlphaEase": scene.SINE_OUT}]},
                        TransformArray=scene.Motion(44, (0, -490, -FAR)).hold(SECOND - 4).to(
                            SECOND + 12, at=(760, -490, -FAR), ease=scene.CUBIC_IN).items())
    return [ground, beams, outlines, words, stroke, quotation_mark(end)]


def quotation_mark(end):
    """Solid and lit, it turns to and fro."""
    info = {"textString": "“", "fontName": "Noto Serif Display Bold", "fontSize": 560.0, "textColor": colour(SUN), "textAlignment": 1,
            "bevelWidth": 9.0, "bevelDepth": 12.0, "bevelSteps": 4, "bevelColor": colour("#ffe39a"), "textVerticalDrawAlignmentMode": 1}
    turning = scene.swing("rotate", 0, end, 46, (10, -30, -4), (4, 24, 3))
    leave = scene.Motion(0, (0, 210, -FAR)).hold(SECOND - 10).to(SECOND + 10, at=(0, 900, -FAR), ease=scene.BACK_IN).items()
    mark = scene.node("QVGLFont3DExtrudeFontObject3D", scene.span(0, end, 0, isEnableDephTest=True, isLightEnable=True), "quotation mark",
                      TextureFontInfo=info, textDepth=84.0, sideColor=colour("#c2411f"), MutableTransformArray=turning)
    return scene.group(scene.span(0, end, 700), [mark], "quotation", TransformArray=leave)


def flood(name, first, last, place, depth, frames=18):
    """A disc that grows until it fills the picture."""
    grow = scene.Motion(first, (*place, -FAR), 0.001).to(first + frames, scale=1.0, ease=scene.QUAD_IN_OUT)
    return scene.quad(scene.image(f"res/disc-{name}.png"), scene.box(3100, 3100), scene.span(first, last, depth), f"flood of {name}",
                      TransformArray=grow.items())


ECHOES = ((1, SUN, 0.95), (2, CORAL, 0.75), (3, MINT, 0.5))
STEP = 178  # from echo to echo


def second_line():
    """Its letters come up shuffled; outlined echoes slide out to both sides."""
    first, end = SECOND, THIRD + 26
    box = (640, 150)
    words = letters("second", 150, scene.span(first + 8, end, 560), "words", box, (0, 0, -FAR), (
        motion("letter", first + 8, first + 34, 15, scene.BACK_OUT, 2, "shuffled", (0.5, 0.2), startTranslate="0,-150,0",
               startRotate="0,0,38", startScale="0.3,0.3,1", startRenderAlpha=0.0, shuffleSeed=5),
        motion("letter", first + 46, first + 72, 9, scene.SINE_IN_OUT, 1.5, endTranslate="0,16,0"),
        motion("letter", first + 52, first + 78, 9, scene.SINE_IN_OUT, 1.5, endTranslate="0,-16,0")),
        look={"isShowTextShadow": True, "shadowColor": "0,0,0,0.5", "shadowOffset": "0,8", "shadowBlurRadius": 14.0},
        ComponentsInfo=[scene.sound("res/sparkle.mp3", first + 12, first + 70, "sparkle", 0.4)])
    echoes = []
    for number, tint, alpha in ECHOES:
        for side in (1, -1):
            start, stop = (0, side * STEP * (number - 1), -FAR), (0, side * STEP * number, -FAR)
            when = first + 24 + 5 * number
            echoes.append(letters("second", 150, scene.span(when, end, 570 + number), f"echo {side * number}", box, stop, (
                motion("letter", when, when + 26, 14, scene.CUBIC_OUT, 1, "middle", startRenderAlpha=0.0),),
                look={"textDrawingMode": 1, "strokeColor": colour(tint, alpha), "strokeWidth": 4.0},
                TransformArray=scene.Motion(when, start).to(when + 20, at=stop, ease=scene.BACK_OUT).items()))
    sky = scene.faded(scene.image("res/stars.png"), scene.box(900, 1600), scene.span(first + 8, end, 610), "stars",
                      [scene.fade(first + 8, first + 30, 0, 1)], TransformArray=scene.still(first + 8, (0, 0, -FAR - 120)),
                      MutableTransformArray=[scene.glide("translate", first + 8, end, (0, -30, 0), (0, 30, 0))])
    whoosh = scene.sound("res/whoosh.mp3", first - 6, first + 30, "whoosh", 0.45)
    ahead = flood("mint", first - 6, end, (300, -560), 640)
    behind = flood("night", first, end, (300, -560), 620, 20)
    ahead["ComponentsInfo"] = [whoosh]
    return [ahead, behind, sky, *echoes, words]


def third_line():
    """Solid letters flip up, from the middle outwards; once they stand they bow one after the other."""
    first = THIRD
    ahead = flood("sun", first - 6, LAST, (-300, 560), 540)
    ahead["ComponentsInfo"] = [scene.sound("res/whoosh.mp3", first - 6, first + 30, "whoosh back", 0.45)]
    behind = flood("cream", first, LAST, (-300, 560), 520, 20)
    beams = scene.group(scene.span(first + 8, LAST, 510), [scene.faded(
        scene.image("res/beams.png"), scene.box(2000, 2000), scene.span(first + 8, LAST), "beams", [scene.fade(first + 8, first + 30, 0, 1)],
        MutableTransformArray=[scene.glide("rotate", first + 8, LAST, (0, 0, 0), (0, 0, -40))])],
        "turning beams", TransformArray=scene.still(first + 8, (0, 70, -FAR - 90)))
    ball_behind = scene.quad(scene.image("res/ball.png"), scene.box(720, 720), scene.span(first + 6, LAST, 505), "ball",
                             TransformArray=scene.Motion(first + 6, (0, 70, -FAR - 80), 0.001).to(
                                 first + 34, scale=1.0, ease=scene.BACK_OUT).items())
    ground = scene.faded(scene.image("res/shadow.png"), scene.box(690, 150), scene.span(first + 22, LAST, 500), "shadow",
                         [scene.fade(first + 22, first + 46, 0, 0.5)], TransformArray=scene.still(first + 22, (0, -214, -FAR - 40)))
    solid = letters("third", 250, scene.span(first + 8, LAST, 450, isEnableDephTest=True, isLightEnable=True), "solid words",
                    (590, 520), (0, 76, -FAR), (
        motion("letter", first + 8, first + 48, 20, scene.BACK_OUT, 4, "middle", (0.5, 0.12), startRotate="-118,0,0",
               startTranslate="0,-70,-120", startScale="0.5,0.5,0.5", startRenderAlpha=0.0),
        motion("letter", first + 62, first + 90, 10, scene.SINE_IN_OUT, 2, pivot=(0.5, 0.12), endRotate="0,0,-7", endTranslate="0,20,0"),
        motion("letter", first + 70, first + 98, 12, scene.BACK_OUT, 2, pivot=(0.5, 0.12), endRotate="0,0,7", endTranslate="0,-20,0")),
        kind="QVGLFont3DExtrudeFontObject3D", tint=CORAL,
        look={"bevelWidth": 5.0, "bevelDepth": 7.0, "bevelSteps": 3, "bevelColor": colour("#ffa183"), "lineSpacing": 0.84},
        textDepth=58.0, sideColor=colour("#8d1d3d"),
        ComponentsInfo=[scene.sound("res/thump.mp3", first + 30, first + 60, "landing", 0.6)])
    author = letters("author", 52, scene.span(first + 46, LAST, 440), "author", (560, 70), (0, -364, -FAR), (
        motion("letter", first + 46, first + 76, 12, scene.CUBIC_OUT, 1.5, startRenderAlpha=0.0, startTranslate="0,18,0"),),
        tint=DUSK, font="Noto Sans Bold", look={"letterSpacing": 0.08})
    rules = [scene.quad(scene.image("res/rule.png"), scene.box(84, 10), scene.span(first + 40, LAST, 440), "rule",
                        TransformArray=scene.Motion(first + 40, (0, -300, -FAR), (0.001, 1, 1)).to(
                            first + 62, scale=1.0, ease=scene.BACK_OUT).items())]
    return [ahead, behind, beams, ball_behind, ground, solid, author, *rules, *confetti(first + 28)]


def confetti(first):
    random = paint.scattered(17)
    return [piece(random, first + random.randint(0, 6), i) for i in range(44)]


def piece(random, first, number):
    """Thrown up from behind the letters, falls past them."""
    angle, reach = random.uniform(0.15, math.pi - 0.15), random.uniform(330, 620)
    top = (reach * math.cos(angle), 160 + 0.8 * reach * math.sin(angle), -FAR + random.uniform(-70, -10))
    peak, fall = first + random.randint(18, 28), random.uniform(900, 1400)
    bottom = (top[0] * 1.25 + random.uniform(-60, 60), top[1] - fall, top[2])
    last = LAST
    size = random.uniform(22, 44)
    turns = lambda: tuple(random.uniform(-540, 540) for _ in range(3))
    return scene.quad(scene.image(f"res/bit-{number % 4}.png"), scene.box(size, size), scene.span(first, last, 480), "confetti",
                      TransformArray=scene.Motion(first, (0, 60, -FAR - 70), 0.2, (0, 0, 0)).to(
                          peak, at=top, scale=1.0, rotate=turns(), ease=scene.CUBIC_OUT).to(
                          last - 1, at=bottom, rotate=turns(), ease=scene.QUAD_IN).items())


# Sound --------------------------------------------------------------------------------------------------------------

def music(template):
    song = Song(("A2: C4 E4 A4", "F2: C4 F4 A4", "C3: C4 E4 G4", "G2: D4 G4 B4"), 116)
    song.bass(tuple((i / 2, 0.4) for i in range(8)), 0.24).pads(0.045, 5).drums((0, 1, 2, 3), (1, 3), 4, 1.0)
    song.arpeggio(sound.pluck, 4, 0.08, (0, 2, 1, 2, 0, 1), 2).tune("E5@0 A5@1.5 C6@3 A5@4 F5@6 G5@8 C6@9.5 E6@11 D6@12 B5@14", level=0.085)
    song.mix.duck([i * song.beat for i in range(16)], 0.3)
    song.save(template.file("bg-audio.mp3"), 1.1, 0.13)
    sound.save_effect(template.file("res/whoosh.mp3"), sound.whoosh(0.9, 220, 4200))
    sound.save_effect(template.file("res/thump.mp3"), sound.kick(0.5))
    sound.save_effect(template.file("res/sparkle.mp3"), sound.chime(("E6", "A6", "C7", "E7"), 0.05, 1.4))
