"""What the phone's page costs, in headless Chromium: `measure_page.py SIMULATOR` prints a line for each figure."""
import asyncio
import contextlib
import os
import pathlib
import socket
import statistics
import sys
import time

sys.path[:0] = [str(pathlib.Path(__file__).parents[1]), str(pathlib.Path(__file__).parents[1] / "live")]
from chromium import Chromium
from handset import Handset
from page import until
from viewer import Phone

TAPS, DRAGS = 40, 3
REST, HOLD = 10, 0.06  # seconds of rest, and for which a finger that taps stays
REFRESH = 1 / 60

# From the browser's time of an event to the picture that shows what came of it, for each message of fingers.
LATENCIES = """(() => {
  const sent = new Map(), measured = window.measured = {tap: [], drag: [], painted: 0, bytes: 0};
  let at = 0;
  for (const type of ['pointerdown', 'pointermove', 'pointerrawupdate', 'pointerup'])
    addEventListener(type, event => { at = event.timeStamp; }, true);
  const settle = (touch, shown) => {
    for (const [number, {time, kind}] of sent) {
      if (number > touch) continue;
      sent.delete(number);
      if (shown && kind) measured[kind].push(performance.now() - time);
    }
  };
  addEventListener('painted', ({detail}) => {
    ++measured.painted;
    settle(detail.touch, true);
  }, true);
  const send = WebSocket.prototype.send;
  WebSocket.prototype.send = function(text) {
    if (!this.heard) {
      this.heard = true;
      this.addEventListener('message', ({data}) => {
        if (typeof data !== 'string') measured.bytes += data.byteLength;
        else if (data.includes('"touched"')) settle(JSON.parse(data).touch, false);
      });
    }
    const message = JSON.parse(text);
    const phase = message.fingers?.[0]?.[1];
    if (phase) sent.set(message.touch, {time: at, kind: {ended: 'tap', moved: 'drag'}[phase]});
    return send.call(this, text);
  };
})();"""


def processor_seconds(process):
    """Of a process and its children."""
    total, ticks = 0, os.sysconf("SC_CLK_TCK")
    for each in [process, *children(process)]:
        fields = pathlib.Path(f"/proc/{each}/stat").read_text().rpartition(")")[2].split()
        total += (int(fields[11]) + int(fields[12])) / ticks
    return total


def children(process):
    return [int(each) for thread in pathlib.Path(f"/proc/{process}/task").iterdir()
            for each in (thread / "children").read_text().split()]


class Measure:
    def __init__(self, hand, phone):
        self.hand, self.page, self.phone = hand, hand.page, phone

    async def take(self, kind):
        values = await self.page.evaluate(f"measured.{kind}.splice(0)")
        return statistics.median(values), len(values)

    async def taps(self):
        """Between two tabs of Notes, from the finger's leaving to the other tab's picture."""
        places = [await self.hand.place_of(text) for text in ("About", "Notes")]
        await self.page.evaluate("measured.tap.length = 0")
        for number in range(TAPS):
            await self.page.mouse(["move", "down"], *places[number % 2])
            await asyncio.sleep(HOLD)
            await self.page.mouse(["up"], *places[number % 2])
            await asyncio.sleep(0.25)
        return await self.take("tap")

    async def drags(self):
        """A finger that moves with every refresh; the list follows."""
        await self.page.evaluate("measured.drag.length = 0")
        painted = elapsed = 0
        for number in range(DRAGS):
            (x, low), (_, high) = await self.hand.at(0.5, 0.8), await self.hand.at(0.5, 0.25)
            if number % 2:
                low, high = high, low
            await self.page.mouse(["move", "down"], x, low)
            await asyncio.sleep(0.1)
            before, start = await self.page.evaluate("measured.painted"), time.monotonic()
            steps = 120
            for step in range(1, steps + 1):
                asyncio.ensure_future(self.page.mouse(["move"], x, low + (high - low) * step / steps))
                await asyncio.sleep(max(0, start + step * REFRESH - time.monotonic()))
            painted += await self.page.evaluate("measured.painted") - before
            elapsed += time.monotonic() - start
            await self.page.mouse(["up"], x, high)
            await asyncio.sleep(0.4)
        return *await self.take("drag"), painted / elapsed

    async def rest(self):
        """Share of a processor that the phone and its application take, and the pictures that come."""
        await self.hand.rests()
        await asyncio.sleep(1)
        pictures, used = await self.page.evaluate("measured.painted"), processor_seconds(self.phone.process.pid)
        await asyncio.sleep(REST)
        return ((processor_seconds(self.phone.process.pid) - used) / REST,
                await self.page.evaluate("measured.painted") - pictures)


@contextlib.asynccontextmanager
async def handset(browser, simulator, profile, **options):
    phone = Phone(simulator, "--profile", profile)
    try:
        # The address takes its token once and for all; a viewer has its cookie and its secret from it, too.
        hand = await Handset.open(browser, phone, preload=LATENCIES, **options)
        await hand.tap("Notes")
        await hand.sees("Groceries")
        await hand.rests()
        yield Measure(hand, phone)
        await hand.page.close()
    finally:
        phone.end()


async def crowd(measure):
    """A hundred viewers whose pages are hidden, ten that never say they have shown a picture, a hundred connections
    that send half a request."""
    phone = measure.phone
    hidden = [phone.watch() for _ in range(100)]
    for viewer in hidden:
        viewer.begin("view", hidden=True)
    slow = [phone.watch(slow=True) for _ in range(10)]
    half = [socket.create_connection((phone.host, phone.port)) for _ in range(100)]
    for connection in half:
        connection.sendall(b"GET / HTTP/1.1\r\nHost:")

    def read(viewers):
        for viewer in viewers:
            while viewer.receive(timeout=0.002):
                pass

    assert all(viewer.status == 101 for viewer in hidden + slow), "a viewer was refused"
    await asyncio.to_thread(read, hidden + slow)
    tap, _ = await measure.taps()
    drag, _, rate = await measure.drags()
    for connection in half:
        connection.close()
    for viewer in hidden + slow:
        viewer.leave()
    return tap, drag, rate


def first_picture(simulator):
    """Seconds from the start of the program to a viewer's first picture."""
    start = time.monotonic()
    phone = Phone(simulator)
    viewer = phone.watch()
    viewer.until(lambda: viewer.pictures, "a picture")
    seconds = time.monotonic() - start
    phone.end()
    return seconds


def page_size(simulator):
    """Bytes of everything that the page loads, without compression."""
    folder = pathlib.Path(__file__).parents[3] / "simulator/page"
    return sum(file.stat().st_size for file in folder.rglob("*") if file.is_file())


async def main(simulator):
    def tell(name, value):
        print(f"{name.replace(' ', '_')} {value:.6g}", flush=True)

    tell("page bytes", page_size(simulator))
    tell("first picture", statistics.median(first_picture(simulator) for _ in range(5)))
    async with Chromium() as browser:
        for profile in sys.argv[2:] or ["iPhone 6", "iPhone 6 Plus", "iPad Air 2"]:
            # Every pixel of an iPhone 6 has room, on a display of high density.
            async with handset(browser, simulator, profile, width=1440, height=1000, scale=2) as measure:
                (tap, taps), (drag, drags, rate) = await measure.taps(), await measure.drags()
                for name, value in {"tap": tap, "taps": taps, "drag": drag, "drags": drags, "rate": rate}.items():
                    tell(f"{profile} {name}", value)
                if profile != "iPhone 6":
                    continue
                share, pictures = await measure.rest()
                tell("rest share", share)
                tell("rest pictures", pictures)
                tap, drag, rate = await crowd(measure)
                for name, value in {"tap": tap, "drag": drag, "rate": rate}.items():
                    tell(f"crowd {name}", value)


if __name__ == "__main__":
    asyncio.run(main(sys.argv[1]))
