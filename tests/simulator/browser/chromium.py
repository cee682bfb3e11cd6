"""A headless Chromium, driven over its debugging protocol."""
import asyncio
import base64
import pathlib

from browser import Browser
from page import Page, until

FLAGS = [
    "--headless=new",
    "--no-sandbox",
    "--disable-gpu",
    "--disable-quic",
    "--no-first-run",
    "--disable-background-networking",
    "--disable-component-update",
    "--disable-sync",
    "--mute-audio",
    "--disable-dev-shm-usage",
    "--hide-scrollbars",
    "--remote-debugging-port=0",
    # A page without the focus runs on all the same: there are several in a test.
    "--disable-background-timer-throttling",
    "--disable-renderer-backgrounding",
    "--disable-backgrounding-occluded-windows",
]
KEY_CODES = {"Tab": 9, "Enter": 13, "Escape": 27, "ArrowUp": 38, "ArrowDown": 40}
ALT = 1  # in the protocol's sets of modifiers


class Chromium(Browser):
    """`async with Chromium() as browser:`"""

    port_file = "DevToolsActivePort"

    def command(self, profile):
        return ["chromium", *FLAGS, f"--user-data-dir={profile}", "about:blank"]

    def address(self, text):
        port, _, rest = text.partition("\n")
        return rest and f"ws://127.0.0.1:{port}{rest.splitlines()[0]}"

    async def open(self, url, width=1440, height=900, scale=1, preload=None, **features):
        """A page with cookies of its own. Features are of media: `prefers_color_scheme="dark"`."""
        context = await self.ask("Target.createBrowserContext")
        target = await self.ask(
            "Target.createTarget", url="about:blank", browserContextId=context["browserContextId"]
        )
        page = await self.attach(target["targetId"])
        await page.ask("Target.setAutoAttach", autoAttach=True, waitForDebuggerOnStart=False, flatten=True)
        for domain in ("Page", "Runtime", "Log"):
            await page.ask(f"{domain}.enable")
        await page.resize(width, height, scale)
        # Focus as in front of a person, for every page at once.
        await page.ask("Emulation.setFocusEmulationEnabled", enabled=True)
        listed = [{"name": name.replace("_", "-"), "value": value} for name, value in features.items()]
        await page.ask("Emulation.setEmulatedMedia", features=listed)
        if preload:
            await page.ask("Page.addScriptToEvaluateOnNewDocument", source=preload)
        await page.go(url)
        return page

    async def attach(self, target):
        session = (await self.ask("Target.attachToTarget", targetId=target, flatten=True))["sessionId"]
        page = self.pages[session] = ChromiumPage(self, session, target)
        return page

    async def ask(self, method, session=None, **parameters):
        return await self.channel.ask(
            method=method, params=parameters, **({"sessionId": session} if session else {})
        )

    def hear(self, message):
        if message.get("sessionId") in self.pages:
            self.pages[message["sessionId"]].hear(message["method"], message["params"])


class ChromiumPage(Page):
    def __init__(self, browser, session, target):
        super().__init__()
        self._browser, self._session, self._target = browser, session, target
        self._held = False  # the mouse's button
        self._frames = {}  # those in processes of their own, as sealed off ones are: sessions by target

    def hear(self, method, parameters):
        if method == "Runtime.exceptionThrown":
            details = parameters["exceptionDetails"]
            self.complaints.append(details.get("exception", {}).get("description") or details["text"])
        elif method == "Runtime.consoleAPICalled" and parameters["type"] == "error":
            self.complaints.append(
                " ".join(str(each.get("value", each.get("description"))) for each in parameters["args"])
            )
        elif method == "Log.entryAdded" and parameters["entry"]["level"] == "error":
            self.complaints.append(parameters["entry"]["text"] + " " + parameters["entry"].get("url", ""))
        elif method == "Target.attachedToTarget":
            self._frames[parameters["targetInfo"]["targetId"]] = parameters["sessionId"]

    async def ask(self, method, **parameters):
        return await self._browser.ask(method, self._session, **parameters)

    async def go(self, url):
        await self.ask("Page.navigate", url=url)
        await self.wait("document.readyState === 'complete'", f"{url} to load")

    async def load_again(self):
        await self.ask("Page.reload")

    async def frame(self, url):
        """A frame of the page as a page, once it has loaded."""

        async def found():
            for target, session in self._frames.items():
                frame = ChromiumPage(self._browser, session, target)
                if await frame.evaluate("document.readyState + location.href") == "complete" + url:
                    return frame

        return await until(found, f"a frame with {url}")

    async def close(self):
        await self._browser.ask("Target.closeTarget", targetId=self._target)

    async def resize(self, width, height, scale=1):
        await self.ask(
            "Emulation.setDeviceMetricsOverride",
            width=width,
            height=height,
            deviceScaleFactor=scale,
            mobile=False,
        )

    async def evaluate(self, expression):
        result = await self.ask(
            "Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True, userGesture=True
        )
        if "exceptionDetails" in result:
            details = result["exceptionDetails"]
            raise RuntimeError(details.get("exception", {}).get("description", details["text"]))
        return result["result"].get("value")

    async def mouse(self, steps, x, y, alt=False):
        kinds = {"move": "mouseMoved", "down": "mousePressed", "up": "mouseReleased"}
        at = {"x": x, "y": y, "modifiers": ALT if alt else 0}
        requests = []
        for step in steps:
            self._held = step == "down" or (step == "move" and self._held)
            button = {"button": "left", "clickCount": 1} if step != "move" else {}
            if self._held:
                button |= {"button": "left", "buttons": 1}
            requests.append(self.ask("Input.dispatchMouseEvent", type=kinds[step], **at, **button))
        await asyncio.gather(*requests)

    async def touch_together(self, places):
        """Fingers that come down one after the other, and leave at once."""
        await self.ask("Emulation.setTouchEmulationEnabled", enabled=True, maxTouchPoints=len(places))
        points = [{"x": x, "y": y, "id": number} for number, (x, y) in enumerate(places)]
        for count in range(1, len(points) + 1):
            await self.ask("Input.dispatchTouchEvent", type="touchStart", touchPoints=points[:count])
        await self.ask("Input.dispatchTouchEvent", type="touchEnd", touchPoints=[])
        await self.ask("Emulation.setTouchEmulationEnabled", enabled=False)

    async def key(self, key):
        text = {"Enter": "\r"}.get(key, key if len(key) == 1 else "")
        code = KEY_CODES.get(key, ord(key[0].upper()))
        for kind in ("keyDown", "keyUp"):
            more = {"text": text} if kind == "keyDown" and text else {}
            await self.ask("Input.dispatchKeyEvent", type=kind, key=key, windowsVirtualKeyCode=code, **more)

    async def insert(self, text):
        await self.ask("Input.insertText", text=text)

    async def screenshot(self, file):
        picture = await self.ask("Page.captureScreenshot", format="png")
        pathlib.Path(file).write_bytes(base64.b64decode(picture["data"]))
