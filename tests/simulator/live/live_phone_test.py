"""Switches the phone on, and uses it as people and browsers do."""

import os
import pathlib
import plistlib
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent))
from viewer import PATIENCE, Phone

PROGRAM = sys.argv.pop(1)
SCRATCH = sys.argv.pop(1)
NOTES, COMPANION = "com.example.notes", "com.tellvane.companion"


def png_size(data):
    assert data[:8] == b"\x89PNG\r\n\x1a\n", data[:8]
    return struct.unpack(">II", data[16:24])


def jpeg_size(data):
    """From the frame header, wherever it is."""
    at = 2
    while data[at] == 0xff:
        marker, length = data[at + 1], struct.unpack(">H", data[at + 2:at + 4])[0]
        if 0xc0 <= marker <= 0xc3:
            height, width = struct.unpack(">HH", data[at + 5:at + 9])
            return width, height
        at += 2 + length
    raise AssertionError("no frame in the JPEG image")


def contents(device):
    """What the companion and the photo library have: bytes by name."""
    folders = [device / "Containers" / COMPANION / "Documents" / "inbox", device / "Media" / "DCIM"]
    files = [file for folder in folders for file in folder.rglob("*") if file.is_file()]
    return {str(file.relative_to(device)): file.read_bytes() for file in files}


class LivePhone(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(dir=SCRATCH))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def switch_on(self, *options, out=None):
        phone = Phone(PROGRAM, *options, out=out)
        self.addCleanup(phone.end)
        return phone

    def script(self, identifier, text):
        """A bundle whose executable is a shell script, in a folder of bundles."""
        bundle = self.folder / "bundles" / identifier
        bundle.mkdir(parents=True)
        (bundle / "Info.plist").write_bytes(plistlib.dumps(
            {"CFBundleIdentifier": identifier, "CFBundleExecutable": "run", "CFBundleName": identifier.split(".")[-1]}))
        (bundle / "run").write_text("#!/bin/bash\n" + text)
        (bundle / "run").chmod(0o755)
        return str(bundle)

    def element(self, viewer, text):
        found = [each for each in viewer.topics.get("elements", {}).get("elements", []) if each["text"] == text]
        return found[-1] if found else None

    def tap_on(self, viewer, text):
        viewer.until(lambda: (self.element(viewer, text) or {}).get("focusable") and viewer.topics["time"]["resting"],
                     "%s, to be tapped" % text)
        x, y, width, height = self.element(viewer, text)["frame"]
        return viewer.tap(x + width / 2, y + height / 2)

    def test_shows_what_a_finger_does_and_rests(self):
        phone = self.switch_on()
        viewer = phone.watch()
        viewer.do("watch", topics=["elements", "tree"])
        viewer.until(lambda: viewer.pictures and viewer.pictures[-1]["codec"] == 2, "an exact picture at rest")
        first = viewer.pictures[0]
        self.assertEqual((first["flags"] & 1, first["size"], first["rect"]), (1, (750, 1334), (0, 0, 750, 1334)))
        self.assertEqual(jpeg_size(first["image"]), (750, 1334))
        # Down and up in one message, and so in one step: the icon is tapped.
        touch = self.tap_on(viewer, "Notes")
        viewer.until(lambda: viewer.topics["phone"]["front"] == NOTES, "Notes in front")
        self.assertEqual(viewer.topics["phone"]["running"]["arguments"], {"debug": "true"})
        viewer.until(lambda: any(p["touch"] >= touch for p in viewer.pictures), "a picture that has the touch")
        for picture in viewer.pictures:
            size = (jpeg_size if picture["codec"] == 1 else png_size)(picture["image"])
            self.assertEqual(size, picture["rect"][2:])
        # Three taps, each down and up in one message; the library's sheet comes.
        viewer.until(lambda: viewer.topics["time"]["now"] > 4, "the library's recognisers")
        for _ in range(3):
            viewer.tap(187, 400)
        viewer.until(lambda: (self.element(viewer, "Capture Screen") or {}).get("focusable"), "the sheet")
        self.assertTrue(viewer.topics["tree"]["top"])
        self.assertEqual(viewer.topics["tree"]["tree"][0]["class"], "UIWindow")
        # At rest no picture comes.
        viewer.until(lambda: viewer.topics["time"]["resting"] and viewer.pictures[-1]["codec"] == 2, "rest")
        while viewer.receive(timeout=0.5):
            pass
        count = len(viewer.pictures)
        while viewer.receive(timeout=1):
            pass
        self.assertEqual(len(viewer.pictures), count)

    def test_hands_a_capture_over_where_everybody_sees_it(self):
        phone = self.switch_on()
        viewer = phone.watch()
        viewer.do("watch", topics=["elements"])
        viewer.do("launch", identifier=NOTES, arguments={"debug": True})
        viewer.until(lambda: viewer.topics["time"]["now"] > 3, "the library's recognisers")
        for _ in range(3):
            viewer.tap(187, 400)
        self.tap_on(viewer, "Capture Screen")
        viewer.until(lambda: viewer.topics["pasteboard"]["items"], "an item on the pasteboard")
        board = viewer.topics["pasteboard"]
        kinds = {each["type"]: each for each in board["items"][0]["types"]}
        self.assertEqual(kinds["imageData"]["kind"], "image")
        self.assertIn(["appName", "Notes"], kinds["dictionaryInApp"]["rows"])
        self.assertAlmostEqual(board["emptiesAt"] - board["since"], 3.0)
        image = phone.get(kinds["imageData"]["url"])
        self.assertEqual(jpeg_size(image.body), (750, 1334))
        viewer.until(lambda: viewer.topics["inbox"]["reports"], "a report")
        report = viewer.topics["inbox"]["reports"][0]
        page = phone.get(report["url"])
        self.assertEqual(page.status, 200)
        self.assertIn("sandbox;", page.headers["Content-Security-Policy"])
        self.assertEqual(phone.get(report["image"]).body, image.body)
        viewer.until(lambda: not viewer.topics["pasteboard"]["items"], "an empty pasteboard")
        self.assertEqual(viewer.topics["pasteboard"]["log"][-1]["what"], "emptied")
        self.assertTrue(viewer.said("Tellvane") or viewer.lines)

    def test_a_full_disk_is_felt_while_it_is_full(self):
        phone = self.switch_on()
        viewer = phone.watch()
        viewer.do("watch", topics=["elements"])
        viewer.do("launch", identifier=NOTES, arguments={"debug": True})
        for state in ["full", "normal"]:
            viewer.do("disk", state=state)
            viewer.until(lambda: viewer.topics["phone"]["disk"]["state"] == state, "the disk " + state)
            viewer.do("back")
            viewer.until(lambda: viewer.topics["time"]["now"] > 3 and viewer.topics["time"]["resting"], "rest")
            for _ in range(3):
                viewer.tap(187, 400)
            self.tap_on(viewer, "Capture Screen")
            if state == "full":
                viewer.until(lambda: viewer.said("No space left on device"), "what the application says of the disk")
                self.assertTrue(all(line["from"] == "err" for line in viewer.lines if "No space" in line["text"]))
                self.assertEqual(viewer.topics["pasteboard"]["items"], [])
            else:
                viewer.until(lambda: viewer.topics["pasteboard"]["items"], "an item on the pasteboard")

    def test_plays_a_movie_in_parts(self):
        phone = self.switch_on()
        viewer = phone.watch()
        viewer.do("watch", topics=["elements"])
        viewer.do("permission", identifier=NOTES, service="photos", value="granted")
        viewer.do("launch", identifier=NOTES, arguments={"debug": True})
        viewer.until(lambda: viewer.topics["time"]["now"] > 3, "the library's recognisers")
        for _ in range(3):
            viewer.tap(187, 400)
        self.tap_on(viewer, "Capture Screen Recording")
        start = viewer.topics["time"]["now"]
        viewer.until(lambda: viewer.topics["time"]["now"] > start + 2, "two seconds of the phone's")
        for _ in range(3):
            viewer.tap(187, 400)
        viewer.until(lambda: viewer.topics["photos"]["movies"], "a movie")
        movie = viewer.topics["photos"]["movies"][0]
        self.assertEqual((movie["width"], movie["height"]), (750, 1334))
        whole = phone.get(movie["url"])
        self.assertEqual((whole.status, len(whole.body), whole.headers["Accept-Ranges"]), (200, movie["size"], "bytes"))
        part = phone.get(movie["url"], Range="bytes=100-199")
        self.assertEqual((part.status, part.body), (206, whole.body[100:200]))
        self.assertEqual(part.headers["Content-Range"], "bytes 100-199/%d" % movie["size"])
        self.assertEqual(phone.get(movie["url"], Range="bytes=%d-" % movie["size"]).status, 416)
        head = phone.get(movie["url"], method="HEAD")
        self.assertEqual((head.status, head.headers["Content-Length"], head.body), (200, str(movie["size"]), b""))

    def test_time_stops_and_goes_on_by_steps(self):
        phone = self.switch_on()
        viewer = phone.watch()
        viewer.do("pause")
        viewer.until(lambda: viewer.topics["time"]["paused"], "the pause")
        before = viewer.topics["time"]["now"]
        viewer.do("advance", milliseconds=1000)
        viewer.until(lambda: viewer.topics["time"]["now"] > before, "a step")
        self.assertAlmostEqual(viewer.topics["time"]["now"] - before, 1.0, places=6)
        self.assertIn("problem", viewer.ask("speed", factor=3))
        viewer.do("speed", factor=0.5)
        viewer.do("resume")
        self.assertIn("problem", viewer.ask("advance", milliseconds=100))
        viewer.until(lambda: not viewer.topics["time"]["paused"], "the end of the pause")

    def test_what_is_recorded_plays_again_to_the_same_bytes(self):
        """From the home screen to a report and a movie, with whatever times the wall gave."""
        phone = self.switch_on(out=self.folder / "live")
        viewer = phone.watch()
        viewer.do("watch", topics=["elements"])
        viewer.do("permission", identifier=NOTES, service="photos", value="granted")
        viewer.do("recordFlow", on=True)
        self.tap_on(viewer, "Notes")
        viewer.until(lambda: self.element(viewer, "Groceries"), "Notes")
        viewer.do("pause")
        viewer.do("advance", milliseconds=2500)
        viewer.do("resume")
        viewer.do("shake")
        self.tap_on(viewer, "Cancel")
        viewer.until(lambda: not self.element(viewer, "Cancel") and viewer.topics["time"]["resting"], "the list")
        for y in range(500, 300, -20):
            viewer.touch((0, "began" if y == 500 else "moved", 180.25, y))
            viewer.receive(timeout=0.02)
        viewer.touch((0, "ended", 180.25, 300))
        viewer.until(lambda: viewer.topics["time"]["resting"], "the list at rest")
        for _ in range(3):
            viewer.tap(187, 400)
        self.tap_on(viewer, "Capture Screen")
        viewer.until(lambda: viewer.topics["inbox"]["reports"] and not viewer.topics["pasteboard"]["items"], "a report")
        viewer.do("back")
        viewer.do("shake")
        self.tap_on(viewer, "Capture Screen Recording")
        start = viewer.topics["time"]["now"]
        viewer.until(lambda: viewer.topics["time"]["now"] > start + 1, "a second of the phone's")
        viewer.do("shake")
        viewer.until(lambda: self.element(viewer, "Save"), "the confirmation screen")
        viewer.do("checkpoint", text="Save")
        recorded = viewer.do("recordFlow", on=False)
        for line in ('- tapOn: {text: "Capture Screen"', "- touch:\n", "- shake\n", '"debug": "true"\n'):
            self.assertIn(line, recorded["text"])
        self.assertEqual(phone.get(recorded["url"]).body.decode(), recorded["text"])

        flow = self.folder / "recorded.yaml"
        flow.write_text(recorded["text"])
        played = subprocess.run([PROGRAM, str(flow), "--out", str(self.folder / "again")], capture_output=True,
                                text=True, timeout=PATIENCE)
        self.assertEqual(played.returncode, 0, recorded["text"] + played.stdout + played.stderr)
        left = [contents(self.folder / out / "device") for out in ("live", "again")]
        for end in ("item/imageData", "item/dictionaryInApp", "record.json", ".MOV"):
            self.assertTrue(any(name.endswith(end) for name in left[0]), (end, left[0].keys()))
        self.assertEqual(left[0].keys(), left[1].keys(), recorded["text"])
        self.assertEqual([name for name in left[0] if left[0][name] != left[1][name]], [], recorded["text"])

    def test_a_flow_plays_alone_and_marks_its_line(self):
        phone = self.switch_on()
        viewer = phone.watch()
        steps = ["- launchApp", "- wait: 0.5", "- tapOn: Groceries", "- assertVisible: Note"]
        viewer.do("playFlow", text="\n".join(["appId: " + NOTES, "---", *steps, ""]))
        self.assertEqual(viewer.ask("home").get("problem"), "a flow is playing")
        lines = set()
        def over():
            lines.add(viewer.topics["flow"].get("playing", {}).get("line"))
            return "last" in viewer.topics["flow"]
        viewer.until(over, "the flow's end")
        self.assertEqual(viewer.topics["flow"]["last"]["problem"], "")
        # A mark that is overtaken by the next one is not sent.
        self.assertLessEqual(lines - {None, 0}, {3, 4, 5, 6})
        self.assertGreaterEqual(len(lines & {3, 4, 5, 6}), 2)

    def test_a_slow_viewer_holds_nobody_up(self):
        phone = self.switch_on()
        slow, quick, hidden = phone.watch(slow=True), phone.watch(), phone.watch()
        hidden.do("view", hidden=True)
        while hidden.receive(timeout=0.5):
            pass
        seen = len(hidden.pictures)
        quick.do("watch", topics=["elements"])
        self.tap_on(quick, "Notes")
        quick.until(lambda: self.element(quick, "About"), "Notes")
        for x in range(30):
            quick.touch((0, "began" if x == 0 else "moved", 180, 500 - 10 * x))
        last = quick.touch((0, "ended", 180, 200))
        quick.until(lambda: quick.touched[-1:] == [last] or quick.pictures[-1]["touch"] == last, "the last touch")
        while slow.receive(timeout=0.5):
            pass
        self.assertLessEqual(len(slow.pictures), 2)
        self.assertIsNone(slow.closed)
        # A page that nobody sees gets none, and then the whole.
        while hidden.receive(timeout=0.5):
            pass
        self.assertEqual(len(hidden.pictures), seen)
        hidden.do("view", width=375, height=667)
        hidden.until(lambda: hidden.pictures[-1]["size"] == (375, 667) and hidden.pictures[-1]["codec"] == 2, "the screen")
        self.assertTrue(any(picture["flags"] & 1 for picture in hidden.pictures[seen:]))
        # When it has caught up it sees what everybody sees.
        slow.slow = False
        for picture in slow.pictures:
            slow.send({"shown": picture["sequence"]})
        slow.until(lambda: slow.pictures[-1]["codec"] == 2, "an exact picture")

    def test_a_viewer_that_leaves_lifts_its_fingers(self):
        phone = self.switch_on()
        first, second = phone.watch(), phone.watch()
        second.do("watch", topics=["elements"])
        second.until(lambda: self.element(second, "Notes"), "the icon")
        x, y, width, height = self.element(second, "Notes")["frame"]
        first.touch((0, "began", x + width / 2, y + height / 2))
        first.until(lambda: first.touched or any(p["touch"] for p in first.pictures), "the touch")
        first.send_frame(b"\x03\xe8", opcode=8)
        while first.receive():
            pass
        second.do("home")
        self.tap_on(second, "Notes")
        second.until(lambda: second.topics["phone"]["front"] == NOTES, "Notes in front")

    def test_outlives_applications_that_crash_and_hang(self):
        self.script("com.example.crash", "echo going down >&2\nkill -SEGV $$\n")
        self.script("com.example.hang", "while read -r -t 0.1 x <&3; do :; done\nsleep 1000\n")
        phone = self.switch_on("--applications", str(self.folder / "bundles"))
        viewer, other = phone.watch(), phone.watch()
        answer = viewer.ask("launch", identifier="com.example.crash")
        self.assertIn("signal 11", answer["problem"])
        viewer.until(lambda: viewer.said("going down"), "its last words")
        self.assertEqual([line["from"] for line in viewer.lines if line["text"] == "going down"], ["err"])

        launched = viewer.begin("launch", identifier="com.example.hang")
        viewer.until(lambda: viewer.topics["phone"].get("running", {}).get("responding") is False,
                     "that it does not respond")
        # Whoever comes now sees the phone all the same.
        late = phone.watch()
        late.until(lambda: late.pictures and "phone" in late.topics, "a picture")
        other.do("end", identifier="com.example.hang")
        viewer.until(lambda: launched in viewer.answers, "the answer of the launch")
        viewer.do("launch", identifier=NOTES)
        viewer.until(lambda: viewer.topics["phone"]["front"] == NOTES, "Notes in front")

    def test_ends_and_leaves_nothing(self):
        before = set(pathlib.Path(tempfile.gettempdir()).glob("tellvane-phone-*"))
        phone = self.switch_on()
        viewer = phone.watch()
        viewer.do("launch", identifier=NOTES)
        children = subprocess.run(["pgrep", "-P", str(phone.process.pid)], capture_output=True, text=True).stdout.split()
        self.assertEqual(len(children), 1)
        phone.process.send_signal(2)
        while viewer.receive():
            pass
        self.assertEqual(viewer.closed[0], 1001)
        phone.process.wait(PATIENCE)
        status, _, complaints = phone.end()
        self.assertEqual((status, complaints), (0, ""))
        self.assertFalse(os.path.exists("/proc/" + children[0]))
        self.assertEqual(set(pathlib.Path(tempfile.gettempdir()).glob("tellvane-phone-*")) - before, set())


if __name__ == "__main__":
    unittest.main(verbosity=2)
