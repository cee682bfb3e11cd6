"""A phone that is switched on for a test, and people who watch it, over plain sockets."""

import base64
import hashlib
import http.client
import json
import os
import pathlib
import socket
import struct
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parents[1]))
from phone_process import PATIENCE, PhoneProcess


class Phone(PhoneProcess):
    def __init__(self, program, *options, out=None):
        super().__init__(program, *options, out=out)
        self.authority = "%s:%d" % (self.host, self.port)
        self.origin = "http://" + self.authority
        self.watchers = []
        reply = self.get("/?token=" + self.token)
        self.cookie = reply.headers["Set-Cookie"].split(";")[0]
        self.set_cookie = reply.headers["Set-Cookie"]
        self.location = reply.headers["Location"]
        self.secret = self.location.partition("#")[2]

    def get(self, path, method="GET", host=None, **headers):
        connection = http.client.HTTPConnection(self.host, self.port, timeout=PATIENCE)
        connection.putrequest(method, path, skip_host=True, skip_accept_encoding=True)
        connection.putheader("Host", host or self.authority)
        for name, value in headers.items():
            connection.putheader(name.replace("_", "-"), value)
        connection.endheaders()
        reply = connection.getresponse()
        reply.body = reply.read()
        connection.close()
        return reply

    def raw(self, data):
        """What comes back for bytes that need not be a request, until the server ends the connection."""
        with socket.create_connection((self.host, self.port), timeout=PATIENCE) as connection:
            answer = b""
            try:
                connection.sendall(data)
                while part := connection.recv(65536):
                    answer += part
            except ConnectionError:
                pass
            return answer

    def watch(self, **options):
        watcher = Viewer(self, **options)
        self.watchers.append(watcher)
        return watcher

    def end(self, *number):
        for watcher in self.watchers:
            watcher.leave()
        return super().end(*number)


class Viewer:
    """One connection. Pictures are acknowledged as they come unless `slow`."""

    def __init__(self, phone, slow=False, origin=None, cookie=None, protocols=None, target="/socket"):
        self.slow = slow
        self.topics, self.notices, self.lines, self.touched, self.pictures = {}, [], [], [], []
        self.answers, self.closed, self.buffer = {}, None, b""
        self.parts, self.opcode = [], 0
        self.count = self.touches = 0
        self.socket = socket.create_connection((phone.host, phone.port), timeout=PATIENCE)
        key = base64.b64encode(os.urandom(16)).decode()
        self.socket.sendall("\r\n".join([
            "GET %s HTTP/1.1" % target, "Host: " + phone.authority, "Upgrade: websocket", "Connection: Upgrade",
            "Sec-WebSocket-Key: " + key, "Sec-WebSocket-Version: 13", "Origin: " + (origin or phone.origin),
            "Cookie: " + (phone.cookie if cookie is None else cookie),
            "Sec-WebSocket-Protocol: " + (protocols or "tellvane.1, secret." + phone.secret), "", ""]).encode())
        head = b""
        while b"\r\n\r\n" not in head:
            part = self.socket.recv(65536)
            if not part:
                break
            head += part
        head, _, self.buffer = head.partition(b"\r\n\r\n")
        self.status = int(head.split()[1]) if head else 0
        self.refusal = self.buffer.decode(errors="replace") if self.status != 101 else ""
        if self.status == 101:
            wanted = base64.b64encode(hashlib.sha1((key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11").encode()).digest())
            assert b"sec-websocket-accept: " + wanted.lower() in head.lower(), head
            assert b"sec-websocket-protocol: tellvane.1\r\n" in (head + b"\r\n").lower(), head

    def leave(self):
        self.socket.close()

    def send_frame(self, data, opcode=1):
        length = len(data)
        head = bytes([0x80 | opcode])
        head += (bytes([0x80 | length]) if length < 126 else
                 bytes([0xfe]) + struct.pack(">H", length) if length < 65536 else
                 bytes([0xff]) + struct.pack(">Q", length))
        mask = os.urandom(4)
        self.socket.sendall(head + mask + bytes(byte ^ mask[i % 4] for i, byte in enumerate(data)))

    def send(self, message):
        self.send_frame(json.dumps(message).encode())

    def need(self, count, deadline):
        while len(self.buffer) < count:
            left = deadline - time.monotonic()
            if left <= 0:
                return False
            self.socket.settimeout(left)
            try:
                part = self.socket.recv(1 << 20)
            except TimeoutError:
                return False
            except OSError:
                part = b""
            if not part:
                self.closed = self.closed or (1006, "")
                return False
            self.buffer += part
        return True

    def receive(self, timeout=PATIENCE):
        """Takes one message in; False if none came."""
        deadline = time.monotonic() + timeout
        if self.closed or not self.need(2, deadline):
            return False
        length, start = self.buffer[1] & 127, 2
        if length >= 126:
            start = 4 if length == 126 else 10
            if not self.need(start, deadline):
                return False
            length = int.from_bytes(self.buffer[2:start], "big")
        if not self.need(start + length, time.monotonic() + PATIENCE):
            return False
        final, opcode, data = self.buffer[0] & 128, self.buffer[0] & 15, self.buffer[start:start + length]
        self.buffer = self.buffer[start + length:]
        if opcode < 8:
            self.parts = (self.parts if opcode == 0 else []) + [data]
            self.opcode = opcode or self.opcode
            opcode, data = (self.opcode, b"".join(self.parts)) if final else (None, b"")
        if opcode == 8:
            self.closed = (int.from_bytes(data[:2], "big"), data[2:].decode())
        elif opcode == 9:
            self.send_frame(data, 10)
        elif opcode == 2:
            self.picture(data)
        elif opcode == 1:
            self.text(json.loads(data))
        return True

    def picture(self, data):
        (version, codec, flags, orientation, sequence, at, touch, x, y, width, height, whole_width,
         whole_height) = struct.unpack("<BBBBIQI6H", data[:32])
        assert version == 1
        self.pictures.append(dict(codec=codec, flags=flags, orientation=orientation, sequence=sequence, time=at,
                                  touch=touch, rect=(x, y, width, height), size=(whole_width, whole_height),
                                  image=data[32:]))
        if not self.slow:
            self.send({"shown": sequence})

    def text(self, message):
        if "answer" in message:
            self.answers[message["answer"]] = message
        elif message["type"] == "console":
            self.lines = ([] if message.get("reset") else self.lines) + message["lines"]
        elif message["type"] == "notice":
            self.notices.append(message)
        elif message["type"] == "touched":
            self.touched.append(message["touch"])
        else:
            self.topics[message["type"]] = message

    def until(self, condition, what, timeout=PATIENCE):
        deadline = time.monotonic() + timeout
        while not condition():
            left = deadline - time.monotonic()
            if left <= 0 or self.closed or not self.receive(left):
                raise AssertionError("expected %s; closed: %s; phone: %s; last lines: %s" % (
                    what, self.closed, self.topics.get("phone"), self.lines[-5:]))

    def begin(self, command, **members):
        self.count += 1
        self.send(dict(id=self.count, command=command, **members))
        return self.count

    def ask(self, command, **members):
        number = self.begin(command, **members)
        self.until(lambda: number in self.answers, "an answer to " + command)
        return self.answers.pop(number)

    def do(self, command, **members):
        answer = self.ask(command, **members)
        assert "problem" not in answer, (command, members, answer)
        return answer

    def touch(self, *fingers):
        self.touches += 1
        self.send({"touch": self.touches, "fingers": [list(finger) for finger in fingers]})
        return self.touches

    def tap(self, x, y):
        """Down and up in one message."""
        return self.touch((0, "began", x, y), (0, "ended", x, y))

    def said(self, text):
        return any(text in line["text"] for line in self.lines)
