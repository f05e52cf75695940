#!/usr/bin/env python3
"""Walks through every file-system call of the program's commands and lets it fail, in every way it can, or ends the
process there; then looks at what is left, and whether the next run puts it right. Prints a table, and one line for each
violation with the words that repeat it. Exit code 1 when there is one.

    walk_faults.py --program build/bin/multiscene --library build/lib/libfaulty_files.so
    walk_faults.py … --only make --faults ENOSPC,kill --at 'write /home/jobs/*/silent.mp4#2'
"""

import argparse
import concurrent.futures
import errno
import os
import queue
import shutil
import subprocess
import sys
import tempfile
import time
from collections import Counter
from pathlib import Path

import worlds

# What may become of a call. A full disk stays full, and a dead one stays dead: "for ever" fails every later call of
# these kinds too.
MUTATING = ("create", "write", "sync", "rename", "link", "unlink", "rmdir", "mkdir", "resize", "attribute")
NEEDS_ROOM = ("create", "write", "sync", "rename", "link", "mkdir", "resize")
EVERY = MUTATING + ("open", "read", "close", "list", "map", "look", "lock")
FAULTS = {
    "ENOSPC": (NEEDS_ROOM + ("close", "attribute"), ()),
    "EDQUOT": (("create", "write"), ()),
    "EIO": (tuple(kind for kind in EVERY if kind != "map"), ()),
    "EMFILE": (("create", "open"), ()),
    "ENOMEM": (("map",), ()),
    "EINTR": (("create", "open", "read", "write", "sync", "close", "resize"), ()),
    "short": (("read", "write"), ()),
    "ENOSPC for ever": (NEEDS_ROOM, NEEDS_ROOM),
    "EIO for ever": (MUTATING, EVERY),
    "EMFILE for ever": (("create", "open"), ("create", "open")),
    "kill": (MUTATING, ()),
    "kill-after": (MUTATING, ()),
}
PASSING = 75
HEADER = 8 + 16 * 4096
LIST = 1 << 20
SECONDS = 60  # for one run, on a busy machine


class Slot:
    """A place for one walk at a time: its root is what faults happen below."""

    def __init__(self, options, number):
        self.options = options
        self.root = options.scratch / f"slot{number}"
        self.list = options.scratch / f"list{number}"

    def fresh(self, content=None):
        shutil.rmtree(self.root, ignore_errors=True)
        if content:
            shutil.copytree(content, self.root, symlinks=True)
        else:
            for name in ("in", "out", "tmp"):
                (self.root / name).mkdir(parents=True)

    def run(self, words, fault=None, fenced=True):
        """Runs the program; returns its process with `errors` and `output` read. `fault` is (label, fault) or ""."""
        environment = {**os.environ, "TMPDIR": str(self.root / "tmp"), "HOME": str(self.options.scratch),
                       "XDG_CACHE_HOME": str(self.options.scratch / "cache"),
                       "MULTISCENE_RESOURCES": self.options.resources, "LC_ALL": "C.UTF-8"}
        if fault is not None:
            with open(self.list, "wb") as file:
                file.truncate(HEADER + LIST)
            environment.update(FAULTS_BELOW=str(self.root), FAULTS_STATE=str(self.list),
                               LD_PRELOAD=str(self.options.library))
        if fault:
            label, kind = fault
            wanted = kind.removesuffix(" for ever")
            ever = FAULTS[kind][1]
            environment.update(FAULTS_AT=label, FAULTS_DO=str(getattr(errno, wanted, wanted)),
                               FAULTS_EVER=f" {' '.join(ever)} " if ever else "")
        fence = [] if fenced else ["--no-fence"]
        return subprocess.run([str(self.options.program), "--home", str(self.root / "home"), *fence, *words],
                              env=environment, cwd="/", stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              timeout=SECONDS, errors="replace")

    def calls(self):
        """The list of the last run with `fault`, and whether the fault happened."""
        content = self.list.read_bytes()
        used = int.from_bytes(content[4:8], "little")
        return content[HEADER:HEADER + used].decode().splitlines(), int.from_bytes(content[:4], "little") > 0

    def demand(self, words, fenced=True):
        done = self.run(words, fenced=fenced)
        if done.returncode != 0:
            raise SystemExit(f"undisturbed, \"{' '.join(words)}\" fails: {done.stderr}")


class Walk:
    """One command, with and without the fence, at every call, in every way."""

    def __init__(self, world, fenced, options, slots):
        self.world, self.fenced, self.options, self.slots = world, fenced, options, slots
        self.name = world.name + ("" if fenced else ", no fence")
        self.content = options.scratch / f"before-{world.name}"
        self.counts = Counter()
        self.missed = []
        self.violations = []

    def begin(self):
        slot = self.slots.get()
        try:
            slot.fresh()
            self.world.prepare(slot.root, lambda *words: slot.demand(words))
            shutil.rmtree(self.content, ignore_errors=True)
            shutil.copytree(slot.root, self.content, symlinks=True)
            self.before = worlds.snapshot(slot.root)
            done = slot.run(self.world.words(slot.root), fault="", fenced=self.fenced)
            if done.returncode != 0:
                raise SystemExit(f"undisturbed, {self.name} fails: {done.stderr}")
            self.calls, _ = slot.calls()
            self.lines = done.stdout.count("\n")
            if len(set(self.calls)) != len(self.calls):
                raise SystemExit(f"{self.name}: calls that cannot be told apart")
            slot.demand(self.world.again(slot.root), self.fenced)
            self.after = worlds.snapshot(slot.root)
        finally:
            self.slots.put(slot)
        # Where jobs are done while the home cannot be written: the same place for all of them.
        place = f"tmp/multiscene-{os.geteuid()}/"
        self.names = self.before.keys() | self.after.keys() | {place, place + "jobs/", place + "jobs/.lock"}

    def points(self):
        for kind in self.options.faults:
            for label in self.options.at or self.calls:
                if label.split(" ", 1)[0] in FAULTS[kind][0]:
                    yield label, kind

    def walk(self, point):
        slot = self.slots.get()
        try:
            for fault in self.faults_of(slot, point):
                self.tell(point, fault)
        except subprocess.TimeoutExpired:
            self.tell(point, "does not end")
        finally:
            self.slots.put(slot)

    def tell(self, point, fault):
        self.violations.append(point)
        print(f"{self.name}: {point[1]} at \"{point[0]}\": {fault}", flush=True,
              file=sys.stderr if self.options.rows else sys.stdout)

    def faults_of(self, slot, point):
        label, kind = point
        slot.fresh(self.content)
        done = slot.run(self.world.words(slot.root), point, self.fenced)
        _, hit = slot.calls()
        self.counts[kind if hit else "missed"] += 1
        if not hit:
            self.missed.append(label)
        killed = done.returncode < 0 or kind.startswith("kill")
        # A disk that fails for good may not let anything be put right before the next run.
        is_unclear = self.world.may_be_unsettled(done.stderr)
        unsettled = killed or (kind.endswith("for ever") and is_unclear)
        # Whose worker was killed says what became of the work.
        answered = not unsettled or (killed and done.returncode >= 0 and not is_unclear)
        yield from self.faults_of_answer(done, kind, killed)
        if not unsettled or self.world.instantly:
            yield from self.faults_of_state(slot, done, unsettled, answered, "at once")
        if unsettled and not self.world.instantly:
            yield from self.next_run(slot, self.world.restart(slot.root))
            yield from self.faults_of_state(slot, done, unsettled, answered, "after the next start")
        is_done = not self.world.instantly and self.state(slot, False) == "new"
        yield from self.next_run(slot, self.world.again(slot.root) if is_done else self.world.words(slot.root))
        state = self.state(slot, False)
        if state != "new":
            yield f"done again, it is {state}"
        yield from (f"is left behind: {name}" for name in sorted(worlds.snapshot(slot.root).keys() - self.names))

    def faults_of_answer(self, done, kind, killed):
        lines = done.stderr.splitlines()
        errors = [line for line in lines if line.startswith("multiscene: ")]
        if done.returncode == -9 and killed:
            return
        if done.returncode not in (0, PASSING):
            yield f"exit code {done.returncode}: {done.stderr.strip()}"
        elif done.returncode == PASSING and (len(errors) != 1 or lines[-1:] != errors):
            yield f"exit code {PASSING} with {len(errors)} errors: {done.stderr.strip()}"
        elif done.returncode == PASSING and kind == "short":
            yield f"fails because a call did half: {done.stderr.strip()}"
        elif done.returncode == 0 and errors:
            yield f"exit code 0 with an error: {done.stderr.strip()}"
        elif done.returncode == 0 and killed and done.stdout.count("\n") != self.lines:
            yield f"exit code 0, and it says: {done.stdout.strip()}"

    def next_run(self, slot, words):
        done = slot.run(words, fenced=self.fenced)
        if done.returncode != 0:
            yield f"the next run fails: {done.stderr.strip()}"

    def state(self, slot, unsettled):
        return self.world.state(worlds.snapshot(slot.root), self.before, self.after, unsettled)

    def faults_of_state(self, slot, done, unsettled, answered, when):
        state = self.state(slot, unsettled)
        wanted = ("old", "new") if not answered else ("new",) if done.returncode == 0 else ("old",)
        if state not in wanted:
            yield f"{when}: {state}, exit code {done.returncode}: {done.stderr.strip()}"

    def run(self, pool):
        self.begin()
        points = list(self.points())
        list(pool.map(self.walk, points))
        return len(points)


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", type=Path, required=True)
    parser.add_argument("--library", type=Path, required=True)
    parser.add_argument("--resources", default="")
    parser.add_argument("--only", default="", help="commands, with commas: " + ",".join(w.name for w in worlds.WORLDS))
    parser.add_argument("--fence", choices=("with", "without", "both"), default="with")
    parser.add_argument("--faults", default=",".join(FAULTS), help="with commas")
    parser.add_argument("--at", action="append", help="one call of the list")
    parser.add_argument("--list", action="store_true", help="the calls alone")
    parser.add_argument("--short", action="store_true", help="a minute of it: what must never break")
    parser.add_argument("--rows", action="store_true", help="a line for each command: what, how much, what was found")
    parser.add_argument("-j", type=int, default=os.cpu_count(), help="walks at a time")
    options = parser.parse_args()
    options.program, options.library = options.program.resolve(), options.library.resolve()
    if not options.resources:
        options.resources = str(options.program.parent.parent / "share/multiscene")
    if options.short:
        options.only, options.faults = options.only or "replace,make", "ENOSPC,kill"
    options.faults = options.faults.split(",")
    unknown = [fault for fault in options.faults if fault not in FAULTS]
    if unknown:
        parser.error(f"unknown faults: {unknown}")
    return options


def counted(walk):
    """Calls, faults, kills and violations."""
    faults = sum(count for fault, count in walk.counts.items() if not fault.startswith("kill") and fault != "missed")
    return len(walk.calls), faults, walk.counts["kill"] + walk.counts["kill-after"], len(walk.violations)


def rows(walks):
    named = [(f"`{walk.world.name}` " + ("behind the fence" if walk.fenced else "without the fence"), counted(walk))
             for walk in walks]
    named.append(("all commands", tuple(map(sum, zip(*(numbers for _, numbers in named))))))
    return "\n".join(f"calls that fail in {name} | {calls} calls, {faults} faults, {kills} kills | {violations} violations"
                     for name, (calls, faults, kills, violations) in named)


def table(walks):
    columns = ["calls", *FAULTS, "missed", "violations"]
    rows = [["", *columns]]
    for walk in walks:
        rows.append([walk.name, len(walk.calls), *(walk.counts[fault] for fault in FAULTS), walk.counts["missed"],
                     len(walk.violations)])
    rows.append(["all", *(sum(row[at] for row in rows[1:]) for at in range(1, len(rows[0])))])
    return "\n".join("| " + " | ".join(str(cell) for cell in row) + " |" + ("\n|" + "---|" * len(row) if at == 0 else "")
                     for at, row in enumerate(rows))


def main():
    options = arguments()
    wanted = options.only.split(",") if options.only else [world.name for world in worlds.WORLDS]
    fences = {"with": [True], "without": [False], "both": [True, False]}[options.fence]
    # In memory, where a wait for the disk is none.
    place = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="multiscene-faults-", dir=place) as scratch:
        options.scratch = Path(scratch)
        slots = queue.Queue()
        for number in range(options.j):
            slots.put(Slot(options, number))
        walks = [Walk(world, fenced, options, slots)
                 for world in worlds.WORLDS if world.name in wanted for fenced in fences]
        with concurrent.futures.ThreadPoolExecutor(options.j) as pool:
            for walk in walks:
                start = time.monotonic()
                if options.list:
                    walk.begin()
                    print("\n".join(walk.calls))
                    continue
                points = walk.run(pool)
                print(f"{walk.name}: {points} walks, {time.monotonic() - start:.0f} s", file=sys.stderr)
    if options.rows:
        print(rows(walks))
    elif not options.list:
        print(table(walks))
    return 1 if any(walk.violations for walk in walks) else 0


if __name__ == "__main__":
    sys.exit(main())
