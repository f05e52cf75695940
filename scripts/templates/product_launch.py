"""product-launch: a product on a card that is rendered into a texture, with its reflection, before a video wall."""

import math

from kit import paint, samples, scene, shader, sound, video
from kit.music import Song
from kit.package import Template, photo_input, text_input

WIDTH, HEIGHT, FRAMES, FOV = 1280, 720, 180, 50
LAST = FRAMES - 1
FAR = scene.distance_for(WIDTH, FOV)  # here a unit is a pixel
NIGHT, CORAL, AMBER, ICE = "#0d1024", "#ff6b57", "#ffb454", "#e8f0ff"


def build(root):
    template = Template(root, "product-launch", 1700, ("Product Launch", "产品发布", "新製品発表"), (WIDTH, HEIGHT))
    template.inputs = [text_input("headline", 16, 1, ("Headline", "标题", "見出し")),
                       text_input("subline", 40, 2, ("Second line", "副标题", "サブタイトル")),
                       text_input("price", 10, 1, ("Price", "价格", "価格")),
                       text_input("call", 24, 1, ("Call to action", "行动号召", "よびかけ")),
                       photo_input("product", 1, 1, ("Product photo", "产品照片", "商品の写真"))]
    wave_video(template.file("res/waves.mp4"))
    pictures(template)
    shader.write(template, "sweep", SWEEP)
    template.scene("scene.plist", FRAMES, scene_file())
    paint.save_jpeg(samples.headphones(), template.file("sample/product.jpg"))
    template.samples({"headline": "Hear more", "subline": "Forty hours of music,\none charge", "price": "$ 149",
                      "call": "Order now", "product": "product.jpg"})
    music(template)
    template.write()


# The video wall -----------------------------------------------------------------------------------------------------

def wave_video(path):
    with video.Video(path, 640, 360, quality=24) as out:
        for frame in range(FRAMES + 3):
            out.frame(wave_frame(frame / FRAMES))


def wave_frame(turn):
    surface, pen = paint.canvas(640, 360)
    pen.rectangle(0, 0, 640, 360)
    paint.fill(pen, paint.linear((0, 0), (640, 360), ((0, "#161a3a"), (0.5, NIGHT), (1, "#1d0f2e"))))
    spin = 2 * math.pi * turn
    samples.glow(pen, 220 + 40 * math.sin(spin), 150, 260, "#43307a", 0.65)
    samples.glow(pen, 520, 260 + 30 * math.cos(spin), 240, "#7a2a4e", 0.5)
    for i in range(7):
        y, rise = 150 + 26 * i, 46 - 4 * i
        pen.move_to(0, 360)
        for x in range(0, 641, 8):
            pen.line_to(x, y + rise * math.sin(x / (120 - 7 * i) + spin + 0.7 * i) + 10 * math.sin(x / 47 - spin + i))
        pen.line_to(640, 360)
        tint = paint.mix("#5b3fa8", CORAL, i / 6)
        paint.fill(pen, paint.linear((0, y - rise), (0, y + 120), ((0, tint, 0.2), (1, tint, 0.0))))
    return surface


# Pictures -----------------------------------------------------------------------------------------------------------

def pictures(template):
    for name, picture in (("card", card()), ("gloss", gloss()), ("mask", mask()), ("glow", glow()), ("badge", badge()),
                          ("button", button()), ("tape", tape()), ("spark", spark()), ("white", paint.canvas(64, 64, "#ffffff")[0]),
                          ("rule", rule())):
        paint.save_png(picture, template.file(f"res/{name}.png"))


def card():
    """Fills the card; shows while there is no photo."""
    surface, pen = paint.canvas(512, 512)
    pen.rectangle(0, 0, 512, 512)
    paint.fill(pen, paint.linear((0, 0), (512, 512), ((0, "#3a2f6b"), (1, "#a8405a"))))
    for i in range(5):
        paint.circle(pen, 256, 256, 60 + 44 * i)
        paint.stroke(pen, paint.colour("#ffffff", 0.2 - 0.03 * i), 3)
    return surface


def gloss():
    """Painted over the photo: a bright upper edge, a dark lower one."""
    surface, pen = paint.canvas(512, 512)
    pen.rectangle(0, 0, 512, 512)
    paint.fill(pen, paint.linear((0, 0), (0, 512), ((0, "#ffffff", 0.28), (0.3, "#ffffff", 0), (0.7, "#1a0a24", 0), (1, "#1a0a24", 0.5))))
    return surface


def mask():
    surface, pen = paint.canvas(512, 512, "#000000")
    paint.rounded(pen, 3, 3, 506, 506, 52)
    paint.fill(pen, "#ffffff")
    return surface


def glow():
    surface, pen = paint.canvas(512, 512)
    samples.glow(pen, 256, 256, 256, "#ff7a5c", 0.9)
    return surface


def badge():
    surface, pen = paint.canvas(256, 256)
    points = [(128 + (112 if i % 2 else 98) * math.cos(math.pi * i / 16), 128 + (112 if i % 2 else 98) * math.sin(math.pi * i / 16))
              for i in range(32)]
    paint.smooth(pen, points, closed=True)
    paint.fill(pen, paint.radial((110, 96), 170, ((0, "#ffd27a"), (1, "#ff9d3c"))))
    paint.circle(pen, 128, 128, 84)
    pen.set_dash((2, 9))
    paint.stroke(pen, paint.colour("#7a3410", 0.6), 4)
    return paint.with_shadow(surface, 7, 0.45, "#05060f", (0, 6))


def button():
    surface, pen = paint.canvas(420, 120)
    paint.rounded(pen, 14, 12, 392, 90, 45)
    paint.fill(pen, paint.linear((0, 12), (0, 102), ((0, "#ff8a6e"), (1, "#f2503f"))))
    return paint.with_shadow(surface, 9, 0.5, "#05060f", (0, 7))


def tape():
    """One repeat of a band of chevrons; the texture is moved along."""
    surface, pen = paint.canvas(64, 64, "#14183a")
    for x in (-32, 0, 32):
        for px, py in ((x + 4, 8), (x + 18, 8), (x + 32, 32), (x + 18, 56), (x + 4, 56), (x + 18, 32)):
            pen.line_to(px, py)
        pen.close_path()
        paint.fill(pen, paint.colour(AMBER, 0.9))
    return surface


def spark():
    surface, pen = paint.canvas(64, 64)
    samples.glow(pen, 32, 32, 31, "#ffd9a8", 1.0)
    return surface


def rule():
    surface, pen = paint.canvas(64, 64)
    pen.rectangle(0, 0, 64, 64)
    paint.fill(pen, paint.linear((0, 0), (64, 0), ((0, CORAL), (1, AMBER))))
    return surface


SWEEP = """
// A band of light that crosses the picture as the variable goes from 0 to 1.
void main()
{
    float along = textureCoordinate.x + 0.35 * textureCoordinate.y;
    float band = 1.0 - smoothstep(0.0, 0.16, abs(along - mix(-0.3, 1.65, aplae)));
    gl_FragColor = vec4(1.0, 0.95, 0.86, 0.55 * band * texture2D(videoFrame, textureCoordinate).r);
}
"""


# The scene ----------------------------------------------------------------------------------------------------------

CARD = 400
SPOT = (-290, 66, -FAR)
MIDDLE, COLUMN = 296, 520  # where the lines stand, clear of the badge


def scene_file():
    nodes = [card_texture(), *backdrop(), *card_and_reflection(), *lines(), *offer(), *sparks()]
    return {"Camera": camera(), "TimeSource": scene.null_clock(FRAMES), "object3D": nodes}


def camera():
    """The eye glides from the side to the middle and keeps looking at the stage."""
    def key(first, last, start, end, ease):
        return {"sartFps": first, "endFps": last, "ease": 0,
                "isMoveCameraPosition": True, "moveCameraPositionEase": ease, "startMoveCameraPosition": scene.vector(*start),
                "endMoveCameraPosition": scene.vector(*end),
                "isMoveTargetPoint": True, "moveTargetPointEase": ease, "startTargetPoint": scene.vector(0, 0, -FAR),
                "endTargetPoint": scene.vector(0, 0, -FAR)}
    return scene.perspective(FOV, WIDTH, HEIGHT, [key(0, 90, (-300, 60, -120), (0, 0, 0), scene.CUBIC_OUT),
                                                  key(91, LAST, (0, 0, 0), (90, 20, -60), scene.SINE_IN_OUT)])


def card_texture():
    """Draws the card into a texture of its own, through a camera of its own."""
    fps = scene.span(0, LAST, 0)
    photo = {"textureType": "filterImage", "texture": "product", "filterType": "imageSynthesis",
             "maskPhotoName": scene.ROOT + "res/gloss.png"}
    # The picture slides back behind its mask, which stays.
    zoom = {"sartFps": 0, "endFps": LAST, "startRotate": "0,0,0", "endRotate": "0,0,0", "rotateEase": scene.SINE_OUT,
            "startTextureOrigin": "0.08,0.08", "endTextureOrigin": "0,0", "startTextureSize": "0.84,0.84", "endTextureSize": "1,1"}
    masked = lambda texture, name, **parts: scene.node("QVQuadMaskObject3D", fps, name, TextureInfo=texture, QuadInfo=scene.box(512, 512),
                                                       MaskInfo=scene.image("res/mask.png"), **parts)
    parts = [masked(scene.image("res/card.png"), "card"), masked(photo, "product", TransformArray=[zoom])]
    return scene.group(scene.span(0, LAST, 1000, isRenderToTexture=True, textureSize="512,512", textureMapKey="card"), parts,
                       "card texture", CameraInfo=scene.orthographic(512, 512))


def backdrop():
    wall = scene.quad({"textureType": "mp4Video", "texture": scene.ROOT + "res/waves.mp4", "videoFps": 30},
                      scene.box(2900, 1632, at=(0, 0, -FAR - 620)), scene.span(0, LAST, 900), "video wall")
    halo = scene.node("QVQuadBlendObject3D", scene.span(0, LAST, 800), "halo", TextureInfo=scene.image("res/glow.png"),
                      QuadInfo=scene.box(1150, 1150), BlendInfo={"srcBlend": 770, "decBlend": 1},
                      AnimationInfo=[scene.fade(0, 40, 0.3, 0.55, scene.SINE_OUT)],
                      TransformArray=scene.still(0, (SPOT[0], SPOT[1], -FAR - 140)),
                      MutableTransformArray=scene.swing("translate", 0, LAST, 60, (0, 0, 0), (26, 18, 0)))
    return [wall, halo]


def card_and_reflection():
    """The card turns in; its mirror image below turns with it and fades downwards."""
    fps = scene.span(0, LAST)
    picture = {"textureType": "RTTTexture", "textureMapKey": "card"}
    front = scene.quad(picture, scene.box(CARD, CARD), fps, "card")
    mirror = scene.node("QVQuadTextureRenderSelectShaderObject3D", fps, "reflection", TextureInfo=picture,
                        QuadInfo=scene.box(CARD, CARD), TransformArray=scene.still(0, (0, -CARD - 14, 0), (1, -1, 1)),
                        RenderInfo={"renderType": "QVAlphaGradualNoLight", "startAlpha": "0.6,0", "endAlpha": "1,0.36",
                                    "interpolation": 3})
    light = scene.node("QVQuadCustomShaderOneVariable", scene.span(56, 92, 0, customShaderPath=shader.path("sweep"),
                                                                   isChangeBlend=True, srcBlend="SRC_ALPHA", dstBlend="ONE"),
                       "sweep", TextureInfo=scene.image("res/mask.png"), QuadInfo=scene.box(CARD, CARD),
                       CustomShaderInfo={"startOneVariable": 0.0},
                       AnimationInfo=[{"sartFps": 56, "endFps": 92, "ease": scene.SINE_IN_OUT, "startOneVariable": 0.0,
                                       "endOneVariable": 1.0}])
    turn = scene.Motion(0, (SPOT[0] + 60, SPOT[1], SPOT[2] - 60), 0.96, (0, 38, 0)).to(
        60, at=SPOT, scale=1.0, rotate=(0, 14, 0), ease=scene.QUINT_OUT).to(LAST, rotate=(0, -6, 0), ease=scene.SINE_IN_OUT)
    return [scene.group(scene.span(0, LAST, 500), [mirror, front, light], "stage", TransformArray=turn.items(),
                        ComponentsInfo=[scene.sound("res/whoosh.mp3", 2, 40, "whoosh", 0.5),
                                        scene.sound("res/shine.mp3", 58, 120, "shine", 0.35)])]


def lines():
    """The headline is wiped in from left to right, the second line rises."""
    wipe = {"renderType": "QVAlphaGradualNoLight", "startAlpha": "0,0", "endAlpha": "1,0", "interpolation": 2,
            "AnimationInfo": [{"sartFps": 26, "endFps": 60, "ease": 0, "startStartAlpha": "0,0", "endStartAlpha": "0.999,1",
                               "startAlphaEase": scene.SINE_OUT}]}
    headline = scene.node("QVQuadTextureRenderSelectShaderObject3D", scene.span(26, LAST, 100), "headline",
                          TextureInfo=scene.words("headline", 112, 586, 150, ICE), QuadInfo=scene.box(COLUMN, 133, 1), RenderInfo=wipe,
                          TransformArray=scene.Motion(26, (MIDDLE - 20, 150, -FAR)).to(70, at=(MIDDLE, 150, -FAR)).items())
    bar = scene.quad(scene.image("res/rule.png"), scene.box(420, 6, at=(210, 0, 0)), scene.span(40, LAST, 100), "rule",
                     TransformArray=scene.Motion(40, (MIDDLE - 210, 70, -FAR), (0.001, 1, 1)).to(76, scale=1.0, ease=scene.QUINT_OUT).items())
    subline = scene.faded(scene.words("subline", 44, 559, 130, "#b9c3e6", "Noto Sans"), scene.box(COLUMN, 121, 1),
                          scene.span(52, LAST, 100), "subline", [scene.fade(52, 74, 0, 1)],
                          TransformArray=scene.Motion(52, (MIDDLE, -40, -FAR)).to(84, at=(MIDDLE, -6, -FAR)).items())
    return [headline, bar, subline]


def offer():
    """Price badge and button; the badge lands with an ease of its own, drawn as a curve."""
    landing = scene.path(30005, ((0, 0), (0.2, 2.6), (0.55, 0.2), (0.8, 1.25), (1, 1)), 200)
    fps = scene.span(80, LAST)
    price = scene.group(scene.span(80, LAST, 60), [
        scene.quad(scene.image("res/badge.png"), scene.box(230, 230), fps, "badge",
                   MutableTransformArray=[scene.glide("rotate", 80, LAST, (0, 0, 0), (0, 0, -80))]),
        scene.quad(scene.words("price", 50, 168, 78, "#5a2208"), scene.box(121, 56, 1), fps, "price")],
        "price badge", BezierArray=[landing],
        TransformArray=scene.Motion(80, (-92, 214, -FAR + 60), 0.001, 0).to(112, scale=0.94, rotate=10, ease=30005).items(),
        ComponentsInfo=[scene.sound("res/pop.mp3", 82, 96, "pop", 0.6)])
    press = scene.group(scene.span(96, LAST, 60), [
        scene.quad(scene.image("res/button.png"), scene.box(340, 97), scene.span(96, LAST), "button"),
        scene.quad(scene.words("call", 40, 330, 60, "#ffffff", "Noto Sans"), scene.box(280, 51, 1, at=(0, 6, 0)), scene.span(96, LAST),
                   "call")],
        "call to action", TransformArray=scene.Motion(96, (MIDDLE, -340, -FAR)).to(124, at=(MIDDLE, -148, -FAR), ease=scene.QUINT_OUT).items())
    return [price, press, ticker()]


def ticker():
    """A band whose texture runs along while the quad stands still."""
    item = {"sartFps": 0, "endFps": LAST, "startTranslate": scene.vector(0, -338, -FAR), "startScale": "1,1,1",
            "startTextureOrigin": "0,0", "endTextureOrigin": "-6,0", "startTextureSize": "46,1", "endTextureSize": "46,1",
            "startRotate": "0,0,0", "endRotate": "0,0,0", "rotateEase": scene.LINEAR}
    return scene.faded(scene.image("res/tape.png"), scene.box(1900, 42), scene.span(0, LAST, 50), "ticker",
                       [scene.fade(0, 30, 0, 1)], TransformArray=[item])


def sparks():
    random = paint.scattered(23)
    return [ember(random, 3 * i) for i in range(26)]


def ember(random, first):
    last = min(LAST, first + random.randint(80, 130))
    x, z, size = random.uniform(-760, 760), -FAR + random.uniform(-320, 420), random.uniform(8, 26)
    rise = scene.glide("translate", first, last, (x, -460, z), (x + random.uniform(-140, 140), 460, z))
    return scene.node("QVQuadBlendObject3D", scene.span(first, last, 300), "ember", TextureInfo=scene.image("res/spark.png"),
                      QuadInfo=scene.box(size, size), BlendInfo={"srcBlend": 770, "decBlend": 1},
                      AnimationInfo=[scene.fade(first, first + 20, 0, 0.8), scene.fade(first + 21, last, 0.8, 0)],
                      MutableTransformArray=[rise])


def music(template):
    song = Song(("D2: D4 F4 A4", "D2: D4 F4 A4", "Bb1: D4 F4 Bb4", "C2: E4 G4 C5"), 120)
    song.bass(tuple((i / 2, 0.42) for i in range(8)), 0.22).pads(0.05, 6).drums((0, 1, 2, 3), (1, 3), 4, 0.9)
    song.arpeggio(sound.pluck, 4, 0.085, (0, 1, 2, 1, 2, 1), 2).tune("A5@0 D6@3 F5@4 A5@7 Bb5@8 D6@11 C6@12 G5@14.5", level=0.09)
    song.mix.duck([i * song.beat for i in range(16)], 0.3)
    song.save(template.file("bg-audio.mp3"), 1.2, 0.14)
    sound.save_effect(template.file("res/whoosh.mp3"), sound.whoosh(1.0, 200, 3800))
    sound.save_effect(template.file("res/pop.mp3"), sound.pop(430))
    sound.save_effect(template.file("res/shine.mp3"), sound.chime(("A6", "C7", "E7"), 0.05, 1.6))
