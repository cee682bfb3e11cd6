#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "simulator/flow/ScreenRecorder.h"
#include "simulator/live/PacedPhone.h"
#include "simulator/live/ScreenMovie.h"

namespace simulator {

/// Records the screen of a phone that a flow is played on: while it does, whatever takes time on the phone is made of
/// steps of a frame's length, and a picture is taken after each that changes something. The phone puts its display into
/// memory (`Phone::Options::sharesDisplay`). Main thread.
class FlowMovie : public ScreenRecorder {
 public:
  using FileSink = std::function<Problem(const std::string& name, const ios::Bytes& contents)>;
  FlowMovie(PacedPhone& phone, FileSink keepFile) : phone_(phone), keepFile_(std::move(keepFile)) {}
  ~FlowMovie() override;
  FlowMovie(const FlowMovie&) = delete;

  Problem begin(const std::string& name) override;
  Problem end() override;
  bool isRecording() const { return movie_ != nullptr; }

 private:
  using Answer = ios::automation::Step::Answer;
  Answer step(ios::Clock::Duration duration, const std::vector<ios::TouchSample>& touches);
  Answer oneStep(ios::Clock::Duration duration, const std::vector<ios::TouchSample>& touches);
  static std::filesystem::path file();

  PacedPhone& phone_;
  FileSink keepFile_;
  PacedPhone::Pacer pacer_;  // the phone's own
  std::unique_ptr<ScreenMovie> movie_;
  std::string name_;
};

}  // namespace simulator
