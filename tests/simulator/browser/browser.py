"""A browser's process, its profile and the connection over which it is driven, whichever browser it is."""
import asyncio
import json
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile

import websockets

from page import PATIENCE, until


class Browser:
    """`async with Chromium() as browser:` Each kind says how it is started and where it then listens: `prepare`,
    `command`, `port_file`, `address`; and what it does with what comes unasked: `hear`."""

    def prepare(self, profile):
        pass

    async def __aenter__(self):
        self._profile = tempfile.mkdtemp(prefix="browser-")
        self.prepare(pathlib.Path(self._profile))
        # Whoever is killed in the middle leaves no browser behind.
        self._process = subprocess.Popen(
            ["setpriv", "--pdeathsig", "KILL", *self.command(self._profile)],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
        try:
            file = pathlib.Path(self._profile, self.port_file)
            await until(lambda: file.exists() and self.address(file.read_text()), "the browser to start",
                        lambda: self._process.poll() is None)
            self.pages = {}
            self.channel = Channel(
                await websockets.connect(self.address(file.read_text()), max_size=None, ping_interval=None), self.hear)
            await self.begin()
        except BaseException:
            self._end()
            raise
        return self

    async def begin(self):
        pass

    async def __aexit__(self, *_):
        await self.channel.close()
        self._end()

    def _end(self):
        os.killpg(self._process.pid, signal.SIGKILL)  # the group is its own
        self._process.wait()
        shutil.rmtree(self._profile, ignore_errors=True)


class Channel:
    """Numbered requests and their answers over a WebSocket; what comes unasked goes to `on_event`."""

    def __init__(self, socket, on_event):
        self._socket, self._on_event, self._answers, self._next = socket, on_event, {}, 1
        self._reader = asyncio.create_task(self._read())

    async def ask(self, **message):
        number, self._next = self._next, self._next + 1
        answer = self._answers[number] = asyncio.get_running_loop().create_future()
        await self._socket.send(json.dumps({"id": number, **message}))
        return await asyncio.wait_for(answer, PATIENCE)

    async def close(self):
        self._reader.cancel()
        await self._socket.close()

    async def _read(self):
        async for text in self._socket:
            message = json.loads(text)
            answer = self._answers.pop(message.get("id"), None)
            if answer is None:
                self._on_event(message)
            elif answer.cancelled():
                continue
            elif "error" in message:
                answer.set_exception(RuntimeError(str(message.get("message") or message["error"])))
            else:
                answer.set_result(message["result"])
