"""space-post: a rocket of a mesh file tows a banner to a moon where a flag waves; spheres, a ring, a parcel, cloth."""

import math

import numpy as np

from kit import mesh, paint, samples, scene, sound
from kit.music import Song
from kit.package import Template, photo_input, text_input

WIDTH, HEIGHT, FRAMES, FOV = 720, 1280, 180, 40
LAST = FRAMES - 1
FAR = scene.distance_for(WIDTH, FOV)  # here a unit is a pixel
WORLD = 0.1  # everything lies in one group of this scale: near things are told apart by depth much better
FLAG = (-140, -230, -FAR)  # the foot of its pole
ROCKET = (238, 262, -FAR + 30)


def build(root):
    template = Template(root, "space-post", 2200, ("Space Post", "太空邮递", "宇宙便"), (WIDTH, HEIGHT))
    template.inputs = [text_input("title", 18, 1, ("Title", "标题", "タイトル")),
                       text_input("message", 40, 2, ("Message", "留言", "メッセージ")),
                       photo_input("photo", 4, 3, ("A photo", "照片", "写真"))]
    pictures(template)
    rocket(template.file("res/rocket.glb"))
    template.scene("scene.plist", FRAMES, scene_file())
    paint.save_jpeg(samples.couple(1000, 750), template.file("sample/photo.jpg"))
    template.samples({"title": "Happy landing!", "message": "We made it: one small step for two.", "photo": "photo.jpg"})
    music(template)
    template.write()


# Pictures -----------------------------------------------------------------------------------------------------------

def pictures(template):
    for name, picture in (("sky", sky()), ("planet", planet()), ("rings", rings()), ("parcel", parcel()), ("banner", banner()), ("cloth", cloth())):
        paint.save_png(picture, template.file(f"res/{name}.png"))
    paint.save_jpeg(moon(), template.file("res/moon.jpg"), 4)


def sky():
    surface, pen = paint.canvas(WIDTH, HEIGHT)
    pen.rectangle(0, 0, WIDTH, HEIGHT)
    paint.fill(pen, paint.linear((0, 0), (WIDTH * 0.4, HEIGHT), ((0, "#0a0c2e"), (0.45, "#231a55"), (0.75, "#5a2a72"), (1, "#9a4a7c"))))
    for x, y, radius, tint, alpha in ((150, 330, 330, "#3557c9", 0.34), (620, 620, 360, "#c2417f", 0.28), (470, 180, 240, "#6d4be0", 0.3)):
        samples.glow(pen, x, y, radius, tint, alpha)
    random = paint.scattered(5)
    for i in range(330):
        x, y, size = random.uniform(0, WIDTH), random.uniform(0, HEIGHT * 0.86), random.uniform(0.5, 1.7) ** 1.6
        paint.circle(pen, x, y, size)
        paint.fill(pen, paint.colour("#ffffff" if i % 5 else "#ffe2b8", random.uniform(0.35, 1)))
        if i % 33 == 0:
            samples.glow(pen, x, y, 15, "#cfe0ff", 0.7)
    return paint.grain(surface, 2)


def moon():
    """Once around a ball: its upper part is seen from near by."""
    surface, pen = paint.canvas(2048, 1024, "#b9b2c6")
    random = paint.scattered(3)
    for i in range(70):
        samples.glow(pen, random.uniform(0, 2048), random.uniform(0, 1024), random.uniform(60, 230), ("#8f86a3", "#d8d1e0")[i % 2], 0.35)
    for i in range(420):
        y = random.uniform(0.02, 0.98)
        wide = random.uniform(5, 26) if i % 9 else random.uniform(30, 54)
        stretch = min(3.2, 1 / max(0.2, math.sin(math.pi * y)))
        crater(pen, random.uniform(0, 2048), 1024 * y, wide * stretch, wide)
    return paint.grain(surface, 3)


def crater(pen, x, y, width, height):
    for shift, tint, alpha in ((0.13, "#f3eef8", 0.75), (-0.1, "#6d6484", 0.75), (0.0, "#968da8", 1.0)):
        paint.ellipse(pen, x + shift * width, y + shift * height, width * (1 if shift else 0.88), height * (1 if shift else 0.88))
        paint.fill(pen, paint.colour(tint, alpha))


def planet():
    surface, pen = paint.canvas(1024, 512)
    random = paint.scattered(9)
    y = 0
    while y < 512:
        tall = random.uniform(10, 46)
        tint = paint.mix("#f2a65a", ("#e0713f", "#ffd9a0", "#c8553d")[int(random.uniform(0, 3))], random.uniform(0.3, 0.9))
        pen.rectangle(0, y, 1024, tall + 1)
        paint.fill(pen, tint)
        y += tall
    paint.ellipse(pen, 700, 330, 88, 34)
    paint.fill(pen, "#b8402f")
    paint.ellipse(pen, 700, 330, 62, 21)
    paint.fill(pen, "#e2825a")
    return paint.blur_surface(surface, 3)


def rings():
    """Along a tube: its upper edge lies on the inside."""
    surface, pen = paint.canvas(64, 256)
    for i in range(64):
        pen.rectangle(0, 4 * i, 64, 4)
        paint.fill(pen, paint.mix("#ffe9c4", "#b7794f", (math.sin(i * 1.7) * math.sin(i * 0.6) + 1) / 2))
    return surface


def parcel():
    surface, pen = paint.canvas(512, 512, "#d9a066")
    for x, y, width, height in ((0, 216, 512, 80), (216, 0, 80, 512)):
        pen.rectangle(x, y, width, height)
        paint.fill(pen, "#e8484f")
    paint.circle(pen, 256, 256, 84)
    paint.fill(pen, "#fff4dc")
    paint.heart(pen, 256, 258, 92)
    paint.fill(pen, "#e8484f")
    return surface


def banner():
    surface, pen = paint.canvas(1024, 256, "#fff6e6")
    for y in (0, 226):
        pen.rectangle(0, y, 1024, 30)
        paint.fill(pen, "#e8484f")
    return surface


def cloth():
    """The flag while there is no photo, and its hem."""
    surface, pen = paint.canvas(512, 384, "#fff6e6")
    paint.star(pen, 256, 200, 5, 56, 130)
    paint.fill(pen, "#f2a65a")
    return surface


# The rocket ---------------------------------------------------------------------------------------------------------

def rocket(path):
    """It points up; a unit is about its radius. It rolls, its flame flickers."""
    file = mesh.MeshFile()
    white, red = file.material("hull", "#f6f1e7"), file.material("red", "#e8484f", double=True)
    dark, brass = file.material("nozzle", "#4a4660"), file.material("brass", "#f0b552")
    glass = file.material("window", "#3f74c9", emission="#28508f")
    fire = file.material("flame", "#ff8420", alpha=0.88, unlit=True, double=True)
    core = file.material("core", "#ffeeb0", unlit=True)
    hull = [(0.62, -1.7), (0.86, -1.1), (1.0, -0.3), (1.0, 0.5), (0.9, 1.2)]
    nose = [(0.9, 1.2), (0.74, 1.75), (0.48, 2.25), (0.2, 2.62), (0.0, 2.78)]
    ring = [(0.915, 1.1), (0.96, 1.1), (0.96, 1.1), (0.93, 1.3), (0.93, 1.3), (0.88, 1.3)]
    cone = [(0.3, -1.62), (0.34, -1.7), (0.54, -2.05), (0.54, -2.05), (0.44, -2.05), (0.44, -2.05), (0.25, -1.8)]
    body = [file.part(mesh.turned(smoothed(hull)), white), file.part(mesh.turned(smoothed(nose)), red),
            file.part(mesh.turned(ring), brass), file.part(mesh.turned(cone), dark),
            file.part(mesh.turned([(0.0, -1.7), (0.62, -1.7)]), dark)]
    fins = [file.node(f"fin {i}", [file.part(mesh.slab([(0.55, -1.55), (1.55, -2.35), (1.62, -1.75), (1.25, -0.75), (0.95, -0.45)], 0.14), red)],
                      rotation=mesh.about((0, 1, 0), 90 * i + 45)) for i in range(4)]
    windows = []
    for i, (y, size) in enumerate(((0.75, 0.34), (-0.15, 0.25))):
        rim = mesh.turned([(0.72 * size, 0.14), (0.72 * size, 0.2), (0.72 * size, 0.2), *mesh.arc((size, 0), 0.1, 60, -30, 6), (size * 1.1, -0.2)], 28)
        pane = mesh.turned([(0.74 * size, 0.12), (0.5 * size, 0.17), (0.25 * size, 0.195), (0.0, 0.2)], 28)
        windows.append(file.node(f"window {i}", [file.part(rim, brass), file.part(pane, glass)], translation=(0, y, 0.9),
                                 rotation=mesh.about((1, 0, 0), 90)))
    flame = file.node("flame", [file.part(mesh.turned(smoothed([(0.0, -2.3), (0.2, -1.75), (0.36, -1.1), (0.4, -0.6), (0.3, -0.1), (0.0, 0.0)]), 24), fire)],
                      translation=(0, -1.95, 0))
    inner = file.node("core", [file.part(mesh.turned(smoothed([(0.0, -1.15), (0.13, -0.7), (0.2, -0.3), (0.14, -0.05), (0.0, 0.0)]), 20), core)],
                      translation=(0, -1.97, 0))
    ship = file.node("ship", body, [*fins, *windows, flame, inner])
    times = [i / 15 for i in range(31)]
    flicker = [(1 + 0.1 * math.sin(5.1 * i), 1 + 0.22 * math.sin(2.9 * i) * math.cos(1.3 * i), 1 + 0.1 * math.sin(5.1 * i)) for i in range(31)]
    flicker[-1] = flicker[0]
    file.animation("flight",
                   (flame, "scale", times, flicker, "LINEAR"), (inner, "scale", times, flicker[::-1], "LINEAR"),
                   (ship, "rotation", *roll(), "CUBICSPLINE"))
    file.write(path, [ship])


def smoothed(points, steps=5):
    """A profile through these points, without corners."""
    ends = [points[0], *points, points[-1]]
    out = []
    for i in range(1, len(ends) - 2):
        before, one, other, behind = (np.array(ends[k]) for k in (i - 1, i, i + 1, i + 2))
        for step in range(steps):
            t = step / steps
            out.append(tuple(0.5 * (2 * one + (other - before) * t + (2 * before - 5 * one + 4 * other - behind) * t * t
                                    + (3 * one - before - 3 * other + behind) * t ** 3)))
    return [(max(0.0, float(x)), float(y)) for x, y in out + [points[-1]]]


def roll():
    """To and fro about its axis in two seconds, and back where it began."""
    times, turns = [0, 0.5, 1, 1.5, 2], [0, 24, 0, -24, 0]
    values = []
    for turn in turns:
        slope = 1.2 if turn == 0 else 0.0
        slope = -slope if len(values) == 6 else slope
        values += [(0, slope * 0.35, 0, 0), mesh.about((0, 1, 0), turn), (0, slope * 0.35, 0, 0)]
    return times, values


# The scene ----------------------------------------------------------------------------------------------------------

def scene_file():
    nodes = [backdrop(), far_planet(), ground(), box(), flag(), ship(), *words()]
    return {"Camera": camera(), "TimeSource": scene.null_clock(FRAMES), "LightSourceArray": lights(),
            "object3D": [scene.group(scene.span(0, LAST), nodes, "world", TransformArray=scene.still(0, scale=WORLD))]}


def camera():
    """Begins near the flag, draws back, and sways a little."""
    middle, cloth_at = (0, 0, -FAR * WORLD), (8, -2, -FAR * WORLD)

    def ride(first, last, start, end, goal=middle):
        return {"sartFps": first, "endFps": last, "ease": 0, "isMoveCameraPosition": True,
                "moveCameraPositionEase": scene.SINE_IN_OUT, "startMoveCameraPosition": scene.vector(*start),
                "endMoveCameraPosition": scene.vector(*end), "isMoveTargetPoint": True, "moveTargetPointEase": 0,
                "startTargetPoint": scene.vector(*goal), "endTargetPoint": scene.vector(*middle)}
    return scene.perspective(FOV, WIDTH, HEIGHT, [ride(0, 75, (16, 0, -34), (-5, 1, 0), cloth_at), ride(76, LAST, (-5, 1, 0), (5, -1, -3))])


# On cloth, which does not shine.
DAYLIGHT = {"lightSourceType": 2, "lightSourcePosition": "-0.5,0.7,0.9", "ambientMaterialColor": "0.42,0.4,0.46",
            "diffuseMaterialColor": "0.68,0.66,0.6", "specularMaterialColor": "0,0,0", "specularShininess": 1.0}


def lights():
    sun = {"lightSourceType": 2, "lightSourcePosition": "-0.55,0.75,0.75", "ambientMaterialColor": "0.26,0.24,0.36",
           "diffuseMaterialColor": "0.82,0.76,0.66", "specularMaterialColor": "0.34,0.32,0.28", "specularShininess": 36.0}
    glow = {"lightSourceType": 2, "lightSourcePosition": "0.8,-0.2,0.35", "ambientMaterialColor": "0,0,0",
            "diffuseMaterialColor": "0.3,0.14,0.3", "specularMaterialColor": "0,0,0", "specularShininess": 1.0}
    return [sun, glow]


def lit(depth, first=0):
    return scene.span(first, LAST, depth, isLightEnable=True)


def backdrop():
    grown = 1.75
    far = -FAR * 1.5
    return scene.quad(scene.image("res/sky.png"), scene.box(WIDTH * grown, HEIGHT * grown), scene.span(0, LAST, 900), "sky",
                      TransformArray=scene.still(0, (0, 0, far)))


def surface(kind, texture, fps, name, numbers, **parts):
    info = {"surfaceType": kind, **{key: float(value) for key, value in numbers.items()}}
    return scene.node("QVSurfaceObject3D", fps, name, TextureInfo=texture, SurfaceInfo=info, **parts)


def far_planet():
    ball = surface("sphere", scene.image("res/planet.png"), lit(0), "planet", {"radius": 96},
                   MutableTransformArray=[scene.glide("rotate", 0, LAST, (0, 0, 0), (0, 70, 0))])
    ring = surface("torus", scene.image("res/rings.png"), lit(0), "ring", {"radius": 158, "tubeRadius": 30, "segments": 96},
                   TransformArray=scene.still(0, scale=(1, 0.05, 1)))
    return scene.group(scene.span(0, LAST, 800), [ball, ring], "planet with a ring",
                       TransformArray=scene.still(0, (-210, 520, -FAR * 1.25), 1.0, (18, 0, 24)))


def ground():
    return surface("sphere", scene.image("res/moon.jpg"), lit(700), "moon", {"radius": 900, "segments": 160},
                   TransformArray=scene.still(0, (60, -1235, -FAR - 180), 1.0, (0, 0, 90)),
                   MutableTransformArray=[scene.glide("rotate", 0, LAST, (-2, 0, 0), (3, 0, 0))])


def box():
    """Tumbles in from the side."""
    place = (200, -318, -FAR + 110)
    drop = scene.Motion(0, (620, -170, place[2]), 1.0, (30, -60, 140)).hold(56)
    drop.to(100, at=place, rotate=(8, 28, 0), ease=scene.QUART_OUT)
    return surface("roundedBox", scene.image("res/parcel.png"), lit(300, 0), "parcel",
                   {"modelWidth": 118, "modelHeight": 104, "modelDepth": 118, "cornerRadius": 16}, TransformArray=drop.items(),
                   ComponentsInfo=[scene.sound("res/thud.mp3", 66, 96, "thud", 0.5)])


def flag():
    """The photo on cloth, with a hem behind it."""
    pole = surface("cylinder", scene.image("res/rings.png"), lit(0), "pole", {"radius": 7, "modelHeight": 560},
                   TransformArray=scene.still(0, (0, 110, 0)))
    knob = surface("sphere", scene.image("res/rings.png"), lit(0), "knob", {"radius": 15}, TransformArray=scene.still(0, (0, 396, 0)))
    width, height, wave = 440, 330, 260

    def sheet(texture, name, hem):
        # The hem swings with the photo: the same waves, measured from its own edges.
        wide, tall = width + 2 * hem, height + 2 * hem
        ahead = hem / wave + 0.35 * wide / wave * hem / tall
        size = {"modelWidth": wide, "modelHeight": tall, "waveHeight": 26, "waveLength": wave, "heldWidth": 0.7 * width / wide}
        waves = [{"sartFps": 0, "endFps": LAST, "ease": 0, "startWavePhase": ahead, "endWavePhase": 4.5 + ahead}]
        return surface("wave", texture, lit(0), name, size, AnimationInfo=waves, LightSourceArray=[DAYLIGHT],
                       TransformArray=scene.still(0, (width / 2 + 11, 212, -0.7 * hem)))
    sheets = scene.group(scene.span(0, LAST), [sheet(scene.image("res/cloth.png"), "hem", 11), sheet(scene.user_image("photo"), "photo", 0)], "cloth",
                         TransformArray=scene.still(0, (7, 0, 0)))
    return scene.group(scene.span(0, LAST, 400), [pole, knob, sheets], "flag", TransformArray=scene.still(0, FLAG, 1.0, (0, 14, 0)))


def ship():
    """Comes from the left with its banner behind it, and hovers."""
    mesh_node = scene.node("QVMeshObject3D", lit(0), "rocket", MeshFileInfo={
        "meshFile": scene.ROOT + "res/rocket.glb", "modelSize": 186.0, "meshOrigin": "middle", "animationName": "flight"},
        TransformArray=scene.still(0, (0, 0, 0), 1.0, (12, 0, -80)))
    waves = [{"sartFps": 0, "endFps": LAST, "ease": 0, "startWavePhase": 0.0, "endWavePhase": -5.0}]

    def towed(texture, name, lift):
        size = {"modelWidth": 384, "modelHeight": 100, "waveHeight": 13, "waveLength": 180, "heldWidth": 0.5}
        return surface("wave", texture, lit(0), name, size, AnimationInfo=waves, LightSourceArray=[DAYLIGHT],
                       TransformArray=scene.still(0, (-322, -4, lift)))
    title = scene.words("title", 88, 860, 216, "#33245e", "Noto Serif Display Bold")
    lines = surface("cylinder", scene.image("res/rings.png"), lit(0), "line", {"radius": 2, "modelHeight": 56, "isOpen": 1},
                    TransformArray=scene.still(0, (-106, -2, 0), 1.0, (0, 0, 90)))
    parts = [towed(scene.image("res/banner.png"), "banner", 0), towed(title, "title", 1.6), lines, mesh_node]
    fly = scene.Motion(0, (-760, 40, ROCKET[2]), 1.0, (0, 0, 12)).hold(30).to(96, at=ROCKET, rotate=(0, 0, 4), ease=scene.CUBIC_OUT)
    hover = scene.swing("translate", 97, LAST, 29, (0, 0, 0), (0, 16, 0))
    return scene.group(scene.span(0, LAST, 200), parts, "ship", TransformArray=fly.items(), MutableTransformArray=hover,
                       ComponentsInfo=[scene.sound("res/fly.mp3", 30, 110, "fly", 0.6)])


def words():
    message = scene.words("message", 46, 640, 170, "#ffffff", "Noto Sans Bold", isShowTextShadow=True, shadowOffset="0,3", shadowBlurRadius=14.0,
                          shadowColor=scene.vector(*paint.colour("#1a1040")))
    rise = scene.Motion(84, (0, -600, -FAR)).to(116, at=(0, -528, -FAR)).items()
    return [scene.faded(message, scene.box(600, 160, 1), scene.span(84, LAST, 10), "message", [scene.fade(84, 108, 0, 1)], TransformArray=rise)]


# Sound --------------------------------------------------------------------------------------------------------------

def music(template):
    song = Song(("F2: F3 A3 C4 E4", "D2: F3 A3 C4 D4", "A#1: F3 A#3 D4 F4", "C2: E3 G3 C4 E4"), 110)
    song.pads(0.06, 7).bass(level=0.22).arpeggio(division=2, level=0.1, octave=2).drums(claps=(1, 3), level=0.5)
    song.tune("C6@0 A5@1.5 F5@3 G5@4 A5@5.5 C6@7 D6@8 C6@9.5 A5@11 G5@12 E5@13.5 F5@15", level=0.09)
    song.save(template.file("bg-audio.mp3"))
    sound.save_effect(template.file("res/fly.mp3"), sound.whoosh(2.4, 120, 3600))
    sound.save_effect(template.file("res/thud.mp3"), sound.kick(0.5), 0.6)
