"""Small H.264 loops, the same bytes on every run."""

import subprocess

from . import paint

# Without the SEI that carries the encoder's own settings the file depends on the pictures alone.
ENCODER = ["-c:v", "libx264", "-preset", "slow", "-threads", "2", "-pix_fmt", "yuv420p",
           "-vf", "scale=out_color_matrix=bt709:out_range=tv", "-colorspace", "bt709", "-color_primaries", "bt709",
           "-color_trc", "bt709", "-color_range", "tv", "-bsf:v", "filter_units=remove_types=6",
           "-map_metadata", "-1", "-bitexact", "-movflags", "+faststart"]


class Video:
    """Takes one surface a frame. Use it as a context manager."""

    def __init__(self, path, width, height, fps=30, quality=23, tune=None):
        command = ["ffmpeg", "-v", "error", "-y", "-f", "rawvideo", "-pix_fmt", "bgra", "-s", f"{width}x{height}",
                   "-r", str(fps), "-i", "-", *ENCODER, "-crf", str(quality), "-x264-params", "aq-mode=3"]
        if tune:
            command += ["-tune", tune]
        self.process = subprocess.Popen([*command, str(path)], stdin=subprocess.PIPE)

    def __enter__(self):
        return self

    def frame(self, surface):
        self.process.stdin.write(paint.pixels(surface).tobytes())

    def __exit__(self, *_):
        self.process.stdin.close()
        if self.process.wait() != 0:
            raise RuntimeError("the video could not be encoded")
