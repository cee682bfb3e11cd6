"""Plays the examples of docs/flows.md on Notes, chapter by chapter, and sees that no command and no field is missing.

    flow_examples.py SIMULATOR DOCUMENT FOLDER
"""
import pathlib
import re
import subprocess
import sys

SIMULATOR, DOCUMENT, FOLDER = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
HEADER = "appId: com.example.notes\n---\n"


def chapters(text):
    """The chapters, each with the rows of its tables: cells, of which the last one has the examples."""
    for part in re.split(r"^## ", text, flags=re.MULTILINE)[1:]:
        rows = [[cell.strip() for cell in line.strip("|").split(" | ")]
                for line in part.splitlines() if line.startswith("| ")]
        yield part.splitlines()[0], [[row[0].lstrip("| "), row[-1].rstrip("| ")] for row in rows if len(row) == 3]


def play(name, flow):
    file = FOLDER / f"{name}.yaml"
    file.write_text(flow)
    return subprocess.run([SIMULATOR, str(file), "--out", str(FOLDER / "out" / name)], capture_output=True, text=True)


def known(complaint):
    found = re.search(r"known: (.*)", complaint)
    return set(found.group(1).split(", ")) if found else set()


def main():
    text = DOCUMENT.read_text()
    FOLDER.mkdir(parents=True, exist_ok=True)
    for name, content in re.findall(r"^`(\S+)`:\n\n```\w+\n(.*?)```", text, re.MULTILINE | re.DOTALL):
        (FOLDER / name).write_text(content)
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc=size=320x240:rate=10:duration=1",
                    "-pix_fmt", "yuv420p", str(FOLDER / "movie.mp4")], check=True)

    problems, played, documented, shown = [], 0, set(), set()
    for title, rows in chapters(text):
        examples = [each for row in rows for each in re.findall(r"`([^`]+)`", row[1]) if row[1] != "example"]
        documented.update(name for row in rows for name in re.findall(r"`([^`]+)`", row[0]))
        if not examples:
            continue
        if title != "The header":
            examples = ["launchApp: {permissions: {all: unset}}"] + examples
        played += len(examples)
        shown.update(name for each in examples for name in re.findall(r"(\w+):", each))
        name = re.sub(r"\W+", "-", title.lower())
        outcome = play(name, HEADER + "".join(f"- {each}\n" for each in examples))
        if outcome.returncode != 0:
            problems.append(f"{title}: {outcome.stdout[-1500:]}{outcome.stderr}")
        # An optional step that fails is one; so is the first round of the one that is retried.
        warnings = len([each for each in examples if "optional" in each or "maxRetries" in each])
        if warnings != outcome.stdout.count("⚠"):
            problems.append(f"{title}: expected {warnings} warnings\n{outcome.stdout}")
    movie = FOLDER / "out" / "what-is-on-the-screen" / "movie.mp4"
    seconds = subprocess.run(["ffprobe", "-v", "error", "-of", "csv=p=0", "-show_entries", "format=duration", str(movie)],
                             capture_output=True, text=True).stdout.strip()
    if not seconds or float(seconds) < 0.3:
        problems.append(f"{movie} lasts {seconds} s")

    commands = known(play("commands", HEADER + "- none\n").stderr)
    if len(commands) < 40 or played < 100:
        problems.append(f"only {len(commands)} commands and {played} examples were found")
    for command in sorted(commands):
        fields = known(play("fields", HEADER + f"- {command}: {{no field: 1}}\n").stderr)
        if command not in documented:
            problems.append(f"{command} has no row in {DOCUMENT.name}")
        problems += [f"{name}, of {command}, has no example in {DOCUMENT.name}" for name in sorted(fields - shown)]
    print("\n".join(problems) or f"{played} examples, {len(commands)} commands")
    return 1 if problems else 0


sys.exit(main())
