"""What the benchmarks share: running a command and saying what it cost, medians, and where things are."""

import argparse
import dataclasses
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PROGRAM = Path(os.environ.get("MULTISCENE_PROGRAM", ROOT / "build/bin/multiscene"))
ENCODE_FRAMES = ROOT / "build/bench/encode-frames"
WORK = ROOT / "build/bench/work"


def arguments(description, names, full, *numbers):
    """The command line of a benchmark: which of `names` to measure, what --full means, options that take a number."""
    parser = argparse.ArgumentParser(description=description, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--full", action="store_true", help=full)
    for number in numbers:
        parser.add_argument(number, type=int, metavar="N")
    parser.add_argument("names", nargs="*", metavar="NAME", help=", ".join(names))
    given = parser.parse_args()
    unknown = sorted(set(given.names) - set(names))
    if unknown:
        parser.error(f"there is no {', '.join(unknown)}")
    given.names = given.names or list(names)
    return given


@dataclasses.dataclass
class Cost:
    wall: float  # seconds
    cpu: float  # seconds, of the program and of all that it started
    peak: float  # MB, of the largest of these processes
    output: str = ""


def run(command, **environment):
    """Runs the command to its end; one that fails ends the benchmark with what the command wrote."""
    with tempfile.TemporaryFile("w+") as output:
        start = time.monotonic()
        process = subprocess.Popen([str(word) for word in command], stdin=subprocess.DEVNULL, stdout=output,
                                   stderr=subprocess.STDOUT, env={**os.environ, **environment})
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.monotonic() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        output.seek(0)
        text = output.read()
    if process.returncode != 0:
        sys.exit(f"{text[-3000:]}\n{command[0]} failed with {process.returncode}")
    return Cost(wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024, text)


def spread(values, digits=2):
    """"median (least to most)"."""
    values = list(values)
    middle = f"{statistics.median(values):.{digits}f}"
    if len(values) == 1:
        return middle
    return f"{middle} ({min(values):.{digits}f} to {max(values):.{digits}f})"


def row(*cells):
    print("| " + " | ".join(str(cell) for cell in cells) + " |", flush=True)


def table(*titles):
    row(*titles)
    print("|" + "---|" * len(titles))


def machine():
    """A line about the machine; how busy it was decides how much the times are worth."""
    model = re.search(r"model name\s*: (.*)", Path("/proc/cpuinfo").read_text())
    load = ", ".join(f"{value:.1f}" for value in os.getloadavg())
    print(f"{os.cpu_count()} cores ({model[1] if model else 'unknown'}), load of the last 1, 5 and 15 minutes: {load}\n")


def video_facts(path):
    """Width, height and number of frames of a film."""
    command = ["ffprobe", "-v", "error", "-select_streams", "v", "-count_packets", "-show_entries",
               "stream=width,height,nb_read_packets", "-of", "csv=p=0", str(path)]
    answer = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return tuple(int(part) for part in answer.strip().split(",")[:3])
