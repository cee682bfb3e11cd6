#include "simulator/verbs/Description.h"

namespace simulator {
namespace {

/// As roff has it: no escapes, no hyphens that typesetters would make of minus signs, no control lines.
std::string roff(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '\\') {
      result += "\\e";
    } else if (c == '-') {
      result += "\\-";
    } else {
      result += c;
    }
  }
  return result.starts_with('.') || result.starts_with('\'') ? "\\&" + result : result;
}

std::string sectionOf(const VerbKind& kind) {
  const VerbDescription description = describe(kind);
  std::string text =
      ".TP\n.B " + roff("tellvane-sim " + description.usage) + "\n" + roff(kind.summary) + "\n";
  const bool explains = !description.operands.empty() || !description.options.empty();
  if (explains) text += ".RS\n";
  for (const auto* options : {&description.operands, &description.options}) {
    for (const auto& option : *options) {
      if (option.help.empty()) continue;
      std::string head;
      for (const std::string& name : option.names) head += (head.empty() ? "" : ", ") + name;
      if (!option.value.empty()) head += (head.empty() ? "" : " ") + option.value;
      text += ".TP\n.I " + roff(head) + "\n" + roff(option.help) + "\n";
    }
  }
  if (explains) text += ".RE\n";
  for (const char* example : kind.examples) text += ".IP\n.EX\ntellvane\\-sim " + roff(example) + "\n.EE\n";
  return text;
}

struct Row {
  const char *head, *text;
};

std::string rows(std::initializer_list<Row> all) {
  std::string text;
  for (const Row& row : all) text += std::string(".TP\n.B ") + roff(row.head) + "\n" + roff(row.text) + "\n";
  return text;
}

}  // namespace

std::string manualPage() {
  std::string text =
      ".TH TELLVANE\\-SIM 1 \"\" \"Tellvane " TELLVANE_VERSION
      "\"\n"
      ".nh\n.ad l\n"
      ".SH NAME\ntellvane\\-sim \\- makes, boots and steers simulated phones\n"
      ".SH SYNOPSIS\n.B tellvane\\-sim\n.I VERB ...\n"
      ".SH DESCRIPTION\n"
      "A device is a phone that exists, with its applications and their data. Booted, it runs as a process "
      "of its\n"
      "own, until it is shut down; several can run at once. A device is named by its name or its "
      "identifier;\n"
      ".B booted\nis the one that is switched on. People see and touch the same phone at the address that\n"
      ".B tellvane\\-sim page\nprints.\n";
  for (const VerbChapter& chapter : verbTable()) {
    text += std::string(".SH \"") + chapter.title + "\"\n";
    for (const VerbKind& kind : chapter.verbs) text += sectionOf(kind);
  }
  text += ".SH \"EXIT STATUS\"\n" +
          rows({{"0", "It is done."},
                {"1", "A step of a flow failed, or the application that launch --console followed failed."},
                {"64", "The command line makes no sense."},
                {"65", "The phone refuses, and says why; a flow cannot be understood."},
                {"66", "A file is not there."},
                {"68", "There is no such device, or it is not booted."},
                {"69", "The phone has nothing of the kind."},
                {"70", "A fault of tellvane-sim itself."},
                {"71", "The system refuses something."},
                {"73", "An output file cannot be created."},
                {"74", "Reading or writing failed."},
                {"76", "The phone ended before it answered."},
                {"77", "The phone belongs to somebody else."},
                {"130", "Interrupted; nothing is left behind."}});
  text += ".SH ENVIRONMENT\n" +
          rows({{"TELLVANE_DEVICES", "The folder of devices; without it tellvane/devices in XDG_DATA_HOME."},
                {"XDG_RUNTIME_DIR",
                 "Where the sockets of phones that are switched on are, in a folder tellvane."}});
  return text;
}

}  // namespace simulator
