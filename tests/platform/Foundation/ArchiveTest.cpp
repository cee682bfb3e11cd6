#include <gtest/gtest.h>

#include "Foundation/NSKeyedArchiver.h"
#include "Foundation/NSKeyedUnarchiver.h"
#include "support/ScratchFolder.h"

namespace {

using namespace ios;
using testing_support::outputOfPython;
using testing_support::ScratchFolder;
using UID = PropertyList::UID;

TEST(Archive, OtherReadersFindThePlatformsForm) {
  const ScratchFolder folder;
  const PropertyList record = NSDictionary{
      {"name", "Notes"}, {"copy", "Notes"}, {"list", NSArray{true, 2, 2.5, Bytes{1, 2}, NSDictionary{}}}};
  const auto archive = NSKeyedArchiver::archivedDataWithRootObject(record);
  EXPECT_EQ(archive->bytes(), NSKeyedArchiver::archivedDataWithRootObject(record)->bytes());
  folder.write("archive", archive->bytes());
  // Unfolds it as the platform would: by the class that each object names.
  EXPECT_EQ(
      outputOfPython(folder, "import plistlib; f = open('" + (folder.path() / "archive").string() + R"(','rb')
head = f.read(8)
f.seek(0)
a = plistlib.load(f)
o = a['$objects']
def value(uid):
    v = o[uid.data]
    if not isinstance(v, dict): return v
    c = o[v['$class'].data]
    assert c['$classes'] == [c['$classname'], 'NSObject'], c
    values = [value(u) for u in v['NS.objects']]
    if c['$classname'] == 'NSArray': return values
    assert c['$classname'] == 'NSDictionary' and len(values) == len(v['NS.keys'])
    return dict(zip(map(value, v['NS.keys']), values))
print(head, a['$version'], a['$archiver'], o[0], list(a['$top']), o.count('Notes'))
print(value(a['$top']['root']))
)"),
      "b'bplist00' 100000 NSKeyedArchiver $null ['root'] 1\n"
      "{'copy': 'Notes', 'list': [True, 2, 2.5, b'\\x01\\x02', {}], 'name': 'Notes'}\n");
  EXPECT_EQ(NSKeyedUnarchiver::unarchiveObjectWithData(archive->bytes()), record);
}

/// An archive of raw objects; the first is referred to by "root" and is number 1.
PropertyList archiveOf(NSArray objects) {
  objects.insert(objects.begin(), "$null");
  return NSDictionary{{"$version", 100000},
                      {"$archiver", "NSKeyedArchiver"},
                      {"$top", NSDictionary{{"root", UID{1}}}},
                      {"$objects", objects}};
}

PropertyList classNamed(const std::string& name) {
  return NSDictionary{{"$classname", name}, {"$classes", NSArray{name, "NSObject"}}};
}

PropertyList arrayOf(NSArray references, std::uint64_t type) {
  return NSDictionary{{"NS.objects", std::move(references)}, {"$class", UID{type}}};
}

PropertyList dictionaryOf(NSArray keys, NSArray references, std::uint64_t type) {
  return NSDictionary{
      {"NS.keys", std::move(keys)}, {"NS.objects", std::move(references)}, {"$class", UID{type}}};
}

TEST(Archive, MutableClassesReadAsTheirPlainOnes) {
  const PropertyList archive = archiveOf({
      dictionaryOf({UID{2}, UID{3}}, {UID{4}, UID{5}}, 6),
      NSDictionary{{"NS.string", "key"}, {"$class", UID{7}}},
      "data",
      arrayOf({UID{2}}, 8),
      NSDictionary{{"NS.data", Bytes{7}}, {"$class", UID{9}}},
      classNamed("NSMutableDictionary"),
      classNamed("NSMutableString"),
      classNamed("NSMutableArray"),
      classNamed("NSMutableData"),
  });
  std::string problem;
  EXPECT_EQ(NSKeyedUnarchiver::unarchiveObjectWithData(archive.binary(), &problem),
            PropertyList(NSDictionary{{"key", NSArray{"key"}}, {"data", Bytes{7}}}))
      << problem;
}

/// Arrays in arrays, `levels` deep, each holding the next one `width` times.
PropertyList towers(std::uint64_t levels, std::size_t width, PropertyList leaf) {
  NSArray objects;
  for (std::uint64_t i = 1; i <= levels; ++i)
    objects.push_back(arrayOf(NSArray(width, UID{i + 1}), levels + 2));
  objects.push_back(std::move(leaf));
  objects.push_back(classNamed("NSArray"));
  return archiveOf(std::move(objects));
}

PropertyList with(PropertyList archive, const std::string& key, PropertyList value) {
  NSDictionary members = *archive.dictionary();
  members[key] = std::move(value);
  return members;
}

TEST(Archive, HostileArchivesAreRefusedWithTheReason) {
  const PropertyList good = archiveOf({"text"});
  ASSERT_TRUE(NSKeyedUnarchiver::unarchiveObjectWithData(good.binary()));
  const PropertyList dictionaries = classNamed("NSDictionary");
  struct Case {
    const char* name;
    PropertyList archive;
    const char* problem;
  };
  const Case cases[] = {
      {"a list", NSArray{1}, "not a keyed archive"},
      {"other archiver", with(good, "$archiver", "Other"), "not a keyed archive"},
      {"other version", with(good, "$version", 1), "unknown version"},
      {"objects of one text", with(good, "$objects", "text"), "not a keyed archive"},
      {"no root", with(good, "$top", NSDictionary{}), "not a keyed archive"},
      {"root without a reference", with(good, "$top", NSDictionary{{"root", "text"}}),
       "where a reference belongs"},
      {"root is null", with(good, "$top", NSDictionary{{"root", UID{0}}}), "null"},
      {"root beyond the objects", with(good, "$top", NSDictionary{{"root", UID{0xFFFFFFFF}}}),
       "does not exist"},
      {"raw array", archiveOf({NSArray{1}}), "without a class"},
      {"raw dictionary", archiveOf({NSDictionary{{"a", 1}}}), "without a class"},
      {"reference to a reference", archiveOf({UID{1}}), "without a class"},
      {"class beyond the objects", archiveOf({arrayOf({}, 9)}), "without a class"},
      {"class that is a text", archiveOf({arrayOf({}, 2), "NSArray"}), "without a class"},
      {"null object", archiveOf({NSDictionary{{"$class", UID{2}}}, classNamed("NSNull")}),
       "of class \"NSNull\""},
      {"other class", archiveOf({NSDictionary{{"$class", UID{2}}}, classNamed("NSTask")}),
       "of class \"NSTask\""},
      {"array in itself", archiveOf({arrayOf({UID{1}}, 2), classNamed("NSArray")}), "contains itself"},
      {"cycle of two", archiveOf({arrayOf({UID{2}}, 3), arrayOf({UID{1}}, 3), classNamed("NSArray")}),
       "contains itself"},
      {"array without elements", archiveOf({NSDictionary{{"$class", UID{2}}}, classNamed("NSArray")}),
       "elements"},
      {"fewer values than keys", archiveOf({dictionaryOf({UID{3}}, {}, 2), dictionaries, "k"}),
       "unequal numbers"},
      {"key twice", archiveOf({dictionaryOf({UID{3}, UID{4}}, {UID{3}, UID{3}}, 2), dictionaries, "k", "k"}),
       "twice"},
      {"number as key", archiveOf({dictionaryOf({UID{3}}, {UID{3}}, 2), dictionaries, 5}), "not a string"},
      {"text of no characters",
       archiveOf({NSDictionary{{"NS.string", 5}, {"$class", UID{2}}}, classNamed("NSString")}), "characters"},
      {"data of no bytes", archiveOf({NSDictionary{{"$class", UID{2}}}, classNamed("NSData")}), "bytes"},
      {"129 levels", towers(128, 1, "leaf"), "128 levels"},
      {"values without end", towers(60, 10, "leaf"), "100,000 values"},
      {"texts without end", towers(4, 10, std::string(100'000, 'x')), "256 MB"},
  };
  for (const auto& [name, archive, expected] : cases) {
    std::string problem;
    EXPECT_FALSE(NSKeyedUnarchiver::unarchiveObjectWithData(archive.binary(), &problem)) << name;
    EXPECT_NE(problem.find(expected), std::string::npos) << name << ": " << problem;
  }
  EXPECT_TRUE(NSKeyedUnarchiver::unarchiveObjectWithData(towers(127, 1, "leaf").binary()));
}

TEST(Archive, SurvivesDamageOfAnyByteAndOfTheEnd) {
  const PropertyList record = NSDictionary{{"a", NSArray{1, "b", Bytes{3}}}, {"c", 1.5}};
  const Bytes whole = NSKeyedArchiver::archivedDataWithRootObject(record)->bytes();
  for (std::size_t i = 0; i < whole.size(); ++i) {
    EXPECT_FALSE(NSKeyedUnarchiver::unarchiveObjectWithData(std::span(whole).first(i))) << "cut to " << i;
    for (int change = 1; change < 256; ++change) {
      Bytes damaged = whole;
      damaged[i] ^= static_cast<std::uint8_t>(change);
      std::string problem;
      const auto value = NSKeyedUnarchiver::unarchiveObjectWithData(damaged, &problem);
      EXPECT_TRUE(value || !problem.empty()) << i;
    }
  }
}

}  // namespace
