"""(a) A full-screen film, two turning photos and a text."""

from . import Composition, centred, fresh, lavfi, picture, still, write

from kit import paint, samples, scene
from kit.package import Template, photo_input, text_input

WIDTH, HEIGHT = 720, 1280
PHOTO = (320, 400)
PHOTOS = {"first": ((240, 380), 360), "second": ((480, 800), -360)}  # middle in pixels, degrees clockwise in all
WORDS, WORDS_MIDDLE, WORDS_SIZE = "Summer by the sea", 1140, 56
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"


def make(folder, length=360):
    fresh(folder)
    film = folder / "film-and-photos/res/film.mp4"
    template(folder, film, length)
    composition = Composition("film-and-photos", "a film, two turning photos, a text", (WIDTH, HEIGHT), length,
                              film.parents[1], film=film)
    photos = {key: folder / f"{key}.jpg" for key in PHOTOS}
    paint.save_jpeg(samples.portrait(*PHOTO), photos["first"])
    paint.save_jpeg(samples.couple(*PHOTO), photos["second"])
    composition.inputs = ["--text", f"title={WORDS}",
                          *(word for key, file in photos.items() for word in ("--photo", f"{key}={file}"))]
    composition.melt = melt(film, photos, length - 1)
    composition.ffmpeg_inputs = ["-i", film, *picture(photos["first"]), *picture(photos["second"])]
    composition.ffmpeg_graph = graph(length - 1)
    return composition


def template(folder, film, length):
    out = Template(folder, "film-and-photos", 9001, ("Film and photos",) * 3, (WIDTH, HEIGHT))
    out.inputs = [text_input("title", 40, 1, ("Title",) * 3),
                  *(photo_input(key, *PHOTO, (key,) * 3) for key in PHOTOS)]
    lavfi(out.file("res/film.mp4"), f"testsrc2=s={WIDTH}x{HEIGHT}:r=30,noise=alls=8:allf=t", length)
    nodes = [turning(key, length - 1) for key in PHOTOS]
    words = scene.words("title", WORDS_SIZE, 680, 100, "#ffffff", "DejaVu Sans Bold")
    nodes.append(scene.quad(words, scene.box(680, 100), scene.span(0, length - 1, 10), "title",
                            TransformArray=scene.still(0, (0, HEIGHT / 2 - WORDS_MIDDLE, 0))))
    out.scene("scene.plist", length, {
        "Camera": scene.orthographic(WIDTH, HEIGHT), "object3D": nodes,
        "TimeSource": scene.video_clock("res/film.mp4", length, (WIDTH, HEIGHT))})
    write(out)


def turning(key, last):
    middle, degrees = PHOTOS[key]
    place = centred(middle, (WIDTH, HEIGHT))
    return scene.quad(scene.user_image(key), scene.box(*PHOTO), scene.span(0, last, 100 if key == "first" else 50), key,
                      MutableTransformArray=[scene.glide("translate", 0, last, place, place),
                                             scene.glide("rotate", 0, last, (0, 0, 0), (0, 0, -degrees))])


def melt(film, photos, last):
    words = [film, f"out={last}"]
    for file in photos.values():
        words += ["-track", file, f"out={last}"]
    words += ["-track", "pango:", f"text={WORDS}", "family=DejaVu Sans", "weight=700", f"size={WORDS_SIZE}",
              "fgcolour=0xffffffff", "bgcolour=0x00000000", f"out={last}"]
    for track, key in enumerate(PHOTOS, 1):
        (x, y), degrees = PHOTOS[key]
        rect = f"{x - PHOTO[0] // 2} {y - PHOTO[1] // 2} {PHOTO[0]} {PHOTO[1]} 1"
        words += ["-transition", "qtblend", "a_track=0", f"b_track={track}", f"rect=0={rect}", "rotate_center=1",
                  f"rotation=0=0;{last}={degrees}"]
    return words + ["-transition", "composite", "a_track=0", "b_track=3", f"geometry=0/{WORDS_MIDDLE - 50}:{WIDTH}x100:100",
                    "halign=centre", "valign=centre"]


def graph(last):
    side = int((PHOTO[0] ** 2 + PHOTO[1] ** 2) ** 0.5) // 2 * 2 + 2
    parts, under = [], "0:v"
    for number, ((x, y), degrees) in enumerate(PHOTOS.values(), 1):
        parts.append(f"[{number}:v]{still('yuva420p')},rotate=a={degrees}*PI/180*n/{last}:ow={side}:oh={side}:c=black@0"
                     f"[p{number}]")
        parts.append(f"[{under}][p{number}]overlay=x={x - side // 2}:y={y - side // 2}:eval=init[o{number}]")
        under = f"o{number}"
    parts.append(f"[{under}]drawtext=text='{WORDS}':fontfile={FONT}:fontsize={WORDS_SIZE}:fontcolor=white:"
                 f"x=(w-text_w)/2:y={WORDS_MIDDLE}-text_h/2+4[out]")
    return ";".join(parts)
