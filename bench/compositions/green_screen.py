"""(c) A film before a green screen, over a photo."""

from . import Composition, fresh, lavfi, picture, still, write

from kit import paint, samples, scene
from kit.package import Template

WIDTH, HEIGHT, GREEN = 1280, 720, "#00c832"


def make(folder, length=360):
    fresh(folder)
    home = folder / "green-screen"
    film, photo = home / "res/dancer.mp4", home / "res/city.png"
    template(folder, film, length)
    composition = Composition("green-screen", "a green-screen film over a photo", (WIDTH, HEIGHT), length, home, film=film)
    last = length - 1
    composition.melt = [photo, f"out={last}", "-track", film, f"out={last}", "-attach-cut", "chroma",
                        f"key=0x{GREEN[1:]}ff", "variance=0.2", "-transition", "composite", "a_track=0", "b_track=1"]
    composition.ffmpeg_inputs = [*picture(photo), "-i", film]
    composition.ffmpeg_graph = (f"[0:v]{still('yuv420p')}[under];[1:v]chromakey=color=0x{GREEN[1:]}:similarity=0.12:"
                                "blend=0.08:yuv=0[over];[under][over]overlay[out]")
    return composition


def template(folder, film, length):
    out = Template(folder, "green-screen", 9003, ("Green screen",) * 3, (WIDTH, HEIGHT))
    paint.save_png(samples.city(WIDTH, HEIGHT), out.file("res/city.png"))
    dancer(folder / "dancer.png")
    # It goes to and fro and turns, with the number of the frame above it.
    lavfi(film, f"color=c=0x{GREEN[1:]}:s={WIDTH}x{HEIGHT}:r=30,format=gbrp[back];"
          "[0:v]rotate=a=0.3*sin(2*t):c=black@0[dancer];"
          "[back][dancer]overlay=x='340+300*sin(t)':y=100:format=gbrp,drawtext=text='%{n}':fontsize=48:fontcolor=white:"
          "fontfile=/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf:box=1:boxcolor=black:boxborderw=8:x=20:y=20,"
          "scale=out_color_matrix=bt709:out_range=tv,format=yuv420p", length, folder / "dancer.png")
    clock = {"type": "QVChromaKeyVideoBgObject", "FpsInfo": scene.span(0, length - 1, 10), "QuadInfo": scene.box(WIDTH, HEIGHT),
             "VideoInfo": {"msaterVideoPath": scene.ROOT + "res/dancer.mp4", "videoFps": 30},
             "ChromaKeyInfo": {"ChromaKeyColor": scene.vector(*paint.colour(GREEN)), "maxEclosion": 0.55}}
    back = scene.quad(scene.image("res/city.png"), scene.box(WIDTH, HEIGHT), scene.span(0, length - 1, 200), "city")
    out.scene("scene.plist", length, {"Camera": scene.orthographic(WIDTH, HEIGHT), "TimeSource": clock, "object3D": [back]})
    write(out)


def dancer(path):
    """A round picture of two people, transparent outside."""
    surface, pen = paint.canvas(600, 600)
    paint.circle(pen, 300, 300, 240)
    pen.clip()
    pen.set_source_surface(samples.couple(600, 750), 0, -90)
    pen.paint()
    paint.save_png(surface, path)
