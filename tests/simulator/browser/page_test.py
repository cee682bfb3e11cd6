"""The phone's page in a browser, from the finger to the file: `page_test.py PageTest.test_name`."""
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest
import urllib.request

from handset import Handset, make_browser

sys.path.insert(0, str(pathlib.Path(__file__).parents[1]))
from phone_process import PhoneProcess

TITLE = (0.5, 0.06)  # Notes' title: nothing there takes a tap for itself


class PageTest(unittest.IsolatedAsyncioTestCase):
    async def asyncSetUp(self):
        self.phone = PhoneProcess(os.environ["SIMULATOR"])
        self.addCleanup(self.phone.end)
        self.browser = await self.enterAsyncContext(make_browser())
        self.pages = []

    async def open(self, **options):
        handset = await Handset.open(self.browser, self.phone, **options)
        self.pages.append(handset.page)
        return handset

    def assertNoComplaints(self):
        for page in self.pages:
            self.assertEqual(page.complaints, [])

    def fetch(self, url):
        with urllib.request.urlopen(urllib.request.Request(self.phone.url.split("/?")[0] + url)) as answer:
            return answer.read()

    async def test_three_clicks_bring_a_report(self):
        hand = await self.open()
        page = hand.page
        await hand.launch_notes()
        await hand.tap_at(*TITLE, count=3)
        await hand.tap("Capture Screen")
        await hand.panel("console")
        await page.see("<TLV Log> : Capture Screenshot selected", ".lines")
        # While the countdown runs the record can be read; when it is over it still can, marked as gone.
        await hand.panel("handoff")
        await page.see("ListViewController", ".panel.handoff .facts")
        await page.wait(
            "document.querySelector('.panel.handoff .shot').naturalWidth === 750", "the picture handed over"
        )
        await page.see("The pasteboard is empty again")
        await page.see("ListViewController", ".panel.handoff .facts")
        await hand.panel("inbox")
        await page.click(".report")
        report = await page.wait("document.querySelector('.inbox iframe')?.src", "the report to open")
        self.assertEqual(await page.evaluate("document.querySelector('.inbox iframe').sandbox.length"), 0)
        self.assertIn("ListViewController", self.fetch("/" + report.split("/", 3)[3]).decode())
        frame = await page.frame(report)
        await frame.see("ListViewController")
        await frame.wait("document.querySelector('img').naturalWidth === 750", "the report's picture")
        loaded = await page.evaluate("performance.getEntriesByType('resource').map(each => each.name)")
        origin = self.phone.url.split("/?")[0] + "/"
        self.assertEqual([name for name in loaded if not name.startswith((origin, "blob:" + origin))], [])
        self.assertNoComplaints()

    async def test_a_recording_plays_in_the_page(self):
        hand = await self.open()
        page = hand.page
        await hand.panel("phone")
        await page.fill("[data-key='com.example.notes arguments']", "debug=true microphone=true")
        await page.click("[data-key='com.example.notes launch']")
        await hand.sees("Groceries")
        await hand.passes(2.2)
        # The question for the microphone is answered on the phone, and the answer is to be seen in the panel.
        await page.click(".tool[aria-label='Shake']")
        await hand.tap("Capture Screen Recording")
        await hand.sees('"Notes" Would Like to Access the Microphone')
        await hand.tap("Don't Allow")
        refused = "document.querySelector('[data-key=\"com.example.notes microphone refused\"]').ariaChecked === 'true'"
        await page.wait(refused, "the refusal to show in the panel")
        await hand.tap("Trip to the coast")
        await hand.passes(1)
        await page.click(".tool[aria-label='Shake']")
        await hand.tap("OK")
        await hand.tap("Save")
        await hand.panel("photos")
        movie = await page.wait("document.querySelector('.movie video')?.src", "the movie")
        await page.wait(
            "document.querySelector('.movie video').videoWidth === 750", "the movie's first picture"
        )
        await page.evaluate("document.querySelector('.movie video').play()")
        await page.wait("document.querySelector('.movie video').ended", "the movie to play to its end")
        await page.evaluate("document.querySelector('.movie video').currentTime = 0.5")
        await page.wait(
            "!document.querySelector('.movie video').seeking && document.querySelector('.movie video').currentTime === 0.5",
            "a seek",
        )
        with tempfile.NamedTemporaryFile(suffix=".mov") as file:
            file.write(self.fetch("/" + movie.split("/", 3)[3]))
            file.flush()
            probe = json.loads(
                subprocess.run(
                    ["ffprobe", "-v", "error", "-of", "json", "-show_streams", file.name],
                    check=True,
                    capture_output=True,
                ).stdout
            )
        self.assertEqual([stream["codec_name"] for stream in probe["streams"]], ["h264"])  # refused: no sound
        self.assertNoComplaints()

    async def test_three_real_fingers_open_the_sheet(self):
        hand = await self.open()
        await hand.launch_notes()
        async with hand.stopped():
            await hand.page.touch_together([await hand.at(x, 0.06) for x in (0.3, 0.5, 0.7)])
        await hand.sees("Options")
        self.assertNoComplaints()

    async def test_keys_and_the_shake(self):
        """Without any pointer: an icon, a shake, the sheet's buttons, three fingers by the modifier key."""
        hand = await self.open()
        page = hand.page
        await hand.focus("Notes")
        await page.key("Enter")
        await hand.sees("Groceries")
        await hand.passes(2.2)
        await page.key("s")
        await hand.sees("Options")
        await hand.rests()
        await hand.focus("Cancel")
        await page.key("Enter")
        await hand.sees_no_more("Options")
        await hand.rests()
        await hand.tap_at(*TITLE, alt=True)
        await hand.sees("Options")
        self.assertNoComplaints()

    async def test_a_refusal_is_taken_back_by_hand(self):
        """In Settings on the phone: by the keyboard, as a screen reader has it, and by a finger."""
        hand = await self.open()
        page = hand.page
        await hand.panel("phone")
        answer = "document.querySelector('[data-key=\"com.example.notes photos {}\"]').ariaChecked === 'true'"
        await page.click("[data-key='com.example.notes photos refused']")
        await page.wait(answer.format("refused"), "the refusal to show in the panel")
        await hand.tap("Settings")
        switch = "[...document.querySelectorAll('.mirror [role=switch]')].find(each => /^Photos.*Notes/.test(each.textContent))"
        label = await page.wait(f"{switch}?.textContent", "the switch for photos")
        self.assertEqual(await page.evaluate(f"{switch}.ariaChecked"), "false")
        await hand.focus(label)
        await page.key("Enter")
        await page.wait(f"{switch}?.ariaChecked === 'true'", "the switch to be on")
        await page.wait(answer.format("granted"), "the permission to show in the panel")
        await hand.tap(label)
        await page.wait(f"{switch}?.ariaChecked === 'false'", "the switch to be off")
        await page.wait(answer.format("refused"), "the refusal to show again")
        self.assertNoComplaints()

    async def test_pause_and_step(self):
        hand = await self.open()
        page = hand.page
        await hand.launch_notes()
        await hand.rests()
        await hand.panel("time")
        await page.click(".panel.time .primary")
        await page.wait("document.querySelector('.panel.time .primary').textContent === 'Go on'", "the pause")
        before = await page.text(".bigtime")
        await hand.tap("Trip to the coast")
        self.assertEqual(await page.text(".bigtime"), before)
        await page.click(".panel.time button", "One frame")
        await page.wait(
            f"document.querySelector('.bigtime').textContent !== '{before}'", "a frame's time to pass"
        )
        stepped = await page.text(".bigtime")
        self.assertEqual(round(1000 * (seconds(stepped) - seconds(before))), 17)
        await page.click(".panel.time button", "1 s")
        await page.wait(f"document.querySelector('.bigtime').textContent !== '{stepped}'", "a second to pass")
        await hand.sees_no_more("Groceries")
        self.assertEqual(round(1000 * (seconds(await page.text(".bigtime")) - seconds(stepped))), 1000)
        self.assertNoComplaints()

    async def test_an_application_that_crashes_and_one_that_hangs(self):
        hand = await self.open()
        page = hand.page
        await hand.panel("phone")
        await page.fill(".panel.phone .bundle input", os.environ["TROUBLE"])
        await page.key("Enter")
        await hand.tap("Trouble")
        await hand.tap("Crash")
        await page.see("ended by signal 11", ".banners")
        await hand.sees("Settings")
        await hand.panel("console")
        await page.see("about to crash", ".lines .err")
        await hand.tap("Trouble")
        await hand.tap("Hang")
        await page.see("Trouble is not responding", ".cover")
        await page.click(".cover button")
        await page.wait("!document.querySelector('.cover')", "the phone to go on")
        await hand.tap("Notes")
        await hand.sees("Groceries")
        self.assertNoComplaints()

    async def test_a_reload_finds_everything_again(self):
        hand = await self.open()
        page = hand.page
        await hand.launch_notes()
        await hand.tap_at(*TITLE, count=3)
        await hand.sees("Options")
        await hand.panel("console")
        self.assertEqual(await page.evaluate("location.href.split('//')[1].replace(/^[^/]*/, '')"), "/")
        await page.reload()
        await hand.ready()
        await page.see("<TLV Log> : SDK Instantiated in debug mode", ".lines")
        await hand.tap("Cancel")
        await hand.sees_no_more("Options")
        self.assertNoComplaints()

    async def test_two_viewers_of_one_phone(self):
        hand = await self.open()
        other = await self.open(width=390, height=844, scale=2)
        await hand.tap("Notes")
        await other.sees("Groceries")
        # A finger of a viewer that leaves does not stay on the glass.
        x, y = await other.place_of("Trip to the coast")
        await other.page.mouse(["move", "down"], x, y)
        await other.page.close()
        await hand.tap("Groceries")
        await hand.sees_no_more("Trip to the coast")
        self.assertEqual(hand.page.complaints, [])


def seconds(text):
    minutes, rest = text.split(":")
    return int(minutes) * 60 + float(rest)


if __name__ == "__main__":
    unittest.main(verbosity=2)
