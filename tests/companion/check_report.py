"""Reads a report as a stranger to the companion would: check_report.py PASTEBOARD REPORT. Exits with a message about
the first thing that is wrong."""
import html.parser
import json
import os
import plistlib
import re
import subprocess
import sys

pasteboard, report = sys.argv[1:]
INVISIBLE = re.compile("[\x00-\x1f\x7f-\x9f\u200b\u200e\u200f\u2028-\u202e\u2060-\u206f\ufeff]")


def content(*path):
    with open(os.path.join(report, *path), "rb") as file:
        return file.read()


def check(condition, message):
    if not condition:
        sys.exit(message)


with open(os.path.join(os.path.dirname(pasteboard), "expected.json")) as file:
    expected = [tuple(pair) for pair in json.load(file)]
with open(pasteboard, "rb") as file:
    item = plistlib.load(file)["items"][0]

check(sorted(os.listdir(os.path.join(report, "item"))) == sorted(item), "other representations than on the pasteboard")
for name, received in item.items():
    check(content("item", name) == received, f"{name} is not as it was received")
if "imageData" in item:
    check(content("image.jpg") == item["imageData"], "image.jpg is not as it was received")
    subprocess.run(["djpeg", "-outfile", os.devnull, os.path.join(report, "image.jpg")], check=True)
else:
    check(not os.path.exists(os.path.join(report, "image.jpg")), "an image out of nowhere")

text = content("record.json").decode()
check(json.loads(text, object_pairs_hook=list) == expected, "record.json says something else, or in another order")
check(not INVISIBLE.search(text.replace("\n", "")), "record.json hides something")
check(text.count("\n") == len(expected) + 2, "record.json is not one line an entry")


class Page(html.parser.HTMLParser):
    """Collects the texts of headings and cells, and refuses what a page of ours never has."""
    TAGS = {"html", "head", "meta", "title", "style", "body", "header", "nav", "main", "article", "section", "figure",
            "a", "img", "video", "h1", "h2", "p", "span", "bdi", "strong", "time", "table", "tr", "th", "td", "div", "ul", "li"}
    LINK = re.compile(r"(\.\./)?[A-Za-z0-9:-]*/?(index\.html|record\.json|received\.json|image\.jpg|movie\.mov|item/[A-Za-z]+)")

    def __init__(self):
        super().__init__()
        self.open, self.shown = [], []

    def handle_starttag(self, tag, attributes):
        check(tag in self.TAGS, f"a <{tag}> came in")
        for name, value in attributes:
            check(not name.startswith("on") and name != "style", f"<{tag} {name}> came in")
            if name in ("href", "src"):
                check(self.LINK.fullmatch(value), f"a link to {value} came in")
        if tag in ("h1", "td", "strong"):
            self.open.append(tag)
            self.shown.append("")

    def handle_endtag(self, tag):
        if self.open and tag == self.open[-1]:
            self.open.pop()

    def handle_data(self, data):
        if self.open:
            self.shown[-1] += data


for path in (os.path.join(report, "index.html"), os.path.join(report, "..", "index.html")):
    with open(path, encoding="utf-8") as file:
        markup = file.read()
    check(not INVISIBLE.search(markup.replace("\n", "")), f"{path} hides something")
    page = Page()
    page.feed(markup)
    named = {key: INVISIBLE.sub(lambda found: f"U+{ord(found.group()):04X}", value) for key, value in expected}
    screen = named.get("screenName", named.get("videoName"))
    check(screen in page.shown, f"{path} does not show the screen's name as it is")
    if path.startswith(os.path.join(report, "index")):
        for key, value in named.items():
            check((value or "not given") in page.shown, f"{path} does not show {key} as it is")
