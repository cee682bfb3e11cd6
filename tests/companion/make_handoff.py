"""Writes a pasteboard file as another program would: make_handoff.py PASTEBOARD JPEG KIND, where KIND is "image",
"record" (an image record without an image) or "video". The record's texts are as hostile as texts can be; it is also
written, as JSON, beside the pasteboard under the name "expected.json"."""
import json
import os
import plistlib
import sys

pasteboard, image, kind = sys.argv[1:]
texts = {
    "sdkId": "iOS-1.0.0.7",
    "appVersion": "3.0 \"beta\" & <i>more</i>",
    "oSFamily": "iOS",
    "appName": "\u202egnp.seton\u202c\u2066 Notizen\u2069",
    "oSVersion": "10.3.1\n10.3.2\t\x1b[31m\u2028",
    "deviceResolution": "",
    "language": "....//....//etc/passwd",
    ("videoName" if kind == "video" else "screenName"): "</h1><script>alert('1')</script><img src=x onerror=alert(2)>",
}
if kind == "video":
    texts["videoInPhotosAlbum"] = "javascript:alert(3)//\U0001F469\u200D\U0001F4BB/L0/001"
texts["deviceModel"] = "設定 " + "W" * 4000

objects = ["$null", None]


def add(value):
    objects.append(value)
    return plistlib.UID(len(objects) - 1)


keys = [add(key) for key in reversed(texts)]
values = [add(text) for text in reversed(texts.values())]
objects[1] = {
    "NS.keys": keys,
    "NS.objects": values,
    "$class": add({"$classname": "NSDictionary", "$classes": ["NSDictionary", "NSObject"]}),
}
archive = plistlib.dumps(
    {"$archiver": "NSKeyedArchiver", "$version": 100000, "$top": {"root": plistlib.UID(1)}, "$objects": objects},
    fmt=plistlib.FMT_BINARY)

item = {"TLVScreenVideoDetails" if kind == "video" else "dictionaryInApp": archive}
if kind == "image":
    with open(image, "rb") as file:
        item["imageData"] = file.read()
os.makedirs(os.path.dirname(pasteboard), exist_ok=True)
with open(pasteboard, "wb") as file:
    plistlib.dump({"changeCount": 7, "items": [item]}, file, fmt=plistlib.FMT_BINARY)
with open(os.path.join(os.path.dirname(pasteboard), "expected.json"), "w") as file:
    json.dump(list(texts.items()), file)
