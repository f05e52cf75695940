"""Binary glTF files: triangles from turned profiles and flat shapes, materials, nodes and their animations."""

import json
import math
import struct

import numpy as np

from .paint import colour

FLOAT, UNSIGNED_INT = 5126, 5125


def light(tint):
    """A colour as screens take it, as the strength of light that files hold."""
    return [part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in colour(tint)[:3]]


def turned(profile, segments=40):
    """A profile of (radius, y) from below to above, once around y. A point given twice makes an edge."""
    rows = []
    for i, (radius, y) in enumerate(profile):
        # The way from the neighbour before to the one behind, unless they are the same point: an edge.
        before = profile[i - 1] if i > 0 and profile[i - 1] != (radius, y) else (radius, y)
        behind = profile[i + 1] if i + 1 < len(profile) and profile[i + 1] != (radius, y) else (radius, y)
        across, along = behind[0] - before[0], behind[1] - before[1]
        length = math.hypot(across, along) or 1
        rows.append((radius, y, along / length, -across / length, i / (len(profile) - 1)))
    places, normals, coordinates = [], [], []
    for radius, y, out, up, v in rows:
        for step in range(segments + 1):
            turn = (step / segments - 0.5) * 2 * math.pi
            places.append((radius * math.sin(turn), y, radius * math.cos(turn)))
            normals.append((out * math.sin(turn), up, out * math.cos(turn)))
            coordinates.append((step / segments, 1 - v))
    corners = []
    for row in range(len(rows) - 1):
        for step in range(segments):
            low, high = row * (segments + 1) + step, (row + 1) * (segments + 1) + step
            corners += [low, low + 1, high + 1, low, high + 1, high]
    return {"places": places, "normals": normals, "coordinates": coordinates, "corners": corners}


def arc(radius, middle, first, last, steps):
    """Points of a profile on a circle around (0, middle) moved to `radius`; angles in degrees, 0 outwards."""
    x, r = radius
    return [(x + r * math.cos(math.radians(first + (last - first) * i / steps)),
             middle + r * math.sin(math.radians(first + (last - first) * i / steps))) for i in range(steps + 1)]


def slab(outline, thickness):
    """A convex outline (counter-clockwise in x and y) with a thickness along z; flat, without normals."""
    half, count = thickness / 2, len(outline)
    places = [(x, y, half) for x, y in outline] + [(x, y, -half) for x, y in outline]
    corners = []
    for i in range(1, count - 1):
        corners += [0, i, i + 1, count, count + i + 1, count + i]
    for i in range(count):
        j = (i + 1) % count
        corners += [i, count + i, count + j, i, count + j, j]
    return {"places": places, "corners": corners}


class MeshFile:
    def __init__(self):
        self.document = {"asset": {"version": "2.0", "generator": "multiscene sample templates"}, "scene": 0, "scenes": [{"nodes": []}],
                         "nodes": [], "meshes": [], "materials": [], "accessors": [], "bufferViews": [], "animations": []}
        self.bytes = bytearray()

    def material(self, name, tint, emission=None, alpha=1.0, double=False, unlit=False):
        info = {"name": name, "pbrMetallicRoughness": {"baseColorFactor": [*light(tint), alpha]}, "doubleSided": double}
        if emission:
            info["emissiveFactor"] = light(emission)
        if alpha < 1:
            info["alphaMode"] = "BLEND"
        if unlit:
            info["extensions"] = {"KHR_materials_unlit": {}}
        self.document["materials"].append(info)
        return len(self.document["materials"]) - 1

    def numbers(self, values, kind, component=FLOAT):
        array = np.array(values, np.float32 if component == FLOAT else np.uint32)
        self.document["bufferViews"].append({"buffer": 0, "byteOffset": len(self.bytes), "byteLength": array.nbytes})
        accessor = {"bufferView": len(self.document["bufferViews"]) - 1, "componentType": component, "count": len(values), "type": kind}
        if component == FLOAT and kind != "VEC2" and kind != "VEC4":
            accessor["min"], accessor["max"] = np.atleast_1d(array.min(0)).tolist(), np.atleast_1d(array.max(0)).tolist()
        self.bytes += array.tobytes()
        self.document["accessors"].append(accessor)
        return len(self.document["accessors"]) - 1

    def part(self, shape, material):
        attributes = {"POSITION": self.numbers(shape["places"], "VEC3")}
        if "normals" in shape:
            attributes["NORMAL"] = self.numbers(shape["normals"], "VEC3")
        if "coordinates" in shape:
            attributes["TEXCOORD_0"] = self.numbers(shape["coordinates"], "VEC2")
        return {"attributes": attributes, "indices": self.numbers(shape["corners"], "SCALAR", UNSIGNED_INT), "material": material}

    def node(self, name, parts=(), children=(), **place):
        info = {"name": name, **{key: list(value) for key, value in place.items()}}
        if parts:
            self.document["meshes"].append({"name": name, "primitives": list(parts)})
            info["mesh"] = len(self.document["meshes"]) - 1
        if children:
            info["children"] = list(children)
        self.document["nodes"].append(info)
        return len(self.document["nodes"]) - 1

    def animation(self, name, *tracks):
        """Tracks are (node, "rotation" or the like, times in seconds, values, "LINEAR" or the like)."""
        info = {"name": name, "samplers": [], "channels": []}
        for node, path, times, values, way in tracks:
            info["samplers"].append({"input": self.numbers(times, "SCALAR"), "interpolation": way,
                                     "output": self.numbers(values, "VEC4" if path == "rotation" else "VEC3")})
            info["channels"].append({"sampler": len(info["samplers"]) - 1, "target": {"node": node, "path": path}})
        self.document["animations"].append(info)

    def write(self, path, roots):
        self.document["scenes"][0]["nodes"] = list(roots)
        self.document["buffers"] = [{"byteLength": len(self.bytes)}]
        if any("extensions" in material for material in self.document["materials"]):
            self.document["extensionsUsed"] = ["KHR_materials_unlit"]
        text = json.dumps({key: value for key, value in self.document.items() if value != []}, separators=(",", ":")).encode()
        text += b" " * (-len(text) % 4)
        content = struct.pack("<I4s", len(text), b"JSON") + text + struct.pack("<I4s", len(self.bytes), b"BIN\0") + bytes(self.bytes)
        path.write_bytes(struct.pack("<4sII", b"glTF", 2, 12 + len(content)) + content)


def about(axis, degrees):
    """A rotation as files hold it: x, y, z, w."""
    half = math.radians(degrees) / 2
    return [*(part * math.sin(half) for part in axis), math.cos(half)]
