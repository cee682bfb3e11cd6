#include "Device/Applications.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "Device/Device.h"
#include "support/ScratchFolder.h"

namespace {

using namespace ios;
using namespace std::chrono_literals;
using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;
using testing_support::ScratchFolder;

class ApplicationsTest : public testing::Test {
 protected:
  ApplicationsTest() {
    Clock::shared().useVirtualTime(Clock::Instant(5s));
    Device::start({.root = folder_.path() / "phone",
                   .mainBundle = folder_.path(),
                   .bundleIdentifier = "com.example.host"});
  }
  ~ApplicationsTest() override { setDiskFault(nullptr); }

  Applications& applications() { return Device::current().applications(); }

  /// A bundle folder outside the device, with a script as its executable.
  std::filesystem::path bundle(const std::string& identifier, const std::string& script = "exit 0",
                               const std::string& scheme = "Report") {
    const NSDictionary info{
        {"CFBundleIdentifier", identifier},
        {"CFBundleExecutable", "run"},
        {"CFBundleURLTypes", NSArray{NSDictionary{{"CFBundleURLSchemes", NSArray{"other", scheme}}}}},
    };
    folder_.write("bundles/" + identifier + "/Info.plist", PropertyList(info).xml());
    return folder_.writeScript("bundles/" + identifier + "/run", script).parent_path();
  }

  LaunchResult launch(const InstalledApplication& application, const std::string& url = "report:") {
    std::optional<LaunchResult> result;
    applications().launch(application, url, [&result](const LaunchResult& ended) { result = ended; });
    EXPECT_FALSE(result) << "told before launch had returned";
    EXPECT_TRUE(Clock::shared().runUntil([&result] { return result.has_value(); }, 0s)) << "time had to move";
    return result.value_or(LaunchResult{});
  }

  ScratchFolder folder_;
};

TEST_F(ApplicationsTest, AreInstalledReplacedFoundBySchemeAndRemoved) {
  ASSERT_FALSE(applications().install(bundle("com.example.b")));
  ASSERT_FALSE(applications().install(bundle("com.example.a", "exit 1")));
  ASSERT_FALSE(applications().install(bundle("com.example.a", "exit 2")));
  EXPECT_EQ(folder_.read("phone/Applications/com.example.a/run"), "#!/bin/sh\nexit 2");
  ASSERT_TRUE(applications().forScheme("rEPORT"));
  EXPECT_EQ(applications().forScheme("rEPORT")->bundleIdentifier, "com.example.a");
  EXPECT_FALSE(applications().forScheme("rep"));
  ASSERT_FALSE(applications().uninstall("com.example.a"));
  ASSERT_FALSE(applications().uninstall("com.example.none"));
  EXPECT_EQ(applications().forScheme("report")->bundleIdentifier, "com.example.b");

  std::vector<std::string> left;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.path() / "phone/Applications")) {
    left.push_back(entry.path().filename());
  }
  EXPECT_EQ(left, std::vector<std::string>{"com.example.b"});
}

TEST_F(ApplicationsTest, ADiskThatRefusesLeavesTheEarlierApplication) {
  ASSERT_FALSE(applications().install(bundle("com.example.a", "exit 1")));
  const auto newer = bundle("com.example.a", "exit 2");
  // Each step in turn: the folder, the files, both renamings.
  int refused = 0;
  for (int step = 0;; ++step) {
    int asked = 0;
    setDiskFault([&asked, step](const std::string& operation, const std::filesystem::path&) {
      return operation != "remove" && asked++ == step ? ENOSPC : 0;
    });
    const auto failure = applications().install(newer);
    setDiskFault(nullptr);
    if (!failure) break;
    ++refused;
    EXPECT_EQ(failure->code, ENOSPC);
    EXPECT_EQ(folder_.read("phone/Applications/com.example.a/run"), "#!/bin/sh\nexit 1") << step;
    EXPECT_EQ(applications().all().size(), 1u) << step;
  }
  EXPECT_GE(refused, 4);
  EXPECT_EQ(folder_.read("phone/Applications/com.example.a/run"), "#!/bin/sh\nexit 2");
}

TEST_F(ApplicationsTest, BundlesWithoutAProperNameAreRefused) {
  const auto good = bundle("com.example.a");
  for (const std::string identifier : {"", "..", ".hidden", "../../escaped", "a/b", "a b"}) {
    folder_.write("bundles/com.example.a/Info.plist",
                  PropertyList(NSDictionary{{"CFBundleIdentifier", identifier}}).xml());
    EXPECT_TRUE(applications().install(good)) << identifier;
    EXPECT_FALSE(applications().uninstall(identifier)) << identifier;
  }
  folder_.write("bundles/com.example.a/Info.plist", std::string("garbage"));
  const auto damaged = applications().install(good);
  ASSERT_TRUE(damaged);
  EXPECT_NE(damaged->description().find("Info.plist: it is neither"), std::string::npos)
      << damaged->description();
  EXPECT_TRUE(applications().install(folder_.path() / "none"));
  EXPECT_TRUE(std::filesystem::exists(folder_.path() / "phone/Settings.plist"));

  // A folder that was put there by hand is skipped, with a line on standard error.
  folder_.write("phone/Applications/com.example.c/Info.plist", std::string("garbage"));
  CaptureStderr();
  EXPECT_TRUE(applications().all().empty());
  EXPECT_NE(GetCapturedStderr().find("Applications/com.example.c/Info.plist is neither"), std::string::npos);
}

TEST_F(ApplicationsTest, LaunchingTellsHowTheProcessEnded) {
  struct Case {
    const char* script;
    int status;
  };
  for (const auto& [script, status] : {Case{"exit 0", 0}, Case{"exit 7", 7}, Case{"kill -9 $$", 137}}) {
    ASSERT_FALSE(applications().install(bundle("com.example.a", script)));
    const LaunchResult result = launch(*applications().withIdentifier("com.example.a"));
    EXPECT_TRUE(result.started) << script;
    EXPECT_EQ(result.status, status) << script;
  }
  EXPECT_EQ(Clock::shared().now(), Clock::Instant(5s));

  applications().setTimeLimit(1ms);
  ASSERT_FALSE(applications().install(bundle("com.example.a", "exec tail -f /dev/null")));
  const LaunchResult killed = launch(*applications().withIdentifier("com.example.a"));
  EXPECT_EQ(killed.status, 137);
  EXPECT_EQ(killed.problem, "com.example.a had not ended in time and was killed");
}

TEST_F(ApplicationsTest, WhatCannotBeLaunchedIsNamed) {
  ASSERT_FALSE(applications().install(bundle("com.example.a")));
  InstalledApplication application = *applications().withIdentifier("com.example.a");
  folder_.write("phone/Applications/com.example.a/notes", std::string("text"));
  folder_.writeScript("phone/Applications/com.example.a/broken", "");
  folder_.write("phone/Applications/com.example.a/broken", std::string("\x7F"
                                                                       "ELF garbage"));
  std::filesystem::create_symlink("/bin/sh", folder_.path() / "phone/Applications/com.example.a/link");
  struct Case {
    PropertyList executable;
    const char* problem;
  };
  for (const auto& [executable, problem] : {
           Case{1, "names no executable"},
           Case{"", "names no executable"},
           Case{"../../../bundles/com.example.a/run", "leads outside the bundle"},
           Case{"/bin/sh", "\"/bin/sh\" leads outside the bundle"},
           Case{"link", "\"link\" leads outside the bundle"},
           Case{"none", "there is no "},
           Case{".", "names no executable"},
           Case{"notes", "is not executable"},
           Case{"broken", "Exec format error"},
       }) {
    application.info["CFBundleExecutable"] = executable;
    const LaunchResult result = launch(application);
    EXPECT_FALSE(result.started) << problem;
    EXPECT_NE(result.problem.find(problem), std::string::npos) << result.problem;
  }
}

TEST_F(ApplicationsTest, TheProcessIsToldItsDeviceAndInheritsNothingElse) {
  setenv("IOS_CONTROL", "77", 1);
  setenv("IOS_OPEN_URL", "stale:", 1);
  // Open without close-on-exec, as a driver's stream is.
  const int leak = dup2(open("/dev/null", O_RDONLY), 77);
  ASSERT_EQ(leak, 77);
  ASSERT_FALSE(applications().install(bundle("com.example.a",
                                             "env | grep ^IOS_ | sort\n"
                                             "ls /proc/$$/fd > \"$IOS_BUNDLE/list\"\n"
                                             // From 10 on the shell keeps its own.
                                             "echo descriptors: $(grep -v '^1[0-9]$' \"$IOS_BUNDLE/list\")\n"
                                             "echo input: $(cat | wc -c)\n")));
  Clock::shared().runFor(1500ms);
  CaptureStdout();
  CaptureStderr();
  EXPECT_EQ(launch(*applications().withIdentifier("com.example.a"), "report:new?a=1").status, 0);
  close(leak);
  const std::string root = (folder_.path() / "phone").string();
  EXPECT_EQ(GetCapturedStderr(),
            "IOS_BUNDLE=" + root + "/Applications/com.example.a\nIOS_DEVICE=" + root +
                "\nIOS_OPEN_URL=report:new?a=1\nIOS_VIRTUAL_TIME=6500000000 1767606061500000000\n"
                "descriptors: 0 1 2\ninput: 0\n");
  EXPECT_EQ(GetCapturedStdout(), "") << "the host's console is its own";
}

}  // namespace
