"""describe.py TELLVANE_SIM: how long a hundred "ui describe-all" take, one after another, each a process of its own,
on a phone that shows Notes. Prints "name value" lines on standard error.
"""
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

COUNT = 100


def main(program):
    folder = tempfile.mkdtemp(prefix="tvd", dir="/tmp")  # a socket's path is short
    environment = dict(os.environ, XDG_RUNTIME_DIR=folder, TELLVANE_DEVICES=os.path.join(folder, "devices"))

    def sim(*words):
        subprocess.run([program, *words], env=environment, check=True, stdout=subprocess.DEVNULL)

    try:
        sim("create", "Bench")
        sim("boot", "Bench")
        sim("launch", "booted", "com.example.notes")
        sim("ui", "booted", "tap", "--text", "About")
        times = []
        for _ in range(COUNT):
            start = time.perf_counter()
            sim("ui", "booted", "describe-all")
            times.append((time.perf_counter() - start) * 1000)
        print("median_ms %.2f\nslowest_ms %.2f" % (statistics.median(times), max(times)), file=sys.stderr)
    finally:
        subprocess.run([program, "shutdown", "all"], env=environment, check=False)
        shutil.rmtree(folder, ignore_errors=True)


main(sys.argv[1])
