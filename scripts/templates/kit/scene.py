"""Builders for the dictionaries of a scene file.

Lengths are the camera's units (one pixel with the orthographic camera below), angles degrees, times frames.
"""

import math

from .paint import colour

ROOT = "$(currentScenePlistROOT)/"

# Ease ids of the scene format.
LINEAR, QUAD_IN, QUAD_OUT, QUAD_IN_OUT = 0, 1, 2, 3
CUBIC_IN, CUBIC_OUT, CUBIC_IN_OUT, QUART_OUT, QUINT_OUT = 4, 5, 6, 8, 11
SINE_IN, SINE_OUT, SINE_IN_OUT, EXPO_OUT = 13, 14, 15, 20
ELASTIC_OUT, BACK_IN, BACK_OUT, BOUNCE_OUT = 23, 25, 26, 29


def vector(*parts):
    return ",".join(f"{part:g}" for part in parts)


def orthographic(width, height):
    """One unit is one pixel, the origin is the middle of the picture, y goes up."""
    return {"type": "QVOrthCamera", "OrthWidth": float(width), "aspect": width / height}


def perspective(fov, width, height, keys=()):
    camera = {"type": "QVFrustumCamera", "FrustumFov": float(fov), "aspect": width / height}
    if keys:
        camera["LookAtAnimation"] = list(keys)
    return camera


def distance_for(width, fov):
    """How far from a perspective camera a plane of this width just fills the picture."""
    return width / 2 / math.tan(math.radians(fov) / 2)


def span(first, last, depth=0, **more):
    return {"startFps": first, "endFps": last, "RenderDepth": depth, **more}


def image(path, **more):
    return {"textureType": "image", "texture": ROOT + path, **more}


def user_image(key, **more):
    return {"textureType": "image", "texture": key, **more}


def user_video(key, fps=30, volume=0.0):
    """The user's film; `volume` is that of its own sound."""
    info = {"textureType": "mp4Video", "texture": key, "videoFps": fps}
    return {**info, "audioVolume": volume} if volume else info


def words(key, size, width, height, tint, font="Noto Serif Display Bold", **more):
    """A text texture of `width` by `height` pixels; `key` names the user's text."""
    return {"textureType": "text2d", "textString": key, "fontName": font, "fontSize": float(size),
            "textColor": vector(*colour(tint)), "textAlignment": 1, "textFixedResolution": vector(width, height), **more}


def box(width, height, mode=0, at=(0, 0, 0), blurred=False):
    info = {"modelWidth": float(width), "modelHeight": float(height)}
    for axis, value in zip("XYZ", at):
        if value:
            info["anchor" + axis] = float(value)
    if mode:
        info["quadObject3DContentMode"] = mode
    if blurred:
        info["backgroundRenderMode"] = 1
    return info


def node(kind, fps, name=None, **parts):
    """`parts` are the further keys of the node; empty ones are left out."""
    out = {"type": kind}
    if name:
        out["name"] = name
    out["FpsInfo"] = fps
    out.update({key: value for key, value in parts.items() if value})
    return out


def group(fps, children, name=None, **parts):
    return node("QVObject3DTransformBase", fps, name, **parts, childNode=children)


def quad(texture, size, fps, name=None, **parts):
    return node("QVQuadObject3D", fps, name, TextureInfo=texture, QuadInfo=size, **parts)


def faded(texture, size, fps, name=None, fades=(), **parts):
    """A quad with an animated opacity."""
    return node("QVQuadDiaphaneityObject3D", fps, name, TextureInfo=texture, QuadInfo=size,
                AnimationInfo=list(fades), **parts)


def fade(first, last, start, end, ease=LINEAR):
    return {"sartFps": first, "endFps": last, "ease": ease, "startRenderAlpha": float(start),
            "endRenderAlpha": float(end)}


def video_clock(path, frames, size, fps=30, mask=None, depth=10000, **parts):
    info = {"msaterVideoPath": ROOT + path, "videoFps": fps}
    if mask:
        info["maskVideoPath"] = ROOT + mask
    kind = "QVMaskVideoTimeSource" if mask else "QVSingleVideoTimeSource"
    return {"type": kind, "VideoInfo": info, "FpsInfo": span(0, frames - 1, depth),
            "QuadInfo": box(*size), **parts}


def null_clock(frames, fps=30):
    return {"type": "QVNullVideoTimeSource", "NullVideoInfo": {"videoFps": fps, "fpsTotal": frames - 1},
            "FpsInfo": span(0, frames - 1)}


def sound(path, first, last, key, volume=1.0, loop=False):
    return {"type": "QVObject3DSoundSourceComponent", "startFps": first, "endFps": last,
            "audioFilePath": ROOT + path, "audioVolume": float(volume), "audioKey": key, "isLoop": loop}


class Motion:
    """A "TransformArray": one placement after another.

    A key item never applies its end value and its successor has to begin one frame later, so every item states all
    its start values and a last still item settles the node exactly where it was sent.
    """

    def __init__(self, first, at=(0, 0, 0), scale=1.0, rotate=None):
        self.cursor = first
        self.at = tuple(at)
        self.size = _triple(scale)
        self.turn = _turn(rotate)
        self.list = []

    def to(self, frame, at=None, scale=None, rotate=None, ease=CUBIC_OUT):
        item = self._still(frame)
        if at is not None:
            self.at = tuple(at)
            item.update(endTranslate=vector(*self.at), translateEase=ease)
        if scale is not None:
            self.size = _triple(scale)
            item.update(endScale=vector(*self.size), scaleEase=ease)
        if rotate is not None:
            self.turn = _turn(rotate)
            item.update(endRotate=vector(*self.turn), rotateEase=ease)
        return self._append(item)

    def along(self, frame, path, end, ease=LINEAR):
        """Follows the Bezier path of this number; `end` is where it leaves the node."""
        item = self._still(frame)
        item.update(endTranslate=f"{path},{path},{end[2]:g}", translateEase=ease)
        self.at = tuple(end)
        return self._append(item)

    def hold(self, frame):
        return self._append(self._still(frame))

    def items(self):
        return self.list + [self._still(self.cursor + 1)]

    def _still(self, frame):
        item = {"sartFps": self.cursor, "endFps": frame, "startTranslate": vector(*self.at),
                "startScale": vector(*self.size)}
        if self.turn is not None:
            # With both ends given a rotation is read in degrees.
            item.update(startRotate=vector(*self.turn), endRotate=vector(*self.turn), rotateEase=LINEAR)
        return item

    def _append(self, item):
        self.list.append(item)
        self.cursor = item["endFps"] + 1
        return self


def still(first, at=(0, 0, 0), scale=1.0, rotate=None):
    return Motion(first, at, scale, rotate).items()


def _triple(scale):
    return (scale, scale, scale) if isinstance(scale, (int, float)) else tuple(scale)


def _turn(rotate):
    """A plain number turns about the z axis."""
    if rotate is None:
        return None
    return (0, 0, rotate) if isinstance(rotate, (int, float)) else tuple(rotate)


CHANNELS = {"translate": (0, "Translate", "iTranslate"), "scale": (1, "Scale", "iScale"),
            "rotate": (2, "Rotate", "iRotate")}


def swing(channel, first, last, half, one, other, ease=SINE_IN_OUT):
    """"MutableTransformArray" items that go to and fro between two vectors, `half` frames each way."""
    kind, word, ease_key = CHANNELS[channel]
    items = []
    for start in range(first, last + 1, half + 1):
        items.append({"transformType": kind, "fpsStart": start, "fpsEnd": start + half, "start" + word: vector(*one),
                      "end" + word: vector(*other), ease_key: ease})
        one, other = other, one
    return items


def glide(channel, first, last, start, end, ease=LINEAR):
    """One "MutableTransformArray" item; it reaches its end value, and nothing of it remains afterwards."""
    kind, word, ease_key = CHANNELS[channel]
    return {"transformType": kind, "fpsStart": first, "fpsEnd": last, "start" + word: vector(*start),
            "end" + word: vector(*end), ease_key: ease}


def path(number, points, samples=240, slots=21):
    """A Bezier path; numbers from 30000 on can be named as an end value or as an ease."""
    return {"bezierIdentifier": str(number), "interpolationTotal": samples, "interpolationXYZ": slots,
            "controlPoints": [vector(*point) for point in points]}


def frame(texture, size, fps, name=None, filters=(), fades=(), radius=0.0, **parts):
    """A picture through a list of filters, its corners round."""
    info = {"frameType": "image"}
    if radius:
        info["cornerRadius"] = float(radius)
    if filters:
        info["filters"] = list(filters)
    return node("QVQuadFrameObject3D", fps, name, FrameInfo=info, TextureInfo=texture, QuadInfo=size,
                AnimationInfo=list(fades), **parts)


def card(tint, size, fps, name=None, radius=0.0, **parts):
    """A rectangle of one colour, its corners round."""
    info = {"frameType": "color", "frameColor": vector(*colour(tint)), "cornerRadius": float(radius)}
    return node("QVQuadFrameObject3D", fps, name, FrameInfo=info, QuadInfo=size, **parts)


def filtered(name, *moves, strength=1.0, **numbers):
    """A filter of a list; `moves` are made by `moved`."""
    info = {"filter": name, **{key: float(value) if isinstance(value, (int, float)) else value for key, value in numbers.items()}}
    if strength != 1:
        info["strength"] = float(strength)
    if moves:
        info["AnimationInfo"] = list(moves)
    return info


def moved(number, first, last, start, end, ease=SINE_IN_OUT):
    """One number of a filter from one value to another."""
    return {"sartFps": first, "endFps": last, "ease": ease, "number": number, "start": float(start), "end": float(end)}
