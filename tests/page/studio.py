"""The studio that the tests talk to, and the browser that they look at it with."""

import base64
import pathlib
import shutil
import signal
import socket
import subprocess
import tempfile
import time

from selenium import webdriver
from selenium.common.exceptions import JavascriptException, StaleElementReferenceException
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By

PATIENCE = 60


class Studio:
    """`multiscene studio` with a home of its own."""

    def __init__(self, program, offering="", name="", template=""):
        """`offering`: a server of templates; `name`: how devices of the network call it; `template`: one on its
        workbench."""
        self.program, self.template = program, template
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="studio-page-"))
        if offering:
            update = [program, "--home", self.home, "templates", "update", "--server", offering]
            subprocess.run(update, check=True, capture_output=True)
        with socket.create_server(("127.0.0.1", 0)) as free:
            self.port = free.getsockname()[1]
        self.public = f"http://{name}:{self.port}" if name else ""
        self.start()

    def start(self):
        command = [self.program, "studio", "--home", str(self.home), "--no-open", "--port", str(self.port)]
        command += ["--public-url", self.public] if self.public else []
        command += [str(self.template)] if self.template else []
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        line = self.process.stdout.readline()
        if str(self.port) not in line:
            raise AssertionError(f"the studio said: {line}{self.process.stdout.read()}")

    def stop(self, how=signal.SIGTERM):
        self.process.send_signal(how)
        self.process.wait(20)
        self.process.stdout.close()

    def close(self):
        if self.process.poll() is None:
            self.stop()
        shutil.rmtree(self.home, ignore_errors=True)

    @property
    def address(self):
        """Lets in once; then another one is there."""
        return (self.home / "studio" / "address").read_text().strip()

    @property
    def page(self):
        return self.address.split("#")[0]


class Browser:
    """One window of a size, with a profile of its own."""

    def __init__(self, width, height, is_phone=False, names="", letters=16):
        """`names`: such names lead to this machine; `letters`: how large somebody wants to have them."""
        options = webdriver.ChromeOptions()
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--disable-dev-shm-usage"):
            options.add_argument(argument)
        if names:
            options.add_argument(f"--host-resolver-rules=MAP {names} 127.0.0.1")
        options.add_experimental_option("prefs", {"webkit.webprefs.default_font_size": letters})
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(service=Service(shutil.which("chromedriver")), options=options)
        self.driver.set_script_timeout(PATIENCE)
        self.driver.set_page_load_timeout(PATIENCE)  # how long it waits for a page that does not answer, too
        self.resize(width, height, is_phone)
        self.look(is_dark=False)

    def close(self):
        self.driver.quit()

    def devtools(self, command, **parameters):
        return self.driver.execute_cdp_cmd(command, parameters)

    def resize(self, width, height, is_phone=False, zoom=1):
        self.devtools("Emulation.setDeviceMetricsOverride", width=width // zoom, height=height // zoom, deviceScaleFactor=zoom, mobile=is_phone)
        self.devtools("Emulation.setTouchEmulationEnabled", enabled=is_phone)

    def look(self, is_dark):
        """Light or dark; without motion, so that a picture of the page is one of its end."""
        features = {"prefers-color-scheme": "dark" if is_dark else "light", "prefers-reduced-motion": "reduce"}
        self.devtools("Emulation.setEmulatedMedia", features=[dict(name=n, value=v) for n, v in features.items()])
        matches = "return matchMedia('(prefers-color-scheme: dark)').matches"
        self.wait("the other look", lambda: (self.run(matches) == is_dark) or None)
        self.rest()

    def rest(self):
        """Until everything is drawn as it stays."""
        self.driver.execute_async_script("const done = arguments[0]; requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(done, 50)))")
        self.wait("rest", lambda: self.run("return document.getAnimations().every((a) => a.playState === 'finished')"))

    def open(self, address):
        self.driver.get(address)

    def go(self, path):
        self.run("location.hash = arguments[0]", path)

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def wait(self, what, condition, patience=PATIENCE):
        """What `condition` gives once it is something; `what` says what did not come."""
        end = time.monotonic() + patience
        while True:
            try:
                got = condition()
            except (JavascriptException, StaleElementReferenceException):
                got = None
            if got:
                return got
            if time.monotonic() > end:
                raise AssertionError(f"did not come: {what}; the page says: {self.run('return document.body.innerText')[:600]}")
            time.sleep(0.05)

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector, patience=PATIENCE):
        return self.wait(selector, lambda: next((e for e in self.all(selector) if e.is_displayed()), None), patience)

    def press(self, selector):
        """As a finger does, wherever it lies on the screen by now."""
        element = self.one(selector)
        self.wait(f"{selector}, ready", element.is_enabled)
        self.run("arguments[0].scrollIntoView({block: 'center'})", element)
        element.click()

    def press_text(self, text, within="body"):
        find = "return [...document.querySelector(arguments[1]).querySelectorAll('button, a')].find(e => e.innerText.trim() === arguments[0] && e.checkVisibility() && !e.disabled)"
        element = self.wait(text, lambda: self.run(find, text, within))
        self.run("arguments[0].scrollIntoView({block: 'center'}); arguments[0].click()", element)

    def press_input(self, text):
        """One of several that exclude each other."""
        find = "return [...document.querySelectorAll('.segment')].find((s) => s.innerText === arguments[0])?.querySelector('input')"
        self.run("arguments[0].click()", self.wait(text, lambda: self.run(find, text)))

    def slide(self, selector, value):
        self.run("arguments[0].value = arguments[1]; arguments[0].dispatchEvent(new Event('input', {bubbles: true}))", self.one(selector), value)

    def choose(self, selector, *files):
        self.wait(selector, lambda: self.all(selector))[0].send_keys("\n".join(map(str, files)))

    def heading(self, text):
        self.wait(f"heading {text}", lambda: self.run("return document.querySelector('h1')?.innerText") == text)

    def picture(self, clip=None):
        """The screen as PNG bytes; `clip` in CSS pixels."""
        more = dict(clip=dict(clip, scale=1)) if clip else {}
        return base64.b64decode(self.devtools("Page.captureScreenshot", format="png", **more)["data"])

    def complaints(self):
        """What the browser complained of: faults of scripts, and what the content policy refused."""
        return [e["message"] for e in self.driver.get_log("browser") if "Content Security" in e["message"] or "Uncaught" in e["message"]]

    def axe(self, source):
        """What axe-core finds, a line each."""
        if not self.run("return !!window.axe"):
            self.run(source)
        script = """
            const done = arguments[arguments.length - 1];
            axe.run(document, {resultTypes: ['violations']}).then(
              (result) => done(result.violations.flatMap((v) => v.nodes.map((n) => `${v.id}: ${n.html.slice(0, 200)}`))),
              (error) => done([String(error)]));"""
        return self.driver.execute_async_script(script)

    def api(self, path):
        """What the studio answers to this page."""
        script = "const done = arguments[1]; fetch('/api/v1' + arguments[0]).then((a) => a.json()).then(done, (e) => done({error: String(e)}))"
        return self.driver.execute_async_script(script, path)

    def download(self, path):
        script = """
            const done = arguments[1];
            fetch('/api/v1' + arguments[0]).then((a) => a.blob()).then((blob) => {
              const reader = new FileReader();
              reader.onload = () => done(reader.result.split(',')[1]);
              reader.readAsDataURL(blob);
            });"""
        return base64.b64decode(self.driver.execute_async_script(script, path))

    def alter(self, path, change):
        """From now on `change`, a line of script, is made of each `body` that is answered to a path that ends so."""
        self.run(
            """
            const plain = window.fetch, change = new Function('body', arguments[1]);
            window.fetch = async (address, request) => {
              const answer = await plain(address, request);
              if (!String(address).endsWith(arguments[0])) return answer;
              const body = await answer.json();
              change(body);
              return new Response(JSON.stringify(body), answer);
            };""",
            path,
            change,
        )

    def requests_to(self, path):
        """From now on the bodies of requests to paths that end so are kept; `sent()` gives them."""
        self.run(
            """
            window.sentBodies = [];
            const plain = window.fetch;
            window.fetch = (address, request) => {
              if (String(address).endsWith(arguments[0]) && request?.body) sentBodies.push(JSON.parse(request.body));
              return plain(address, request);
            };""",
            path,
        )

    def sent(self):
        return self.run("return sentBodies")


