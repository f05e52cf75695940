"""(b) Five full-screen photos that melt into each other."""

from . import FPS, Composition, fresh, picture, still, write

from kit import paint, samples, scene
from kit.package import Template, entry, entry_with_transition, photo_input

WIDTH, HEIGHT, COUNT = 1920, 1080, 5


def make(folder, length=360):
    """Every photo is seen for `hold` frames, a third of which belongs to a change."""
    change = max(2, length // 13)
    hold = 3 * change
    fresh(folder)
    photos = [folder / f"photo{number}.jpg" for number in range(COUNT)]
    for file, painted in zip(photos, (samples.mountains, samples.city, samples.beach, samples.portrait, samples.couple)):
        paint.save_jpeg(painted(WIDTH, HEIGHT), file)
    composition = Composition("slideshow", "five photos with transitions", (WIDTH, HEIGHT),
                              COUNT * hold - (COUNT - 1) * change, template(folder, hold, change))
    composition.inputs = [word for file in photos for word in ("--photo", f"{file.stem}={file}")]
    composition.melt = melt(photos, hold, change)
    composition.ffmpeg_inputs = [word for file in photos for word in picture(file)]
    composition.ffmpeg_graph = graph(hold, change)
    return composition


def template(folder, hold, change):
    out = Template(folder, "slideshow", 9100, ("Slide show",) * 3, (WIDTH, HEIGHT))
    keys = [f"photo{number}" for number in range(COUNT)]
    out.inputs = [photo_input(key, 16, 9, (key,) * 3) for key in keys]
    size = scene.box(WIDTH, HEIGHT)
    scenes = [out.scene("scene.plist" if key == keys[0] else f"{key}.plist", hold, whole(hold, [
        scene.quad(scene.user_image(key), size, scene.span(0, hold - 1), key)])) for key in keys]
    under = scene.quad({"textureType": "nextSceneRenderTexture"}, size, scene.span(0, change - 1, 100), "next")
    over = scene.faded({"textureType": "currentSceneRenderTexture"}, size, scene.span(0, change - 1, 50), "current",
                       [scene.fade(0, change - 1, 1, 0)])
    fade = out.scene("fade.plist", change, whole(change, [under, over]))
    out.group = [entry_with_transition(number, f"~{key}", fade, change) for number, key in zip(scenes[:-1], keys)]
    out.group.append(entry(scenes[-1], f"~{keys[-1]}"))
    write(out)
    return out.folder


def whole(frames, nodes):
    return {"Camera": scene.orthographic(WIDTH, HEIGHT), "TimeSource": scene.null_clock(frames), "object3D": nodes}


def melt(photos, hold, change):
    words = [photos[0], f"out={hold - 1}"]
    for file in photos[1:]:
        words += [file, f"out={hold - 1}", "-mix", change, "-mixer", "luma"]
    return words


def graph(hold, change):
    parts = [f"[{i}:v]{still('yuv420p')},trim=end_frame={hold},settb=1/{FPS}[p{i}]" for i in range(COUNT)]
    under = "p0"
    for i in range(1, COUNT):
        name = "out" if i == COUNT - 1 else f"x{i}"
        parts.append(f"[{under}][p{i}]xfade=transition=fade:duration={change / FPS:.6f}:"
                     f"offset={i * (hold - change) / FPS:.6f}[{name}]")
        under = name
    return ";".join(parts)
