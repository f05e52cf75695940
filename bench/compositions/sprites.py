"""(d) Sixty small pictures that fly and turn, each its own way."""

import random

from . import FPS, Composition, centred, fresh, picture, still, write

from kit import paint, scene
from kit.package import Template

WIDTH, HEIGHT, SIDE, COUNT = 720, 1280, 96, 60
MIDDLE_RANGE = ((80, WIDTH - 80), (80, HEIGHT - 80))


def make(folder, length=360):
    fresh(folder)
    flights = [flight(number) for number in range(COUNT)]
    home = folder / "sprites"
    template(folder, flights, length)
    star, sky = home / "res/star.png", home / "res/sky.png"
    composition = Composition("sprites", f"{COUNT} small turning quads", (WIDTH, HEIGHT), length, home)
    composition.melt = melt(star, sky, flights, length - 1)
    composition.ffmpeg_inputs = [*picture(sky), *picture(star)]
    composition.ffmpeg_graph = graph(flights, length - 1)
    return composition


def flight(number):
    """Where a star starts and ends, in pixels, and how far it turns clockwise."""
    chance = random.Random(number)
    places = [tuple(chance.randint(*side) for side in MIDDLE_RANGE) for _ in range(2)]
    return places[0], places[1], chance.choice((-720, -360, 360, 720))


def template(folder, flights, length):
    out = Template(folder, "sprites", 9004, ("Sprites",) * 3, (WIDTH, HEIGHT))
    sky, pen = paint.canvas(WIDTH, HEIGHT)
    pen.rectangle(0, 0, WIDTH, HEIGHT)
    paint.fill(pen, paint.linear((0, 0), (0, HEIGHT), ((0, "#123a5a"), (1, "#7f5a8c"))))
    paint.save_png(sky, out.file("res/sky.png"))
    star, pen = paint.canvas(SIDE, SIDE)
    paint.star(pen, SIDE / 2, SIDE / 2, 5, 18, 46)
    paint.fill(pen, "#ffd166")
    paint.circle(pen, SIDE / 2, SIDE / 4, 6)
    paint.fill(pen, "#d9543f")
    paint.save_png(star, out.file("res/star.png"))
    nodes = [scene.quad(scene.image("res/sky.png"), scene.box(WIDTH, HEIGHT), scene.span(0, length - 1, 200), "sky")]
    nodes += [flying(number, *way, length - 1) for number, way in enumerate(flights)]
    out.scene("scene.plist", length, {"Camera": scene.orthographic(WIDTH, HEIGHT), "object3D": nodes,
                                      "TimeSource": scene.null_clock(length)})
    write(out)


def flying(number, start, end, degrees, last):
    start, end = (centred(at, (WIDTH, HEIGHT)) for at in (start, end))
    return scene.quad(scene.image("res/star.png"), scene.box(SIDE, SIDE), scene.span(0, last, COUNT - number),
                      f"star {number}",
                      MutableTransformArray=[scene.glide("translate", 0, last, start, end),
                                             scene.glide("rotate", 0, last, (0, 0, 0), (0, 0, -degrees))])


def melt(star, sky, flights, last):
    words = [sky, f"out={last}"]
    for _ in flights:
        words += ["-track", star, f"out={last}"]
    for track, (start, end, degrees) in enumerate(flights, 1):
        rect = lambda at: f"{at[0] - SIDE // 2} {at[1] - SIDE // 2} {SIDE} {SIDE} 1"
        words += ["-transition", "qtblend", "a_track=0", f"b_track={track}", "rotate_center=1",
                  f"rect=0={rect(start)};{last}={rect(end)}", f"rotation=0=0;{last}={degrees}"]
    return words


def graph(flights, last):
    # The overlay filter counts its frames from 1, so its times are taken.
    side = int(SIDE * 2 ** 0.5) // 2 * 2 + 2
    copies = "".join(f"[s{number}]" for number in range(COUNT))
    parts = [f"[0:v]{still('yuv420p')}[o]", f"[1:v]{still('yuva420p')},split={COUNT}{copies}"]
    under = "o"
    for number, (start, end, degrees) in enumerate(flights):
        x, y = (f"{a - side // 2}+{b - a}*t*{FPS}/{last}" for a, b in zip(start, end))
        parts.append(f"[s{number}]rotate=a={degrees}*PI/180*n/{last}:ow={side}:oh={side}:c=black@0[t{number}]")
        name = "out" if number == COUNT - 1 else f"o{number}"
        parts.append(f"[{under}][t{number}]overlay=x='{x}':y='{y}'[{name}]")
        under = name
    return ";".join(parts)
