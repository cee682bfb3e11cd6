#include "CoreFoundation/PropertyList.h"

#include <gtest/gtest.h>

#include "support/ScratchFolder.h"

namespace {

using namespace ios;
using testing_support::outputOfPython;
using testing_support::ScratchFolder;

Bytes bytesOf(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

PropertyList oneOfEachKind() {
  return NSDictionary{
      {"array", NSArray{1, "one", NSArray{}, NSDictionary{}}},
      {"data", Bytes{0, 127, 128, 255}},
      {"empty", ""},
      {"false", false},
      {"large", std::int64_t{1} << 62},
      {"negative", -5},
      {"one", 1},
      {"real", 0.1},
      {"real one", 1.0},
      {"smallest", INT64_MIN},
      {"text é", "<&> \" 😀\n"},
      {"true", true},
  };
}

// A value whose kinds got mixed up would still compare equal in python, so it prints the types too.
constexpr char kDescribe[] = R"(
import plistlib
def show(v):
    if isinstance(v, dict): return '{' + ','.join(repr(k) + ':' + show(v[k]) for k in sorted(v)) + '}'
    if isinstance(v, list): return '[' + ','.join(map(show, v)) + ']'
    return type(v).__name__ + ' ' + repr(v)
)";
constexpr char kDescription[] =
    "{'array':[int 1,str 'one',[],{}],'data':bytes b'\\x00\\x7f\\x80\\xff','empty':str '','false':bool False,"
    "'large':int 4611686018427387904,'negative':int -5,'one':int 1,'real':float 0.1,'real one':float 1.0,"
    "'smallest':int -9223372036854775808,'text é':str '<&> \" 😀\\n','true':bool True}\n";

TEST(PropertyList, OtherReadersAndWritersAgreeOnEveryKind) {
  const ScratchFolder folder;
  folder.write("binary.plist", oneOfEachKind().binary());
  folder.write("xml.plist", oneOfEachKind().xml());
  const std::string in = "import os; os.chdir('" + folder.path().string() + "')" + kDescribe;
  for (const std::string form : {"binary", "xml"}) {
    EXPECT_EQ(outputOfPython(folder, in + "print(show(plistlib.load(open('" + form + ".plist', 'rb'))))"),
              kDescription)
        << form;
  }
  outputOfPython(folder, in + "value = plistlib.load(open('binary.plist', 'rb'))\n"
                              "plistlib.dump(value, open('b', 'wb'), fmt=plistlib.FMT_BINARY)\n"
                              "plistlib.dump(value, open('x', 'wb'), fmt=plistlib.FMT_XML)\n");
  for (const std::string name : {"b", "x"}) {
    std::string problem;
    EXPECT_EQ(PropertyList::parse(folder.path() / name, &problem), oneOfEachKind())
        << name << ": " << problem;
  }
}

TEST(PropertyList, DatesAreReadAsStringsFromEitherForm) {
  const ScratchFolder folder;
  outputOfPython(folder, "import os, plistlib, datetime; os.chdir('" + folder.path().string() +
                             "')\nvalue = [datetime.datetime(1999, 12, 31, 23, 59, 58),"
                             " datetime.datetime(2026, 1, 5, 9, 41)]\n"
                             "plistlib.dump(value, open('b', 'wb'), fmt=plistlib.FMT_BINARY)\n"
                             "plistlib.dump(value, open('x', 'wb'), fmt=plistlib.FMT_XML)\n");
  for (const char* name : {"b", "x"}) {
    EXPECT_EQ(PropertyList::parse(folder.path() / name),
              PropertyList(NSArray{"1999-12-31T23:59:58Z", "2026-01-05T09:41:00Z"}))
        << name;
  }
}

TEST(PropertyList, StringsThatNoReaderWouldTakeAreRepairedWhenWritten) {
  const ScratchFolder folder;
  const PropertyList hostile =
      NSArray{std::string("a\0b", 3), "half \xE2\x82", "\xED\xA0\x80 surrogate", "bell \a"};
  folder.write("binary", hostile.binary());
  folder.write("xml", hostile.xml());
  const std::string in = "import os, plistlib; os.chdir('" + folder.path().string() + "')\n";
  const std::string repaired = R"(['a\ufffdb', 'half \ufffd\ufffd', '\ufffd\ufffd\ufffd surrogate', 'bell )";
  EXPECT_EQ(outputOfPython(folder, in + "print(ascii(plistlib.load(open('binary','rb'))))"),
            repaired + "\\x07']\n");
  EXPECT_EQ(outputOfPython(folder, in + "print(ascii(plistlib.load(open('xml','rb'))))"),
            repaired + "\\ufffd']\n");
}

/// A binary property list of raw objects, the first of which is the root; references are one or two bytes.
Bytes binaryOf(const std::vector<std::string>& objects, int referenceSize = 1) {
  std::string file = "bplist00", table;
  const auto put = [](std::string& to, std::uint64_t value, int size) {
    while (size-- > 0) to += static_cast<char>(value >> (8 * size));
  };
  for (const auto& object : objects) {
    put(table, file.size(), 4);
    file += object;
  }
  const std::size_t start = file.size();
  file += table + std::string(6, '\0');
  put(file, 4, 1);
  put(file, static_cast<std::uint64_t>(referenceSize), 1);
  put(file, objects.size(), 8);
  put(file, 0, 8);
  put(file, start, 8);
  return bytesOf(file);
}

/// Each array holds the next one `width` times; the last object is `leaf`.
Bytes laughs(int levels, int width, const std::string& leaf) {
  std::vector<std::string> objects;
  for (int i = 1; i <= levels; ++i) {
    objects.push_back(static_cast<char>(0xA0 | width) +
                      std::string(static_cast<std::size_t>(width), static_cast<char>(i)));
  }
  objects.push_back(leaf);
  return binaryOf(objects);
}

Bytes nestedBinary(int levels) {
  std::vector<std::string> objects;
  for (int i = 1; i < levels; ++i)
    objects.push_back({'\xA1', static_cast<char>(i >> 8), static_cast<char>(i)});
  objects.push_back("\xA0");
  return binaryOf(objects, 2);
}

Bytes xmlOf(const std::string& value) {
  return bytesOf("<?xml version=\"1.0\"?>\n<plist>\n" + value + "\n</plist>");
}

Bytes nestedXML(int levels) {
  std::string text;
  for (int i = 0; i < levels; ++i) text += "<array>";
  for (int i = 0; i < levels; ++i) text += "</array>";
  return xmlOf(text);
}

TEST(PropertyList, RefusesWhatIsDamagedOrHostileAndSaysWhy) {
  const std::string megabyte = std::string("\x4F\x12\x00\x10\x00\x00", 6) + std::string(1 << 20, 'x');
  struct Case {
    const char* name;
    Bytes bytes;
    const char* problem;
  };
  const Case cases[] = {
      {"nothing", {}, "is empty"},
      {"a picture", bytesOf("\x89PNG\r\n"), "neither"},
      {"header alone", bytesOf("bplist00"), "cut short"},
      {"other version", bytesOf("bplist99" + std::string(40, '\0')), "unknown version"},
      {"no objects", binaryOf({}), "damaged trailer"},
      {"array in itself", binaryOf({"\xA1\x01", std::string("\xA1\x00", 2)}), "contains itself"},
      {"values without end", laughs(20, 10, "\x08"), "1,000,000 values"},
      {"bytes without end", laughs(5, 10, megabyte), "256 MB"},
      {"513 levels", nestedBinary(513), "512 levels"},
      {"count beyond the file", binaryOf({"\xAF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}), "cut short"},
      {"data beyond the file", binaryOf({"\x4F\x12\x00\xFF\xFF\xFF"}), "cut short"},
      {"reference to nowhere", binaryOf({"\xA1\x05"}), "does not exist"},
      {"number as key", binaryOf({"\xD1\x01\x01", std::string("\x10\x00", 2)}), "key that is not a string"},
      {"key twice", binaryOf({"\xD2\x01\x01\x01\x01", "\x51k"}), "key twice"},
      {"text that is not ASCII", binaryOf({"\x51\xFF"}), "not characters"},
      {"lone surrogate", binaryOf({std::string("\x61\xDC\x00", 3)}), "not characters"},
      {"half a character", binaryOf({std::string("\x61\xD8\x00", 3)}), "within a character"},
      {"128 bits", binaryOf({"\x14" + std::string(16, '\x7F')}), "64 bits"},
      {"a date of no calendar", binaryOf({std::string("\x33\x7F\xF0\0\0\0\0\0\0", 9)}),
       "damaged real or date"},
      {"a set", binaryOf({"\xC0"}), "unknown kind"},
      {"XML cut short", bytesOf("<plist>\n<array>"), "not well-formed XML"},
      {"XML of something else", bytesOf("<html></html>"), "without a <plist>"},
      {"513 levels of XML", nestedXML(513), "512 levels"},
      {"XML key twice", xmlOf("<dict><key>k</key><true/>\n<key>k</key><true/></dict>"),
       "twice in a <dict> (line 4)"},
      {"XML key without value", xmlOf("<dict><key>k</key></dict>"), "without a value (line 3)"},
      {"XML value without key", xmlOf("<dict><true/></dict>"), "without a <key>"},
      {"XML data", xmlOf("<data>AAA!</data>"), "not base64"},
      {"XML data, one digit over", xmlOf("<data>AAAAA</data>"), "not base64"},
      {"XML integer", xmlOf("<integer>9223372036854775808</integer>"), "64 bits"},
      {"XML integer of letters", xmlOf("<integer>12a</integer>"), "<integer>"},
      {"XML real", xmlOf("<real>a lot</real>"), "not a number"},
      {"XML of an unknown kind", xmlOf("<money>3</money>"), "<money>"},
      {"two values", xmlOf("<true/><true/>"), "more than one value"},
  };
  for (const auto& [name, bytes, expected] : cases) {
    std::string problem;
    EXPECT_FALSE(PropertyList::parse(bytes, &problem)) << name;
    EXPECT_NE(problem.find(expected), std::string::npos) << name << ": " << problem;
  }
  // The limits themselves are still read.
  EXPECT_TRUE(PropertyList::parse(nestedBinary(512)));
  EXPECT_TRUE(PropertyList::parse(nestedXML(512)));
  EXPECT_TRUE(PropertyList::parse(laughs(5, 10, "\x08")));
}

TEST(PropertyList, SurvivesDamageOfAnyByteAndOfTheEnd) {
  const std::string xml = oneOfEachKind().xml();
  for (const Bytes& whole : {oneOfEachKind().binary(), bytesOf(xml)}) {
    for (std::size_t i = 0; i + 1 < whole.size(); ++i) {
      EXPECT_NE(PropertyList::parse(std::span(whole).first(i)), oneOfEachKind()) << "cut to " << i;
      for (const int change : {0x01, 0x10, 0x80, 0xFF}) {
        Bytes damaged = whole;
        damaged[i] ^= static_cast<std::uint8_t>(change);
        // What is accepted is a value like any other: it can be written and read again.
        const auto read = PropertyList::parse(damaged);
        EXPECT_TRUE(!read || PropertyList::parse(read->binary())) << i;
      }
    }
  }
}

TEST(PropertyList, ReadsOnlyRegularFiles) {
  const ScratchFolder folder;
  std::string problem;
  EXPECT_FALSE(PropertyList::parse(folder.path(), &problem));
  EXPECT_EQ(problem, "is not a readable file");
  EXPECT_FALSE(PropertyList::parse(folder.path() / "none", &problem));
  EXPECT_EQ(problem, "does not exist");
}

}  // namespace
