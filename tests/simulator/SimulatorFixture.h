#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/Process.h"
#include "support/ScratchFolder.h"

/// Plays flows with the simulator as a person would, each in a folder of its own.
class Simulator : public testing::Test {
 protected:
  using Outcome = testing_support::Outcome;

  /// Its standard output and error.
  static Outcome shell(const std::string& command) {
    return testing_support::run("{ " + command + "\n} 2>&1");
  }
  /// `before`: what the shell does first, such as setting a limit.
  Outcome play(const std::filesystem::path& flow, const std::string& out, const std::string& options = "",
               const std::string& before = "") const {
    return shell(before + "'" SIMULATOR "' " + options + " '" + flow.string() + "' --out '" +
                 (path() / out).string() + "'");
  }
  Outcome playText(const std::string& commands, const std::string& appId = "com.example.notes",
                   const std::string& options = "", const std::string& before = "") const {
    return play(folder_.write("f.yaml", "appId: " + appId + "\n---\n" + commands), "out", options, before);
  }
  /// Into "a" and "b", which must not differ in a byte.
  void playTwiceAlike(const std::filesystem::path& flow) const {
    for (const char* out : {"a", "b"}) {
      const Outcome played = play(flow, out);
      EXPECT_EQ(played.status, 0) << played.output;
    }
    const Outcome difference = shell("diff -r " + (path() / "a").string() + " " + (path() / "b").string());
    EXPECT_EQ(difference.status, 0) << difference.output;
  }
  /// An application that is a shell script.
  void makeApplication(const std::string& identifier, const std::string& script,
                       const std::string& executable = "run") const {
    folder_.write(identifier + "/Info.plist",
                  "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>" + identifier +
                      "</string><key>CFBundleExecutable</key><string>" + executable +
                      "</string></dict></plist>");
    folder_.writeScript(identifier + "/run", script + "\n");
  }
  const std::filesystem::path& path() const { return folder_.path(); }

  testing_support::ScratchFolder folder_;
};
