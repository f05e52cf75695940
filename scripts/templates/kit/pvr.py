"""Uncompressed PVR pictures (header version 2), plain or gzip-compressed."""

import gzip
import struct

import numpy as np

from . import paint

# Name: format code, bits a pixel, mask of alpha.
FORMATS = {"rgba4444": (16, 16, 0xF), "rgba5551": (17, 16, 1), "rgba8888": (18, 32, 0xFF), "rgb565": (19, 16, 0),
           "rgb888": (21, 24, 0), "l8": (22, 8, 0), "la88": (23, 16, 0xFF), "bgra8888": (26, 32, 0xFF), "a8": (27, 8, 0xFF)}


def write(path, surface, kind, levels=1):
    """A file name that ends in "gz" is compressed. `levels` above 1 adds ever smaller copies of the picture."""
    code, bits, alpha = FORMATS[kind]
    height, width = surface.get_height(), surface.get_width()
    rgba = _straight(surface)
    data = b""
    for _ in range(levels):
        data += _packed(rgba, kind)
        rgba = _halved(rgba)
    flags = code | (0x100 if levels > 1 else 0) | (0x8000 if alpha else 0)
    header = struct.pack("<11I4sI", 52, height, width, levels - 1, flags, len(data), bits, 0, 0, 0, alpha, b"PVR!", 1)
    if str(path).endswith("gz"):
        path.write_bytes(gzip.compress(header + data, 9, mtime=0))
    else:
        path.write_bytes(header + data)


def _straight(surface):
    """Red, green, blue, alpha from 0 to 255, the colours not multiplied by alpha."""
    bgra = paint.pixels(surface).astype(np.float64)
    alpha = bgra[..., 3:4]
    rgb = np.where(alpha > 0, bgra[..., 2::-1] * 255 / np.maximum(alpha, 1), 0)
    return np.concatenate([np.minimum(rgb, 255), alpha], axis=2)


def _halved(rgba):
    height, width = rgba.shape[0] // 2, rgba.shape[1] // 2
    return rgba[:height * 2, :width * 2].reshape(height, 2, width, 2, 4).mean(axis=(1, 3))


def _packed(rgba, kind):
    def bits(channel, count):
        return np.rint(rgba[..., channel] * (2 ** count - 1) / 255).astype(np.uint32)

    if kind in ("rgba4444", "rgba5551", "rgb565"):
        sizes = [int(digit) for digit in kind.lstrip("rgba")]
        word = np.zeros(rgba.shape[:2], np.uint32)
        for channel, count in enumerate(sizes):
            word = (word << count) | bits(channel, count)
        return word.astype("<u2").tobytes()
    bytes_ = np.rint(rgba).astype(np.uint8)
    grey = np.rint(rgba[..., :3] @ np.array([0.299, 0.587, 0.114])).astype(np.uint8)
    planes = {"rgba8888": bytes_, "rgb888": bytes_[..., :3], "bgra8888": bytes_[..., [2, 1, 0, 3]], "l8": grey,
              "la88": np.dstack([grey, bytes_[..., 3]]), "a8": bytes_[..., 3]}
    return np.ascontiguousarray(planes[kind]).tobytes()
