"""Headless Chromium, driven over its DevTools pipe (descriptors 3 and 4; JSON texts that end with NUL)."""

import base64
import fcntl
import json
import os
import select
import subprocess
import tempfile

FLAGS = ["--headless", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
         "--disable-component-update", "--disable-sync", "--remote-debugging-pipe"]

SILENCE_MAX = 60  # seconds


class Chromium:
    def __init__(self, *flags):
        self.profile = tempfile.TemporaryDirectory(prefix="attalven-browser-", ignore_cleanup_errors=True)
        child_in, self.to_child = os.pipe()
        self.from_child, child_out = os.pipe()

        def place():
            pipes = [fcntl.fcntl(fd, fcntl.F_DUPFD, 100) for fd in (child_in, child_out)]
            os.dup2(pipes[0], 3)
            os.dup2(pipes[1], 4)

        as_root = ["--no-sandbox"] if os.geteuid() == 0 else []
        self.process = subprocess.Popen(
            ["chromium", *FLAGS, *as_root, *flags, "--user-data-dir=" + self.profile.name],
            preexec_fn=place, pass_fds=(3, 4), stderr=subprocess.DEVNULL)
        os.close(child_in)
        os.close(child_out)
        self.unread, self.events, self.calls = b"", [], 0
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        self.call("Page.enable")

    def message(self):
        while b"\0" not in self.unread:
            if not select.select([self.from_child], [], [], SILENCE_MAX)[0]:
                raise TimeoutError("the browser is silent")
            got = os.read(self.from_child, 1 << 16)
            if not got:
                raise EOFError("the browser ended")
            self.unread += got
        text, self.unread = self.unread.split(b"\0", 1)
        return json.loads(text)

    def call(self, method, **params):
        self.calls += 1
        request = {"id": self.calls, "method": method, "params": params}
        if not method.startswith(("Target.", "Browser.")):
            request["sessionId"] = self.session
        os.write(self.to_child, json.dumps(request).encode() + b"\0")
        while True:
            message = self.message()
            if message.get("id") == self.calls:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']['message']}")
                return message["result"]
            self.events.append(message)

    def show(self, url):
        """Loads the page and all that it refers to."""
        self.events.clear()
        self.call("Page.bringToFront")  # a hidden page has no picture
        self.call("Page.navigate", url=url)
        while not any(e.get("method") == "Page.loadEventFired" for e in self.events):
            self.events.append(self.message())

    def evaluate(self, expression):
        """Runs beside the page, so that a page without scripts can be asked too."""
        frame = self.call("Page.getFrameTree")["frameTree"]["frame"]["id"]
        world = self.call("Page.createIsolatedWorld", frameId=frame)["executionContextId"]
        return self.call("Runtime.evaluate", contextId=world, expression=expression,
                         returnByValue=True)["result"].get("value")

    def click(self, x, y):
        for kind in ("mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, button="left", clickCount=1)

    def picture(self, path):
        with open(path, "wb") as file:
            file.write(base64.b64decode(self.call("Page.captureScreenshot")["data"]))

    def close(self):
        self.call("Browser.close")
        self.process.wait()
        self.profile.cleanup()
