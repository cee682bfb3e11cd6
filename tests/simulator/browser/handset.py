"""The page of a simulated phone in a browser, as a person would use it."""
import asyncio
import contextlib
import json
import os
import re

from chromium import Chromium
from page import until

# What the tests want to know of the pictures; kept by the page for them from its first moment.
WATCH = """addEventListener('painted', ({detail}) => {
  window.pictures = {count: (window.pictures?.count ?? 0) + 1, exact: detail.exact, touch: detail.touch};
}, true);"""


def make_browser():
    if os.environ.get("BROWSER") != "firefox":
        return Chromium()
    from firefox import Firefox

    return Firefox()


# What the page mirrors of the phone's screen, as an array.
MIRROR = "[...document.querySelectorAll('.mirror > *')]"


class Handset:
    """The page of a phone in the hands of a person: points are the phone's, texts what its screen says."""

    def __init__(self, page):
        self.page = page

    @classmethod
    async def open(cls, browser, phone, preload="", **options):
        handset = cls(await browser.open(phone.url, preload=WATCH + preload, **options))
        await handset.ready()
        return handset

    async def ready(self):
        await self.page.wait("window.pictures?.count > 0", "the first picture")

    async def at(self, x, y):
        """The place in the window of a point of the phone, each coordinate a share of its screen."""
        box = await self.page.evaluate(
            "(box => [box.x, box.y, box.width, box.height])"
            "(document.querySelector('canvas').getBoundingClientRect())"
        )
        return box[0] + x * box[2], box[1] + y * box[3]

    async def sees(self, text):
        try:
            await self.page.wait(f"{MIRROR}.some(each => each.textContent === {json.dumps(text)})")
        except AssertionError:
            raise AssertionError(f"waited for “{text}” on the phone; there: {await self.texts()}") from None

    async def sees_no_more(self, text):
        gone = f"{MIRROR}.every(each => each.textContent !== {json.dumps(text)})"
        await self.page.wait(gone, f"“{text}” to leave the phone")

    async def texts(self):
        return await self.page.evaluate(f"{MIRROR}.map(each => each.textContent)")

    async def rests(self):
        """Until the picture stands: then it has come once more, exactly."""
        await self.page.wait("window.pictures.exact", "the picture to rest")

    async def place_of(self, text):
        """The middle of what bears a text, in the window, once it has come to rest there."""
        await self.sees(text)
        found = f"{MIRROR}.findLast(each => each.textContent === {json.dumps(text)})?.getBoundingClientRect()"
        places = [None]

        async def stays():
            await self.rests()
            places.append(
                await self.page.evaluate(
                    f"(box => box && [box.x + box.width / 2, box.y + box.height / 2])({found})"
                )
            )
            await asyncio.sleep(0.1)
            return places[-1] and places[-1] == places[-2]

        await until(stays, f"“{text}” to come to rest")
        return places[-1]

    async def tap(self, text):
        await self.page.click_at(*await self.place_of(text))

    async def tap_at(self, x, y, count=1, alt=False):
        async with self.stopped():
            await self.page.click_at(*await self.at(x, y), count=count, alt=alt)

    @contextlib.asynccontextmanager
    async def stopped(self):
        """Holds the phone's time, so that what is done meanwhile is quick, however slow the machine is."""
        await self.page.click(".tool[aria-label='Pause']")
        await self.page.wait("document.querySelector('.tool[aria-label=\"Go on\"]')", "the phone to pause")
        yield
        await self.page.click(".tool[aria-label='Go on']")
        await self.page.wait("document.querySelector('.tool[aria-label=Pause]')", "the phone to go on")

    async def focus(self, text):
        """Tab by Tab, from the screen on, to what bears a text."""
        await self.sees(text)
        await self.page.evaluate("document.querySelector('.upright').focus()")
        for _ in range(60):
            await self.page.key("Tab")
            if (
                await self.page.evaluate(
                    "document.activeElement.matches('.mirror > *') && document.activeElement.textContent"
                )
                == text
            ):
                return
        raise AssertionError(f"“{text}” cannot be reached by Tab")

    async def panel(self, name):
        tab = f"#tab-{name}"
        if not await self.page.evaluate(
            f"document.querySelector('{tab}').getAttribute('aria-selected') === 'true'"
        ):
            await self.page.click(tab)
        await self.page.wait(f"document.querySelector('.panel.{name}')")

    async def seconds(self):
        """The phone's time, as the page shows it."""
        minutes, seconds = re.match(r"(\d+):([\d.]+)", await self.page.text(".header .time")).groups()
        return int(minutes) * 60 + float(seconds)

    async def passes(self, seconds):
        """Until so much of the phone's time has gone by."""
        end = await self.seconds() + seconds

        async def has():
            return await self.seconds() >= end

        await until(has, f"{seconds} s of the phone's time")

    async def launch_notes(self):
        """From its icon; then the library's recognisers are there."""
        await self.tap("Notes")
        await self.sees("Groceries")
        await self.passes(2.2)
