#include <algorithm>
#include <map>

#include "simulator/verbs/Description.h"

namespace simulator {
namespace {

/// What is offered behind some words of the command line.
struct Offer {
  std::vector<std::string> path;  // "ui", "tap"; the device of a family is left out
  std::string summary;
  VerbDescription description;
};

std::vector<Offer> offers() {
  std::vector<Offer> all;
  for (const VerbChapter& chapter : verbTable()) {
    for (const VerbKind& kind : chapter.verbs) {
      std::vector<std::string> path = {kind.word()};
      if (!kind.family().empty()) path.insert(path.begin(), kind.family());
      all.push_back({std::move(path), kind.summary, describe(kind)});
    }
  }
  return all;
}

/// In single quotes.
std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return result + "'";
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

/// The kind of thing that a value is: "device", "file", …, or its words.
std::string kindOf(const std::string& value) {
  static const std::map<std::string, std::string> kinds = {{"DEVICE", "@device"},
                                                           {"BUNDLE", "@bundle"},
                                                           {"FILE", "@file"},
                                                           {"FOLDER", "@folder"},
                                                           {"VERB", "@verb"}};
  if (const auto known = kinds.find(value); known != kinds.end()) return known->second;
  return joined(wordsOf(value));
}

std::vector<std::string> firstWords() {
  std::vector<std::string> words;
  for (const Offer& offer : offers()) {
    if (std::find(words.begin(), words.end(), offer.path.front()) == words.end())
      words.push_back(offer.path.front());
  }
  return words;
}

/// Rows "path|place|what": what may stand at a place behind a path; places are 1, 2, … for operands (the last one
/// for all beyond it), "o" for options, and an option's name for its value.
std::string table() {
  std::string text;
  const auto row = [&](const std::string& path, const std::string& place, const std::string& what) {
    if (!what.empty()) text += path + "|" + place + "|" + what + "\n";
  };
  row("", "1", joined(firstWords()));
  std::map<std::string, std::string> families;
  for (const Offer& offer : offers()) {
    if (offer.path.size() > 1)
      families[offer.path[0]] += (families[offer.path[0]].empty() ? "" : " ") + offer.path[1];
  }
  for (const auto& [family, words] : families) {
    if (!familyHasDevice(family)) continue;
    row(family, "1", "@device");
    row(family, "2", words);
  }
  for (const Offer& offer : offers()) {
    const std::string path = joined(offer.path);
    std::string options;
    int place = 0;
    for (const auto& operand : offer.description.operands) {
      ++place;
      std::string what = kindOf(operand.value);
      // Where a family stands without a device, its words may stand, too.
      if (place == 1 && families.contains(path) && !familyHasDevice(path)) what += " " + families[path];
      row(path, operand.repeated ? std::to_string(place) + "+" : std::to_string(place), what);
    }
    for (const auto& option : offer.description.options) {
      for (const std::string& name : option.names) {
        options += (options.empty() ? "" : " ") + name;
        if (!option.value.empty())
          row(path, name, kindOf(option.value).empty() ? "@none" : kindOf(option.value));
      }
    }
    row(path, "o", options + (options.empty() ? "" : " ") + "--help");
  }
  return text;
}

// The one algorithm, as bash and zsh both run it: finds the verb, counts operands, prints what may stand there.
constexpr const char* kFinder = R"sh(
# Prints what may stand for the word that is being written, the first one given, behind the others.
_tellvane_sim_offers() {
  local current=$1 path='' place=0 option='' word
  shift
  local families=' %FAMILIES% '
  local device=0
  for word in "$@"; do
    if [ -z "$path" ]; then
      path=$word
      case $families in *" $word "*) device=1 ;; esac
      continue
    fi
    if [ -n "$option" ]; then option=''; continue; fi
    case $word in
      -*) if _tellvane_sim_row "$path" "$word" >/dev/null; then option=$word; fi; continue ;;
    esac
    if [ $device = 1 ]; then device=2; place=1; continue; fi
    if [ $device = 2 ]; then device=0; path="$path $word"; place=0; continue; fi
    if [ $place = 0 ] && _tellvane_sim_row "$path $word" o >/dev/null; then path="$path $word"; continue; fi
    place=$((place + 1))
  done
  if [ -z "$path" ]; then _tellvane_sim_row '' 1; return; fi
  if [ -n "$option" ]; then _tellvane_sim_row "$path" "$option"; return; fi
  case $current in -*) _tellvane_sim_row "$path" o; return ;; esac
  _tellvane_sim_row "$path" $((place + 1)) || while [ $place -ge 0 ]; do
    _tellvane_sim_row "$path" "$((place + 1))+" && return
    place=$((place - 1))
  done
}
_tellvane_sim_row() {
  local row
  while IFS= read -r row; do
    case $row in "$1|$2|"*) printf '%s\n' "${row#"$1|$2|"}"; return 0 ;; esac
  done <<'TABLE'
%TABLE%TABLE
  return 1
}
# The words for kinds of things: those that are to be looked for.
_tellvane_sim_words() {
  case $1 in
    @device) tellvane-sim list devices 2>/dev/null | sed -n 's/.*(\([0-9A-F-]\{36\}\)) (.*/\1/p'; echo booted ;;
    @bundle) tellvane-sim list apps booted 2>/dev/null | sed 's/ .*//' ;;
    @verb) _tellvane_sim_row '' 1 ;;
    @*) ;;
    *) printf '%s\n' "$1" ;;
  esac
}
)sh";

constexpr const char* kBash = R"sh(# Completion of tellvane-sim for bash.
%FINDER%
_tellvane_sim() {
  local offer word
  local current=${COMP_WORDS[COMP_CWORD]}
  COMPREPLY=()
  for offer in $(_tellvane_sim_offers "$current" "${COMP_WORDS[@]:1:COMP_CWORD-1}"); do
    case $offer in
      @file) mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$current") ;;
      @folder) mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -d -- "$current") ;;
      *) mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "$(_tellvane_sim_words "$offer")" -- "$current") ;;
    esac
  done
}
complete -F _tellvane_sim tellvane-sim
)sh";

constexpr const char* kZsh = R"sh(#compdef tellvane-sim
# Completion of tellvane-sim for zsh.
%FINDER%
_tellvane_sim() {
  emulate -L zsh -o ksh_arrays -o sh_word_split
  local offer
  local -a found
  for offer in $(_tellvane_sim_offers "${words[CURRENT - 1]}" "${words[@]:1:$((CURRENT - 2))}"); do
    case $offer in
      @file) _files ;;
      @folder) _files -/ ;;
      *) found+=($(_tellvane_sim_words "$offer")) ;;
    esac
  done
  [ ${#found[@]} -gt 0 ] && compadd -- "${found[@]}"
}
compdef _tellvane_sim tellvane-sim
)sh";

std::string replaced(std::string text, const std::string& mark, const std::string& with) {
  const std::size_t at = text.find(mark);
  return at == std::string::npos ? text : text.replace(at, mark.size(), with);
}

std::string familiesWithDevice() {
  std::string text;
  for (const std::string& word : firstWords()) {
    const auto kinds = kindsNamed(word);
    if (kinds.front()->family() == word && familyHasDevice(word)) text += (text.empty() ? "" : " ") + word;
  }
  return text;
}

std::string finder() {
  return replaced(replaced(kFinder, "%FAMILIES%", familiesWithDevice()), "%TABLE%", table());
}

/// One line for each thing that may stand somewhere; fish does the counting.
std::string fish() {
  std::string text =
      "# Completion of tellvane-sim for fish.\n"
      "function __tellvane_sim_at\n"
      "  set -l words (commandline -opc)[2..]\n"
      "  set -l plain (string match -v -- '-*' $words)\n"
      "  test \"$plain[1..$argv[1]]\" = \"$argv[2]\"\n"
      "end\n"
      "function __tellvane_sim_family\n"
      "  set -l plain (string match -v -- '-*' (commandline -opc)[2..])\n"
      "  test (count $plain) -ge 3; and test \"$plain[1] $plain[3]\" = \"$argv[1]\"\n"
      "end\n"
      "complete -c tellvane-sim -f\n";
  std::map<std::string, bool> seen;
  for (const Offer& offer : offers()) {
    const std::string& first = offer.path.front();
    if (offer.path.size() > 1 && !familyHasDevice(first))
      text += "complete -c tellvane-sim -n '__fish_seen_subcommand_from " + first + "' -a " + offer.path[1] +
              " -d " + quoted(offer.summary) + "\n";
    const bool inFamily = offer.path.size() > 1 && familyHasDevice(first);
    const bool isNew = !seen[first];
    seen[first] = true;
    if (isNew)
      text += "complete -c tellvane-sim -n '__fish_use_subcommand' -a " + first + " -d " +
              quoted(offer.path.size() > 1 ? familySummary(first) : offer.summary) + "\n";
    std::string condition = "__fish_seen_subcommand_from " + first;
    if (inFamily) {
      text += "complete -c tellvane-sim -n 'test (count (commandline -opc)) = 3; and __tellvane_sim_at 1 " +
              first + "' -a " + offer.path[1] + " -d " + quoted(offer.summary) + "\n";
      condition = "__tellvane_sim_family \"" + joined(offer.path) + "\"";
      if (isNew)
        text += "complete -c tellvane-sim -n 'test (count (commandline -opc)) = 2; and __tellvane_sim_at 1 " +
                first + "' -a booted\n";
    }
    for (const auto& option : offer.description.options) {
      text += "complete -c tellvane-sim -n " + quoted(condition);
      for (const std::string& name : option.names)
        text += (name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1));
      const std::string kind = kindOf(option.value);
      const bool isFile = kind == "@file" || kind == "@folder";
      if (!option.value.empty()) text += isFile ? " -r -F" : " -x";
      if (!kind.empty() && kind[0] != '@') text += " -a " + quoted(kind);
      text += " -d " + quoted(option.help) + "\n";
    }
    for (const auto& operand : offer.description.operands) {
      const std::string kind = kindOf(operand.value);
      if (kind == "@file" || kind == "@folder") {
        text += "complete -c tellvane-sim -n " + quoted(condition) + " -F\n";
      } else if (kind == "@device") {
        text += "complete -c tellvane-sim -n " + quoted(condition) + " -a booted\n";
      } else if (!kind.empty() && kind[0] != '@') {
        text += "complete -c tellvane-sim -n " + quoted(condition) + " -a " + quoted(kind) + "\n";
      }
    }
  }
  return text;
}

}  // namespace

std::optional<std::string> completion(const std::string& shell) {
  if (shell == "bash") return replaced(kBash, "%FINDER%", finder());
  if (shell == "zsh") return replaced(kZsh, "%FINDER%", finder());
  if (shell == "fish") return fish();
  return std::nullopt;
}

}  // namespace simulator
