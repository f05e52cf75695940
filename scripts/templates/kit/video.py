"""Small H.264 loops, the same bytes on every run."""

import os
import subprocess
from pathlib import Path

from . import paint, sound as sounds

# Without the SEI that carries the encoder's own settings the file depends on the pictures alone.
ENCODER = ["-c:v", "libx264", "-preset", "slow", "-threads", "2", "-pix_fmt", "yuv420p",
           "-vf", "scale=out_color_matrix=bt709:out_range=tv", "-colorspace", "bt709", "-color_primaries", "bt709",
           "-color_trc", "bt709", "-color_range", "tv", "-bsf:v", "filter_units=remove_types=6",
           "-map_metadata", "-1", "-bitexact", "-movflags", "+faststart"]


class Video:
    """Takes one surface a frame. Use it as a context manager."""

    def __init__(self, path, width, height, fps=30, quality=23, tune=None, sound=None):
        """`sound` is a stereo array of the film's length."""
        command = ["ffmpeg", "-v", "error", "-y", "-f", "rawvideo", "-pix_fmt", "bgra", "-s", f"{width}x{height}",
                   "-r", str(fps), "-i", "-", *ENCODER, "-crf", str(quality), "-x264-params", "aq-mode=3"]
        if tune:
            command += ["-tune", tune]
        self.path, self.sound = Path(path), sound
        self.silent = self.path.with_suffix(".silent.mp4") if sound is not None else self.path
        self.process = subprocess.Popen([*command, str(self.silent)], stdin=subprocess.PIPE)

    def __enter__(self):
        return self

    def frame(self, surface):
        self.process.stdin.write(paint.pixels(surface).tobytes())

    def __exit__(self, *_):
        self.process.stdin.close()
        if self.process.wait() != 0:
            raise RuntimeError("the video could not be encoded")
        if self.sound is not None:
            self._add_sound()

    def _add_sound(self):
        command = ["ffmpeg", "-v", "error", "-y", "-i", str(self.silent), "-f", "s16le", "-ar", str(sounds.RATE), "-ac", "2",
                   "-i", "-", "-c:v", "copy", "-c:a", "aac", "-b:a", "96k", "-map_metadata", "-1", "-bitexact",
                   "-movflags", "+faststart", str(self.path)]
        subprocess.run(command, input=sounds.pcm(self.sound), check=True)
        os.remove(self.silent)
