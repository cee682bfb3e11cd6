#pragma once

#include <vector>

#include "Note.h"
#include "ObjectiveC/NSObject.h"

namespace Notes {

/// The notes, newest first; they live as long as the application runs. Main thread.
class NoteStore : public ios::NSObject {
 public:
  explicit NoteStore(std::vector<Note> notes) : notes_(std::move(notes)) {}
  /// A few notes to look at.
  static std::vector<Note> examples();
  const std::vector<Note>& notes() const { return notes_; }
  void add(Note note) { notes_.insert(notes_.begin(), std::move(note)); }

 private:
  std::vector<Note> notes_;
};

}  // namespace Notes
