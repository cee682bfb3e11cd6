"""Every verb of tellvane-sim against a live phone, as a shell user types it, and what is typed wrongly."""

import contextlib
import json
import os
import pathlib
import plistlib
import re
import signal
import socket
import stat
import struct
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent))
from shell import NOTES, PATIENCE, PROGRAM, Shell

NOBODY = "00000000-0000-4000-8000-000000000000"

# Typed wrongly: words, exit status, what standard error says. Each verb is in one row at least.
WRONG = [
    ("", 64, "Name a verb."), ("bogus", 64, 'no verb "bogus"'), ("boo Work", 64, 'Was "boot" meant?'),
    ("list planets", 64, "list:"), ("list apps Nobody", 68, 'no device "Nobody"'),
    ("create", 64, "NAME is required"), ("create Work Abacus", 64, 'no profile is called "Abacus"'),
    ("create Work --language de_AT", 64, "not a language tag"), ("create booted", 64, "cannot be called"),
    ("rename Work", 64, "NAME is required"), ("rename Nobody X", 68, "Nobody"),
    ("erase", 64, "DEVICE is required"), ("erase Nobody", 68, "list devices"),
    ("delete Nobody", 68, "list devices"), ("boot", 64, "DEVICE is required"), ("boot Nobody", 68, "Nobody"),
    ("boot " + NOBODY, 68, NOBODY), ("boot Work --port many", 64, "--port"), ("shutdown", 64, "DEVICE"),
    ("shutdown booted", 68, "tellvane-sim boot"), ("page booted", 68, "boot"), ("phone --profile X", 64, "profile"),
    ("install booted", 64, "FOLDER is required"), ("install booted /nowhere", 66, "no Info.plist"),
    ("uninstall booted", 64, "BUNDLE is required"), ("uninstall booted a.b", 68, "boot"),
    ("launch booted", 64, "BUNDLE is required"), ("launch booted a.b", 68, "boot"),
    ("launch booted a.b --debug", 68, "boot"), ("terminate booted", 64, "BUNDLE"), ("openurl booted", 64, "URL"),
    ("get_app_container booted a.b paper", 64, "KIND"), ("get_app_container booted ../x", 64, "no bundle identifier"),
    ("pbcopy", 64, "DEVICE"), ("pbpaste booted extra", 64, "pbpaste:"), ("addmedia booted", 64, "FILE is required"),
    ("privacy", 64, "expected a device"), ("privacy booted", 64, "expected one of: grant, revoke, reset"),
    ("privacy booted grant", 64, "SERVICE"), ("privacy booted grant photos", 64, "BUNDLE"),
    ("privacy booted revoke telepathy a.b", 64, 'no service "telepathy"'),
    ("privacy booted reset camera", 69, "no camera"), ("status_bar booted override", 64, "--time is required"),
    ("status_bar booted clear now", 64, "clear"), ("ui booted content_size huge", 64, 'no text size "huge"'),
    ("log booted stream --from nowhere", 64, "--from"), ("log booted", 64, "expected one of: stream"),
    ("io booted screenshot", 64, "FILE"), ("io booted screenshot --type gif x", 64, "--type"),
    ("io booted recordVideo /nowhere/x.mov", 73, "no folder"), ("io booted recordVideo --codec vp9 x.mov", 64, "--codec"),
    ("ui booted tap", 64, "--text TEXT"), ("ui booted tap 1", 64, "X and Y"), ("ui booted tap a b", 64, "X"),
    ("ui booted tap -5 3", 64, "no place"), ("ui booted tap 1 2 --text x", 64, "X and Y"),
    ("ui booted tap 1 2 --fingers 9", 64, "--fingers"), ("ui booted tap 1 2 --duration soon", 64, "no duration"),
    ("ui booted swipe 1 2 3", 64, "Y2"), ("ui booted button VOLUME", 64, "no button"), ("ui booted button LOCK", 69, "LOCK"),
    ("ui booted shake hard", 64, "shake"), ("ui booted rotate sideways", 64, "ORIENTATION"),
    ("ui booted describe-all --xml", 64, "--xml"), ("ui booted describe-point 1", 64, "Y is required"),
    ("ui booted dance", 64, '"dance"'), ("time booted pause 3", 64, "pause"), ("time booted resume", 68, "boot"),
    ("time booted step", 64, "DURATION"), ("time booted step 0", 64, "no duration"), ("time booted step 1h", 64, "1h"),
    ("time booted speed 3", 64, "FACTOR"), ("flow --jobs 0", 64, "--jobs"), ("flow gone.yaml --device booted", 66, "gone"),
    ("flow x.yaml --device booted --virtual", 64, "--virtual"), ("flow gone.yaml", 66, "no such flow"),
    ("flow check", 64, "FILE is required"), ("flow check gone.yaml", 66, "no such flow"), ("flow record", 64, "FILE"),
    ("flow record /nowhere/x.yaml", 73, "no folder"), ("flow record x.yaml", 68, "boot"), ("help bogus", 64, "bogus"),
    ("help --completion tcsh", 64, "--completion"), ("version 2", 64, "version"),
] + [(words, 69, "nothing of the kind") for words in (
    "clone Work Copy", "diagnose", "icloud_sync booted", "keychain booted reset", "location booted set 1,2",
    "pair a b", "push booted a.b x.json", "runtime list", "spawn booted log stream", "upgrade Work x",
    "ui booted appearance dark", "ui booted increase_contrast enabled")]


def verbs(text):
    """Those that the list of all verbs has, without the device between a family and its word."""
    return {line.split("  ")[1].replace(" DEVICE ", " ").strip() for line in text.splitlines() if re.match("  [a-z]", line)}


class VerbsTest(Shell):
    def test_wrong_arguments(self):
        known, seen = verbs(self.sim("help")), set()
        for line, status, says in WRONG:
            words = line.split()
            if not words:
                done = subprocess.run([PROGRAM], env=self.environment, capture_output=True, text=True)
                self.assertEqual((done.returncode, says in done.stderr), (status, True))
                continue
            self.sim(*words, status=status, says=says)
            seen |= {words[0], " ".join(words[:2]), " ".join(words[::2][:2])}
        self.assertEqual(known - seen, set(), "verbs without a row")
        self.assertFalse((self.folder / "devices").exists(), "a mistake made a device")

    def test_devices(self):
        self.assertIn("iPad Air 2\n", self.sim("list", "devicetypes"))
        work = self.sim("create", "Work", "iphone se", "--language", "de-AT", "--text-size", "XL").strip()
        first = self.sim("create", "Same").strip()
        self.sim("create", "Same")
        self.assertEqual(self.devices()["Work"]["deviceType"], "iPhone SE")
        self.assertEqual(self.devices()["Work"]["state"], "Shutdown")
        self.sim("boot", "Same", status=64, says="Several devices")
        self.sim("rename", first, "Other")
        self.sim("rename", "Other", "Third")
        self.sim("boot", work.lower())
        for verb in ("boot", "erase", "delete"):
            self.sim(verb, "Work", status=65, says="tellvane-sim shutdown")
        self.sim("uninstall", "Work", NOTES)
        self.sim("shutdown", "Work")
        self.sim("boot", "Work")
        self.assertNotIn(NOTES, self.sim("list", "apps", "Work"), "booting brought an application back")
        self.assertEqual(self.sim("ui", "Work", "content_size"), "XL\n")
        self.sim("shutdown", "Work")
        self.sim("erase", "Work")
        self.sim("boot", "Work")
        self.assertIn(NOTES, self.sim("list", "apps", "Work"))
        self.sim("shutdown", "Work")
        self.sim("delete", "all")
        self.assertEqual(self.sim("list"), "")
        self.assertEqual(list((self.folder / "devices").iterdir()), [])

    def test_applications(self):
        self.boot()
        self.assertEqual(self.sim("launch", "booted", NOTES, "-debug", "YES", "--microphone=NO"), NOTES + "\n")
        self.assertIn("About", self.texts())
        self.sim("ui", "booted", "button", "home")
        self.assertNotIn("About", self.texts())
        self.sim("launch", "booted", NOTES)
        self.assertIn("About", self.texts())
        self.sim("openurl", "booted", "notes://lock")
        self.assertNotIn("About", self.texts())
        self.sim("openurl", "booted", "gopher://x", status=65, says="gopher")
        self.sim("launch", "--terminate-running-process", "booted", NOTES)
        self.assertIn("About", self.texts())
        self.sim("terminate", "booted", NOTES)
        self.sim("terminate", "booted", NOTES, status=65, says="not running")
        app = pathlib.Path(self.sim("get_app_container", "booted", NOTES).strip())
        data = pathlib.Path(self.sim("get_app_container", "booted", NOTES, "data").strip())
        self.assertTrue((app / "Info.plist").is_file())
        self.assertEqual((data.parent.name, data.name), ("Containers", NOTES))
        self.sim("get_app_container", "booted", "com.example.gone", status=65, says="not installed")

        talker = self.folder / "com.example.talker"
        talker.mkdir()
        (talker / "Info.plist").write_bytes(plistlib.dumps(
            {"CFBundleIdentifier": talker.name, "CFBundleExecutable": "run", "CFBundleName": "Talker"}))
        (talker / "run").write_text("#!/bin/sh\necho said $@\necho wrong >&2\nexit 3\n")
        (talker / "run").chmod(0o755)
        self.sim("install", "booted", talker)
        self.assertIn("com.example.talker (Talker)", self.sim("list", "apps"))
        self.sim("launch", "booted", talker.name, status=65, says="exit status 3")
        self.sim("uninstall", "booted", talker.name)
        self.sim("launch", "booted", talker.name, status=65, says="to be installed")

    def test_console(self):
        self.boot()
        stream = self.start("log", "booted", "stream", "--from", "out")
        console = self.start("launch", "--console", "booted", NOTES, "-debug", "YES")
        self.assertIn("TLV", console.stdout.readline())
        self.assertIn("TLV", stream.stdout.readline())
        self.interrupt(stream)
        self.interrupt(console)
        self.sim("terminate", "booted", NOTES, status=65, says="not running")

        # One that ends by itself, and a reader who has read enough.
        read = self.start("log", "booted", "stream")
        console = self.start("launch", "--console", "booted", NOTES, "-debug", "YES")
        self.assertIn("TLV", console.stdout.readline())
        self.assertIn("TLV", read.stdout.readline())
        read.stdout.close()
        self.sim("ui", "booted", "tap", "--text", "About")
        self.sim("ui", "booted", "tap", "--text", "Crash on Purpose.*")
        self.sim("ui", "booted", "tap", "--text", "Crash")
        self.assertIn("ended by signal", self.ended(console, 1)[1])
        self.assertEqual(read.wait(timeout=PATIENCE), 0)
        self.assertIn("Notes", self.texts())

    def test_contents(self):
        udid = self.boot()
        text = "Grüße\n'and' \"more\"\n"
        self.sim("pbcopy", "booted", given=text)
        self.assertEqual(self.sim("pbpaste", udid), text)
        settings = self.folder / "devices" / udid / "device" / "Settings.plist"

        def permissions():
            return plistlib.loads(settings.read_bytes())["Permissions"].get(NOTES)
        self.sim("privacy", "booted", "grant", "photos", NOTES)
        self.sim("privacy", "booted", "revoke", "microphone", NOTES)
        self.assertEqual(permissions(), {"photos": "authorized", "microphone": "denied"})
        self.sim("privacy", "booted", "reset", "all")
        self.assertEqual(set(permissions().values()), {"notDetermined"})
        self.sim("ui", "booted", "content_size", "AccessibilityM")
        self.assertEqual(self.sim("ui", "booted", "content_size"), "AccessibilityM\n")

        movie = self.folder / "movie.mov"
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc=d=1:s=64x64:r=10", "-c:v", "libx264",
                        "-pix_fmt", "yuv420p", movie], check=True)
        self.sim("addmedia", "booted", movie)
        added = list((settings.parent / "Media" / "DCIM").rglob("*.MOV"))
        self.assertEqual([each.read_bytes() for each in added], [movie.read_bytes()])
        (self.folder / "text.mov").write_text("not a movie")
        self.sim("addmedia", "booted", "text.mov", status=65, says="was not added")

    def test_pictures(self):
        self.boot()
        before = self.picture("before.png")
        self.sim("status_bar", "booted", "override", "--time", "Never")
        self.assertNotEqual(self.picture("during.png"), before)
        self.sim("time", "booted", "pause")
        self.sim("status_bar", "booted", "clear")
        self.assertEqual(self.sim("io", "booted", "screenshot", "x.jpg"), "")
        self.assertEqual((self.folder / "x.jpg").read_bytes()[:3], b"\xff\xd8\xff")
        self.sim("io", "booted", "screenshot", "/nowhere/x.png", status=73, says="/nowhere/x.png")
        out = subprocess.run([PROGRAM, "io", "booted", "screenshot", "--type", "jpeg", "-"], env=self.environment,
                             capture_output=True, timeout=PATIENCE, check=True).stdout
        self.assertEqual(out[:3], b"\xff\xd8\xff")

        recording = self.start("io", "booted", "recordVideo", "demo.mov")
        self.assertIn("Recording", recording.stderr.readline())
        self.sim("io", "booted", "recordVideo", "two.mov", status=65, says="already")
        self.sim("launch", "booted", NOTES)
        self.sim("time", "booted", "step", "2s")
        self.sim("ui", "booted", "tap", "--text", "About")
        self.sim("ui", "booted", "rotate", "landscapeLeft")
        self.sim("time", "booted", "step", "1.5s")
        self.interrupt(recording, 0)
        probed = json.loads(subprocess.run(
            ["ffprobe", "-v", "error", "-of", "json", "-show_streams", "-count_frames", self.folder / "demo.mov"],
            capture_output=True, check=True).stdout)["streams"][0]
        self.assertEqual((probed["codec_name"], probed["width"], probed["height"]), ("h264", 750, 1334))
        self.assertGreaterEqual(float(probed["duration"]), 3.5)
        self.assertGreaterEqual(int(probed["nb_read_frames"]), 4)
        self.sim("io", "booted", "recordVideo", "demo.mov", status=73, says="--force")

    def picture(self, name):
        self.sim("io", "booted", "screenshot", name)
        data = (self.folder / name).read_bytes()
        self.assertEqual(data[:8], b"\x89PNG\r\n\x1a\n")
        self.assertEqual(struct.unpack(">II", data[16:24]), (750, 1334))
        return data

    def test_hands_and_time(self):
        """A paused phone moves by what is done with it alone, so that a script meets the same phone at every run."""
        self.boot()
        self.sim("time", "booted", "pause")
        self.sim("launch", "booted", NOTES, "-debug", "YES")
        self.sim("time", "booted", "step", "3s")
        self.sim("ui", "booted", "tap", "187", "333", "--count", "3")
        self.sim("time", "booted", "step", "1s")
        self.assertIn("Capture Screen", self.texts())
        self.sim("ui", "booted", "tap", "--text", "Cancel")
        self.assertNotIn("Capture Screen", self.texts())
        self.sim("ui", "booted", "shake")
        self.sim("time", "booted", "step", "1s")
        self.sim("ui", "booted", "tap", "--text", "cap.*screen")
        self.sim("time", "booted", "step", "1s")
        self.sim("ui", "booted", "tap", "--text", "Nobody", "--timeout", "100ms", status=65, says="Nobody")
        self.sim("ui", "booted", "button", "HOME")
        self.sim("launch", "--terminate-running-process", "booted", NOTES, "-debug", "YES")
        self.sim("time", "booted", "step", "3s")
        self.sim("ui", "booted", "tap", "187", "333", "--fingers", "3", "--duration", "80ms")
        self.sim("time", "booted", "step", "1s")
        self.assertIn("Capture Screen", self.texts())
        self.sim("ui", "booted", "tap", "--text", "Cancel")

        self.sim("ui", "booted", "rotate", "landscapeRight")
        self.sim("time", "booted", "step", "1s")
        self.assertIn("Groceries", self.texts())
        self.sim("ui", "booted", "swipe", "187", "280", "187", "100", "--duration", "0.3")
        self.sim("time", "booted", "step", "2s")
        after = {each["text"]: each["frame"] for each in self.elements()}
        self.assertNotIn("Groceries", after)
        self.assertGreater(after["About"][0] + after["About"][2], 375)
        x, y = after["About"][:2]
        found = self.sim("ui", "booted", "describe-point", x + 3, y + 3)
        self.assertIn("About", found)
        self.sim("ui", "booted", "describe-point", "0", "9999", status=65, says="nothing")
        self.sim("time", "booted", "resume")
        self.sim("time", "booted", "step", "1s", status=65, says="paused")
        self.sim("time", "booted", "speed", "0.5")

    def test_two_phones(self):
        work = self.boot("Work")
        play = self.boot("Play", "iPhone SE")
        self.assertEqual(self.sockets(), sorted([work + ".socket", play + ".socket"]))
        self.sim("ui", "booted", "shake", status=64, says="2 phones are booted")
        self.sim("launch", "Play", NOTES)
        self.assertIn("About", self.texts("Play"))
        self.assertNotIn("About", self.texts(work))
        self.sim("shutdown", "Play")
        self.assertEqual({name: each["state"] for name, each in self.devices().items()},
                         {"Work": "Booted", "Play": "Shutdown"})
        browser = self.start("phone", "--no-open", "--profile", "iPhone SE")
        self.assertIn("http://127.0.0.1:", browser.stdout.readline())
        self.assertEqual(self.devices()["browser"]["state"], "Booted")
        self.interrupt(browser, 0)
        self.assertIn("http://127.0.0.1:", self.sim("page"))
        self.assertEqual(self.sim("shutdown", "all"), "")

    def test_interrupted_commands(self):
        udid = self.boot()
        swipe = self.start("ui", "booted", "swipe", "100", "100", "200", "200", "--duration", "30m")
        waiting = self.start("ui", "booted", "describe-all")
        self.interrupt(swipe)
        self.ended(waiting, 0)

        wait = self.folder / "wait.yaml"
        wait.write_text("appId: %s\n---\n- wait: 3000\n" % NOTES)
        flow = self.start("flow", wait, "--device", udid)
        self.assertIn("wait", flow.stdout.readline())
        self.sim("ui", "booted", "shake", status=65, says="flow is playing")
        self.interrupt(flow)
        wait.write_text("appId: %s\n---\n- launchApp\n- assertVisible: About\n" % NOTES)
        self.assertIn("About", self.sim("flow", wait, "--device", udid))
        wait.write_text("appId: %s\n---\n- extendedWaitUntil: {visible: Nobody, timeout: 100}\n" % NOTES)
        self.sim("flow", wait, "--device", udid, status=1, says="wait.yaml:3: extendedWaitUntil")

        recorded = self.start("flow", "record", "made.yaml")
        self.assertIn("Recording", recorded.stderr.readline())
        self.sim("ui", "booted", "button", "HOME")
        self.interrupt(recorded, 0)
        self.assertIn("pressKey: Home", (self.folder / "made.yaml").read_text())

        # What cannot clean up is cleaned up for.
        for words in (("io", "booted", "recordVideo", "a.mov"), ("flow", "record", "b.yaml")):
            for _ in range(2):
                killed = self.start(*words)
                self.assertIn("Recording", killed.stderr.readline())
                killed.kill()
                killed.wait(timeout=PATIENCE)
        self.assertEqual([each.name for each in self.folder.iterdir() if ".mov" in each.name], [])

        self.sim("create", "Front")
        front = self.start("boot", "Front", "--foreground")
        self.assertIn("http://", front.stdout.readline())
        self.interrupt(front, 0)
        self.assertEqual(self.sockets(), [udid + ".socket"])

    def test_phone_killed_under_a_command(self):
        udid = self.boot()
        stream = self.start("log", "booted", "stream")
        swipe = self.start("ui", "booted", "swipe", "1", "1", "9", "9", "--duration", "30m")
        self.sim("list")
        os.kill(self.process_of(udid), signal.SIGKILL)
        self.assertIn("The phone has ended", self.ended(stream, 76)[1])
        self.ended(swipe, 76)
        self.assertEqual(self.devices()["Work"]["state"], "Shutdown")
        self.sim("ui", "booted", "shake", status=68, says="No phone is booted")
        self.assertEqual(self.sockets(), [udid + ".socket"])
        other = self.boot("Other")
        self.assertEqual(self.sockets(), [other + ".socket"])
        self.sim("boot", "Work")
        self.sim("ui", "Work", "shake")

    def test_nonsense_at_the_socket(self):
        """Whoever reaches the socket cannot hold up the phone, nor those who use it."""
        udid = self.boot()
        path = self.run_folder / "tellvane" / (udid + ".socket")
        self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o600)
        self.assertEqual(stat.S_IMODE(path.parent.stat().st_mode), 0o700)
        for message in (b"hello\n", b"[]\n", b"{}\n", b'{"id": "x", "command": "shake"}\n', b'{"id": 1}\n', b"[" * 99 + b"\n",
                        b"\xff\xfe\n", b"x" * (2 << 20)):
            with socket.socket(socket.AF_UNIX) as connection:
                connection.settimeout(PATIENCE)
                connection.connect(str(path))
                greeting = connection.makefile("rb").readline()
                try:
                    connection.sendall(message)
                    self.assertEqual(connection.recv(65536), b"", message[:40])
                except ConnectionError:
                    pass
                self.assertEqual(json.loads(greeting)["udid"], udid)
        with contextlib.ExitStack() as idle:
            for _ in range(20):  # who say nothing, or half a message, or do not read
                connection = idle.enter_context(socket.socket(socket.AF_UNIX))
                connection.connect(str(path))
                connection.sendall(b'{"id": 1, "command": "elements"}\n' * 200 + b'{"id"')
            self.assertIn("Notes", self.texts())
        answers = []
        with socket.socket(socket.AF_UNIX) as connection:
            connection.settimeout(PATIENCE)
            connection.connect(str(path))
            for command in ('"dance"', '"shake", "loud": 1', '"tap", "x": 1', '"launch"', '"watch", "topics": ["mail"]'):
                connection.sendall(b'{"id": 7, "command": %s}\n' % command.encode())
            with connection.makefile() as lines:
                lines.readline()
                answers = [json.loads(lines.readline())["problem"] for _ in range(5)]
        self.assertEqual(sorted(each.split(" ")[0] for each in answers), ["expected", "expected", "launch", "no", "shake"])

    def test_help(self):
        for verb in sorted(verbs(self.sim("help"))):
            text = self.sim(verb.split()[0], "--help")
            self.assertIn("tellvane-sim " + verb.split()[0], text)
        self.assertEqual(self.sim("help", "boot"), self.sim("boot", "-h"))
        page = self.folder / "page.1"
        page.write_text(self.sim("help", "--man"))
        shown = subprocess.run(["groff", "-man", "-ww", "-Tutf8", page], capture_output=True, text=True, check=True)
        self.assertEqual(shown.stderr, "")
        self.assertIn("recordVideo", shown.stdout)
        (self.folder / "complete.bash").write_text(self.sim("help", "--completion", "bash"))
        udid = self.sim("create", "Work").strip()
        for line, offered, not_offered in (
                ("b", ["boot"], ["ui"]), ("ui ", ["booted", udid], ["tap"]), ("ui booted ", ["tap", "swipe"], ["boot"]),
                ("ui booted tap --c", ["--count"], ["--text"]), ("ui booted rotate ", ["upsideDown"], ["HOME"]),
                ("flow rec", ["record"], ["boot"]), ("io booted screenshot --type ", ["jpeg"], ["h264"]),
                ("list ", ["devicetypes"], ["booted"]), ("shutdown all ", ["booted"], ["all"])):
            words = line.split(" ")
            script = ("source ./complete.bash; PATH=%s:$PATH; COMP_WORDS=(tellvane-sim %s); COMP_CWORD=%d; _tellvane_sim; "
                      "printf '%%s\\n' \"${COMPREPLY[@]}\"" % (
                          pathlib.Path(PROGRAM).parent, " ".join("'%s'" % word for word in words), len(words)))
            found = subprocess.run(["bash", "-c", script], env=self.environment, cwd=self.folder, capture_output=True,
                                   text=True, check=True).stdout.split("\n")
            for word in offered:
                self.assertIn(word, found, line)
            for word in not_offered:
                self.assertNotIn(word, found, line)


if __name__ == "__main__":
    unittest.main()
