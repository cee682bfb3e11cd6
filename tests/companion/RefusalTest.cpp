#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <functional>

#include "CompanionPhone.h"
#include "CoreGraphics/CGImage.h"

namespace companion_tests {
namespace {

using ios::Bytes;
using ios::NSArray;
using ios::NSDictionary;
using ios::PropertyList;
using UID = PropertyList::UID;

struct Row {
  std::string name;
  Bytes pasteboard;
  std::string reason;  // what the line must say
};

Bytes cut(Bytes bytes, std::size_t by) {
  bytes.resize(bytes.size() - by);
  return bytes;
}

Row item(const std::string& name, NSDictionary item, const std::string& reason) {
  return {name, pasteboardOf({std::move(item)}), reason};
}
Row archive(const std::string& name, Bytes archive, const std::string& reason) {
  NSDictionary changed = imageItem();
  changed["dictionaryInApp"] = std::move(archive);
  return item(name, std::move(changed), reason);
}
Row record(const std::string& name, const std::string& key, PropertyList value, const std::string& reason) {
  NSDictionary changed = dictionaryOf(imageRecord());
  changed[key] = std::move(value);
  return archive(name, archiveOf(changed), reason);
}
Row image(const std::string& name, Bytes bytes, const std::string& reason) {
  NSDictionary changed = imageItem();
  changed["imageData"] = std::move(bytes);
  return item(name, std::move(changed), reason);
}
Row type(const std::string& name, const std::string& type, const std::string& shown) {
  NSDictionary changed = imageItem();
  changed[type] = bytesOf("x");
  return item(name, std::move(changed), shown);
}

std::vector<Row> pasteboardRows() {
  const Bytes good = pasteboardOf({imageItem()});
  Bytes manyObjects = good;
  // The trailer's count of objects, eight bytes big-endian, 24 before the end.
  std::fill_n(manyObjects.end() - 24, 8, std::uint8_t{0x7F});
  return {
      {"NoBytes", {}, "not a binary property list"},
      {"Prose", bytesOf("bplist, or so it says"), "not a binary property list"},
      {"HeaderAlone", bytesOf("bplist00"), "the pasteboard is a binary property list cut short"},
      {"XML", bytesOf(PropertyList(NSDictionary{{"changeCount", 1}, {"items", NSArray{imageItem()}}}).xml()),
       "not a binary property list"},
      {"CutOff", cut(good, 40), "the pasteboard is a binary property list with a damaged trailer"},
      {"HugeCountOfObjects", manyObjects, "the pasteboard is a binary property list with a damaged trailer"},
      {"RootIsArray", PropertyList(NSArray{1, 2}).binary(), "no change count"},
      {"CountIsText", pasteboardOf({imageItem()}, "1"), "no change count"},
      {"CountIsNegative", pasteboardOf({imageItem()}, -1), "no change count"},
      {"NoItems", PropertyList(NSDictionary{{"changeCount", 1}}).binary(), "no list of items"},
      {"ItemsAreText", PropertyList(NSDictionary{{"changeCount", 1}, {"items", "all of them"}}).binary(),
       "no list of items"},
      {"Cleared", pasteboardOf({}), "the pasteboard is empty"},
      {"TwoItems", pasteboardOf({imageItem(), imageItem()}), "2 items instead of one"},
      {"ItemIsText", pasteboardOf({"imageData"}), "not a set of representations"},
  };
}

std::vector<Row> typeRows() {
  NSDictionary imageAlone = imageItem();
  imageAlone.erase("dictionaryInApp");
  NSDictionary text = imageItem();
  text["imageData"] = "not bytes";
  return {
      item("NoTypes", NSDictionary{}, "not those of a hand-off: none"),
      item("ImageAlone", imageAlone, "not those of a hand-off: \"imageData\""),
      item("TextForBytes", text, "\"imageData\" holds a string instead of data"),
      type("VideoToo", "TLVScreenVideoDetails",
           "\"TLVScreenVideoDetails\", \"dictionaryInApp\", \"imageData\""),
      type("PathType", "../../../escaped", "\"../../../escaped\""),
      type("AbsoluteType", "/tmp/escaped", "\"/tmp/escaped\""),
      type("EmptyType", "", "\"\", \"dictionaryInApp\""),
      type("LineBreakInType", "a\nTellvane: filed b", "\"a<U+000A>Tellvane: filed b\""),
      type("TerminalCodeInType", "\x1B[2J\xE2\x80\xAE", "\"<U+001B>[2J<U+202E>\""),
      type("LongType", std::string(100'000, 'a'), "\"" + std::string(60, 'a') + "…\""),
  };
}

NSArray objects(NSArray keys, NSArray values, std::string className = "NSDictionary") {
  return {"$null",
          NSDictionary{{"NS.keys", std::move(keys)}, {"NS.objects", std::move(values)}, {"$class", UID{2}}},
          NSDictionary{{"$classname", className}, {"$classes", NSArray{className, "NSObject"}}}, "sdkId"};
}

std::vector<Row> archiveRows() {
  const Bytes good = archiveOf(dictionaryOf(imageRecord()));
  NSDictionary lacking = dictionaryOf(imageRecord());
  lacking.erase("deviceModel");
  PropertyList deep = NSDictionary{};
  for (int level = 0; level < 300; ++level) deep = NSDictionary{{"sdkId", deep}};
  return {
      archive("NoArchive", bytesOf("{\"sdkId\": \"iOS-1.0\"}"),
              "the archive in \"dictionaryInApp\" is neither"),
      archive("EmptyArchive", {}, "the archive in \"dictionaryInApp\" is"),
      archive("CutArchive", cut(good, 60),
              "the archive in \"dictionaryInApp\" is a binary property list with a damaged trailer"),
      archive("PlainPropertyList", PropertyList(dictionaryOf(imageRecord())).binary(),
              "the archive in \"dictionaryInApp\" is not a keyed archive"),
      archive("RefersToItself", archiveOfObjects(objects({UID{3}}, {UID{1}})),
              "the archive in \"dictionaryInApp\" holds an object that contains itself"),
      archive("RefersBeyondTheEnd", archiveOfObjects(objects({UID{3}}, {UID{4'000'000'000}})),
              "the archive in \"dictionaryInApp\" refers to an object that does not exist"),
      archive("UnknownClass", archiveOfObjects(objects({}, {}, "NSTask")),
              "the archive in \"dictionaryInApp\" holds an object of class \"NSTask\""),
      archive("NestsDeep", archiveOf(deep),
              "the archive in \"dictionaryInApp\" nests deeper than 128 levels"),
      archive("HugeArchive", Bytes(2 << 20, 'b'), "larger than 1 MiB"),
      archive("RootIsArray", archiveOf(NSArray{"sdkId"}), "an array instead of a dictionary"),
      archive("RootIsText", archiveOf("iOS"), "a string instead of a dictionary"),
      archive("LacksAKey", archiveOf(lacking), "lacks \"deviceModel\""),
      archive("VideoRecord", archiveOf(dictionaryOf(videoRecord())),
              "entry \"videoInPhotosAlbum\" that is not known"),
      record("ForeignKey", "../record.json", "x", "entry \"../record.json\" that is not known"),
      record("NumberForText", "appVersion", 3, "\"appVersion\" is an integer instead of a string"),
      record("ArrayForText", "appName", NSArray{"Notes"}, "\"appName\" is an array instead of a string"),
      record("LongText", "screenName", std::string(4097, 'n'), "\"screenName\" is 4097 bytes long"),
      record("PathUpwards", "screenName", "../../../etc/passwd",
             "\"screenName\" is a path: \"../../../etc/passwd\""),
      record("PathInside", "language", "en\\..", "\"language\" is a path"),
      record("PathFromTheRoot", "appName", "/etc/passwd", "\"appName\" is a path"),
      record("PathFromHome", "deviceModel", "~/inbox", "\"deviceModel\" is a path"),
      record("OtherSystem", "oSFamily", "Android\n",
             "\"oSFamily\" is \"Android<U+000A>\" instead of \"iOS\""),
  };
}

std::vector<Row> imageRows() {
  Bytes giant = jpeg();
  // The start-of-frame segment carries the height and the width, five bytes after its marker.
  const Bytes startOfFrame = {0xFF, 0xC0};
  const auto frame = std::search(giant.begin(), giant.end(), startOfFrame.begin(), startOfFrame.end());
  std::fill_n(frame + 5, 4, std::uint8_t{0xFD});
  Bytes damaged = jpeg(400, 400);
  std::fill_n(damaged.begin() + static_cast<long>(damaged.size()) / 2, 64, std::uint8_t{0xFF});
  const auto pixels = std::make_shared<std::uint8_t[]>(4);
  return {
      image("NoImageBytes", {}, "not hold a complete JPEG image"),
      image("ProseForImage", bytesOf("<script>alert(1)</script>"), "not hold a complete JPEG image"),
      image("PNG", ios::CGImage(pixels, 1, 1, 4).png(), "not hold a complete JPEG image"),
      image("CutImage", cut(jpeg(), 30), "not hold a complete JPEG image"),
      image("DamagedImage", damaged, "not hold a complete JPEG image"),
      image("GiantImage", giant, "65021 × 65021 pixels are too many"),
  };
}

void expectRefusals(const std::vector<Row>& rows) {
  const CompanionPhone phone;
  write(phone.pasteboard(), pasteboardOf({imageItem()}));
  ASSERT_EQ(phone.open().status, 0);
  const Snapshot before = snapshot(phone.root() / "Containers");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    write(phone.pasteboard(), row.pasteboard);
    const Ended ended = phone.open();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err.rfind("Tellvane: refused: ", 0), 0u) << ended.err;
    EXPECT_NE(ended.err.find(row.reason), std::string::npos) << ended.err;
    EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 1) << ended.err;
    EXPECT_TRUE(snapshot(phone.root() / "Containers") == before);
    EXPECT_EQ(read(phone.pasteboard()), row.pasteboard);
  }
}

TEST(Refusal, OfFilesThatAreNotAPasteboard) {
  expectRefusals(pasteboardRows());
}
TEST(Refusal, OfTypesThatAreNotThoseOfAHandOff) {
  expectRefusals(typeRows());
}
TEST(Refusal, OfHostileArchivesAndForeignRecords) {
  expectRefusals(archiveRows());
}
TEST(Refusal, OfImagesThatCannotBeDecoded) {
  expectRefusals(imageRows());
}

// What stands in the place of the pasteboard's file could keep its reader waiting, or fill its memory.
TEST(PasteboardFile, MustBeAFileOfBoundedSize) {
  const struct {
    const char* name;
    std::function<void(const std::filesystem::path&)> place;
    const char* reason;
  } rows[] = {
      {"nothing", [](const auto&) {}, "the pasteboard is empty"},
      {"a folder", [](const auto& path) { std::filesystem::create_directory(path); }, "not a file"},
      {"a pipe", [](const auto& path) { ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0); }, "not a file"},
      {"a link into nowhere", [](const auto& path) { std::filesystem::create_symlink("gone", path); },
       "is empty"},
      {"a file of 80 MiB",
       [](const auto& path) {
         write(path, bytesOf("bplist00"));
         std::filesystem::resize_file(path, 80 << 20);
       },
       "more than 64 MiB"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const CompanionPhone phone;
    std::filesystem::create_directories(phone.pasteboard().parent_path());
    row.place(phone.pasteboard());
    const Ended ended = phone.open();
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.err.find(row.reason), std::string::npos) << ended.err;
    EXPECT_FALSE(std::filesystem::exists(phone.inbox()));
  }
}

TEST(OpenedURL, MustBeTheCompanionsOwn) {
  for (const char* url : {"Tellvane://com.example.other", "other://" COMPANION_IDENTIFIER, "Tellvane:", "",
                          "Tellvane://" COMPANION_IDENTIFIER "\nTellvane: filed"}) {
    SCOPED_TRACE(url);
    const CompanionPhone phone;
    write(phone.pasteboard(), pasteboardOf({imageItem()}));
    Program program = phone.program();
    program.variables["IOS_OPEN_URL"] = url;
    const Ended ended = run(program);
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.err.find("is not this application's URL"), std::string::npos) << ended.err;
    EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 1);
    EXPECT_FALSE(std::filesystem::exists(phone.inbox()));
  }
}

}  // namespace
}  // namespace companion_tests
