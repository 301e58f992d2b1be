"""A browser without a window: opens pages at the width of a desk or a telephone, asks them about
their layout and takes their pictures. It is Chromium, told over a pipe in its DevTools protocol.
"""

import base64
import itertools
import json
import os
import select
import subprocess
import time

DEADLINE_SECONDS = 120  # for the answer to one command, on a machine that is busy


class Browser:
    """A Chromium with one page, whose files lie in `folder`. To be closed.

    It has no sandbox, which needs a user other than root: open nothing but files of one's own."""

    def __init__(self, folder):
        commands, self.commands = os.pipe()
        self.answers, answers = os.pipe()
        # The protocol is spoken on the file descriptors 3 and 4; other shells know only one digit.
        self.process = subprocess.Popen(
            ["bash", "-c", f'exec chromium "$@" 3<&{commands} 4>&{answers}', "chromium",
             "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
             "--hide-scrollbars", "--remote-debugging-pipe", f"--user-data-dir={folder}"],
            pass_fds=(commands, answers), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        os.close(commands)
        os.close(answers)
        self.unread, self.events, self.session = b"", [], None
        self.numbers = itertools.count(1)
        target = self._tell("Target.createTarget", url="about:blank")["targetId"]
        self.session = self._tell("Target.attachToTarget", targetId=target,
                                  flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            self._tell(f"{domain}.enable")

    def close(self):
        os.close(self.commands)
        os.close(self.answers)
        self.process.terminate()
        self.process.wait()

    def _next_message(self):
        end = time.monotonic() + DEADLINE_SECONDS
        while b"\0" not in self.unread:
            readable, _, _ = select.select([self.answers], [], [], max(0, end - time.monotonic()))
            block = os.read(self.answers, 1 << 20) if readable else b""
            assert block, "the browser ended or did not answer"
            self.unread += block
        message, self.unread = self.unread.split(b"\0", 1)
        return json.loads(message)

    def _tell(self, method, **parameters):
        """Gives a command and returns its result; events that come meanwhile are kept."""
        command = {"id": next(self.numbers), "method": method, "params": parameters}
        if self.session:
            command["sessionId"] = self.session
        data = json.dumps(command).encode() + b"\0"
        while data:
            data = data[os.write(self.commands, data):]
        while True:
            message = self._next_message()
            if message.get("id") == command["id"]:
                assert "error" not in message, (method, message["error"])
                return message["result"]
            self.events.append(message)

    def open(self, url, width, height, *, dark=False):
        """Opens a page in a window of that many CSS pixels, a telephone's if it is narrow, and
        waits until it has loaded. Its colours are what it has for light or dark surroundings."""
        self._tell("Emulation.setDeviceMetricsOverride", width=width, height=height,
                   deviceScaleFactor=1, mobile=width < 600)
        self._tell("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])
        self.events.clear()
        result = self._tell("Page.navigate", url=url)
        assert "errorText" not in result, (url, result["errorText"])
        while not any(event["method"] == "Page.loadEventFired" for event in self.events):
            self.events.append(self._next_message())

    def evaluate(self, expression):
        """The value of a JavaScript expression in the page, or what its promise gives; it must be
        one that JSON can hold."""
        result = self._tell("Runtime.evaluate", expression=expression, returnByValue=True,
                            awaitPromise=True)
        assert "exceptionDetails" not in result, result
        return result["result"].get("value")

    def press(self, key):
        """Presses and releases a key, named as in a KeyboardEvent."""
        codes = {"Tab": 9, "Enter": 13, "Escape": 27, "PageUp": 33, "PageDown": 34, "End": 35,
                 "Home": 36, "ArrowLeft": 37, "ArrowUp": 38, "ArrowRight": 39, "ArrowDown": 40}
        text = "\r" if key == "Enter" else key if len(key) == 1 else ""
        for kind in ("keyDown", "keyUp"):
            self._tell("Input.dispatchKeyEvent", type=kind, key=key,
                       windowsVirtualKeyCode=codes.get(key, 0), text=text if kind == "keyDown"
                       else "")

    def complaints(self):
        """What the browser has reported about the page since it was opened."""
        self.evaluate("0")  # what was reported before this answer has arrived with it
        return [event["params"] for event in self.events if event["method"] in (
            "Runtime.consoleAPICalled", "Runtime.exceptionThrown", "Log.entryAdded")]

    def take_picture(self, path):
        """Writes the whole page, not only what the window shows, to a PNG file."""
        picture = self._tell("Page.captureScreenshot", captureBeyondViewport=True)
        path.write_bytes(base64.b64decode(picture["data"]))

    def print_page(self, path):
        """Prints the page to a PDF file, on the paper that it asks for."""
        printed = self._tell("Page.printToPDF", preferCSSPageSize=True, printBackground=True)
        path.write_bytes(base64.b64decode(printed["data"]))
