"""Asks a running studio for everything that its description lists, and holds the answers against it.

Usage: api_test.py PROGRAM SAMPLES
"""

import http.client
import json
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

import jsonschema

# Bodies that are as they should be, for what another session must not reach with them.
BODIES = {"/api/v1/videos/{id}": {"title": "x"}, "/api/v1/videos/{id}/links": {"hours": 1},
          "/api/v1/jobs/{id}/copies": {}, "/api/v1/previews/{id}/still": {"values": {}, "frame": 0}}
PROBLEM = "application/problem+json"
faults = []


def expect(condition, words):
    if not condition:
        faults.append(words)


class Studio:
    def __init__(self, program, home, template):
        self.words = [program, "--home", home, "--json"]
        self.token, self.other = self.new_token("test"), self.new_token("other")
        self.process = subprocess.Popen(self.words + ["studio", "--port", "0", "--no-open", template],
                                        stdout=subprocess.PIPE, text=True)
        self.started = json.loads(self.process.stdout.readline())
        self.port = self.started["port"]

    def new_token(self, name):
        told = subprocess.run(self.words + ["studio", "token", "add", name, "--scope", "admin"], check=True,
                              capture_output=True, text=True).stdout
        return json.loads(told)["token"]

    def ask(self, method, path, body=None, token=None, kind="application/json"):
        """As the first of the sessions, unless told otherwise; an empty token: as nobody."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        token = self.token if token is None else token
        lines = {"Authorization": "Bearer " + token} if token else {}
        if body is not None:
            lines["Content-Type"] = kind
        connection.request(method, path, body, lines)
        answer = connection.getresponse()
        kind = (answer.getheader("Content-Type") or "").split(";")[0]
        content = b"" if kind == "text/event-stream" else answer.read()
        connection.close()
        return answer.status, kind, content

    def make(self, path, body, kind="application/json"):
        """The id of what is made by a POST."""
        status, _, content = self.ask("POST", "/api/v1/" + path, body, kind=kind)
        expect(status in (200, 201, 202), f"POST {path}: {status} {content}")
        return json.loads(content)["id"]

    def make_one_of_each(self, sample):
        """What a session can have, by the name in its address."""
        photo = (sample / "sample/photo.jpg").read_bytes()
        made = {"templates": "1100", "uploads": self.make("uploads?name=a.jpg", photo, "application/octet-stream")}
        values = {"title": "Hi", "photo": {"upload": made["uploads"]}}
        made["previews"] = self.make("previews", json.dumps({"template": 1100, "values": values, "width": 360}))
        made["jobs"] = self.make("jobs", json.dumps({"template": 1100, "values": values, "draft": True}))
        for _ in range(600):
            job = json.loads(self.ask("GET", "/api/v1/jobs/" + made["jobs"])[2])
            if job["state"] not in ("queued", "running"):
                break
            time.sleep(0.1)
        expect(job["state"] == "done", f"the job is {job}")
        made["videos"] = job["video"]
        return made

    def end(self):
        start = time.monotonic()
        self.process.send_signal(signal.SIGTERM)
        rest, _ = self.process.communicate(timeout=30)
        expect(self.process.returncode == 0, f"SIGTERM ends it with {self.process.returncode}")
        expect(time.monotonic() - start < 5, f"it took {time.monotonic() - start:.1f} s to end")
        expect("key=" not in rest, "the key was printed as JSON")


def schemas_in(node):
    """Every schema of the description."""
    if isinstance(node, dict):
        if "schema" in node:
            yield node["schema"]
        for each in node.values():
            yield from schemas_in(each)
    elif isinstance(node, list):
        for each in node:
            yield from schemas_in(each)


def judge(where, operation, problem, answer):
    status, kind, content = answer
    responses = operation["responses"]
    if str(status) not in responses:
        expect(status >= 400, f"{where}: {status} is not in the description")
        expect(kind == PROBLEM, f"{where}: {status} is no problem but {kind}")
        if kind == PROBLEM:
            check(where, json.loads(content), problem)
        return
    said = responses[str(status)].get("content", {})
    if not said:
        expect(content == b"", f"{where}: {status} has a body")
        return
    expect(any(kind == each.split(";")[0] for each in said), f"{where}: {kind} instead of {list(said)}")
    if kind == "application/json" and kind in said:
        check(where, json.loads(content), said[kind]["schema"])


def check(where, value, schema):
    for error in jsonschema.Draft202012Validator(schema).iter_errors(value):
        expect(False, f"{where}: {error.json_path}: {error.message}")


def filled(path, value):
    """The path with that value in each of its places."""
    return "".join(value if at % 2 else part for at, part in enumerate(path.replace("}", "{").split("{")))


def keeps_sessions_apart(studio, api, made):
    for path, operations in api["paths"].items():
        owned = made.get((path.split("/") + [""] * 4)[3])
        if "{id}" not in path or not owned or "/templates/" in path:
            continue
        for method, operation in operations.items():
            body = json.dumps(BODIES[path]) if "requestBody" in operation else None
            status, _, _ = studio.ask(method.upper(), filled(path, owned), body, token=studio.other)
            expect(status == 404, f"{method.upper()} {path}: {status} for another session")


def walk(studio, made):
    status, _, content = studio.ask("GET", "/api/v1/openapi.json", token="")
    expect(status == 200, f"the description is {status}")
    api = json.loads(content)
    for schema in schemas_in(api):
        jsonschema.Draft202012Validator.check_schema(schema)
    problem = api["components"]["responses"]["Problem"]["content"][PROBLEM]["schema"]
    names = [operation["operationId"] for path in api["paths"].values() for operation in path.values()]
    expect(len(names) == len(set(names)), "two operations have one name")
    answered = 0
    for path, operations in api["paths"].items():
        owned = made.get((path.split("/") + [""] * 4)[3], "none")
        for method, operation in operations.items():
            where = f"{method.upper()} {path}"
            place = filled(path, owned if method == "get" else "none")
            body = json.dumps({"nobody knows this": 1}) if "requestBody" in operation else None
            if operation["security"]:
                status, kind, _ = studio.ask(method.upper(), place, body, token="")
                expect((status, kind) == (401, PROBLEM), f"{where}: {status} {kind} for nobody known")
            if path in ("/api/v1/openapi.json", "/"):  # the page may not be built
                continue
            answer = studio.ask(method.upper(), place, body)
            judge(where, operation, problem, answer)
            if body is not None:
                expect(400 <= answer[0] < 500, f"{where}: {answer[0]} for a body that nobody knows")
            elif method == "get" and "{" not in path and path != "/" and path.startswith("/api"):
                expect(answer[0] in (200, 404), f"{where}: {answer[0]}")
            answered += answer[0] < 400
    keeps_sessions_apart(studio, api, made)
    return len(names), answered


def lets_nobody_in_by_a_log(program):
    with tempfile.TemporaryDirectory(prefix="studio-api-") as home:
        process = subprocess.Popen([program, "--home", home, "studio", "--port", "0", "--no-open", "--listen"],
                                   stdout=subprocess.PIPE, text=True)
        line = process.stdout.readline()
        process.send_signal(signal.SIGINT)
        rest, _ = process.communicate(timeout=30)
        expect(home in line, f"not told where the address is: {line}")
        expect("key=" not in line + rest and "code" not in line + rest, "what lets anybody in is in a log")
        expect(process.returncode == 0, f"SIGINT ends it with {process.returncode}")


def main(program, samples):
    lets_nobody_in_by_a_log(program)
    with tempfile.TemporaryDirectory(prefix="studio-api-") as home:
        studio = Studio(program, home, f"{samples}/minimal")
        try:
            operations, answered = walk(studio, studio.make_one_of_each(pathlib.Path(samples) / "sunny-day"))
            key = pathlib.Path(studio.started["addressFile"])
            expect("#key=" in key.read_text(), "no key in the file")
            expect(key.stat().st_mode & 0o77 == 0, "others can read the key")
        finally:
            studio.end()
        expect(not key.exists(), "the key is left")
    expect(answered >= 20, f"only {answered} of {operations} answered well")
    for fault in faults:
        print(fault)
    print(f"{operations} operations, {answered} answered well, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
