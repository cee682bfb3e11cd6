"""follow_page.py PAGE BUILD SCRATCH COMPILER...: does what the page says, to the letter, in an empty folder.

A block whose first line names a file, as in "```cpp main.cpp", is that file; the "```sh" blocks are run, one after the
other. With each compiler, shared and static.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys

page, build, scratch = (pathlib.Path(each).resolve() for each in sys.argv[1:4])
blocks = re.findall(r"^```(\w+)(?: (\S+))?\n(.*?)^```$", page.read_text(), re.MULTILINE | re.DOTALL)
files = {name: text for _, name, text in blocks if name}
scripts = [text for language, _, text in blocks if language == "sh"]
other = [text for language, name, text in blocks if language == "cpp" and not name]
assert len(files) == 4 and len(scripts) == 4 and len(other) == 1, (list(files), len(scripts), len(other))

shutil.rmtree(scratch, ignore_errors=True)
scratch.mkdir(parents=True)

def follow(compiler, static):
    folder = scratch / (os.path.basename(compiler) + ("-static" if static else "-shared"))
    folder.mkdir()
    runtime = pathlib.Path(subprocess.run(["mktemp", "-d", "/tmp/tvpXXXXXX"], capture_output=True, text=True,
                                          check=True).stdout.strip())
    environment = dict(os.environ, CXX=compiler, TELLVANE_SOURCE=str(build.parent.parent),  # of build/PRESET
                       XDG_RUNTIME_DIR=str(runtime), TELLVANE_DEVICES=str(folder / "devices"))
    for unwanted in ("LD_LIBRARY_PATH", "CMAKE_PREFIX_PATH", "PKG_CONFIG_PATH"):
        environment.pop(unwanted, None)
    try:
        for name, text in files.items():
            if static:
                text = text.replace("tellvane_add_application(Hello ", "tellvane_add_application(Hello STATIC ")
            (folder / name).write_text(text)
        # The line about the notification is the host's, too.
        main = folder / "main.cpp"
        main.write_text(main.read_text().replace("    return true;\n",
                                                 "    if (!window_) {\n" + other[0] + "    }\n    return true;\n"))
        text = "\n".join(scripts).replace("/build/release", "/build/" + build.name)
        if static:
            text = text.replace("--libs Tellvane)", "--libs TellvaneStatic)")
        done = subprocess.run(["bash", "-euo", "pipefail", "-c", text], cwd=folder, env=environment,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            sys.exit("FAILED with %s%s:\n%s" % (compiler, ", static" if static else "", done.stdout[-6000:]))
        for picture in ("build/flows/feedback/sheet.png", "sheet.png", "out/sheet.png"):
            if (folder / picture).read_bytes()[:4] != b"\x89PNG":
                sys.exit("FAILED: %s is no picture" % picture)
        for host in ("build/Applications/com.example.hello/Hello", "by-hand/com.example.hello/Hello"):
            needed = subprocess.run(["readelf", "-d", folder / host], capture_output=True, text=True, check=True).stdout
            if ("[Tellvane]" in needed) == static:
                sys.exit("FAILED: %s is linked otherwise than it should be" % host)
        left = list((runtime / "tellvane").iterdir())
        if left:
            sys.exit("FAILED: left behind: %s" % left)
        print("%s%s: as the page says" % (compiler, ", static" if static else ""))
    finally:
        subprocess.run([folder / "tellvane/bin/tellvane-sim", "shutdown", "all"], env=environment, capture_output=True)
        shutil.rmtree(runtime, ignore_errors=True)
        shutil.rmtree(folder / "tellvane", ignore_errors=True)


for compiler in sys.argv[4:]:
    for static in (False, True):
        follow(compiler, static)
