#include <cerrno>
#include <filesystem>
#include <fstream>

#include "UIKit/UIPasteboard.h"
#include "platform/UIKit/Support.h"

namespace controllers_test {
namespace {

std::shared_ptr<NSData> data(const std::string& text) {
  return std::make_shared<NSData>(Bytes(text.begin(), text.end()));
}

std::string text(const std::shared_ptr<NSData>& data) {
  return {reinterpret_cast<const char*>(data->bytes().data()), data->length()};
}

TEST(Pasteboard, IsAFileThatOthersRead) {
  TestPhone phone;
  const auto& pasteboard = UIPasteboard::generalPasteboard();
  EXPECT_TRUE(pasteboard->items().empty()) << "no file yet";
  pasteboard->setItems(
      {{{"dictionaryInApp", data("record")}, {"imageData", data("jpeg")}, {"none", nullptr}}});
  const std::string file = "'" + phone.device().pasteboardFile().string() + "'";
  const std::string show = "python3 -c \"import plistlib; print(plistlib.load(open(" + file +
                           ", 'rb'), fmt=plistlib.FMT_BINARY))\"";
  EXPECT_EQ("{'changeCount': 1, 'items': [{'dictionaryInApp': b'record', 'imageData': b'jpeg'}]}\n",
            testing_support::outputOf(show));

  // Another process puts something there, in the other plist form.
  testing_support::outputOf(
      "python3 -c \"import plistlib; plistlib.dump({'changeCount': 7, 'items': [{'t': b'x'}]}, open(" + file +
      ", 'wb'))\"");
  ASSERT_EQ(1u, pasteboard->items().size());
  EXPECT_EQ("x", text(pasteboard->items()[0].at("t")));
  pasteboard->setItems({});
  EXPECT_EQ("{'changeCount': 8, 'items': []}\n", testing_support::outputOf(show)) << "empty, not gone";
}

TEST(Pasteboard, ADiskThatRefusesKeepsTheOldItems) {
  TestPhone phone;
  const auto& pasteboard = UIPasteboard::generalPasteboard();
  pasteboard->setItems({{{"t", data("old")}}});
  const auto folder = phone.device().pasteboardFile().parent_path();
  for (const int error : {ENOSPC, EROFS, EIO}) {
    setDiskFault([error](const std::string&, const std::filesystem::path&) { return error; });
    const auto said = complaintsOf([&] { pasteboard->setItems({{{"t", data("new")}}}); });
    setDiskFault(nullptr);
    EXPECT_EQ(0u, said.find("tellvane-platform: the pasteboard was not changed: ")) << said;
    EXPECT_EQ("old", text(pasteboard->items().at(0).at("t")));
    EXPECT_EQ(1, pasteboard->changeCount());
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(folder), {}))
        << "nothing else is left behind";
  }
  pasteboard->setItems({{{"t", data("new")}}});
  EXPECT_EQ("new", text(pasteboard->items().at(0).at("t")));

  setDiskFault([](const std::string&, const std::filesystem::path&) { return ENOSPC; });
  EXPECT_EQ("", complaintsOf([&] { pasteboard->setItems({}); }));
  EXPECT_TRUE(pasteboard->items().empty()) << "emptying takes no space";
  setDiskFault(nullptr);
}

TEST(Pasteboard, DamageCountsAsEmptyAndIsOverwritten) {
  TestPhone phone;
  const auto& pasteboard = UIPasteboard::generalPasteboard();
  pasteboard->setItems({{{"t", data("whole")}}});
  const auto file = phone.device().pasteboardFile();
  const auto whole = *readFile(file);
  const Bytes half(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(whole.size() / 2));
  const std::vector<std::pair<const char*, Bytes>> rows = {
      {"truncated", half},
      {"no plist", Bytes{'h', 'i'}},
      {"nothing", Bytes{}},
      {"a list", PropertyList(NSArray{1, 2}).binary()},
      {"no items", PropertyList(NSDictionary{{"changeCount", 1}}).binary()},
      {"items of another kind",
       PropertyList(NSDictionary{{"changeCount", 1}, {"items", NSArray{"text"}}}).binary()},
      {"bytes of another kind",
       PropertyList(NSDictionary{{"changeCount", 1}, {"items", NSArray{NSDictionary{{"t", 5}}}}}).binary()}};
  for (const auto& [name, bytes] : rows) {
    SCOPED_TRACE(name);
    ASSERT_FALSE(writeFileAtomically(file, bytes));
    const auto said = complaintsOf([&] { EXPECT_TRUE(pasteboard->items().empty()); });
    EXPECT_EQ(0u, said.find("tellvane-platform: the pasteboard counts as empty: ")) << said;
    complaintsOf([&] { pasteboard->setItems({{{"t", data("fresh")}}}); });
    EXPECT_EQ("fresh", text(pasteboard->items().at(0).at("t")));
  }
}

}  // namespace
}  // namespace controllers_test
