"""Switches the phone on, and comes to it as those who should be kept out, and with what is malformed or too much."""

import pathlib
import sys
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent))
from viewer import PATIENCE, Phone, Viewer

PROGRAM = sys.argv.pop(1)
NOTES = "com.example.notes"


class Access(unittest.TestCase):
    def switch_on(self):
        phone = Phone(PROGRAM)
        self.addCleanup(phone.end)
        return phone

    def test_lets_in_whom_it_should_and_nobody_else(self):
        phone = self.switch_on()
        self.assertEqual(phone.location, "/#" + phone.secret)
        self.assertRegex(phone.secret, "^[0-9a-f]{64}$")
        self.assertIn("HttpOnly", phone.set_cookie)
        self.assertIn("SameSite=Lax", phone.set_cookie)
        page = phone.get("/", Cookie=phone.cookie)
        self.assertEqual(page.status, 200)
        self.assertNotIn(phone.secret.encode(), page.body)
        self.assertIn("script-src 'self'", page.headers["Content-Security-Policy"])
        self.assertIsNone(page.headers["Access-Control-Allow-Origin"])
        wrong = "0" * 64
        viewer = phone.watch()
        viewer.until(lambda: "hello" in viewer.topics, "hello")
        files = viewer.topics["hello"]["files"]
        for status, reply in [
                (403, phone.get("/")),
                (403, phone.get("/?token=" + wrong)),
                (403, phone.get("/?token=")),
                (403, phone.get("/", Cookie=phone.cookie[:-1] + "x")),
                (403, phone.get("/", host="localhost:%d" % phone.port, Cookie=phone.cookie)),
                (403, phone.get("/", host="evil.example:%d" % phone.port, Cookie=phone.cookie)),
                (403, phone.get("/", host=phone.host, Cookie=phone.cookie)),
                (403, phone.get("/", Cookie=phone.cookie, Origin="http://evil.example")),
                (403, phone.get("/?token=" + phone.token, host="evil.example:%d" % phone.port)),
                (405, phone.get("/", method="POST", Cookie=phone.cookie, Content_Length="0")),
                (404, phone.get("/page/../Server.cpp", Cookie=phone.cookie)),
                (404, phone.get("/page/%2e%2e/%2e%2e/etc/passwd", Cookie=phone.cookie)),
                (404, phone.get(files + "inbox/../../../../Settings.plist")),
                (404, phone.get(files + "inbox/%2e%2e/%2e%2e/%2e%2e/%2e%2e/Settings.plist")),
                (404, phone.get(files + "movies//etc/passwd")),
                (404, phone.get(files + "kept/1/nothing.png")),
                (403, phone.get("/files/" + wrong + "/inbox/index.html", Cookie=phone.cookie)),
                (403, phone.get("/files/", Cookie=phone.cookie)),
                (400, phone.get("/%zz", Cookie=phone.cookie)),
        ]:
            with self.subTest(status=status, body=reply.body):
                self.assertEqual(reply.status, status)
                self.assertNotIn(b"root:", reply.body)
        for options in [{"protocols": "tellvane.1"}, {"protocols": "tellvane.1, secret." + wrong},
                        {"protocols": "secret." + phone.secret}, {"cookie": ""}, {"cookie": "tellvane_1=" + wrong},
                        {"origin": "http://evil.example"}, {"origin": "null"}, {"target": "/"},
                        {"origin": "http://%s:1" % phone.host}]:
            with self.subTest(options=options):
                refused = Viewer(phone, **options)
                self.assertEqual(refused.status, 403)
                refused.leave()

    def test_refuses_what_is_malformed_and_lives_on(self):
        phone = self.switch_on()
        for data, status in [
                (b"GET / HTTP/1.1\r\nHost: x\r\nX: " + b"y" * 20000 + b"\r\n\r\n", b"431"),
                (b"POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 99999999\r\n\r\n", b"413"),
                (b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03" + b"\r\n\r\n", b"400"),
                (b"GET / HTTP/9.9\r\n\r\n", b"400"),
        ]:
            with self.subTest(data=data[:40]):
                answer = phone.raw(data)
                self.assertEqual(answer.split()[1:2], [status], answer)
                self.assertTrue(answer.endswith(b".\n"), answer)
        for data, opcode, code in [(b"nonsense", 1, 1008), (b"[1,2]", 1, 1008), (b'{"shown": 4000000}', 1, 1008),
                                   (b"{}", 2, 1008), (b'{"a": "' + b"x" * 70000 + b'"}', 1, 1009)]:
            with self.subTest(data=data[:40]):
                viewer = phone.watch()
                viewer.send_frame(data, opcode)
                while viewer.receive():
                    pass
                self.assertEqual(viewer.closed[0], code, viewer.closed)
        flood = phone.watch()
        for _ in range(5000):
            try:
                flood.send({"touch": 1, "fingers": []})
            except OSError:
                break
        while flood.receive():
            pass
        self.assertIn(flood.closed[0], (1006, 1008))  # the rest of the flood may cut the goodbye off
        crowd = [phone.watch(slow=True)]
        while crowd[-1].status == 101 and len(crowd) < 200:
            crowd.append(phone.watch(slow=True))
        self.assertEqual((crowd[-1].status, crowd[-1].refusal), (503, "Too many viewers.\n"))
        self.assertGreater(len(crowd), 110)
        for each in crowd:
            each.leave()
        deadline = time.monotonic() + PATIENCE
        while (viewer := phone.watch()).status != 101 and time.monotonic() < deadline:
            pass
        for problem, command in [("no command", dict(command="explode")), ("needs", dict(command="rotate")),
                                 ("does not know", dict(command="home", twice=True)),
                                 ("expected", dict(command="rotate", orientation=7)),
                                 ("expected", dict(command="launch", identifier=NOTES, arguments=3)),
                                 ("bundle identifier", dict(command="reset", identifier="../.."))]:
            with self.subTest(command=command):
                self.assertIn(problem, viewer.ask(**command).get("problem", ""))
        viewer.do("home")


if __name__ == "__main__":
    unittest.main(verbosity=2)
