"""tellvane-sim as a shell user has it: devices and sockets in folders of the test's own."""

import json
import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import tempfile
import time
import unittest

PROGRAM = os.environ["TELLVANE_SIM"]
PATIENCE = 120  # seconds that a slow machine may take for anything
NOTES = "com.example.notes"


class Shell(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tvs", dir="/tmp"))  # a socket's path is short
        self.run_folder = self.folder / "run"
        self.run_folder.mkdir(mode=0o700)
        self.environment = dict(os.environ, XDG_RUNTIME_DIR=str(self.run_folder),
                                TELLVANE_DEVICES=str(self.folder / "devices"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.addCleanup(self.nothing_remains)

    def nothing_remains(self):
        left = self.sim("list", "-j", "devices")
        self.sim("shutdown", "all")
        self.assertEqual(self.sockets(), [], left)
        for found in pathlib.Path("/proc").glob("[0-9]*/cmdline"):
            try:
                self.assertNotIn(str(self.folder).encode(), found.read_bytes())
            except OSError:
                continue

    def sockets(self):
        folder = self.run_folder / "tellvane"
        return sorted(each.name for each in folder.iterdir()) if folder.exists() else []

    def start(self, *words, **options):
        process = subprocess.Popen([PROGRAM, *map(str, words)], env=self.environment, cwd=self.folder, text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)

        def end():
            if process.poll() is None:
                process.kill()
            process.wait(timeout=PATIENCE)
            process.stdout.close()
            process.stderr.close()
        self.addCleanup(end)
        return process

    def ended(self, process, status):
        out, errors = process.communicate(timeout=PATIENCE)
        self.assertEqual(process.returncode, status, (process.args, out, errors))
        return out, errors

    def interrupt(self, process, status=130):
        deadline = time.monotonic() + PATIENCE
        caught = "0"
        while not int(caught, 16) & 1 << (signal.SIGINT - 1) and time.monotonic() < deadline:
            caught = re.search(r"SigCgt:\s*(\w+)", pathlib.Path("/proc/%d/status" % process.pid).read_text())[1]
        process.send_signal(signal.SIGINT)
        return self.ended(process, status)

    def sim(self, *words, status=0, given="", says=""):
        """Standard output of a command that ends so; `says` is on standard error."""
        done = subprocess.run([PROGRAM, *map(str, words)], env=self.environment, cwd=self.folder, input=given,
                              capture_output=True, text=True, timeout=PATIENCE)
        self.assertEqual(done.returncode, status, (words, done.stdout, done.stderr))
        self.assertIn(says, done.stderr, words)
        if 64 <= status < 128:
            self.assertTrue(done.stderr.startswith("tellvane-sim: ") or words[0] == "flow", (words, done.stderr))
            self.assertEqual(done.stdout, "", words)
        return done.stdout

    def boot(self, name="Work", profile="iPhone 6", *options):
        udid = self.sim("create", name, profile).strip()
        self.sim("boot", name, *options)
        return udid

    def devices(self):
        return {each["name"]: each for each in json.loads(self.sim("list", "-j", "devices"))["devices"]}

    def elements(self, device="booted"):
        return json.loads(self.sim("ui", device, "describe-all", "--json"))

    def texts(self, device="booted"):
        return [each["text"] for each in self.elements(device)]

    def process_of(self, udid):
        """The phone's, which holds its socket."""
        with socket.socket(socket.AF_UNIX) as connection:
            connection.connect(str(self.run_folder / "tellvane" / (udid + ".socket")))
            with connection.makefile() as lines:
                return json.loads(lines.readline())["process"]
