"""A phone of its own for a test: the simulator's process, from its start to its end."""
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time

PATIENCE = 60  # seconds that a slow machine may take for anything


class PhoneProcess:
    """Switched on at once. Without `out` its device is in a folder that goes with it."""

    def __init__(self, program, *options, out=None):
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="switched-on-"))
        self._said, self._complained = self._folder / "said", self._folder / "complained"
        self.out = pathlib.Path(out) if out else None
        where = ["--out", str(out)] if out else []
        # Whoever is killed in the middle leaves no phone behind.
        command = ["setpriv", "--pdeathsig", "INT", program, "phone", "--no-open", *where, *options]
        with self._said.open("w") as said, self._complained.open("w") as complained:
            self.process = subprocess.Popen(command, stdout=said, stderr=complained, start_new_session=True)
        found = self._wait_for_address()
        self.url, self.host, self.port, self.token = found[0], found[1], int(found[2]), found[3]

    def _wait_for_address(self):
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            ended = self.process.poll() is not None
            if found := re.search(r"http://(127\.0\.0\.1):(\d+)/\?token=([0-9a-f]{64})\b", self.said()):
                return found
            if ended:
                break
            time.sleep(0.005)
        self.end()
        raise AssertionError("no address in %r; %s" % self.words)

    def said(self):
        return self._said.read_text()

    def complained(self):
        return self._complained.read_text()

    def end(self, number=signal.SIGINT):
        """Its status, and what it printed to both its outputs. Only the first call does anything."""
        if self._folder.exists():
            if self.process.poll() is None:
                self.process.send_signal(number)
            try:
                self.process.wait(PATIENCE)
            finally:
                if self.process.poll() is None:
                    os.killpg(self.process.pid, signal.SIGKILL)  # the group is its own
                    self.process.wait()
                self.words = self.said(), self.complained()
                shutil.rmtree(self._folder, ignore_errors=True)
        return self.process.returncode, *self.words
