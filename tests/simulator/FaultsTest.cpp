#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <fstream>

#include "SimulatorFixture.h"

namespace {

namespace fs = std::filesystem;

TEST_F(Simulator, RefusesWhatItIsStartedWithAndTouchesNothing) {
  folder_.write("bundles/notABundle/readme.txt", std::string("mine"));
  folder_.write("bundle/Info.plist", std::string("mine"));
  const std::string bundles = (path() / "bundles").string(), bundle = (path() / "bundle").string();
  const struct {
    std::string options, complaint;
  } kCases[] = {
      {"--language ''", "\"\" is not a language tag"},
      {"--language de_AT", "\"de_AT\" is not a language tag"},
      {"--applications " + bundles + "/gone", "there is no folder " + bundles + "/gone"},
      {"--applications " + bundles, "notABundle is not a bundle: it has no Info.plist"},
      {"--applications " + bundle, "bundle is a bundle itself"},
      {"--time-limit 0", "--time-limit"},
      {"--out " + std::string(500, 'x'), "its path has more than 440 bytes"},
  };
  for (const auto& c : kCases) {
    const fs::path flow = folder_.write("f.yaml", std::string("appId: a.b\n---\n- assertVisible: Notes\n"));
    const Outcome outcome = shell("cd '" + path().string() + "'; '" SIMULATOR "' " + c.options + " f.yaml");
    EXPECT_EQ(outcome.status, c.options.starts_with("--out") ? 73 : 64) << c.options << outcome.output;
    EXPECT_TRUE(outcome.says(c.complaint)) << c.options << outcome.output;
    EXPECT_FALSE(fs::exists(path() / "out")) << c.options;
  }

  // An identifier that is a path would have its folder taken for the application's data.
  folder_.write("precious/file", std::string("mine"));
  const Outcome outcome =
      playText("- launchApp: {appId: " + (path() / "precious").string() + ", clearState: true}\n");
  EXPECT_EQ(outcome.status, 65) << outcome.output;
  EXPECT_TRUE(outcome.says("f.yaml:3:22: launchApp: expected a bundle identifier")) << outcome.output;
  EXPECT_TRUE(fs::exists(path() / "precious/file"));
}

TEST_F(Simulator, TakesAFlowFromWhereverItComes) {
  const std::string flow = "appId: a.b\n---\n- assertVisible: Notes\n";
  folder_.write("f.yaml", flow);
  fs::create_directories(path() / "none");
  const std::string here = "cd '" + path().string() + "'; ";
  for (const std::string& line : {
           std::string("'" SIMULATOR "' - <f.yaml"),
           std::string("'" SIMULATOR "' /dev/stdin <f.yaml"),
           std::string("mkfifo pipe; cat f.yaml >pipe & '" SIMULATOR "' pipe"),
           std::string("'" SIMULATOR "' --applications none f.yaml"),
       }) {
    const Outcome outcome = shell(here + line);
    EXPECT_EQ(outcome.status, 0) << line << outcome.output;
    EXPECT_TRUE(outcome.says("“Notes” is on the screen")) << line << outcome.output;
  }
  // A terminal must not do what a flow says, nor a NUL hide the rest.
  const Outcome outcome = playText("- assertVisible: \"a\\e[31mb\\0c\"\n");
  EXPECT_TRUE(outcome.says("assertVisible: expected \"a?[31mb?c\"; on the screen: ")) << outcome.output;
}

TEST_F(Simulator, SaysWhyAnApplicationCannotBeHad) {
  const struct {
    const char *name, *executable, *info, *complaint;
  } kCases[] = {
      {"leads out", "../../../bin/sh", nullptr,
       "its executable \"../../../bin/sh\" leads outside the bundle"},
      {"not there", "walk", nullptr, "there is no "},
      {"damaged", "run", "<plist><dict>", "Info.plist: it "},
  };
  for (const auto& c : kCases) {
    makeApplication("com.example.broken", "exit 0", c.executable);
    if (c.info) folder_.write("com.example.broken/Info.plist", std::string(c.info));
    const Outcome outcome =
        playText("- installApp: ./com.example.broken\n- launchApp\n", "com.example.broken");
    EXPECT_EQ(outcome.status, 1) << c.name << outcome.output;
    EXPECT_TRUE(outcome.says(c.complaint)) << c.name << outcome.output;
  }
}

// Each takes what an application must never be able to take: the time, the memory, the disk, the last word.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr const char* kLimit = "";  // a sanitizer reserves more than any limit leaves
#else
/// Of memory far more than a run takes, and less than a flood of two seconds.
constexpr const char* kLimit = "ulimit -v 1500000; ";
#endif

TEST_F(Simulator, OutlivesAnApplicationThatHangsOrFloods) {
  const struct {
    const char *name, *script, *complaint;
  } kCases[] = {
      {"hangs", "exec tail -f /dev/null", "com.example.broken did not answer for 2 seconds"},
      {"stops halfway through an answer", "printf '\\0\\0\\20\\0half' >&3; exec tail -f /dev/null",
       "did not answer for 2 seconds"},
      {"floods both outputs", "yes errors >&2 & exec yes 'a line of the console'",
       "did not answer for 2 seconds"},
      {"floods with one line", "exec cat /dev/zero", "did not answer for 2 seconds"},
  };
  for (const auto& c : kCases) {
    makeApplication("com.example.broken", c.script);
    const Outcome outcome = playText("- installApp: ./com.example.broken\n- launchApp\n",
                                     "com.example.broken", "--time-limit 2", kLimit);
    EXPECT_EQ(outcome.status, 1) << c.name << outcome.output.substr(0, 2000);
    EXPECT_TRUE(outcome.says(c.complaint)) << c.name << outcome.output.substr(0, 2000);
    EXPECT_LE(fs::file_size(path() / "out/console.log"), std::uintmax_t{16} << 20) << c.name;
    EXPECT_LE(fs::file_size(path() / "out/errors.log"), std::uintmax_t{16} << 20) << c.name;
  }

  // What the console has dropped it says, and does not pretend to have searched.
  makeApplication("com.example.broken", "echo first; yes | head -c 40000000; echo last; exit 3");
  const Outcome outcome = playText("- installApp: ./com.example.broken\n- launchApp\n", "com.example.broken");
  EXPECT_TRUE(outcome.says("ended with exit status 3")) << outcome.output.substr(0, 2000);
  const std::string log = folder_.read("out/console.log");
  EXPECT_EQ(log.substr(0, 1), "[") << log.substr(0, 100);
  EXPECT_NE(log.substr(0, 100).find(" bytes before this were dropped]\n"), std::string::npos);
  EXPECT_TRUE(log.ends_with("\nlast\n"));
}

TEST_F(Simulator, KeepsWhatThereIsWhenItIsInterruptedOrTheDiskRefuses) {
  makeApplication("com.example.broken", "kill -INT $PPID; exec tail -f /dev/null");
  const Outcome interrupted = playText(
      "- launchApp: {arguments: {debug: true, microphone: false}}\n- wait: 3\n"
      "- tapOn: {point: \"50%,50%\", repeat: 3}\n- tapOn: Capture Screen\n- assertVisible: Report received\n"
      "- installApp: ./com.example.broken\n- launchApp: com.example.broken\n- wait: 86400\n");
  EXPECT_EQ(interrupted.status, 130) << interrupted.output;
  EXPECT_TRUE(interrupted.says("f.yaml:9: launchApp: interrupted")) << interrupted.output;
  EXPECT_TRUE(fs::exists(path() / "out/inbox/index.html"));

  // A pipe cannot be copied; the step's own message must not be lost over that.
  makeApplication("com.example.broken",
                  "mkdir -p \"$IOS_DEVICE/Media/DCIM\"; mkfifo \"$IOS_DEVICE/Media/DCIM/pipe\"; exit 3");
  const Outcome refused = playText("- installApp: ./com.example.broken\n- launchApp\n", "com.example.broken");
  EXPECT_EQ(refused.status, 1) << refused.output;
  EXPECT_TRUE(refused.says("f.yaml:4: launchApp: com.example.broken ended with exit status 3"))
      << refused.output;
  EXPECT_TRUE(refused.says("Media/DCIM/pipe")) << refused.output;
}

TEST_F(Simulator, SharesItsOutputFolderWithNobody) {
  const std::string flow = "- takeScreenshot: home\n- assertVisible: Nothing\n";
  // What looks like a run's is not.
  folder_.write("out/device/file", std::string("mine"));
  folder_.write("out/console.log", std::string("mine"));
  EXPECT_EQ(playText(flow).status, 73);
  EXPECT_EQ(folder_.read("out/console.log"), "mine");
  EXPECT_EQ(folder_.read("out/device/file"), "mine");

  fs::remove_all(path() / "out");
  EXPECT_EQ(playText(flow).status, 1);
  std::string marker = folder_.read("out/.tellvane-run");
  folder_.write("out/.tellvane-run", marker.insert(marker.find('\n'), "; process 4711"));
  const int held = ::open((path() / "out/.tellvane-run").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::flock(held, LOCK_EX), 0);
  const Outcome second = playText(flow);
  ::close(held);
  EXPECT_EQ(second.status, 73);
  EXPECT_TRUE(second.says("another run holds it: process 4711")) << second.output;
  EXPECT_EQ(playText(flow).status, 1);
}

}  // namespace
