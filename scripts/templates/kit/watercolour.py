"""Watercolour: washes of many faint, deformed layers."""

import math

from . import paint


def deformed(points, rng, amount, rounds):
    """Moves the middle of every edge outwards or inwards, again and again."""
    for _ in range(rounds):
        out = []
        for i, (x, y) in enumerate(points):
            nx, ny = points[(i + 1) % len(points)]
            length = math.hypot(nx - x, ny - y)
            push = rng.gauss(0, amount) * length
            out += [(x, y), ((x + nx) / 2 - (ny - y) / (length + 1e-6) * push, (y + ny) / 2 + (nx - x) / (length + 1e-6) * push)]
        points = out
    return points


def wash(pen, points, tint, rng, layers=16, strength=0.6, amount=0.16):
    base = deformed(points, rng, amount, 2)
    for i in range(layers):
        shape = deformed(base, rng, amount, 2)
        pen.move_to(*shape[0])
        for point in shape[1:]:
            pen.line_to(*point)
        pen.close_path()
        shade = paint.mix(tint, "#ffffff", rng.uniform(0, 0.22))
        paint.fill(pen, paint.colour(shade, 1 - (1 - strength) ** (1 / layers)))


def blob(x, y, radius, rng, count=10, stretch=1.0, turn=0.0):
    points = []
    for i in range(count):
        angle = 2 * math.pi * i / count
        r = radius * rng.uniform(0.85, 1.15)
        px, py = r * math.cos(angle), r * stretch * math.sin(angle)
        points.append((x + px * math.cos(turn) - py * math.sin(turn), y + px * math.sin(turn) + py * math.cos(turn)))
    return points


def leaf(pen, x, y, length, width, turn, tint, rng):
    points = []
    for t, side in ((0, 0), (0.25, 0.7), (0.5, 1), (0.75, 0.7), (1, 0), (0.75, -0.7), (0.5, -1), (0.25, -0.7)):
        px, py = length * t, width * side
        points.append((x + px * math.cos(turn) - py * math.sin(turn), y + px * math.sin(turn) + py * math.cos(turn)))
    wash(pen, points, tint, rng, 10, 0.72, 0.07)
    pen.move_to(x, y)
    pen.line_to(x + length * 0.9 * math.cos(turn), y + length * 0.9 * math.sin(turn))
    paint.stroke(pen, paint.colour(paint.mix(tint, "#1d3a35", 0.4), 0.35), 1.5)


def rose(pen, x, y, radius, tint, rng):
    """Petals from the outside to the middle, darker inwards."""
    for ring, (count, reach, size) in enumerate(((7, 0.62, 0.52), (6, 0.4, 0.44), (5, 0.2, 0.34))):
        for i in range(count):
            angle = 2 * math.pi * i / count + ring * 0.5 + rng.uniform(-0.2, 0.2)
            spot = (x + radius * reach * math.cos(angle), y + radius * reach * math.sin(angle))
            shade = paint.mix(tint, "#8e2f45", 0.16 * ring + rng.uniform(0, 0.1))
            wash(pen, blob(*spot, radius * size, rng, 9, 0.8, angle), shade, rng, 9, 0.42, 0.1)
    for i in range(16):
        angle, r = rng.uniform(0, 6.28), radius * rng.uniform(0.02, 0.16)
        paint.circle(pen, x + r * math.cos(angle), y + r * math.sin(angle), radius * 0.026)
        paint.fill(pen, paint.colour("#d9a441", 0.9))


def spray(pen, x, y, turn, length, rng, leaf_tint="#6f9a86", bend=0.5):
    """A twig with leaves on both sides."""
    here, angle = (x, y), turn
    steps = max(4, int(length / 34))
    for i in range(steps):
        angle += bend / steps
        there = (here[0] + length / steps * math.cos(angle), here[1] + length / steps * math.sin(angle))
        pen.move_to(*here)
        pen.line_to(*there)
        paint.stroke(pen, paint.colour(paint.mix(leaf_tint, "#3b4f45", 0.5), 0.7), 2.6)
        for side in (-1, 1):
            size = 62 * (1 - 0.5 * i / steps)
            leaf(pen, *there, size, size * 0.24, angle + side * rng.uniform(0.5, 0.9),
                 paint.mix(leaf_tint, rng.choice(("#a9c3a0", "#3f6f68")), rng.uniform(0, 0.6)), rng)
        here = there
    return here
