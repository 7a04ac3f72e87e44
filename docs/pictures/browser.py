# SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
# SPDX-License-Identifier: BSD-3-Clause

"""A page in Chromium without a window, controlled by the DevTools protocol over pipes."""

import base64
import json
import os
import subprocess
import tempfile

OPTIONS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run"]
OPTIONS += ["--disable-background-networking", "--disable-component-update", "--disable-sync"]
OPTIONS += ["--hide-scrollbars"]

LOADED = """new Promise(done =>
    document.readyState === 'complete' ? done() : window.addEventListener('load', done))"""


class Browser:
    """Starts Chromium for a with block."""

    def __init__(self, chromium):
        self._profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        to_browser, self._commands = os.pipe()
        self._replies, from_browser = os.pipe()
        self._process = subprocess.Popen(
            # The browser reads commands from descriptor 3 and writes replies to 4.
            ["sh", "-c", f'exec "$@" 3<&{to_browser} 4>&{from_browser}', "sh", chromium, *OPTIONS]
            + ["--remote-debugging-pipe", f"--user-data-dir={self._profile.name}", "about:blank"],
            pass_fds=(to_browser, from_browser),
            stderr=subprocess.DEVNULL,
        )
        os.close(to_browser)
        os.close(from_browser)
        self._received = b""
        self._session = {}
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        attached = self.call("Target.attachToTarget", targetId=target, flatten=True)
        self._session = {"sessionId": attached["sessionId"]}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.close(self._commands)
        self._process.wait()
        os.close(self._replies)
        self._profile.cleanup()

    def _reply(self):
        """The next message that is not an event."""
        while True:
            while b"\0" not in self._received:
                part = os.read(self._replies, 1 << 16)
                if not part:
                    raise RuntimeError("Chromium has ended")
                self._received += part
            text, self._received = self._received.split(b"\0", 1)
            message = json.loads(text)
            if "id" in message:
                return message

    def call(self, method, **parameters):
        command = {"id": 1, "method": method, "params": parameters, **self._session}
        os.write(self._commands, json.dumps(command).encode() + b"\0")
        reply = self._reply()
        if "error" in reply:
            raise RuntimeError(f"{method}: {reply['error']['message']}")
        return reply["result"]

    def show(self, url, width, scheme):
        """Opens the page in a color scheme, and returns when it is loaded."""
        size = {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": False}
        self.call("Emulation.setDeviceMetricsOverride", **size)
        feature = {"name": "prefers-color-scheme", "value": scheme}
        self.call("Emulation.setEmulatedMedia", features=[feature])
        self.call("Page.navigate", url=url)
        self.evaluate(LOADED)

    def evaluate(self, expression):
        """The value of an expression of JavaScript, or of its promise."""
        options = {"awaitPromise": True, "returnByValue": True}
        reply = self.call("Runtime.evaluate", expression=expression, **options)
        if "exceptionDetails" in reply:
            raise RuntimeError(f"{expression}: {reply['exceptionDetails']}")
        return reply["result"].get("value")

    def picture(self):
        """What the window shows of the page, as PNG."""
        return base64.b64decode(self.call("Page.captureScreenshot")["data"])
