#!/usr/bin/python3
"""Plays the attacks of attacks.txt against a studio, while somebody else goes on using it.

Usage: attacks.py PROGRAM SAMPLES [--strict] [HEADING]
--strict: also fails when an answer comes late, or when others wait for theirs by more than 100 ms (the 99th percentile of
three seconds before, beside that of the whole time). Without, a late answer has ten times as long, and limits are lower.
"""

import concurrent.futures
import http.client
import json
import os
import pathlib
import re
import select
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

ESCAPES = {"n": "\n", "r": "\r", "t": "\t", "0": "\0"}
BIG = 64 << 20
CLOSE_BY, SLOWER_BY = 5, 0.1
# What takes less time to reach.
QUICK = ["maxStudioHeadSeconds=3", "maxStudioIdleSeconds=3", "maxStudioRateSeconds=2", "maxStudioVideoBytes=20000000",
         "maxStudioSoundBytes=20000000", "maxStudioPhotoBytes=20000000", "maxStudioJobsOfSession=10"]


class Row:
    """One line of the file. Each comes from an address of its own."""
    count = 0

    def __init__(self, line, heading, frame, flags):
        self.statuses, self.name, sent, *options = [part.strip(" ") for part in (line + " ").split(" | ")]
        self.heading, self.flags = heading, flags
        Row.count += 1
        self.address = f"127.1.{Row.count // 200}.{Row.count % 200 + 1}"
        self.follows = self.name.startswith("+")
        self.sent = sent if self.follows or not frame else frame.replace("~", sent)
        self.options = [option.partition(" ")[::2] for option in options]

    def all(self, name):
        return [value for key, value in self.options if key == name]

    def option(self, name, default=None):
        return (self.all(name) or [default])[0]

    def number(self, name, default=1):
        return float(self.option(name, default))

    def where(self):
        return f"{self.heading}: {self.name}"


def read_rows(file):
    heading, frame, flags = "", "", set()
    for line in file.read_text().splitlines():
        if line.startswith("== "):
            heading, _, frame = line[3:].partition(": ")
            flags = set(re.findall(r"\((\w+)\)", heading))
        elif line and not line.startswith("#"):
            yield Row(line, heading, frame, flags)


class Studio:
    def __init__(self, program, samples, folder, limits):
        self.folder, self.words = folder, [program, "--home", str(folder / "home"), "--json"]
        self.photo = (samples / "minimal/sample/photo.jpg").read_bytes().decode("latin-1")
        self.environment = {**os.environ, "MULTISCENE_RESOURCES": str(self.make_page())}
        self.bearer, self.second = self.new_token("first"), self.new_token("second")
        self.process = subprocess.Popen(self.words + [*limits, "studio", "--port", "0", "--service"], stdout=subprocess.PIPE,
                                        text=True, env=self.environment)
        started = json.loads(self.process.stdout.readline())
        self.port, self.address = started["port"], pathlib.Path(started["addressFile"])
        key = self.address.read_text().strip().partition("#key=")[2]
        status, head, body = self.ask("POST", "/api/v1/sessions", json.dumps({"key": key}))
        assert status == 201, body
        self.cookie = re.search(r"Set-Cookie: ([^;]*)", head)[1]
        self.page_token = json.loads(body)["token"]

    def new_token(self, name):
        return json.loads(self.run(["studio", "token", "add", name, "--scope", "admin"]).stdout)["token"]

    def make_page(self):
        """A page whose folder holds what may not be sent, beside the program's resources."""
        share, built = self.folder / "share", pathlib.Path(os.environ["MULTISCENE_RESOURCES"])
        (share / "multiscene-page/assets").mkdir(parents=True)
        (share / "multiscene").symlink_to(built.resolve())
        page = share / "multiscene-page"
        (page / "index.html").write_text("<!doctype html>")
        (page / "assets/page-1.js").write_text("0123456789")
        (page / "assets/passwd.js").symlink_to("/etc/passwd")
        (page / "assets/folder.js").mkdir()
        with (page / "assets/big.js").open("w") as big:
            big.truncate(BIG)
        return share / "multiscene"

    def run(self, words):
        start = self.words
        if words[0] == "OTHER":
            start, words = [start[0], "--home", str(self.folder / "other")], words[1:]
        return subprocess.run(start + words, capture_output=True, text=True, env=self.environment, timeout=60)

    def ask(self, method, path, body=None, lines=()):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        connection.request(method, path, body, {"Content-Type": "application/json", **dict(lines)})
        answer = connection.getresponse()
        return answer.status, str(answer.headers), answer.read().decode("latin-1")

    def bytes_of(self, text, made):
        """What a row's words stand for."""
        def many(match):
            return "".join(match[2].replace("№", str(turn)) for turn in range(int(match[1])))
        text = re.sub(r"<<(\d+) (.*?)>>", many, text)
        for word, value in (("HOST", f"Host: 127.0.0.1:{self.port}"), ("JSON", "Content-Type: application/json"),
                            ("ME", f"Cookie: {self.cookie}\r\nX-Studio-Token: {self.page_token}"),
                            ("KNOWN", f"Cookie: {self.cookie}"), ("TOKEN", f"Authorization: Bearer {self.bearer}"),
                            ("SECOND", f"Authorization: Bearer {self.second}"), ("PORT", str(self.port))):
            text = re.sub(rf"\b{word}\b", lambda _: value, text)
        text = text.replace("¶", "\r\n").replace("<id>", made)
        text = re.sub(r"\\(x[0-9a-f]{2}|[nrt0])",
                      lambda found: ESCAPES.get(found[1]) or chr(int(found[1][1:], 16)), text)
        text = text.replace("PHOTO", self.photo)
        head, gap, body = text.partition("\r\n\r\n")
        return (head.replace("LENGTH", f"Content-Length: {len(body)}") + gap + body).encode("latin-1")


class Client:
    """One connection, which says anything and reads what comes."""

    def __init__(self, port, patience, address="127.0.0.1", buffer=0):
        self.read, self.ends_at = b"", time.monotonic() + patience
        self.socket = socket.socket()
        if buffer:
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, buffer)
        self.socket.bind((address, 0))
        self.socket.connect(("127.0.0.1", port))
        self.socket.setblocking(False)
        self.is_open = True

    def take(self, most=1 << 16, wait=0.0):
        """Reads what is there; False when nothing came."""
        self.socket.settimeout(max(wait, 1e-6))
        try:
            received = self.socket.recv(most)
        except (TimeoutError, BlockingIOError):
            return False
        except OSError:
            received = b""
        self.is_open = self.is_open and bool(received)
        self.read += received
        return bool(received)

    def send(self, content):
        """Sends all of it, and reads meanwhile what comes, as what is answered early is told early."""
        while content and self.is_open and time.monotonic() < self.ends_at:
            self.socket.settimeout(0.05)
            try:
                content = content[self.socket.send(content):]
            except TimeoutError:
                pass
            except OSError:
                break
            self.take()

    def answers(self):
        """Status, head and body of each that has come whole; a body that is not whole makes it cut."""
        found, rest = [], self.read
        while b"\r\n\r\n" in rest:
            head, _, rest = rest.partition(b"\r\n\r\n")
            text = head.decode("latin-1")
            length = re.search(r"\r\nContent-Length: (\d+)", text)
            whole = int(length[1]) if length else 0
            found.append((text[9:12], text, rest[:whole]))
            rest = rest[whole:]
        return found

    def wait(self, count, until_closed=False):
        while self.is_open and time.monotonic() < self.ends_at:
            if not until_closed and self.has(count):
                return
            self.take(wait=0.5)

    def has(self, count):
        """Whether so many answers are there, the last of them whole."""
        if self.read.count(b"HTTP/1.1 ") < count:
            return False
        head, gap, body = self.read[self.read.rfind(b"HTTP/1.1 "):].partition(b"\r\n\r\n")
        length = re.search(rb"\r\nContent-Length: (\d+)", head)
        return bool(gap) and len(body) >= (int(length[1]) if length else 0)


class Play:
    """One row, once."""

    def __init__(self, studio, row, made, slack):
        self.studio, self.row, self.slack = studio, row, slack
        self.patience = row.number("within", CLOSE_BY) * slack
        self.sent = studio.bytes_of(row.sent, made)

    def open(self):
        return Client(self.studio.port, self.patience, self.row.address, 4096 if self.row.all("sip") else 0)

    def run(self):
        """The fault, or none, and what was made."""
        client = self.open()
        closes = "closes" in self.row.flags
        client.send(self.sent)
        if closes:
            client.send(self.studio.bytes_of("GET /smuggled HTTP/1.1¶HOST¶¶", ""))
        self.go_on(client)
        client.wait(int(self.row.number("answers")), until_closed=closes or "cut" in self.row.statuses)
        late = time.monotonic() > client.ends_at
        client.socket.close()
        return self.judge(client, late)

    def go_on(self, client):
        for kind, value in self.row.options:
            if kind == "flood":
                more = self.studio.bytes_of(value, "")
                while client.is_open and not client.answers() and time.monotonic() < client.ends_at:
                    client.send(more)
            elif kind == "drip":
                self.drip(client, *value.rsplit(" ", 1))
            elif kind == "sip":
                self.sip(client, *map(float, value.split()))

    @staticmethod
    def drip(client, text, seconds):
        while client.is_open and time.monotonic() < client.ends_at:
            client.take(wait=float(seconds))
            if client.is_open and text:
                client.send(text.encode())

    @staticmethod
    def sip(client, count, seconds):
        while client.is_open and time.monotonic() < client.ends_at:
            client.take(int(count))
            time.sleep(seconds)

    def judge(self, client, late):
        answers = client.answers()
        status, head, body = answers[0] if answers else ("cut", "", b"")
        wanted, made = self.row.statuses.split(","), ""
        if status not in wanted:
            return f"{status} instead of {self.row.statuses}: {client.read[:300]!r}", made
        if late and ("cut" in wanted or not self.row.all("sip")):
            return f"not ended within {self.patience:.0f} s", made
        count = int(self.row.number("answers"))
        if len(answers) != count and status != "cut":
            return f"{len(answers)} answers instead of {count}", made
        return self.judge_answer(status, head, body), self.made(body)

    def judge_answer(self, status, head, body):
        text = head + "\r\n\r\n" + body.decode("latin-1")
        for name in self.row.all("with") + self.row.all("soon"):
            if name not in text:
                return f"no {name!r} in {text[:2000]!r}"
        for name in self.row.all("without"):
            if name in text:
                return f"{name!r} in the answer"
        if status in ("cut", "408"):
            return ""
        if "nosniff" not in head or "Content-Security-Policy" not in head or "Allow-Origin" in head:
            return f"a head without what protects it: {head}"
        if "closes" in self.row.flags and "Connection: close" not in head:
            return "the connection is kept"
        if status >= "400" and status != "416" and "application/problem+json" not in head:
            return f"no problem: {head}"
        return ""

    @staticmethod
    def made(body):
        try:
            return json.loads(body).get("id", "")
        except (ValueError, AttributeError):
            return ""


class Player:
    """All rows."""

    def __init__(self, studio, strict):
        self.studio, self.slack, self.faults, self.played = studio, 1 if strict else 10, [], 0

    def chain(self, rows):
        """A row, and those that go on from it."""
        made = ""
        for row in rows:
            fault, now_made = self.program(row) if "runs" in row.flags else self.row(row, made)
            made = now_made or made
            self.played += 1
            if fault:
                self.faults.append(f"{row.where()}: {fault}")
                return

    def row(self, row, made):
        if row.all("until"):
            return self.repeated(row, made, int(row.number("until")), 0)
        if row.all("soon"):
            return self.repeated(row, made, 200, 0.1)
        if not row.all("times"):
            return Play(self.studio, row, made, self.slack).run()
        plays = [Play(self.studio, row, made, self.slack) for _ in range(int(row.number("times")))]
        with concurrent.futures.ThreadPoolExecutor(len(plays)) as pool:
            return max(pool.map(Play.run, plays), key=lambda result: len(result[0]))

    def repeated(self, row, made, most, pause):
        for _ in range(most):
            fault, now_made = Play(self.studio, row, made, self.slack).run()
            if not fault:
                break
            time.sleep(pause)
        return fault, now_made

    def program(self, row):
        ended = self.studio.run(row.sent.replace("PORT", str(self.studio.port)).split())
        said = ended.stdout + ended.stderr
        missing = [name for name in row.all("with") if name not in said] + [name for name in row.all("without") if name in said]
        return f"ends with {ended.returncode}: {said}" if str(ended.returncode) != row.statuses or missing else "", ""

    def play(self, rows):
        chains = []
        for row in rows:
            if row.follows:
                chains[-1].append(row)
            else:
                chains.append([row])
        last = [chain for chain in chains if {"last", "runs"} & chain[0].flags]
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            # What takes long begins first.
            others = sorted((chain for chain in chains if chain not in last), key=lambda chain: -chain[0].number("within", 0))
            list(pool.map(self.chain, others))
        for chain in last:
            self.chain(chain)


class Other:
    """Somebody who goes on using the studio, and how long each answer takes: a process of its own, as the attackers keep
    this one busy."""

    def __init__(self, studio):
        self.process = subprocess.Popen([sys.executable, __file__, "--other", str(studio.port), studio.bearer],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def seconds(self):
        """How long each took, since the last time: the 99th percentile, and the longest; and what was wrong."""
        self.process.stdin.write("\n")
        self.process.stdin.flush()
        took, faults = json.loads(self.process.stdout.readline())
        took.sort()
        return took[int(len(took) * 0.99)], took[-1], faults

    def stop(self):
        self.process.stdin.close()
        self.process.wait(60)

    @staticmethod
    def use(port, bearer):
        connection, took, faults = http.client.HTTPConnection("127.0.0.1", int(port), timeout=60), [], []
        while True:
            start = time.monotonic()
            try:
                connection.request("GET", "/api/v1/settings", headers={"Authorization": f"Bearer {bearer}"})
                answer = connection.getresponse()
                answer.read()
                if answer.status != 200:
                    faults.append(f"somebody else is answered {answer.status}")
            except (http.client.HTTPException, OSError) as fault:
                faults.append(f"somebody else is not answered: {fault!r}")
                connection.close()
            took.append(time.monotonic() - start)
            if select.select([sys.stdin], [], [], 0.02)[0]:
                if not sys.stdin.readline():
                    return
                print(json.dumps([took, faults[:3]]), flush=True)
                took, faults = [], []


def ends_in_an_upload(studio):
    """SIGTERM while somebody sends: it ends in time and well, and nothing of what was sent is left."""
    client = Client(studio.port, 60)
    client.send(studio.bytes_of("POST /api/v1/uploads?name=a HTTP/1.1¶HOST¶TOKEN¶Content-Length: 9000¶¶abc", ""))
    start = time.monotonic()
    studio.process.send_signal(signal.SIGTERM)
    studio.process.communicate(timeout=60)
    if studio.process.returncode != 0:
        yield f"SIGTERM ends it with {studio.process.returncode}"
    if time.monotonic() - start > 6:
        yield f"it took {time.monotonic() - start:.1f} s to end"
    left = [str(each) for each in (studio.folder / "home/studio/uploads").iterdir()]
    if left:
        yield f"uploads are left: {left}"
    if studio.address.exists():
        yield "the address is left"


def main(program, samples, *options):
    is_strict = "--strict" in options
    chosen = [option for option in options if option != "--strict"]
    rows = [row for row in read_rows(pathlib.Path(__file__).with_name("attacks.txt"))
            if not chosen or row.heading in chosen]
    with tempfile.TemporaryDirectory(prefix="studio-attacks-") as folder:
        limits = [] if is_strict else [word for each in QUICK for word in ("--limit", each)]
        studio = Studio(program, pathlib.Path(samples), pathlib.Path(folder), limits)
        player, other = Player(studio, is_strict), Other(studio)
        try:
            time.sleep(3 if is_strict else 0.5)
            before = other.seconds()[0]
            player.play(rows)
            during, longest, faults = other.seconds()
        finally:
            other.stop()
            player.faults += ends_in_an_upload(studio)
    player.faults += faults
    if is_strict and during > before + SLOWER_BY:
        player.faults.append(f"others wait {during * 1000:.0f} ms, before {before * 1000:.0f} ms")
    for fault in player.faults:
        print(fault, file=sys.stderr)
    found = f"{len(player.faults)} faults" if player.faults else "nothing"
    print(f"attacks on the studio | {player.played}, others' answers meanwhile: 99 % within {during * 1000:.0f} ms"
          f" (before {before * 1000:.0f} ms), the longest {longest * 1000:.0f} ms | {found}")
    return 1 if player.faults else 0


if __name__ == "__main__":
    sys.exit(Other.use(*sys.argv[2:]) if sys.argv[1] == "--other" else main(*sys.argv[1:]))
