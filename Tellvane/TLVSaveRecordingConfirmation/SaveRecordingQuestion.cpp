#include "TLVSaveRecordingConfirmation/SaveRecordingQuestion.h"

namespace tellvane {

SaveRecordingQuestion saveRecordingQuestion(const std::string& album, const std::string& application) {
  SaveRecordingQuestion question;
  question.text = "Save this video to " + album + " with AppName \"" + application + "\"?";
  for (const auto& name : {album, application}) {
    if (const auto range = rangeOfString(question.text, name)) question.emphasised.push_back(*range);
  }
  return question;
}

}  // namespace tellvane
