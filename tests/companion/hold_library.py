"""Keeps every other process out of a photo library for a second of real time: hold_library.py DATABASE"""
import sqlite3
import sys
import time

library = sqlite3.connect(sys.argv[1], isolation_level=None)
library.execute("PRAGMA locking_mode = EXCLUSIVE")
library.execute("BEGIN EXCLUSIVE")
print("held", flush=True)
time.sleep(1)
library.execute("COMMIT")
