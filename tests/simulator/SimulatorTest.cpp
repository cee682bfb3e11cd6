#include <filesystem>
#include <fstream>

#include "SimulatorFixture.h"

namespace {

namespace fs = std::filesystem;

TEST_F(Simulator, PlaysTheTourTwiceToTheSameBytes) {
  playTwiceAlike(fs::path(FLOWS) / "tour.yaml");

  // What it leaves, read with other people's readers.
  const Outcome checked = shell("python3 - " + (path() / "a").string() + " <<'END'\n" + R"(
import glob, json, os, plistlib, sqlite3, subprocess, sys
out = sys.argv[1]
for name in ['1-notes', '2-sheet', '3-companion', '4-photos', '5-confirmation', '6-playing', '7-companion',
             '8-sheet-on-a-note', '9-install', '10-store', '11-production']:
    head = open(f'{out}/{name}.png', 'rb').read(24)
    assert head[:8] == b'\x89PNG\r\n\x1a\n', name
    assert (int.from_bytes(head[16:20], 'big'), int.from_bytes(head[20:24], 'big')) == (750, 1334), name
reports = sorted(path for path in glob.glob(f'{out}/inbox/*') if os.path.isdir(path))
assert len(reports) == 2, reports  # the round without the companion files nothing
report, recording = reports
record = json.load(open(f'{report}/record.json'))
assert sorted(record) == sorted(['sdkId', 'appVersion', 'oSFamily', 'appName', 'oSVersion', 'deviceResolution',
                                 'language', 'screenName', 'deviceModel']), record
assert record['screenName'] == 'ListViewController' and record['appVersion'] == '3.0.12', record
archive = plistlib.load(open(f'{report}/item/dictionaryInApp', 'rb'))
assert archive['$archiver'] == 'NSKeyedArchiver', archive
assert open(f'{report}/item/imageData', 'rb').read() == open(f'{report}/image.jpg', 'rb').read()
size = subprocess.run(['djpeg', f'{report}/image.jpg'], check=True, capture_output=True).stdout[:16].split()[1:3]
assert size == [b'750', b'1334'], size
console = open(f'{out}/console.log').read().splitlines()
assert console.count('<TLV Log> : SDK Instantiated in debug mode') == 3, console

record = json.load(open(f'{recording}/record.json'))
assert sorted(record) == sorted(['sdkId', 'appVersion', 'oSFamily', 'appName', 'oSVersion', 'deviceResolution',
                                 'language', 'videoName', 'videoInPhotosAlbum', 'deviceModel']), record
library = sqlite3.connect(f'file:{out}/device/Media/Photos.sqlite?mode=ro', uri=True)
title, uuid, file = library.execute('SELECT title, asset.uuid, file FROM membership JOIN album ON album.id = album '
                                    'JOIN asset ON asset.id = asset').fetchone()
assert (title, uuid + '/L0/001') == ('Tellvane', record['videoInPhotosAlbum']), (title, uuid, record)
movie = open(f'{recording}/movie.mov', 'rb').read()
assert movie == open(f'{out}/device/Media/{file}', 'rb').read() == open(f'{out}/DCIM/100TLVNE/IMG_0001.MOV', 'rb').read()
streams = json.loads(subprocess.run(['ffprobe', '-v', 'error', '-of', 'json', '-show_streams', f'{recording}/movie.mov'],
                                    check=True, capture_output=True).stdout)['streams']
assert [stream['codec_name'] for stream in streams] == ['h264', 'aac'], streams
assert (streams[0]['width'], streams[0]['height']) == (750, 1334), streams
assert all(float(stream['start_time']) == 0 for stream in streams), streams
assert abs(float(streams[0]['duration']) - float(streams[1]['duration'])) < 0.1, streams
assert not os.path.exists(f'{out}/device/Containers/com.example.notes/tmp/screenCapture.mp4')
assert os.path.exists(f'{report}/index.html') and os.path.exists(f'{out}/inbox/index.html')
END
)");
  EXPECT_EQ(checked.status, 0) << checked.output;
}

TEST_F(Simulator, AsksTheUserTwiceAlike) {
  playTwiceAlike(fs::path(FLOWS) / "permissions.yaml");
  const Outcome kept = shell("grep -A 6 com.example.notes " + (path() / "a/device/Settings.plist").string());
  EXPECT_TRUE(kept.says("<key>microphone</key>\n\t\t\t<string>authorized</string>")) << kept.output;
  EXPECT_TRUE(kept.says("<key>photos</key>\n\t\t\t<string>denied</string>")) << kept.output;
}

TEST_F(Simulator, HasTheSystemRecordTwiceTheSameBytes) {
  playTwiceAlike(fs::path(FLOWS) / "system-record.yaml");
  const Outcome checked = shell("python3 - " + (path() / "a").string() + " <<'END'\n" + R"(
import glob, json, os, sqlite3, subprocess, sys
out = sys.argv[1]
library = sqlite3.connect(f'file:{out}/device/Media/Photos.sqlite?mode=ro', uri=True)
[(file, seconds)] = library.execute('SELECT file, duration FROM asset').fetchall()
assert library.execute('SELECT count(*) FROM album').fetchone() == (0,), 'the system makes no album'
streams = json.loads(subprocess.run(['ffprobe', '-v', 'error', '-of', 'json', '-show_streams', f'{out}/device/Media/{file}'],
                                    check=True, capture_output=True).stdout)['streams']
assert [stream['codec_name'] for stream in streams] == ['h264', 'aac'], streams
assert (streams[0]['width'], streams[0]['height']) == (750, 1334), streams
assert all(abs(float(stream['duration']) - seconds) < 0.1 for stream in streams), (seconds, streams)
assert 3 < seconds < 20, seconds
assert os.listdir(f'{out}/device/ReplayKit') == [], 'movies that nobody saved'
END
)");
  EXPECT_EQ(checked.status, 0) << checked.output;
}

TEST_F(Simulator, SaysWhatWasExpectedAndWhatWasThereInstead) {
  const struct {
    const char *commands, *complaint;
    int status = 1;
  } kCases[] = {
      {"- launchApp\n- tapOn: Nowhere\n", "f.yaml:4: tapOn: expected \"Nowhere\" to tap on; on the screen: "},
      {"- launchApp\n- assertVisible: Nothing\n", "\"Groceries\""},
      {"- launchApp\n- assertNotVisible: Groceries\n",
       "f.yaml:4: assertNotVisible: expected no \"Groceries\""},
      {"- launchApp\n- assertLog: a word\n",
       "f.yaml:4: assertLog: expected the line \"a word\" on the console"},
      {"- assertMovies: 1\n",
       "f.yaml:3: assertMovies: expected 1 in the photo library; there: nothing; on the screen: "},
      {"- assertPasteboard: [x]\n",
       "f.yaml:3: assertPasteboard: expected one item of \"x\" on the pasteboard; there: 0"},
      {"- uninstallApp: com.example.notes\n- launchApp\n",
       "f.yaml:4: launchApp: expected com.example.notes to be installed"},
      {"- installApp: com.example.nobody\n",
       "f.yaml:3: installApp: expected an application that is known here"},
      {"- openLink: gopher://x\n", "f.yaml:3: openLink: expected an application that opens gopher: links"},
      {"- repeat:\n    times: 2\n    commands:\n      - assertVisible: Nothing\n",
       "f.yaml:6: assertVisible: expected"},
      {"- dance\n", "f.yaml:3:3: no command is called \"dance\"", 65},
  };
  for (const auto& c : kCases) {
    const Outcome outcome = playText(c.commands);
    EXPECT_EQ(outcome.status, c.status) << c.commands << outcome.output;
    EXPECT_TRUE(outcome.says(c.complaint)) << c.commands << outcome.output;
  }
  EXPECT_TRUE(play(path() / "gone.yaml", "out").says("gone.yaml: there is no such flow"));
  const Outcome textSize = play(fs::path(FLOWS) / "tour.yaml", "out", "--text-size huge");
  EXPECT_EQ(textSize.status, 64);
  EXPECT_TRUE(textSize.says("no text size is called \"huge\"; known: XS, S, M, L, ")) << textSize.output;
  const Outcome profile = play(fs::path(FLOWS) / "tour.yaml", "out", "--profile Abacus");
  EXPECT_EQ(profile.status, 64);
  EXPECT_TRUE(profile.says("no profile is called \"Abacus\"; known: ")) << profile.output;
}

// What must happen although a step failed, and what must not count as a failure.
TEST_F(Simulator, GoesOnAfterAFailureAsFarAsTheFlowSays) {
  folder_.write("inner.yaml",
                std::string("appId: com.example.notes\nonFlowComplete: [evalScript: \"${output.n += 10}\"]\n"
                            "---\n- evalScript: ${output.n++}\n- assertTrue: ${output.n > 20}\n"));
  const fs::path flow = folder_.write(
      "f.yaml",
      std::string(
          "appId: com.example.notes\nenv: {WHO: \"${WHO || 'nobody'}\", TWICE: \"${WHO + WHO}\"}\n"
          "onFlowStart: [evalScript: \"${output.n = 0}\"]\n"
          "onFlowComplete: [evalScript: \"${console.log('after', output.n, TWICE)}\"]\n---\n"
          "- retry: {maxRetries: 5, file: inner.yaml}\n"
          "- assertVisible: {text: Nowhere, optional: true}\n"
          "- runFlow: {commands: [assertTrue: no, shake], optional: true}\n"
          "- runFlow: {when: {true: \"${output.n < 0}\"}, commands: [assertTrue: false]}\n"
          "- repeat: {while: {true: \"${output.n < 40}\"}, commands: [evalScript: \"${output.n++}\"]}\n"
          "- evalScript: ${nothing.there}\n"
          "- takeScreenshot: never\n"));
  const Outcome outcome = play(flow, "out", "-e WHO=Ada");
  EXPECT_EQ(outcome.status, 1) << outcome.output;
  EXPECT_TRUE(outcome.says("– after 40 AdaAda\n")) << outcome.output;
  EXPECT_TRUE(outcome.says("f.yaml:11: evalScript: ${nothing.there}: ReferenceError")) << outcome.output;
  EXPECT_TRUE(
      outcome.says("⚠ " + (path() / "inner.yaml").string() + ":5: assertTrue: expected ${output.n > 20}"))
      << outcome.output;
  EXPECT_TRUE(outcome.says(":7: assertVisible: expected \"Nowhere\"")) << outcome.output;
  EXPECT_FALSE(fs::exists(path() / "out/never.png"));

  // What says so only when it is played.
  const struct {
    const char *commands, *complaint;
  } kCases[] = {
      {"- pressKey: Back\n", "f.yaml:3: pressKey: a phone of this kind has no Back key"},
      {"- inputText: Bread\n", "f.yaml:3: inputText: nothing on this phone takes text yet"},
      {"- evalScript: ${output.many = 'x'}\n- repeat: {times: \"${output.many}\", commands: [shake]}\n",
       "f.yaml:4: repeat: expected a number from 0 to 100000, not \"x\""},
      {"- evalScript: ${output.at = 'there'}\n- tapOn: {point: \"${output.at}\"}\n",
       "f.yaml:4: tapOn: expected a place such as"},
      {"- repeat: {while: {notVisible: Nowhere}, commands: []}\n", "still holds after 1000 rounds"},
      {"- stopRecording\n", "f.yaml:3: stopRecording: no movie is being recorded"},
  };
  for (const auto& c : kCases) {
    const Outcome failed = playText(c.commands);
    EXPECT_EQ(failed.status, 1) << c.commands << failed.output;
    EXPECT_TRUE(failed.says(c.complaint)) << c.commands << failed.output;
  }
}

TEST_F(Simulator, PlaysWhatTheFolderChooses) {
  const auto write = [&](const std::string& name, const std::string& header,
                         const std::string& step = "shake") {
    folder_.write("flows/" + name, "appId: com.example.notes\n" + header + "---\n- " + step + "\n");
  };
  write("b.yaml", "tags: [smoke]\n");
  write("a.yaml", "tags: [smoke, slow]\nname: First\n");
  write("deep/c.yaml", "tags: [smoke]\nname: Last\n");
  write("deep/never.yaml", "tags: [smoke, broken]\n", "assertTrue: false");
  write("untagged.yaml", "", "assertTrue: false");
  folder_.write("flows/config.yaml",
                std::string("flows: [\"*\", \"deep/**\"]\nincludeTags: [smoke]\nexcludeTags: [broken]\n"
                            "executionOrder: {first: [Last, b]}\nother: 1\n"));
  const Outcome outcome = play(path() / "flows", "out");
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  const std::size_t c = outcome.output.find("ok    c "), b = outcome.output.find("ok    b "),
                    a = outcome.output.find("ok    a ");
  EXPECT_TRUE(c < b && b < a && a != std::string::npos) << outcome.output;
  EXPECT_TRUE(outcome.says("3 flows, 0 failed")) << outcome.output;
}

// A dead application must end the step that met it, at once and by name, not look like a missing text.
TEST_F(Simulator, NoticesAnApplicationThatEnds) {
  const struct {
    const char *name, *script, *complaint;
  } kCases[] = {
      {"crashes", "kill -SEGV $$", "ended by signal 11"},
      {"leaves", "echo good bye; exit 3", "ended with exit status 3"},
      {"talks nonsense", "head -c 100 /dev/zero >&3; cat <&3 >/dev/null", "com.example.broken "},
  };
  for (const auto& c : kCases) {
    makeApplication("com.example.broken", c.script);
    const Outcome outcome =
        playText("- installApp: ./com.example.broken\n- launchApp\n", "com.example.broken");
    EXPECT_EQ(outcome.status, 1) << c.name << outcome.output;
    EXPECT_TRUE(outcome.says("f.yaml:4: launchApp: ")) << c.name << outcome.output;
    EXPECT_TRUE(outcome.says(c.complaint)) << c.name << outcome.output;
  }
}

TEST_F(Simulator, RemovesOnlyWhatItLeavesItself) {
  const std::string flow = "- takeScreenshot: home\n- assertVisible: Nothing\n";
  const fs::path out = path() / "out";
  fs::create_directories(out / "DCIM");
  std::ofstream(out / "DCIM" / "holiday.jpg") << "mine";
  const Outcome refused = playText(flow);
  EXPECT_EQ(refused.status, 73);
  EXPECT_NE(refused.output.find("\"DCIM\""), std::string::npos) << refused.output;
  EXPECT_TRUE(fs::exists(out / "DCIM" / "holiday.jpg"));

  fs::remove_all(out / "DCIM");
  std::ofstream(out / "holiday.png") << "mine";
  EXPECT_EQ(playText(flow).status, 1);
  std::ofstream(out / "home.png") << "an earlier run's";
  EXPECT_EQ(playText(flow).status, 1);
  EXPECT_TRUE(fs::exists(out / "holiday.png"));
  EXPECT_GT(fs::file_size(out / "home.png"), 1000u);
}

}  // namespace
