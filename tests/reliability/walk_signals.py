#!/usr/bin/python3
"""Signals at random moments of every stage of a job: the program has to end within half a second, with the exit code of a
cancelled job, and leave nothing: no process, no file, no half template.

    tests/reliability/walk_signals.py build/bin/multiscene [--moments 200] [--seed 1] [--stage drawing]
        [--hang build/lib/libhanging_calls.so]

Prints one line; exits with 1 when a moment went wrong, each of which is a line on standard error. Which stage a job is in
it says itself (--verbose); how long each lasts is measured first. A job that had finished when the signal came is right
when its result is whole.
"""

import argparse
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

MOST_SECONDS = 0.5
SOURCE = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
SAMPLE = os.path.join(SOURCE, "templates", "sea-postcard")

# Name, the line of --verbose that begins it (None: the start of the process), the job.
STAGES = [
    ("start", None, "make"),
    ("reading", "reading what is asked for", "make"),
    ("judging", "judging the template", "make"),
    ("preparing", "preparing the inputs", "make"),
    ("opening", "opening the scenes", "make"),
    ("drawing", "drawing", "make"),
    ("encoding", "encoding the last frames", "make"),
    ("sound", "mixing the sound", "make"),
    ("joining", "joining picture and sound", "make"),
    ("publishing", "publishing", "make"),
    ("frames published", "publishing", "frames"),
    ("unpacking", "unpacking", "install"),
    ("judging an archive", "judging the template", "install"),
    ("installing", "installing", "install"),
    ("removing", "removing", "remove"),
]
# What never comes back, and the job that calls it.
HANGS = [("jpeg_read_header", "photo"), ("avformat_open_input", "make"), ("avcodec_send_packet", "make"),
         ("avcodec_send_frame", "make"), ("inflate", "install"), ("syncfs", "install"), ("inflate", "show"), ("inflate", "check"),
         ("jpeg_read_header", "pack"), ("jpeg_read_header", "publish"), ("plist_from_xml", "list"),
         ("curl_easy_perform", "update")]


class Job:
    """One run of the program in a data folder of its own."""

    def __init__(self, place, kind, environment=None):
        self.place, self.kind = place, kind
        self.home = os.path.join(place, "home")
        self.output = os.path.join(place, "out.mp4" if kind != "frames" else "out")
        self.temporary = os.path.join(place, "tmp")
        os.makedirs(self.temporary)
        if kind == "remove":
            run([place.program, "--home", self.home, "templates", "install", place.archive])
        words = {
            "make": ["make", SAMPLE, "--media", os.path.join(SAMPLE, "sample", "inputs.json"), "--size", "180x320",
                     "-o", self.output],
            "photo": ["make", os.path.join(SOURCE, "templates", "sunny-day"), "--photo",
                      "photo=" + os.path.join(SAMPLE, "thumbnail.jpg"), "-o", self.output],
            "frames": ["frames", SAMPLE, "--media", os.path.join(SAMPLE, "sample", "inputs.json"), "--size", "90x160",
                       "-o", self.output],
            "install": ["templates", "install", place.archive],
            "remove": ["templates", "remove", "Postcard from the sea"],
            "show": ["templates", "show", place.archive],
            "check": ["check", place.archive],
            "pack": ["template", "pack", SAMPLE, "-o", os.path.join(place, "out.zip")],
            "publish": ["template", "publish", SAMPLE, "--to", os.path.join(place, "www")],
            "list": ["templates", "list"],
            "update": ["templates", "update", "--server", "http://127.0.0.1:9/"],
        }[kind]
        whole = dict(os.environ, TMPDIR=self.temporary, **(environment or {}))
        self.started = time.monotonic()
        self.process = subprocess.Popen([place.program, "--home", self.home, "--verbose", *words], env=whole,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.lines, self.more = [], threading.Condition()
        self.reader = threading.Thread(target=self.read)
        self.reader.start()

    def read(self):
        for line in self.process.stderr:
            with self.more:
                self.lines.append((time.monotonic() - self.started, line.decode(errors="replace").strip()))
                self.more.notify_all()
        with self.more:
            self.lines.append((time.monotonic() - self.started, ""))
            self.more.notify_all()

    def when(self, text):
        """The moment of the first such line; None when the program ended before."""
        seen = 0
        while True:
            with self.more:
                while len(self.lines) == seen:
                    self.more.wait()
                moment, line = self.lines[seen]
            seen += 1
            if text in line:
                return moment
            if line == "" and not self.reader.is_alive() or line == "" and seen == len(self.lines):
                return None

    def finish(self):
        self.process.wait()
        self.reader.join()
        self.process.stderr.close()
        return self.process.returncode

    def left(self):
        """What should not be there any more."""
        found = [os.path.join(self.temporary, name) for name in os.listdir(self.temporary)]
        for folder in ("jobs", "qvMultiSceneRender", "qvMultiSceneRender/scene"):
            folder = os.path.join(self.home, folder)
            for name in os.listdir(folder) if os.path.isdir(folder) else []:
                if name != ".lock" and (folder.endswith("jobs") or name.startswith(".")):
                    found.append(os.path.join(folder, name))
        found += [os.path.join(self.place, name) for name in os.listdir(self.place) if name.startswith(".")]
        for number in filter(str.isdigit, os.listdir("/proc")):
            try:
                with open(f"/proc/{number}/cmdline", "rb") as words, open(f"/proc/{number}/stat") as state:
                    if self.home.encode() in words.read().split(b"\0") and state.read().rsplit(") ", 1)[1][0] != "Z":
                        found.append("process " + number)
            except OSError:
                pass
        return found

    def has_result(self):
        if self.kind in ("install", "remove"):
            scene = os.path.join(self.home, "qvMultiSceneRender", "scene", "sea-postcard")
            return os.path.isdir(scene) == (self.kind == "install")
        if self.kind == "frames":
            return os.path.isdir(self.output) and len(os.listdir(self.output)) > 0
        return os.path.exists(self.output) or os.path.exists(os.path.join(self.place, "out.zip"))


class Place(str):
    """A folder for one run, with what all runs share."""
    program = archive = ""


def run(words):
    subprocess.run(words, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def measured(folder, program, archive):
    """When each stage of each kind of job begins and how long it lasts, the shortest of two runs."""
    lengths = {}
    for kind in ("make", "frames", "install", "remove"):
        for _ in range(2):
            job = Job(place_in(folder, program, archive), kind)
            if job.finish() != 0:
                sys.exit("the job that is to be interrupted fails: " + repr(job.lines[-3:]))
            begun = [(moment, line) for moment, line in job.lines if "stage: " in line] + [job.lines[-1]]
            for (moment, line), (after, _) in zip(begun, begun[1:]):
                key = (kind, line.split("stage: ", 1)[1])
                lengths[key] = min(after - moment, lengths.get(key, 1e9))
            lengths[(kind, None)] = min(begun[0][0], lengths.get((kind, None), 1e9))
            shutil.rmtree(job.place)
    return lengths


def place_in(folder, program, archive):
    place = Place(tempfile.mkdtemp(dir=folder))
    place.program, place.archive = program, archive
    return place


class Walk:
    def __init__(self, folder, program, archive, most_seconds):
        self.folder, self.program, self.archive, self.most_seconds = folder, program, archive, most_seconds
        self.moments = self.late = self.wrong = self.dirty = self.finished = 0
        self.slowest = 0.0

    def interrupt(self, name, kind, begins, delay, environment=None):
        job = Job(place_in(self.folder, self.program, self.archive), kind, environment)
        if begins is not None and job.when(begins) is None:
            self.tell(name, delay, "ended without reaching the stage: " + repr(job.lines[-2:]))
            self.wrong += 1
        time.sleep(delay)
        asked = time.monotonic()
        job.process.send_signal(random.choice([signal.SIGINT, signal.SIGTERM]))
        code = job.finish()
        seconds = time.monotonic() - asked
        self.moments += 1
        self.slowest = max(self.slowest, seconds)
        if seconds > self.most_seconds:
            self.late += 1
            self.tell(name, delay, f"took {seconds:.2f} s to end")
        # Before the program has read its command line a signal is the kernel's affair.
        early = begins is None and code in (-signal.SIGINT, -signal.SIGTERM)
        self.finished += code == 0
        if not (code == 130 or early or code == 0) or (code == 0) != job.has_result():
            self.wrong += 1
            self.tell(name, delay, f"exit code {code}, a result: {job.has_result()}: {job.lines[-2:]}")
        left = job.left()
        if left:
            self.dirty += 1
            self.tell(name, delay, "left " + ", ".join(left))
        shutil.rmtree(job.place, ignore_errors=True)

    @staticmethod
    def tell(name, delay, what):
        print(f"signals: {name}, {delay:.4f} s in: {what}", file=sys.stderr)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("--moments", type=int, default=200, help="in each stage")
    parser.add_argument("--most-seconds", type=float, default=MOST_SECONDS, help="that an end may take")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--stage", action="append", help="only this one")
    parser.add_argument("--hang", help="the library made of HangingCalls.c: calls that never come back, too")
    parser.add_argument("--rows", action="store_true", help="the line as a row of scripts/reliability")
    wanted = parser.parse_args()
    random.seed(wanted.seed)
    signal.signal(signal.SIGINT, signal.default_int_handler)  # a shell's background job inherits that it is ignored
    program = os.path.abspath(wanted.program)
    folder = tempfile.mkdtemp(prefix="multiscene-signals-")
    try:
        archive = os.path.join(folder, "sea-postcard.zip")
        run([program, "--home", os.path.join(folder, "author"), "template", "pack", SAMPLE, "-o", archive])
        lengths = measured(folder, program, archive)
        walk = Walk(folder, program, archive, wanted.most_seconds)
        stages = [stage for stage in STAGES if not wanted.stage or stage[0] in wanted.stage]
        for name, begins, kind in stages:
            for _ in range(wanted.moments):
                line = begins and "stage: " + begins
                walk.interrupt(name, kind, line, random.uniform(0, lengths[(kind, begins)]))
        hangs = HANGS if wanted.hang and not wanted.stage else []
        for function, kind in hangs:
            for _ in range(wanted.moments):
                environment = {"LD_PRELOAD": os.path.abspath(wanted.hang), "MULTISCENE_HANG": function}
                walk.interrupt(function, kind, "hanging", random.uniform(0, 0.3), environment)
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    much = f"{walk.moments} moments in {len(stages) + len(hangs)} stages, {walk.finished} of them after the end"
    found = (f"slowest end {walk.slowest:.2f} s; {walk.late} late, {walk.wrong} wrong, "
             f"{walk.dirty} with something left")
    print(f"signals at random moments | {much} | {found}" if wanted.rows else f"signals: {much}; {found}")
    return 1 if walk.late or walk.wrong or walk.dirty else 0


if __name__ == "__main__":
    sys.exit(main())
