"""light-show: coloured lights wander over a stage, a floor and cubes; texts and comets fly along Bezier paths."""

import math

from kit import paint, samples, scene, sound
from kit.music import Song
from kit.package import Template, photo_input, text_input

WIDTH, HEIGHT, FRAMES, FOV = 1280, 720, 180, 60
LAST = FRAMES - 1
FAR = scene.distance_for(WIDTH, FOV)  # here a unit is a pixel
STAGE = (0, -14, -1330)
# Everything lies in one group of this scale: the 16 bits of the depth buffer tell near things apart much better.
WORLD = 0.1
PINK, CYAN, AMBER = "#ff3d8b", "#2fd6ff", "#ffb347"


def build(root):
    template = Template(root, "light-show", 1800, ("Light Show", "灯光秀", "ライトショー"), (WIDTH, HEIGHT))
    template.inputs = [text_input("title", 16, 1, ("Title", "标题", "タイトル")),
                       text_input("subtitle", 36, 1, ("Second line", "副标题", "サブタイトル")),
                       photo_input("photo", 1, 1, ("A photo", "照片", "写真"))]
    pictures(template)
    template.scene("scene.plist", FRAMES, scene_file())
    paint.save_jpeg(samples.couple(), template.file("sample/photo.jpg"))
    template.samples({"title": "Encore!", "subtitle": "Friday, 9 pm, Harbour Hall", "photo": "photo.jpg"})
    music(template)
    template.write()


# Pictures -----------------------------------------------------------------------------------------------------------

def pictures(template):
    for name, picture in (("floor", floor()), ("wall", wall()), ("bar", bar()), ("box", box_face()), ("spark", spark()),
                          ("flare-pink", flare(PINK)), ("flare-cyan", flare(CYAN)), ("flare-amber", flare(AMBER))):
        paint.save_png(picture, template.file(f"res/{name}.png"))


def floor():
    surface, pen = paint.canvas(512, 512, "#62667e")
    for i in range(9):
        for x, y, dx, dy in ((64 * i, 0, 0, 512), (0, 64 * i, 512, 0)):
            pen.move_to(x, y)
            pen.line_to(x + dx, y + dy)
            paint.stroke(pen, paint.colour("#262a40", 0.9), 5)
    return paint.grain(surface, 3)


def wall():
    surface, pen = paint.canvas(512, 512, "#23253c")
    for row in range(9):
        for column in range(9):
            x = 60 * column + (30 if row % 2 else 0) - 20
            paint.rounded(pen, x, 58 * row + 4, 54, 52, 8)
            paint.fill(pen, paint.linear((x, 0), (x + 54, 0), ((0, "#5a5e80"), (1, "#383b5a"))))
    return surface


def bar():
    surface, pen = paint.canvas(64, 256, "#20243c")
    for i in range(12):
        paint.rounded(pen, 5, 5 + 21 * i, 54, 16, 4)
        paint.fill(pen, paint.mix("#ffffff", "#b9c3ff", i / 11))
    return surface


def box_face():
    """Every face of the cube in the middle, while there is no photo."""
    surface, pen = paint.canvas(256, 256)
    pen.rectangle(0, 0, 256, 256)
    paint.fill(pen, paint.linear((0, 0), (256, 256), ((0, "#c9cdf0"), (1, "#8a8fc2"))))
    paint.star(pen, 128, 136, 5, 36, 84)
    paint.fill(pen, "#ffffff")
    pen.rectangle(6, 6, 244, 244)
    paint.stroke(pen, "#ffffff", 8)
    return surface


def spark():
    surface, pen = paint.canvas(64, 64)
    samples.glow(pen, 32, 32, 31, "#ffffff", 1.0)
    return surface


def flare(tint):
    """A lamp: a bright middle, a wide halo, two thin rays."""
    surface, pen = paint.canvas(256, 256)
    samples.glow(pen, 128, 128, 126, tint, 0.75)
    for turn in (0, math.pi / 2):
        paint.ellipse(pen, 128, 128, 122, 2.4, turn + 0.4)
        paint.fill(pen, paint.colour("#ffffff", 0.5))
    samples.glow(pen, 128, 128, 46, "#ffffff", 1.0)
    return paint.blur_surface(surface, 1.5)


# Lights -------------------------------------------------------------------------------------------------------------

PLACES = {  # where each lamp wanders: three stops
    "pink": ((-620, 430, -1000), (80, 470, -1150), (-420, 380, -1500)),
    "cyan": ((640, 400, -1500), (-160, 440, -1500), (520, 470, -1000)),
    "amber": ((0, 360, -900), (560, 260, -1250), (-560, 300, -1200)),
}
TINTS = {"pink": PINK, "cyan": CYAN, "amber": AMBER}
LEGS = ((0, 89), (90, LAST))


def world(place):
    """A place for lights and camera, which lie outside the group."""
    return scene.vector(*(round(WORLD * part, 3) for part in place))


def lights():
    soft = {"lightSourceType": 2, "lightSourcePosition": "0.2,0.8,1", "ambientMaterialColor": "0.1,0.1,0.16",
            "diffuseMaterialColor": "0.16,0.16,0.22", "specularMaterialColor": "0,0,0", "specularShininess": 1.0}
    return [soft, *(lamp(name) for name in PLACES)]


def lamp(name, strength=0.95):
    stops, tint = PLACES[name], paint.colour(TINTS[name])[:3]
    strength *= 0.6 if name == "amber" else 1
    light = {"lightSourceType": 1 if name == "amber" else 3, "lightSourcePosition": world(stops[0]),
             "lightSourceColor": scene.vector(*tint), "ambientMaterialColor": "0,0,0",
             "diffuseMaterialColor": scene.vector(*(round(strength * part, 3) for part in tint)),
             "specularMaterialColor": scene.vector(*(round(0.4 * part, 3) for part in tint)), "specularShininess": 24.0,
             "AnimationInfo": [{"sartFps": first, "endFps": last, "startLightSourcePosition": world(stops[i]),
                                "endLightSourcePosition": world(stops[i + 1]), "positionEase": scene.SINE_IN_OUT}
                               for i, (first, last) in enumerate(LEGS)]}
    if light["lightSourceType"] == 3:
        light.update(spotLightDirection=scene.vector(0.25 if name == "pink" else -0.2, -1, -0.15), spotLightExponent=5.0,
                     spotLightCutOffAngle=38.0)
    return light


def flares():
    """What one sees of the lamps; they move as the lights do."""
    out = []
    for name, stops in PLACES.items():
        moves = [scene.glide("translate", first, last, stops[i], stops[i + 1], scene.SINE_IN_OUT)
                 for i, (first, last) in enumerate(LEGS)]
        out.append(added(f"flare-{name}", 360, scene.span(0, LAST, 20), "lamp", [scene.fade(0, 20, 0.6, 0.9)], MutableTransformArray=moves))
    return out


def added(picture, size, fps, name, fades, **parts):
    """A quad whose light is added to what is behind it."""
    return scene.node("QVQuadBlendObject3D", fps, name, TextureInfo=scene.image(f"res/{picture}.png"), QuadInfo=scene.box(size, size),
                      BlendInfo={"srcBlend": 770, "decBlend": 1}, AnimationInfo=fades, **parts)


# The scene ----------------------------------------------------------------------------------------------------------

def scene_file():
    nodes = [*room(), *equalizer(), cube(), *comets(), *flares(), *texts()]
    return {"Camera": camera(), "TimeSource": scene.null_clock(FRAMES), "LightSourceArray": lights(), 
            "object3D": [scene.group(scene.span(0, LAST), nodes, "world", TransformArray=scene.still(0, scale=WORLD))]}


def camera():
    """Comes down from the ceiling, then goes past the stage with its eyes on it."""
    goal = world((0, 0, STAGE[2]))
    down = {"sartFps": 0, "endFps": 54, "ease": 0, "isRotateFromRightVector": True, "rotateFromRightVectorEase": scene.CUBIC_OUT,
            "startRotateFromRightVector": 3.0, "endRotateFromRightVector": 0.0}

    def ride(first, last, start, end):
        return {"sartFps": first, "endFps": last, "ease": 0, "isMoveCameraPosition": True,
                "moveCameraPositionEase": scene.SINE_IN_OUT, "startMoveCameraPosition": world(start),
                "endMoveCameraPosition": world(end), "isMoveTargetPoint": True, "moveTargetPointEase": 0,
                "startTargetPoint": goal, "endTargetPoint": goal}
    return scene.perspective(FOV, WIDTH, HEIGHT, [down, ride(55, 112, (0, 0, 0), (-240, 50, -60)),
                                                  ride(113, LAST, (-240, 50, -60), (210, 20, -20))])


def mesh(kind, texture, size, fps, name, **parts):
    width, height, *depth = size
    info = {"modelWidth": float(width), "modelHeight": float(height)}
    if depth:
        info["modelDepth"] = float(depth[0])
    return scene.node(kind, fps, name, TextureInfo=texture, MeshInfo=info, **parts)


def lit(depth):
    return scene.span(0, LAST, depth, isLightEnable=True, isEnableDephTest=True)


def tiled(first, spot, rotate, repeats):
    """A still placement with a texture that repeats."""
    place = scene.still(first, spot, rotate=rotate)[0]
    size = scene.vector(*repeats)
    place.update(startTextureOrigin="0,0", endTextureOrigin="0,0", startTextureSize=size, endTextureSize=size)
    return [place]


def room():
    ground = mesh("QVPlaneObject3D", scene.image("res/floor.png"), (6400, 1700), lit(300), "floor",
                  TransformArray=tiled(0, (0, -300, -1090), (-90, 0, 0), (8, 2.1)))
    back = mesh("QVPlaneObject3D", scene.image("res/wall.png"), (6400, 3600), lit(310), "wall",
                TransformArray=tiled(0, (0, 1490, -1930), (0, 0, 0), (9, 5)))
    return [back, ground]


def equalizer():
    random = paint.scattered(2)
    return [column(random, i) for i in range(11)]


def column(random, i):
    """A lit pillar that dances on the beat, two swings a second."""
    pillar = mesh("QVCubeObject3D", scene.image("res/bar.png"), (110, 560, 110), lit(0), "pillar",
                  MutableTransformArray=pumped(random))
    pillar["MeshInfo"]["anchorY"] = 280.0
    return scene.group(scene.span(0, LAST, 200), [pillar], "column", TransformArray=scene.still(0, (-1100 + 220 * i, -300, -1770)))


def pumped(random):
    items, low = [], random.uniform(0.15, 0.4)
    for start in range(0, FRAMES, 15):
        high = random.uniform(0.45, 1.0)
        items += [scene.glide("scale", start, start + 4, (1, low, 1), (1, high, 1), scene.QUAD_OUT),
                  scene.glide("scale", start + 5, start + 14, (1, high, 1), (1, low, 1), scene.SINE_IN)]
    return items


def cube():
    """The photo on every side, in lights of its own; inside it the cube that shows while there is none."""
    bright = {"lightSourceType": 2, "lightSourcePosition": "0.1,0.5,1", "ambientMaterialColor": "0.42,0.42,0.46",
              "diffuseMaterialColor": "0.5,0.5,0.5", "specularMaterialColor": "0.2,0.2,0.2", "specularShininess": 30.0}
    own = [bright, lamp("pink", 0.5), lamp("cyan", 0.5)]
    parts = [mesh("QVCubeObject3D", scene.image("res/box.png"), (330, 330, 330), lit(0), "box", LightSourceArray=own),
             mesh("QVCubeObject3D", scene.user_image("photo"), (350, 350, 350), lit(0), "photo", LightSourceArray=own)]
    turn = [scene.glide("rotate", 0, LAST, (8, -30, 0), (14, 330, 0), scene.SINE_OUT)]
    # In the first frame it stands on the floor already.
    rise = scene.Motion(0, (STAGE[0], -150, STAGE[2])).hold(9).to(60, at=STAGE, ease=30006)
    landing = scene.path(30006, ((0, 0), (0.3, 1.9), (0.6, 0.6), (0.85, 1.1), (1, 1)), 200)
    spinning = scene.group(scene.span(0, LAST), parts, "turning", MutableTransformArray=turn)
    return scene.group(scene.span(0, LAST, 100), [spinning], "cube", BezierArray=[landing], TransformArray=rise.items(),
                       MutableTransformArray=scene.swing("translate", 61, LAST, 29, (0, 0, 0), (0, 26, 0)),
                       ComponentsInfo=[scene.sound("res/rise.mp3", 0, 60, "rise", 0.5)])


def comets():
    """Each circles the cube on a closed path in the plane of x and z, with a tail that lags behind."""
    out = []
    for i in range(3):
        for lag in range(7):
            out.append(comet(i, 50 + 9 * i + 2 * lag, lag))
    return out


def comet(i, first, lag):
    y, wide, deep, z = (-120, 30, 150)[i], 760 + 120 * i, 620, STAGE[2]
    side = (1, -1, 1)[i]
    ring = scene.path(30010, ((-wide * side, z), (-wide * side, z + deep), (wide * side * 1.6, z + deep * 1.3), (wide * side * 1.6, z - deep),
                              (-wide * side, z - deep), (-wide * side, z)), 300, slots=31)
    last = min(LAST, first + 96)
    flight = {"sartFps": first, "endFps": last, "startTranslate": scene.vector(-wide * side, y, z),
              "endTranslate": f"30010,{y + 60},30010", "translateEase": scene.SINE_IN_OUT}
    return added("spark", 58 - 6 * lag, scene.span(first, last, 60, isEnableDephTest=True), "comet",
                 [scene.fade(first, first + 12, 0, 0.95 - 0.12 * lag), scene.fade(first + 13, last, 0.95 - 0.12 * lag, 0)],
                 BezierArray=[ring], TransformArray=[flight])


def neon(key, size, width, height, glow, font):
    """White letters in a soft glow or shade."""
    return scene.words(key, size, width, height, "#ffffff", font, isShowTextShadow=True, shadowOffset="0,0", shadowBlurRadius=22.0,
                       shadowColor=scene.vector(*paint.colour(glow)))


def texts():
    """They swing in along paths of their own, one from each side."""
    swing_in = scene.path(30001, ((-1250, 60), (-500, -160), (260, 330), (0, 250)), 200)
    title = scene.faded(neon("title", 120, 900, 176, PINK, "Noto Serif Display Bold"), scene.box(820, 160, 1), scene.span(34, LAST, 10),
                        "title", [scene.fade(34, 50, 0, 1)], BezierArray=[swing_in],
                        TransformArray=scene.Motion(34, (-1250, 60, -FAR)).along(86, 30001, (0, 250, -FAR), scene.CUBIC_OUT).items())
    under = scene.path(30002, ((1250, -200), (500, -400), (-260, -220), (0, -258)), 200)
    second = scene.faded(neon("subtitle", 52, 900, 110, "#04101f", "Noto Sans Bold"), scene.box(760, 93, 1), scene.span(48, LAST, 10),
                         "subtitle", [scene.fade(48, 64, 0, 1)], BezierArray=[under],
                         TransformArray=scene.Motion(48, (1250, -200, -FAR)).along(104, 30002, (0, -258, -FAR), scene.CUBIC_OUT).items())
    return [title, second]


def music(template):
    song = Song(("A1: A3 C4 E4", "F1: A3 C4 F4", "C2: G3 C4 E4", "G1: G3 B3 D4"), 120)
    song.bass(tuple((i / 2, 0.4) for i in range(8)), 0.26).pads(0.05, 7).drums((0, 1, 2, 3), (1, 3), 4)
    song.arpeggio(sound.pluck, 4, 0.1, (0, 1, 2, 1, 2, 0), 4)
    song.tune("A5@0 C6@1.5 E6@3 D6@4 C6@5.5 A5@7 G5@8 C6@9.5 E6@11 D6@12 B5@13.5 G5@15", lambda hz: sound.lead(hz, 0.7), 0.09)
    song.mix.duck([i * song.beat for i in range(16)], 0.35)
    song.save(template.file("bg-audio.mp3"), 1.4, 0.16)
    sound.save_effect(template.file("res/rise.mp3"), sound.whoosh(1.6, 150, 5200))
