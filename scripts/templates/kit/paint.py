"""Painting with Cairo: shapes, soft shadows, gradients, and the files they end up in."""

import math
import random
import subprocess

import cairo
import numpy as np


def canvas(width, height, fill=None):
    surface = cairo.ImageSurface(cairo.FORMAT_ARGB32, int(width), int(height))
    pen = cairo.Context(surface)
    if fill:
        pen.set_source_rgba(*colour(fill))
        pen.paint()
    return surface, pen


def colour(text, alpha=1.0):
    """"#RRGGBB" as four numbers from 0 to 1."""
    return tuple(int(text[i:i + 2], 16) / 255 for i in (1, 3, 5)) + (alpha,)


def mix(one, other, amount):
    a, b = colour(one), colour(other)
    return "#" + "".join(f"{round(255 * (x + (y - x) * amount)):02x}" for x, y in zip(a[:3], b[:3]))


def linear(start, end, stops):
    """Stops are (offset, "#RRGGBB") or (offset, "#RRGGBB", alpha)."""
    return _with_stops(cairo.LinearGradient(*start, *end), stops)


def radial(centre, radius, stops):
    return _with_stops(cairo.RadialGradient(*centre, 0, *centre, radius), stops)


def _with_stops(gradient, stops):
    for offset, text, *alpha in stops:
        gradient.add_color_stop_rgba(offset, *colour(text, *alpha))
    return gradient


def fill(pen, source):
    """Fills the current path with a colour text, four numbers or a pattern."""
    if isinstance(source, str):
        source = colour(source)
    pen.set_source_rgba(*source) if isinstance(source, tuple) else pen.set_source(source)
    pen.fill()


def stroke(pen, source, width):
    pen.set_source_rgba(*(colour(source) if isinstance(source, str) else source))
    pen.set_line_width(width)
    pen.set_line_cap(cairo.LINE_CAP_ROUND)
    pen.set_line_join(cairo.LINE_JOIN_ROUND)
    pen.stroke()


def rounded(pen, x, y, width, height, radius):
    pen.new_sub_path()
    pen.arc(x + width - radius, y + radius, radius, -math.pi / 2, 0)
    pen.arc(x + width - radius, y + height - radius, radius, 0, math.pi / 2)
    pen.arc(x + radius, y + height - radius, radius, math.pi / 2, math.pi)
    pen.arc(x + radius, y + radius, radius, math.pi, 1.5 * math.pi)
    pen.close_path()


def circle(pen, x, y, radius):
    pen.new_sub_path()
    pen.arc(x, y, radius, 0, 2 * math.pi)
    pen.close_path()


def ellipse(pen, x, y, width, height, turn=0.0):
    pen.save()
    pen.translate(x, y)
    pen.rotate(turn)
    pen.scale(width, height)
    circle(pen, 0, 0, 1)
    pen.restore()


def smooth(pen, points, closed=False):
    """A soft curve through all the points."""
    count = len(points)
    at = (lambda i: points[i % count]) if closed else (lambda i: points[max(0, min(count - 1, i))])
    pen.move_to(*points[0])
    for i in range(count if closed else count - 1):
        before, here, there, after = at(i - 1), at(i), at(i + 1), at(i + 2)
        pen.curve_to(here[0] + (there[0] - before[0]) / 6, here[1] + (there[1] - before[1]) / 6,
                     there[0] - (after[0] - here[0]) / 6, there[1] - (after[1] - here[1]) / 6, *there)
    if closed:
        pen.close_path()


def petals(pen, x, y, count, length, width, turn=0.0):
    """A flower: drop-shaped leaves around a middle, `length` from the middle to a tip."""
    for i in range(count):
        pen.save()
        pen.translate(x, y)
        pen.rotate(turn + 2 * math.pi * i / count)
        pen.move_to(0, 0)
        pen.curve_to(length * 0.35, -width, length, -width * 0.9, length, 0)
        pen.curve_to(length, width * 0.9, length * 0.35, width, 0, 0)
        pen.close_path()
        pen.restore()


def star(pen, x, y, count, inner, outer, turn=-math.pi / 2):
    for i in range(count * 2):
        radius = outer if i % 2 == 0 else inner
        angle = turn + math.pi * i / count
        pen.line_to(x + radius * math.cos(angle), y + radius * math.sin(angle))
    pen.close_path()


def heart(pen, x, y, size):
    pen.move_to(x, y + size * 0.85)
    pen.curve_to(x - size * 1.5, y - size * 0.1, x - size * 0.75, y - size * 1.1, x, y - size * 0.35)
    pen.curve_to(x + size * 0.75, y - size * 1.1, x + size * 1.5, y - size * 0.1, x, y + size * 0.85)
    pen.close_path()


def pixels(surface):
    """The surface's premultiplied BGRA bytes as an array that shares its memory."""
    surface.flush()
    data = np.ndarray((surface.get_height(), surface.get_stride() // 4, 4), np.uint8, surface.get_data())
    return data[:, :surface.get_width()]


def from_rgba(array):
    """A surface from straight RGBA numbers, 0 to 1."""
    height, width = array.shape[:2]
    surface, _ = canvas(width, height)
    out = pixels(surface)
    out[..., 3] = np.rint(array[..., 3] * 255)
    for channel in range(3):
        out[..., 2 - channel] = np.rint(array[..., channel] * array[..., 3] * 255)
    surface.mark_dirty()
    return surface


def blurred(plane, radius):
    """Three box blurs: close to a Gaussian of the same radius. Outside the plane counts as zero."""
    size = max(1, int(radius * 0.6))
    for _ in range(3):
        for axis in (0, 1):
            plane = _box(plane, size, axis)
    return plane


def _box(plane, size, axis):
    pad = [(0, 0)] * plane.ndim
    pad[axis] = (size + 1, size)
    total = np.cumsum(np.pad(plane, pad), axis=axis, dtype=np.float64)
    count = total.shape[axis]
    upper = np.take(total, range(2 * size + 1, count), axis=axis)
    lower = np.take(total, range(0, count - 2 * size - 1), axis=axis)
    return (upper - lower) / (2 * size + 1)


def blur_surface(surface, radius):
    out, _ = canvas(surface.get_width(), surface.get_height())
    pixels(out)[...] = np.rint(blurred(pixels(surface).astype(np.float64), radius))
    out.mark_dirty()
    return out


def shadow_of(surface, radius, strength, tint="#000000", offset=(0, 0)):
    """The surface's outline as a soft stain."""
    height, width = surface.get_height(), surface.get_width()
    stain = blurred(pixels(surface)[..., 3] / 255.0, radius) * strength
    stain = np.roll(stain, (offset[1], offset[0]), (0, 1))
    rgba = np.empty((height, width, 4))
    rgba[..., :3] = colour(tint)[:3]
    rgba[..., 3] = np.clip(stain, 0, 1)
    return from_rgba(rgba)


def with_shadow(surface, radius, strength, tint="#1b2a33", offset=(0, 8)):
    out, pen = canvas(surface.get_width(), surface.get_height())
    for layer in (shadow_of(surface, radius, strength, tint, offset), surface):
        pen.set_source_surface(layer)
        pen.paint()
    return out


def grain(surface, amount, seed=7):
    """Fine paper grain on what is opaque."""
    noise = np.random.default_rng(seed).normal(0, amount, (surface.get_height(), surface.get_width(), 1))
    data = pixels(surface)
    alpha = data[..., 3:4].astype(np.float64)
    data[..., :3] = np.clip(data[..., :3] + noise * alpha / 255, 0, alpha)
    surface.mark_dirty()
    return surface


def scattered(seed):
    return random.Random(seed)


def save_png(surface, path):
    surface.write_to_png(str(path))


def save_jpeg(surface, path, quality=3):
    """`quality` is FFmpeg's scale: 2 is best, 31 worst."""
    size = f"{surface.get_width()}x{surface.get_height()}"
    command = ["ffmpeg", "-v", "error", "-y", "-f", "rawvideo", "-pix_fmt", "bgra", "-s", size, "-i", "-", "-bitexact",
               "-frames:v", "1", "-pix_fmt", "yuvj420p", "-q:v", str(quality), "-update", "1", str(path)]
    subprocess.run(command, input=pixels(surface).tobytes(), check=True)
