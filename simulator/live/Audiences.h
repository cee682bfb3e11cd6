#pragma once

#include "simulator/live/Audience.h"

namespace simulator {

/// Two audiences as one. Files are kept by the first.
class Audiences : public Audience {
 public:
  Audiences(Audience& first, Audience& second) : first_(first), second_(second) {}

  void topic(const std::string& name, std::string text) override {
    first_.topic(name, text);
    second_.topic(name, std::move(text));
  }
  void topicOnDemand(const std::string& name, std::string text) override {
    first_.topicOnDemand(name, text);
    second_.topicOnDemand(name, std::move(text));
  }
  void consoleLines(std::vector<std::string> lines) override {
    first_.consoleLines(lines);
    second_.consoleLines(std::move(lines));
  }
  void remark(std::string text) override {
    first_.remark(text);
    second_.remark(std::move(text));
  }
  void touchesApplied(ViewerId viewer, std::uint32_t number, bool visible) override {
    first_.touchesApplied(viewer, number, visible);
    second_.touchesApplied(viewer, number, visible);
  }
  void displayChanged(const PixelRect& rect, std::chrono::nanoseconds time) override {
    first_.displayChanged(rect, time);
    second_.displayChanged(rect, time);
  }
  std::string keepFile(const std::string& name, std::string bytes) override {
    return first_.keepFile(name, std::move(bytes));
  }

 private:
  Audience& first_;
  Audience& second_;
};

}  // namespace simulator
