#include <algorithm>
#include <array>
#include <system_error>

#include "AVFoundation/Microphone.h"
#include "simulator/flow/FlowReader.h"
#include "simulator/flow/Stage.h"
#include "simulator/flow/Words.h"

/// What is done with applications as a whole.
namespace simulator {
namespace {

namespace fs = std::filesystem;
using Permissions = std::map<std::string, ios::Permission>;  // by service

Permissions permissions(const YamlValue& value) {
  static const std::map<std::string, ios::Permission> kAnswers = {{"allow", ios::Permission::authorized},
                                                                  {"deny", ios::Permission::denied},
                                                                  {"unset", ios::Permission::notDetermined}};
  Permissions result;
  for (const auto& [service, answer] : value.members()) {
    const ios::Permission permission = oneOf(answer, kAnswers, "allow, deny or unset");
    if (service != "all") {
      result[service] = permission;
    } else {
      for (const char* each : {"microphone", "photos", "screen"}) result.emplace(each, permission);
    }
  }
  return result;
}

/// What the microphone hears, as IOS_MICROPHONE says it. A file is named relative to the flow.
std::string sound(const YamlValue& value) {
  const std::string text = value.text();
  if (value.isOpen()) return text;
  const auto sound = ios::Microphone::soundNamed(text);
  if (!sound) value.fail("expected silence, tone:440, file:PATH, absent or machine, not \"" + text + "\"");
  const auto* file = std::get_if<ios::Microphone::File>(&*sound);
  if (!file) return text;
  std::error_code error;
  const fs::path path = fs::absolute(fs::path(value.file()).parent_path() / file->path, error);
  if (!fs::is_regular_file(path, error)) value.fail("there is no sound file " + path.string());
  return "file:" + path.string();
}

struct LaunchApp : Command {
  std::string appId;
  bool clearState = false, clearKeychain = false;
  bool stopApp = true;
  Permissions permissions;
  std::map<std::string, std::string> arguments;
  std::string codecFault;  // as IOS_CODEC_FAULT says it
  std::string sound = "silence";

  std::string description() const override {
    std::string text = (stopApp ? "start " : "bring to the front ") + appId;
    std::vector<std::string> parts;
    for (const auto& [key, value] : arguments) parts.push_back(key + " " + value);
    if (!parts.empty()) text += " with " + enumerated(parts);
    if (!permissions.empty()) text += ", " + inWords(permissions);
    if (clearState) text += ", its data cleared";
    if (clearKeychain) text += ", the keychain cleared";
    return text;
  }
  Problem perform(Stage& stage) const override {
    Phone& phone = stage.phone();
    if (!stopApp && phone.running() == appId && !clearState) {
      phone.setPermissions(appId, permissions);
      phone.bringToFront();
      return {};
    }
    if (Problem problem = phone.stop(); !problem.empty()) return problem;
    if (clearState) {
      if (Problem problem = phone.clearState(appId); !problem.empty()) return problem;
    }
    phone.setPermissions(appId, permissions);
    return phone.launch(appId, arguments, sound, codecFault);
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<LaunchApp>();
    result->appId = value.appId();
    if (value.isNull()) return result;
    if (!value.isMap()) {
      result->appId = bundleIdentifier(value);
      return result;
    }
    for (const auto& [key, field] : value.members({"appId", "clearState", "clearKeychain", "permissions",
                                                   "arguments", "sound", "codecFault", "stopApp"})) {
      if (key == "appId") result->appId = bundleIdentifier(field);
      if (key == "clearState") result->clearState = field.boolean();
      if (key == "clearKeychain") result->clearKeychain = field.boolean();
      if (key == "stopApp") result->stopApp = field.boolean();
      if (key == "permissions") result->permissions = simulator::permissions(field);
      if (key == "codecFault") result->codecFault = field.text();
      if (key == "sound") result->sound = simulator::sound(field);
      if (key != "arguments") continue;
      for (const auto& [name, argument] : field.members()) result->arguments[name] = argument.text();
    }
    return result;
  }
};

/// The application that is named, or else the flow's own.
std::string application(const YamlValue& value) {
  if (value.isNull()) return value.appId();
  if (!value.isMap()) return bundleIdentifier(value);
  const auto fields = value.members({"appId"});
  return fields.contains("appId") ? bundleIdentifier(fields.at("appId")) : value.appId();
}

struct StopApp : Command {
  std::string appId;
  bool atOnce = false;  // without telling it

  std::string description() const override { return (atOnce ? "kill " : "stop ") + appId; }
  Problem perform(Stage& stage) const override {
    if (stage.phone().running() != appId) return {};
    if (!atOnce) return stage.phone().stop();
    stage.phone().kill();
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<StopApp>();
    result->appId = application(value);
    return result;
  }
  static std::unique_ptr<const Command> readKill(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<StopApp>();
    result->appId = application(value);
    result->atOnce = true;
    return result;
  }
};

struct ClearState : Command {
  std::string appId;

  std::string description() const override { return "clear the data of " + appId; }
  Problem perform(Stage& stage) const override {
    Phone& phone = stage.phone();
    if (phone.running() == appId) {
      if (Problem problem = phone.stop(); !problem.empty()) return problem;
    }
    return phone.clearState(appId);
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<ClearState>();
    result->appId = application(value);
    return result;
  }
};

struct ClearKeychain : Command {
  std::string description() const override { return "clear the keychain, which is empty on this phone"; }
  Problem perform(Stage&) const override { return {}; }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    expectNothing(value);
    return std::make_unique<ClearKeychain>();
  }
};

struct InstallApp : Command {
  std::string application;  // a bundle identifier, or the path of a bundle folder

  std::string description() const override { return "install " + application; }
  Problem perform(Stage& stage) const override { return stage.phone().install(application); }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<InstallApp>();
    const std::string name = text(value);
    result->application = name.find('/') == std::string::npos || value.isOpen()
                              ? bundleIdentifier(value)
                              : (fs::path(value.file()).parent_path() / name).string();
    return result;
  }
};

struct UninstallApp : Command {
  std::string appId;

  std::string description() const override { return "uninstall " + appId; }
  Problem perform(Stage& stage) const override { return stage.phone().uninstall(appId); }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<UninstallApp>();
    result->appId = bundleIdentifier(value);
    return result;
  }
};

struct SetPermissions : Command {
  std::string appId;
  Permissions permissions;

  std::string description() const override {
    return "set permissions of " + appId + ": " + inWords(permissions);
  }
  Problem perform(Stage& stage) const override {
    stage.phone().setPermissions(appId, permissions);
    return {};
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<SetPermissions>();
    result->appId = value.appId();
    const auto members = value.members();
    const bool nested = std::any_of(members.begin(), members.end(),
                                    [](const auto& member) { return member.first == "permissions"; });
    if (!nested) {
      result->permissions = simulator::permissions(value);
      return result;
    }
    const auto fields = value.members({"appId", "permissions"});
    if (fields.contains("appId")) result->appId = bundleIdentifier(fields.at("appId"));
    result->permissions = simulator::permissions(fields.at("permissions"));
    return result;
  }
};

struct OpenLink : Command {
  std::string link;
  bool inBrowser = false;

  std::string description() const override { return "open " + link + (inBrowser ? " in the browser" : ""); }
  Problem perform(Stage& stage) const override {
    if (inBrowser && !link.starts_with("http:") && !link.starts_with("https:"))
      return "expected a link that begins with http: or https:, as the browser opens no others";
    return stage.phone().openLink(link);
  }
  static std::unique_ptr<const Command> read(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<OpenLink>();
    if (!value.isMap()) {
      result->link = text(value);
      return result;
    }
    const auto fields = value.members({"link", "browser", "autoVerify"});
    if (!fields.contains("link")) value.fail("needs \"link\"");
    result->link = text(fields.at("link"));
    if (fields.contains("browser")) result->inBrowser = fields.at("browser").boolean();
    // There is nothing on this phone that would have to be verified.
    if (fields.contains("autoVerify")) fields.at("autoVerify").boolean();
    return result;
  }
  static std::unique_ptr<const Command> readBrowser(const YamlValue& value, FlowReader&) {
    auto result = std::make_unique<OpenLink>();
    result->link = text(single(value, "link"));
    result->inBrowser = true;
    return result;
  }
};

}  // namespace

std::span<const CommandKind> applicationCommands() {
  static constexpr auto kOwn = CommandKind::Origin::own;
  static constexpr std::array kAll = {
      CommandKind{"launchApp", &LaunchApp::read},
      CommandKind{"stopApp", &StopApp::read},
      CommandKind{"killApp", &StopApp::readKill},
      CommandKind{"clearState", &ClearState::read},
      CommandKind{"clearKeychain", &ClearKeychain::read},
      CommandKind{"installApp", &InstallApp::read, kOwn},
      CommandKind{"uninstallApp", &UninstallApp::read, kOwn},
      CommandKind{"setPermissions", &SetPermissions::read, kOwn},
      CommandKind{"openLink", &OpenLink::read},
      CommandKind{"openBrowser", &OpenLink::readBrowser},
  };
  return kAll;
}

}  // namespace simulator
