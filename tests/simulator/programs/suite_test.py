"""Many flows at once: folders, parts, reports, orderings."""

import json
import os
import pathlib
import re
import shutil
import sys
import unittest
import xml.etree.ElementTree

sys.path.insert(0, str(pathlib.Path(__file__).parent))
from shell import NOTES, Shell



class SuiteTest(Shell):
    def flow(self, name, steps):
        folder = self.folder / "flows"
        folder.mkdir(exist_ok=True)
        (folder / (name + ".yaml")).write_text("appId: %s\n---\n%s\n" % (NOTES, steps))

    def test_a_folder_with_a_report(self):
        self.flow("good", "- launchApp\n- takeScreenshot: list\n- assertVisible: About")
        self.flow("bad", "- launchApp\n- assertVisible: \"a < b & \\\"c\\\"\"")
        self.flow("ugly", "- dance")
        self.flow("ugly.part", "- dance")
        said = self.sim("flow", "flows", "--jobs", "2", "--junit", "report.xml", "--durations", "times.json", "--out", "o",
                        status=1)
        self.assertIn("3 flows, 2 failed; see o", said)
        self.assertRegex(said, r"FAIL  bad \(.*\): .*bad.yaml:4: assertVisible")
        suite = xml.etree.ElementTree.parse(self.folder / "report.xml").getroot()
        self.assertEqual((suite.get("tests"), suite.get("failures")), ("3", "2"))
        cases = {each.get("name"): each for each in suite}
        self.assertIsNone(cases["good"].find("failure"))
        self.assertIn('a < b & "c"', cases["bad"].find("failure").get("message"))
        self.assertIn("exit status 65", cases["ugly"].find("failure").text)
        self.assertIn("About", cases["good"].find("system-out").text)
        self.assertTrue((self.folder / "o/good/list.png").is_file())
        self.assertEqual(list(json.loads((self.folder / "times.json").read_text())), ["good"])
        # One flow is a folder of one for whoever wants a report.
        self.sim("flow", "flows/good.yaml", "--junit", "one.xml")
        self.assertIn('tests="1" failures="0"', (self.folder / "one.xml").read_text())

    def test_parts(self):
        """Parts are disjoint, together they are all, and each lasts about as long."""
        seconds = {"a": 60, "b": 1, "c": 1, "d": 30, "e": 29, "f": 1}
        for name in seconds:
            self.flow(name, "- wait: 0.1")
        (self.folder / "times.json").write_text(json.dumps(seconds))
        played = []
        for part in ("1/2", "2/2"):
            said = self.sim("flow", "flows", "--shard", part, "--durations", "times.json", "--jobs", "3")
            names = re.findall(r"ok    (\w+) ", said)
            played.append(sorted(names))
            # Times are written as they were now; the next part is split by the same ones.
            (self.folder / "times.json").write_text(json.dumps(seconds))
        self.assertEqual(sorted(played[0] + played[1]), sorted(seconds))
        self.assertLessEqual(abs(sum(seconds[name] for name in played[0]) - sum(seconds[name] for name in played[1])), 2)
        self.assertEqual(len(re.findall("ok", self.sim("flow", "flows", "--shard", "3/4"))), 1)
        for shard in ("0/2", "3/2", "x", "1/2/3", "-1/2"):
            self.sim("flow", "flows", "--shard", shard, status=64, says="--shard")
        self.sim("flow", "flows/a.yaml", "--shard", "1/2", status=64, says="--shard")
        (self.folder / "empty").mkdir()
        self.sim("flow", "empty", status=66, says="no flow")
        self.sim("flow", "flows", "--junit", "/nowhere/report.xml", status=73, says="/nowhere/report.xml")

    def test_orderings(self):
        """Without a seed, and with the same one, the same orders; other seeds give others, and every flow still holds."""
        tally = self.folder / "com.example.tally"
        tally.mkdir()
        shutil.copy(os.environ["TALLY"], tally / "Tally")
        (tally / "Info.plist").write_text(
            '<?xml version="1.0"?><plist version="1.0"><dict><key>CFBundleIdentifier</key><string>com.example.tally</string>'
            "<key>CFBundleExecutable</key><string>Tally</string></dict></plist>")
        (self.folder / "tally.yaml").write_text("appId: com.example.tally\n---\n- installApp: ./com.example.tally\n"
                                                "- launchApp\n- wait: 1\n- assertLog: order .*\n")

        def order(*options):
            said = self.sim("flow", "tally.yaml", *options)
            return re.search(r"order (\w+)", said)[1]
        self.assertEqual({order() for _ in range(2)}, {"abcdefgh"})
        found = {seed: order("--seed", seed) for seed in (1, 2, 3)}
        self.assertEqual({seed: order("--seed", seed) for seed in found}, found)
        self.assertGreater(len(set(found.values())), 1, found)
        for each in found.values():
            self.assertEqual(sorted(each), list("abcdefgh"))
        (self.folder / "wrong.yaml").write_text("appId: %s\n---\n- assertVisible: Nobody\n" % NOTES)
        self.sim("flow", "wrong.yaml", "--seed", "7", status=1, says="--seed 7")
        self.sim("flow", "wrong.yaml", "--seed", "0", status=64, says="--seed")

    def test_interrupted(self):
        for name in "abc":
            self.flow(name, "- launchApp\n- wait: 1\n- repeat:\n    times: 100000\n    commands:\n      - wait: 3000")
        suite = self.start("flow", "flows", "--jobs", "2", "--junit", "report.xml", "--out", "o")
        logs = [self.folder / "o" / (name + ".txt") for name in "ab"]
        while suite.poll() is None and not all(log.exists() and "wait" in log.read_text() for log in logs):
            pass
        self.interrupt(suite)
        report = (self.folder / "report.xml").read_text()
        self.assertIn('tests="2" failures="0" skipped="2"', report)


if __name__ == "__main__":
    unittest.main()
