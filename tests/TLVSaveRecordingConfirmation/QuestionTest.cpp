#include <gtest/gtest.h>

#include "TLVSaveRecordingConfirmation/SaveRecordingQuestion.h"

using namespace tellvane;

namespace {

/// The question with what stands out in brackets, one pair per part.
std::string marked(const std::string& album, const std::string& application) {
  const SaveRecordingQuestion question = saveRecordingQuestion(album, application);
  std::string text;
  for (std::size_t at = 0; at <= question.text.size(); ++at) {
    for (const auto& range : question.emphasised)
      if (range.location + range.length == at) text += ']';
    for (const auto& range : question.emphasised)
      if (range.location == at) text += '[';
    if (at < question.text.size()) text += question.text[at];
  }
  return text;
}

}  // namespace

TEST(SaveRecordingQuestion, NamesStandOutWhereTheyOccurFirst) {
  struct Row {
    std::string album, application, expected;
  };
  const std::vector<Row> rows{
      {"Tellvane", "Notes", "Save this video to [Tellvane] with AppName \"[Notes]\"?"},
      {"Tellvane", "Tellvane-Dev", "Save this video to [Tellvane] with AppName \"[Tellvane-Dev]\"?"},
      {"Tellvane", "video", "Save this [video] to [Tellvane] with AppName \"video\"?"},
      {"Tellvane", "Tellvane", "Save this video to [[Tellvane]] with AppName \"Tellvane\"?"},
      {"Tellvane", "AppName", "Save this video to [Tellvane] with [AppName] \"AppName\"?"},
      {"Tellvane", "S", "[S]ave this video to [Tellvane] with AppName \"S\"?"},
      {"Tellvane", "a\"?", "Save this video to [Tellvane] with AppName \"[a\"?]\"?"},
      {"Tellvane", "Café ☕️", "Save this video to [Tellvane] with AppName \"[Café ☕️]\"?"},
      {"Tellvane", "", "Save this video to [Tellvane] with AppName \"\"?"},
      {"", "", "Save this video to  with AppName \"\"?"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.expected, marked(row.album, row.application));
}
