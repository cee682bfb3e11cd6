"""A page in a browser, whichever it is. Everything waits for conditions, never for time."""
import asyncio
import json

PATIENCE = 60  # seconds until a condition that does not come true is a failure


class Page:
    """What can be done to a page, on top of what each browser's own kind does by itself: `go`, `load_again`,
    `frame`, `evaluate`, `mouse`, `touch_together`, `key`, `insert`, `screenshot`, `resize`, `close`."""

    def __init__(self):
        self.complaints = []  # exceptions, errors on the console, what the policy refused

    async def reload(self):
        await self.evaluate("void (window.leaving = true)")
        await self.load_again()
        await self.wait("!window.leaving && document.readyState === 'complete'", "the page to load again")

    async def wait(self, condition, what=None, patience=PATIENCE):
        """Until a JavaScript expression is true; its value. Looked at fifty times a second, from outside."""
        value = None

        async def holds():
            nonlocal value
            try:
                value = await self.evaluate(condition)
            except RuntimeError:  # between two documents
                value = None
            return value or value == {}  # an element is true, though there is nothing to tell of it

        await until(holds, what or condition, patience=patience)
        return value

    async def text(self, selector):
        return await self.evaluate(f"document.querySelector({json.dumps(selector)})?.innerText ?? ''")

    async def see(self, text, selector="body", patience=PATIENCE):
        await self.wait(
            f"document.querySelector({json.dumps(selector)})?.innerText.includes({json.dumps(text)})",
            f"“{text}” in {selector}",
            patience,
        )

    async def middle(self, selector, text=None):
        """The middle, in the window, of what a selector (and text, if given) finds, once it can be used."""
        found = (
            f"[...document.querySelectorAll({json.dumps(selector)})].find(each => {json.dumps(text)} === null || "
            f"each.textContent.trim() === {json.dumps(text)})"
        )
        return await self.wait(
            f"(each => each && (each.scrollIntoView({{block: 'nearest', inline: 'nearest'}}), "
            f"each.getClientRects().length > 0) && !each.disabled && "
            f"(box => [box.x + box.width / 2, box.y + box.height / 2])(each.getBoundingClientRect()))({found})",
            f"{selector} {text or ''} to be there",
        )

    async def click(self, selector, text=None):
        await self.click_at(*await self.middle(selector, text))

    async def click_at(self, x, y, count=1, alt=False):
        # All at once, so that a slow machine does not make three quick clicks slow ones.
        await self.mouse(["move"] + ["down", "up"] * count, x, y, alt)

    async def fill(self, selector, text):
        await self.click(selector)
        await self.evaluate(f"document.querySelector({json.dumps(selector)}).select()")
        await self.insert(text)


async def until(condition, what, possible=lambda: True, patience=PATIENCE):
    """Waits for a condition, which may be a coroutine's; fails when it is late or impossible."""
    deadline = asyncio.get_running_loop().time() + patience
    while True:
        value = condition()
        if asyncio.iscoroutine(value):
            value = await value
        if value:
            return value
        if asyncio.get_running_loop().time() > deadline or not possible():
            raise AssertionError(f"waited for {what}")
        await asyncio.sleep(0.02)
