"""Asks a running studio for everything that its description lists, and holds the answers against it.

Usage: api_test.py PROGRAM
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

# Values of paths, so that something is found; everything else is asked for what is not there.
KNOWN = {"/api/v1/templates/{id}": "1100", "/api/v1/templates/{id}/thumbnail": "1100"}
PROBLEM = "application/problem+json"
faults = []


def expect(condition, words):
    if not condition:
        faults.append(words)


class Studio:
    def __init__(self, program, home):
        self.words = [program, "--home", home, "--json"]
        token = subprocess.run(self.words + ["studio", "token", "add", "test", "--scope", "admin"], check=True,
                               capture_output=True, text=True).stdout
        self.token = json.loads(token)["token"]
        self.process = subprocess.Popen(self.words + ["studio", "--port", "0", "--no-open"], stdout=subprocess.PIPE,
                                        text=True)
        self.started = json.loads(self.process.stdout.readline())
        self.port = self.started["port"]

    def ask(self, method, path, body=None, token=True, kind="application/json"):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        lines = {"Authorization": "Bearer " + self.token} if token else {}
        if body is not None:
            lines["Content-Type"] = kind
        connection.request(method, path, body, lines)
        answer = connection.getresponse()
        kind = (answer.getheader("Content-Type") or "").split(";")[0]
        content = b"" if kind == "text/event-stream" else answer.read()
        connection.close()
        return answer.status, kind, content

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


def walk(studio):
    status, _, content = studio.ask("GET", "/api/v1/openapi.json", token=False)
    expect(status == 200, f"the description is {status}")
    api = json.loads(content)
    for schema in schemas_in(api):
        jsonschema.Draft202012Validator.check_schema(schema)
    problem = api["components"]["responses"]["Problem"]["content"][PROBLEM]["schema"]
    names = [operation["operationId"] for path in api["paths"].values() for operation in path.values()]
    expect(len(names) == len(set(names)), "two operations have one name")
    answered = 0
    for path, operations in api["paths"].items():
        value = KNOWN.get(path, "none")
        place = "".join(value if at % 2 else part
                        for at, part in enumerate(path.replace("}", "{").split("{")))
        for method, operation in operations.items():
            where = f"{method.upper()} {path}"
            body = json.dumps({"nobody knows this": 1}) if "requestBody" in operation else None
            if operation["security"]:
                status, kind, _ = studio.ask(method.upper(), place, body, token=False)
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


def main(program):
    lets_nobody_in_by_a_log(program)
    with tempfile.TemporaryDirectory(prefix="studio-api-") as home:
        studio = Studio(program, home)
        try:
            operations, answered = walk(studio)
            key = pathlib.Path(studio.started["addressFile"])
            expect("#key=" in key.read_text(), "no key in the file")
            expect(key.stat().st_mode & 0o77 == 0, "others can read the key")
            second = subprocess.run(studio.words + ["studio", "--port", "0", "--no-open"], capture_output=True, text=True)
            expect(second.returncode == 1 and "runs already" in second.stderr, f"a second one: {second}")
        finally:
            studio.end()
        expect(not key.exists(), "the key is left")
    expect(answered >= 8, f"only {answered} of {operations} answered well")
    for fault in faults:
        print(fault)
    print(f"{operations} operations, {answered} answered well, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
