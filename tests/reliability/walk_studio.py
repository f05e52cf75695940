#!/usr/bin/python3
"""Kills a studio, the programs that make its videos, and their workers, at random moments, while jobs of several sessions
wait and run: each job has to be made once, with the bytes that the program makes alone, and nothing may be left: no
process, no photo, no folder of a job. One that was interrupted three times is given up, and says so.

    tests/reliability/walk_studio.py build/bin/multiscene [--kills 50] [--jobs 20] [--size 540x960] [--seed 1] [--gap 1.5] [--spare-programs] [--rows]

Prints one line; exits with 1 when something went wrong, each of which is a line on standard error.
"""

import argparse
import hashlib
import http.client
import json
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time

SOURCE = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
PHOTO = os.path.join(SOURCE, "templates", "minimal", "thumbnail.jpg")
TEMPLATE = 1000
SESSIONS = 3
ATTEMPTS = 3
ENDED = ("done", "failed", "cancelled", "expired")


def children_of(process):
    try:
        with open(f"/proc/{process}/task/{process}/children") as file:
            own = [int(each) for each in file.read().split()]
    except OSError:
        return []
    # A program is the child of the thread that started it.
    for thread in os.listdir(f"/proc/{process}/task"):
        if thread == str(process):
            continue
        try:
            with open(f"/proc/{process}/task/{thread}/children") as file:
                own += [int(each) for each in file.read().split()]
        except OSError:
            pass
    return own


def is_alive(process):
    try:
        with open(f"/proc/{process}/stat") as file:
            return file.read().rsplit(")", 1)[1].split()[0] not in "ZX"
    except OSError:
        return False


class Studio:
    def __init__(self, program, home):
        self.program, self.home = program, home
        self.tokens = [self.token(f"session-{number}") for number in range(SESSIONS)]
        self.seen = set()  # every process that was ever started
        self.start()

    def token(self, name):
        words = [self.program, "--home", self.home, "studio", "token", "add", name, "--scope", "make"]
        return subprocess.run(words, check=True, capture_output=True, text=True).stdout.split()[-1]

    def start(self):
        self.process = subprocess.Popen([self.program, "--json", "--home", self.home, "studio", "--port", "0", "--service",
                                         "--workers", "2", "--photos-stay", "0"], stdout=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        if not line:
            raise SystemExit("walk_studio: the studio does not start")
        self.port = json.loads(line)["port"]

    def ask(self, method, path, session, body=None, headers=None, is_raw=False):
        """An answer, or none when the studio was not there."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=30)
        all_headers = {"Authorization": "Bearer " + self.tokens[session], **(headers or {})}
        data = body if is_raw or body is None else json.dumps(body)
        if body is not None and not is_raw:
            all_headers["Content-Type"] = "application/json"
        try:
            connection.request(method, "/api/v1" + path, data, all_headers)
            answer = connection.getresponse()
            content = answer.read()
        except (OSError, http.client.HTTPException):
            return None
        finally:
            connection.close()
        is_json = "json" in (answer.getheader("Content-Type") or "")
        return answer.status, json.loads(content) if is_json else content

    def programs(self):
        return [each for each in children_of(self.process.pid) if is_alive(each)]

    def workers(self):
        return [worker for each in self.programs() for worker in children_of(each)]

    def note_processes(self):
        self.seen.update(self.programs(), self.workers())

    def kill(self):
        self.note_processes()
        self.process.kill()
        self.process.wait()

    def end(self):
        self.note_processes()
        began = time.monotonic()
        self.process.send_signal(signal.SIGTERM)
        code = self.process.wait()
        return code, time.monotonic() - began


class Walk:
    def __init__(self, options, place):
        self.options, self.faults = options, []
        self.random = random.Random(options.seed)
        self.home = os.path.join(place, "home")
        self.place = place
        os.mkdir(self.home)
        self.studio = Studio(options.program, self.home)
        self.requests = []  # (session, key, body, text)
        self.counts = {"studio": 0, "program": 0, "worker": 0}

    def fault(self, text):
        self.faults.append(text)

    def expected(self, text):
        media = os.path.join(self.place, "media.json")
        with open(media, "w") as file:
            json.dump({"text": text, "photo": os.path.join(self.place, "photo.jpg")}, file)
        output = os.path.join(self.place, "expected.mp4")
        subprocess.run([self.options.program, "--home", self.home, "make", str(TEMPLATE), "--media", media, "--size",
                        self.options.size, "-o", output], check=True, capture_output=True)
        with open(output, "rb") as file:
            return hashlib.sha256(file.read()).hexdigest()

    def upload(self, session):
        with open(PHOTO, "rb") as file:
            answer = self.studio.ask("POST", "/uploads?name=photo.jpg", session, file.read(), is_raw=True)
        if not answer or answer[0] != 201:
            raise SystemExit(f"walk_studio: no upload: {answer}")
        # What the studio has made of it is what the job is made of.
        folder = os.path.join(self.home, "studio", "uploads", answer[1]["id"], "own")
        own = [name for name in os.listdir(folder) if name != "proxy.jpg"][0]
        shutil.copy(os.path.join(folder, own), os.path.join(self.place, "photo.jpg"))
        return answer[1]["id"]

    def submit_all(self):
        width, height = (int(side) for side in self.options.size.split("x"))
        for number in range(self.options.jobs):
            session = number % SESSIONS
            text = f"Job {number}"
            body = {"template": TEMPLATE, "values": {"text": text, "photo": {"upload": self.upload(session)}},
                    "size": {"width": width, "height": height}, "metadata": {"text": text}}
            self.requests.append((session, f"key-{number}", body))
            self.submit(self.requests[-1])

    def submit(self, request):
        session, key, body = request
        answer = self.studio.ask("POST", "/jobs", session, body, {"Idempotency-Key": key})
        if answer and answer[0] != 202:
            self.fault(f"{key} was answered {answer}")

    def strike(self):
        """Kills something; the studio is there again afterwards."""
        time.sleep(self.random.uniform(0.1, self.options.gap))
        self.studio.note_processes()
        kind = "studio" if self.options.spare_programs else self.random.choice(["studio", "studio", "program", "worker"])
        targets = {"studio": [], "program": self.studio.programs(), "worker": self.studio.workers()}[kind]
        if kind == "studio" or not targets:
            self.counts["studio"] += 1
            self.studio.kill()
            if self.random.random() < 0.3:  # whoever asked does not know whether it was heard
                self.studio.start()
                self.submit(self.random.choice(self.requests))
            else:
                self.studio.start()
            return
        self.counts[kind] += 1
        try:
            os.kill(self.random.choice(targets), signal.SIGKILL)
        except ProcessLookupError:
            pass

    def jobs(self):
        all_jobs = []
        for session in range(SESSIONS):
            answer = self.studio.ask("GET", "/jobs?limit=200", session)
            for job in answer[1]["jobs"]:
                all_jobs.append((session, job))
        return all_jobs

    def wait_for_all(self):
        until = time.monotonic() + 600
        while time.monotonic() < until:
            jobs = self.jobs()
            if all(job["state"] in ENDED for _, job in jobs):
                return jobs
            time.sleep(0.2)
        raise SystemExit("walk_studio: jobs do not end")

    def judge(self, jobs):
        texts = [job["metadata"]["text"] for _, job in jobs]
        if sorted(texts) != sorted(body["metadata"]["text"] for _, _, body in self.requests):
            self.fault(f"{len(jobs)} jobs for {len(self.requests)} requests")
        given_up = 0
        for session, job in jobs:
            name = job["metadata"]["text"]
            if job["state"] == "failed" and job["problem"]["code"] == "interrupted":
                given_up += 1
                if self.options.spare_programs:
                    self.fault(f"{name} was given up after {job['attempt']} attempts: {job['problem']['detail']}")
            elif job["state"] != "done":
                self.fault(f"{name} is {job['state']}: {job['problem']}")
            elif job["attempt"] > ATTEMPTS:
                self.fault(f"{name} was tried {job['attempt']} times")
            else:
                status, content = self.studio.ask("GET", f"/videos/{job['video']}/file", session)
                if status != 200 or hashlib.sha256(content).hexdigest() != self.expected(name):
                    self.fault(f"{name} has other bytes")
        videos = sum(len(self.studio.ask("GET", "/videos?limit=200", session)[1]["videos"]) for session in range(SESSIONS))
        if videos + given_up != len(self.requests):
            self.fault(f"{videos} videos and {given_up} given up of {len(self.requests)} jobs")
        return given_up, videos

    def judge_remains(self, videos):
        studio = os.path.join(self.home, "studio")
        files = [name for name in os.listdir(os.path.join(studio, "videos")) if name.endswith(".mp4")]
        if len(files) != videos:
            self.fault(f"{len(files)} files of {videos} videos")
        left = [folder + "/" + name for folder in (studio + "/uploads", studio + "/jobs", self.home + "/jobs")
                if os.path.isdir(folder) for name in os.listdir(folder) if name != "lock"]
        left = [path for path in left if os.path.isdir(path)]
        if left:
            self.fault(f"left behind: {left}")
        alive = [process for process in self.studio.seen if is_alive(process)]
        if alive:
            self.fault(f"still running: {alive}")

    def run(self):
        self.submit_all()
        for _ in range(self.options.kills):
            self.strike()
        given_up, videos = self.judge(self.wait_for_all())
        code, seconds = self.studio.end()
        if code != 0 or seconds > 5:
            self.fault(f"ended with {code} after {seconds:.1f} s")
        self.judge_remains(videos)
        kills = ", ".join(f"{count} of a {kind}" for kind, count in self.counts.items())
        return f"{self.options.kills} kills ({kills}) under {self.options.jobs} jobs: {videos} made once, {given_up} given up"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--kills", type=int, default=50)
    parser.add_argument("--jobs", type=int, default=20)
    parser.add_argument("--size", default="540x960")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--gap", type=float, default=1.5, help="the most seconds between two kills")
    parser.add_argument("--spare-programs", action="store_true", help="kill the studio alone: no job may be given up")
    parser.add_argument("--rows", action="store_true")
    options = parser.parse_args()
    options.program = os.path.abspath(options.program)
    place = tempfile.mkdtemp(prefix="multiscene-studio-")
    walk = Walk(options, place)
    try:
        line = walk.run()
    finally:
        walk.studio.process.kill()
        walk.studio.process.wait()
        shutil.rmtree(place, ignore_errors=True)
    for fault in walk.faults:
        print(fault, file=sys.stderr)
    found = "see above" if walk.faults else "nothing"
    print(f"a studio killed at random | {line} | {found}" if options.rows else f"{line}; found {found}")
    return 1 if walk.faults else 0


if __name__ == "__main__":
    sys.exit(main())
