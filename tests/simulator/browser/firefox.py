"""A headless Firefox, driven over WebDriver BiDi. For trying the page by hand: `BROWSER=firefox`."""
import base64
import json
import pathlib

from browser import Browser
from page import Page, until

KEYS = {
    "Tab": "\ue004",
    "Enter": "\ue007",
    "Escape": "\ue00c",
    "ArrowUp": "\ue013",
    "ArrowDown": "\ue015",
    "Alt": "\ue00a",
}


# Nothing is fetched from anywhere while it starts.
SETTINGS = {
    "app.update.enabled": False,
    "browser.safebrowsing.malware.enabled": False,
    "browser.safebrowsing.phishing.enabled": False,
    "datareporting.policy.dataSubmissionEnabled": False,
    "extensions.getAddons.cache.enabled": False,
    "network.captive-portal-service.enabled": False,
    "network.connectivity-service.enabled": False,
    "services.settings.server": "data:,",
    "media.gmp-manager.url": "",
    "media.autoplay.default": 0,
    "browser.shell.checkDefaultBrowser": False,
    "toolkit.telemetry.enabled": False,
    "remote.active-protocols": 1,
}


class Firefox(Browser):
    """`async with Firefox() as browser:`"""

    port_file = "WebDriverBiDiServer.json"

    def prepare(self, profile):
        lines = [f"user_pref({json.dumps(name)}, {json.dumps(value)});\n" for name, value in SETTINGS.items()]
        (profile / "user.js").write_text("".join(lines))

    def command(self, profile):
        return ["firefox-esr", "--headless", "--no-remote", "--profile", profile, "--remote-debugging-port=0"]

    def address(self, text):
        return text.endswith("}") and f"ws://127.0.0.1:{json.loads(text)['ws_port']}/session"

    async def begin(self):
        await self.ask("session.new", capabilities={})
        await self.ask("session.subscribe", events=["log.entryAdded"])

    async def open(self, url, width=1440, height=900, scale=1, preload=None):
        """A page with cookies of its own."""
        user = (await self.ask("browser.createUserContext"))["userContext"]
        context = (await self.ask("browsingContext.create", type="window", userContext=user))["context"]
        page = self.pages[context] = FirefoxPage(self, context)
        await page.resize(width, height, scale)
        if preload:
            await self.ask(
                "script.addPreloadScript", functionDeclaration=f"() => {{ {preload} }}", contexts=[context]
            )
        await page.go(url)
        return page

    async def ask(self, method, **parameters):
        return await self.channel.ask(method=method, params=parameters)

    def hear(self, message):
        if message.get("method") != "log.entryAdded" or message["params"]["level"] != "error":
            return
        page = self.pages.get(message["params"]["source"].get("context"))
        if page:
            page.complaints.append(message["params"]["text"])


class FirefoxPage(Page):
    def __init__(self, browser, context, world=None):
        super().__init__()
        self._browser, self._context, self._world = browser, context, world

    async def go(self, url):
        await self._browser.ask("browsingContext.navigate", context=self._context, url=url, wait="complete")

    async def load_again(self):
        await self._browser.ask("browsingContext.reload", context=self._context, wait="complete")

    async def frame(self, url):
        """A frame of the page as a page, once it has loaded; in a world apart, for its own may have no scripts."""

        async def found():
            tree = await self._browser.ask("browsingContext.getTree", root=self._context)
            for child in tree["contexts"][0]["children"]:
                if child["url"] == url:
                    return FirefoxPage(self._browser, child["context"], world="tests")

        return await until(found, f"a frame with {url}")

    async def close(self):
        await self._browser.ask("browsingContext.close", context=self._context)

    async def resize(self, width, height, scale=1):
        await self._browser.ask(
            "browsingContext.setViewport",
            context=self._context,
            viewport={"width": width, "height": height},
            devicePixelRatio=scale,
        )

    async def evaluate(self, expression):
        target = {"context": self._context, **({"sandbox": self._world} if self._world else {})}
        answer = await self._browser.ask(
            "script.evaluate",
            target=target,
            awaitPromise=True,
            userActivation=True,
            expression=f"(async () => JSON.stringify((await ({expression})) ?? null))()",
        )
        if answer["type"] == "exception":
            raise RuntimeError(answer["exceptionDetails"]["text"])
        return json.loads(answer["result"]["value"])

    async def _act(self, *sources):
        await self._browser.ask("input.performActions", context=self._context, actions=list(sources))

    async def mouse(self, steps, x, y, alt=False):
        kinds = {
            "move": {"type": "pointerMove", "x": round(x), "y": round(y)},
            "down": {"type": "pointerDown", "button": 0},
            "up": {"type": "pointerUp", "button": 0},
        }
        keys = [{"type": kind, "value": KEYS["Alt"]} for kind in ("keyDown", "keyUp")]
        pointer = {"pointerType": "mouse"}
        if alt:
            await self._act({"type": "key", "id": "keys", "actions": keys[:1]})
        await self._act(
            {
                "type": "pointer",
                "id": "mouse",
                "parameters": pointer,
                "actions": [kinds[step] for step in steps],
            }
        )
        if alt:
            await self._act({"type": "key", "id": "keys", "actions": keys[1:]})

    async def touch_together(self, places):
        """Fingers that come down one after the other, and leave at once."""

        def finger(number, x, y):
            wait = {"type": "pause"}
            return {
                "type": "pointer",
                "id": f"finger{number}",
                "parameters": {"pointerType": "touch"},
                "actions": [
                    {"type": "pointerMove", "x": round(x), "y": round(y)},
                    *[wait] * number,
                    {"type": "pointerDown", "button": 0},
                    *[wait] * (len(places) - number),
                    {"type": "pointerUp", "button": 0},
                ],
            }

        await self._act(*(finger(number, x, y) for number, (x, y) in enumerate(places)))

    async def key(self, key):
        value = KEYS.get(key, key)
        await self._act(
            {
                "type": "key",
                "id": "keys",
                "actions": [{"type": "keyDown", "value": value}, {"type": "keyUp", "value": value}],
            }
        )

    async def insert(self, text):
        actions = [{"type": kind, "value": letter} for letter in text for kind in ("keyDown", "keyUp")]
        await self._act({"type": "key", "id": "keys", "actions": actions})

    async def screenshot(self, file):
        picture = await self._browser.ask("browsingContext.captureScreenshot", context=self._context)
        pathlib.Path(file).write_bytes(base64.b64decode(picture["data"]))
