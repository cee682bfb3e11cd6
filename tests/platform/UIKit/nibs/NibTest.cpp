#include "UIKit/UINib.h"

#include <gtest/gtest.h>

#include "UIKit/UIColor.h"
#include "UIKit/UIControl.h"
#include "UIKit/UILabel.h"
#include "support/ScratchFolder.h"
#include "support/TestPhone.h"

namespace {

using namespace ios;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using testing_support::ScratchFolder;
using testing_support::TestPhone;

/// A screen with outlets and actions, as an interface file sees it.
class Screen : public Subclass<Screen, UIViewController> {
 public:
  using Subclass::Subclass;
  static MethodList methods() {
    return {{"setQuestion:", &Screen::setQuestion},
            {"setLevel:", &Screen::setLevel},
            {"answer:", &Screen::answer},
            {"count", &Screen::count},
            {"answer:twice:", &Screen::answerTwice}};
  }
  std::weak_ptr<UILabel> question;
  std::vector<id> answers;
  int counted = 0;

 private:
  void setQuestion(const std::shared_ptr<UILabel>& label) { question = label; }
  void setLevel(long) {}
  void answer(const id& sender) { answers.push_back(sender); }
  void answerTwice(const id&, const id&) {}
  void count() { ++counted; }
};

/// A whole document whose view holds `inside`, and whose owner has `connections`.
std::string document(const std::string& inside, const std::string& connections = "") {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><document version=\"3.0\"><objects>"
         "<placeholder placeholderIdentifier=\"IBFilesOwner\" id=\"-1\"><connections>"
         "<outlet property=\"view\" destination=\"root\"/>" +
         connections +
         "</connections></placeholder><placeholder placeholderIdentifier=\"IBFirstResponder\" id=\"-2\"/>"
         "<view id=\"root\"><rect key=\"frame\" x=\"0\" y=\"0\" width=\"300\" height=\"400\"/>"
         "<autoresizingMask widthSizable=\"YES\" heightSizable=\"YES\"/><subviews>" +
         inside + "</subviews></view></objects></document>";
}

std::string button(const std::string& connections, const std::string& identifier = "b") {
  return "<button id=\"" + identifier +
         "\"><rect key=\"frame\" x=\"50\" y=\"100\" width=\"200\" height=\"50\"/><state key=\"normal\" "
         "title=\"Press\"/><connections>" +
         connections + "</connections></button>";
}

std::string label(const std::string& attributes, const std::string& inside = "") {
  return "<label id=\"l\" " + attributes +
         "><rect key=\"frame\" x=\"10\" y=\"10\" width=\"100\" height=\"30\"/>" + inside + "</label>";
}

class Nib : public testing::Test {
 protected:
  void write(const std::string& file, const std::string& text) { folder_.write(file, text); }
  std::shared_ptr<Screen> screen() {
    return std::make_shared<Screen>("Screen", std::make_shared<NSBundle>(folder_.path()));
  }
  /// Loads the screen's view; `log` has what was said about that.
  std::shared_ptr<Screen> loaded() {
    auto screen = this->screen();
    CaptureStderr();
    screen->view();
    log_ = GetCapturedStderr();
    return screen;
  }
  std::size_t lines() const { return static_cast<std::size_t>(std::count(log_.begin(), log_.end(), '\n')); }

  ScratchFolder folder_;
  std::string log_;
};

TEST_F(Nib, ViewsAreAsTheDocumentSays) {
  const TestPhone phone;
  write("Screen.xib",
        document("<label id=\"l\" text=\"A &quot;b&quot;\" textAlignment=\"right\" numberOfLines=\"2\">"
                 "<rect key=\"frame\" x=\"10\" y=\"20.5\" width=\"280\" height=\"40\"/>"
                 "<autoresizingMask widthSizable=\"YES\" flexibleMinY=\"YES\"/>"
                 "<fontDescription name=\"HelveticaNeue-Medium\" pointSize=\"13\"/></label>"
                 "<view id=\"v\" hidden=\"YES\" clipsSubviews=\"YES\" tag=\"7\">"
                 "<rect key=\"frame\" x=\"1\" y=\"2\" width=\"3\" height=\"4\"/>"
                 "<color key=\"backgroundColor\" red=\"1\" green=\"0.5\" blue=\"0\" alpha=\"0.25\"/>"
                 "<userDefinedRuntimeAttributes><userDefinedRuntimeAttribute keyPath=\"layer.cornerRadius\">"
                 "<integer key=\"value\" value=\"9\"/></userDefinedRuntimeAttribute>"
                 "</userDefinedRuntimeAttributes></view>",
                 "<outlet property=\"question\" destination=\"l\"/>"));
  const auto screen = loaded();
  EXPECT_EQ(log_, "");
  const auto label = screen->question.lock();
  ASSERT_TRUE(label);
  EXPECT_EQ(label->text(), "A \"b\"");
  EXPECT_EQ(label->font()->pointSize(), 13);
  // Two lines, no more: the limit was read.
  label->setText("one two three four five six seven eight nine ten eleven twelve thirteen fourteen");
  EXPECT_LT(label->sizeThatFits({100, 1000}).height, 3 * 13 * 1.2);

  screen->view()->setFrame(CGRectMake(0, 0, 400, 500));
  EXPECT_EQ(label->frame(), CGRectMake(10, 120.5, 380, 40));
  const auto& other = screen->view()->subviews().at(1);
  EXPECT_EQ(other->frame(), CGRectMake(1, 2, 3, 4));
  EXPECT_EQ(other->backgroundColor()->CGColorValue(), (CGColor{1, 0.5, 0, 0.25}));
  EXPECT_TRUE(other->isHidden() && other->clipsToBounds());
  EXPECT_EQ(other->tag(), 7);
  EXPECT_EQ(other->layer()->cornerRadius, 9);
}

TEST_F(Nib, TapsReachTheActions) {
  TestPhone phone;
  write("Screen.xib",
        document(button("<action selector=\"answer:\" destination=\"-1\" eventType=\"touchUpInside\"/>"
                        "<action selector=\"count\" destination=\"-1\" eventType=\"touchDown\"/>")));
  const auto screen = loaded();
  EXPECT_EQ(log_, "");
  phone.show(screen);
  EXPECT_TRUE(phone.tapText("Press"));
  phone.runFor(0.5);
  EXPECT_EQ(screen->counted, 1);
  ASSERT_EQ(screen->answers.size(), 1U);
  EXPECT_EQ(screen->answers.front(), screen->view()->subviews().front());
}

TEST_F(Nib, EachLoadMakesViewsOfItsOwn) {
  const TestPhone phone;
  write("Screen.xib", document(label("text=\"x\"")));
  const auto bundle = std::make_shared<NSBundle>(folder_.path());
  const auto nib = UINib::nibWithNibName("Screen", bundle);
  const auto first = nib->instantiateWithOwner(nullptr), second = nib->instantiateWithOwner(nullptr);
  ASSERT_EQ(first.size(), 1U);  // no owner: nothing to connect, and no complaint about it
  ASSERT_EQ(second.size(), 1U);
  EXPECT_NE(first.front(), second.front());
}

TEST_F(Nib, TextsAreInTheUsersLanguage) {
  const std::string strings = "\"l.text\" = \"%\"; \"b.normalTitle\" = \"% drücken\";";
  const auto in = [&](std::string language) {
    std::string text = strings;
    for (std::size_t at; (at = text.find('%')) != std::string::npos;) text.replace(at, 1, language);
    write(language + ".lproj/Screen.strings", text);
  };
  TestPhone::Options options;
  options.languages = {"fi", "de-AT"};
  const TestPhone phone(options);
  in("de");
  in("en");
  const std::string both = document(label("text=\"base\"") + label("text=\"\"") + button(""),
                                    "<outlet property=\"question\" destination=\"l\"/>");
  write("Base.lproj/Screen.xib", both);
  auto screen = loaded();
  EXPECT_EQ(screen->question.lock()->text(), "de");
  EXPECT_EQ(screen->view()->subviews().at(2)->accessibilityLabel(), "de drücken");

  // Finnish has no texts of its own; a document of its own has them in it.
  write("fi.lproj/Screen.xib", both);
  screen = loaded();
  EXPECT_EQ(screen->question.lock()->text(), "base");
}

TEST_F(Nib, IsMirroredForRightToLeftLanguagesUnlessMadeForThem) {
  TestPhone::Options options;
  options.languages = {"he"};
  const TestPhone phone(options);
  const std::string inside =
      "<view id=\"v\"><rect x=\"20\" y=\"30\" width=\"100\" height=\"40\"/>"
      "<autoresizingMask flexibleMaxX=\"YES\" flexibleMinY=\"YES\"/><subviews>"
      "<view id=\"w\"><rect x=\"5\" y=\"0\" width=\"10\" height=\"10\"/></view></subviews></view>"
      "<view id=\"x\"><rect x=\"200\" y=\"0\" width=\"50\" height=\"9\"/>"
      "<autoresizingMask flexibleMinX=\"YES\"/></view>";
  struct Row {
    const char* file;
    CGFloat first, inFirst, firstWidened, secondWidened;  // left edges
  };
  for (const Row& row : {Row{"Screen.xib", 180, 85, 280, 50}, Row{"Base.lproj/Screen.xib", 180, 85, 280, 50},
                         Row{"he.lproj/Screen.xib", 20, 5, 20, 300}}) {
    SCOPED_TRACE(row.file);
    write(row.file, document(inside));
    const auto screen = loaded();
    EXPECT_EQ(log_, "");
    const auto& first = screen->view()->subviews().at(0);
    EXPECT_EQ(first->frame(), CGRectMake(row.first, 30, 100, 40));
    EXPECT_EQ(first->subviews().at(0)->frame(), CGRectMake(row.inFirst, 0, 10, 10));
    screen->view()->setFrame(CGRectMake(0, 0, 400, 500));
    EXPECT_EQ(first->frame(), CGRectMake(row.firstWidened, 130, 100, 40));
    EXPECT_EQ(screen->view()->subviews().at(1)->frame(), CGRectMake(row.secondWidened, 0, 50, 9));
    std::filesystem::remove(folder_.path() / row.file);
  }
}

std::string action(const std::string& attributes) {
  return button("<action " + attributes + "/>");
}

struct Unknown {
  std::string what, inside, connections, complaint;
};
const std::vector<Unknown> kUnknown{
    {"an element", "<hologram id=\"h\"/>", "", "<hologram id=\"h\"> is not a known element"},
    {"a child element",
     "<view id=\"v\"><rect x=\"0\" y=\"0\" width=\"1\" height=\"1\"/><constraints/></view>", "",
     "<constraints> inside <view id=\"v\"> is not known"},
    {"a class",
     "<view id=\"v\" customClass=\"Hologram\"><rect x=\"0\" y=\"0\" width=\"1\" height=\"1\"/></view>", "",
     "unknown class Hologram of <view id=\"v\">"},
    {"a frame", "<view id=\"v\"/>", "", "<view id=\"v\"> has no frame"},
    {"a frame of words", "<view id=\"v\"><rect x=\"0\" y=\"nan\" width=\"1e999\" height=\"many\"/></view>",
     "", "<view id=\"v\"> has no frame"},
    {"a negative size", "<view id=\"v\"><rect x=\"0\" y=\"0\" width=\"-1\" height=\"1\"/></view>", "",
     "has no frame"},
    {"a color", label("", "<color key=\"textColor\" red=\"1\"/>"), "",
     "<color key=\"textColor\"> is not a known color"},
    {"a font", label("", "<fontDescription name=\"Hologram-Bold\" pointSize=\"9\"/>"), "",
     "there is no font named \"Hologram-Bold\""},
    {"an image",
     "<imageView id=\"i\" image=\"hologram\"><rect x=\"0\" y=\"0\" width=\"1\" height=\"1\"/></imageView>",
     "", "there is no image \"hologram\""},
    {"an identifier twice", label("text=\"a\"") + label("text=\"b\""), "", "has the identifier of another"},
    {"an outlet", "", "<outlet property=\"hologram\" destination=\"last\"/>",
     "Screen has no outlet \"hologram\""},
    {"an outlet that takes a number", "", "<outlet property=\"level\" destination=\"last\"/>",
     "has no outlet \"level\""},
    {"an outlet of two", "", "<outlet property=\"question:x\" destination=\"last\"/>",
     "has no outlet \"question:x\""},
    {"an outlet without a name", "", "<outlet destination=\"last\"/>", "has no outlet \"\""},
    {"an outlet to nowhere", "", "<outlet property=\"question\" destination=\"zzz\"/>",
     "leads to \"zzz\", which is not there"},
    {"a connection", "", "<segue destination=\"last\"/>", "<segue> is not a known connection"},
    {"an action", action("selector=\"hologram:\" destination=\"-1\" eventType=\"touchUpInside\""), "",
     "Screen has no action \"hologram:\""},
    {"an action of two", action("selector=\"answer:twice:\" destination=\"-1\" eventType=\"touchUpInside\""),
     "", "has no action \"answer:twice:\""},
    {"an action with a number",
     action("selector=\"setLevel:\" destination=\"-1\" eventType=\"touchUpInside\""), "",
     "has no action \"setLevel:\""},
    {"an event", action("selector=\"answer:\" destination=\"-1\" eventType=\"telepathy\""), "",
     "sends no action at \"telepathy\""},
    {"an action of the owner", "",
     "<action selector=\"answer:\" destination=\"-1\" eventType=\"touchUpInside\"/>",
     "Screen sends no action"},
};

TEST_F(Nib, UnknownElementsAreReportedAndTheRestIsLoaded) {
  const TestPhone phone;
  for (const auto& row : kUnknown) {
    SCOPED_TRACE(row.what);
    write("Screen.xib",
          document(row.inside + "<view id=\"last\"><rect x=\"1\" y=\"2\" width=\"3\" height=\"4\"/></view>",
                   row.connections));
    const auto screen = loaded();
    EXPECT_NE(log_.find("the interface file Screen.xib: "), std::string::npos) << log_;
    EXPECT_NE(log_.find(row.complaint), std::string::npos) << log_;
    EXPECT_EQ(lines(), 1U) << log_;
    ASSERT_FALSE(screen->view()->subviews().empty());
    EXPECT_EQ(screen->view()->subviews().back()->frame(), CGRectMake(1, 2, 3, 4));
  }
}

TEST_F(Nib, AnUnreadableDocumentGivesAPlainView) {
  const TestPhone phone;
  const std::string whole = document(label("text=\"x\""));
  std::string deep, many;
  for (int i = 0; i < 100'000; ++i) deep += "<a>";
  for (int i = 0; i < 100'000; ++i) deep += "</a>";
  for (int i = 0; i < 20'000; ++i) many += "<a/>";
  struct Row {
    std::string what, text, complaint;
  };
  const std::vector<Row> rows{
      {"empty", "", "is not well-formed XML"},
      {"cut", whole.substr(0, whole.size() / 2), "is not well-formed XML at byte"},
      {"a picture", std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16), "Screen.xib: is "},
      {"something else", "<plist/>", "is XML without a <document>"},
      {"nothing in it", "<document/>", "is a document without <objects>"},
      {"deep", document(deep), "is nested deeper than 64 levels"},
      {"wide", document(many), "has more than 10000 elements"},
      {"large", whole + std::string(2'000'000, ' '), "could not read"},
      {"no outlet for the view", "<document><objects/></document>", ""},
      {"a view outlet that leads to no view",
       "<document><objects><placeholder placeholderIdentifier=\"IBFilesOwner\" id=\"-1\"><connections>"
       "<outlet property=\"view\" destination=\"-1\"/></connections></placeholder></objects></document>",
       ""},
  };
  const CGRect plain = CGRectMake(0, 0, 375, 667);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    write("Screen.xib", row.text);
    const auto screen = loaded();
    EXPECT_EQ(screen->view()->frame(), plain);
    EXPECT_TRUE(screen->view()->subviews().empty());
    EXPECT_NE(log_.find(row.complaint), std::string::npos) << log_;
    EXPECT_NE(log_.find("gives <"), std::string::npos) << log_;
    EXPECT_LT(log_.size(), 500U) << log_;
  }
  std::filesystem::remove(folder_.path() / "Screen.xib");
  EXPECT_EQ(loaded()->view()->frame(), plain);
  EXPECT_NE(log_.find("is not in the bundle"), std::string::npos) << log_;
}

/// Every prefix of a document, and every document with one byte of it changed, is loaded or refused.
TEST_F(Nib, DamageAnywhereDoesNotCrash) {
  const TestPhone phone;
  const std::string whole = document(
      label("text=\"ä\" numberOfLines=\"2\"", "<fontDescription name=\"HelveticaNeue\" pointSize=\"9\"/>") +
          button("<action selector=\"answer:\" destination=\"-1\" eventType=\"touchUpInside\"/>"),
      "<outlet property=\"question\" destination=\"l\"/>");
  std::size_t plain = 0, tried = 0;
  const auto tryOut = [&](const std::string& text) {
    write("Screen.xib", text);
    const auto screen = loaded();
    ++tried;
    if (screen->view()->subviews().empty()) ++plain;
  };
  for (std::size_t at = 0; at < whole.size(); at += 3) tryOut(whole.substr(0, at));
  EXPECT_EQ(plain, tried);  // no part of a document is one
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string changed = whole;
    changed[at] = "<\xFF\"-9:"[at % 6];
    tryOut(changed);
  }
  EXPECT_LT(plain, tried);
}

TEST_F(Nib, ADocumentThatIsWrongAllOverDoesNotFillTheLog) {
  const TestPhone phone;
  std::string wrong;
  for (int i = 0; i < 500; ++i) wrong += "<hologram/>";
  write("Screen.xib", document(wrong));
  loaded();
  EXPECT_EQ(lines(), 21U);
  EXPECT_NE(log_.find("and 480 more"), std::string::npos) << log_;
}

}  // namespace
