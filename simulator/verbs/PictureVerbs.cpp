#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>

#include "Base/Output.h"
#include "simulator/remote/Interruption.h"
#include "simulator/verbs/Booted.h"
#include "simulator/verbs/Verb.h"

/// Pictures and movies of the screen.
namespace simulator {
namespace {

namespace fs = std::filesystem;

struct Screenshot : Verb {
  std::string type, file;

  void declare(CLI::App& app) override {
    app.add_option("--type", type, "without it as the file is called, else png")
        ->type_name("png|jpeg")
        ->check(CLI::IsMember({"png", "jpeg"}));
    app.add_option("FILE", file, "the file; \"-\" for standard output")->required();
  }
  Exit perform() override {
    const fs::path suffix = fs::path(file).extension();
    if (type.empty()) type = suffix == ".jpg" || suffix == ".jpeg" ? "jpeg" : "png";
    writeOut(file, bootedPhone(device).ask("picture", {{"type", type}}).bytes);
    return Exit::done;
  }
};

struct RecordVideo : Verb {
  std::string codec = "h264", file;
  bool force = false;

  void declare(CLI::App& app) override {
    app.add_option("--codec", codec, "how it is encoded")->type_name("h264")->check(CLI::IsMember({"h264"}));
    app.add_flag("--force", force, "replace a file of that name");
    app.add_option("FILE", file, "the movie's file: .mov, or .mp4")->required();
  }
  Exit perform() override {
    std::error_code error;
    const fs::path path = fs::absolute(file, error).lexically_normal();
    if (fs::exists(path, error) && !force)
      throw Refusal(Exit::cannotCreate, file + " is there already; --force replaces it.");
    expectWritable(file);
    PhoneLink phone = bootedPhone(device);
    // The phone writes it beside its place; if this process is killed, the phone drops it.
    const fs::path fresh = path.parent_path() / ("." + path.stem().string() + "-" +
                                                 std::to_string(::getpid()) + path.extension().string());
    phone.ask("recordMovie", {{"on", true}, {"file", fresh.string()}});
    ios::writeErrors("Recording; an interrupt (Ctrl-C) ends it.\n");
    try {
      for (;;) phone.next();
    } catch (const Interrupted&) {
      Interruption::ofProcess().clear();
    }
    phone.ask("recordMovie", {{"on", false}});
    if (std::rename(fresh.c_str(), path.c_str()) != 0) {
      fs::remove(fresh, error);
      throw Refusal(Exit::inputOutput, "Could not put the movie at " + path.string() + ".");
    }
    ios::writeErrors("The movie is " + file + ".\n");
    return Exit::done;
  }
};

}  // namespace

std::span<const VerbKind> pictureVerbs() {
  static const auto& all = *new std::vector<VerbKind>{
      {"io screenshot",
       "Takes a picture of the screen.",
       {"io booted screenshot screen.png", "io booted screenshot --type jpeg - > screen.jpg"},
       &makeVerb<Screenshot>},
      {"io recordVideo",
       "Records the screen as a movie, in the phone's time, until interrupted.",
       {"io booted recordVideo demo.mov"},
       &makeVerb<RecordVideo>},
  };
  return all;
}

}  // namespace simulator
