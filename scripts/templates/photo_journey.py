"""photo-journey: three scenes of photos; the first melts into the second, a turning cube leads to the third."""

import math

from kit import paint, samples, scene, shader
from kit.music import Song
from kit.package import Template, entry, entry_with_transition, photo_input, text_input

WIDTH, HEIGHT, LENGTH, CHANGE = 720, 1280, 105, 24
LAST = LENGTH - 1
INK, PAPER, GOLD, BLUE = "#22303c", "#f6f1e7", "#d9a45b", "#2f4f63"
SERIF, SANS = "Noto Serif Display Bold", "Noto Sans"


def build(root):
    template = Template(root, "photo-journey", 1200, ("Photo Journey", "照片之旅", "フォトジャーニー"))
    template.inputs = [
        text_input("title", 18, 1, ("Title", "标题", "タイトル")),
        text_input("place", 24, 1, ("Place and date", "地点和日期", "場所と日付")),
        text_input("caption", 44, 2, ("Caption", "说明", "キャプション")),
        text_input("closing", 28, 2, ("Closing words", "结束语", "むすびの言葉")),
        photo_input("cover", 3, 2, ("Cover photo", "封面照片", "表紙の写真")),
        photo_input("first", 1, 1, ("First photo", "第一张照片", "写真 1")),
        photo_input("second", 1, 1, ("Second photo", "第二张照片", "写真 2")),
        photo_input("last", 9, 16, ("Last photo", "最后的照片", "最後の写真")),
    ]
    pictures(template)
    shader.write(template, "melt", shader.NOISE + MELT)
    scenes(template)
    sample_inputs(template)
    music(template)
    template.write()


def scenes(template):
    cover = template.scene("scene.plist", LENGTH, cover_scene())
    pair = template.scene("pair.plist", LENGTH, pair_scene(), ("Photo Journey: pair", "照片之旅：双图", "フォトジャーニー：二枚"))
    finale = template.scene("finale.plist", LENGTH, finale_scene(),
                            ("Photo Journey: finale", "照片之旅：终幕", "フォトジャーニー：終幕"))
    melt = template.scene("melt.plist", CHANGE, melt_scene(), ("Melt", "溶化", "メルト"))
    cube = template.scene("cube.plist", CHANGE, cube_scene(), ("Cube", "立方体", "キューブ"))
    template.group = [entry_with_transition(cover, "~cover", melt, CHANGE), entry_with_transition(pair, "~pair", cube, CHANGE),
                      entry(finale, "~finale")]


def sample_inputs(template):
    for name, picture in (("cover", samples.mountains(1200, 800)), ("first", samples.beach()), ("second", samples.cat()),
                          ("last", samples.city())):
        paint.save_jpeg(picture, template.file(f"sample/{name}.jpg"))
    template.samples({"title": "Wanderlust", "place": "Somewhere, in June", "caption": "Salt on our skin,\na friend on the way",
                      "closing": "Until\nthe next one", "cover": "cover.jpg", "first": "first.jpg", "second": "second.jpg",
                      "last": "last.jpg"})


# Pictures -----------------------------------------------------------------------------------------------------------

def pictures(template):
    for name, picture in (("dusk", dusk()), ("paper", paper()), ("night", night()), ("black", paint.canvas(64, 64, "#0b1118")[0]),
                          ("line", paint.canvas(64, 64, GOLD)[0]), ("ring", ring()), ("dots", dots()), ("shadow", shadow()),
                          ("compass", compass()), ("empty", empty())):
        paint.save_png(picture, template.file(f"res/{name}.png"))


def dusk():
    surface, pen = paint.canvas(128, 256)
    pen.rectangle(0, 0, 128, 256)
    paint.fill(pen, paint.linear((0, 0), (0, 256), ((0, "#27394b"), (0.55, "#6b6f7d"), (1, "#d8a988"))))
    return surface


def paper():
    surface, pen = paint.canvas(360, 640, PAPER)
    pen.arc(360, 60, 190, 0, 2 * math.pi)
    paint.fill(pen, paint.colour("#eadfca", 0.8))
    pen.arc(20, 610, 150, 0, 2 * math.pi)
    paint.fill(pen, paint.colour(BLUE, 0.1))
    return surface


def night():
    surface, pen = paint.canvas(128, 256)
    pen.rectangle(0, 0, 128, 256)
    paint.fill(pen, paint.linear((0, 0), (0, 256), ((0, "#0e1638"), (1, "#8f4a6f"))))
    return surface


def empty():
    """Lies under a photo and shows while there is none."""
    surface, pen = paint.canvas(512, 512)
    paint.rounded(pen, 2, 2, 508, 508, 40)
    paint.fill(pen, paint.linear((0, 0), (0, 512), ((0, "#dfe6e6"), (1, "#c5cfd0"))))
    pen.move_to(90, 380)
    for x, y in ((200, 220), (270, 310), (330, 250), (430, 380)):
        pen.line_to(x, y)
    pen.close_path()
    paint.fill(pen, paint.colour("#ffffff", 0.7))
    paint.circle(pen, 350, 160, 40)
    paint.fill(pen, paint.colour("#ffffff", 0.7))
    return surface


def shadow():
    surface, pen = paint.canvas(512, 512)
    paint.rounded(pen, 56, 56, 400, 400, 30)
    pen.fill()
    return paint.shadow_of(surface, 26, 0.5, "#3a2f24")


def ring():
    surface, pen = paint.canvas(512, 512)
    for radius, width, alpha in ((230, 3, 0.9), (205, 10, 0.35)):
        pen.new_sub_path()
        pen.arc(256, 256, radius, 0.3, 1.75 * math.pi)
        paint.stroke(pen, paint.colour(GOLD, alpha), width)
    return surface


def dots():
    surface, pen = paint.canvas(256, 256)
    for row in range(7):
        for column in range(7):
            paint.circle(pen, 26 + 34 * column, 26 + 34 * row, 4.5)
            paint.fill(pen, paint.colour(BLUE, 0.75))
    return surface


def compass():
    surface, pen = paint.canvas(256, 256)
    paint.circle(pen, 128, 128, 112)
    paint.stroke(pen, paint.colour("#ffffff", 0.9), 5)
    for i in range(24):
        angle = math.pi * i / 12
        inner = 90 if i % 6 else 80
        pen.move_to(128 + inner * math.cos(angle), 128 + inner * math.sin(angle))
        pen.line_to(128 + 102 * math.cos(angle), 128 + 102 * math.sin(angle))
        paint.stroke(pen, paint.colour("#ffffff", 0.8), 3)
    paint.star(pen, 128, 128, 4, 20, 78)
    paint.fill(pen, "#ffffff")
    return surface


# Scenes -------------------------------------------------------------------------------------------------------------

def full(name, depth=200, kind="QVQuadObject3D", **parts):
    """A picture that fills the frame for the whole scene."""
    return scene.node(kind, scene.span(0, LAST, depth), name, TextureInfo=scene.image(f"res/{name}.png"),
                      QuadInfo=scene.box(WIDTH, HEIGHT), **parts)


def whole(nodes):
    return {"Camera": scene.orthographic(WIDTH, HEIGHT), "TimeSource": scene.null_clock(LENGTH), "object3D": nodes}


def gradient(start, end, depth, first=0):
    """A black veil; `start` and `end` are each a place from the top (0) to the bottom (1) and the opacity there."""
    return scene.node("QVQuadTextureRenderSelectShaderObject3D", scene.span(first, LAST, depth), "shade",
                      TextureInfo=scene.image("res/black.png"), QuadInfo=scene.box(WIDTH, HEIGHT),
                      RenderInfo={"renderType": "QVAlphaGradualNoLight", "startAlpha": start, "endAlpha": end,
                                  "interpolation": 3})


def line(key, size, width, height, tint, at, first, font=SERIF, rise=36, seen=0, **more):
    """A text that comes up while it fades in; `seen` is its first opacity."""
    x, y = at
    motion = scene.Motion(first, (x, y - rise, 0)).to(first + 30, at=(x, y, 0), ease=scene.QUINT_OUT)
    return scene.faded(scene.words(key, size, width, height, tint, font, **more), scene.box(width, height, 1),
                       scene.span(first, LAST, 20), key, [scene.fade(first, first + 20, seen, 1, scene.SINE_OUT)],
                       TransformArray=motion.items())


def cover_scene():
    zoom = [scene.glide("scale", 0, LAST, (1.03, 1.03, 1), (1.09, 1.09, 1))]
    fps = scene.span(0, LAST)
    photo = scene.quad(scene.user_image("cover"), scene.box(WIDTH, HEIGHT, 1, blurred=True), fps, "cover")
    # A line where the photo meets its blurred copy; it grows with both.
    edges = [scene.quad(scene.image("res/line.png"), scene.box(WIDTH, 3, at=(0, y, 0)), fps, "edge") for y in (240, -240)]
    picture = scene.group(scene.span(0, LAST, 150), [photo, *edges], "picture", MutableTransformArray=zoom)
    rule = scene.quad(scene.image("res/line.png"), scene.box(440, 4), scene.span(22, LAST, 20), "rule",
                      TransformArray=scene.Motion(22, (0, 394, 0), (0.001, 1, 1)).to(54, scale=1.0, ease=scene.QUINT_OUT).items())
    rose = scene.faded(scene.image("res/compass.png"), scene.box(130, 130), scene.span(6, LAST, 20), "compass",
                       [scene.fade(6, 24, 0, 0.95)], TransformArray=scene.Motion(6, (0, -430, 0), 0.5, -120).to(
                           60, scale=1.0, rotate=0, ease=scene.BACK_OUT).items())
    return whole([full("dusk"), picture, gradient("0,0.85", "0.55,0.08", 100), rule, rose,
                  line("title", 98, 640, 144, "#ffffff", (0, 490), 0, seen=0.6),
                  line("place", 40, 640, 68, "#f3dcbc", (0, 336), 28, SANS)])


def framed(key, size, spot, first, come_from, style, tilt):
    """A photo on its shadow, with the grey picture that shows while it is missing."""
    motion = scene.Motion(first, (spot[0] + come_from[0], spot[1] + come_from[1], 0), 0.9, tilt * 4)
    motion.to(first + 40, at=(*spot, 0), scale=1.0, rotate=tilt, ease=scene.QUINT_OUT)
    fps = scene.span(first, LAST)
    stain = scene.quad(scene.image("res/shadow.png"), scene.box(size * 1.28, size * 1.28, at=(0, -16, 0)), fps, "shadow")
    blank = scene.quad(scene.image("res/empty.png"), scene.box(size, size), fps, "empty")
    picture = {"textureType": "filterImage", "texture": key, **style}
    photo = scene.quad(picture, scene.box(size, size, 1), fps, key)
    return scene.group(scene.span(first, LAST, 50), [stain, blank, photo], key + " frame", TransformArray=motion.items(),
                       MutableTransformArray=[scene.glide("translate", first, LAST, (0, 0, 0), (0, 14, 0))])


def pair_scene():
    round_corners = {"filterType": "roundRect", "circularR": 80.0}
    stroked = {"filterType": "circularAndStroke", "circularR": 80.0, "strokeW": 44.0, "strokeColor": "1,1,1,1"}
    ring_turn = [scene.glide("rotate", 0, LAST, (0, 0, 0), (0, 0, -110))]
    arc = scene.group(scene.span(0, LAST, 120), [
        scene.quad(scene.image("res/ring.png"), scene.box(620, 620), scene.span(0, LAST), "ring", MutableTransformArray=ring_turn)],
        TransformArray=scene.still(0, (-90, 250, 0)))
    grid = scene.faded(scene.image("res/dots.png"), scene.box(210, 210), scene.span(4, LAST, 110), "dots",
                       [scene.fade(4, 30, 0, 1)], TransformArray=scene.Motion(4, (180, 480, 0)).to(70, at=(232, 480, 0)).items())
    return whole([full("paper"), arc, grid,
                  framed("first", 460, (-84, 240), 0, (-620, 60), round_corners, -3),
                  framed("second", 380, (128, -146), 10, (620, -80), stroked, 4),
                  line("caption", 46, 620, 150, INK, (0, -470), 34)])


def finale_scene():
    zoom = [scene.glide("scale", 0, LAST, (1.14, 1.14, 1), (1, 1, 1), scene.SINE_OUT)]
    photo = scene.quad(scene.user_image("last"), scene.box(WIDTH, HEIGHT, 2), scene.span(0, LAST, 150), "last",
                       MutableTransformArray=zoom)
    rule = scene.quad(scene.image("res/line.png"), scene.box(220, 5), scene.span(40, LAST, 20), "rule",
                      TransformArray=scene.Motion(40, (0, -250, 0), (0.001, 1, 1)).to(70, scale=1.0, ease=scene.QUINT_OUT).items())
    return whole([full("night"), photo, gradient("0.45,0", "1,0.85", 100), rule,
                  line("closing", 84, 640, 250, "#ffffff", (0, -410), 30)])


# Transitions --------------------------------------------------------------------------------------------------------

MELT = """
void main()
{
    vec4 colour = texture2D(videoFrame, textureCoordinate);
    float grain = cloud(textureCoordinate * vec2(4.0, 7.0)) * 0.75 + 0.25 * (1.0 - textureCoordinate.y);
    float front = aplae * 1.3 - 0.15;
    float edge = smoothstep(front - 0.012, front + 0.012, grain);
    float glow = 1.0 - smoothstep(0.0, 0.06, grain - front);
    vec3 warm = mix(colour.rgb, vec3(1.0, 0.66, 0.3), 0.9 * glow * glow);
    gl_FragColor = vec4(warm + vec3(0.3) * pow(glow, 8.0), edge);
}
"""


def composed(kind, texture, depth, fps=None, name=None, **parts):
    return scene.node(kind, fps or scene.span(0, CHANGE - 1, depth), name or texture, TextureInfo={"textureType": texture},
                      **parts)


def melt_scene():
    size = scene.box(WIDTH, HEIGHT)
    under = composed("QVQuadObject3D", "nextSceneRenderTexture", 100, QuadInfo=size)
    over = composed("QVQuadCustomShaderOneVariable", "currentSceneRenderTexture", 50,
                    scene.span(0, CHANGE - 1, 50, customShaderPath=shader.path("melt")), QuadInfo=size,
                    CustomShaderInfo={"startOneVariable": 0.0},
                    AnimationInfo=[{"sartFps": 0, "endFps": CHANGE - 1, "ease": scene.SINE_IN_OUT, "startOneVariable": 0.0,
                                    "endOneVariable": 1.0}])
    return {"Camera": scene.orthographic(WIDTH, HEIGHT), "TimeSource": scene.null_clock(CHANGE), "object3D": [under, over]}


def cube_scene():
    """Two faces of a cube that turns by a quarter; the depth test hides what lies behind."""
    fov = 44
    far = scene.distance_for(WIDTH, fov) + WIDTH / 2
    last = CHANGE - 1
    solid = scene.span(0, last, 0, isEnableDephTest=True)
    front = scene.box(WIDTH, HEIGHT, at=(0, 0, WIDTH / 2))
    faces = [composed("QVQuadObject3D", "currentSceneRenderTexture", 0, solid, QuadInfo=front),
             composed("QVQuadObject3D", "nextSceneRenderTexture", 0, solid, QuadInfo=front,
                      TransformArray=scene.still(0, rotate=(0, 90, 0)))]
    turn = [scene.glide("translate", 0, last, (0, 0, -far), (0, 0, -far)),
            scene.glide("translate", 0, last // 2, (0, 0, 0), (0, 0, -420), scene.SINE_OUT),
            scene.glide("translate", last // 2 + 1, last, (0, 0, -420), (0, 0, 0), scene.SINE_IN),
            scene.glide("rotate", 0, last, (0, 0, 0), (0, -90, 0), scene.CUBIC_IN_OUT)]
    back = scene.quad(scene.image("res/night.png"), scene.box(4200, 5200, at=(0, 0, -2300)), scene.span(0, last, 500), "back")
    return {"Camera": scene.perspective(fov, WIDTH, HEIGHT), "TimeSource": scene.null_clock(CHANGE),
            "object3D": [back, scene.group(scene.span(0, last, 10), faces, "cube", MutableTransformArray=turn)]}


# Music --------------------------------------------------------------------------------------------------------------

def music(template):
    song = Song(("D3: A3 D4 F#4", "B2: B3 D4 F#4", "G2: B3 D4 G4", "A2: A3 C#4 E4"), 104)
    song.pads(0.05).bass().arpeggio(division=2, level=0.13, octave=2).strums(level=0.05).drums(claps=(3,), level=0.8)
    song.tune("F#5@0 A5@1.5 D6@2.5 C#6@4 B5@5.5 F#5@6.5 G5@8 B5@9.5 D6@10.5 E6@12 C#6@13.5 A5@14.5", level=0.1)
    song.save(template.file("bg-audio.mp3"))
