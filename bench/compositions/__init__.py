"""The compositions that the benchmarks make. Each module has `make(folder, length)`: it puts its media and its template
into the folder and returns a `Composition` whose commands make the same video of about `length` frames."""

import dataclasses
import os
import shutil
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts/templates"))
sys.dont_write_bytecode = True

from kit import paint  # found through the path above

FPS, PRESET, BITRATE = 30, "veryfast", 1500000
ENCODER_THREADS = 3  # what multiscene encodes with on every machine
BT709 = ["-colorspace", "bt709", "-color_primaries", "bt709", "-color_trc", "bt709", "-color_range", "tv"]


@dataclasses.dataclass
class Composition:
    name: str
    title: str
    size: tuple
    frames: int
    template: Path
    inputs: list = dataclasses.field(default_factory=list)  # options of "make" that give texts and photos
    film: Path = None  # the film that is decoded, if there is one
    melt: list = dataclasses.field(default_factory=list)  # tracks and transitions
    ffmpeg_inputs: list = dataclasses.field(default_factory=list)
    ffmpeg_graph: str = ""  # ends in [out]

    def commands(self, program, out):
        """(name, command, environment, video) of each program; in the order in which they run."""
        files = {name: out / f"{self.name}-{name}.mp4" for name in ("multiscene", "melt", "ffmpeg")}
        yield "multiscene", self.multiscene_command(program, files["multiscene"]), {}, files["multiscene"]
        # Qt's blending runs without a screen, but the module asks for the variable.
        yield ("melt", self._melt_command(files["melt"]), {"QT_QPA_PLATFORM": "offscreen", "DISPLAY": ":0"},
               files["melt"])
        yield "ffmpeg", self._ffmpeg_command(files["ffmpeg"]), {}, files["ffmpeg"]

    def multiscene_command(self, program, video):
        return [program, "make", self.template, *self.inputs, "--music", "none", "--preset", PRESET, "--bitrate",
                BITRATE, "-o", video]

    def _melt_command(self, video):
        width, height = self.size
        profile = self.template.parent / "profile"
        profile.write_text(
            f"description=bench\nframe_rate_num={FPS}\nframe_rate_den=1\nwidth={width}\nheight={height}\nprogressive=1\n"
            f"sample_aspect_num=1\nsample_aspect_den=1\ndisplay_aspect_num={width}\ndisplay_aspect_den={height}\n"
            "colorspace=709\n")
        # Below zero: so many threads work on frames, and none is dropped.
        return ["melt", "-silent", "-profile", profile, *self.melt, "-consumer", f"avformat:{video}", "an=1",
                f"real_time=-{os.cpu_count()}", "vcodec=libx264", f"preset={PRESET}", f"vb={BITRATE}",
                f"threads={ENCODER_THREADS}", "pix_fmt=yuv420p"]

    def _ffmpeg_command(self, video):
        return ["ffmpeg", "-v", "error", "-y", *self.ffmpeg_inputs, "-filter_complex", self.ffmpeg_graph, "-map", "[out]",
                "-frames:v", self.frames, "-r", FPS, "-an", "-c:v", "libx264", "-preset", PRESET, "-b:v", BITRATE,
                "-threads", ENCODER_THREADS, "-pix_fmt", "yuv420p", *BT709, video]


def fresh(folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder


def write(template):
    """Writes what a template needs besides its scenes."""
    paint.save_jpeg(paint.canvas(90, 160, "#7f5a8c")[0], template.file("thumbnail.jpg"))
    template.write()


def lavfi(path, graph, frames, *inputs):
    """Writes a film from a filter graph."""
    sources = [word for file in inputs for word in ("-loop", "1", "-framerate", str(FPS), "-i", str(file))]
    subprocess.run(["ffmpeg", "-v", "error", "-y", *sources, "-filter_complex", graph, "-frames:v", str(frames), "-c:v",
                    "libx264", "-preset", "veryfast", "-crf", "20", "-pix_fmt", "yuv420p", *BT709,
                    str(path)], check=True)


def picture(file):
    """The options with which FFmpeg reads one picture for `still`; its own rate would be 25."""
    return ["-framerate", str(FPS), "-i", file]


def still(pixels):
    """Filters that convert a picture once and repeat it from memory."""
    return f"scale=out_color_matrix=bt709:out_range=tv,format={pixels},loop=loop=-1:size=1,setpts=N/({FPS}*TB)"


def centred(at, size):
    """A place in pixels from the upper left, as the scene's camera counts it: from the middle, y up."""
    return at[0] - size[0] / 2, size[1] / 2 - at[1], 0
